// SPDX-License-Identifier: Apache-2.0

#include "BlendFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

constexpr int Sequence = 2;
constexpr int Tiled = 6;

class BlendSets : public BlendFixture
{
protected:
    QByteArray Tiles(const char* path, std::initializer_list<int> tiles)
    {
        BlendFile content;
        content.Add("IM", "Image", {{"id.name", "IMHolz"}, {"name", path}, {"source", Tiled}});
        for (const int tile : tiles)
            content.Add("DATA", "ImageTile", {{"tile_number", tile}});
        return content.Bytes();
    }
    QByteArray Frames(const char* path)
    {
        return BlendFile()
            .Add("IM", "Image", {{"id.name", "IMWelle"}, {"name", path}, {"source", Sequence}})
            .Bytes();
    }
    /// The file with the one path replaced, as a rewrite must make it.
    static QByteArray With(QByteArray content, const QByteArray& from, const QByteArray& to)
    {
        const qsizetype size = std::max(from.size(), to.size());
        const qsizetype at = content.indexOf(from + '\0');
        EXPECT_GT(at, 0);
        return content.replace(at, size, to.leftJustified(size, '\0'));
    }
};

} // namespace

TEST_F(BlendSets, EveryTileThatTheFileListsIsALinkFoundOrNot)
{
    EXPECT_EQ(LinksOf(Tiles("//../K/Holz ü.<UDIM>.png", {1001, 1002, 1011})),
              (Links{L(u"set:IMHolz#1001", u"../K/Holz ü.1001.png"),
                     L(u"set:IMHolz#1002", u"../K/Holz ü.1002.png"),
                     L(u"set:IMHolz#1011", u"../K/Holz ü.1011.png")}));
}

TEST_F(BlendSets, TilesThatLieBesideTheListedOnesBelongToThem)
{
    for (const char16_t* name : {u"K/Holz.1003.png", u"K/Holz.0999.png", u"K/Holz.2001.png",
                                 u"K/Holz.png", u"K/Holz.1004.jpg", u"K/holz2.1005.png"})
        tree.File(QString::fromUtf16(name));
    EXPECT_EQ(LinksOf(Tiles("//../K/Holz.<UDIM>.png", {1001})),
              (Links{L(u"set:IMHolz#1001", u"../K/Holz.1001.png"),
                     L(u"set:IMHolz#1003", u"../K/Holz.1003.png")}));
}

TEST_F(BlendSets, TilesCanBeNamedByTheirPlace)
{
    EXPECT_EQ(LinksOf(Tiles("//Holz_<UVTILE>.png", {1001, 1010, 1011})),
              (Links{L(u"set:IMHolz#u10_v1", u"Holz_u10_v1.png"),
                     L(u"set:IMHolz#u1_v1", u"Holz_u1_v1.png"),
                     L(u"set:IMHolz#u1_v2", u"Holz_u1_v2.png")}));
}

TEST_F(BlendSets, OnlyNamesThatBlenderGivesToTilesAreTiles)
{
    for (const char16_t* name :
         {u"Holz_u0_v1.png", u"Holz_u11_v1.png", u"Holz_u01_v1.png", u"Holz_u1_v0.png",
          u"Holz_u1_v101.png", u"Holz_u1v1.png", u"Holz_u1_v+1.png", u"Holz_u_v1.png",
          u"Holz_u1_v.png", u"Holz_u10_v100.png", u"Holz_1000.png", u"Holz_2001.png",
          u"Holz_01001.png", u"Holz_2000.png", u"Holz_1001x.png"})
        tree.File(u"Szene/"_s + QString::fromUtf16(name));
    EXPECT_EQ(LinksOf(Tiles("//Holz_<UVTILE>.png", {})),
              (Links{L(u"set:IMHolz#u10_v100", u"Holz_u10_v100.png")}));
    EXPECT_EQ(LinksOf(Tiles("//Holz_<UDIM>.png", {})),
              (Links{L(u"set:IMHolz#2000", u"Holz_2000.png")}));
}

