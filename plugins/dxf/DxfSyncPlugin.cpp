// SPDX-License-Identifier: Apache-2.0

#include "DxfResolver.h"

#include "pluginkit/Exports.h"

PLUGINKIT_EXPORT_RESOLVER(Halvern::Formats::Dxf::DxfResolver);
