// SPDX-License-Identifier: Apache-2.0

#include "BlendFixture.h"

#include "blender/ZstdSeekTable.h"
#include "pluginkit/Compression.h"
#include "pluginkit/InputFile.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using PluginKit::Compressed;
using PluginKit::Compression;

class BlendRewriter : public BlendFixture
{
protected:
    static BlendFile OneImage(const char* path, const Machine& machine = {})
    {
        BlendFile content(machine);
        content.Add("IM", "Image", {{"id.name", "IMa"}, {"name", path}, {"source", 1}});
        return content;
    }
    static BlendFile OneText(const QByteArray& path, const Machine& machine = {})
    {
        BlendFile content(machine);
        content.Add("TX", "Text", {{"id.name", "TXa"}, {"name", 0x70}})
            .AddBytes("DATA", "Link", path, 0x70);
        return content;
    }
    std::filesystem::path FilePath() const
    {
        return std::filesystem::path(tree.Path(file).toStdU16String());
    }
    QByteArray Content() const
    {
        const PluginKit::InputFile input(FilePath());
        return QByteArray::fromStdString(PluginKit::ReadDecompressed(input, UINT64_MAX));
    }
};

/// A file of frames of this size, as Blender writes it.
QByteArray Framed(const QByteArray& content, qsizetype frameSize)
{
    std::string bytes;
    std::vector<Formats::Blender::ZstdFrame> frames;
    for (qsizetype at = 0; at < content.size(); at += frameSize) {
        const std::string part = content.mid(at, frameSize).toStdString();
        const std::string frame = Compressed(Compression::Zstd, part);
        frames.push_back({frame.size(), part.size()});
        bytes += frame;
    }
    return QByteArray::fromStdString(bytes + Formats::Blender::ZstdSeekTable(frames));
}

} // namespace

TEST_F(BlendRewriter, OnlyTheBytesOfThePathChange)
{
    for (const Machine& machine :
         {Machine{8, false}, Machine{4, false}, Machine{8, true}, Machine{4, true},
          Machine{8, false, true, "0500"}, Machine{4, true, false, "227"}}) {
        const QByteArray before = OneImage("//../alter Pfad/a.png", machine).Bytes();
        QByteArray after = before;
        after.replace(QByteArray("//../alter Pfad/a.png"),
                      QByteArray("//neu/ü.png\0\0\0\0\0\0\0\0\0", 21));
        EXPECT_TRUE(Rewritten(before, {L(u"IMa", u"neu/ü.png")}) == after) << machine.pointerSize;
    }
}

TEST_F(BlendRewriter, WhatLiesBehindTheEndOfATextStays)
{
    QByteArray before = OneImage("//abc.png").Bytes();
    before.replace(before.indexOf("//abc.png") + 10, 25, QByteArray(25, '#'));
    QByteArray shorter = before;
    shorter.replace("//abc.png", QByteArray("//x\0\0\0\0\0\0", 9));
    EXPECT_TRUE(Rewritten(before, {L(u"IMa", u"x")}) == shorter);
    QByteArray longer = before;
    longer.replace(QByteArray("//abc.png\0###", 13), QByteArray("//abcdef.png\0", 13));
    EXPECT_TRUE(Rewritten(before, {L(u"IMa", u"abcdef.png")}) == longer);
}

TEST_F(BlendRewriter, ANameThatIsNoTextFindsItsLinkAgain)
{
    BlendFile content;
    content.Add("IM", "Image", {{"id.name", "IMH\xF6he"}, {"name", "//a.png"}, {"source", 1}});
    const QByteArray before = content.Bytes();
    QByteArray after = before;
    after.replace("//a.png", "//b.png");
    EXPECT_TRUE(Rewritten(before, {L(u"IMHöhe", u"b.png")}) == after);
}

TEST_F(BlendRewriter, PathsAreWrittenAsBlenderReadsThem)
{
    const std::pair<const char16_t*, QByteArray> rows[] = {
        {u"b.png", "//b.png"},
        {u"./b.png", "//b.png"},
        {u"../b/ü.png", "//../b/ü.png"},
        {u"/lib/b.png", "/lib/b.png"},
        {u"D:/lib/b.png", "D:/lib/b.png"},
        {u"//server/lib/b.png", "\\\\server\\lib\\b.png"},
    };
    for (const auto& [path, stored] : rows) {
        const QByteArray after =
            Rewritten(OneImage("//a.png").Bytes(), {{u"IMa"_s, QString::fromUtf16(path)}});
        EXPECT_TRUE(after.contains(stored + '\0')) << stored.toStdString();
    }
}

TEST_F(BlendRewriter, APathThatDoesNotFitItsFieldFailsByName)
{
    const QByteArray before = OneImage("//a.png").Bytes();
    const QString fits = QString(37, u'x');
    EXPECT_TRUE(Rewritten(before, {{u"IMa"_s, fits}}).contains(QByteArray(37, 'x')));
    EXPECT_EQ(RewriteFailure(before, {{u"IMa"_s, fits + u'x'}}),
              "the new path of link IMa, //" + std::string(38, 'x') +
                  ", has 40 bytes; the file has room for 39");
}

