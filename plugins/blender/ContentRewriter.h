// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/FileEdits.h"

namespace Halvern::Formats::Blender {

/// Makes edits of the content of a .blend file, whose positions count in the content. A compressed
/// file stays compressed in the same way; of one that is made of many frames only those with edits
/// are made anew. Throws FormatError, with the file as it was. Closes the file.
void ReplaceContent(InputFile& file, std::vector<FileEdit> edits);

} // namespace Halvern::Formats::Blender
