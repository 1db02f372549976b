// SPDX-License-Identifier: Apache-2.0

#include "DxfFixture.h"

#include "pluginkit/FileScanner.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class DxfRewriter : public DxfFixture
{
protected:
    QByteArray Changed(const QByteArray& objects, const Links& links)
    {
        return Rewritten(m_name, File(objects), links);
    }
};

} // namespace

TEST_F(DxfRewriter, OnlyThePathThatIsNamedChanges)
{
    EXPECT_EQ(
        Changed(Image("5A", "a.png") + Image("5B", "a.png") + Block("a.png", "a.png"),
                {LinkTo(u"image 5B", u"../Größe 木/a.png"), LinkTo(u"block a.png", u"b.dwg")}),
        File(Image("5A", "a.png") + Image("5B", "../Größe 木/a.png") + Block("a.png", "b.dwg")));
}

TEST_F(DxfRewriter, LineEndsStay)
{
    for (const char* end : {"\r\n", "\r"}) {
        const QByteArray before = File(Image("5A", "a.png")).replace("\n", end);
        const QByteArray after = File(Image("5A", "longer/b.png")).replace("\n", end);
        EXPECT_EQ(Rewritten(m_name, before, {LinkTo(u"image 5A", u"longer/b.png")}), after);
    }
}

TEST_F(DxfRewriter, TheMannerOfRelativePathsStays)
{
    EXPECT_EQ(Changed(Block("A", ".\\a.dwg"), {LinkTo(u"block A", u"x/a.dwg")}),
              File(Block("A", "./x/a.dwg")));
    EXPECT_EQ(Changed(Block("A", ".\\a.dwg"), {LinkTo(u"block A", u"../a.dwg")}),
              File(Block("A", "../a.dwg")));
}

TEST_F(DxfRewriter, WhatTheCodePageHasNotIsEscaped)
{
    const auto changed = [&](const QByteArray& page, const char16_t* path) {
        return Rewritten(m_name, File(Image("1", "a.png"), "AC1015", page),
                         {LinkTo(u"image 1", path)});
    };
    EXPECT_EQ(changed("ANSI_1252", u"Größe 木😀.png"),
              File(Image("1", "Gr\xF6\xDF"
                              "e \\U+6728\\U+D83D\\U+DE00.png"),
                   "AC1015"));
    EXPECT_EQ(changed("ANSI_932", u"表.png"),
              File(Image("1", "\x95\x5C.png"), "AC1015", "ANSI_932"));
    EXPECT_EQ(changed("NO_PAGE", u"ä😀.png"),
              File(Image("1", "\\U+00E4\\U+D83D\\U+DE00.png"), "AC1015", "NO_PAGE"));
}

TEST_F(DxfRewriter, BinaryDrawingsKeepEverythingElse)
{
    const auto file = [](const QByteArray& path) {
        BinaryDxf drawing(false);
        drawing.Text(0, "SECTION").Text(9, "$ACADVER").Text(1, "AC1032").Text(0, "IMAGEDEF");
        drawing.Text(5, "5A").Text(1, path).Zeros(10, 8).Text(1, "").Text(0, "EOF");
        return drawing.Get();
    };
    EXPECT_EQ(Rewritten(m_name, file("a.png"), {LinkTo(u"image 5A", u"longer/木.png")}),
              file("longer/木.png"));
}

TEST_F(DxfRewriter, AMapThatIsNotThereIsFoundByItsId)
{
    const QByteArray start = Group(0, "MATERIAL") + Group(5, "7F");
    EXPECT_EQ(Changed(start + Group(3, "a.png"), {LinkTo(u"material 7F map 3", u"b/a.png")}),
              File(start + Group(3, "b/a.png")));
}

TEST_F(DxfRewriter, AFontThatIsToLieElsewhereIsReportedAndTheOthersAreRewritten)
{
    tree.File(m_name,
              File(Group(0, "STYLE") + Group(2, "A") + Group(3, "txt") + Image("5A", "a.png")));
    tree.File(u"p/txt.shx"_s);
    EXPECT_FALSE(Repath(
        m_name, {LinkTo(u"companion:txt.shx", u"lib/txt.shx"), LinkTo(u"image 5A", u"b.png")}));
    EXPECT_TRUE(context.lines.value(0).endsWith(
        u"txt.shx is found by its name beside the drawing and cannot become lib/txt.shx"_s));
    EXPECT_TRUE(tree.Read(m_name).contains("\nb.png\n"));
    EXPECT_TRUE(Repath(m_name, {LinkTo(u"companion:txt.shx", u"txt.shx")}));
}

TEST_F(DxfRewriter, ANameThatIsRightAlreadyKeepsItsBytes)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(m_name, File(Image("5A", ".\\x\\\\U+00E4.png"))).Touch(m_name, time);
    EXPECT_TRUE(Repath(m_name, {LinkTo(u"image 5A", u"x/ä.png")}));
    EXPECT_EQ(tree.Modified(m_name), time);
}

TEST_F(DxfRewriter, AFileOfManyBlocksKeepsEverythingElse)
{
    QByteArray shapes;
    const QByteArray noise = PatternBytes(2 * qint64(PluginKit::FileScanner::BlockSize)).toHex();
    for (qsizetype at = 0; at < noise.size(); at += 60)
        shapes += Group(310, noise.mid(at, 60));
    EXPECT_TRUE(
        Changed(shapes + Image("5A", "a.png") + shapes, {LinkTo(u"image 5A", u"longer/b.png")}) ==
        File(shapes + Image("5A", "longer/b.png") + shapes));
}

TEST_F(DxfRewriter, AnIdThatIsNotInTheFileFailsByName)
{
    for (const char16_t* id : {u"image 5B", u"image 5A#2", u"block 5A", u"5A", u""}) {
        EXPECT_EQ(RewriteFailure(m_name, File(Image("5A", "a.png")), {LinkTo(id, u"x.png")}),
                  u"the file has no link "_s + QString::fromUtf16(id));
    }
}

TEST_F(DxfRewriter, ANameThatCannotBeWrittenFailsAndNothingIs)
{
    for (const char16_t* path : {u"a\nb.png", u"a\rb.png", u"a\tb.png"}) {
        EXPECT_EQ(RewriteFailure(m_name, File(Image("5A", "a.png") + Image("5B", "a.png")),
                                 {LinkTo(u"image 5A", u"c.png"), LinkTo(u"image 5B", path)}),
                  u"a drawing cannot hold the path "_s + QString::fromUtf16(path));
    }
}

} // namespace Halvern::Test