TEST_F(BlendSets, TilesOfOlderFilesAreNamedAfterOneOfThem)
{
    tree.File(u"Szene/Holz.1003.png"_s).File(u"Szene/Holz.2001.png"_s);
    EXPECT_EQ(
        LinksOf(Tiles("//Holz.1001.png", {1001, 1002, 1011})),
        (Links{L(u"set:IMHolz#1001", u"Holz.1001.png"), L(u"set:IMHolz#1002", u"Holz.1002.png"),
               L(u"set:IMHolz#1003", u"Holz.1003.png"), L(u"set:IMHolz#1011", u"Holz.1011.png")}));
}

TEST_F(BlendSets, TheNumberOfATileIsTheLastBetweenSeparatorsOrTheLastDigitsOfTheName)
{
    const std::pair<const char*, const char16_t*> rows[] = {
        {"//1003/a-1001_v0023.png", u"1003/a-1002_v0023.png"},
        {"//1001_11.1003.png", u"1001_11.1002.png"},
        {"//a.1001.1.png", u"a.1002.1.png"},
        {"//a.1001.b1003.png", u"a.1002.b1003.png"},
        {"//1001.png", u"1002.png"},
        {"//a1001b.png", u"a1002b.png"},
    };
    for (const auto& [stored, path] : rows)
        EXPECT_EQ(LinksOf(Tiles(stored, {1002})), (Links{L(u"set:IMHolz#1002", path)})) << stored;
}

TEST_F(BlendSets, TilesWithoutANumberAreOneFile)
{
    const std::pair<const char*, const char16_t*> rows[] = {
        {"//Holz.png", u"Holz.png"},
        {"//1001/Holz.png", u"1001/Holz.png"},
        {"//Holz.1000.png", u"Holz.1000.png"},
        {"//Holz.2001.png", u"Holz.2001.png"},
        {"//Holz.01001.png", u"Holz.01001.png"},
        {"//a1001b2.png", u"a1001b2.png"},
        {"//a.1001", u"a.1001"},
    };
    for (const auto& [stored, path] : rows)
        EXPECT_EQ(LinksOf(Tiles(stored, {1001, 1002})), (Links{L(u"IMHolz", path)})) << stored;
}

TEST_F(BlendSets, TilesOfOlderFilesMoveAsAWholeAndTheNumberStays)
{
    const QByteArray tiles = Tiles("//../K/Holz.1011.png", {1001, 1011});
    EXPECT_TRUE(Rewritten(tiles, {L(u"set:IMHolz#1001", u"Kacheln ü/Holz.1001.png"),
                                  L(u"set:IMHolz#1011", u"Kacheln ü/Holz.1011.png")}) ==
                With(tiles, "//../K/Holz.1011.png", "//Kacheln ü/Holz.1011.png"));
    EXPECT_TRUE(Rewritten(tiles, {L(u"set:IMHolz#1001", u"1011/Eiche_1001_v2.png"),
                                  L(u"set:IMHolz#1011", u"1011/Eiche_1011_v2.png")}) ==
                With(tiles, "//../K/Holz.1011.png", "//1011/Eiche_1011_v2.png"));
}

TEST_F(BlendSets, TilesOfOlderFilesWhoseNumberBlenderWouldNotFindFail)
{
    EXPECT_EQ(RewriteFailure(Tiles("//Holz.1001.png", {1001, 1002}),
                             {L(u"set:IMHolz#1001", u"Holz.1001 (2).png"),
                              L(u"set:IMHolz#1002", u"Holz.1002 (2).png")}),
              "the files of IMHolz are found by one folder and one name pattern, which would be "
              "torn apart: Holz.1001.png as Holz.1001 (2).png");
}

TEST_F(BlendSets, EveryFrameInTheFolderIsALink)
{
    for (const char16_t* name :
         {u"F/Welle_0001.png", u"F/Welle_0002.png", u"F/Welle_12345.png", u"F/Welle_01234.png",
          u"F/Welle_001.png", u"F/Welle_0003.jpg", u"F/Welle_a001.png", u"F/Weller_0004.png"})
        tree.File(QString::fromUtf16(name));
    EXPECT_EQ(LinksOf(Frames("//../F/Welle_0007.png")),
              (Links{L(u"set:IMWelle#0001", u"../F/Welle_0001.png"),
                     L(u"set:IMWelle#0002", u"../F/Welle_0002.png"),
                     L(u"set:IMWelle#12345", u"../F/Welle_12345.png")}));
}

