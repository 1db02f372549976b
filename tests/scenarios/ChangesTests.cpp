// SPDX-License-Identifier: Apache-2.0

// What counts as changed: size, time to the nanosecond, and content where the time cannot tell.

#include "ScenarioFixture.h"

#include <QtCore/QDateTime>

#include <atomic>
#include <thread>

namespace Halvern::Test {

namespace {

class Changes : public ScenarioFixture
{
protected:
    Changes() { tree.File(u"work/a.txt"_s, "first content"); }

    qint64 Now() const { return ModifiedNanoseconds(tree.Path(u"work/a.txt"_s)); }
    void SetTime(const QString& file, qint64 nanoseconds)
    {
        SetModifiedNanoseconds(tree.Path(file), nanoseconds);
    }
    QString ImportedAs(const QStringList& options = {}) const
    {
        return Report(QStringList{u"a.txt"_s} + options).StatusOf(u"work/a.txt"_s);
    }

    static constexpr qint64 Second = 1'000'000'000;
};

} // namespace

TEST_F(Changes, AFileThatGrewWithItsOldTimeIsUpdated)
{
    SetTime(u"work/a.txt"_s, Now() - 3600 * Second);
    ASSERT_EQ(ImportedAs(), u"copied"_s);
    SaveUnnoticed(u"work/a.txt"_s, "first content and more");
    EXPECT_EQ(ImportedAs(), u"updated"_s);
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), "first content and more");
}

TEST_F(Changes, ASaveWithinTheSameSecondIsUpdated)
{
    const qint64 second = (Now() / Second) * Second - 3600 * Second;
    SetTime(u"work/a.txt"_s, second + 100'000'000);
    ASSERT_EQ(ImportedAs(), u"copied"_s);
    tree.File(u"work/a.txt"_s, "other content");
    SetTime(u"work/a.txt"_s, second + 100'001'000);
    EXPECT_EQ(ImportedAs(), u"updated"_s);
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), "other content");
}

TEST_F(Changes, AnOlderTimeIsAChangeToo)
{
    ASSERT_EQ(ImportedAs(), u"copied"_s);
    tree.File(u"work/a.txt"_s, "other content");
    SetTime(u"work/a.txt"_s, Now() - 3600 * Second);
    EXPECT_EQ(ImportedAs(), u"updated"_s);
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), "other content");
}

TEST_F(Changes, WhereTheTimeIsNoOlderThanTheRecordTheContentDecides)
{
    SetTime(u"work/a.txt"_s, Now() + 3600 * Second);
    ASSERT_EQ(ImportedAs(), u"copied"_s);
    EXPECT_EQ(ImportedAs(), u"unchanged"_s);
    SaveUnnoticed(u"work/a.txt"_s, "other content");
    EXPECT_EQ(ImportedAs(), u"updated"_s);
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), "other content");
}

TEST_F(Changes, WithAnOldTimeAndTheSameSizeTheChecksumTells)
{
    SetTime(u"work/a.txt"_s, Now() - 3600 * Second);
    ASSERT_EQ(ImportedAs(), u"copied"_s);
    EXPECT_EQ(ImportedAs({u"--checksum"_s}), u"unchanged"_s);
    SaveUnnoticed(u"work/a.txt"_s, "other content");
    EXPECT_EQ(ImportedAs({u"--checksum"_s}), u"updated"_s);
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), "other content");
}

TEST_F(Changes, TheChecksumTellsAlsoAfterAMoveThatKeptItsSource)
{
    tree.File(u"work/top.tlk"_s, "link 1 gone.tlk\n");
    SetTime(u"work/top.tlk"_s, Now() - 3600 * Second);
    for (const QStringList& options : {QStringList(), QStringList{u"--move"_s}})
        ASSERT_NE(Report(QStringList{u"top.tlk"_s} + options).exitCode, 6);
    ASSERT_TRUE(tree.Exists(u"work/top.tlk"_s));
    Save(u"work/top.tlk"_s, "link 1 gone.tlk\nmore\n");
    const ImportReport report = Report({u"top.tlk"_s, u"--checksum"_s});
    EXPECT_EQ(report.StatusOf(u"work/top.tlk"_s), u"updated"_s) << ::testing::PrintToString(report);
}

