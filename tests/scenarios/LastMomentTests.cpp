// SPDX-License-Identifier: Apache-2.0

// What changes between a plan and its execution, or while it is executed.

#include "FileStamp.h"
#include "FileTree.h"
#include "TestPlugins.h"

#include "corsync/ImportJob.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>

#include <functional>
#include <optional>
#include <utility>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

/// Does something when the first file of an execution is done.
class AfterTheFirstFile : public IJobObserver
{
public:
    explicit AfterTheFirstFile(std::function<void()> action) : m_action(std::move(action)) {}
    void FileDone(const FileResult&) override
    {
        if (m_action)
            std::exchange(m_action, nullptr)();
    }

private:
    std::function<void()> m_action;
};

/// Does something when all is copied, and nothing is deleted yet.
class BeforeTheDeletion : public IJobObserver
{
public:
    explicit BeforeTheDeletion(std::function<void()> action) : m_action(std::move(action)) {}
    void PhaseBegun(Phase phase, qint64) override
    {
        if (phase == Phase::Recording)
            m_action();
    }

private:
    std::function<void()> m_action;
};

/// work/proj has a.txt, b.txt and top.tlk, which links b.txt; they go to cloud/proj.
class LastMoment : public ::testing::Test
{
protected:
    LastMoment()
    {
        RegisterTestResolver(tree, u"plugins"_s);
        tree.File(u"work/proj/a.txt"_s, "a")
            .File(u"work/proj/b.txt"_s, "b")
            .File(u"work/proj/top.tlk"_s, "link 1 b.txt\n");
        SyncServices::ServicesSettings settings;
        settings.cloudCacheFolder = tree.Path(u"cloud"_s);
        settings.databaseFile = tree.Path(u"sync.db"_s);
        session.emplace(settings, QStringList{tree.Path(u"plugins"_s), TestPluginFolder()});
        request.sources = {tree.Path(u"work/proj"_s)};
    }
    /// Executes the plan after something happened.
    JobResult Execute(const std::function<void()>& between, IJobObserver* observer = nullptr)
    {
        ImportJob job(*session, request, observer);
        EXPECT_TRUE(job.MakePlan().conflicts.isEmpty());
        between();
        return job.Execute();
    }
    FileResult Of(const JobResult& result, const QString& source) const
    {
        for (const FileResult& file : result.files)
            if (file.source == tree.Path(u"work/proj/"_s + source))
                return file;
        ADD_FAILURE() << source.toStdString() << " is not in the result";
        return {};
    }
    FileStamp Stamp(const QString& file) const { return StampOf(tree.Path(file)); }

    FileTree tree;
    std::optional<Session> session;
    ImportRequest request;
};

} // namespace

TEST_F(LastMoment, AFileThatAppearedAtATargetAfterPlanningIsNoVictim)
{
    for (const CollisionPolicy policy :
         {CollisionPolicy::Stop, CollisionPolicy::Keep, CollisionPolicy::Rename}) {
        if (tree.Exists(u"cloud/proj"_s))
            tree.Remove(u"cloud/proj"_s);
        request.selectedCollisions = request.linkedCollisions = policy;
        FileStamp foreign;
        const JobResult result = Execute([&] {
            tree.File(u"cloud/proj/b.txt"_s, "foreign");
            foreign = Stamp(u"cloud/proj/b.txt"_s);
        });
        EXPECT_EQ(Stamp(u"cloud/proj/b.txt"_s), foreign) << int(policy);
        EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "a");
        const FileResult b = Of(result, u"b.txt"_s);
        EXPECT_TRUE(b.outcome == Outcome::Failed || b.outcome == Outcome::Kept ||
                    b.outcome == Outcome::Renamed)
            << int(b.outcome);
    }
}

