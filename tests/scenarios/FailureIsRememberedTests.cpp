// SPDX-License-Identifier: Apache-2.0

// What went wrong is said again by every run, and tried again, until it has worked.

#include "FileLock.h"
#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

/// work/proj/top.tlk links ../lib/part.tlk.
class RememberedFailures : public ScenarioFixture
{
protected:
    RememberedFailures()
    {
        tree.File(u"work/proj/top.tlk"_s, "link 1 ../lib/part.tlk\n")
            .File(u"work/lib/part.tlk"_s, "part\n");
    }
    ImportReport Bring() const { return Report(m_arguments); }
    QByteArray Top() const { return tree.Read(u"cloud/Demo/top.tlk"_s); }
    /// The next import with --on-conflict rename gives the part another place.
    void EditPartOnBothSides()
    {
        Save(u"work/lib/part.tlk"_s, "second part\n");
        Save(u"cloud/Demo/lib/part.tlk"_s, "mine\n");
    }
    void ExpectComplete()
    {
        EXPECT_EQ(Top(), Relinked);
        EXPECT_EQ(tree.Read(u"cloud/Demo/lib/part.tlk"_s), "part\n");
        const auto before = Stamps(u"cloud"_s);
        EXPECT_EQ(Bring().exitCode, 0);
        EXPECT_EQ(Stamps(u"cloud"_s), before);
    }

    static constexpr char Relinked[] = "link 1 lib/part.tlk\n";

private:
    const QStringList m_arguments{u"proj/top.tlk"_s, u"--to"_s, u"Demo"_s};
};

} // namespace

TEST_F(RememberedFailures, LinksAreReadOnceThePluginForThemIsInstalled)
{
    const QByteArray registration = tree.Read(u"plugins/test_resolver.syncplugin"_s);
    tree.Remove(u"plugins/test_resolver.syncplugin"_s);
    const ImportReport without = Bring();
    EXPECT_EQ(without.Statuses(), QStringList{u"copied"_s}) << ::testing::PrintToString(without);
    tree.File(u"plugins/test_resolver.syncplugin"_s, registration);
    const ImportReport with = Bring();
    EXPECT_EQ(with.exitCode, 0) << ::testing::PrintToString(with);
    ExpectComplete();
}

TEST_F(RememberedFailures, LinksAreReadOnceThePluginLoads)
{
    const QByteArray registration = tree.Read(u"plugins/test_resolver.syncplugin"_s);
    tree.File(u"plugins/test_resolver.syncplugin"_s,
              Registration(u"NoSuchLibrary.so"_s, u"FileLinkResolver"_s, u"tlk"_s));
    for (int run = 0; run < 3; ++run)
        EXPECT_EQ(Bring().exitCode, 7) << "run " << run;
    tree.File(u"plugins/test_resolver.syncplugin"_s, registration);
    const ImportReport with = Bring();
    EXPECT_EQ(with.exitCode, 0) << ::testing::PrintToString(with);
    ExpectComplete();
}

TEST_F(RememberedFailures, LinksThatAPluginFailedToReadAreReadAgain)
{
    for (const char* fault : {"fail", "throw"}) {
        const PluginOrders orders(fault);
        for (int run = 0; run < 3; ++run) {
            const ImportReport report = Bring();
            EXPECT_EQ(report.exitCode, 7) << "run " << run << ::testing::PrintToString(report);
            EXPECT_FALSE(report.Of(u"work/proj/top.tlk"_s).reason.isEmpty());
        }
    }
    const ImportReport report = Bring();
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    ExpectComplete();
}

TEST_F(RememberedFailures, LinksThatWereReadEarlierAreKnownWhileThePluginFails)
{
    ASSERT_EQ(Bring().exitCode, 0);
    Save(u"work/proj/top.tlk"_s, "link 1 ../lib/part.tlk\nmore\n");
    {
        const PluginOrders orders("fail");
        EXPECT_EQ(Bring().exitCode, 7);
        EXPECT_EQ(Bring().exitCode, 7);
    }
    EXPECT_EQ(Bring().exitCode, 0);
    EXPECT_EQ(Top(), "link 1 lib/part.tlk\nmore\n");
}

TEST_F(RememberedFailures, ARewriteThatFailedIsTriedByEveryImport)
{
    for (const char* fault : {"norepath", "throwrepath", "lies", "misses"}) {
        const PluginOrders orders(fault);
        for (int run = 0; run < 2; ++run) {
            const ImportReport report = Bring();
            EXPECT_NE(report.exitCode, 0)
                << fault << ", run " << run << ::testing::PrintToString(report);
            EXPECT_FALSE(report.Of(u"work/proj/top.tlk"_s).reason.isEmpty());
        }
    }
    const ImportReport report = Bring();
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    ExpectComplete();
}

TEST_F(RememberedFailures, ARewriteThatChangedSomethingElseIsNeverTakenForDone)
{
    const PluginOrders orders("misses");
    Bring();
    EXPECT_NE(Stamp(u"cloud/Demo/top.tlk"_s).content, "link 1 elsewhere.tlk\n");
}

TEST_F(RememberedFailures, ARewriteThatFailedInPlaceIsTriedAgain)
{
    const QStringList arguments{u"proj/top.tlk"_s, u"--to"_s, u"Demo"_s, u"--on-conflict"_s,
                                u"rename"_s};
    ASSERT_EQ(Report(arguments).exitCode, 0);
    EditPartOnBothSides();
    {
        const PluginOrders orders("norepath");
        EXPECT_EQ(Report(arguments).exitCode, 7);
        EXPECT_EQ(Report(arguments).exitCode, 7);
        EXPECT_EQ(Top(), Relinked);
    }
    const ImportReport report = Report(arguments);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(Top(), "link 1 lib/part (2).tlk\n");
}

