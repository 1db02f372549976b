// SPDX-License-Identifier: Apache-2.0

#include "dxf/DxfText.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

using Formats::Dxf::DxfText;

namespace {

struct Row
{
    const char* what;
    std::string raw;
    std::string text;
};

} // namespace

TEST(DxfTexts, EscapesAreResolved)
{
    const DxfText text("AC1032", "ANSI_1252");
    const Row rows[] = {
        {"nothing", "", ""},
        {"plain", "a b\\c.png", "a b\\c.png"},
        {"a character", "Gr\\U+00F6\\U+00dfe", "Größe"},
        {"a pair", "\\U+D83D\\U+DE00", "😀"},
        {"a pair in one half", "\\U+D83Dx", "\\U+D83Dx"},
        {"a pair with a wrong half", "\\U+D83D\\U+0041", "\\U+D83DA"},
        {"the second half alone", "\\U+DE00", "\\U+DE00"},
        {"an escape cut off", "a\\U+00F", "a\\U+00F"},
        {"no digits", "a\\U+00Gx", "a\\U+00Gx"},
        {"no character", "\\U+0000", "\\U+0000"},
        {"a character of Shift JIS", "\\M+1967B", "本"},
        {"a character of Big5", "\\M+2A4EC", "木"},
        {"a page that there is not", "\\M+9967B", "\\M+9967B"},
        {"no character of the page", "\\M+1FFFF", "\\M+1FFFF"},
        {"a caret", "a^ b", "a^b"},
        {"a caret at the end", "a^", "a^"},
        {"a control character, which no name has", "a^Jb", "a^Jb"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(text.Decode(row.raw), row.text) << row.what;
}

TEST(DxfTexts, WhatIsWrittenReadsAsTheSame)
{
    const std::pair<const char*, const char*> forms[] = {
        {"AC1032", "ANSI_1252"}, {"AC1021", ""},         {"AC1018", "ANSI_1251"},
        {"AC1015", "ANSI_932"},  {"AC1009", "DOS850"},   {"", ""},
        {"AC1015", "iso8859-2"}, {"AC1014", "NONSENSE"}, {"AC1015", "UTF-8"}};
    for (const auto& [version, page] : forms) {
        const DxfText text(version, page);
        for (const char* path : {"", "a.png", "../Größe/木😀.png", "План ^ x.png", "C:/a b.png"})
            EXPECT_EQ(text.Decode(text.Encode(path)), path) << version << ' ' << page;
    }
}

TEST(DxfTexts, BytesThatTheirPageHasNotAreReadAllTheSame)
{
    EXPECT_EQ(DxfText("AC1032", "")
                  .Decode("Gr\xF6\xDF"
                          "e"),
              "Größe");
    EXPECT_EQ(DxfText("AC1015", "ANSI_932").Decode("a\x81"), "a\xC2\x81");
    EXPECT_EQ(DxfText("AC1015", "NONSENSE").Decode("Größe"), "Größe");
}

// Converters give the sign of the money for the backslash of this page.
TEST(DxfTexts, ABackslashInAKoreanPageIsOne)
{
    const DxfText text("AC1015", "JOHAB");
    const std::string raw = "K\\\x8B\x61\x9F\xB1\\a.png";
    EXPECT_EQ(text.Decode(raw), "K\\그림\\a.png");
    EXPECT_EQ(text.Encode("K\\그림\\a.png"), raw);
}

} // namespace Halvern::Test
