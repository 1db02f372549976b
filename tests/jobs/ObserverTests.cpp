// SPDX-License-Identifier: Apache-2.0

#include "JobsFixture.h"

#include <QtCore/QSet>

#include <stdexcept>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

class ObserverOfAJob : public JobsFixture
{
protected:
    ObserverOfAJob()
    {
        tree.File(u"work/a.tlk"_s, "link 1 lib/b.tlk\nlink 2 gone.tlk\n")
            .File(u"work/lib/b.tlk"_s, "bb")
            .File(u"work/x/c.tlk"_s, "link 1 ../lib/b.tlk\n")
            .File(u"work/z.tlk"_s, "fail\n");
    }
    ImportRequest All() const { return Request({u"a.tlk"_s, u"x/c.tlk"_s, u"z.tlk"_s}); }

    NotingObserver notes;
};

/// Throws once, at the first call that the predicate names.
class ThrowingObserver : public IJobObserver
{
public:
    explicit ThrowingObserver(Phase phase, bool atFile) : m_phase(phase), m_atFile(atFile) {}
    void PhaseBegun(Phase phase, qint64) override
    {
        m_now = phase;
        if (!m_atFile && phase == m_phase)
            throw std::runtime_error("the host has had enough");
    }
    void FileDone(const FileResult&) override
    {
        if (m_atFile && m_now == m_phase)
            throw std::runtime_error("the host has had enough");
    }

private:
    Phase m_phase;
    bool m_atFile;
    Phase m_now = Phase::ReadingSelection;
};

} // namespace

TEST_F(ObserverOfAJob, IsToldEachPhaseInItsOrderAndOfCopyingTheTotal)
{
    ImportJob job(Begin(), All(), &notes);
    job.MakePlan();
    job.Execute();
    EXPECT_EQ(notes.phases,
              (QList<Phase>{Phase::ReadingSelection, Phase::ReadingLinks, Phase::LayingOut,
                            Phase::LookingForConflicts, Phase::ResolvingConflicts, Phase::Copying,
                            Phase::RewritingLinks, Phase::Recording}));
    EXPECT_EQ(notes.totals[Phase::Copying], 4);
}

TEST_F(ObserverOfAJob, IsToldEachFileWhileItIsCopiedInTheOrderOfThePlan)
{
    ImportJob job(Begin(), All(), &notes);
    const Plan plan = job.MakePlan();
    EXPECT_TRUE(notes.done.isEmpty());
    const JobResult result = job.Execute();
    const qsizetype copied = notes.doneBefore[Phase::RewritingLinks];
    ASSERT_EQ(copied, plan.files.size());
    for (qsizetype i = 0; i < copied; ++i)
        EXPECT_EQ(notes.done[i].source, plan.files[i].source);
    // What was told of a file last is what the result says.
    QMap<QString, FileResult> last;
    for (const FileResult& done : notes.done)
        last.insert(done.source, done);
    QList<FileResult> told;
    for (const FileResult& file : result.files)
        told.append(last.value(file.source));
    EXPECT_EQ(LinesOf(told, tree), LinesOf(result.files, tree));
}

TEST_F(ObserverOfAJob, IsToldOfACopyOnceItsLinksAreRewritten)
{
    ImportJob job(Begin(), All(), &notes);
    job.MakePlan();
    job.Execute();
    QStringList told;
    for (const FileResult& result : notes.done)
        if (result.source == tree.Path(u"work/x/c.tlk"_s))
            told.append(result.linksRewritten ? u"rewritten"_s : u"not rewritten"_s);
    EXPECT_EQ(told, QStringList{u"rewritten"_s});
}

TEST_F(ObserverOfAJob, IsToldProblemsWhenTheyHappen)
{
    ImportJob job(Begin(), All(), &notes);
    job.MakePlan();
    EXPECT_TRUE(notes.problems.contains(u"test resolver: told to fail"_s));
}

TEST_F(ObserverOfAJob, SeesProgressGrowToTheTotal)
{
    ImportJob job(Begin(), All(), &notes);
    job.MakePlan();
    job.Execute();
    Progress last;
    for (const Progress& now : notes.progress)
        if (now.phase == Phase::Copying) {
            EXPECT_GE(now.files, last.files);
            EXPECT_GE(now.bytes, last.bytes);
            last = now;
        }
    EXPECT_EQ(last.files, 4);
    EXPECT_EQ(last.total, 4);
    EXPECT_EQ(last.bytes,
              tree.Read(u"work/a.tlk"_s).size() + tree.Read(u"work/lib/b.tlk"_s).size() +
                  tree.Read(u"work/x/c.tlk"_s).size() + tree.Read(u"work/z.tlk"_s).size());
}

TEST_F(ObserverOfAJob, ThatThrowsStopsTheJobWhichIsFinishedByTheNextOne)
{
    for (const auto& [phase, atFile] :
         {std::pair(Phase::ReadingLinks, false), std::pair(Phase::ResolvingConflicts, false),
          std::pair(Phase::Copying, false), std::pair(Phase::Copying, true),
          std::pair(Phase::RewritingLinks, false), std::pair(Phase::Recording, false)}) {
        StartOver();
        Begin();
        ThrowingObserver observer(phase, atFile);
        {
            ImportJob job(*session, All(), &observer);
            EXPECT_THROW((job.MakePlan(), job.Execute()), std::runtime_error) << int(phase);
        }
        const JobResult next = Import(All());
        EXPECT_EQ(next.summary.Count(Outcome::Failed), 0) << int(phase);
        EXPECT_EQ(next.summary.conflicts, 0) << int(phase);
        EXPECT_EQ(tree.Read(u"cloud/c.tlk"_s), "link 1 lib/b.tlk\n") << int(phase);
        EXPECT_EQ(Import(All()).summary.Count(Outcome::Unchanged), 4) << int(phase);
    }
}

} // namespace Halvern::Test
