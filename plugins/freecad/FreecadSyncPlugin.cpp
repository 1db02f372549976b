// SPDX-License-Identifier: Apache-2.0

#include "FreecadResolver.h"

#include "pluginkit/Exports.h"

PLUGINKIT_EXPORT_RESOLVER(Halvern::Formats::Freecad::FreecadResolver);
