// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::PluginKit {

// For text in memory; FileEdits.h changes files of any size.

/// The bytes [begin, end) give way to `replacement`.
struct TextEdit
{
    std::size_t begin;
    std::size_t end;
    std::string replacement;
};

/// The text with the edits made, in whatever order they come; every other byte is as it was.
/// Edits that overlap or reach beyond the text throw std::invalid_argument.
std::string ApplyEdits(std::string_view text, std::vector<TextEdit> edits);

} // namespace Halvern::PluginKit
