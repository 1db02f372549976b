// Paths that are longer than the system's functions take without a prefix, and names that it
// forbids. Wine takes both, so that these tests show that the importer does its work; that the
// prefix is there and the names are refused is shown by their texts.

#include "ImporterFixture.h"
#include "LogCapture.h"
#include "support/FileOperations.h"

#include "syncservices/FolderManager.h"

namespace Halvern::Test {

namespace {

class LongPaths : public ImporterFixture
{
protected:
    /// A folder below "src" or "cloud" whose path has far more than 260 characters.
    static QString Deep(const QString& root)
    {
        return root + (u'/' + QString(60, u'd')).repeated(6);
    }

    LogCapture log;
};

class ForbiddenNames : public ImporterFixture
{};

} // namespace

TEST_F(LongPaths, AreImportedWithTheirLinks)
{
    const QString folder = Deep(QStringLiteral("src"));
    tree.File(folder + QStringLiteral("/b.tlk"), "b");
    Assembly(folder + QStringLiteral("/a.tasm"), {QStringLiteral("1 b.tlk")});
    ASSERT_GT(tree.Path(folder).size(), 300);

    EXPECT_TRUE(Import({tree.Path(folder + QStringLiteral("/a.tasm"))}));

    EXPECT_EQ(tree.Read(QStringLiteral("cloud/b.tlk")), "b");
    EXPECT_TRUE(tree.Exists(QStringLiteral("cloud/a.tasm")));
}

TEST_F(LongPaths, AreReplacedAndRecorded)
{
    const QString source = Deep(QStringLiteral("src")) + QStringLiteral("/a.dat");
    tree.File(source, "new");
    // The first folder comes with everything in it.
    const QString first = Source(QString(60, u'd'));
    EXPECT_TRUE(Import({first}));
    const QString target = Deep(QStringLiteral("cloud")) + QStringLiteral("/a.dat");
    ASSERT_EQ(tree.Read(target), "new");

    const auto database = SyncFolderManagerLib::FolderManager::GetInstance()->GetSyncDatabase();
    EXPECT_TRUE(
        database->GetSyncItem(tree.Path(target), true, -1, SyncServices::FileItem::ItemOnly));
    EXPECT_FALSE(FileLink::IsFileLocked(tree.Path(target)));
    QString error;
    EXPECT_TRUE(FileLink::FlushToDisk(tree.Path(target), &error)) << error.toStdString();
}

TEST_F(ForbiddenNames, AreRefusedBeforeAnythingIsWritten)
{
    tree.File(QStringLiteral("src/a.dat"), "new");
    for (const QString& name : {QStringLiteral("aux.dat"), QStringLiteral("a.dat:stream"),
                                QStringLiteral("a."), QStringLiteral("nul")}) {
        QString error;
        EXPECT_FALSE(FileLink::CopyFileBytes(Source(QStringLiteral("a.dat")), Cloud(name), &error));
        EXPECT_EQ(error, QStringLiteral("Windows does not allow the name \"%1\"").arg(name));
    }
    EXPECT_EQ(tree.Contents(QStringLiteral("cloud")), FileTree::Snapshot());
}

} // namespace Halvern::Test
