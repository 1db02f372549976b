// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/FormatError.h"
#include "step/StepText.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

using namespace PluginKit;
using namespace Formats::Step;

namespace {

struct Row
{
    const char* what;
    std::string raw;
    std::string text;
};

} // namespace

TEST(StepText, EscapesAreResolved)
{
    const Row rows[] = {
        {"plain", "a b.stp", "a b.stp"},
        {"nothing", "", ""},
        {"doubled apostrophes", "it''s ''''", "it's ''"},
        {"doubled backslashes", "..\\\\a\\\\b", "..\\a\\b"},
        {"characters of 16 bits", "Gr\\X2\\00F600DF\\X0\\e", "Größe"},
        {"several runs", "\\X2\\6728\\X0\\-\\X2\\76EE\\X0\\", "木-目"},
        {"a surrogate pair", "\\X2\\D83DDE00\\X0\\", "😀"},
        {"characters of 32 bits", "\\X4\\0001F60000006728\\X0\\", "😀木"},
        {"an empty run", "a\\X2\\\\X0\\b", "ab"},
        {"a character of 8 bits", "Gr\\X\\F6\\X\\DFe", "Größe"},
        {"a shifted character", "Gr\\S\\v\\S\\_e", "Größe"},
        {"an alphabet", "\\PA\\Gr\\S\\ve", "Gröe"},
        {"line breaks", "a \r\nb\n.stp", "a b.stp"},
        {"a line break in an escape", "Gr\\X2\\00\n\r\nF6\\X0\\e", "Gröe"},
        {"raw UTF-8", "Größe 木", "Größe 木"},
        {"raw Latin-1",
         "Gr\xF6\xDF"
         "e",
         "Größe"},
        {"a folder of Windows", "D:\\parts\\a.stp", "D:\\parts\\a.stp"},
        {"a backslash at the end", "a\\", "a\\"},
        {"a run cut off", "a\\X2\\00F6", "a\\X2\\00F6"},
        {"a run with half a character", "\\X2\\00F\\X0\\", "\\X2\\00F\\X0\\"},
        {"a run in lower case", "\\X2\\00f6\\X0\\", "\\X2\\00f6\\X0\\"},
        {"half a surrogate pair", "\\X2\\D83D\\X0\\", "\\X2\\D83D\\X0\\"},
        {"the second half alone", "\\X2\\DE00\\X0\\", "\\X2\\DE00\\X0\\"},
        {"a code beyond Unicode", "\\X4\\00110000\\X0\\", "\\X4\\00110000\\X0\\"},
        {"a code cut off", "\\X\\F", "\\X\\F"},
        {"a shift of nothing", "a\\S\\", "a\\S\\"},
        {"a shift of what is no ASCII", "D:\\S\\ö.stp", "D:\\S\\ö.stp"},
        {"an alphabet cut off", "\\PA", "\\PA"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(DecodeString(row.raw), row.text) << row.what;
}

TEST(StepText, WhatIsWrittenIsAsciiAndReadsAsTheSame)
{
    EXPECT_EQ(
        EncodeString("../Größe/it's 木😀.stp"),
        "../Gr\\X2\\00F6\\X0\\\\X2\\00DF\\X0\\e/it''s \\X2\\6728\\X0\\\\X4\\0001F600\\X0\\.stp");
    EXPECT_EQ(EncodeString("a\\b"), "a\\\\b");
    for (const char* text : {"", "a", "'", "''", "\\", "\\\\", "\\X2\\00F6\\X0\\", "\\S\\v",
                             "ü\\'木", "\u0080\u00FF\u0100\uFFFD\U0010FFFF", "C:\\S\\X\\PA\\x"})
        EXPECT_EQ(DecodeString(EncodeString(text)), text) << text;
}

TEST(StepText, ControlCharactersCannotBeWritten)
{
    for (const char* text : {"a\nb", "a\tb", "a\x7F"})
        EXPECT_THROW(static_cast<void>(EncodeString(text)), FormatError) << text;
}

} // namespace Halvern::Test
