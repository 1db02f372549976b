// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/TextEdits.h"

#include <algorithm>
#include <stdexcept>

namespace Halvern::PluginKit {

namespace {

/// Sorts the edits and returns the size of the edited text.
std::size_t Prepare(std::size_t textSize, std::vector<TextEdit>& edits)
{
    std::sort(edits.begin(), edits.end(),
              [](const TextEdit& a, const TextEdit& b) { return a.begin < b.begin; });
    std::size_t size = textSize;
    std::size_t done = 0;
    for (const TextEdit& edit : edits) {
        if (edit.begin < done || edit.end < edit.begin || edit.end > textSize)
            throw std::invalid_argument("text edits overlap or lie outside the text");
        size = size - (edit.end - edit.begin) + edit.replacement.size();
        done = edit.end;
    }
    return size;
}

} // namespace

std::string ApplyEdits(std::string_view text, std::vector<TextEdit> edits)
{
    std::string result;
    result.reserve(Prepare(text.size(), edits));
    std::size_t done = 0;
    for (const TextEdit& edit : edits) {
        result.append(text.substr(done, edit.begin - done)).append(edit.replacement);
        done = edit.end;
    }
    return result.append(text.substr(done));
}

} // namespace Halvern::PluginKit
