// SPDX-License-Identifier: Apache-2.0

// Drawings in other encodings than UTF-8.

#include "SvgFixture.h"

#include "pluginkit/Compression.h"

#include <QtCore/QStringDecoder>
#include <QtCore/QStringEncoder>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class SvgEncoding : public SvgFixture
{
protected:
    const QString file = u"a.svg"_s;
};

QByteArray Document(const char* encoding, const QByteArray& content)
{
    return QByteArray("<?xml version='1.0' encoding='") + encoding + "'?>\r\n<svg>" + content +
           "</svg>\n";
}

QByteArray InUnicodeForm(const QString& text, QStringConverter::Encoding form, bool hasMark)
{
    QStringEncoder encoder(form, hasMark ? QStringConverter::Flag::WriteBom
                                         : QStringConverter::Flag::Default);
    return encoder.encode(text);
}

struct Row
{
    const char* encoding;
    /// "Höhe", or another word that the encoding has.
    QByteArray bytes;
    const char* text;
};

const Row Rows[] = {
    {"ISO-8859-1", "H\xF6he", "Höhe"},
    {"iso-8859-15", "\xA4\xF6", "€ö"},
    {"windows-1252", "\x80 H\xF6he", "€ Höhe"},
    {"Windows-1250", "\x8A\xE8", "Šč"},
    {"windows-1251", "\xC2\xFB\xF1", "Выс"},
    {"KOI8-R", "\xF7\xD9\xD3", "Выс"},
    {"Shift_JIS", "\x8D\x82\x82\xB3", "高さ"},
    {"EUC-JP", "\xB9\xE2\xA4\xB5", "高さ"},
    {"GB2312", "\xB8\xDF", "高"},
    {"Big5", "\xB0\xAA", "高"},
    {"EUC-KR", "\xB3\xF4", "높"},
};

} // namespace

TEST_F(SvgEncoding, WhatADeclarationAnnouncesIsRead)
{
    for (const Row& row : Rows) {
        tree.File(file, Document(row.encoding, "<image href='" + row.bytes +
                                                   "/a.png'/><style>"
                                                   "@import '" +
                                                   row.bytes + ".css'</style>"));
        const QString text = QString::fromUtf8(row.text);
        EXPECT_EQ(Read(file), (Links{{u"image/href"_s, text + u"/a.png"_s},
                                     {u"style/@import"_s, text + u".css"_s}}))
            << row.encoding;
    }
}

TEST_F(SvgEncoding, RewritingChangesTheLinksThatAreAskedForAndNoOtherByte)
{
    for (const Row& row : Rows) {
        const QByteArray content = "<title>" + row.bytes + "</title><image href='" + row.bytes +
                                   ".png#" + row.bytes + "' id='i'/><image href='b.png'/>" +
                                   row.bytes;
        QByteArray expected = content;
        expected.replace("href='" + row.bytes + ".png#", "href='../x%20y/%C3%B6.png#");
        EXPECT_EQ(ResolverFixture::Rewritten(
                      file, Document(row.encoding, content),
                      {{u"#i/href"_s, u"../x y/ö.png"_s}, {u"image/href"_s, u"b.png"_s}}),
                  Document(row.encoding, expected))
            << row.encoding;
    }
}

TEST_F(SvgEncoding, UnicodeIsReadAndRewrittenInAllItsForms)
{
    const QString before = u"<?xml version='1.0' encoding='UTF-16'?><svg><title>木𝄞</title>"
                           "<image href='Höhe 木𝄞.png'/></svg>"_s;
    QString after = before;
    after.replace(u"Höhe 木𝄞.png"_s, u"../b.png"_s);
    for (const auto form : {QStringConverter::Utf16LE, QStringConverter::Utf16BE,
                            QStringConverter::Utf32LE, QStringConverter::Utf32BE}) {
        for (const bool hasMark : {true, false}) {
            tree.File(file, InUnicodeForm(before, form, hasMark));
            EXPECT_EQ(Read(file), (Links{{u"image/href"_s, u"Höhe 木𝄞.png"_s}})) << int(form);
            EXPECT_TRUE(ResolverFixture::Rewritten(file, InUnicodeForm(before, form, hasMark),
                                                   {{u"image/href"_s, u"../b.png"_s}}) ==
                        InUnicodeForm(after, form, hasMark))
                << int(form) << hasMark;
        }
    }
}

