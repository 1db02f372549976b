// SPDX-License-Identifier: Apache-2.0

#include "base/WindowsNames.h"

#include "base/PathText.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Halvern::Base {

namespace {

constexpr std::u16string_view Blanks = u" \t\n\v\f\r";

bool IsForbiddenCharacter(char16_t character) noexcept
{
    return character < u' ' ||
           std::u16string_view(u"<>:\"|?*\\").find(character) != std::u16string_view::npos;
}

std::u16string_view Trimmed(std::u16string_view text) noexcept
{
    text.remove_prefix(std::min(text.find_first_not_of(Blanks), text.size()));
    return text.substr(0, text.find_last_not_of(Blanks) + 1);
}

/// ASCII is all that the names of devices need. The plug-in kit calls this, whose authors do not
/// link Unicode's letter case.
bool IsDevice(std::u16string_view name, std::u16string_view device) noexcept
{
    return std::equal(
        name.begin(), name.end(), device.begin(), device.end(),
        [](char16_t a, char16_t b) { return (a >= u'A' && a <= u'Z' ? a + 0x20 : a) == b; });
}

/// A device has its name in every folder, with any suffix.
bool NamesDevice(std::u16string_view part) noexcept
{
    constexpr std::array<std::u16string_view, 6> devices{u"con", u"prn",    u"aux",
                                                         u"nul", u"conin$", u"conout$"};
    const std::u16string_view name = Trimmed(part.substr(0, part.find(u'.')));
    if (name.size() == 4 &&
        (IsDevice(name.substr(0, 3), u"com") || IsDevice(name.substr(0, 3), u"lpt")))
        return std::u16string_view(u"123456789\u00b9\u00b2\u00b3").find(name.back()) !=
               std::u16string_view::npos;
    return std::any_of(devices.begin(), devices.end(),
                       [&](std::u16string_view device) { return IsDevice(name, device); });
}

bool IsForbidden(std::u16string_view part) noexcept
{
    if (part == u"." || part == u"..")
        return false;
    return part.ends_with(u'.') || part.ends_with(u' ') || NamesDevice(part) ||
           std::any_of(part.begin(), part.end(), IsForbiddenCharacter);
}

} // namespace

std::u16string_view ForbiddenName(std::u16string_view path, System system) noexcept
{
    if (system == System::Posix)
        return {};
    std::u16string_view names = HasDrive(path) ? path.substr(2) : path;
    while (!names.empty()) {
        const std::size_t end = std::min(names.find(u'/'), names.size());
        const std::u16string_view part = names.substr(0, end);
        if (IsForbidden(part))
            return part;
        names.remove_prefix(std::min(end + 1, names.size()));
    }
    return {};
}

} // namespace Halvern::Base
