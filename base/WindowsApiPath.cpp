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

bool RuntimeTakesPath(std::u16string_view native) noexcept
{
    return native.find_first_of(u"?*") == std::u16string_view::npos;
}

} // namespace Halvern::Base
