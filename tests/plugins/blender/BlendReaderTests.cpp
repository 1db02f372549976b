// SPDX-License-Identifier: Apache-2.0

#include "BlendFixture.h"

#include "pluginkit/Compression.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class BlendReader : public BlendFixture
{};

constexpr int FromFile = 1;
constexpr int Sequence = 2;
constexpr int Movie = 3;
constexpr int Generated = 4;
constexpr int Viewer = 5;

QByteArray OneImage(const Machine& machine)
{
    return BlendFile(machine)
        .Add("IM", "Image",
             {{"id.name", "IMHöhe"}, {"name", "//../Bilder/Höhe 木.png"}, {"source", FromFile}})
        .Bytes();
}

} // namespace

TEST_F(BlendReader, AFileOfAnyMachineIsRead)
{
    for (const Machine& machine :
         {Machine{8, false}, Machine{4, false}, Machine{8, true}, Machine{4, true}})
        EXPECT_EQ(LinksOf(OneImage(machine)), (Links{L(u"IMHöhe", u"../Bilder/Höhe 木.png")}))
            << machine.pointerSize << machine.bigEndian;
}

TEST_F(BlendReader, AFileOfBlender5IsReadWithItsLargeHeaders)
{
    for (const Machine& machine : {Machine{8, false, true, "0500"}, Machine{8, true, true, "0502"},
                                   Machine{8, false, false, "500"}})
        EXPECT_EQ(LinksOf(OneImage(machine)), (Links{L(u"IMHöhe", u"../Bilder/Höhe 木.png")}))
            << machine.version.toStdString();
    const std::string plain = OneImage({8, false, true, "0500"}).toStdString();
    EXPECT_EQ(LinksOf(QByteArray::fromStdString(
                  PluginKit::Compressed(PluginKit::Compression::Zstd, plain))),
              (Links{L(u"IMHöhe", u"../Bilder/Höhe 木.png")}));
}

TEST_F(BlendReader, StripsAreReadUnderTheNewNamesOfTheirStructs)
{
    BlendFile content({8, false, true, "0500"});
    content.Describe(
        "Strip",
        {{"char", "name[64]"}, {"int", "type"}, {"StripData", "*data"}, {"bSound", "*sound"}});
    content.Describe("StripData", {{"StripElem", "*stripdata"}, {"char", "dirpath[40]"}});
    content.Describe("StripElem", {{"char", "filename[24]"}, {"int", "orig_width"}});
    content.Add("SC", "Scene", {{"id.name", "SCa"}})
        .Add("DATA", "Strip", {{"name", "SQfilm"}, {"type", 3}, {"data", 0x20}})
        .Add("DATA", "StripData", {{"stripdata", 0x21}, {"dirpath", "//f"}}, 0x20)
        .Add("DATA", "StripElem", {{"filename", "f.avi"}}, 0x21);
    EXPECT_EQ(LinksOf(content), (Links{L(u"SCa/SQfilm", u"f/f.avi")}));
}

TEST_F(BlendReader, AFileOfAnOldVersionMayEndWithinItsLastHeader)
{
    for (const char* const version : {"227", "233"}) {
        BlendFile content({4, true, false, version});
        content.Add("IM", "Image", {{"id.name", "IMa"}, {"name", "//a.png"}, {"source", 1}});
        for (const QByteArray& end :
             {QByteArray("ENDB"), QByteArray("ENDB\0\0\0\0", 8), content.Block("ENDB", {})})
            EXPECT_EQ(LinksOf(content.BytesWithoutEnd() + end), (Links{L(u"IMa", u"a.png")}))
                << version << end.size();
    }
}

TEST_F(BlendReader, ABigMachineMayStoreCodesInEitherOrder)
{
    const BlendFile content({4, true});
    QByteArray bytes = OneImage({4, true});
    ASSERT_TRUE(bytes.contains(QByteArray("\0\0IM", 4)));
    bytes.replace(bytes.indexOf(QByteArray("\0\0IM", 4)), 4, QByteArray("IM\0\0", 4));
    EXPECT_EQ(LinksOf(bytes), (Links{L(u"IMHöhe", u"../Bilder/Höhe 木.png")}));
}