TEST_F(BlendRewriter, ATextsPathUsesTheRoomOfItsBlock)
{
    const QByteArray before = OneText(QByteArray("//abcdef.py\0", 12)).Bytes();
    QByteArray after = before;
    after.replace("//abcdef.py", QByteArray("//b.py\0\0\0\0\0", 11));
    EXPECT_TRUE(Rewritten(before, {L(u"TXa", u"b.py")}) == after);
}

TEST_F(BlendRewriter, ABlockGrowsForALongerPathOfAText)
{
    for (const Machine& machine :
         {Machine{8, false}, Machine{4, true}, Machine{8, false, true, "0500"}}) {
        const QByteArray before = OneText(QByteArray("//a.py\0\0", 8), machine).Bytes();
        const QByteArray after = OneText(QByteArray("//../Größe/a.py\0\0\0", 20), machine).Bytes();
        EXPECT_TRUE(Rewritten(before, {L(u"TXa", u"../Größe/a.py")}) == after);
        EXPECT_EQ(Read(file), (Links{L(u"TXa", u"../Größe/a.py")}));
    }
}

TEST_F(BlendRewriter, ACompressedFileStaysCompressedInTheSameWay)
{
    const BlendFile before = OneImage("//a.png");
    const QByteArray after = OneImage("//b.png").Bytes();
    for (const auto method : {Compression::Gzip, Compression::Zstd}) {
        Rewritten(QByteArray::fromStdString(Compressed(method, before.Bytes().toStdString())),
                  {L(u"IMa", u"b.png")});
        EXPECT_EQ(CompressionOf(PluginKit::InputFile(FilePath())), method);
        EXPECT_TRUE(Content() == after);
    }
}

TEST_F(BlendRewriter, OnlyTheFramesWithLinksAreMadeAnew)
{
    BlendFile content = OneImage("//a.png");
    content.AddBytes("DATA", "Link", PatternBytes(3000), 1);
    content.Add("IM", "Image", {{"id.name", "IMb"}, {"name", "//b.png"}, {"source", 1}});
    const QByteArray plain = content.Bytes();
    QByteArray expected = plain;
    expected.replace("//b.png", "//c.png");
    const QByteArray before = Framed(plain, 1000);
    const QByteArray after = Rewritten(before, {L(u"IMb", u"c.png")});
    EXPECT_TRUE(Content() == expected);
    EXPECT_TRUE(after == Framed(expected, 1000));
    EXPECT_TRUE(after.startsWith(before.left(3000))) << "frames in front";
}

TEST_F(BlendRewriter, APathThatLiesInTwoFramesOrGrowsIsWrittenWhole)
{
    const QByteArray plain = OneText(QByteArray("//abcdefgh.py\0\0\0", 16)).Bytes();
    const QByteArray expected = OneText(QByteArray("//viel länger als vorher.py\0", 29)).Bytes();
    for (qsizetype size = 1; size < 400; size += 7) {
        Rewritten(Framed(plain, size), {L(u"TXa", u"viel länger als vorher.py")});
        ASSERT_EQ(Read(file), (Links{L(u"TXa", u"viel länger als vorher.py")})) << size;
        const PluginKit::InputFile input(FilePath());
        ASSERT_TRUE(Formats::Blender::ReadZstdSeekTable(input)) << size;
    }
    EXPECT_TRUE(Content().contains("//viel länger als vorher.py"));
    EXPECT_EQ(Content().size(), plain.size() + 16);
    EXPECT_EQ(expected.size(), plain.size() + 13);
}

TEST_F(BlendRewriter, ALyingTableOfFramesIsReportedAndTheFileStays)
{
    const std::string plain = OneImage("//a.png").Bytes().toStdString();
    const std::string frame = Compressed(Compression::Zstd, plain);
    const auto with = [&](std::size_t size) {
        return QByteArray::fromStdString(frame +
                                         Formats::Blender::ZstdSeekTable({{frame.size(), size}}));
    };
    EXPECT_EQ(RewriteFailure(with(plain.size() - 1), {L(u"IMa", u"b.png")}),
              "a zstd frame holds more than the table of frames says (byte 0)");
    EXPECT_EQ(RewriteFailure(with(plain.size() + 1), {L(u"IMa", u"b.png")}),
              "a zstd frame holds less than the table of frames says (byte 0)");
}

TEST_F(BlendRewriter, WhereNothingChangesTheFileIsNotWritten)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(file, OneImage("//..\\b\\a.png").Bytes()).Touch(file, time);
    EXPECT_TRUE(Repath(file, {L(u"IMa", u"../b/a.png")}));
    EXPECT_EQ(tree.Modified(file), time);
}

TEST_F(BlendRewriter, AnIdThatIsNotInTheFileFailsByName)
{
    EXPECT_EQ(RewriteFailure(OneImage("//a.png").Bytes(), {L(u"IMb", u"b.png")}),
              "the file has no link IMb");
}

TEST_F(BlendRewriter, WhatFollowsTheEndOfTheFileStays)
{
    const QByteArray before = OneImage("//a.png").Bytes() + "more";
    EXPECT_TRUE(Rewritten(before, {L(u"IMa", u"b.png")}) == OneImage("//b.png").Bytes() + "more");
}

} // namespace Halvern::Test
