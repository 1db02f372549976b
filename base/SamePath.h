// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/System.h"

#include <optional>
#include <string>
#include <string_view>

namespace Halvern::Base {

// What an ordinary disk takes for one path, by the text alone; FileStatus.h has IsSameFile, which
// asks the disk. Paths are cleaned. Safe to call from any thread; only a lack of memory throws.

/// Whether names that differ in letter case alone name one file.
constexpr bool IgnoresLetterCase(System system = ThisSystem) noexcept
{
    return system == System::Windows;
}

bool IsSamePath(std::u16string_view a, std::u16string_view b, System system = ThisSystem) noexcept;

/// Equal for paths that name one file: on Windows slashes of both kinds are one, and letter case
/// does not count.
std::u16string SamePathKey(std::u16string_view path, System system = ThisSystem);

/// The part of `path` below `folder`, empty for the folder itself; nothing for a path elsewhere or
/// an empty folder. Letter case does not count on any system. The answer is a piece of `path`.
///
///     PathBelow("D:/Sync", "d:/sync/a/b.prt") is "a/b.prt", PathBelow("D:/Sync", "D:/Sync2")
///     nothing
std::optional<std::u16string_view> PathBelow(std::u16string_view folder,
                                             std::u16string_view path) noexcept;

} // namespace Halvern::Base