TEST_F(RememberedFailures, RetryRewritesWithoutTheSources)
{
    {
        const PluginOrders orders("norepath");
        ASSERT_EQ(Bring().exitCode, 7);
        EXPECT_NE(Corsync(u"retry"_s).exitCode, 0) << "still so";
    }
    tree.Remove(u"work"_s).Folder(u"work"_s);
    const CommandResult result = Corsync(u"retry"_s);
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(Top(), Relinked);
    EXPECT_EQ(Corsync(u"retry"_s).exitCode, 0);
}

TEST_F(RememberedFailures, RetryOfAFolderLeavesOtherFoldersAlone)
{
    {
        const PluginOrders orders("norepath");
        ASSERT_EQ(Bring().exitCode, 7);
        ASSERT_EQ(
            Report({u"proj/top.tlk"_s, u"--to"_s, u"Other"_s, u"--self-contained"_s}).exitCode, 7);
    }
    EXPECT_EQ(Corsync(u"retry"_s, {tree.Path(u"cloud/Demo"_s)}).exitCode, 0);
    EXPECT_EQ(Top(), Relinked);
    EXPECT_NE(tree.Read(u"cloud/Other/top.tlk"_s), Relinked);
    EXPECT_EQ(Corsync(u"retry"_s).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/Other/top.tlk"_s), Relinked);
}

TEST_F(RememberedFailures, RetryWithNothingToDoIsComplete)
{
    EXPECT_EQ(Corsync(u"retry"_s).exitCode, 0);
    ASSERT_EQ(Bring().exitCode, 0);
    const auto before = Stamps(u"cloud"_s);
    EXPECT_EQ(Corsync(u"retry"_s).exitCode, 0);
    EXPECT_EQ(Stamps(u"cloud"_s), before);
}

TEST_F(RememberedFailures, ALockedCopyIsSaidToBePendingByEveryRunAndRelinkedAfterwards)
{
    const QStringList arguments{u"proj/top.tlk"_s, u"--to"_s, u"Demo"_s, u"--on-conflict"_s,
                                u"rename"_s};
    ASSERT_EQ(Report(arguments).exitCode, 0);
    EditPartOnBothSides();
    {
        const FileLock lock(tree.Path(u"cloud/Demo/top.tlk"_s));
        for (int run = 0; run < 2; ++run) {
            const ImportReport report = Report(arguments);
            EXPECT_EQ(report.exitCode, 5) << ::testing::PrintToString(report);
            EXPECT_EQ(report.StatusOf(u"work/proj/top.tlk"_s), u"locked"_s);
        }
        EXPECT_EQ(Corsync(u"retry"_s).exitCode, 5);
        EXPECT_EQ(Top(), Relinked);
    }
    EXPECT_EQ(Corsync(u"retry"_s).exitCode, 0);
    EXPECT_EQ(Top(), "link 1 lib/part (2).tlk\n");
    EXPECT_EQ(Report(arguments).exitCode, 0);
}

TEST_F(RememberedFailures, ALockedCopyIsNotUpdatedUnderTheProgramThatHasIt)
{
    ASSERT_EQ(Bring().exitCode, 0);
    Save(u"work/proj/top.tlk"_s, "link 1 ../lib/part.tlk\nmore\n");
    {
        const FileLock lock(tree.Path(u"cloud/Demo/top.tlk"_s));
        EXPECT_NE(Bring().exitCode, 0);
        EXPECT_EQ(Top(), Relinked);
    }
    EXPECT_EQ(Bring().exitCode, 0);
    EXPECT_EQ(Top(), "link 1 lib/part.tlk\nmore\n");
}

// A kill between the rewriting and its recording leaves that.
TEST_F(RememberedFailures, ARewriteThatWasNotRecordedIsNoChangeOfTheCopy)
{
    const QStringList files{u"sync.db"_s, u"sync.db-wal"_s, u"sync.db-shm"_s};
    tree.Remove(u"work/lib/part.tlk"_s);
    ASSERT_EQ(Bring().exitCode, 4);
    tree.File(u"work/lib/part.tlk"_s, "part\n");
    {
        const PluginOrders orders("norepath");
        ASSERT_EQ(Bring().exitCode, 7);
    }
    QMap<QString, QByteArray> database;
    for (const QString& name : files)
        if (tree.Exists(name))
            database.insert(name, tree.Read(name));
    ASSERT_EQ(Corsync(u"retry"_s).exitCode, 0);
    ASSERT_EQ(Top(), Relinked);
    for (const QString& name : files)
        if (tree.Exists(name))
            tree.Remove(name);
    for (auto file = database.cbegin(); file != database.cend(); ++file)
        tree.File(file.key(), file.value());
    for (int run = 0; run < 2; ++run) {
        const ImportReport report = Bring();
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        EXPECT_EQ(report.Statuses(), QStringList(2, u"unchanged"_s))
            << ::testing::PrintToString(report);
    }
    EXPECT_EQ(Top(), Relinked);
}

TEST_F(RememberedFailures, ADatabaseThatWasLostIsNoReasonToCopyOrAsk)
{
    ASSERT_EQ(Bring().exitCode, 0);
    const auto before = Stamps(u"cloud"_s);
    for (const QString& name : {u"sync.db"_s, u"sync.db-wal"_s, u"sync.db-shm"_s})
        if (tree.Exists(name))
            tree.Remove(name);
    const ImportReport report = Bring();
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.Statuses(), QStringList(2, u"unchanged"_s));
    EXPECT_EQ(Stamps(u"cloud"_s), before);
}

} // namespace Halvern::Test
