// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/DocumentResolver.h"

namespace Halvern::Formats::Wavefront {

/// Reads and rewrites the names of files in Wavefront object files (.obj) and material libraries
/// (.mtl). Ids: "mtllib 1", "<material>/map_kd".
class WavefrontResolver : public DocumentResolver
{
public:
    WavefrontResolver();
};

} // namespace Halvern::Formats::Wavefront
