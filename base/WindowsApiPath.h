// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Halvern::Base {

/// An absolute path of Windows without "." and "..", as functions of that system take it. They
/// refuse 260 characters and more, and a folder from 248 on, unless the path has a prefix that
/// turns their parsing off. A path that has the prefix, is that of a device or is relative gets
/// none.
///
///     "D:/a.prt" gives "D:\a.prt", and one too long "\\?\D:\...\a.prt" or
///     "\\?\UNC\server\share\..."
std::u16string WindowsApiPath(std::u16string_view path);

/// The other way round: a path without that prefix, which none of the functions on the text of a
/// path knows. The system answers with one where it was given one.
///
///     "\\?\D:\a.prt" gives "D:\a.prt", "\\?\UNC\server\share" gives "\\server\share"
std::u16string WithoutApiPrefix(std::u16string_view native);

/// False for a path of WindowsApiPath that the C runtime refuses: it takes the "?" of the prefix
/// for a wildcard, and answers that there is no such file.
bool RuntimeTakesPath(std::u16string_view native) noexcept;

} // namespace Halvern::Base
