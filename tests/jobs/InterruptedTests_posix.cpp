// SPDX-License-Identifier: Apache-2.0

// Jobs whose process ends before they do.

#include "FileTimes.h"
#include "JobsFixture.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <QtCore/QDir>

#include <algorithm>
#include <functional>
#include <string>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

/// Does something at a file, in its process.
class AtFile : public IJobObserver
{
public:
    AtFile(int file, std::function<void()> action) : m_left(file), m_action(std::move(action)) {}
    void FileDone(const FileResult&) override
    {
        if (--m_left == 0)
            m_action();
    }

private:
    int m_left;
    std::function<void()> m_action;
};

class InterruptedJobs : public JobsFixture
{
protected:
    InterruptedJobs()
    {
        for (const char name : {'a', 'b', 'c', 'd'})
            tree.File(u"work/proj/%1.txt"_s.arg(QLatin1Char(name)), QByteArray(1, name));
    }
    ~InterruptedJobs() override
    {
        if (m_child > 0)
            EndChild();
    }
    ImportRequest Wanted() const
    {
        ImportRequest request = Request({u"proj"_s});
        request.selectedCollisions = collisions;
        request.move = isMove;
        return request;
    }
    /// Everything has come to its copy, without a question.
    void ExpectToGoOn(const QByteArray& content = {})
    {
        Begin();
        const JobResult result = Import(Wanted());
        EXPECT_EQ(result.summary.conflicts, 0);
        EXPECT_EQ(result.summary.filesWithProblems, 0);
        EXPECT_EQ(result.summary.interrupted.size(), 1);
        for (const char name : {'a', 'b', 'c', 'd'}) {
            const QString file = u"proj/%1.txt"_s.arg(QLatin1Char(name));
            EXPECT_EQ(tree.Read(u"cloud/"_s + file), content + name);
            EXPECT_NE(tree.Exists(u"work/"_s + file), isMove);
        }
        EXPECT_EQ(Hidden(), QStringList());
        EXPECT_EQ(Ask("SELECT count(*) FROM ledger_copies WHERE moved = " +
                      std::to_string(isMove ? 1 : 0)),
                  "4");
        EXPECT_EQ(Ask("PRAGMA integrity_check"), "ok");
    }

    /// Imports in a process of its own, which does something when some files are done.
    void Start(int files, const std::function<void()>& action)
    {
        session.reset();
        m_child = ::fork();
        ASSERT_GE(m_child, 0);
        if (m_child > 0)
            return;
        Begin();
        AtFile observer(files, action);
        ImportJob job(*session, Wanted(), &observer);
        job.MakePlan();
        job.Execute();
        ::_exit(99);
    }
    void StartAndKill(int files)
    {
        Start(files, [] { ::kill(::getpid(), SIGKILL); });
        int status = 0;
        ASSERT_EQ(::waitpid(m_child, &status, 0), m_child);
        m_child = -1;
        EXPECT_TRUE(WIFSIGNALED(status));
    }
    void StartAndStop(int files)
    {
        Start(files, [] { ::kill(::getpid(), SIGSTOP); });
        int status = 0;
        ASSERT_EQ(::waitpid(m_child, &status, WUNTRACED), m_child);
        ASSERT_TRUE(WIFSTOPPED(status));
    }
    void EndChild()
    {
        int status = 0;
        ::kill(m_child, SIGKILL);
        ::waitpid(m_child, &status, 0);
        m_child = -1;
    }
    QStringList Hidden() const
    {
        return QDir(tree.Path(u"cloud"_s))
            .entryList({u".corsync-*"_s}, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    std::string Ask(const std::string& query) const
    {
        SQLite::Database database(tree.Path(u"sync.db"_s).toStdString(), SQLite::OPEN_READWRITE,
                                  10000);
        return database.execAndGet(query).getString();
    }

    CollisionPolicy collisions = CollisionPolicy::Stop;
    bool isMove = false;

private:
    pid_t m_child = -1;
};

/// Killed when so many files are told.
class InterruptedAtAnyFile : public InterruptedJobs, public ::testing::WithParamInterface<int>
{};

class InterruptedMoveAtAnyFile : public InterruptedAtAnyFile
{};

} // namespace

TEST_F(InterruptedJobs, AreToldOnceAndTheirCopiesAreKnown)
{
    StartAndKill(2);
    EXPECT_FALSE(Hidden().isEmpty());
    Begin();
    ImportJob job(*session, Wanted());
    job.MakePlan();
    const QList<InterruptedJob> told = job.Preview().summary.interrupted;
    ASSERT_EQ(told.size(), 1);
    EXPECT_EQ(told.first().planned, 4);
    EXPECT_EQ(told.first().done, 2);
    EXPECT_EQ(Ask("SELECT state FROM runs"), "0") << "a plan writes nothing";
    const JobResult result = job.Execute();
    EXPECT_EQ(result.summary.interrupted, told);
    EXPECT_EQ(result.summary.Count(Outcome::Unchanged), 2);
    EXPECT_EQ(result.summary.Count(Outcome::Copied), 2);
    EXPECT_EQ(Hidden(), QStringList());
    EXPECT_EQ(Ask("SELECT state || ' ' || taken_up_by FROM runs WHERE id = 1"), "4 2");
    EXPECT_EQ(Ask("SELECT count(*) FROM ledger_copies"), "4");
    EXPECT_TRUE(QDir(tree.Path(u"sync.db.runs"_s)).entryList(QDir::Files).isEmpty());
    EXPECT_TRUE(Import(Wanted()).summary.interrupted.isEmpty());
}

TEST_F(InterruptedJobs, LeaveCopiesThatAreUpdatedWithoutAQuestionWhenTheirSourcesAreSaved)
{
    StartAndKill(2);
    EXPECT_EQ(Ask("SELECT count(*) FROM ledger_copies"), "0") << "nothing was recorded yet";
    tree.File(u"work/proj/a.txt"_s, "saved after the kill");
    Begin();
    const JobResult result = Import(Wanted());
    EXPECT_EQ(result.summary.conflicts, 0);
    EXPECT_EQ(result.summary.Count(Outcome::Updated), 1);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "saved after the kill");
}

