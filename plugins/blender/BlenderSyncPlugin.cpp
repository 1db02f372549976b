// SPDX-License-Identifier: Apache-2.0

#include "BlendResolver.h"

#include "pluginkit/Exports.h"

PLUGINKIT_EXPORT_RESOLVER(Halvern::Formats::Blender::BlendResolver);