TEST_F(LastMoment, AFileThatAppearsWhileOthersAreCopiedIsNoVictim)
{
    FileStamp foreign;
    AfterTheFirstFile observer([&] {
        tree.File(u"cloud/proj/top.tlk"_s, "foreign");
        foreign = Stamp(u"cloud/proj/top.tlk"_s);
    });
    const JobResult result = Execute([] {}, &observer);
    EXPECT_EQ(Stamp(u"cloud/proj/top.tlk"_s), foreign);
    EXPECT_EQ(Of(result, u"top.tlk"_s).outcome, Outcome::Failed);
    EXPECT_EQ(Of(result, u"top.tlk"_s).remark, Remark::TargetChanged);
}

TEST_F(LastMoment, ACopyThatItsOwnerEditsAfterPlanningIsNotReplaced)
{
    Execute([] {});
    tree.File(u"work/proj/a.txt"_s, "a second");
    SetModifiedNanoseconds(tree.Path(u"work/proj/a.txt"_s),
                           ModifiedNanoseconds(tree.Path(u"work/proj/a.txt"_s)) + 2'000'000'000);
    const JobResult result = Execute([&] { tree.File(u"cloud/proj/a.txt"_s, "mine"); });
    EXPECT_EQ(Of(result, u"a.txt"_s).outcome, Outcome::Failed);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "mine");
}

TEST_F(LastMoment, WhatIsReplacedIsWhatStandsThereThenAndGoesToTheBaseStore)
{
    request.selectedCollisions = CollisionPolicy::Replace;
    tree.File(u"cloud/proj/a.txt"_s, "foreign");
    Execute([&] { tree.File(u"cloud/proj/a.txt"_s, "foreign, saved again"); });
    bool isKept = tree.Read(u"cloud/proj/a.txt"_s) == "foreign, saved again";
    if (tree.Exists(u"sync.db.base"_s))
        for (const QByteArray& content : tree.Contents(u"sync.db.base"_s))
            isKept = isKept || content == "foreign, saved again";
    EXPECT_TRUE(isKept);
}

TEST_F(LastMoment, ASourceThatVanishedAfterPlanningHasALineAndIsAFailure)
{
    const JobResult result = Execute([&] { tree.Remove(u"work/proj/b.txt"_s); });
    EXPECT_EQ(Of(result, u"b.txt"_s).outcome, Outcome::Failed);
    EXPECT_TRUE(Of(result, u"b.txt"_s).IsProblem());
    EXPECT_GT(result.summary.filesWithProblems, 0);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "a");
}

TEST_F(LastMoment, ASourceThatWasSavedAfterItsLinksWereReadIsNotDeletedByAMove)
{
    request.move = true;
    Execute([&] { tree.File(u"work/proj/top.tlk"_s, "link 1 b.txt\nlink 2 other.txt\n"); });
    EXPECT_EQ(Stamp(u"work/proj/top.tlk"_s).content, "link 1 b.txt\nlink 2 other.txt\n")
        << "the copy: " << Stamp(u"cloud/proj/top.tlk"_s).content.toStdString();
}

TEST_F(LastMoment, ASourceThatIsSavedWhileOthersAreCopiedIsNotDeletedByAMove)
{
    request.move = true;
    AfterTheFirstFile observer([&] { tree.File(u"work/proj/a.txt"_s, "saved meanwhile"); });
    Execute([] {}, &observer);
    EXPECT_TRUE(Stamp(u"work/proj/a.txt"_s).content == "saved meanwhile" ||
                Stamp(u"cloud/proj/a.txt"_s).content == "saved meanwhile");
}

