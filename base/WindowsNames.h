// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/System.h"

#include <string_view>

namespace Halvern::Base {

/// The first part of a path that the system does not take as the name of a file or folder; on POSIX
/// there is none. On Windows one that holds a character that names may not have, ends with a dot or
/// a blank (which Windows would drop, so that "a." names another file), or names a device. Empty
/// when all parts are names. `path` has forward slashes; a part "." or ".." is a way, not a name.
/// Safe to call from any thread.
///
///     "D:/a/b?.prt" gives "b?.prt", "D:/aux.prt" gives "aux.prt", "//server/share/a" gives nothing
std::u16string_view ForbiddenName(std::u16string_view path, System system = ThisSystem) noexcept;

} // namespace Halvern::Base