TEST_F(InterruptedJobs, LeaveUpdatedCopiesThatAreUpdatedAgainWithoutAQuestion)
{
    Begin();
    Import(Wanted());
    tree.File(u"work/proj/a.txt"_s, "second").File(u"work/proj/b.txt"_s, "second");
    StartAndKill(2);
    const bool isNew = tree.Read(u"cloud/proj/a.txt"_s) == "second";
    EXPECT_TRUE(isNew);
    tree.File(u"work/proj/a.txt"_s, "the third");
    Begin();
    const JobResult result = Import(Wanted());
    EXPECT_EQ(result.summary.conflicts, 0);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "the third");
    EXPECT_EQ(tree.Read(u"cloud/proj/b.txt"_s), "second");
}

TEST_F(InterruptedJobs, LeaveACopyThatSomebodyChangedSinceToItsOwner)
{
    StartAndKill(2);
    tree.File(u"cloud/proj/a.txt"_s, "mine");
    Begin();
    EXPECT_EQ(Import(Wanted()).summary.conflicts, 1);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "mine");
}

TEST_F(InterruptedJobs, AreNotThoseWhoseProcessLives)
{
    StartAndStop(2);
    Begin();
    const JobResult result = Import(Wanted());
    EXPECT_TRUE(result.summary.interrupted.isEmpty());
    EXPECT_EQ(result.summary.filesWithProblems, 0);
    EXPECT_EQ(tree.Read(u"cloud/proj/d.txt"_s), "d");
    EXPECT_FALSE(Hidden().isEmpty()) << "it may go on";
    EndChild();
    EXPECT_EQ(Import(Wanted()).summary.interrupted.size(), 1);
    EXPECT_EQ(Hidden(), QStringList());
}

TEST_P(InterruptedAtAnyFile, GoesOnWithCopies)
{
    StartAndKill(GetParam());
    ExpectToGoOn();
}

TEST_P(InterruptedAtAnyFile, GoesOnWithUpdates)
{
    Begin();
    Import(Wanted());
    for (const char name : {'a', 'b', 'c', 'd'})
        tree.File(u"work/proj/%1.txt"_s.arg(QLatin1Char(name)), QByteArray("new ") + name);
    StartAndKill(GetParam());
    ExpectToGoOn("new ");
}

TEST_P(InterruptedAtAnyFile, GoesOnReplacingAndKeepsWhatStoodThere)
{
    collisions = CollisionPolicy::Replace;
    for (const char name : {'a', 'b', 'c', 'd'})
        tree.File(u"cloud/proj/%1.txt"_s.arg(QLatin1Char(name)), QByteArray("theirs ") + name);
    StartAndKill(GetParam());
    ExpectToGoOn();
    QByteArrayList kept;
    const QDir store(tree.Path(u"sync.db.base"_s));
    for (const QString& version : store.entryList({u"*.txt"_s}, QDir::Files))
        kept.append(tree.Read(u"sync.db.base/"_s + version));
    std::sort(kept.begin(), kept.end());
    EXPECT_EQ(kept, (QByteArrayList{"theirs a", "theirs b", "theirs c", "theirs d"}));
}

// Copies keep the times of their sources: neither size nor time tells the old file from the new
// one.
TEST_P(InterruptedAtAnyFile, GoesOnReplacingWhatHasTheSizeAndTheTimeOfTheNewFile)
{
    constexpr qint64 longAgo = 1'500'000'000'000'000'000;
    for (const bool moves : {false, true}) {
        StartOver();
        tree.Remove(u"work"_s).Folder(u"work"_s);
        collisions = CollisionPolicy::Replace;
        isMove = moves;
        for (const char name : {'a', 'b', 'c', 'd'}) {
            const QString file = u"proj/%1.txt"_s.arg(QLatin1Char(name));
            tree.File(u"work/"_s + file, QByteArray("new ") + name);
            tree.File(u"cloud/"_s + file, QByteArray("old ") + name);
            for (const QString& folder : {u"work/"_s, u"cloud/"_s})
                SetModifiedNanoseconds(tree.Path(folder + file), longAgo);
        }
        StartAndKill(GetParam());
        ExpectToGoOn("new ");
    }
}

TEST_P(InterruptedMoveAtAnyFile, GoesOnAndHasEachFileInOneOfItsPlacesMeanwhile)
{
    isMove = true;
    StartAndKill(GetParam());
    for (const char name : {'a', 'b', 'c', 'd'}) {
        const QString file = u"proj/%1.txt"_s.arg(QLatin1Char(name));
        EXPECT_TRUE(tree.Exists(u"work/"_s + file) || tree.Exists(u"cloud/"_s + file));
    }
    ExpectToGoOn();
}

INSTANTIATE_TEST_SUITE_P(Files, InterruptedAtAnyFile, ::testing::Range(1, 4));
// Each file is told when it has its copy, and again when its source is gone.
INSTANTIATE_TEST_SUITE_P(Files, InterruptedMoveAtAnyFile, ::testing::Range(1, 8));

} // namespace Halvern::Test