TEST_F(BlendReader, ACompressedFileIsReadLikeThePlainOne)
{
    const std::string plain = OneImage({}).toStdString();
    for (const auto method : {PluginKit::Compression::Gzip, PluginKit::Compression::Zstd})
        EXPECT_EQ(LinksOf(QByteArray::fromStdString(PluginKit::Compressed(method, plain))),
                  (Links{L(u"IMHöhe", u"../Bilder/Höhe 木.png")}));
}

TEST_F(BlendReader, EveryKindOfDataBlockThatNamesAFileIsFound)
{
    BlendFile content;
    content.Add("LI", "Library", {{"id.name", "LIlib"}, {"name", "//lib.blend"}})
        .Add("IM", "Image", {{"id.name", "IMa"}, {"name", "//a.png"}, {"source", FromFile}})
        .Add("IM", "Image", {{"id.name", "IMb"}, {"name", "//b.avi"}, {"source", Movie}})
        .Add("SO", "bSound", {{"id.name", "SOa"}, {"name", "//a.wav"}})
        .Add("VF", "VFont", {{"id.name", "VFa"}, {"name", "//a.ttf"}})
        .Add("MC", "MovieClip", {{"id.name", "MCa"}, {"name", "//a.mov"}, {"source", 2}})
        .Add("CF", "CacheFile", {{"id.name", "CFa"}, {"filepath", "//a.abc"}})
        .Add("DATA", "CacheFileLayer", {{"filepath", "//layer.abc"}})
        .Add("VO", "Volume", {{"id.name", "VOa"}, {"filepath", "//a.vdb"}})
        .Add("TX", "Text", {{"id.name", "TXa"}, {"name", 0x70}})
        .AddBytes("DATA", "Link", QByteArray("//a.py\0\0", 8), 0x70)
        .Add("MA", "Material", {{"id.name", "MAa"}})
        .Add("DATA", "NodeShaderTexIES", {{"mode", 1}, {"filepath", "//a.ies"}});
    EXPECT_EQ(
        LinksOf(content),
        (Links{L(u"LIlib", u"lib.blend"), L(u"IMa", u"a.png"), L(u"IMb", u"b.avi"),
               L(u"SOa", u"a.wav"), L(u"VFa", u"a.ttf"), L(u"MCa", u"a.mov"), L(u"CFa", u"a.abc"),
               L(u"CFa/CacheFileLayer 1", u"layer.abc"), L(u"VOa", u"a.vdb"), L(u"TXa", u"a.py"),
               L(u"MAa/NodeShaderTexIES 1", u"a.ies")}));
}

TEST_F(BlendReader, TheIconOfABrushIsALinkWhereTheVersionHasOne)
{
    BlendFile content;
    content.Describe("Brush", {{"ID", "id"}, {"char", "icon_filepath[40]"}});
    content.Add("BR", "Brush", {{"id.name", "BRa"}, {"icon_filepath", "//a.png"}})
        .Add("BR", "Brush", {{"id.name", "BRb"}});
    EXPECT_EQ(LinksOf(content), (Links{L(u"BRa", u"a.png")}));
    BlendFile other;
    other.Describe("Brush", {{"ID", "id"}});
    other.Add("BR", "Brush", {{"id.name", "BRa"}});
    EXPECT_EQ(LinksOf(other), Links());
    EXPECT_TRUE(context.lines.isEmpty());
}

TEST_F(BlendReader, WhatIsPackedOrMadeOrBuiltInIsNoLink)
{
    BlendFile content;
    content
        .Add("IM", "Image",
             {{"id.name", "IMa"}, {"name", "//a.png"}, {"source", FromFile}, {"packedfile", 1}})
        .Add("IM", "Image",
             {{"id.name", "IMb"}, {"name", "//a.png"}, {"source", 6}, {"packedfiles.first", 1}})
        .Add("IM", "Image", {{"id.name", "IMc"}, {"name", "//a.png"}, {"source", Generated}})
        .Add("IM", "Image", {{"id.name", "IMd"}, {"name", "//a.png"}, {"source", Viewer}})
        .Add("IM", "Image", {{"id.name", "IMe"}, {"name", ""}, {"source", FromFile}})
        .Add("LI", "Library", {{"id.name", "LIa"}, {"name", "//a.blend"}, {"packedfile", 1}})
        .Add("SO", "bSound", {{"id.name", "SOa"}, {"name", "//a.wav"}, {"packedfile", 1}})
        .Add("VF", "VFont", {{"id.name", "VFa"}, {"name", "<builtin>"}})
        .Add("VF", "VFont", {{"id.name", "VFb"}, {"name", "//a.ttf"}, {"packedfile", 1}})
        .Add("VO", "Volume", {{"id.name", "VOa"}, {"filepath", "//a.vdb"}, {"packedfile", 1}})
        .Add("TX", "Text", {{"id.name", "TXa"}, {"name", 0}})
        .Add("MA", "Material", {{"id.name", "MAa"}})
        .Add("DATA", "NodeShaderTexIES", {{"mode", 0}, {"filepath", "//a.ies"}});
    EXPECT_EQ(LinksOf(content), Links());
}

