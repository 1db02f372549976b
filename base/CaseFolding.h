// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Halvern::Base {

// Letter case as Unicode folds it, one character to one character: "Ä" and "ä" are one letter, "ß"
// and "ss" are not. A lone surrogate is a character of its own.
//
// DO NOT CHANGE what these answer: keys in the sync database are folded texts.
// QString::toCaseFolded and comparisons of Qt without regard to letter case answer the same.
//
// Safe to call from any thread; only a lack of memory throws.

char32_t FoldCase(char32_t character) noexcept;
/// As long as the text.
std::u16string FoldCase(std::u16string_view text);
bool IsEqualIgnoringCase(std::u16string_view a, std::u16string_view b) noexcept;
bool StartsWithIgnoringCase(std::u16string_view text, std::u16string_view start) noexcept;

} // namespace Halvern::Base
