// SPDX-License-Identifier: Apache-2.0

#include "KicadResolver.h"

#include "pluginkit/Exports.h"

PLUGINKIT_EXPORT_RESOLVER(Halvern::Formats::Kicad::KicadResolver);