TEST_F(BlendReader, PathsAreDecoded)
{
    const std::pair<const char*, const char16_t*> rows[] = {
        {"//a.png", u"a.png"},
        {"///a.png", u"a.png"},
        {"//../b/a.png", u"../b/a.png"},
        {"//..\\b\\a.png", u"../b/a.png"},
        {"//\\b\\a.png", u"b/a.png"},
        {"/lib/a.png", u"/lib/a.png"},
        {"C:\\lib\\a.png", u"C:/lib/a.png"},
        {"\\\\server\\lib\\a.png", u"//server/lib/a.png"},
        {"tex/a.png", u"tex/a.png"},
        {"//50% a.png", u"50% a.png"},
    };
    for (const auto& [stored, path] : rows) {
        BlendFile content;
        content.Add("IM", "Image", {{"id.name", "IMa"}, {"name", stored}, {"source", FromFile}});
        EXPECT_EQ(LinksOf(content), (Links{L(u"IMa", path)})) << stored;
    }
}

TEST_F(BlendReader, DataBlocksOfOneNameAreToldApart)
{
    BlendFile content;
    for (int i = 0; i < 3; ++i)
        content.Add("IM", "Image", {{"id.name", "IMa"}, {"name", "//a.png"}, {"source", 1}});
    EXPECT_EQ(LinksOf(content),
              (Links{L(u"IMa", u"a.png"), L(u"IMa~2", u"a.png"), L(u"IMa~3", u"a.png")}));
}

TEST_F(BlendReader, ANameThatIsNoTextStillMakesAnId)
{
    // As Blender up to 3.0 cut the name of a film: 20 letters and the first byte of one more.
    const QByteArray cut = QByteArray("SQ") + QByteArray("木").repeated(20) + '\xE6';
    BlendFile content;
    content.Add("IM", "Image", {{"id.name", "IMH\xF6he"}, {"name", "//a.png"}, {"source", 1}})
        .Add("SC", "Scene", {{"id.name", "SCü"}});
    for (const int strip : {0x10, 0x20})
        content.Add("DATA", "Sequence", {{"name", cut}, {"type", 3}, {"strip", strip}})
            .Add("DATA", "Strip", {{"stripdata", strip + 1}, {"dir", "//"}}, strip)
            .Add("DATA", "StripElem", {{"name", "木.avi"}}, strip + 1);
    const QString id = u"SCü/"_s + QString::fromLatin1(cut);
    EXPECT_EQ(LinksOf(content),
              (Links{L(u"IMHöhe", u"a.png"), {id, u"木.avi"_s}, {id + u"~2"_s, u"木.avi"_s}}));
}

TEST_F(BlendReader, APathWithoutAnEndFillsItsField)
{
    BlendFile content;
    const QByteArray path = "//" + QByteArray(38, 'x');
    QByteArray record = content.Record("Library", {{"id.name", "LIa"}});
    record.replace(record.size() - 8 - 40, 40, path);
    content.AddBytes("LI", "Library", record, 0);
    EXPECT_EQ(LinksOf(content), (Links{{u"LIa"_s, QString(38, u'x')}}));
}

TEST_F(BlendReader, BlocksBehindADataBlockBelongToIt)
{
    BlendFile content;
    content.Add("TX", "Text", {{"id.name", "TXa"}, {"name", 0x70}})
        .Add("MA", "Material", {{"id.name", "MAa"}})
        .AddBytes("DATA", "Link", QByteArray("//a.py\0\0", 8), 0x70)
        .Add("TX", "Text", {{"id.name", "TXb"}, {"name", 0x70}})
        .AddBytes("DATA", "Link", QByteArray("//b.py\0\0", 8), 0x70);
    EXPECT_EQ(LinksOf(content), (Links{L(u"TXb", u"b.py")}));
}

