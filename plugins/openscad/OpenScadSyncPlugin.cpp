// SPDX-License-Identifier: Apache-2.0

#include "OpenScadResolver.h"

#include "pluginkit/Exports.h"

PLUGINKIT_EXPORT_RESOLVER(Halvern::Formats::OpenScad::OpenScadResolver);
