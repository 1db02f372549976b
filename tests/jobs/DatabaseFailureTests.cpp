// SPDX-License-Identifier: Apache-2.0

// What a job says when the database fails.

#include "JobDatabase.h"
#include "JobsFixture.h"

#include "syncservices/FolderManager.h"

#include <SQLiteCpp/SQLiteCpp.h>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;
using SyncFolderManagerLib::FolderManager;

namespace {

class FailingDatabase : public JobsFixture
{
protected:
    FailingDatabase()
    {
        tree.File(u"work/a.tlk"_s, "link 1 b.tlk\n").File(u"work/b.tlk"_s).File(u"work/c.tlk"_s);
    }

    void Run(const std::string& sql) const
    {
        SQLite::Database(tree.Path(u"sync.db"_s).toStdString(), SQLite::OPEN_READWRITE, 10000)
            .exec(sql);
    }
    void RefuseNewRows(const std::string& table) const
    {
        Run("CREATE TRIGGER refuse_" + table + " BEFORE INSERT ON " + table +
            " BEGIN SELECT raise(ABORT, 'the disk is tired'); END");
    }
    void TakeNewRows(const std::string& table) const { Run("DROP TRIGGER refuse_" + table); }
};

} // namespace

TEST_F(FailingDatabase, IsToldOnceWhenItConcernsNoSingleFile)
{
    Begin();
    Import(Request({u"c.tlk"_s}));
    Run("DELETE FROM items");
    RefuseNewRows("items");
    RefuseNewRows("copy_history");
    const Summary summary = Import(Request({u"a.tlk"_s})).summary;
    EXPECT_TRUE(summary.databaseError.contains(u"the disk is tired"_s));
    EXPECT_TRUE(summary.databaseError.startsWith(u"AddRootFolder "_s))
        << "the first failure is the cause: " << summary.databaseError.toStdString();
    EXPECT_TRUE(summary.problems.isEmpty());
}

TEST_F(FailingDatabase, IsToldOfEachJobAlsoInTheSameWords)
{
    Begin();
    Import(Request({u"c.tlk"_s}));
    RefuseNewRows("copy_history");
    const QString first = Import(Request({u"a.tlk"_s})).summary.databaseError;
    EXPECT_NE(first, QString());
    tree.File(u"work/a.tlk"_s, "link 1 b.tlk\nmore\n");
    EXPECT_EQ(Import(Request({u"a.tlk"_s})).summary.databaseError, first);
}

TEST_F(FailingDatabase, IsNoMatterOfAJobThatWaitsWithItsPlan)
{
    Begin();
    Import(Request({u"c.tlk"_s}));
    tree.File(u"work/d.tlk"_s);
    ImportJob waiting(*session, Request({u"d.tlk"_s}));
    waiting.MakePlan();
    RefuseNewRows("copy_history");
    EXPECT_NE(Import(Request({u"a.tlk"_s})).summary.databaseError, QString());
    TakeNewRows("copy_history");
    EXPECT_EQ(waiting.Execute().summary.databaseError, QString());
}

TEST_F(FailingDatabase, IsNoticedWhenReadingAlsoInTheSameWords)
{
    Begin();
    const auto store = FolderManager::GetInstance()->GetSyncDatabase();
    Run("DROP TABLE item_links");
    Run("DROP TABLE items");
    for (int turn = 0; turn < 2; ++turn) {
        JobDatabase database(store);
        EXPECT_EQ(database.FailureOfThisJob(), QString());
        EXPECT_TRUE(database.GetAllItems(-1).isEmpty());
        EXPECT_NE(database.FailureOfThisJob(), QString());
        EXPECT_EQ(database.FailureOfThisJob(), database.GetLastError());
    }
}

TEST_F(FailingDatabase, WhoseRecordsCannotBeReadLetsNoPlanBeMade)
{
    Begin();
    ImportRequest request = Request({u"a.tlk"_s});
    Import(request);
    tree.File(u"cloud/a.tlk"_s, "mine");
    request.selectedCollisions = CollisionPolicy::Replace;
    for (const char* const damage : {"UPDATE ledger_copies SET source_links = x'ff'",
                                     "UPDATE ledger_version SET version = 99"}) {
        Run(damage);
        ImportJob job(*session, request);
        try {
            job.MakePlan();
            FAIL() << damage;
        } catch (const JobError& error) {
            EXPECT_EQ(error.Kind(), JobErrorKind::DatabaseNotOpened);
            EXPECT_TRUE(error.Text().contains(tree.Path(u"sync.db"_s)));
        }
    }
    EXPECT_EQ(tree.Read(u"cloud/a.tlk"_s), "mine");
}

} // namespace Halvern::Test