TEST_F(BlendReader, ANameThatStandsForADataBlockOfALibraryIsNoLink)
{
    BlendFile content;
    content.Add("LI", "Library", {{"id.name", "LIlib"}, {"name", "//lib.blend"}})
        .Add("ID", "ID", {{"name", "OBStuhl"}})
        .Add("DATA", "NodeShaderTexIES", {{"mode", 1}, {"filepath", "//a.ies"}});
    EXPECT_EQ(LinksOf(content), (Links{L(u"LIlib", u"lib.blend")}));
}

TEST_F(BlendReader, StripsNameTheirFolderAndTheirFiles)
{
    BlendFile content;
    const QByteArray elements = content.Record("StripElem", {{"name", "a ü.png"}}) +
                                content.Record("StripElem", {{"name", "b.png"}});
    content.Add("SC", "Scene", {{"id.name", "SCa"}})
        .Add("DATA", "Sequence", {{"name", "SQbilder"}, {"type", 0}, {"strip", 0x10}})
        .Add("DATA", "Strip", {{"stripdata", 0x11}, {"dir", "//../Schnitt/"}}, 0x10)
        .AddBytes("DATA", "StripElem", elements, 0x11, 2)
        .Add("DATA", "Sequence", {{"name", "SQfilm"}, {"type", 3}, {"strip", 0x20}})
        .Add("DATA", "Strip", {{"stripdata", 0x21}, {"dir", "//"}}, 0x20)
        .Add("DATA", "StripElem", {{"name", "f.avi"}}, 0x21)
        .Add("DATA", "Sequence", {{"name", "SQton"}, {"type", 4}, {"strip", 0x30}, {"sound", 0x50}})
        .Add("DATA", "Strip", {{"stripdata", 0x31}, {"dir", "/lib"}}, 0x30)
        .Add("DATA", "StripElem", {{"name", "t.wav"}}, 0x31)
        .Add("DATA", "Sequence", {{"name", "SQfarbe"}, {"type", 28}, {"strip", 0x40}})
        .Add("DATA", "Strip", {{"stripdata", 0x41}, {"dir", "//"}}, 0x40)
        .Add("DATA", "StripElem", {{"name", "no.png"}}, 0x41);
    EXPECT_EQ(LinksOf(content),
              (Links{L(u"set:SCa/SQbilder#0", u"../Schnitt/a ü.png"),
                     L(u"set:SCa/SQbilder#1", u"../Schnitt/b.png"), L(u"SCa/SQfilm", u"f.avi"),
                     L(u"SCa/SQton", u"/lib/t.wav")}));
    content.Add("SO", "bSound", {{"id.name", "SOa"}, {"name", "/lib/t.wav"}, {"packedfile", 1}},
                0x50);
    EXPECT_EQ(LinksOf(content).size(), 3) << "what the strip plays is packed";
}

TEST_F(BlendReader, AStripWithoutItsPartsIsNoLink)
{
    BlendFile content;
    content.Add("SC", "Scene", {{"id.name", "SCa"}})
        .Add("DATA", "Sequence", {{"name", "SQa"}, {"type", 0}, {"strip", 0x10}})
        .Add("DATA", "Sequence", {{"name", "SQb"}, {"type", 0}, {"strip", 0x20}})
        .Add("DATA", "Strip", {{"stripdata", 0x21}, {"dir", "//"}}, 0x20);
    EXPECT_EQ(LinksOf(content), Links());
}

TEST_F(BlendReader, ReadingLeavesTheFileAlone)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(file, OneImage({})).Touch(file, time);
    const FileTree::Snapshot before = tree.Contents();
    EXPECT_TRUE(TryRead(file));
    EXPECT_EQ(tree.Contents(), before);
    EXPECT_EQ(tree.Modified(file), time);
}

TEST_F(BlendReader, AnOldSequenceWithoutDigitsIsOneFile)
{
    BlendFile content;
    content.Add("IM", "Image", {{"id.name", "IMa"}, {"name", "//a.png"}, {"source", Sequence}});
    EXPECT_EQ(LinksOf(content), (Links{L(u"IMa", u"a.png")}));
}

} // namespace Halvern::Test