TEST_F(SvgEncoding, APackedDrawingMayHaveAnyEncoding)
{
    const QByteArray text = Document("ISO-8859-1", "<image href='H\xF6he.png'/>");
    const auto packed = [](const QByteArray& bytes) {
        return QByteArray::fromStdString(
            PluginKit::Compressed(PluginKit::Compression::Gzip, bytes.toStdString()));
    };
    const QString svgz = u"a.svgz"_s;
    tree.File(svgz, packed(text));
    EXPECT_EQ(Read(svgz), (Links{{u"image/href"_s, u"Höhe.png"_s}}));
    EXPECT_EQ(ResolverFixture::Rewritten(svgz, packed(text), {{u"image/href"_s, u"b.png"_s}}),
              packed(Document("ISO-8859-1", "<image href='b.png'/>")));
}

TEST_F(SvgEncoding, ACharacterThatTheEncodingHasNotIsWrittenByItsNumber)
{
    const QByteArray text = Document(
        "ISO-8859-1", "<image xlink:href='a.png' sodipodi:absref='/x/a.png' xmlns:xlink='x' "
                      "xmlns:sodipodi='s' id='\xF6'/>");
    const QByteArray result =
        ResolverFixture::Rewritten(file, text, {{u"#ö/xlink:href"_s, u"ö 木.png"_s}});
    EXPECT_TRUE(result.contains("xlink:href='%C3%B6%20%E6%9C%A8.png'")) << result.toStdString();
    EXPECT_TRUE(result.contains("/\xF6 &#26408;.png' xmlns")) << result.toStdString();
}

TEST_F(SvgEncoding, AStyleSheetInUtf16IsReadAndRewritten)
{
    const QString css = u"a.css"_s;
    const QString text = u"@import 'Höhe.css'; p{fill:url(b.svg#x)}"_s;
    for (const auto form : {QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
        EXPECT_TRUE(ResolverFixture::Rewritten(css, InUnicodeForm(text, form, true),
                                               {{u"css/@import"_s, u"c.css"_s}}) ==
                    InUnicodeForm(QString(text).replace(u"Höhe"_s, u"c"_s), form, true));
    }
}

TEST_F(SvgEncoding, AnEncodingThatIsNotReadIsReportedByName)
{
    const auto failure = [&](const QByteArray& content) {
        return ReadFailure(file, content).toStdString();
    };
    for (const char* const name : {"nowhere", "UTF-7", "ISO-2022-JP", "IBM037", "UTF-16", "../x"})
        EXPECT_EQ(failure(Document(name, "\xF6")),
                  "the encoding " + std::string(name) + " is not read (byte 0)");
    EXPECT_EQ(failure("<?xml version='1.0' encoding='" + QByteArray(300, 'x') + "'?><svg>\xF6"),
              "the encoding " + std::string(40, 'x') + " is not read (byte 0)");
}

TEST_F(SvgEncoding, WhatIsWrongIsReportedWithItsPlaceInTheFile)
{
    EXPECT_EQ(ReadFailure(file, Document("ISO-8859-1", "\xF6\xF6\xF6</g>")),
              u"mismatched tag (byte 55)"_s);
    EXPECT_EQ(ReadFailure(file, Document("Shift_JIS", "a\x81")),
              u"bytes that are no character in the text's encoding (byte 50)"_s);
    const QByteArray wide = InUnicodeForm(u"<svg>ö</g>"_s, QStringConverter::Utf16LE, true);
    EXPECT_EQ(ReadFailure(file, wide), u"mismatched tag (byte 18)"_s);
    EXPECT_EQ(ReadFailure(file, wide.chopped(1)),
              u"bytes that are no character in the text's encoding (byte 20)"_s);
    EXPECT_EQ(ReadFailure(file, QByteArray("\xFF\xFE\0\xD8"
                                           "a\0",
                                           6)),
              u"bytes that are no character in the text's encoding (byte 2)"_s);
}

TEST_F(SvgEncoding, ADrawingCutAnywhereIsReported)
{
    const QByteArray wide = InUnicodeForm(u"<?xml version='1.0'?><svg><image href='ö𝄞'/></svg>"_s,
                                          QStringConverter::Utf16BE, false);
    const QByteArray narrow = Document("Shift_JIS", "<image href='\x8D\x82\x82\xB3'/>").trimmed();
    for (const QByteArray& good : {wide, narrow})
        for (qsizetype size = 0; size < good.size(); ++size)
            EXPECT_NE(ReadFailure(file, good.left(size)), QString()) << size;
}

} // namespace Halvern::Test
