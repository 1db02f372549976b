// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "GltfDocument.h"

#include "KitNames.h"
#include "pluginkit/DocumentResolver.h"

namespace Halvern::Formats::Gltf {

/// Reads and rewrites the uris of glTF files of versions 1.0 and 2.0, plain (.gltf) and binary
/// (.glb).
///
/// A link's reference id is the JSON pointer of its string. Rewriting changes the bytes of those
/// strings and, in a binary file, the padding after the JSON and two lengths; nothing else.
using GltfResolver = DocumentResolverFor<GltfDocument>;

} // namespace Halvern::Formats::Gltf
