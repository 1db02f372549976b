// SPDX-License-Identifier: Apache-2.0

#include "GltfResolver.h"

#include "pluginkit/Exports.h"

PLUGINKIT_EXPORT_RESOLVER(Halvern::Formats::Gltf::GltfResolver);
