// SPDX-License-Identifier: Apache-2.0

#include "FormatFixture.h"
#include "ZipBuilder.h"

#include "pluginkit/FormatError.h"
#include "pluginkit/ReplacementFile.h"
#include "pluginkit/Utf.h"
#include "pluginkit/ZipArchive.h"

#include <QtCore/QFile>

#include <stdexcept>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using PluginKit::FormatError;
using PluginKit::InputFile;
using PluginKit::ZipArchive;

constexpr std::uint64_t Limit = 1 << 20;

class ZipFiles : public ::testing::Test
{
protected:
    InputFile Open(const QByteArray& archive)
    {
        tree.File(m_name, archive);
        return InputFile(PluginKit::PathFromUtf8(tree.Path(m_name).toStdString()));
    }

    QByteArray Replaced(const QByteArray& archive,
                        const std::map<std::string, std::string>& contents)
    {
        InputFile file = Open(archive);
        ZipArchive(file).Replace(contents);
        return tree.Read(m_name);
    }

    /// Why an entry of the archive cannot be read.
    std::string Failure(const QByteArray& archive, const std::string& name = "a.xml")
    {
        InputFile file = Open(archive);
        try {
            const auto content = ZipArchive(file).Read(name, Limit);
            return content ? "read: " + *content : "no such entry";
        } catch (const FormatError& error) {
            EXPECT_EQ(tree.Read(m_name), archive);
            const auto position = error.Position();
            return error.what() + (position ? " @" + std::to_string(*position) : std::string());
        }
    }

    FileTree tree;

private:
    const QString m_name = u"a.zip"_s;
};

QByteArray With(QByteArray bytes, qsizetype at, const QByteArray& part)
{
    return bytes.replace(at, part.size(), part);
}

const QByteArray Extra = QByteArray("UT\5\0\1\2\3\4\5", 9);

/// Two files: local headers at 0 and 38, records at 78 and 129, the end record at 180.
const QList<ZipMember> TwoFiles = {{"a.xml", "<a/>", false, false, {}, {}},
                                   {"b.brp", "solid", false, false, {}, {}}};

} // namespace

TEST_F(ZipFiles, AnEntryIsReadHoweverItIsStored)
{
    const QByteArray text = QByteArray("<a>Höhe</a>").repeated(100);
    for (const bool deflated : {false, true}) {
        for (const bool streamed : {false, true}) {
            InputFile file =
                Open(Zip({{"x", "1"}, {"a.xml", text, deflated, streamed, "c", Extra}}));
            const ZipArchive archive(file);
            EXPECT_EQ(archive.Read("a.xml", Limit), text.toStdString()) << deflated << streamed;
            EXPECT_EQ(archive.Read("A.xml", Limit), std::nullopt);
        }
    }
}

TEST_F(ZipFiles, ReplacingAnEntryLeavesEveryOtherByte)
{
    const auto archive = [](const QByteArray& content) {
        return Zip({{"Document.xml", content, true, false, "first", Extra},
                    {"Shape.brp", PatternBytes(5000), true, false, "second", {}},
                    {"Größe 木.svg", "plain", false, false, {}, Extra},
                    {"empty", {}, false, false, {}, {}}},
                   "FreeCAD Document");
    };
    for (const QByteArray& content :
         {QByteArray("short"), QByteArray("longer ").repeated(50), QByteArray(PatternBytes(70000))})
        EXPECT_TRUE(Replaced(archive("<Document/>"), {{"Document.xml", content.toStdString()}}) ==
                    archive(content))
            << content.size();
}

TEST_F(ZipFiles, SeveralEntriesAnywhereAreReplacedAtOnce)
{
    const auto archive = [](const QByteArray& first, const QByteArray& last) {
        return Zip({{"0", "zero"}, {"1", first}, {"2", PatternBytes(999)}, {"3", last, false}});
    };
    EXPECT_EQ(Replaced(archive("one", "three"), {{"3", "new three"}, {"1", "new one"}}),
              archive("new one", "new three"));
}

