// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Halvern::Formats::Step {

/// What the bytes between the apostrophes of a string stand for: doubled apostrophes and
/// backslashes, the escapes for other characters, and line breaks, which are not part of it.
///
///     Gr\X2\00F600DF\X0\e    Größe
///     it''s                  it's
///
/// A backslash that begins no escape stands for itself, as readers have it.
std::string DecodeString(std::string_view raw);

/// Text as a string without its apostrophes: ASCII, everything else escaped. FormatError for
/// control characters. Requires: UTF-8.
std::string EncodeString(std::string_view text);

} // namespace Halvern::Formats::Step