TEST_F(Changes, TheChecksumTellsOfACopyToo)
{
    ASSERT_EQ(ImportedAs(), u"copied"_s);
    SaveUnnoticed(u"cloud/a.txt"_s, "other content");
    EXPECT_EQ(ImportedAs({u"--checksum"_s}), u"left"_s);
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), "other content");
}

TEST_F(Changes, ANewTimeAloneIsNoReasonToReplaceACopy)
{
    ASSERT_EQ(ImportedAs(), u"copied"_s);
    const FileStamp before = Stamp(u"cloud/a.txt"_s);
    SetTime(u"work/a.txt"_s, Now() + 5 * Second);
    const ImportReport report = Report({u"a.txt"_s});
    EXPECT_EQ(report.exitCode, 0);
    EXPECT_EQ(Stamp(u"cloud/a.txt"_s).content, before.content);
    EXPECT_EQ(ImportedAs(), u"unchanged"_s);
}

TEST_F(Changes, ACopyThatWasCutToNothingIsNoticed)
{
    ASSERT_EQ(ImportedAs(), u"copied"_s);
    SaveUnnoticed(u"cloud/a.txt"_s, "");
    EXPECT_EQ(ImportedAs(), u"left"_s);
    tree.File(u"work/a.txt"_s, "second content, longer");
    const ImportReport report = Report({u"a.txt"_s});
    EXPECT_EQ(report.exitCode, 6) << ::testing::PrintToString(report);
    EXPECT_EQ(Report({u"a.txt"_s, u"--on-conflict"_s, u"replace"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), "second content, longer");
}

TEST_F(Changes, AnEmptyFileIsAFileLikeAnyOther)
{
    tree.File(u"work/a.txt"_s, "");
    ASSERT_EQ(ImportedAs(), u"copied"_s);
    EXPECT_EQ(ImportedAs(), u"unchanged"_s);
    Save(u"work/a.txt"_s, "no more empty");
    EXPECT_EQ(ImportedAs(), u"updated"_s);
    Save(u"work/a.txt"_s, "");
    EXPECT_EQ(ImportedAs(), u"updated"_s);
    EXPECT_EQ(Stamp(u"cloud/a.txt"_s).kind, "file");
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), "");
    EXPECT_TRUE(BaseStoreHolds("no more empty"));
}

