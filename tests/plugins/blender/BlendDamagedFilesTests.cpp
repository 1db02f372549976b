// SPDX-License-Identifier: Apache-2.0

#include "BlendFixture.h"

#include "pluginkit/Compression.h"

namespace Halvern::Test {

namespace {

class DamagedBlend : public BlendFixture
{
protected:
    std::string Failure(const QByteArray& content)
    {
        return ReadFailure(file, content).toStdString();
    }
};

struct Row
{
    const char* what;
    QByteArray content;
    const char* message;
};

QByteArray With(QByteArray bytes, qsizetype at, const QByteArray& part)
{
    return bytes.replace(at, part.size(), part);
}

BlendFile Good()
{
    BlendFile file;
    file.Add("IM", "Image", {{"id.name", "IMa"}, {"name", "//a.png"}, {"source", 1}});
    return file;
}

/// A file with another description of its structs.
QByteArray Described(const QByteArray& dna)
{
    const BlendFile file;
    return file.Header() + file.Block("DNA1", dna) + file.Block("ENDB", {});
}

constexpr qsizetype HeaderSize = 12;

} // namespace

TEST_F(DamagedBlend, AHeaderThatIsNotKnownIsRefusedByWhatItIs)
{
    const QByteArray good = Good().Bytes();
    const Row rows[] = {
        {"nothing", "", "a Blender file begins with \"BLENDER\" (byte 0)"},
        {"another file", "PK\3\4 something else",
         "a Blender file begins with \"BLENDER\" (byte 0)"},
        {"cut off in the header", good.left(9), "the file ends inside its header (byte 9)"},
        {"a header of another size", "BLENDER18-01v0500" + good.mid(HeaderSize),
         "written by a later version of Blender, whose files are not known (byte 7)"},
        {"another layout", "BLENDER17-02v0500" + good.mid(HeaderSize),
         "written by a later version of Blender, whose files are not known (byte 7)"},
        {"small pointers in a large header", "BLENDER17_01v0500" + good.mid(HeaderSize),
         "written by a later version of Blender, whose files are not known (byte 7)"},
        {"cut off in the large header", "BLENDER17-01v050",
         "the file ends inside its header (byte 16)"},
        {"bytes in no order in the large header", "BLENDER17-01x0500" + good.mid(HeaderSize),
         "the header gives no order of bytes (byte 12)"},
        {"no version in the large header", "BLENDER17-01v05x0" + good.mid(HeaderSize),
         "the header gives no version of Blender (byte 13)"},
        {"a version that is no number", With(good, 9, "3x4"),
         "the header gives no version of Blender (byte 9)"},
        {"pointers of no size", With(good, 7, "+"),
         "the header gives no size of pointers (byte 7)"},
        {"bytes in no order", With(good, 8, "w"), "the header gives no order of bytes (byte 8)"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Failure(row.content), row.message) << row.what;
}

TEST_F(DamagedBlend, AFileCutOffAnywhereFails)
{
    const QByteArray good = Good().Bytes();
    for (qsizetype size = HeaderSize; size < good.size(); ++size) {
        const std::string failure = Failure(good.left(size));
        ASSERT_TRUE(failure.starts_with("the file ends unexpectedly (byte ")) << size << failure;
    }
}

TEST_F(DamagedBlend, AFileOfBlender5CutOffAnywhereFails)
{
    BlendFile content({8, false, true, "0501"});
    content.Add("IM", "Image", {{"id.name", "IMa"}, {"name", "//a.png"}, {"source", 1}});
    const QByteArray good = content.Bytes();
    for (qsizetype size = 17; size < good.size(); ++size) {
        const std::string failure = Failure(good.left(size));
        ASSERT_TRUE(failure.starts_with("the file ends unexpectedly (byte ")) << size << failure;
    }
    const Machine machine;
    EXPECT_EQ(Failure(With(good, 17 + 16, machine.Number(1, 8).repeated(1).replace(7, 1, "\x80"))),
              "a block of a negative size (byte 33)");
    EXPECT_EQ(Failure(With(good, 17 + 16, machine.Number(quint64(1) << 62, 8))),
              "the file ends unexpectedly (byte " + std::to_string(good.size()) + ")");
}

TEST_F(DamagedBlend, AFileOfAnOldVersionCutOffAnywhereBeforeItsEndFails)
{
    BlendFile content({4, true, false, "233"});
    content.Add("IM", "Image", {{"id.name", "IMa"}, {"name", "//a.png"}, {"source", 1}});
    const QByteArray good = content.BytesWithoutEnd() + "ENDB";
    for (qsizetype size = HeaderSize; size < good.size(); ++size) {
        const std::string failure = Failure(good.left(size));
        ASSERT_TRUE(failure.starts_with("the file ends unexpectedly (byte ")) << size << failure;
    }
}

TEST_F(DamagedBlend, LyingBlocksAreReportedWithTheirPlace)
{
    const QByteArray good = Good().Bytes();
    const Machine machine;
    const auto endsAt = [](qsizetype size) {
        return "the file ends unexpectedly (byte " + std::to_string(size) + ")";
    };
    const std::pair<QByteArray, std::string> rows[] = {
        {With(good, 16, machine.Number(0x7FFFFFFF, 4)), endsAt(good.size())},
        {With(good, 16, machine.Number(0x80000000, 4)), "a block of a negative size (byte 16)"},
        {With(good, 16, machine.Number(30, 4)), endsAt(good.size())},
        {With(good, 28, machine.Number(99, 4)),
         "a block of a struct that the file does not describe (byte 36)"},
        {Good().Header() + Good().Block("ENDB", {}), "the file has no description of its structs"},
        {good.chopped(24), endsAt(good.size() - 24)},
    };
    for (const auto& [content, message] : rows)
        EXPECT_EQ(Failure(content), message);
}

TEST_F(DamagedBlend, ABlockTooShortForItsStructIsReported)
{
    BlendFile content;
    content.AddBytes("IM", "Image", QByteArray(40, 'x'), 0);
    EXPECT_EQ(Failure(content.Bytes()), "a block is too short for what it holds (byte 36)");
    BlendFile strips;
    strips.Add("SC", "Scene", {{"id.name", "SCa"}})
        .AddBytes("DATA", "StripElem", strips.Record("StripElem", {{"name", "a"}}), 1, 0xFFFFFFFF);
    EXPECT_NE(Failure(strips.Bytes()).find("a block is too short for what it holds"),
              std::string::npos);
}

TEST_F(DamagedBlend, CountsBeyondReasonAreRefused)
{
    BlendFile content;
    content.Add("SC", "Scene", {{"id.name", "SCa"}})
        .AddBytes("DATA", "StripElem", QByteArray(28 * 1'000'001, '\0'), 1, 1'000'001);
    EXPECT_TRUE(Failure(content.Bytes()).starts_with("more than 1000000 links"));
    BlendFile text;
    text.Add("TX", "Text", {{"id.name", "TXa"}, {"name", 0x70}})
        .AddBytes("DATA", "Link", QByteArray(70'000, 'x'), 0x70);
    EXPECT_TRUE(Failure(text.Bytes()).starts_with("a path of 70000 bytes (byte "));
}

TEST_F(DamagedBlend, PathsThatWouldFillTheMemoryAreRefused)
{
    constexpr qsizetype count = 1120;
    BlendFile content;
    content.Describe("CacheFileLayer", {{"char", "filepath[60000]"}});
    content.Add("CF", "CacheFile", {{"id.name", "CFa"}, {"filepath", "//a.abc"}})
        .AddBytes("DATA", "CacheFileLayer", QByteArray(60'000 * count, 'x'), 1, count);
    EXPECT_TRUE(
        Failure(content.Bytes()).starts_with("paths and names of more than 64 MiB in all (byte "));
}

TEST_F(DamagedBlend, ALinkThatNoHostCouldHoldIsReportedByName)
{
    BlendFile text;
    text.Add("TX", "Text", {{"id.name", "TXa"}, {"name", 0x70}})
        .AddBytes("DATA", "Link", "//" + QByteArray(300, 'x') + '\0', 0x70);
    EXPECT_EQ(Failure(text.Bytes()),
              "the path of link TXa has 300 characters; a link can have 259");
    BlendFile image;
    image.Add("IM", "Image", {{"id.name", "IMa"}, {"name", "//\xFF.png"}, {"source", 1}});
    EXPECT_EQ(Failure(image.Bytes()), "the path of link IMa is no valid text");
}

TEST_F(DamagedBlend, ADamagedDescriptionIsReported)
{
    const QByteArray good = BlendFile().Dna();
    const Machine machine;
    const qsizetype types = good.indexOf("TYPE");
    const qsizetype sizes = good.indexOf("TLEN");
    const qsizetype structs = good.indexOf("STRC");
    const QByteArray many = machine.Number(0xFFFFFFFF, 4);
    const Row rows[] = {
        {"nothing", "", "ends unexpectedly"},
        {"another beginning", With(good, 0, "sdna"), "has no part SDNA"},
        {"no names", With(good, 4, "none"), "has no part NAME"},
        {"names without end", With(good, 8, many),
         "counts 4294967295 things where there are fewer"},
        {"types without end", With(good, types + 4, many),
         "counts 4294967295 things where there are fewer"},
        {"no sizes", With(good, sizes, "none"), "has no part TLEN"},
        {"structs without end", With(good, structs + 4, many),
         "counts 4294967295 things where there are fewer"},
        {"a struct of no type", With(good, structs + 8, machine.Number(0xFFFF, 2)),
         "names something that it does not list"},
        {"a member of no type", With(good, structs + 12, machine.Number(0xFFFF, 2)),
         "names something that it does not list"},
        {"a struct without end", With(good, structs + 10, machine.Number(1024, 2)),
         "ends unexpectedly"},
        {"another size", With(good, sizes + 4 + 8, machine.Number(7, 2)),
         "gives Link another size than its members have"},
        {"a name that every member would keep",
         QByteArray(good).replace("Link", QByteArray(256, 'n')), "has a name of 256 bytes"},
        {"a struct of members without number", With(good, structs + 10, machine.Number(1025, 2)),
         "gives Link 1025 members"},
        {"an array without end", QByteArray(good).replace("name[66]", "name[66x"),
         "has a member whose name is malformed"},
        {"an array of billions", QByteArray(good).replace("name[40]", "n[99999]"),
         "has a member that is larger than a struct can be"},
        {"an array of arrays of billions",
         QByteArray(good).replace("gputexture[3][2]", "gput[9999][9999]"),
         "has a member that is larger than a struct can be"},
    };
    for (const Row& row : rows) {
        const std::string failure = Failure(Described(row.content));
        const std::string prefix = "the file's description of its structs ";
        EXPECT_TRUE(failure.starts_with(prefix + row.message + " (byte ")) << row.what << failure;
    }
}

TEST_F(DamagedBlend, ADescriptionCutOffAnywhereIsReported)
{
    const QByteArray good = BlendFile().Dna();
    for (qsizetype size = 0; size < good.size(); ++size) {
        const std::string failure = Failure(Described(good.left(size)));
        ASSERT_TRUE(failure.starts_with("the file's description of its structs ")) << size;
    }
}

TEST_F(DamagedBlend, AnImageOfAVersionWhoseFieldsAreUnknownIsReported)
{
    QByteArray bytes = Good().Bytes();
    const qsizetype dna = bytes.indexOf("SDNA");
    bytes.replace(bytes.indexOf("name[40]", dna), 8, "xxxx[40]");
    bytes.replace(bytes.indexOf("filepath[40]", dna), 12, "xxxxxxxx[40]");
    EXPECT_EQ(Failure(bytes),
              "the file's description of its structs gives Image no text name (byte 36)");
}

TEST_F(DamagedBlend, ACompressedBombIsRefused)
{
    const BlendFile content;
    const std::string head =
        content.Header().toStdString() +
        content.Block("DATA", {}).replace(4, 4, Machine().Number(0x7FFFFFFF, 4)).toStdString();
    std::string bomb;
    PluginKit::Compressor compressor(PluginKit::Compression::Zstd,
                                     [&](std::string_view part) { bomb.append(part); });
    compressor.Write(head);
    const std::string zeros(std::size_t(1) << 20, '\0');
    for (int i = 0; i < 300; ++i)
        compressor.Write(zeros);
    compressor.Finish();
    ASSERT_LT(bomb.size(), 100'000U);
    EXPECT_TRUE(
        Failure(QByteArray::fromStdString(bomb))
            .starts_with("the file holds more than 268435456 bytes when it is decompressed"));
}

TEST_F(DamagedBlend, ACompressedFileCutOffAnywhereFails)
{
    const std::string plain = Good().Bytes().toStdString();
    for (const auto method : {PluginKit::Compression::Gzip, PluginKit::Compression::Zstd}) {
        const QByteArray good = QByteArray::fromStdString(PluginKit::Compressed(method, plain));
        for (qsizetype size = 4; size < good.size(); size += 3) {
            const std::string failure = Failure(good.left(size));
            ASSERT_TRUE(failure.starts_with("the compressed data ends unexpectedly (byte "))
                << size;
        }
    }
}

} // namespace Halvern::Test