TEST_F(LastMoment, ASourceThatIsSavedBeforeTheDeletionStaysThoughSizeAndTimeAreTheSame)
{
    request.move = true;
    const QString source = u"work/proj/b.txt"_s;
    const qint64 time = ModifiedNanoseconds(tree.Path(source));
    // Once in its place, once as a new file under its name.
    for (const bool isNew : {false, true}) {
        const QByteArray content = isNew ? "N" : "S";
        BeforeTheDeletion observer([&] {
            if (isNew) {
                tree.File(u"work/new.txt"_s, content).Remove(source);
                ASSERT_TRUE(QFile::rename(tree.Path(u"work/new.txt"_s), tree.Path(source)));
            } else {
                tree.File(source, content);
            }
            SetModifiedNanoseconds(tree.Path(source), time);
        });
        const JobResult result = Execute([] {}, &observer);
        EXPECT_EQ(tree.Read(source), content);
        const FileResult b = Of(result, u"b.txt"_s);
        EXPECT_EQ(b.sourceStays, SourceStays::NotDeleted);
        EXPECT_NE(b.outcome, Outcome::Moved);
        EXPECT_TRUE(b.IsProblem());
        EXPECT_FALSE(b.sourceDeleted);
        // Its copy has what it had, and what links it goes.
        EXPECT_EQ(tree.Exists(u"work/proj/top.tlk"_s), false);
        tree.File(u"work/proj/top.tlk"_s, "link 1 b.txt\n").File(source, "b");
        SetModifiedNanoseconds(tree.Path(source), time);
        tree.Remove(u"cloud/proj"_s);
    }
}

TEST_F(LastMoment, WhatASourceLinksThatIsSavedBeforeTheDeletionStays)
{
    request.move = true;
    BeforeTheDeletion observer([&] { tree.File(u"work/proj/top.tlk"_s, "link 1 b.txt\nmore\n"); });
    const JobResult result = Execute([] {}, &observer);
    EXPECT_EQ(Of(result, u"top.tlk"_s).sourceStays, SourceStays::NotDeleted);
    EXPECT_EQ(Of(result, u"b.txt"_s).sourceStays, SourceStays::Linked);
    EXPECT_EQ(Of(result, u"b.txt"_s).staysFor, tree.Path(u"work/proj/top.tlk"_s));
    EXPECT_EQ(Of(result, u"b.txt"_s).outcome, Outcome::Copied);
    EXPECT_EQ(Of(result, u"a.txt"_s).outcome, Outcome::Moved);
    EXPECT_TRUE(tree.Exists(u"work/proj/b.txt"_s));
    EXPECT_FALSE(tree.Exists(u"work/proj/a.txt"_s));
    EXPECT_EQ(Execute([] {}).summary.filesWithProblems, 0);
    EXPECT_FALSE(tree.Exists(u"work/proj"_s));
}

TEST_F(LastMoment, ATargetFolderThatVanishesIsMadeAgainOrItsFilesFail)
{
    AfterTheFirstFile observer([&] { tree.Remove(u"cloud/proj"_s); });
    const JobResult result = Execute([] {}, &observer);
    for (const FileResult& file : result.files)
        if (file.outcome == Outcome::Copied && file.source != result.files.first().source) {
            EXPECT_EQ(StampOf(file.target).kind, "file") << file.target.toStdString();
        }
}

TEST_F(LastMoment, AFolderThatAppearedAtATargetIsAFailureOfThatFile)
{
    const JobResult result = Execute([&] { tree.File(u"cloud/proj/b.txt/inner"_s, "foreign"); });
    EXPECT_EQ(Of(result, u"b.txt"_s).outcome, Outcome::Failed);
    EXPECT_EQ(tree.Read(u"cloud/proj/b.txt/inner"_s), "foreign");
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "a");
}

TEST_F(LastMoment, AnUnchangedSourceThatIsSavedWhileOthersAreCopiedIsUpdatedByTheNextImport)
{
    Execute([] {});
    AfterTheFirstFile observer([&] { tree.File(u"work/proj/a.txt"_s, "saved meanwhile"); });
    Execute([] {}, &observer);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "a");
    const JobResult result = Execute([] {});
    EXPECT_EQ(Of(result, u"a.txt"_s).outcome, Outcome::Updated);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "saved meanwhile");
}

