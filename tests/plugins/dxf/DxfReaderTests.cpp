// SPDX-License-Identifier: Apache-2.0

#include "DxfFixture.h"

#include "pluginkit/FileScanner.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class DxfReader : public DxfFixture
{
protected:
    Links Binary(bool hasShortCodes, const QByteArray& name)
    {
        BinaryDxf file(hasShortCodes);
        file.Text(0, "SECTION").Text(2, "HEADER").Text(9, "$ACADVER");
        file.Text(1, hasShortCodes ? "AC1009" : "AC1032").Int16(70, 1).Zeros(40, 8);
        if (!hasShortCodes)
            file.Zeros(160, 8).Zeros(290, 1).Zeros(420, 4).Raw(310, QByteArray("\3\0\0\0", 4));
        file.Raw(1071, QByteArray(4, '\0')).Text(1000, "no.dxf").Text(0, "BLOCK").Text(2, "B");
        file.Int16(70, 4).Text(3, "B").Text(1, name).Text(0, "EOF");
        tree.File(m_name, file.Get());
        return Read(m_name);
    }
};

} // namespace

TEST_F(DxfReader, ExternalDrawingsAreLinksNamedByTheirBlocks)
{
    EXPECT_EQ(Objects(Block("Tür", "../Teile/Tür 木.dxf") + Block("B", "b.dwg", 8) +
                      Block("C", "c.dwg", 12) + Block("D", "d.dwg", 2) + Block("E", "", 4)),
              (Links{LinkTo(u"block Tür", u"../Teile/Tür 木.dxf"), LinkTo(u"block B", u"b.dwg"),
                     LinkTo(u"block C", u"c.dwg")}));
}

TEST_F(DxfReader, PicturesUnderlaysAndPointCloudsAreLinksNamedByTheirHandles)
{
    EXPECT_EQ(Objects(Image("5A", "a.png") + Image("5B", "a.png") +
                      Definition("PDFDEFINITION", "6A", "b.pdf") +
                      Definition("DWFDEFINITION", "6B", "b.dwf") +
                      Definition("DGNDEFINITION", "6C", "b.dgn") +
                      Definition("POINTCLOUDDEFEX", "7A", "c.rcp")),
              (Links{LinkTo(u"image 5A", u"a.png"), LinkTo(u"image 5B", u"a.png"),
                     LinkTo(u"underlay 6A", u"b.pdf"), LinkTo(u"underlay 6B", u"b.dwf"),
                     LinkTo(u"underlay 6C", u"b.dgn"), LinkTo(u"point cloud 7A", u"c.rcp")}));
}

TEST_F(DxfReader, RepeatedAndMissingHandlesAreNumbered)
{
    EXPECT_EQ(Objects(Image("5A", "a.png") + Image("5A", "b.png") + Group(0, "IMAGEDEF") +
                      Group(1, "c.png")),
              (Links{LinkTo(u"image 5A", u"a.png"), LinkTo(u"image 5A#2", u"b.png"),
                     LinkTo(u"image ", u"c.png")}));
}

TEST_F(DxfReader, ALongNameOfABlockIsCutInItsId)
{
    EXPECT_EQ(Objects(Block(QByteArray("ü").repeated(120), "a.dwg")),
              (Links{{u"block "_s + u"ü"_s.repeated(50), u"a.dwg"_s}}));
}

TEST_F(DxfReader, MapsOfMaterialsAreLinksWhereTheyLeadToAFile)
{
    const QByteArray material = Group(0, "MATERIAL") + Group(5, "7F") + Group(1, "Holz") +
                                Group(3, "a.png") + Group(9, "b.png") + Group(4, "a.png");
    EXPECT_EQ(Objects(material), Links{});
    tree.File(u"p/a.png"_s);
    EXPECT_EQ(Objects(material), (Links{LinkTo(u"material 7F map 3", u"a.png"),
                                        LinkTo(u"material 7F map 4", u"a.png")}));
    tree.File(u"p/b.png"_s);
    EXPECT_EQ(Read(m_name).size(), 3);
}

TEST_F(DxfReader, AMapOfAMaterialMayHaveTheNumberOfAnother)
{
    tree.File(u"p/a.png"_s).File(u"p/n.png"_s);
    EXPECT_EQ(
        Objects(Group(0, "MATERIAL") + Group(5, "7F") + Group(3, "a.png") + Group(3, "n.png")),
        (Links{LinkTo(u"material 7F map 3", u"a.png"), LinkTo(u"material 7F map 3#2", u"n.png")}));
}

TEST_F(DxfReader, WhatAnApplicationPutsBetweenTheDataOfAnObjectIsNoLink)
{
    EXPECT_EQ(Objects(Group(0, "IMAGEDEF") + Group(5, "5A") + Group(102, "{APP") +
                      Group(1, "no.png") + Group(102, "}") + Group(1, "a.png")),
              (Links{LinkTo(u"image 5A", u"a.png")}));
}

TEST_F(DxfReader, FontsAreCompanionsWhereTheyLieBesideTheDrawing)
{
    const QByteArray styles = Group(0, "STYLE") + Group(2, "A") + Group(70, "0") + Group(3, "txt") +
                              Group(4, "big.shx") + Group(0, "STYLE") + Group(2, "") +
                              Group(70, "1") + Group(3, "../lib/own.shx") + Group(0, "STYLE") +
                              Group(2, "B") + Group(3, "txt.shx");
    EXPECT_EQ(Objects(styles), Links{});
    tree.File(u"p/txt.shx"_s).File(u"p/big.shx"_s).File(u"lib/own.shx"_s);
    EXPECT_EQ(Objects(styles), (Links{LinkTo(u"companion:txt.shx", u"txt.shx"),
                                      LinkTo(u"companion:big.shx", u"big.shx"),
                                      LinkTo(u"style  font", u"../lib/own.shx")}));
}

