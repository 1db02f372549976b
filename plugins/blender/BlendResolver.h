// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "BlendDocument.h"

#include "KitNames.h"
#include "pluginkit/DocumentResolver.h"

namespace Halvern::Formats::Blender {

/// Reads and rewrites the paths of .blend files: plain, gzip and zstd; of any machine.
///
/// A link's reference id is the name of its data block, "IMWood"; that of a member of a set also
/// tells which member it is. Rewriting changes the bytes of these paths, in place, and where the
/// path of a text file grows the size of its block; nothing else.
using BlendResolver = DocumentResolverFor<BlendDocument>;

} // namespace Halvern::Formats::Blender
