// SPDX-License-Identifier: Apache-2.0

#include "base/SamePath.h"

#include "base/CaseFolding.h"

#include <algorithm>

namespace Halvern::Base {

bool IsSamePath(std::u16string_view a, std::u16string_view b, System system) noexcept
{
    return IgnoresLetterCase(system) ? IsEqualIgnoringCase(a, b) : a == b;
}

std::u16string SamePathKey(std::u16string_view path, System system)
{
    if (!IgnoresLetterCase(system))
        return std::u16string(path);
    std::u16string key = FoldCase(path);
    std::replace(key.begin(), key.end(), u'\\', u'/');
    return key;
}

std::optional<std::u16string_view> PathBelow(std::u16string_view folder,
                                             std::u16string_view path) noexcept
{
    if (folder.empty() || !StartsWithIgnoringCase(path, folder))
        return std::nullopt;
    std::u16string_view below = path.substr(folder.size());
    if (below.empty() || folder.ends_with(u'/'))
        return below;
    if (!below.starts_with(u'/'))
        return std::nullopt;
    below.remove_prefix(1);
    return below;
}

} // namespace Halvern::Base