TEST_F(ZipFiles, AnEntryThatIsNotThereIsNotReplacedNorIsAnyOther)
{
    const QByteArray archive = Zip({{"0", "zero"}, {"1", "one"}});
    EXPECT_THROW(Replaced(archive, {{"0", "new"}, {"2", "two"}}), std::invalid_argument);
    EXPECT_EQ(Replaced(archive, {}), archive);
}

TEST_F(ZipFiles, RecordsKeepAnOrderOfTheirOwn)
{
    const auto archive = [](const QByteArray& content) {
        return Zip({{"0", "zero"}, {"1", content}, {"2", "two"}}, "c", {2, 0, 1});
    };
    EXPECT_EQ(Replaced(archive("one"), {{"1", "something new"}}), archive("something new"));
}

TEST_F(ZipFiles, AReplacedEntryLosesItsDescriptorAndTheOthersKeepTheirs)
{
    const auto archive = [](const QByteArray& content, bool streamed) {
        return Zip({{"0", "zero", true, true, {}, {}},
                    {"1", content, true, streamed, {}, {}},
                    {"2", "two", true, true, {}, {}}});
    };
    EXPECT_EQ(Replaced(archive("one", true), {{"1", "new"}}), archive("new", false));
}

TEST_F(ZipFiles, VersionsAndTimesMayDifferBetweenEntryAndDirectory)
{
    const auto archive = [](const QByteArray& content) {
        const QByteArray zip = Zip({{"a.xml", content}, {"b", "b", true, true, {}, {}}});
        const qsizetype second = zip.indexOf("PK\3\4", 4);
        return With(With(With(zip, 4, LittleEndian16(45)), 10, LittleEndian(0)), second + 4,
                    LittleEndian16(45));
    };
    EXPECT_EQ(Replaced(archive("one"), {{"a.xml", "new"}}), archive("new"));
}

TEST_F(ZipFiles, EntriesLargerThanTheCopysBufferSurvive)
{
    const QByteArray large =
        PatternBytes(2 * qint64(PluginKit::ReplacementFile::CopyBufferSize) + 77);
    const auto archive = [&](const QByteArray& content) {
        return Zip({{"0", large, false}, {"1", content}, {"2", large, false}});
    };
    EXPECT_TRUE(Replaced(archive("one"), {{"1", "new"}}) == archive("new"));
}

TEST_F(ZipFiles, ACommentThatLooksLikeAnEndRecordMisleadsNobody)
{
    const auto archive = [](const QByteArray& content) {
        return Zip({{"a.xml", content}}, "x" + Zip({}) + "PK\5\6");
    };
    EXPECT_EQ(Replaced(archive("one"), {{"a.xml", "new"}}), archive("new"));
}

TEST_F(ZipFiles, AFailedReplacementLeavesTheFileAsItWas)
{
    const QByteArray archive = Zip(TwoFiles);
    InputFile file = Open(archive);
    ZipArchive zip(file);
    tree.File(u"a.zip"_s, archive + "more"); // someone else writes meanwhile
    EXPECT_THROW(zip.Replace({{"a.xml", "new"}}), FormatError);
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{u"a.zip"_s, archive + "more"}}));
}

