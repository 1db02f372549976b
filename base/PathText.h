// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/System.h"

#include <string>
#include <string_view>

namespace Halvern::Base {

// What the text of a path says. Nothing here asks the disk; nothing fails, and nothing throws but
// for a lack of memory. Safe to call from any thread.
//
// The rules on ":" and "//" are those of Windows and hold everywhere for such texts. On POSIX a
// path that begins with one "/" is absolute and local, whatever else it holds.

constexpr bool IsSlash(char16_t c) noexcept
{
    return c == u'/' || c == u'\\';
}

/// Begins with a letter from A to Z and a colon.
bool HasDrive(std::u16string_view path) noexcept;
bool HasDrive(std::string_view path) noexcept;
/// The first two characters are two slashes (backslashes count as slashes): a network path.
bool IsUncPath(std::u16string_view path) noexcept;
/// Names a server or a device: two slashes and a name.
bool NamesServer(std::u16string_view path) noexcept;
/// A network path that names a server, or a server and a share, and nothing in it.
bool IsShareRoot(std::u16string_view path) noexcept;
/// On POSIX, a path that begins with one "/"; never on Windows.
bool IsPosixAbsolutePath(std::u16string_view path, System system = ThisSystem) noexcept;
/// Not relative: holds a ":" or is a network path; on POSIX also one that begins with "/".
bool IsAbsolutePath(std::u16string_view path, System system = ThisSystem) noexcept;
/// On Windows a device, or a file by a path that is taken as it is written: "//./x", "//?/D:/x".
bool NamesDevice(std::u16string_view path) noexcept;
/// No ":" at index 2 or later; on POSIX also one that begins with one "/".
bool IsLocalPath(std::u16string_view path, System system = ThisSystem) noexcept;
/// A ":" at index 2 or later, as in "https://host/x", unless the path begins with "/".
bool IsUrlLike(std::u16string_view path) noexcept;
/// Where this path leads depends on the current drive or on its current folder, though it has a
/// drive or begins with a slash: "D:a", "/a". Never on POSIX.
bool IsDriveRelative(std::u16string_view path, System system = ThisSystem) noexcept;

/// `below` appended to a cleaned folder; the folder itself when it is empty.
std::u16string JoinPath(std::u16string_view folder, std::u16string_view below);
/// The folder above a cleaned path; empty when there is none. C:/a lies in C:/.
std::u16string_view ParentPath(std::u16string_view path) noexcept;

} // namespace Halvern::Base