TEST_F(BlendSets, ASequenceOfWhichNothingIsThereIsTheFrameThatIsStored)
{
    EXPECT_EQ(LinksOf(Frames("//../F/Welle_0007.png")),
              (Links{L(u"set:IMWelle#0007", u"../F/Welle_0007.png")}));
}

TEST_F(BlendSets, TheDigitsOfASequenceAreTheLastOfItsName)
{
    tree.File(u"F 1/a2_03_v.png"_s).File(u"F 1/a2_04_v.png"_s);
    EXPECT_EQ(LinksOf(Frames("//../F 1/a2_03_v.png")),
              (Links{L(u"set:IMWelle#03", u"../F 1/a2_03_v.png"),
                     L(u"set:IMWelle#04", u"../F 1/a2_04_v.png")}));
}

TEST_F(BlendSets, CachesAndVolumesCountInFrontOfTheExtensionOnly)
{
    tree.File(u"Szene/r_01.vdb"_s).File(u"Szene/r_02.vdb"_s);
    BlendFile content;
    content
        .Add("VO", "Volume", {{"id.name", "VOa"}, {"filepath", "//r_01.vdb"}, {"is_sequence", 1}})
        .Add("CF", "CacheFile",
             {{"id.name", "CFa"}, {"filepath", "//c1_x.abc"}, {"is_sequence", 1}})
        .Add("VO", "Volume", {{"id.name", "VOb"}, {"filepath", "//r_02.vdb"}});
    EXPECT_EQ(LinksOf(content), (Links{L(u"set:VOa#01", u"r_01.vdb"), L(u"set:VOa#02", u"r_02.vdb"),
                                       L(u"CFa", u"c1_x.abc"), L(u"VOb", u"r_02.vdb")}));
}

TEST_F(BlendSets, ASetMovesAsAWhole)
{
    const QByteArray tiles = Tiles("//../K/Holz.<UDIM>.png", {1001, 1002});
    EXPECT_TRUE(Rewritten(tiles, {L(u"set:IMHolz#1001", u"Kacheln ü/Holz.1001.png"),
                                  L(u"set:IMHolz#1002", u"Kacheln ü/Holz.1002.png")}) ==
                With(tiles, "//../K/Holz.<UDIM>.png", "//Kacheln ü/Holz.<UDIM>.png"));
    const QByteArray frames = Frames("//../F/Welle_0007.png");
    EXPECT_TRUE(Rewritten(frames, {L(u"set:IMWelle#0001", u"F 2/Welle_0001.png"),
                                   L(u"set:IMWelle#0002", u"F 2/Welle_0002.png")}) ==
                With(frames, "//../F/Welle_0007.png", "//F 2/Welle_0007.png"));
}

TEST_F(BlendSets, TilesThatAllGotTheSameNewNameMoveToo)
{
    const QByteArray tiles = Tiles("//Holz.<UDIM>.png", {1001, 1002});
    EXPECT_TRUE(Rewritten(tiles, {L(u"set:IMHolz#1001", u"1001/Holz.1001 (2).png"),
                                  L(u"set:IMHolz#1002", u"1001/Holz.1002 (2).png")}) ==
                With(tiles, "//Holz.<UDIM>.png", "//1001/Holz.<UDIM> (2).png"));
}

