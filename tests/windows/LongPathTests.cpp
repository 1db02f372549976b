// SPDX-License-Identifier: Apache-2.0

// Paths that are longer than the system's functions take without a prefix, and names that it
// forbids. Wine takes long paths and most such names, so that these tests show that the importer
// does its work; that the prefix is there is shown by the texts of paths. Dots and blanks at the
// end of a name get lost under Wine, too.

#include "CollectedProblems.h"
#include "HeldFile.h"
#include "ReplacingFixture.h"
#include "support/FileOperations.h"

#include "syncservices/FolderManager.h"

#include <windows.h>

namespace Halvern::Test {

namespace {

class LongPaths : public ReplacingFixture
{
protected:
    /// A folder below "src" or "cloud" whose path has far more than 260 characters.
    static QString Deep(const QString& root)
    {
        return root + (u'/' + QString(60, u'd')).repeated(6);
    }
};

using ForbiddenNames = ReplacingFixture;

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

TEST_F(LongPaths, AreLockedWhileAnotherProgramHoldsThem)
{
    const QString name = Deep(QStringLiteral("cloud")) + QStringLiteral("/a.dat");
    tree.File(name);
    {
        const HeldFile held(tree.Path(name), QStringLiteral("r"), QStringLiteral("r"));
        EXPECT_TRUE(FileLink::IsFileLocked(tree.Path(name)));
    }
    EXPECT_FALSE(FileLink::IsFileLocked(tree.Path(name)));
}

TEST_F(LongPaths, AreRepathed)
{
    const QString name = Deep(QStringLiteral("cloud")) + QStringLiteral("/a.tasm");
    Assembly(name, {QStringLiteral("1 old.tlk")});
    FileLinkImporterImp importer(nullptr);
    SyncServices::FileLink link;
    link.RefId = QStringLiteral("1");
    link.Path = QStringLiteral("new.tlk");
    {
        const HeldFile held(tree.Path(name), QStringLiteral("rw"), QStringLiteral("r"));
        EXPECT_FALSE(importer.RepathFile(tree.Path(name), {link}));
        EXPECT_TRUE(tree.Read(name).contains("link 1 old.tlk"));
    }
    EXPECT_TRUE(importer.RepathFile(tree.Path(name), {link}));

    EXPECT_TRUE(tree.Read(name).contains("link 1 new.tlk"));
}

TEST_F(LongPaths, OfAnAssemblyThatMovesItsLinksAreRewritten)
{
    const QString folder = Deep(QStringLiteral("src"));
    tree.File(folder + QStringLiteral("/lib/b.tlk"), "b");
    Assembly(folder + QStringLiteral("/asm/a.tasm"), {QStringLiteral("1 ../lib/b.tlk")});
    const QString target = Deep(QStringLiteral("cloud"));
    tree.Folder(target);

    EXPECT_TRUE(Import({tree.Path(folder + QStringLiteral("/asm/a.tasm"))}, tree.Path(target)));

    EXPECT_EQ(tree.Read(target + QStringLiteral("/lib/b.tlk")), "b");
    EXPECT_TRUE(tree.Read(target + QStringLiteral("/a.tasm")).contains("link 1 lib/b.tlk\n"))
        << tree.Read(target + QStringLiteral("/a.tasm")).toStdString();
}

TEST_F(LongPaths, AreReplacedAndNothingStaysParked)
{
    const QString name = QString(60, u'd') + (u'/' + QString(60, u'd')).repeated(5);
    tree.File(QStringLiteral("src/a.dat"), "new");
    tree.File(QStringLiteral("cloud/%1/a.dat").arg(name), "old");

    EXPECT_TRUE(Replace(name + QStringLiteral("/a.dat"))) << Errors().join(u'\n').toStdString();

    EXPECT_EQ(tree.Contents(QStringLiteral("cloud/") + name),
              (FileTree::Snapshot{{QStringLiteral("a.dat"), "new"}}));
}

TEST_F(LongPaths, OfReadOnlyFilesAreMovedWithTheirAttribute)
{
    const QString source = Deep(QStringLiteral("src")) + QStringLiteral("/a.dat");
    const QString target = Deep(QStringLiteral("cloud")) + QStringLiteral("/a.dat");
    tree.File(source, "new").Folder(Deep(QStringLiteral("cloud")));
    ChangeAttributes(tree.Path(source), FILE_ATTRIBUTE_READONLY);

    Import({tree.Path(source)}, tree.Path(Deep(QStringLiteral("cloud"))), Global::MoveFiles);

    EXPECT_FALSE(tree.Exists(source));
    EXPECT_EQ(tree.Read(target), "new");
    EXPECT_TRUE(AttributesOf(tree.Path(target)) & FILE_ATTRIBUTE_READONLY);
    ChangeAttributes(tree.Path(target), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(LongPaths, OfFoldersCanBeHidden)
{
    const QString folder = tree.Path(Deep(QStringLiteral("cloud")));
    FileLinkImporterImp importer(nullptr);

    EXPECT_TRUE(importer.CreateFolder(folder, true));

    EXPECT_TRUE(AttributesOf(folder) & FILE_ATTRIBUTE_HIDDEN);
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

TEST_F(ForbiddenNames, PutNoFileAsideThatHasTheNameWithoutTheDot)
{
    tree.File(QStringLiteral("src/a.dat"), "new").File(QStringLiteral("cloud/a"), "other");

    EXPECT_FALSE(Replace(QStringLiteral("a.")));

    EXPECT_EQ(tree.Contents(QStringLiteral("cloud")),
              (FileTree::Snapshot{{QStringLiteral("a"), "other"}}));
    EXPECT_EQ(Errors(), QStringList{QStringLiteral(
                            "ERROR Failed to copy file src/a.dat to cloud/a.. Error: Windows does "
                            "not allow the name \"a.\"")});
}

TEST_F(ForbiddenNames, OfAParentFolderMakeNoFolder)
{
    tree.File(QStringLiteral("src/a.dat"), "new");

    EXPECT_FALSE(Replace(QStringLiteral("Demo./sub/a.dat")));

    EXPECT_EQ(tree.Contents(QStringLiteral("cloud")), FileTree::Snapshot());
    EXPECT_EQ(Errors(), QStringList{QStringLiteral(
                            "ERROR Failed to copy file src/a.dat to cloud/Demo./sub/a.dat. Error: "
                            "Windows does not allow the name \"Demo.\"")});
}

TEST_F(ForbiddenNames, OfAFolderMakeNoneAndAreNotTakenForAnother)
{
    FileLinkImporterImp importer(nullptr);
    EXPECT_FALSE(importer.CreateFolder(Cloud(QStringLiteral("Demo.")), false));
    EXPECT_EQ(tree.Contents(QStringLiteral("cloud")), FileTree::Snapshot());

    tree.Folder(QStringLiteral("cloud/Demo"));
    log.Clear();
    const auto problems = std::make_shared<CollectedProblems>();
    importer.SetProblemSink(problems);
    EXPECT_FALSE(importer.CreateFolder(Cloud(QStringLiteral("Demo.")), false));
    EXPECT_EQ(Errors(), (QStringList{QStringLiteral("ERROR Failed to create folder cloud/Demo."),
                                     QStringLiteral("ERROR cloud/Demo.: Windows does not allow the "
                                                    "name \"Demo.\"")}));
    ASSERT_EQ(problems->list.size(), 1);
    EXPECT_EQ(problems->list.first().kind, FileLink::ProblemKind::NameRefused);
    EXPECT_EQ(problems->list.first().text,
              QStringLiteral("Windows does not allow the name \"Demo.\""));
}

} // namespace Halvern::Test
