// SPDX-License-Identifier: Apache-2.0

#include "JobsFixture.h"

#include <thread>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

constexpr int Files = 20;

/// Cancels from another thread when a phase begins.
class CancellingObserver : public NotingObserver
{
public:
    CancellingObserver(CancelToken& token, Phase phase) : m_token(token), m_phase(phase) {}
    void PhaseBegun(Phase phase, qint64 total) override
    {
        NotingObserver::PhaseBegun(phase, total);
        if (phase == m_phase)
            std::thread([this] { m_token.Cancel(); }).join();
    }

private:
    CancelToken& m_token;
    Phase m_phase;
};

/// Cancels from another thread after some files.
class CancellingAfterFiles : public IJobObserver
{
public:
    CancellingAfterFiles(CancelToken& token, int files) : m_token(token), m_left(files) {}
    void FileDone(const FileResult&) override
    {
        if (--m_left == 0)
            std::thread([this] { m_token.Cancel(); }).join();
    }

private:
    CancelToken& m_token;
    int m_left;
};

class CancelOfAJob : public JobsFixture
{
protected:
    CancelOfAJob()
    {
        for (int i = 0; i < Files; ++i)
            tree.File(u"work/proj/%1.tlk"_s.arg(i, 2, 10, QChar(u'0')), "link 1 ../lib/p.tlk\n");
        tree.File(u"work/lib/p.tlk"_s, "part\n");
    }

    void ExpectTheNextJobToFinish()
    {
        const JobResult next = Import(Request({u"proj"_s}));
        EXPECT_FALSE(next.summary.cancelled);
        EXPECT_EQ(next.summary.filesWithProblems, 0);
        EXPECT_EQ(tree.Contents(u"cloud"_s).values().count("link 1 lib/p.tlk\n"), Files);
        EXPECT_EQ(Import(Request({u"proj"_s})).summary.Count(Outcome::Unchanged), Files + 1);
    }
};

} // namespace

TEST_F(CancelOfAJob, InPlanningLeavesNothingAndNeverExecutes)
{
    for (const Phase phase : {Phase::ReadingSelection, Phase::ReadingLinks, Phase::LayingOut,
                              Phase::LookingForConflicts, Phase::ResolvingConflicts}) {
        Begin();
        CancelToken token;
        CancellingObserver observer(token, phase);
        ImportJob job(*session, Request({u"proj"_s}), &observer, &token);
        EXPECT_FALSE(job.MakePlan().complete) << int(phase);
        EXPECT_EQ(observer.phases.last(), phase);
        const JobResult result = job.Execute();
        EXPECT_TRUE(result.summary.cancelled);
        EXPECT_FALSE(result.summary.executed);
        EXPECT_EQ(result.summary.Count(Outcome::Copied), 0) << int(phase);
        EXPECT_EQ(tree.Contents(u"cloud"_s), FileTree::Snapshot()) << int(phase);
    }
    ExpectTheNextJobToFinish();
}

TEST_F(CancelOfAJob, BetweenPlanAndExecutionLeavesNothing)
{
    CancelToken token;
    ImportJob job(Begin(), Request({u"proj"_s}), nullptr, &token);
    EXPECT_TRUE(job.MakePlan().complete);
    std::thread([&] { token.Cancel(); }).join();
    const JobResult result = job.Execute();
    EXPECT_TRUE(result.summary.cancelled);
    EXPECT_FALSE(result.summary.executed);
    EXPECT_EQ(result.summary.Count(Outcome::NotDone), Files + 1);
    EXPECT_EQ(tree.Contents(u"cloud"_s), FileTree::Snapshot());
}

TEST_F(CancelOfAJob, WhileCopyingTellsWhatIsDoneAndWhatIsNot)
{
    Begin();
    CancelToken token;
    CancellingAfterFiles observer(token, 5);
    ImportJob job(*session, Request({u"proj"_s}), &observer, &token);
    job.MakePlan();
    const JobResult result = job.Execute();
    EXPECT_TRUE(result.summary.cancelled);
    EXPECT_TRUE(result.summary.executed);
    EXPECT_EQ(result.summary.Count(Outcome::Copied), 5);
    EXPECT_EQ(result.summary.Count(Outcome::NotDone), Files + 1 - 5);
    // Copies are complete before they appear.
    EXPECT_FALSE(result.files.first().IsProblem());
    EXPECT_EQ(tree.Read(u"cloud/proj/00.tlk"_s), "link 1 lib/p.tlk\n");
    ExpectTheNextJobToFinish();
}

TEST_F(CancelOfAJob, InEachPhaseOfTheExecutionIsMadeGoodByTheNextJob)
{
    for (const Phase phase : {Phase::Copying, Phase::RewritingLinks}) {
        StartOver();
        Begin();
        CancelToken token;
        CancellingObserver observer(token, phase);
        {
            ImportJob job(*session, Request({u"proj"_s}), &observer, &token);
            job.MakePlan();
            const JobResult result = job.Execute();
            EXPECT_TRUE(result.summary.cancelled) << int(phase);
            EXPECT_EQ(observer.phases.last(), Phase::Recording) << "what was done is recorded";
            EXPECT_EQ(result.summary.Count(Outcome::Failed), 0) << int(phase);
        }
        ExpectTheNextJobToFinish();
    }
}

TEST_F(CancelOfAJob, AfterItsLastPollStopsNothing)
{
    CancelToken token;
    ImportJob job(Begin(), Request({u"proj"_s}), nullptr, &token);
    job.MakePlan();
    const JobResult result = job.Execute();
    token.Cancel();
    EXPECT_FALSE(result.summary.cancelled);
    EXPECT_EQ(result.summary.Count(Outcome::Copied), Files + 1);
}

} // namespace Halvern::Test
