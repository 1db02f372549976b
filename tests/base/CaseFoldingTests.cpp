// SPDX-License-Identifier: Apache-2.0

#include "base/CaseFolding.h"

#include "base/Units.h"

#include <QtCore/QString>

#include <gtest/gtest.h>

namespace {

using namespace Halvern::Base;

/// Every code point but the surrogates, each after a letter.
template <typename Visit>
void ForEveryCharacter(Visit visit)
{
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        if (c < 0xD800 || c > 0xDFFF)
            visit(c, u'A' + QStringView(QChar::fromUcs4(c)).toString());
    }
}

// Keys in databases that exist were folded by Qt.
TEST(CaseFolding, GivesTheKeysThatQtGives)
{
    ForEveryCharacter([](char32_t c, const QString& text) {
        const QString expected = text.toCaseFolded();
        ASSERT_TRUE(FoldCase(Units(text)) == Units(expected)) << std::hex << std::uint32_t(c);
    });
}

TEST(CaseFolding, ComparesAsQtDoes)
{
    ForEveryCharacter([](char32_t c, const QString& text) {
        for (const QString& other : {text.toLower(), text.toUpper(), text.toCaseFolded()}) {
            const bool equal = text.compare(other, Qt::CaseInsensitive) == 0;
            ASSERT_EQ(IsEqualIgnoringCase(Units(text), Units(other)), equal)
                << std::hex << std::uint32_t(c);
            ASSERT_EQ(StartsWithIgnoringCase(Units(text), Units(other)),
                      text.startsWith(other, Qt::CaseInsensitive))
                << std::hex << std::uint32_t(c);
        }
    });
}

TEST(CaseFolding, KeepsALoneSurrogate)
{
    const std::u16string text{u'A', char16_t(0xD801), u'B', char16_t(0xDC00), u'C'};
    const std::u16string folded{u'a', char16_t(0xD801), u'b', char16_t(0xDC00), u'c'};
    EXPECT_EQ(FoldCase(text), folded);
    EXPECT_TRUE(IsEqualIgnoringCase(text, folded));
}

TEST(CaseFolding, TellsLettersApartThatOnlyLookAlike)
{
    EXPECT_TRUE(IsEqualIgnoringCase(u"\u0160KODA \u0394", u"\u0161koda \u03b4"));
    EXPECT_FALSE(IsEqualIgnoringCase(u"stra\u00dfe", u"strasse"));
    EXPECT_FALSE(IsEqualIgnoringCase(u"\u0130", u"i"));
    EXPECT_FALSE(StartsWithIgnoringCase(u"wood", u"woods"));
}

} // namespace