TEST_F(ZipFiles, DamagedRecordsAreReportedWithTheirPlace)
{
    const QByteArray good = Zip(TwoFiles);
    ASSERT_EQ(good.indexOf("PK\1\2"), 79);
    ASSERT_EQ(good.indexOf("PK\5\6"), 181);
    const QByteArray many = LittleEndian16(3) + LittleEndian16(3);
    const struct
    {
        const char* what;
        QByteArray archive;
        const char* message;
    } rows[] = {
        {"nothing", "", "the file does not end as a ZIP archive does @0"},
        {"no archive", "This is a text.", "the file does not end as a ZIP archive does @15"},
        {"something after the end", good + "x", "the file does not end as a ZIP archive does @204"},
        {"another disk", With(good, 185, LittleEndian16(1)),
         "the archive goes on in another file @181"},
        {"two numbers of entries", With(good, 189, LittleEndian16(3)),
         "two different numbers of entries @181"},
        {"more entries than there are", With(good, 189, many),
         "3 entries in a directory of 102 bytes @79"},
        {"fewer entries than there are", With(good, 189, LittleEndian16(1) + LittleEndian16(1)),
         "a directory of 2 entries, not 1 @79"},
        {"a directory elsewhere", With(good, 197, LittleEndian(78)),
         "the file does not end as a ZIP archive does @203"},
        {"a directory that begins late", With(good, 193, LittleEndian(101) + LittleEndian(80)),
         "the directory holds something else than records @80"},
        {"a huge directory", With(good, 193, LittleEndian(0xFFFFFF00)),
         "the file does not end as a ZIP archive does @203"},
        {"no record", With(good, 79, "XX"), "the directory holds something else than records @79"},
        {"a name beyond the directory", With(good, 79 + 28, LittleEndian16(99)),
         "a record reaches beyond the directory @79"},
        {"64-bit sizes", With(good, 79 + 20, LittleEndian(0xFFFFFFFF)),
         "an entry with 64-bit sizes, which are not supported @79"},
        {"an entry after the directory", With(good, 79 + 42, LittleEndian(150)),
         "an entry lies after the directory @150"},
        {"an entry where none is", With(good, 79 + 42, LittleEndian(1)),
         "no entry begins where the directory says so @1"},
        {"two records for one entry", With(good, 130 + 42, LittleEndian(0)),
         "two entries overlap @0"},
        {"another name in the entry", With(good, 30, "c"),
         "the directory has another name for the entry @0"},
        {"a packed size that reaches the next entry",
         With(With(good, 18, LittleEndian(5)), 79 + 20, LittleEndian(5)),
         "two entries overlap @39"},
        {"a packed size that reaches the directory",
         With(With(good, 39 + 18, LittleEndian(6)), 130 + 20, LittleEndian(6)),
         "an entry reaches into the directory @39"},
        {"equal names", Zip({{"a.xml", "1"}, {"a.xml", "2"}}), "two entries are named a.xml @76"},
        {"a descriptor that is not there", With(With(good, 130 + 8, LittleEndian16(8)), 45, "\10"),
         "an entry without the descriptor that it announces @39"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Failure(row.archive), row.message) << row.what;
}

TEST_F(ZipFiles, DamagedContentsAreReportedByName)
{
    const QByteArray good = Zip(TwoFiles);
    const QByteArray deflated = Zip({{"a.xml", QByteArray("<a/>").repeated(9)}});
    const qsizetype record = deflated.indexOf("PK\1\2");
    const auto both = [](QByteArray bytes, qsizetype local, qsizetype central,
                         const QByteArray& part) {
        return With(With(std::move(bytes), local, part), central, part);
    };
    const struct
    {
        const char* what;
        QByteArray archive;
        const char* message;
    } rows[] = {
        {"another byte", With(good, 35, "["), "a.xml cannot be read: CRC error @0"},
        {"a wrong checksum", both(good, 14, 79 + 16, LittleEndian(1)),
         "a.xml cannot be read: CRC error @0"},
        {"two checksums", With(good, 14, LittleEndian(1)),
         "the directory has another description of a.xml @0"},
        {"two ways to pack", With(good, 8, LittleEndian16(8)),
         "the directory has another description of a.xml @0"},
        {"a descriptor that only the entry announces", With(good, 6, LittleEndian16(8)),
         "the directory has another description of a.xml @0"},
        {"64-bit sizes in the entry alone", With(good, 18, LittleEndian(0xFFFFFFFF)),
         "the directory has another description of a.xml @0"},
        {"two sizes", With(good, 79 + 24, LittleEndian(3)),
         "the directory has another description of a.xml @0"},
        {"a size too small", both(deflated, 22, record + 24, LittleEndian(3)),
         "a.xml does not have the size that the directory says @0"},
        {"a size too large", both(deflated, 22, record + 24, LittleEndian(300)),
         "a.xml does not have the size that the directory says @0"},
        {"a size beyond the limit", both(deflated, 22, record + 24, LittleEndian((1 << 20) + 1)),
         "a.xml has 1048577 bytes, more than 1048576 @0"},
        {"garbage", With(deflated, 35, QByteArray(6, '\xFF')),
         "a.xml cannot be read: Zlib error: data error @0"},
        {"an unknown way to pack", both(good, 8, 79 + 10, LittleEndian16(97)),
         "a.xml is compressed in an unusual way, number 97 @0"},
        {"encryption", both(good, 6, 79 + 8, LittleEndian16(1)), "a.xml is encrypted @0"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Failure(row.archive), row.message) << row.what;
}

TEST_F(ZipFiles, PackedDataThatEndsEarlyIsReported)
{
    const QByteArray content = PatternBytes(200'000);
    const QByteArray good = Zip({{"a.xml", content}});
    const qsizetype record = good.indexOf("PK\1\2");
    const qsizetype packed = record - 30 - 5;
    ASSERT_GT(packed, 2 * 64 * 1024);
    for (const qsizetype size : {qsizetype(0), qsizetype(64) * 1024, packed - 1}) {
        const QByteArray shorter = LittleEndian(static_cast<quint32>(size));
        EXPECT_EQ(Failure(With(With(good, 18, shorter), record + 20, shorter)),
                  "a.xml cannot be read: Zlib error: buffer error @0")
            << size;
    }
}

TEST_F(ZipFiles, ADeflatedEntryOfNothingAtAllIsEmpty)
{
    const QByteArray archive = Zip({{"a.xml", ""}});
    ASSERT_EQ(archive.mid(8, 2), LittleEndian16(8)) << "deflated";
    ASSERT_EQ(archive.mid(18, 8), QByteArray(8, '\0')) << "both sizes";
    EXPECT_EQ(Failure(archive), "read: ");
}

TEST_F(ZipFiles, AllEntriesCanBeNamedAndRead)
{
    std::vector<std::string> names;
    QList<ZipMember> members;
    for (int i = 300; i-- > 0;) {
        names.push_back("parts/" + std::to_string(i));
        members.append({names.back().c_str(), QByteArray::number(i)});
    }
    InputFile file = Open(Zip(members));
    const ZipArchive archive(file);
    ASSERT_EQ(archive.Names(), names);
    for (const std::string& name : names)
        EXPECT_EQ("parts/" + archive.Read(name, Limit).value_or("nothing"), name);
    EXPECT_EQ(archive.Read("parts/300", Limit), std::nullopt);
    EXPECT_EQ(archive.Read("", Limit), std::nullopt);
}

TEST_F(ZipFiles, ABombIsRefusedWithoutBeingUnpacked)
{
    const QByteArray bomb = Zip({{"a.xml", QByteArray(16 << 20, ' ')}});
    ASSERT_LT(bomb.size(), 100'000);
    EXPECT_EQ(Failure(bomb), "a.xml has 16777216 bytes, more than 1048576 @0");
    const qsizetype record = bomb.indexOf("PK\1\2");
    const QByteArray small = LittleEndian(1000);
    EXPECT_EQ(Failure(With(With(bomb, 22, small), record + 24, small)),
              "a.xml does not have the size that the directory says @0");
}

TEST_F(ZipFiles, AnArchiveCutAnywhereIsReported)
{
    const QByteArray good = Zip({{"a.xml", "<a/>"}, {"b", "b", true, true, {}, {}}}, "comment");
    for (qsizetype size = 0; size < good.size(); ++size)
        EXPECT_EQ(Failure(good.left(size)),
                  "the file does not end as a ZIP archive does @" + std::to_string(size));
}

TEST_F(ZipFiles, NoBitTurnedOverMakesAnotherContentOrACrash)
{
    const QByteArray good =
        Zip({{"a.xml", QByteArray("<a/>").repeated(9), true, true, "c", Extra}, {"b", "b"}}, "x");
    const std::string content = Failure(good);
    ASSERT_EQ(content, "read: " + QByteArray("<a/>").repeated(9).toStdString());
    for (qsizetype at = 0; at < good.size(); ++at) {
        QByteArray bad = good;
        bad[at] = static_cast<char>(bad.at(at) ^ (1 << at % 8));
        const std::string result = Failure(bad);
        EXPECT_TRUE(!result.starts_with("read: ") || result == content) << at;
    }
}

} // namespace Halvern::Test
