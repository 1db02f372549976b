// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "pluginkit/TextEdits.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Base {
class CharacterSet;
}

namespace Halvern::PluginKit {

/// A text of any encoding as UTF-8, changed in place in its own encoding: what stays keeps its
/// bytes. Unicode in all its forms, what the system converts else, as long as letters of ASCII are
/// single bytes in it. Failures are FormatErrors, with positions in the text's own bytes.
class EncodedText
{
public:
    /// `encoding` is a name as XML has it, in any letter case; "UTF-8" leaves the bytes as they
    /// are, valid or not. UTF-8 of more than `maxSize` bytes is refused.
    EncodedText(std::string bytes, std::string_view encoding, std::size_t maxSize);
    ~EncodedText();
    EncodedText(EncodedText&&) noexcept;
    EncodedText& operator=(EncodedText&&) noexcept;

    const std::string& Utf8() const { return m_set ? m_utf8 : m_bytes; }
    /// Where the byte of Utf8() comes from.
    std::size_t PlaceOf(std::size_t position) const;

    /// What stands for a character that the encoding has not.
    using Substitute = std::string (*)(char32_t character);
    /// The bytes with edits of Utf8() made, in whatever order they come. Edits that overlap or
    /// reach beyond the text throw std::invalid_argument, such that split a character, too. Without
    /// a substitute a character that the encoding has not is a failure.
    std::string WithEdits(std::vector<TextEdit> edits, Substitute substitute = nullptr) const;

private:
    std::string Encoded(std::string_view text, Substitute substitute) const;

    std::string m_bytes;
    /// Empty for UTF-8.
    std::string m_utf8;
    std::unique_ptr<Base::CharacterSet> m_set;
};

/// The encoding that the first bytes of a text show: "UTF-16LE", "UTF-16BE", "UTF-32LE",
/// "UTF-32BE"; empty when they show none of these. A mark tells, or what stands around the zeros of
/// the first letter, when that is `first`.
std::string_view UnicodeFormOf(std::string_view bytes, char first);

} // namespace Halvern::PluginKit
