// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "pluginkit/InputFile.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Halvern::PluginKit {

/// The bytes [begin, end) of a file give way to `replacement`; with begin == end it is put in.
struct FileEdit
{
    std::uint64_t begin;
    std::uint64_t end;
    std::string replacement;
};

/// Puts the file with the edits made, in whatever order they come, in the place of the file; every
/// other byte is as it was. What stays is copied block by block, so that a file may be larger than
/// memory. Edits that overlap or reach beyond the file throw std::invalid_argument; then, and when
/// anything else fails (FormatError), the file is as it was. Closes the file.
void ReplaceSpans(InputFile& file, std::vector<FileEdit> edits);

} // namespace Halvern::PluginKit
