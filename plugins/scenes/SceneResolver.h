// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/DocumentResolver.h"

namespace Halvern::Formats::Scenes {

/// Reads and rewrites the references of Collada documents (.dae), X3D and VRML scenes (.x3d, .x3dv,
/// .wrl, compressed as well) and MaterialX documents (.mtlx).
class SceneResolver : public DocumentResolver
{
public:
    SceneResolver();
};

} // namespace Halvern::Formats::Scenes
