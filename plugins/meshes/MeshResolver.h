// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/DocumentResolver.h"

namespace Halvern::Formats::Meshes {

/// Reads and rewrites the names of files in 3D Studio meshes (.3ds), LightWave objects (.lwo),
/// DirectX meshes (.x) and polygon files (.ply).
class MeshResolver : public DocumentResolver
{
public:
    MeshResolver();
};

} // namespace Halvern::Formats::Meshes