TEST_F(LastMoment, ASourceThatIsSavedWhileItsContentIsAdoptedIsNoCopyOfIt)
{
    tree.File(u"cloud/proj/a.txt"_s, "a");
    AfterTheFirstFile observer([&] { tree.File(u"work/proj/a.txt"_s, "saved meanwhile"); });
    EXPECT_EQ(Of(Execute([] {}, &observer), u"a.txt"_s).outcome, Outcome::Unchanged);
    ImportJob job(*session, request);
    const Plan& plan = job.MakePlan();
    ASSERT_EQ(plan.conflicts.size(), 1);
    EXPECT_EQ(plan.conflicts.first().kind, ConflictKind::TargetTaken);
}

TEST_F(LastMoment, AnUnchangedCopyThatIsSavedWhileOthersAreCopiedIsAFailureAndThenLeft)
{
    Execute([] {});
    AfterTheFirstFile observer([&] { tree.File(u"cloud/proj/a.txt"_s, "mine"); });
    const FileResult failed = Of(Execute([] {}, &observer), u"a.txt"_s);
    EXPECT_EQ(failed.outcome, Outcome::Failed);
    EXPECT_EQ(failed.remark, Remark::TargetChanged);
    EXPECT_EQ(Of(Execute([] {}), u"a.txt"_s).outcome, Outcome::Left);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "mine");
}

TEST_F(LastMoment, AMoveDeletesNoSourceWhoseCopyIsGoneByThen)
{
    for (const bool isCopiedEarlier : {false, true}) {
        if (tree.Exists(u"cloud/proj"_s))
            tree.Remove(u"cloud/proj"_s);
        tree.File(u"work/proj/a.txt"_s, "a");
        request.move = false;
        if (isCopiedEarlier)
            Execute([] {});
        request.move = true;
        // b.txt comes after it.
        AfterTheFirstFile observer([&] { tree.Remove(u"cloud/proj/a.txt"_s); });
        const JobResult result = Execute([] {}, &observer);
        EXPECT_EQ(tree.Read(u"work/proj/a.txt"_s), "a");
        EXPECT_EQ(Of(result, u"a.txt"_s).outcome, Outcome::Failed);
        EXPECT_EQ(Of(result, u"a.txt"_s).remark, Remark::TargetChanged);
    }
}

TEST_F(LastMoment, ACopyThatItsOwnerEditsAfterPlanningGetsNoOtherLinks)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 ../lib/part.txt\n");
    Execute([] {});
    tree.File(u"work/lib/part.txt"_s, "part");
    const JobResult result =
        Execute([&] { tree.File(u"cloud/proj/top.tlk"_s, "link 1 ../lib/part.txt\nmine\n"); });
    EXPECT_EQ(Of(result, u"top.tlk"_s).outcome, Outcome::Failed);
    EXPECT_EQ(Of(result, u"top.tlk"_s).remark, Remark::TargetChanged);
    EXPECT_EQ(tree.Read(u"cloud/proj/top.tlk"_s), "link 1 ../lib/part.txt\nmine\n");
    EXPECT_EQ(Of(Execute([] {}), u"top.tlk"_s).outcome, Outcome::Left);
}

TEST_F(LastMoment, AFileWithTheNameOfALockLeavesTheLockOfTheJobAlone)
{
    tree.File(u"work/proj/.lock"_s, "content");
    bool isLocked = false;
    AfterTheFirstFile observer([&] {
        const QDir cloud(tree.Path(u"cloud"_s));
        const QStringList folders =
            cloud.entryList({u".corsync-*"_s}, QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot);
        for (const QString& folder : folders)
            isLocked = isLocked || cloud.exists(folder + u"/.lock"_s);
    });
    const JobResult result = Execute([] {}, &observer);
    EXPECT_EQ(result.files.first().source, tree.Path(u"work/proj/.lock"_s));
    EXPECT_EQ(tree.Read(u"cloud/proj/.lock"_s), "content");
    EXPECT_TRUE(isLocked);
}

} // namespace Halvern::Test
