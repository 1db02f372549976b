// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace Halvern::Base {

// Between text and paths as the system names files: UTF-8 on POSIX, UTF-16 on Windows. The standard
// library's own conversions throw at what is no text. Safe to call from any thread; only a lack of
// memory throws.

/// The file that text names. What is no text (a lone surrogate on POSIX, bytes that are no UTF-8 on
/// Windows) becomes U+FFFD.
std::filesystem::path NativePath(std::u16string_view text);
std::filesystem::path NativePath(std::string_view utf8);
/// The text of a path: with forward slashes, on Windows one where there were several; on POSIX
/// as it is. What is no text becomes U+FFFD.
std::u16string PathText(const std::filesystem::path& path);
/// As UTF-8, with one slash where there were several; on POSIX bytes that are no text stay.
std::string PathToUtf8(const std::filesystem::path& path);
/// Whether a path names a server or a device, as those of Windows may; never on POSIX.
bool IsServerPath(const std::filesystem::path& path);

} // namespace Halvern::Base
