// SPDX-License-Identifier: Apache-2.0

// The database file while another program has it open.

#include "HeldFile.h"
#include "ImporterFixture.h"

#include "syncservices/FolderManager.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using SyncFolderManagerLib::FolderManager;

class HeldDatabase : public ImporterFixture
{
protected:
    QString DatabaseFile() const { return settings.databaseFile; }

    bool IsRecorded(const QString& relative) const
    {
        const auto database = FolderManager::GetInstance()->GetSyncDatabase();
        return database &&
               database->GetSyncItem(Cloud(relative), true, -1, SyncServices::FileItem::ItemOnly);
    }
};

} // namespace

TEST_F(HeldDatabase, ThatIsSharedForReadingAndWritingDoesNotDisturbTheJob)
{
    for (const QString& access : {u"r"_s, u"rw"_s}) {
        for (const QString& share : {u"rw"_s, u"rwd"_s}) {
            const QString name = access + u'-' + share + u".dat"_s;
            SCOPED_TRACE(name.toStdString());
            tree.File(u"src/"_s + name);
            const HeldFile held(DatabaseFile(), access, share);

            EXPECT_TRUE(Import({Source(name)}));

            EXPECT_TRUE(IsRecorded(name));
        }
    }
}

TEST_F(HeldDatabase, InUseCannotBeTakenAwayByAProgramThatSharesNothing)
{
    for (const char* const share : {"-", "r", "w", "d", "rd", "wd"})
        EXPECT_THROW(HeldFile(DatabaseFile(), u"r"_s, QString::fromLatin1(share)),
                     std::runtime_error)
            << share;
}

TEST_F(HeldDatabase, BeforeTheStartLeavesTheServicesWithoutADatabaseAndFilesAreStillImported)
{
    // SQLite asks for reading and writing, and then for reading alone.
    const QString unreadable = u"unable to open database file"_s;
    const QString readOnly = u"It cannot be written."_s;
    const QList<std::pair<QString, QString>> reasons = {
        {u"-"_s, unreadable}, {u"r"_s, readOnly},  {u"w"_s, unreadable},
        {u"d"_s, unreadable}, {u"rd"_s, readOnly}, {u"wd"_s, unreadable}};
    tree.File(u"src/b.dat"_s);
    for (const auto& [share, reason] : reasons) {
        SCOPED_TRACE(share.toStdString());
        const QString name = share + u".dat"_s;
        tree.File(u"src/"_s + name, "new");
        FileLink::FileLinkManager::Uninitialize();
        {
            const HeldFile held(DatabaseFile(), u"r"_s, share);
            FolderManager::Configure(settings);
            FileLink::FileLinkManager::Initialize();
            EXPECT_FALSE(FolderManager::GetInstance()->GetSyncDatabase());
            EXPECT_EQ(FolderManager::GetInstance()->GetLastError(),
                      u"Failed to open sync database %1: %2"_s.arg(DatabaseFile(), reason));
            EXPECT_TRUE(Import({Source(name)}));
            FileLink::FileLinkManager::Uninitialize();
        }
        EXPECT_EQ(tree.Read(u"cloud/"_s + name), "new");
        Restart();
        EXPECT_FALSE(IsRecorded(name));
    }
    EXPECT_TRUE(Import({Source(u"b.dat"_s)}));
    EXPECT_TRUE(IsRecorded(u"b.dat"_s));
}

} // namespace Halvern::Test
