// SPDX-License-Identifier: Apache-2.0

#include "base/Directory.h"

#include "base/Utf.h"

namespace Halvern::Base {

bool IsLinkOfWindows(std::uint32_t attributes, std::uint32_t reparseTag) noexcept
{
    constexpr std::uint32_t reparsePoint = 0x400;
    constexpr std::uint32_t nameSurrogate = 0x20000000;
    return (attributes & reparsePoint) != 0 && (reparseTag & nameSurrogate) != 0;
}

std::optional<std::string> NameOfEntry(std::u16string_view name)
{
    if (name == u"." || name == u"..")
        return std::nullopt;
    return ToUtf8(name);
}

} // namespace Halvern::Base
