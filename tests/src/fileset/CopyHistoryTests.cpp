// SPDX-License-Identifier: Apache-2.0

#include "CountingDatabase.h"
#include "Mappings.h"
#include "ServicesFixture.h"
#include "fileset/FileCopyHistory.h"

#include <gtest/gtest.h>

#include <sqlite3.h>

#include <optional>

namespace {

using namespace Halvern;
using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

/// Another program's write transaction: nobody else can write while it lives.
class ForeignTransaction
{
public:
    explicit ForeignTransaction(const QString& file)
    {
        EXPECT_EQ(sqlite3_open(file.toUtf8().constData(), &m_database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(m_database, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(m_database);
    }
    ~ForeignTransaction() { sqlite3_close(m_database); }
    ForeignTransaction(const ForeignTransaction&) = delete;
    ForeignTransaction& operator=(const ForeignTransaction&) = delete;

private:
    sqlite3* m_database = nullptr;
};

constexpr int User = 7;
constexpr int OtherUser = 8;

class CopyHistory : public ServicesFixture
{
protected:
    CopyHistory()
    {
        FolderManager* manager = FolderManager::GetInstance();
        database = std::make_shared<CountingDatabase>(manager->GetSyncDatabase());
        manager->SetSyncDatabase(database);
        history.emplace();
    }

    /// Rows that an earlier job left.
    void Store(const FileMappingList& rows)
    {
        EXPECT_TRUE(database->AddAndUpdateFileCopyHistory(rows, {}));
        database->calls.clear();
    }
    QStringList Stored(int user = User)
    {
        return SourcesOf(database->GetFileCopyHistoryByAuthenticationId(user));
    }

    std::shared_ptr<CountingDatabase> database;
    std::optional<FileCopyHistory> history;
};

TEST_F(CopyHistory, AnEmptyPathFindsNothingAndLoadsNothing)
{
    EXPECT_EQ(history->Find(QString(), User), nullptr);
    EXPECT_EQ(database->calls, QStringList());
}

TEST_F(CopyHistory, IsReadOnceForAUser)
{
    Store({MakeFile(u"D:/w/a.prt"_s)});
    EXPECT_NE(history->Find(u"D:/w/a.prt"_s, User), nullptr);
    EXPECT_EQ(history->Find(u"D:/w/b.prt"_s, User), nullptr);
    EXPECT_NE(history->Find(u"D:/W/A.PRT"_s, User), nullptr);
    EXPECT_EQ(database->calls, QStringList{u"read 7"_s});
}

TEST_F(CopyHistory, IsReadOnceEvenWhenThereIsNone)
{
    history->Find(u"D:/w/a.prt"_s, User);
    history->Find(u"D:/w/a.prt"_s, User);
    EXPECT_EQ(database->calls, QStringList{u"read 7"_s});
}

TEST_F(CopyHistory, OfAnotherUserIsReadInItsPlaceAndUnsavedEntriesStay)
{
    Store({MakeFile(u"D:/w/mine.prt"_s), MakeFile(u"D:/w/changed.prt"_s)});
    history->Find(u"D:/w/mine.prt"_s, User);
    const FileMappingPointer added = MakeFile(u"D:/w/added.prt"_s);
    const FileMappingPointer changed = MakeFile(u"D:/w/changed.prt"_s);
    history->AddOrUpdate(added);
    history->AddOrUpdate(changed);
    EXPECT_EQ(history->Find(u"D:/w/mine.prt"_s, OtherUser), nullptr);
    EXPECT_EQ(history->Find(u"D:/w/added.prt"_s, OtherUser), added);
    EXPECT_EQ(history->Find(u"D:/w/changed.prt"_s, OtherUser), changed);
    EXPECT_NE(history->Find(u"D:/w/mine.prt"_s, User), nullptr);
    EXPECT_EQ(database->calls, (QStringList{u"read 7"_s, u"read 8"_s, u"read 7"_s}));
}

TEST_F(CopyHistory, LoadReplacesWhatWasReadAndIsAlwaysTrue)
{
    EXPECT_TRUE(history->Load(User));
    EXPECT_EQ(database->calls, QStringList{u"read 7"_s});
    Store({MakeFile(u"D:/w/a.prt"_s)});
    EXPECT_EQ(history->Find(u"D:/w/a.prt"_s, User), nullptr);
    EXPECT_TRUE(history->Load(User));
    EXPECT_NE(history->Find(u"D:/w/a.prt"_s, User), nullptr);
    EXPECT_TRUE(history->Load(OtherUser));
    EXPECT_EQ(history->Find(u"D:/w/a.prt"_s, OtherUser), nullptr);
    EXPECT_EQ(database->calls, (QStringList{u"read 7"_s, u"read 8"_s}));
}

TEST_F(CopyHistory, AnswersWithTargetDatesAndLinksOfTheEarlierCopy)
{
    const FileMappingPointer row =
        MakeFile(u"D:/w/a.prt"_s, FileMapping::NoFlag, Cloud(u"a.prt"_s));
    const QDateTime date = QDateTime::fromSecsSinceEpoch(1'700'000'000);
    row->SetSourceFileProperties(date, 5);
    row->SetSourceFileLinks(Links({u"b.prt"_s}));
    Store({row});
    const FileMappingPointer found = history->Find(u"D:/w/a.prt"_s, User);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->GetTargetFile(), Cloud(u"a.prt"_s));
    EXPECT_EQ(found->GetSourceFileLastModified(), date);
    EXPECT_EQ(found->GetSourceFileLinks(), row->GetSourceFileLinks());
}

TEST_F(CopyHistory, DoesNotRecordAnEmptyPointer)
{
    EXPECT_FALSE(history->AddOrUpdate(nullptr));
    EXPECT_TRUE(history->Save());
    EXPECT_EQ(database->calls, QStringList());
}

TEST_F(CopyHistory, RecordsTheObjectItself)
{
    const FileMappingPointer file = MakeFile(u"D:/w/A.prt"_s);
    EXPECT_TRUE(history->AddOrUpdate(file));
    EXPECT_EQ(history->Find(u"D:/w/a.PRT"_s, User), file);
}

TEST_F(CopyHistory, DoesNotLoadInOrderToRecord)
{
    Store({MakeFile(u"D:/w/a.prt"_s)});
    history->AddOrUpdate(MakeFile(u"D:/w/a.prt"_s));
    history->AddOrUpdate(MakeFile(u"D:/w/b.prt"_s));
    EXPECT_EQ(database->calls, QStringList());
    EXPECT_TRUE(history->Save());
    EXPECT_EQ(database->calls, QStringList{u"write +D:/w/a.prt +D:/w/b.prt"_s});
    EXPECT_EQ(Stored().size(), 2);
}

TEST_F(CopyHistory, ALoadedEntryInAnotherLetterCaseIsUpdated)
{
    Store({MakeFile(u"D:/w/a.prt"_s), MakeFile(u"D:/w/b.prt"_s)});
    history->Load(User);
    const FileMappingPointer file = MakeFile(u"D:/W/A.prt"_s);
    history->AddOrUpdate(file);
    history->AddOrUpdate(MakeFile(u"D:/w/c.prt"_s));
    EXPECT_EQ(history->Find(u"D:/w/a.prt"_s, User), file);
    EXPECT_TRUE(history->Save());
    EXPECT_EQ(database->calls, (QStringList{u"read 7"_s, u"write +D:/w/c.prt ~D:/W/A.prt"_s}));
    EXPECT_EQ(Stored(), (QStringList{u"D:/W/A.prt"_s, u"D:/w/b.prt"_s, u"D:/w/c.prt"_s}));
}

TEST_F(CopyHistory, KeepsOnlyTheLaterOfTwoRecordsOfANewSource)
{
    history->Load(User);
    history->AddOrUpdate(MakeFile(u"D:/w/a.prt"_s));
    const FileMappingPointer later = MakeFile(u"D:/w/A.prt"_s);
    history->AddOrUpdate(later);
    EXPECT_EQ(history->Find(u"D:/w/a.prt"_s, User), later);
    EXPECT_TRUE(history->Save());
    EXPECT_EQ(database->calls, (QStringList{u"read 7"_s, u"write +D:/w/A.prt"_s}));
}

TEST_F(CopyHistory, KeepsOnlyTheLaterOfTwoRecordsOfAKnownSource)
{
    Store({MakeFile(u"D:/w/a.prt"_s)});
    history->Load(User);
    history->AddOrUpdate(MakeFile(u"D:/w/a.prt"_s));
    const FileMappingPointer later = MakeFile(u"D:/w/A.prt"_s);
    history->AddOrUpdate(later);
    EXPECT_EQ(history->Find(u"D:/w/a.prt"_s, User), later);
    EXPECT_TRUE(history->Save());
    EXPECT_EQ(database->calls, (QStringList{u"read 7"_s, u"write ~D:/w/A.prt"_s}));
}

TEST_F(CopyHistory, AnEntryAddedBeforeTheLoadOfItsRowMovesToUpdatedWhenRecordedAgain)
{
    Store({MakeFile(u"D:/w/a.prt"_s)});
    const FileMappingPointer early = MakeFile(u"D:/w/a.prt"_s);
    history->AddOrUpdate(early);
    const FileMappingPointer loaded = history->Find(u"D:/w/a.prt"_s, User);
    EXPECT_NE(loaded, early) << "what was read is looked up first";
    const FileMappingPointer late = MakeFile(u"D:/w/a.prt"_s);
    history->AddOrUpdate(late);
    EXPECT_EQ(history->Find(u"D:/w/a.prt"_s, User), late);
    EXPECT_TRUE(history->Save());
    EXPECT_EQ(database->calls, (QStringList{u"read 7"_s, u"write +D:/w/a.prt ~D:/w/a.prt"_s}));
    EXPECT_EQ(history->Find(u"D:/w/a.prt"_s, User), late) << "updated entries fold over added ones";
}

TEST_F(CopyHistory, AReloadBringsTheRowOfAnUnsavedUpdateBackInFrontOfIt)
{
    Store({MakeFile(u"D:/w/a.prt"_s)});
    history->Load(User);
    const FileMappingPointer update = MakeFile(u"D:/w/a.prt"_s);
    history->AddOrUpdate(update);
    history->Load(User);
    EXPECT_NE(history->Find(u"D:/w/a.prt"_s, User), update);
    const FileMappingPointer next = MakeFile(u"D:/w/a.prt"_s);
    history->AddOrUpdate(next);
    EXPECT_NE(history->Find(u"D:/w/a.prt"_s, User), next) << "it replaces the update, not the row";
    EXPECT_TRUE(history->Save());
    EXPECT_EQ(history->Find(u"D:/w/a.prt"_s, User), next);
    EXPECT_EQ(database->calls.last(), u"write ~D:/w/a.prt"_s);
}

TEST_F(CopyHistory, ASaveWithNothingRecordedMakesNoDatabaseCall)
{
    EXPECT_TRUE(history->Save());
    history->Load(User);
    database->calls.clear();
    EXPECT_TRUE(history->Save());
    EXPECT_EQ(database->calls, QStringList());
}

TEST_F(CopyHistory, ASavedEntryIsUpdatedAtTheNextRecord)
{
    history->AddOrUpdate(MakeFile(u"D:/w/a.prt"_s));
    EXPECT_TRUE(history->Save());
    EXPECT_TRUE(history->Save());
    history->AddOrUpdate(MakeFile(u"D:/w/a.prt"_s));
    EXPECT_TRUE(history->Save());
    EXPECT_EQ(database->calls, (QStringList{u"write +D:/w/a.prt"_s, u"write ~D:/w/a.prt"_s}));
}

TEST_F(CopyHistory, AFirstLoadAfterASaveForgetsWhatOnlyTheCacheKnew)
{
    const FileMappingPointer file = MakeFile(u"D:/w/a.prt"_s);
    history->AddOrUpdate(file);
    EXPECT_TRUE(history->Save());
    const FileMappingPointer found = history->Find(u"D:/w/a.prt"_s, User);
    ASSERT_NE(found, nullptr);
    EXPECT_NE(found, file);
    EXPECT_EQ(database->calls, (QStringList{u"write +D:/w/a.prt"_s, u"read 7"_s}));
}

TEST_F(CopyHistory, IsSavedInOneCallWhenDestroyed)
{
    history->AddOrUpdate(MakeFile(u"D:/w/a.prt"_s));
    history->AddOrUpdate(MakeFile(u"D:/w/b.prt"_s));
    history.reset();
    EXPECT_EQ(database->calls, QStringList{u"write +D:/w/a.prt +D:/w/b.prt"_s});
    EXPECT_EQ(Stored().size(), 2);
}

TEST_F(CopyHistory, IsNotSavedAgainWhenDestroyedAfterASave)
{
    history->AddOrUpdate(MakeFile(u"D:/w/a.prt"_s));
    history->Save();
    history.reset();
    EXPECT_EQ(database->calls.size(), 1);
}

class RefusedCopyHistory : public CopyHistory
{
protected:
    static SyncServices::ServicesSettings WithoutPatience(SyncServices::ServicesSettings settings)
    {
        settings.databaseBusyTimeout = 10;
        return settings;
    }
    RefusedCopyHistory()
    {
        FolderManager::Uninitialize();
        FolderManager::Configure(WithoutPatience(settings));
        FolderManager::Initialize();
        FolderManager* manager = FolderManager::GetInstance();
        database = std::make_shared<CountingDatabase>(manager->GetSyncDatabase());
        manager->SetSyncDatabase(database);
    }
};

TEST_F(RefusedCopyHistory, SaysSoAndIsNotOfferedAgain)
{
    const FileMappingPointer file = MakeFile(u"D:/w/a.prt"_s);
    history->Load(User);
    history->AddOrUpdate(file);
    {
        const ForeignTransaction writer(settings.databaseFile);
        EXPECT_FALSE(history->Save());
    }
    EXPECT_EQ(Stored(), QStringList());
    EXPECT_TRUE(history->Save());
    EXPECT_EQ(history->Find(u"D:/w/a.prt"_s, User), file) << "the cache takes it for saved";
    EXPECT_EQ(database->calls.filter(u"write"_s), QStringList{u"write +D:/w/a.prt"_s});
    history->AddOrUpdate(file);
    EXPECT_TRUE(history->Save());
    EXPECT_EQ(database->calls.last(), u"write ~D:/w/a.prt"_s);
    EXPECT_EQ(Stored(), QStringList{u"D:/w/a.prt"_s});
}

TEST_F(RefusedCopyHistory, IsLostQuietlyAtTheEnd)
{
    history->AddOrUpdate(MakeFile(u"D:/w/a.prt"_s));
    {
        const ForeignTransaction writer(settings.databaseFile);
        history.reset();
    }
    EXPECT_EQ(database->calls, QStringList{u"write +D:/w/a.prt"_s});
    EXPECT_EQ(Stored(), QStringList());
}

TEST_F(RefusedCopyHistory, IsNotDeleted)
{
    Store({MakeFile(u"/w/a.prt"_s)});
    {
        const ForeignTransaction writer(settings.databaseFile);
        EXPECT_FALSE(FileCopyHistory::DeleteAll());
    }
    EXPECT_EQ(Stored(), QStringList{u"/w/a.prt"_s});
}

TEST(CopyHistoryWithoutServices, FindsNothingAndSavesNothing)
{
    FileCopyHistory history;
    EXPECT_EQ(history.Find(u"D:/w/a.prt"_s, User), nullptr);
    EXPECT_TRUE(history.Save());
    const FileMappingPointer file = MakeFile(u"D:/w/a.prt"_s);
    history.AddOrUpdate(file);
    EXPECT_FALSE(history.Save());
    EXPECT_EQ(history.Find(u"D:/w/a.prt"_s, User), file);
}

} // namespace
