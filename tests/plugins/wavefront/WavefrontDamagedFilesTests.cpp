// SPDX-License-Identifier: Apache-2.0

// Text files have no structure to lie about. What they can be is endless, binary, or cut off.

#include "FormatFixture.h"

#include "wavefront/NamingDocument.h"
#include "wavefront/WavefrontResolver.h"

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using Formats::Wavefront::StatementReader;

class DamagedWavefront : public ResolverFixture
{
protected:
    DamagedWavefront() : ResolverFixture(m_resolver) {}

    std::string Object(const QByteArray& content)
    {
        return ReadFailure(u"a.obj"_s, content).toStdString();
    }
    std::string Library(const QByteArray& content)
    {
        return ReadFailure(u"a.mtl"_s, content).toStdString();
    }

private:
    Formats::Wavefront::WavefrontResolver m_resolver;
};

} // namespace

TEST_F(DamagedWavefront, WhatCannotBeALinkIsReported)
{
    const QByteArray limit = QByteArray::number(qulonglong(StatementReader::MaxStatement));
    const std::string tooLong =
        "a statement that names files has more than " + limit.toStdString() + " bytes";
    const QByteArray endless(StatementReader::MaxStatement + 1, 'x');
    EXPECT_EQ(Object("v 0 0 0\nmtllib " + endless), tooLong + " (byte 14)");
    EXPECT_EQ(Object("mtllib a" + QByteArray("\\\n").repeated(1 << 20)), tooLong + " (byte 6)");
    EXPECT_EQ(Library("newmtl m\nmap_Kd " + endless), tooLong + " (byte 15)");
    EXPECT_EQ(Library("newmtl " + endless), tooLong + " (byte 6)");
    EXPECT_EQ(Object(QByteArray("mtllib a\0b.mtl", 14)),
              "the path of link mtllib 1 holds a NUL character");
    EXPECT_EQ(Library(QByteArray("map_Kd a\0b.png", 14)),
              "the path of link /map_kd holds a NUL character");
    EXPECT_EQ(Object("mtllib " + QByteArray(260, 'a')),
              "the path of link mtllib 1 has 260 characters; a link can have 259");
    EXPECT_EQ(Library("map_Kd " + QByteArray("木").repeated(260)),
              "the path of link /map_kd has 260 characters; a link can have 259");
}

TEST_F(DamagedWavefront, AMaterialsNameIsNeverInTheWay)
{
    tree.File(u"a.mtl"_s, QByteArray("newmtl a\0\x01\x7F\xFF\nmap_Kd a.png\n"
                                     "newmtl\nmap_Kd b.png",
                                     45));
    EXPECT_EQ(Read(u"a.mtl"_s),
              (Links{LinkTo(u"a??\x7F\u00FF/map_kd", u"a.png"), LinkTo(u"/map_kd", u"b.png")}));
}

TEST_F(DamagedWavefront, AKeywordThatReadsLikeTheIdOfAnotherStatementIsToldApart)
{
    const QByteArray text = "map_Kd a\nmap_Kd#2 b\nmap_Kd c\nmap_Kd#2 d\n";
    tree.File(u"a.mtl"_s, text);
    EXPECT_EQ(Read(u"a.mtl"_s), (Links{LinkTo(u"/map_kd", u"a"), LinkTo(u"/map_kd#2", u"b"),
                                       LinkTo(u"/map_kd#3", u"c"), LinkTo(u"/map_kd#2#2", u"d")}));
    EXPECT_EQ(Rewritten(u"a.mtl"_s, text, {LinkTo(u"/map_kd#3", u"x")}),
              "map_Kd a\nmap_Kd#2 b\nmap_Kd x\nmap_Kd#2 d\n");
}

TEST_F(DamagedWavefront, SixteenBitTextThatIsNoneIsReported)
{
    EXPECT_EQ(Object(QByteArray("\xFF\xFEm\0t", 5)), "the text ends within a character (byte 4)");
    EXPECT_EQ(Library(QByteArray("\xFE\xFF\0n\0\n\xD8", 7)),
              "the text ends within a character (byte 6)");
    const std::string message = "bytes that are no 16-bit text (byte 4)";
    EXPECT_EQ(Object(QByteArray("\xFF\xFEm\0\0\xDC", 6)), message);
    EXPECT_EQ(Object(QByteArray("\xFF\xFEm\0\0\xD8m\0", 8)), message);
    EXPECT_EQ(Object(QByteArray("\xFF\xFEm\0\0\xD8", 6)),
              "the text ends within a character (byte 6)");
}

TEST_F(DamagedWavefront, TooManyNamesAreReported)
{
    const std::size_t most = Formats::Wavefront::NamingDocument::MaxStatements;
    const QByteArray all = QByteArray("bump a\n").repeated(static_cast<qsizetype>(most) + 1);
    EXPECT_EQ(Library(all), "the file names too many files (byte 700004)");
    const auto size = static_cast<qsizetype>(StatementReader::MaxStatement) - 1;
    const QByteArray text = "bump " + QByteArray(size - 1, 'x') + "\n";
    EXPECT_EQ(Library(text.repeated(4097)).substr(0, 31), "the file names too many files (");
}

TEST_F(DamagedWavefront, AnObjectCutOffAnywhereHasTheLinksBeforeTheCut)
{
    const QByteArray whole = "mtllib a.mtl\r\nv 0 0 0\r\nmtllib \\\r\nb.mtl\r\n";
    const qsizetype first = whole.indexOf("a.mtl");
    const qsizetype second = whole.indexOf("b.mtl");
    for (qsizetype size = 0; size <= whole.size(); ++size) {
        tree.File(u"x.obj"_s, whole.left(size));
        Links expected;
        if (size > first)
            expected.append(
                {u"mtllib 1"_s, QString::fromLatin1(whole.mid(first, qMin(size - first, 5)))});
        if (size > second)
            expected.append(
                {u"mtllib 2"_s, QString::fromLatin1(whole.mid(second, qMin(size - second, 5)))});
        EXPECT_EQ(Read(u"x.obj"_s), expected) << size;
    }
}

TEST_F(DamagedWavefront, ABinaryFileHasNoLinks)
{
    QByteArray noise = PatternBytes(1 << 20);
    tree.File(u"a.obj"_s, noise.prepend("\x7F"));
    EXPECT_EQ(Read(u"a.obj"_s), Links{});
    tree.File(u"a.mtl"_s, noise);
    EXPECT_EQ(Read(u"a.mtl"_s), Links{});
}

TEST_F(DamagedWavefront, AVeryLargeFileWithoutALineBreakIsPassedOverInBlocks)
{
    const QString name = u"a.obj"_s;
    tree.File(name, "v 0 0 0 ");
    ASSERT_TRUE(QFile::resize(tree.Path(name), qint64(1) << 28)); // a hole, which takes no space
    EXPECT_EQ(Read(name), Links{});
}

TEST_F(DamagedWavefront, AFileThatIsMissingOrAFolderIsReported)
{
    EXPECT_FALSE(TryRead(u"none.obj"_s));
    tree.Folder(u"folder.mtl"_s);
    EXPECT_FALSE(TryRead(u"folder.mtl"_s));
    ASSERT_EQ(context.lines.size(), 2);
    EXPECT_TRUE(context.lines.first().contains(u"the file cannot be opened: "_s));
}

} // namespace Halvern::Test
