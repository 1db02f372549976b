// SPDX-License-Identifier: Apache-2.0

#include "WatchedPolls.h"

#include <QtCore/QRegularExpression>

#include <algorithm>

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;
using Importer = FileLink::FileLinkImporterImp;
using Option = SyncServices::Global::CopyOption;

const QString importerCanceled = u"INFO Operation canceled"_s;
const QString extractorCanceled = u"INFO File link operation canceled"_s;

/// What a job looked like at each of its polls when nobody stopped it.
struct Recording
{
    QList<QStringList> states;
    QList<QStringList> logs;
    QStringList wholeLog;

    int Polls() const { return int(states.size()); }
};

struct Stage
{
    std::string name;
    /// How many stages of the list below run before.
    int position;
    QString closing;
    /// Once before each source, folder entry, file, link and tree node, and once after what may
    /// take long.
    int polls;
    Option options = SyncServices::Global::NoCopyOption;
};

void PrintTo(const Stage& stage, std::ostream* out)
{
    *out << stage.name;
}

class CancelStates : public WatchedJobs, public ::testing::WithParamInterface<Stage>
{
protected:
    bool Run(Importer& importer, int position, const Job& job, Option options)
    {
        switch (position) {
        case 0:
            return importer.Initialize(job.sources, job.target, true, options, {});
        case 1:
            return importer.ExtractFileLinks();
        case 2:
            return importer.AssignTargetPaths();
        case 3:
            return importer.MarkCollisions();
        case 4:
            return importer.ResolveCollisions();
        case 5:
            return importer.CopyFiles();
        case 6:
            return importer.ComputeTargetFileLinks();
        case 7:
            return importer.RepathFiles();
        default:
            return importer.UpdateSyncDatabase();
        }
    }
    void RunBefore(Importer& importer, const Job& job)
    {
        for (int i = 0; i < GetParam().position; ++i)
            ASSERT_TRUE(Run(importer, i, job, GetParam().options)) << i;
    }

    /// Records one job that runs through; plug-ins are loaded before.
    void Record(const Job& job, Recording& recording)
    {
        const auto controller = std::make_shared<WatchedPolls>();
        Importer importer(controller);
        RunBefore(importer, job);
        const LogCapture log(log4cplus::INFO_LOG_LEVEL);
        controller->Reset();
        calls.Clear();
        controller->watch = [&](int) {
            recording.states.append(State(importer, job));
            recording.logs.append(Neutral(log.Lines(), job));
        };
        EXPECT_TRUE(Run(importer, GetParam().position, job, GetParam().options));
        recording.wholeLog = Neutral(log.Lines(), job);
    }

    /// The lines of a stage that was stopped after `before`.
    QStringList LogOf(const QStringList& before, int cancels) const
    {
        const QString line = GetParam().position == 1 ? extractorCanceled : importerCanceled;
        QStringList expected = before + QStringList(cancels, line);
        if (!GetParam().closing.isEmpty())
            expected.append(u"INFO "_s + GetParam().closing);
        return expected;
    }
};

TEST_P(CancelStates, AStageStoppedAtAnyPollLeavesWhatWasThereAtThatPoll)
{
    Recording recording;
    Record(MakeJob(u"warm"_s), recording);
    recording = {};
    Record(MakeJob(u"whole"_s), recording);
    ASSERT_EQ(recording.Polls(), GetParam().polls);
    for (int poll = 1; poll <= recording.Polls() && !HasFailure(); ++poll) {
        SCOPED_TRACE(poll);
        const Job job = MakeJob(u"job%1"_s.arg(poll));
        const auto controller = std::make_shared<WatchedPolls>();
        Importer importer(controller);
        RunBefore(importer, job);
        const auto set = importer.GetFileSet();
        const LogCapture log(log4cplus::INFO_LOG_LEVEL);
        controller->Reset();
        controller->cancelAt = poll;
        calls.Clear();
        const bool result = Run(importer, GetParam().position, job, GetParam().options);
        const QStringList& before = recording.logs[poll - 1];
        // Copying is through when it has summed up, whatever becomes of the links.
        EXPECT_EQ(result, !before.filter(u"Copied:"_s).isEmpty());
        EXPECT_EQ(Neutral(log.Lines(), job), LogOf(before, controller->cancels));
        EXPECT_EQ(State(importer, job), recording.states[poll - 1]);
        EXPECT_EQ(importer.GetFileSet(), set);
    }
}

