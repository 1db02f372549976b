// SPDX-License-Identifier: Apache-2.0

// Two imports into one cloud folder at the same time.

#include "ProcessStart.h"
#include "ScenarioFixture.h"

#include "corsync/ImportJob.h"

#include <algorithm>
#include <functional>
#include <optional>

namespace Halvern::Test {

using namespace Jobs;

namespace {

/// work/proj/top.tlk links ../lib/part.tlk, beside other files. One import runs in this process,
/// the other one is the command.
class TwoAtOnce : public ScenarioFixture
{
protected:
    TwoAtOnce()
    {
        tree.File(u"work/proj/top.tlk"_s, "link 1 ../lib/part.tlk\n")
            .File(u"work/lib/part.tlk"_s, "part\n")
            .File(u"work/proj/a.txt"_s, "a")
            .File(u"work/proj/b.txt"_s, "b");
        request.sources = {tree.Path(u"work/proj"_s)};
    }
    ImportReport Other(const QStringList& options = {}) const
    {
        return Report(QStringList{u"proj"_s} + options);
    }
    /// Executes a plan that was made before something else happened.
    JobResult Execute(const std::function<void()>& meanwhile)
    {
        SyncServices::ServicesSettings settings;
        settings.cloudCacheFolder = tree.Path(u"cloud"_s);
        settings.databaseFile = tree.Path(u"sync.db"_s);
        const Session session(settings, {tree.Path(u"plugins"_s), TestPluginFolder()});
        ImportJob job(session, request);
        EXPECT_TRUE(job.MakePlan().conflicts.isEmpty());
        meanwhile();
        return job.Execute();
    }
    static bool AreAll(const JobResult& result, Outcome outcome)
    {
        return std::all_of(result.files.begin(), result.files.end(), [&](const FileResult& file) {
            return file.outcome == outcome && !file.IsProblem();
        });
    }
    /// Nothing is left to do, or to say.
    void ExpectSettled()
    {
        const auto before = Stamps(u"cloud"_s);
        const ImportReport report = Other();
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        EXPECT_EQ(report.Statuses(), QStringList(4, u"unchanged"_s));
        EXPECT_EQ(Stamps(u"cloud"_s), before);
        EXPECT_EQ(tree.Read(u"cloud/proj/top.tlk"_s), "link 1 lib/part.tlk\n");
        EXPECT_EQ(Leftovers(), QStringList());
    }

