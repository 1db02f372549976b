// SPDX-License-Identifier: Apache-2.0

// What the journal tells of a job.

#include "JobsFixture.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <QtCore/QDir>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <functional>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

class AtPhase : public IJobObserver
{
public:
    AtPhase(Phase phase, std::function<void()> action) : m_phase(phase), m_action(std::move(action))
    {}
    void PhaseBegun(Phase phase, qint64) override
    {
        if (phase == m_phase)
            m_action();
    }

private:
    Phase m_phase;
    std::function<void()> m_action;
};

class JournalOfAJob : public JobsFixture
{
protected:
    JournalOfAJob()
    {
        tree.File(u"work/proj/a.txt"_s, "a")
            .File(u"work/proj/b.txt"_s, "b")
            .File(u"work/proj/top.tlk"_s, "link 1 a.txt\n");
    }
    std::string Ask(const std::string& query) const
    {
        SQLite::Database database(tree.Path(u"sync.db"_s).toStdString(), SQLite::OPEN_READWRITE,
                                  10000);
        return database.execAndGet(query).getString();
    }
    QStringList HeldFiles() const
    {
        return QDir(tree.Path(u"sync.db.runs"_s)).entryList(QDir::Files);
    }
};

} // namespace

TEST_F(JournalOfAJob, HasAllThatIsPlannedBeforeTheFirstFileChanges)
{
    Begin();
    ImportRequest request = Request({u"proj"_s});
    request.commandLine = {u"corsync"_s, u"import"_s, u"proj"_s};
    int looks = 0;
    AtPhase observer(Phase::Copying, [&] {
        ++looks;
        EXPECT_FALSE(tree.Exists(u"cloud/proj/a.txt"_s));
        EXPECT_EQ(Ask("SELECT state || ' ' || command FROM runs"), "0 import");
        EXPECT_EQ(Ask("SELECT group_concat(action || step || outcome IS NULL) FROM run_files"),
                  "1,1,1");
        EXPECT_EQ(Ask("SELECT group_concat(source_size) FROM run_files"), "1,1,13");
        EXPECT_EQ(HeldFiles().size(), 1);
        const QJsonObject told =
            QJsonDocument::fromJson(QByteArray::fromStdString(Ask("SELECT request FROM runs")))
                .object();
        EXPECT_EQ(told[u"sources"_s].toArray().first(), tree.Path(u"work/proj"_s));
        EXPECT_EQ(told[u"commandLine"_s].toArray().size(), 3);
    });
    ImportJob job(*session, request, &observer);
    job.MakePlan();
    job.Execute();
    job.NoteExitCode(4);
    EXPECT_EQ(looks, 1);
    EXPECT_EQ(Ask("SELECT state || ' ' || exit_code FROM runs WHERE ended >= begun"), "1 4");
    EXPECT_EQ(Ask("SELECT count(*) FROM run_files WHERE step = 2 AND outcome = 0"), "3");
    EXPECT_EQ(Ask("SELECT count(*) FROM run_records WHERE side = 0"), "0");
    EXPECT_EQ(HeldFiles(), QStringList());
}

TEST_F(JournalOfAJob, TellsWhatWasReplacedAndWhereThatIsKept)
{
    Begin();
    Import(Request({u"proj"_s}));
    tree.File(u"work/proj/a.txt"_s, "a second");
    EXPECT_EQ(Import(Request({u"proj"_s})).summary.Count(Outcome::Updated), 1);
    EXPECT_EQ(Ask("SELECT count(*) FROM run_files WHERE run = 2"), "1");
    EXPECT_EQ(Ask("SELECT action || ' ' || old_size || ' ' || new_size || ' ' || step FROM "
                  "run_files WHERE run = 2"),
              "1 1 8 2");
    const QString version =
        QString::fromStdString(Ask("SELECT version FROM run_files WHERE run = 2"));
    EXPECT_EQ(tree.Read(u"sync.db.base/"_s + version), "a");
    EXPECT_EQ(Ask("SELECT target_size FROM run_records WHERE run = 2 AND side = 1"), "1")
        << "the record as it was";
}

TEST_F(JournalOfAJob, TellsWhichSourcesAMoveDeletedAndWhichCopiesWerePruned)
{
    Begin();
    Import(Request({u"proj"_s}));
    tree.Remove(u"work/proj/b.txt"_s);
    ImportRequest request = Request({u"proj"_s});
    request.prune = true;
    EXPECT_EQ(Import(request).summary.Count(Outcome::Pruned), 1);
    EXPECT_EQ(Ask("SELECT action || ' ' || (version IS NOT NULL) FROM run_files WHERE run = 2"),
              "4 1");
    request.move = true;
    Import(request);
    EXPECT_EQ(Ask("SELECT count(*) FROM run_files WHERE run = 3 AND action = 3 AND moves = 1 AND "
                  "source_deleted = 1"),
              "2");
}

TEST_F(JournalOfAJob, IsNotWrittenByAPlanNorByAnImportThatHasNothingToDo)
{
    Begin();
    Import(Request({u"proj"_s}));
    tree.File(u"work/proj/a.txt"_s, "a second");
    ImportJob(*session, Request({u"proj"_s})).MakePlan();
    EXPECT_EQ(Ask("SELECT count(*) FROM runs"), "1");
    tree.File(u"work/proj/a.txt"_s, "a");
    Import(Request({u"proj"_s}));
    Import(Request({u"proj"_s}));
    EXPECT_EQ(Ask("SELECT max(id) <= 2 FROM runs"), "1");
}

TEST_F(JournalOfAJob, ForgetsTheOldestRuns)
{
    SyncServices::ServicesSettings settings = Settings();
    settings.runHistoryLimit = 3;
    session.emplace(settings, PluginFolders());
    for (int i = 0; i < 6; ++i) {
        tree.File(u"work/proj/a.txt"_s, QByteArray(i + 2, 'a'));
        Import(Request({u"proj"_s}));
    }
    EXPECT_EQ(Ask("SELECT group_concat(id) FROM runs"), "4,5,6");
    EXPECT_EQ(Ask("SELECT min(run) FROM run_files"), "4");
    EXPECT_EQ(Ask("SELECT min(run) FROM run_records"), "4");
}

TEST_F(JournalOfAJob, ThatCannotBeWrittenLetsNothingBeCopied)
{
    Begin();
    Import(Request({u"proj"_s}));
    tree.File(u"work/proj/a.txt"_s, "a second");
    SQLite::Database(tree.Path(u"sync.db"_s).toStdString(), SQLite::OPEN_READWRITE, 10000)
        .exec("CREATE TRIGGER refuse BEFORE INSERT ON runs BEGIN SELECT raise(ABORT, 'the disk is "
              "tired'); END");
    const JobResult result = Import(Request({u"proj"_s}));
    EXPECT_TRUE(result.summary.databaseError.contains(u"the disk is tired"_s));
    EXPECT_EQ(result.summary.Count(Outcome::Failed), 1);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "a");
    EXPECT_EQ(HeldFiles(), QStringList());
}

} // namespace Halvern::Test
