// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/EncodedText.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Xml.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Halvern::Test {

using namespace PluginKit;
using namespace std::string_literals;

namespace {

constexpr std::size_t Large = 1 << 20;

std::string FailureOf(const std::string& bytes, std::string_view encoding,
                      std::size_t maxSize = Large)
{
    try {
        return "read as " + EncodedText(bytes, encoding, maxSize).Utf8();
    } catch (const FormatError& error) {
        return error.what() +
               (error.Position() ? " @" + std::to_string(*error.Position()) : std::string());
    }
}

} // namespace

TEST(EncodedText, Utf8IsLeftAsItIs)
{
    const EncodedText text("a\xFF\xC3\xB6", "utf-8", Large);
    EXPECT_EQ(text.Utf8(), "a\xFF\xC3\xB6");
    EXPECT_EQ(text.PlaceOf(3), 3U);
    EXPECT_EQ(text.WithEdits({{2, 4, "b"}}), "a\xFF"
                                             "b");
}

TEST(EncodedText, PlacesAreThoseOfTheCharactersThatBytesBelongTo)
{
    const EncodedText narrow("H\xF6h", "ISO-8859-1", Large);
    EXPECT_EQ(narrow.Utf8(), "Höh");
    const std::size_t places[] = {0, 1, 1, 2, 3};
    for (std::size_t i = 0; i < std::size(places); ++i)
        EXPECT_EQ(narrow.PlaceOf(i), places[i]) << i;
    const EncodedText wide("\xD8\x34\xDD\x1E\0a"s, "UTF-16BE", Large);
    EXPECT_EQ(wide.Utf8(), "\xF0\x9D\x84\x9E"
                           "a");
    EXPECT_EQ(wide.PlaceOf(3), 0U);
    EXPECT_EQ(wide.PlaceOf(4), 4U);
    EXPECT_EQ(wide.PlaceOf(5), 6U);
}

TEST(EncodedText, EditsChangeTheirBytesAlone)
{
    const EncodedText text("a\xF6"
                           "b\xE4",
                           "ISO-8859-1", Large);
    EXPECT_EQ(text.WithEdits({{4, 6, "ü!"}, {1, 3, ""}}), "ab\xFC!");
    EXPECT_EQ(text.WithEdits({}), "a\xF6"
                                  "b\xE4");
    EXPECT_EQ(text.WithEdits({{6, 6, "x"}}), "a\xF6"
                                             "b\xE4x");
}

TEST(EncodedText, EditsThatOverlapOrSplitACharacterAreAMistake)
{
    const EncodedText text("a\xF6"
                           "b",
                           "ISO-8859-1", Large);
    EXPECT_THROW(text.WithEdits({{1, 2, "x"}}), std::invalid_argument);
    EXPECT_THROW(text.WithEdits({{2, 3, "x"}}), std::invalid_argument);
    EXPECT_THROW(text.WithEdits({{0, 3, "x"}, {1, 4, "y"}}), std::invalid_argument);
    EXPECT_THROW(text.WithEdits({{3, 5, "x"}}), std::invalid_argument);
    EXPECT_THROW(text.WithEdits({{3, 1, "x"}}), std::invalid_argument);
}

TEST(EncodedText, WhatTheEncodingHasNotIsSubstitutedOrAFailure)
{
    const EncodedText text("a", "ISO-8859-1", Large);
    EXPECT_EQ(
        text.WithEdits({{0, 1, "ö木"}},
                       [](char32_t c) { return '[' + std::to_string(std::uint32_t(c)) + ']'; }),
        "\xF6[26408]");
    EXPECT_THROW(text.WithEdits({{0, 1, "木"}}), FormatError);
    EXPECT_THROW(text.WithEdits({{0, 1, "\xFF"}}), FormatError);
}

TEST(EncodedText, WhatCannotBeReadIsReported)
{
    EXPECT_EQ(FailureOf("a", "nowhere"), "the encoding nowhere is not read @0");
    for (const char* const name : {"", "UTF-16", "UTF-7", "iso-2022-jp", "IBM037", "a/b", "a b"})
        EXPECT_EQ(FailureOf("a", name), "the encoding " + std::string(name) + " is not read @0");
    const std::string noCharacter = "bytes that are no character in the text's encoding @";
    EXPECT_EQ(FailureOf("\0a\xD8\0"s, "UTF-16BE"), noCharacter + "2");
    EXPECT_EQ(FailureOf("\0a\xDC\0\0b"s, "UTF-16BE"), noCharacter + "2");
    EXPECT_EQ(FailureOf("\xD8\0\0a"s, "UTF-16BE"), noCharacter + "0");
    EXPECT_EQ(FailureOf("\0\0\xD8\0"s, "UTF-32BE"), noCharacter + "0");
    EXPECT_EQ(FailureOf("\0\x11\0\0"s, "UTF-32BE"), noCharacter + "0");
    EXPECT_EQ(FailureOf("ab\x81\x20"s, "Shift_JIS"), noCharacter + "2");
    EXPECT_EQ(FailureOf(std::string(100, '\xF6'), "ISO-8859-1", 199),
              "a text of more than 199 bytes in UTF-8");
    EXPECT_EQ(FailureOf(std::string(100, 'a'), "UTF-8", 99),
              "a text of more than 99 bytes in UTF-8");
}

TEST(EncodedText, OfXmlTheFirstBytesOrTheDeclarationTell)
{
    const std::pair<std::string, const char*> rows[] = {
        {"<a/>", "UTF-8"},
        {"", "UTF-8"},
        {"\xFE\xFF\0<"s, "UTF-16BE"},
        {"\xFF\xFE<\0"s, "UTF-16LE"},
        {"\0<\0a"s, "UTF-16BE"},
        {"<\0a\0"s, "UTF-16LE"},
        {"\0\0\xFE\xFF"s, "UTF-32BE"},
        {"\xFF\xFE\0\0"s, "UTF-32LE"},
        {"\0\0\0<"s, "UTF-32BE"},
        {"<\0\0\0"s, "UTF-32LE"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xF6</a>", "ISO-8859-1"},
        {"\xEF\xBB\xBF<?xml version=\"1.0\" encoding = \"UTF-8\" ?><a>ö</a>", "UTF-8"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><a/>", "US-ASCII"},
        {"<?xml version='1.0' encoding='UTF-16'?><a/>", "US-ASCII"},
        {"<?xml version='1.0' encoding='x'?><a/>", "US-ASCII"},
        {"<?xml version='1.0' encoding='utf-8'?><a/>", "UTF-8"},
        {"<?xml version='1.0'?><a encoding='x'>ö</a>", "UTF-8"},
        {"<?xml version='1.0' encoding='x?><a>ö</a>", "UTF-8"},
        {"<?xml version='1.0' encoding", "UTF-8"},
    };
    for (const auto& [bytes, encoding] : rows)
        EXPECT_EQ(XmlEncodingOf(bytes), encoding) << bytes;
}

TEST(EncodedText, OfAsciiTakesNoOtherCharacter)
{
    const EncodedText text("ab", "US-ASCII", 10);
    EXPECT_EQ(text.Utf8(), "ab");
    const auto numbered = [](char32_t code) { return '<' + std::to_string(code) + '>'; };
    EXPECT_EQ(text.WithEdits({{1, 2, "xö木"}}, numbered), "ax<246><26408>");
    EXPECT_EQ(FailureOf("a\xF6", "US-ASCII"),
              "bytes that are no character in the text's encoding @1");
}

} // namespace Halvern::Test
