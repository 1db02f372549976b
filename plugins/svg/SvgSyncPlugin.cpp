// SPDX-License-Identifier: Apache-2.0

#include "SvgResolver.h"

#include "pluginkit/Exports.h"

PLUGINKIT_EXPORT_RESOLVER(Halvern::Formats::Svg::SvgResolver);
