// SPDX-License-Identifier: Apache-2.0

#include "Masking.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <gtest/gtest.h>

using namespace Halvern::Cli;
using namespace Qt::StringLiterals;

namespace {

/// Everything that must not reach a terminal.
QList<char16_t> Dangerous()
{
    QList<char16_t> characters{0x7F, 0x061C, 0x200E, 0x200F, 0x2028, 0x2029};
    const auto add = [&](char16_t first, char16_t last) {
        for (char16_t c = first; c <= last; ++c)
            characters.append(c);
    };
    add(0x00, 0x1F);
    add(0x80, 0x9F);
    add(0x202A, 0x202E);
    add(0x2066, 0x2069);
    return characters;
}

} // namespace

TEST(Masking, ShowsControlCharactersByTheirNumber)
{
    EXPECT_EQ(Masked(u"a\x1b[31mb"_s), u"a\\x1b[31mb"_s);
    EXPECT_EQ(Masked(u"a\nb\tc"_s), u"a\\x0ab\\x09c"_s);
    EXPECT_EQ(Masked(u"a\u009b31m"_s), u"a\\x9b31m"_s);
    EXPECT_EQ(Masked(u"gpj.\u202etfelg"_s), u"gpj.\\u202etfelg"_s);
}

TEST(Masking, LeavesNoDangerousCharacterInTextsAndInJson)
{
    for (const char16_t c : Dangerous()) {
        const QString text = u"a"_s + QChar(c) + u'b';
        EXPECT_FALSE(Masked(text).contains(QChar(c))) << uint(c);
        EXPECT_EQ(MaskedLines(text).contains(QChar(c)), c == u'\n') << uint(c);
        const QJsonObject object{{u"name"_s, text}};
        const QByteArray json = MaskedJson(QJsonDocument(object).toJson(QJsonDocument::Compact));
        EXPECT_FALSE(QString::fromUtf8(json).contains(QChar(c))) << uint(c);
        EXPECT_EQ(QJsonDocument::fromJson(json).object(), object) << uint(c);
    }
}

TEST(Masking, LeavesNamesOfEveryAlphabetAsTheyAre)
{
    // The last ones hold characters of more than 16 bits, and a joiner that Persian needs.
    for (const QString& name :
         {u"plain \\x1b name"_s, u"Größe – Ø.prt"_s, u"設計図.fcstd"_s, u"تصميم.svg"_s,
          u"🏠👨‍👩‍👧.gltf"_s, u"می‌خواهم"_s}) {
        EXPECT_EQ(Masked(name), name);
        EXPECT_EQ(MaskedLines(name), name);
    }
}