    ImportRequest request;
};

} // namespace

TEST_F(TwoAtOnce, WhatTheOtherOneHasBroughtSinceThePlanWasMadeIsUnchanged)
{
    QMap<QString, FileStamp> brought;
    const JobResult result = Execute([&] {
        ASSERT_EQ(Other().exitCode, 0);
        brought = Stamps(u"cloud"_s);
    });
    EXPECT_EQ(result.files.size(), 4);
    EXPECT_TRUE(AreAll(result, Outcome::Unchanged));
    EXPECT_EQ(Stamps(u"cloud"_s), brought);
    ExpectSettled();
}

TEST_F(TwoAtOnce, WhatTheOtherOneHasUpdatedSinceThePlanWasMadeIsUnchanged)
{
    ASSERT_EQ(Other().exitCode, 0);
    Save(u"work/proj/a.txt"_s, "a second");
    Save(u"work/proj/top.tlk"_s, "link 1 ../lib/part.tlk\nmore\n");
    QMap<QString, FileStamp> updated;
    const JobResult result = Execute([&] {
        const ImportReport report = Other();
        ASSERT_EQ(report.exitCode, 0);
        EXPECT_EQ(report.Statuses().count(u"updated"_s), 2);
        updated = Stamps(u"cloud"_s);
    });
    EXPECT_TRUE(AreAll(result, Outcome::Unchanged));
    EXPECT_EQ(Stamps(u"cloud"_s), updated);
    EXPECT_EQ(Other().Statuses(), QStringList(4, u"unchanged"_s));
}

TEST_F(TwoAtOnce, OtherContentAtTheTargetIsStillAFailureOfThatFileAlone)
{
    const JobResult result = Execute([&] {
        ASSERT_EQ(Other().exitCode, 0);
        Save(u"cloud/proj/b.txt"_s, "x");
    });
    for (const FileResult& file : result.files)
        EXPECT_EQ(file.outcome,
                  file.source.endsWith(u"b.txt"_s) ? Outcome::Failed : Outcome::Unchanged);
    EXPECT_EQ(tree.Read(u"cloud/proj/b.txt"_s), "x");
}

TEST_F(TwoAtOnce, AnUntouchedCopyOfTheSourceIsNotTakenForOneWithItsLinksRewritten)
{
    const JobResult result =
        Execute([&] { tree.File(u"cloud/proj/top.tlk"_s, tree.Read(u"work/proj/top.tlk"_s)); });
    const auto top =
        std::find_if(result.files.begin(), result.files.end(),
                     [](const FileResult& file) { return file.source.endsWith(u"top.tlk"_s); });
    ASSERT_NE(top, result.files.end());
    EXPECT_EQ(top->outcome, Outcome::Failed);
    EXPECT_EQ(top->remark, Jobs::Remark::TargetChanged);
}

TEST_F(TwoAtOnce, ProcessesThatRaceForEveryFileAreBothComplete)
{
    for (int i = 0; i < 60; ++i)
        tree.File(u"work/proj/many/%1.tlk"_s.arg(i),
                  "link 1 ../../lib/part.tlk\n" + PatternBytes(20000).toBase64());
    for (int round = 0; round < 4; ++round) {
        const QStringList arguments =
            ImportArguments({u"proj"_s, u"--to"_s, QString::number(round)});
        QProcess first, second;
        Prepare(first, arguments);
        Prepare(second, arguments);
        StartProcess(first);
        StartProcess(second);
        for (QProcess* process : {&first, &second}) {
            const CommandResult result = Finish(*process);
            EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
        }
        const ImportReport again = Report({u"proj"_s, u"--to"_s, QString::number(round)});
        EXPECT_EQ(again.exitCode, 0) << ::testing::PrintToString(again);
        EXPECT_EQ(again.Statuses(), QStringList(64, u"unchanged"_s));
    }
}

TEST_F(TwoAtOnce, ProcessesThatMoveTheSameFilesLoseNoneAndCallNoneAnOrphan)
{
    for (int i = 0; i < 40; ++i)
        tree.File(u"work/proj/many/%1.tlk"_s.arg(i), "link 1 ../top.tlk\n");
    const QStringList arguments = ImportArguments({u"proj"_s, u"--move"_s});
    QProcess first, second;
    Prepare(first, arguments);
    Prepare(second, arguments);
    StartProcess(first);
    StartProcess(second);
    Finish(first);
    Finish(second);
    const ImportReport again = Report({u"proj"_s, u"--move"_s, u"--prune"_s});
    EXPECT_EQ(again.exitCode, 0) << ::testing::PrintToString(again);
    EXPECT_FALSE(again.Statuses().contains(u"pruned"_s)) << ::testing::PrintToString(again);
    EXPECT_FALSE(tree.Exists(u"work/proj"_s));
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(tree.Read(u"cloud/proj/many/%1.tlk"_s.arg(i)), "link 1 ../top.tlk\n");
}

TEST_F(TwoAtOnce, NoLineOfAMoveSaysOfASourceThatIsGoneThatItStays)
{
    tree.File(u"work/proj/c.tlk"_s, "link 1 a.txt\n");
    ASSERT_EQ(Other().exitCode, 0);
    Save(u"work/proj/a.txt"_s, "a second");
    request.move = true;
    const JobResult result = Execute([&] { ASSERT_EQ(Other({u"--move"_s}).exitCode, 0); });
    for (const FileResult& file : result.files) {
        EXPECT_EQ(file.sourceStays, SourceStays::No) << file.source.toStdString();
        const bool isUpdated = file.source.endsWith(u"a.txt"_s);
        EXPECT_EQ(file.outcome, isUpdated ? Outcome::Failed : Outcome::Unchanged);
        if (isUpdated) {
            EXPECT_EQ(file.remark, Jobs::Remark::Vanished);
        }
    }
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "a second");
}

} // namespace Halvern::Test
