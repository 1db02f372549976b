// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Halvern::Base {

// Text from one encoding to the other. Safe to call from any thread; only a lack of memory throws.

/// Nothing for text with a lone surrogate.
std::optional<std::string> ToUtf8(std::u16string_view text);
/// A lone surrogate becomes U+FFFD.
std::string ToUtf8Lossy(std::u16string_view text);
/// Nothing for bytes that are no UTF-8 (overlong forms and encoded surrogates are none either).
std::optional<std::u16string> ToUtf16(std::string_view text);
/// Each byte that belongs to no UTF-8 becomes U+FFFD.
std::u16string ToUtf16Lossy(std::string_view text);
/// For people: each byte that belongs to no UTF-8 becomes "\xFF", a lone surrogate "\uD800", with
/// its own digits; text stays as it is.
std::string EscapedUtf8(std::string_view text);
std::string EscapedUtf8(std::u16string_view text);
bool IsUtf8(std::string_view text);
/// Requires: a code point, and no surrogate.
void AppendUtf8(std::string& text, char32_t code);

} // namespace Halvern::Base
