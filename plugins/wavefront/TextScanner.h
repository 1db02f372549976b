// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/FileScanner.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Halvern::Formats::Wavefront {

/// How the letters of a file are stored, as the mark at its beginning tells.
enum class TextForm
{
    /// UTF-8, or any other form in which those of ASCII are bytes.
    Bytes,
    Utf16Little,
    Utf16Big
};

TextForm TextFormOf(const InputFile& file);
/// The size of the mark at the beginning.
std::uint64_t MarkSize(const InputFile& file);

/// How many bytes UTF-8 text has in a file of the form.
std::uint64_t SizeInFile(std::string_view text, TextForm form);
/// UTF-8 text as the bytes of a file of the form.
std::string InForm(std::string_view text, TextForm form);

/// Goes through a text after its mark, byte by byte of its UTF-8.
class TextScanner
{
public:
    explicit TextScanner(const InputFile& file);

    /// The place in the file of the character that comes next.
    std::uint64_t Position() const { return m_scanner.Position() - m_taken; }
    TextForm Form() const { return m_form; }
    std::optional<char> Peek();
    std::optional<char> Next();
    /// Goes on to the next byte that is one of `bytes`, which stays there, and says whether there
    /// is one. They are ASCII.
    bool SkipTo(std::string_view bytes);

private:
    bool Fill();
    std::uint32_t NextUnit();

    TextForm m_form;
    FileScanner m_scanner;
    /// Of 16-bit text: what is left of the UTF-8 of a character, and its bytes in the file.
    std::string m_rest;
    std::uint64_t m_taken = 0;
};

} // namespace Halvern::Formats::Wavefront