TEST_F(DxfReader, AFileThatIsNotWhereTheDrawingSaysIsFoundBesideIt)
{
    EXPECT_EQ(Objects(Image("5A", "D:\\alt\\a.png")),
              (Links{LinkTo(u"image 5A", u"D:/alt/a.png")}));
    tree.File(u"p/a.png"_s);
    EXPECT_EQ(Read(m_name), (Links{{u"image 5A"_s, tree.Path(u"p/a.png"_s)}}));
    // What is there is taken.
    tree.File(u"lib/a.png"_s);
    EXPECT_EQ(Objects(Image("5A", "../lib/a.png")), (Links{LinkTo(u"image 5A", u"../lib/a.png")}));
}

TEST_F(DxfReader, BackslashesAreSlashesAndAddressesAndFoldersAreNoLinks)
{
    tree.Folder(u"p/parts"_s);
    EXPECT_EQ(Objects(Block("A", "..\\x\\a.dwg") + Block("B", "https://host/a.dwg") +
                      Block("C", "parts") + Block("D", "file:///lib/a%20b.dwg") +
                      Block("E", "#1.dwg")),
              (Links{LinkTo(u"block A", u"../x/a.dwg"), LinkTo(u"block D", u"/lib/a b.dwg"),
                     LinkTo(u"block E", u"#1.dwg")}));
}

TEST_F(DxfReader, NamesAreReadInTheEncodingOfTheDrawing)
{
    EXPECT_EQ(PathsOf(Objects(Image("1", "Gr\xF6\xDF"
                                         "e.png"),
                              "AC1015")),
              QStringList{u"Größe.png"_s});
    EXPECT_EQ(PathsOf(Objects(Image("1", "\xCF\xEB\xE0\xED.png"), "AC1018", "ANSI_1251")),
              QStringList{u"План.png"_s});
    EXPECT_EQ(PathsOf(Objects(Image("1", "\x95\x5C.png"), "AC1015", "ANSI_932")),
              QStringList{u"表.png"_s});
    EXPECT_EQ(PathsOf(Objects(Image("1", "Größe \\U+6728.png"), "AC1021", "ANSI_1251")),
              QStringList{u"Größe 木.png"_s});
}

TEST_F(DxfReader, LinesMayEndInAnyWay)
{
    const QByteArray file = File(Image("5A", "a b.png"));
    for (const char* end : {"\n", "\r\n", "\r"}) {
        tree.File(m_name, QByteArray(file).replace("\n", end));
        EXPECT_EQ(Read(m_name), (Links{LinkTo(u"image 5A", u"a b.png")}));
    }
    tree.File(m_name, "\xEF\xBB\xBF" + file + "whatever follows");
    EXPECT_EQ(Read(m_name), (Links{LinkTo(u"image 5A", u"a b.png")}));
    tree.File(m_name, QByteArray(file).chopped(1));
    EXPECT_EQ(Read(m_name), (Links{LinkTo(u"image 5A", u"a b.png")}));
}

TEST_F(DxfReader, BinaryDrawingsAreReadWithCodesOfOneAndOfTwoBytes)
{
    EXPECT_EQ(Binary(true, "..\\Gr\xF6\xDF"
                           "e.dwg"),
              (Links{LinkTo(u"block B", u"../Größe.dwg")}));
    EXPECT_EQ(Binary(false, "../Größe 木.dwg"), (Links{LinkTo(u"block B", u"../Größe 木.dwg")}));
}

TEST_F(DxfReader, ACommentMayStandFirstInABinaryDrawing)
{
    for (const bool hasShortCodes : {true, false}) {
        BinaryDxf file(hasShortCodes);
        file.Text(999, "made by hand").Text(0, "SECTION").Text(0, "IMAGEDEF").Text(5, "5A");
        tree.File(m_name, file.Text(1, "a.png").Text(0, "EOF").Get());
        EXPECT_EQ(Read(m_name), (Links{LinkTo(u"image 5A", u"a.png")}));
    }
}

TEST_F(DxfReader, LinksAreFoundAcrossTheEndsOfBlocks)
{
    const auto block = static_cast<qsizetype>(PluginKit::FileScanner::BlockSize);
    const QByteArray image = Image("5A", "a.png");
    const qsizetype before = File("").indexOf("no.dxf") + 7;
    const QByteArray filler = Group(999, QByteArray(100, 'x'));
    for (qsizetype shift = 0; shift < image.size(); ++shift) {
        const qsizetype room = block - before - shift;
        const qsizetype rest = room % filler.size() + filler.size();
        const QByteArray comments =
            filler.repeated(room / filler.size() - 1) + Group(999, QByteArray(rest - 5, 'y'));
        ASSERT_EQ(Objects(comments + image), (Links{LinkTo(u"image 5A", u"a.png")})) << shift;
    }
}

TEST_F(DxfReader, ReadingLeavesTheFileAlone)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(m_name, File(Image("5A", "b.png"))).Touch(m_name, time);
    Read(m_name);
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{m_name, File(Image("5A", "b.png"))}}));
    EXPECT_EQ(tree.Modified(m_name), time);
}

} // namespace Halvern::Test
