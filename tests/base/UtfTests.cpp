// SPDX-License-Identifier: Apache-2.0

#include "base/Utf.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using namespace Halvern::Base;

const std::u16string high(1, char16_t(0xD83C));
const std::u16string low(1, char16_t(0xDF32));

TEST(UtfText, OfEveryLengthSurvivesTheRoundTrip)
{
    for (const char16_t* const text : {u"", u"a\u00e4\u6728\U0001f332", u"\u007f\u0080\u07ff\u0800",
                                       u"\ud7ff\ue000\uffff\U00010000\U0010ffff"})
        EXPECT_EQ(ToUtf16(ToUtf8(text).value()), text);
    EXPECT_EQ(ToUtf8(u"\u00e4\U0001f332"), "\xC3\xA4\xF0\x9F\x8C\xB2");
}

TEST(UtfText, WithALoneSurrogateHasNoUtf8ButAReplacementInMessages)
{
    for (const std::u16string& text :
         {high, low, low + high, u"a" + high + u"b", high + high + low})
        EXPECT_FALSE(ToUtf8(text));
    EXPECT_EQ(ToUtf8Lossy(u"a" + high + u"b"), "a\uFFFDb");
    EXPECT_EQ(ToUtf8Lossy(low + high), "\uFFFD\uFFFD");
    EXPECT_EQ(ToUtf8Lossy(high + high + low), "\uFFFD\U0001F332");
}

TEST(UtfText, OfBytesThatAreNoneIsRefusedAndShownByteByByte)
{
    const std::pair<std::string, std::u16string> rows[] = {
        {"a\xFF"
         "b",
         u"a\uFFFDb"},
        {"\xC3", u"\uFFFD"},
        {"\xE6\x9C", u"\uFFFD\uFFFD"},
        {"\xE6\x9C"
         "a",
         u"\uFFFD\uFFFDa"},
        {"\xC0\xAF", u"\uFFFD\uFFFD"},                     // overlong
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},           // a surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"}, // beyond the last code point
        {"\x80"
         "\xC3\xA4",
         u"\uFFFD\u00e4"}};
    for (const auto& [bytes, shown] : rows) {
        EXPECT_FALSE(IsUtf8(bytes));
        EXPECT_FALSE(ToUtf16(bytes));
        EXPECT_EQ(ToUtf16Lossy(bytes), shown) << bytes;
    }
}

TEST(UtfText, IsShownWithWhatIsNoTextEscaped)
{
    EXPECT_EQ(EscapedUtf8(std::string_view("a\xC3\xA4\xFF"
                                           "b\xC3")),
              "a\u00e4\\xFFb\\xC3");
    EXPECT_EQ(EscapedUtf8(std::string_view("\xED\xA0\x80\x0F")), "\\xED\\xA0\\x80\x0F");
    EXPECT_EQ(EscapedUtf8(std::string_view()), "");
    EXPECT_EQ(EscapedUtf8(u"\u00e4" + high + u"b\U0001f332" + low),
              "\u00e4\\uD83Cb\U0001F332\\uDF32");
    EXPECT_EQ(EscapedUtf8(high + high + low), "\\uD83C\U0001F332");
    EXPECT_EQ(EscapedUtf8(std::u16string_view()), "");
}

TEST(UtfText, GrowsByCodePoints)
{
    std::string text;
    for (const char32_t code : {U'a', U'\u00e4', U'\u6728', U'\U0001f332'})
        AppendUtf8(text, code);
    EXPECT_EQ(text, "a\u00e4\u6728\U0001f332");
}

} // namespace
