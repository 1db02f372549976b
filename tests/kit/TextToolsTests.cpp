// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/PercentCoding.h"
#include "pluginkit/TextEdits.h"
#include "pluginkit/Utf.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Halvern::PluginKit {

namespace {

WideString Units(std::initializer_list<int> units)
{
    WideString text;
    for (const int unit : units)
        text.push_back(static_cast<SyncPlugin::WideChar>(unit));
    return text;
}

} // namespace

TEST(Utf, TextOfEveryLengthOfCodePointSurvivesTheRoundTrip)
{
    const std::string text = "a\xC3\xA4\xE6\x9C\xA8\xF0\x9F\x8C\xB2";
    const WideString wide = Units({0x61, 0xE4, 0x6728, 0xD83C, 0xDF32});
    EXPECT_EQ(ToUtf16(text), wide);
    EXPECT_EQ(ToUtf8(wide), text);
}

TEST(Utf, TheBordersOfEveryLengthSurviveTheRoundTrip)
{
    for (const int unit : {0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFF})
        EXPECT_EQ(ToUtf16(ToUtf8(Units({unit})).value()), Units({unit})) << unit;
    EXPECT_EQ(ToUtf8(Units({0xD800, 0xDC00})), "\xF0\x90\x80\x80");
    EXPECT_EQ(ToUtf8(Units({0xDBFF, 0xDFFF})), "\xF4\x8F\xBF\xBF");
}

TEST(Utf, ALoneSurrogateHasNoUtf8)
{
    EXPECT_FALSE(ToUtf8(Units({0xD83C})));
    EXPECT_FALSE(ToUtf8(Units({0xD83C, 0x61})));
    EXPECT_FALSE(ToUtf8(Units({0xDF32})));
    EXPECT_FALSE(ToUtf8(Units({0xDF32, 0xD83C})));
}

TEST(Utf, AMessageShowsAReplacementForALoneSurrogate)
{
    EXPECT_EQ(ToUtf8Lossy(Units({0x61, 0xD83C, 0x62})), "a\uFFFDb");
    EXPECT_EQ(ToUtf8Lossy(Units({0xDF32, 0xD83C})), "\uFFFD\uFFFD");
    EXPECT_EQ(ToUtf8Lossy(Units({0xD83C, 0xDF32})), "\U0001F332");
}

TEST(Utf, WhatIsNoUtf8IsRefused)
{
    const std::pair<const char*, std::string> bad[] = {
        {"a continuation byte alone", "a\x80"},
        {"a sequence cut short by the end", "\xE6\x9C"},
        {"a sequence cut short by a letter", "\xE6\x9C"
                                             "a"},
        {"an overlong form of two bytes", "\xC1\x81"},
        {"an overlong form of three bytes", "\xE0\x80\xAF"},
        {"an overlong form of four bytes", "\xF0\x80\x80\xAF"},
        {"an encoded surrogate", "\xED\xA0\x80"},
        {"a code point beyond Unicode", "\xF4\x90\x80\x80"},
        {"a byte that opens nothing", "\xFF"},
    };
    for (const auto& [what, bytes] : bad) {
        EXPECT_FALSE(IsUtf8(bytes)) << what;
        EXPECT_FALSE(ToUtf16(bytes)) << what;
    }
}

TEST(Utf, AMessageShowsAReplacementForWhatIsNoUtf8)
{
    EXPECT_EQ(ToUtf16Lossy("a\xFF"
                           "b"),
              Units({0x61, 0xFFFD, 0x62}));
}

TEST(PercentCoding, DecodingTakesEscapesOfEitherCase)
{
    EXPECT_EQ(PercentDecode("H%C3%b6he%20%25"), "H\xC3\xB6he %");
}

TEST(PercentCoding, APercentSignWithoutTwoDigitsStandsForItself)
{
    EXPECT_EQ(PercentDecode("50% oak%2"), "50% oak%2");
    EXPECT_EQ(PercentDecode("%zz%4g%"), "%zz%4g%");
}

TEST(PercentCoding, EncodingKeepsWhatAPathMayHoldAndNothingElse)
{
    EXPECT_EQ(PercentEncodePath("aZ09-._~!$&'()*+,;=:@/"), "aZ09-._~!$&'()*+,;=:@/");
    EXPECT_EQ(PercentEncodePath(std::string(" \"#%<>?[\\]^`{|}\x7F\n\0", 17)),
              "%20%22%23%25%3C%3E%3F%5B%5C%5D%5E%60%7B%7C%7D%7F%0A");
    EXPECT_EQ(PercentEncodePath("\xC3\xB6"), "%C3%B6");
}

TEST(PercentCoding, EveryByteComesBackFromTheRoundTrip)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all.push_back(static_cast<char>(byte));
    EXPECT_EQ(PercentDecode(PercentEncodePath(all)), all);
}

TEST(TextEdits, EditsInAnyOrderLeaveEveryOtherByteAlone)
{
    EXPECT_EQ(ApplyEdits("one two three", {{8, 13, "3"}, {0, 3, "first"}, {4, 4, "+"}}),
              "first +two 3");
    EXPECT_EQ(ApplyEdits("same", {}), "same");
    EXPECT_EQ(ApplyEdits("gone", {{0, 4, ""}}), "");
}

TEST(TextEdits, NeighboursMayTouch)
{
    EXPECT_EQ(ApplyEdits("abcd", {{0, 2, "x"}, {2, 4, "y"}}), "xy");
}

TEST(TextEdits, EditsThatOverlapOrLieOutsideAreRefused)
{
    EXPECT_THROW(ApplyEdits("abcd", {{0, 3, ""}, {2, 4, ""}}), std::invalid_argument);
    EXPECT_THROW(ApplyEdits("abcd", {{3, 5, ""}}), std::invalid_argument);
    EXPECT_THROW(ApplyEdits("abcd", {{3, 2, ""}}), std::invalid_argument);
}

TEST(Utf, BytesThatAreNoUtf8AreReadAsLatin1)
{
    EXPECT_EQ(Utf8OrLatin1("Höhe 木"), "Höhe 木");
    EXPECT_EQ(Utf8OrLatin1("H\xF6he"), "Höhe");
    EXPECT_EQ(Utf8OrLatin1("\x80\xFF"), "\u0080ÿ");
    EXPECT_EQ(Utf8OrLatin1(""), "");
}

} // namespace Halvern::PluginKit