TEST_F(BlendSets, WhatWouldTearASetApartFailsAndNamesBothFiles)
{
    const QByteArray tiles = Tiles("//Holz.<UDIM>.png", {1001, 1002});
    const std::string reason = "the files of IMHolz are found by one folder and one name pattern, "
                               "which would be torn apart: ";
    EXPECT_EQ(RewriteFailure(tiles, {L(u"set:IMHolz#1001", u"a/Holz.1001.png"),
                                     L(u"set:IMHolz#1002", u"b/Holz.1002.png")}),
              reason + "a/Holz.1001.png together with b/Holz.1002.png");
    EXPECT_EQ(RewriteFailure(tiles, {L(u"set:IMHolz#1001", u"Holz.1001.png"),
                                     L(u"set:IMHolz#1002", u"Holz.1002 (2).png")}),
              reason + "Holz.1001.png together with Holz.1002 (2).png");
    EXPECT_EQ(RewriteFailure(tiles, {L(u"set:IMHolz#1001", u"Holz.png")}),
              reason + "Holz.1001.png as Holz.png");
}

TEST_F(BlendSets, AFrameWhoseNewNameCountsOtherwiseFails)
{
    EXPECT_EQ(RewriteFailure(Frames("//W_0001.png"), {L(u"set:IMWelle#0001", u"W_0001 (2).png"),
                                                      L(u"set:IMWelle#0002", u"W_0002 (2).png")}),
              "the files of IMWelle are found by one folder and one name pattern, which would be "
              "torn apart: W_0001.png as W_0001 (2).png");
}

TEST_F(BlendSets, MembersThatAreNotBesideTheCopyAreStillItsLinks)
{
    const QByteArray frames = Frames("//../F/W_0001.png");
    EXPECT_TRUE(Rewritten(frames, {L(u"set:IMWelle#0001", u"../F/W_0001.png"),
                                   L(u"set:IMWelle#0002", u"../F/W_0002.png")}) == frames);
    EXPECT_EQ(RewriteFailure(frames, {L(u"set:IMWelle#002", u"x")}),
              "the file has no link set:IMWelle#002");
    EXPECT_EQ(RewriteFailure(Tiles("//H.<UDIM>.png", {1001}), {L(u"set:IMHolz#2001", u"x")}),
              "the file has no link set:IMHolz#2001");
}

TEST_F(BlendSets, FramesLyingAtTheOldPlaceBesideTheCopyDoNotCount)
{
    const QByteArray frames = Frames("//F/W_0001.png");
    tree.File(u"Szene/F/W_0001.png"_s).File(u"Szene/F/W_0009.png"_s);
    EXPECT_TRUE(Rewritten(frames, {L(u"set:IMWelle#0001", u"G/W_0001.png"),
                                   L(u"set:IMWelle#0002", u"G/W_0002.png")}) ==
                With(frames, "//F/W_0001.png", "//G/W_0001.png"));
}

TEST_F(BlendSets, TheFilesOfAStripCanGetOtherNamesButHaveOneFolder)
{
    BlendFile content;
    content.Add("SC", "Scene", {{"id.name", "SCa"}})
        .Add("DATA", "Sequence", {{"name", "SQb"}, {"type", 0}, {"strip", 0x10}})
        .Add("DATA", "Strip", {{"stripdata", 0x11}, {"dir", "//../Schnitt/"}}, 0x10)
        .AddBytes("DATA", "StripElem",
                  content.Record("StripElem", {{"name", "a.png"}}) +
                      content.Record("StripElem", {{"name", "b.png"}}),
                  0x11, 2);
    const QByteArray bytes = content.Bytes();
    EXPECT_TRUE(Rewritten(bytes, {L(u"set:SCa/SQb#0", u"Neu ü/a.png"),
                                  L(u"set:SCa/SQb#1", u"Neu ü/b (2).png")}) ==
                With(With(bytes, "//../Schnitt/", "//Neu ü/"), "b.png", "b (2).png"));
    EXPECT_EQ(RewriteFailure(bytes, {L(u"set:SCa/SQb#0", u"x/a.png")}),
              "the files of set:SCa/SQb#0 must stay in one folder, which x/a.png and "
              "../Schnitt/b.png would not");
    EXPECT_EQ(
        RewriteFailure(bytes, {L(u"set:SCa/SQb#0", u"../Schnitt/aber viel zu lange Namen.png")}),
        "the new path of link set:SCa/SQb#0, aber viel zu lange Namen.png, has 28 bytes; the "
        "file has room for 23");
}

} // namespace Halvern::Test
