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
    tree.File(QStringLiteral("src/a.dat"));
    const HeldFile held(DatabaseFile(), QStringLiteral("r"), QStringLiteral("rw"));

    EXPECT_TRUE(Import({Source(QStringLiteral("a.dat"))}));

    EXPECT_TRUE(IsRecorded(QStringLiteral("a.dat")));
}

TEST_F(HeldDatabase, InUseCannotBeTakenAwayByAProgramThatSharesNothing)
{
    for (const char* const share : {"-", "r", "w", "d"})
        EXPECT_THROW(HeldFile(DatabaseFile(), QStringLiteral("r"), QString::fromLatin1(share)),
                     std::runtime_error)
            << share;
}

TEST_F(HeldDatabase, BeforeTheStartLeavesTheServicesWithoutADatabaseAndFilesAreStillImported)
{
    tree.File(QStringLiteral("src/a.dat"), "new").File(QStringLiteral("src/b.dat"));
    FileLink::FileLinkManager::Uninitialize();
    {
        const HeldFile held(DatabaseFile(), QStringLiteral("r"), QStringLiteral("-"));
        FolderManager::Configure(settings);
        FileLink::FileLinkManager::Initialize();
        EXPECT_FALSE(FolderManager::GetInstance()->GetSyncDatabase());
        EXPECT_TRUE(Import({Source(QStringLiteral("a.dat"))}));
        FileLink::FileLinkManager::Uninitialize();
    }
    EXPECT_EQ(tree.Read(QStringLiteral("cloud/a.dat")), "new");
    Restart();
    EXPECT_TRUE(Import({Source(QStringLiteral("b.dat"))}));
    EXPECT_TRUE(IsRecorded(QStringLiteral("b.dat")));
    EXPECT_FALSE(IsRecorded(QStringLiteral("a.dat")));
}

} // namespace Halvern::Test
