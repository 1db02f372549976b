// SPDX-License-Identifier: Apache-2.0

// The database file while another program has it open.

#include "HeldFile.h"
#include "ImporterFixture.h"

#include "syncservices/FolderManager.h"

namespace Halvern::Test {

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
    for (const QString& access : {QStringLiteral("r"), QStringLiteral("rw")}) {
        for (const QString& share : {QStringLiteral("rw"), QStringLiteral("rwd")}) {
            const QString name = access + u'-' + share + QStringLiteral(".dat");
            SCOPED_TRACE(name.toStdString());
            tree.File(QStringLiteral("src/") + name);
            const HeldFile held(DatabaseFile(), access, share);

            EXPECT_TRUE(Import({Source(name)}));

            EXPECT_TRUE(IsRecorded(name));
        }
    }
}

TEST_F(HeldDatabase, InUseCannotBeTakenAwayByAProgramThatSharesNothing)
{
    for (const char* const share : {"-", "r", "w", "d", "rd", "wd"})
        EXPECT_THROW(HeldFile(DatabaseFile(), QStringLiteral("r"), QString::fromLatin1(share)),
                     std::runtime_error)
            << share;
}

TEST_F(HeldDatabase, BeforeTheStartLeavesTheServicesWithoutADatabaseAndFilesAreStillImported)
{
    // SQLite asks for reading and writing, and then for reading alone.
    const QString unreadable = QStringLiteral("unable to open database file");
    const QString readOnly = QStringLiteral("It cannot be written.");
    const QList<std::pair<QString, QString>> reasons = {
        {QStringLiteral("-"), unreadable}, {QStringLiteral("r"), readOnly},
        {QStringLiteral("w"), unreadable}, {QStringLiteral("d"), unreadable},
        {QStringLiteral("rd"), readOnly},  {QStringLiteral("wd"), unreadable}};
    tree.File(QStringLiteral("src/b.dat"));
    for (const auto& [share, reason] : reasons) {
        SCOPED_TRACE(share.toStdString());
        const QString name = share + QStringLiteral(".dat");
        tree.File(QStringLiteral("src/") + name, "new");
        FileLink::FileLinkManager::Uninitialize();
        {
            const HeldFile held(DatabaseFile(), QStringLiteral("r"), share);
            FolderManager::Configure(settings);
            FileLink::FileLinkManager::Initialize();
            EXPECT_FALSE(FolderManager::GetInstance()->GetSyncDatabase());
            EXPECT_EQ(
                FolderManager::GetInstance()->GetLastError(),
                QStringLiteral("Failed to open sync database %1: %2").arg(DatabaseFile(), reason));
            EXPECT_TRUE(Import({Source(name)}));
            FileLink::FileLinkManager::Uninitialize();
        }
        EXPECT_EQ(tree.Read(QStringLiteral("cloud/") + name), "new");
        Restart();
        EXPECT_FALSE(IsRecorded(name));
    }
    EXPECT_TRUE(Import({Source(QStringLiteral("b.dat"))}));
    EXPECT_TRUE(IsRecorded(QStringLiteral("b.dat")));
}

} // namespace Halvern::Test
