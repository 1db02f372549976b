// SPDX-License-Identifier: Apache-2.0

#include "SvgFixture.h"

#include "pluginkit/Compression.h"

namespace Halvern::Test {

namespace {

class DamagedSvg : public SvgFixture
{
protected:
    std::string Failure(const QByteArray& content, const char* name = "a.svg")
    {
        return ReadFailure(QString::fromLatin1(name), content).toStdString();
    }
    static QByteArray Packed(const QByteArray& text)
    {
        return QByteArray::fromStdString(
            PluginKit::Compressed(PluginKit::Compression::Gzip, text.toStdString()));
    }
};

} // namespace

TEST_F(DamagedSvg, WhatIsWrongWithADrawingIsReportedWithItsPlace)
{
    const QByteArray longName(300, 'x');
    const struct
    {
        const char* what;
        QByteArray content;
        std::string message;
    } rows[] = {
        {"nothing", "", "no element found (byte 0)"},
        {"no XML", "hello", "syntax error (byte 0)"},
        {"cut off in an address", "<svg><image href='a.p", "unclosed token (byte 5)"},
        {"cut off in a style", "<svg><style>@import 'a", "no element found (byte 22)"},
        {"cut off in a section", "<svg><style><![CDATA[x", "unclosed CDATA section (byte 22)"},
        {"cut off in an instruction", "<?xml-stylesheet href='a'", "unclosed token (byte 0)"},
        {"tags that do not match", "<svg><g></svg>", "mismatched tag (byte 10)"},
        {"UTF-16", QByteArray("\xFF\xFE<\0s\0", 6), "unclosed token (byte 2)"},
        {"Latin-1 that nobody announces", "<svg>\xE4</svg>",
         "not well-formed (invalid token) (byte 5)"},
        {"deep nesting", QByteArray("<g>").repeated(1'000'000),
         "nested deeper than 512 levels (byte 1536)"},
        {"a path that is too long", Svg("<image href='" + longName + "'/>"),
         "the path of link image/href has 300 characters; a link can have 259"},
        {"an attribute's name that is too long",
         Svg("<image xmlns:" + longName + "='x' " + longName + ":href='a'/>"),
         "the id of link image/" + longName.toStdString() +
             ":href has 311 characters; a link can have 259"},
        {"a percent-encoded NUL", Svg("<image href='a%00b.png'/>"),
         "the path of link image/href holds a NUL character"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Failure(row.content), row.message) << row.what;
}

TEST_F(DamagedSvg, AHugeStyleIsRefused)
{
    EXPECT_EQ(Failure("<svg><style>" + QByteArray((16 << 20) + 1, ' ') + "</style></svg>"),
              "a style sheet of more than 16 MiB (byte 12)");
    EXPECT_EQ(Failure("<svg style='" + QByteArray((16 << 20) + 1, ' ') + "'/>"),
              "a style sheet of more than 16 MiB (byte 12)");
    EXPECT_EQ(Failure(QByteArray((16 << 20) + 1, ' '), "a.css"),
              "a style sheet of more than 16 MiB");
}

TEST_F(DamagedSvg, AnAddressThatIsTooLongForAnyLinkIsRefusedAndAPictureIsNot)
{
    const QByteArray longText(70'000, 'a');
    EXPECT_EQ(Failure("<svg><image href='" + longText + "'/></svg>"),
              "an address of more than 64 KiB (byte 18)");
    EXPECT_EQ(Failure("<?xml-stylesheet href='" + longText + "'?><svg/>"),
              "an address of more than 64 KiB (byte 23)");
    EXPECT_EQ(LinksOf("<image href='data:" + longText + "'/><image href=' data:" + longText +
                      "'/><image href='#" + longText + "'/><image href='a.png'/>"),
              (Links{LinkTo(u"image/href#4", u"a.png")}));
}

TEST_F(DamagedSvg, TooManyAddressesAreRefused)
{
    QByteArray text = "<svg>";
    for (int i = 0; i <= 1'000'001; ++i)
        text += "<a id='" + QByteArray::number(i) + "' href='#'/>";
    EXPECT_EQ(Failure(text + "</svg>"), "more than 1000000 addresses");
}

TEST_F(DamagedSvg, AStyleSheetThatIsNoUtf8IsRefused)
{
    EXPECT_EQ(Failure("p{fill:url(H\xF6he.svg)}", "a.css"),
              "the style sheet is not encoded as UTF-8");
}

TEST_F(DamagedSvg, ADrawingCutAnywhereIsReported)
{
    const QByteArray good =
        "<?xml version='1.0'?><?xml-stylesheet href='a'?><svg><style>@import 'a';"
        "</style><image href='b'/></svg>";
    for (qsizetype size = 0; size < good.size(); ++size)
        EXPECT_NE(Failure(good.left(size)), "") << size;
}

TEST_F(DamagedSvg, ACompressedDrawingCutAnywhereIsReported)
{
    const QByteArray good = Packed(Svg("<image href='a.png'/>"));
    for (qsizetype size = 0; size < good.size(); ++size)
        EXPECT_NE(Failure(good.left(size), "a.svgz"), "") << size;
    EXPECT_EQ(Failure(Packed("<svg><g></svg>"), "a.svgz"),
              "mismatched tag at byte 10 of the unpacked text");
}

TEST_F(DamagedSvg, ABombIsRefused)
{
    const QByteArray bomb = Packed(QByteArray(1 << 20, ' ')).repeated(300);
    ASSERT_LT(bomb.size(), 1 << 20);
    EXPECT_TRUE(Failure(bomb, "a.svgz").find("more than") != std::string::npos)
        << Failure(bomb, "a.svgz");
}

TEST_F(DamagedSvg, EntitiesThatBreedAreRefused)
{
    QByteArray document = "<!DOCTYPE svg [<!ENTITY e0 'aaaaaaaaaa'>";
    for (int i = 1; i < 10; ++i)
        document += "<!ENTITY e" + QByteArray::number(i) + " '" +
                    ("&e" + QByteArray::number(i - 1) + ";").repeated(10) + "'>";
    EXPECT_TRUE(Failure(document + "]><svg><image href='&e9;'/></svg>")
                    .starts_with("limit on input amplification factor"));
}

} // namespace Halvern::Test
