// SPDX-License-Identifier: Apache-2.0

#include "Placement.h"

#include <cstdlib>

namespace Halvern::Formats::Layout {

std::optional<TreePath> HomeFolder()
{
    const wchar_t* const home = _wgetenv(L"USERPROFILE");
    const std::optional<std::string> text = home ? ToUtf8(home) : std::nullopt;
    return text ? TreePath::Parse(*text) : std::nullopt;
}

} // namespace Halvern::Formats::Layout
