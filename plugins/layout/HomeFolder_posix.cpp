// SPDX-License-Identifier: Apache-2.0

#include "Placement.h"

#include <cstdlib>

namespace Halvern::Formats::Layout {

std::optional<TreePath> HomeFolder()
{
    const char* const home = std::getenv("HOME");
    return home ? TreePath::Parse(home) : std::nullopt;
}

} // namespace Halvern::Formats::Layout
