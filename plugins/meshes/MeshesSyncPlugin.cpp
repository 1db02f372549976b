// SPDX-License-Identifier: Apache-2.0

#include "MeshResolver.h"

#include "pluginkit/Exports.h"

PLUGINKIT_EXPORT_RESOLVER(Halvern::Formats::Meshes::MeshResolver);
