// SPDX-License-Identifier: Apache-2.0

#include "base/WindowsApiPath.h"

#include "base/PathText.h"

#include <algorithm>
#include <cstddef>

namespace Halvern::Base {

namespace {

// From this length on a folder cannot be made without the prefix: it leaves room for a short name.
constexpr std::size_t LongPath = 248;

constexpr std::u16string_view Prefix = u"\\\\?\\";
constexpr std::u16string_view ServerPrefix = u"\\\\?\\UNC\\";
constexpr std::u16string_view DevicePrefix = u"\\\\.\\";

} // namespace

std::u16string WindowsApiPath(std::u16string_view path)
{
    std::u16string native(path);
    std::replace(native.begin(), native.end(), u'/', u'\\');
    if (native.size() < LongPath || native.starts_with(Prefix) || native.starts_with(DevicePrefix))
        return native;
    if (IsUncPath(native))
        return std::u16string(u"\\\\?\\UNC").append(native, 1);
    return HasDrive(native) ? std::u16string(Prefix).append(native) : native;
}

std::u16string WithoutApiPrefix(std::u16string_view native)
{
    if (native.starts_with(ServerPrefix))
        return std::u16string(u"\\\\").append(native.substr(ServerPrefix.size()));
    const std::u16string_view path = native.substr(native.starts_with(Prefix) ? Prefix.size() : 0);
    // What is no drive ("\\?\Volume{...}") has no other name.
    return std::u16string(HasDrive(path) ? path : native);
}

bool RuntimeTakesPath(std::u16string_view native) noexcept
{
    return native.find_first_of(u"?*") == std::u16string_view::npos;
}

} // namespace Halvern::Base