TEST_F(Changes, ForceCopiesWhatIsUnchanged)
{
    ASSERT_EQ(ImportedAs(), u"copied"_s);
    const FileStamp before = Stamp(u"cloud/a.txt"_s);
    const ImportReport report = Report({u"a.txt"_s, u"--force"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_NE(report.StatusOf(u"work/a.txt"_s), u"unchanged"_s);
    EXPECT_NE(Stamp(u"cloud/a.txt"_s).index, before.index);
    EXPECT_EQ(Stamp(u"cloud/a.txt"_s).content, before.content);
}

TEST_F(Changes, ForceDoesNotReplaceACopyThatItsOwnerEdited)
{
    ASSERT_EQ(ImportedAs(), u"copied"_s);
    Save(u"cloud/a.txt"_s, "mine");
    const ImportReport report = Report({u"a.txt"_s, u"--force"_s});
    EXPECT_TRUE(tree.Read(u"cloud/a.txt"_s) == "mine" || BaseStoreHolds("mine"))
        << ::testing::PrintToString(report);
}

TEST_F(Changes, RereadReadsTheLinksOfUnchangedFilesAgain)
{
    tree.File(u"work/top.tlk"_s, "link 1 a.txt\n");
    ASSERT_EQ(Report({u"top.tlk"_s}).exitCode, 0);
    const PluginCallLog calls;
    EXPECT_EQ(Report({u"top.tlk"_s}).exitCode, 0);
    EXPECT_EQ(calls.Calls(), QStringList());
    const auto before = Stamps(u"cloud"_s);
    EXPECT_EQ(Report({u"top.tlk"_s, u"--reread"_s}).exitCode, 0);
    EXPECT_FALSE(calls.Calls().filter(u"GetFileLinks"_s).isEmpty());
    EXPECT_EQ(Stamps(u"cloud"_s), before);
}

TEST_F(Changes, LinksThatChangedWhenNobodyAskedForThemAreReadLater)
{
    tree.File(u"work/top.tlk"_s, "link 1 lib/mid.tlk\n")
        .File(u"work/lib/mid.tlk"_s, "link 1 a.txt\n")
        .File(u"work/lib/a.txt"_s, "a")
        .File(u"work/lib/b.txt"_s, "b");
    ASSERT_EQ(Report({u"top.tlk"_s}).exitCode, 0);
    Save(u"work/lib/mid.tlk"_s, "link 1 b.txt\n");
    ASSERT_EQ(Report({u"top.tlk"_s, u"--direct-links-only"_s}).StatusOf(u"work/lib/mid.tlk"_s),
              u"updated"_s);
    const ImportReport report = Report({u"top.tlk"_s});
    EXPECT_EQ(report.StatusOf(u"work/lib/b.txt"_s), u"copied"_s);
    EXPECT_EQ(report.StatusOf(u"work/lib/a.txt"_s), u"orphaned"_s);
}

TEST_F(Changes, ACopyThatWasMadeWithoutAskingForItsLinksGetsThemLater)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 mid.tlk\n")
        .File(u"work/proj/mid.tlk"_s, "link 1 ../lib/a.txt\n")
        .File(u"work/lib/a.txt"_s, "a");
    const QStringList options{u"proj/top.tlk"_s, u"--force"_s, u"--direct-links-only"_s};
    ASSERT_EQ(Report({u"proj/top.tlk"_s}).exitCode, 0);
    const QByteArray copy = tree.Read(u"cloud/mid.tlk"_s);
    ASSERT_NE(copy, "link 1 ../lib/a.txt\n");
    ASSERT_EQ(Report(options).StatusOf(u"work/proj/mid.tlk"_s), u"updated"_s);
    EXPECT_EQ(Report({u"proj/top.tlk"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/mid.tlk"_s), copy);
}

TEST_F(Changes, ASourceThatIsWrittenToWhileItIsCopiedFailsOrIsWhole)
{
    // Every block holds the number of the writer's round: a copy of two rounds is torn.
    constexpr qsizetype BlockSize = 64 * 1024;
    constexpr int Blocks = 400;
    const auto block = [](int round) { return QByteArray(BlockSize, char('a' + round % 26)); };
    tree.File(u"work/big.bin"_s, block(0).repeated(Blocks));
    std::atomic<bool> ends = false;
    std::thread writer([&] {
        QFile file(tree.Path(u"work/big.bin"_s));
        if (!file.open(QFile::ReadWrite | QFile::Unbuffered))
            return;
        for (int round = 1; !ends; ++round)
            for (int at = 0; at < Blocks && !ends; ++at) {
                file.seek(at * BlockSize);
                file.write(block(round));
            }
    });
    for (int round = 0; round < 3; ++round) {
        const ImportReport report = Report({u"big.bin"_s, u"--to"_s, u"T%1"_s.arg(round)});
        const FileStamp copy = Stamp(u"cloud/T%1/big.bin"_s.arg(round));
        if (report.exitCode == 0) {
            EXPECT_EQ(copy.content.count(copy.content.at(0)), copy.content.size());
        } else {
            EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
            EXPECT_EQ(report.StatusOf(u"work/big.bin"_s), u"failed"_s);
            EXPECT_EQ(copy.kind, "none");
        }
    }
    ends = true;
    writer.join();
    EXPECT_EQ(Leftovers(), QStringList());
    EXPECT_EQ(Report({u"big.bin"_s}).exitCode, 0);
    EXPECT_TRUE(tree.Read(u"cloud/big.bin"_s) == tree.Read(u"work/big.bin"_s));
}

} // namespace Halvern::Test