INSTANTIATE_TEST_SUITE_P(
    EveryStage, CancelStates,
    ::testing::Values(
        // 2 sources to filter, 2 to expand with 1 entry, 3 mappings to make.
        Stage{"Initialize", 0, QString(), 8},
        // 6 files to look at, 5 of them read (once before, once after) with 3 links to take over
        // and 3 to follow, 6 to add.
        Stage{"ExtractFileLinks", 1, u"Finished extracting file links"_s, 28},
        // 2 selected files for the plug-ins, 3 links to lay out.
        Stage{"AssignTargetPaths", 2, u"Finished assigning target paths"_s, 5},
        // 6 files, 1 of them looked up in the history.
        Stage{"MarkCollisions", 3, u"Finished marking file conflicts"_s, 7},
        // 6 files, twice.
        Stage{"ResolveCollisions", 4, u"Finished resolving file conflicts"_s, 12,
              SyncServices::Global::RenameLinkedFiles},
        // 6 files to copy, 6 whose links are computed with 3 links.
        Stage{"CopyFiles", 5, u"Finished copying files"_s, 15},
        // The same and 1 folder to remove.
        Stage{"CopyFilesMoving", 5, u"Finished copying files"_s, 16,
              SyncServices::Global::MoveFiles},
        Stage{"ComputeTargetFileLinks", 6, QString(), 9},
        // 6 files to mark, 6 to look at, 5 of them asked about once more after they are rewritten.
        Stage{"RepathFiles", 7, u"Finished repathing file links in target"_s, 17},
        // 2 selected files, 3 links to follow.
        Stage{"UpdateSyncDatabase", 8, u"Finished updating sync database"_s, 5},
        // The second time every item is there, with 3 links that are merged with 3.
        Stage{"UpdateSyncDatabaseAgain", 9, u"Finished updating sync database"_s, 11}),
    [](const auto& row) { return row.param.name; });

class CancelOneCall : public WatchedJobs, public ::testing::WithParamInterface<bool>
{
protected:
    Option Options() const
    {
        return GetParam() ? SyncServices::Global::MoveFiles : SyncServices::Global::NoCopyOption;
    }

    /// The one-call import marks colliding files after a stopped stage, too.
    static QStringList WithoutRenaming(QStringList state)
    {
        for (QString& line : state)
            line.remove(u", RenameOnCollision"_s);
        return state;
    }

    /// Stages that still run after a cancel stop at their first poll.
    static QStringList LogOf(const QStringList& before, int cancels, const QStringList& whole)
    {
        const QStringList stages =
            whole.filter(QRegularExpression(u"^INFO (Begin|Finished) .*[a-z]$"_s));
        const qsizetype begun = before.filter(u"INFO Begin "_s).size();
        QStringList expected = before;
        if (begun == 0)
            return expected + QStringList(cancels, importerCanceled);
        if (begun == 1)
            return expected + QStringList(cancels, extractorCanceled) + QStringList{stages[1]};
        const qsizetype later = 7 - begun;
        expected += QStringList(cancels - later, importerCanceled);
        expected += stages[2 * begun - 1];
        for (qsizetype i = begun; i < 7; ++i)
            expected += QStringList{stages[2 * i], importerCanceled, stages[2 * i + 1]};
        return expected;
    }
};

TEST_P(CancelOneCall, AtAnyPollLeavesWhatWasThereAndEndsEveryStageThatFollows)
{
    const auto run = [&](const std::shared_ptr<WatchedPolls>& controller, const Job& job,
                         const std::function<void(Importer&, bool, const QStringList&)>& check) {
        const LogCapture log(log4cplus::INFO_LOG_LEVEL);
        Importer importer(controller);
        const bool result = importer.CopyToCloudCacheFolder(job.sources, job.target, Options(), {});
        check(importer, result, Neutral(log.Lines(), job));
    };
    const auto nothing = [](Importer&, bool result, const QStringList&) { EXPECT_TRUE(result); };
    run(std::make_shared<WatchedPolls>(), MakeJob(u"warm"_s), nothing);

    Recording whole;
    {
        const Job job = MakeJob(u"whole"_s);
        const auto controller = std::make_shared<WatchedPolls>();
        const LogCapture log(log4cplus::INFO_LOG_LEVEL);
        Importer importer(controller);
        controller->watch = [&](int) {
            whole.states.append(WithoutRenaming(State(importer, job)));
            whole.logs.append(Neutral(log.Lines(), job));
        };
        ASSERT_TRUE(importer.CopyToCloudCacheFolder(job.sources, job.target, Options(), {}));
        whole.wholeLog = Neutral(log.Lines(), job);
    }
    // The stages' own polls, and 1 more for the folder that a move removes.
    ASSERT_EQ(whole.Polls(), 8 + 28 + 5 + 7 + 12 + 15 + 17 + 5 + GetParam());
    for (int poll = 1; poll <= whole.Polls() && !HasFailure(); ++poll) {
        SCOPED_TRACE(poll);
        const Job job = MakeJob(u"job%1"_s.arg(poll));
        const auto controller = std::make_shared<WatchedPolls>();
        controller->cancelAt = poll;
        run(controller, job, [&](Importer& importer, bool result, const QStringList& lines) {
            const QStringList& before = whole.logs[poll - 1];
            EXPECT_EQ(result, !before.filter(u"Copied:"_s).isEmpty());
            EXPECT_EQ(lines, LogOf(before, controller->cancels, whole.wholeLog));
            EXPECT_EQ(WithoutRenaming(State(importer, job)), whole.states[poll - 1]);
        });
    }
}

INSTANTIATE_TEST_SUITE_P(CopyingAndMoving, CancelOneCall, ::testing::Bool(),
                         [](const auto& row) { return row.param ? "Moving" : "Copying"; });

} // namespace Halvern::Test
