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

using namespace Qt::StringLiterals;

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
    const QString folder = Deep(u"src"_s);
    tree.File(folder + u"/b.tlk"_s, "b");
    Assembly(folder + u"/a.tasm"_s, {u"1 b.tlk"_s});
    ASSERT_GT(tree.Path(folder).size(), 300);

    EXPECT_TRUE(Import({tree.Path(folder + u"/a.tasm"_s)}));

    EXPECT_EQ(tree.Read(u"cloud/b.tlk"_s), "b");
    EXPECT_TRUE(tree.Exists(u"cloud/a.tasm"_s));
}

TEST_F(LongPaths, AreReplacedAndRecorded)
{
    const QString source = Deep(u"src"_s) + u"/a.dat"_s;
    tree.File(source, "new");
    // The first folder comes with everything in it.
    const QString first = Source(QString(60, u'd'));
    EXPECT_TRUE(Import({first}));
    const QString target = Deep(u"cloud"_s) + u"/a.dat"_s;
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
    const QString name = Deep(u"cloud"_s) + u"/a.dat"_s;
    tree.File(name);
    {
        const HeldFile held(tree.Path(name), u"r"_s, u"r"_s);
        EXPECT_TRUE(FileLink::IsFileLocked(tree.Path(name)));
    }
    EXPECT_FALSE(FileLink::IsFileLocked(tree.Path(name)));
}

TEST_F(LongPaths, AreRepathed)
{
    const QString name = Deep(u"cloud"_s) + u"/a.tasm"_s;
    Assembly(name, {u"1 old.tlk"_s});
    FileLinkImporterImp importer(nullptr);
    SyncServices::FileLink link;
    link.RefId = u"1"_s;
    link.Path = u"new.tlk"_s;
    {
        const HeldFile held(tree.Path(name), u"rw"_s, u"r"_s);
        EXPECT_FALSE(importer.RepathFile(tree.Path(name), {link}));
        EXPECT_TRUE(tree.Read(name).contains("link 1 old.tlk"));
    }
    EXPECT_TRUE(importer.RepathFile(tree.Path(name), {link}));

    EXPECT_TRUE(tree.Read(name).contains("link 1 new.tlk"));
}

TEST_F(LongPaths, OfAnAssemblyThatMovesItsLinksAreRewritten)
{
    const QString folder = Deep(u"src"_s);
    tree.File(folder + u"/lib/b.tlk"_s, "b");
    Assembly(folder + u"/asm/a.tasm"_s, {u"1 ../lib/b.tlk"_s});
    const QString target = Deep(u"cloud"_s);
    tree.Folder(target);

    EXPECT_TRUE(Import({tree.Path(folder + u"/asm/a.tasm"_s)}, tree.Path(target)));

    EXPECT_EQ(tree.Read(target + u"/lib/b.tlk"_s), "b");
    EXPECT_TRUE(tree.Read(target + u"/a.tasm"_s).contains("link 1 lib/b.tlk\n"))
        << tree.Read(target + u"/a.tasm"_s).toStdString();
}

TEST_F(LongPaths, AreReplacedAndNothingStaysParked)
{
    const QString name = QString(60, u'd') + (u'/' + QString(60, u'd')).repeated(5);
    tree.File(u"src/a.dat"_s, "new");
    tree.File(u"cloud/%1/a.dat"_s.arg(name), "old");

    EXPECT_TRUE(Replace(name + u"/a.dat"_s)) << Errors().join(u'\n').toStdString();

    EXPECT_EQ(tree.Contents(u"cloud/"_s + name), (FileTree::Snapshot{{u"a.dat"_s, "new"}}));
}

TEST_F(LongPaths, OfReadOnlyFilesAreMovedWithTheirAttribute)
{
    const QString source = Deep(u"src"_s) + u"/a.dat"_s;
    const QString target = Deep(u"cloud"_s) + u"/a.dat"_s;
    tree.File(source, "new").Folder(Deep(u"cloud"_s));
    ChangeAttributes(tree.Path(source), FILE_ATTRIBUTE_READONLY);

    Import({tree.Path(source)}, tree.Path(Deep(u"cloud"_s)), Global::MoveFiles);

    EXPECT_FALSE(tree.Exists(source));
    EXPECT_EQ(tree.Read(target), "new");
    EXPECT_TRUE(AttributesOf(tree.Path(target)) & FILE_ATTRIBUTE_READONLY);
    ChangeAttributes(tree.Path(target), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(LongPaths, OfFoldersCanBeHidden)
{
    const QString folder = tree.Path(Deep(u"cloud"_s));
    FileLinkImporterImp importer(nullptr);

    EXPECT_TRUE(importer.CreateFolder(folder, true));

    EXPECT_TRUE(AttributesOf(folder) & FILE_ATTRIBUTE_HIDDEN);
}

TEST_F(ForbiddenNames, AreRefusedBeforeAnythingIsWritten)
{
    tree.File(u"src/a.dat"_s, "new");
    for (const QString& name : {u"aux.dat"_s, u"a.dat:stream"_s, u"a."_s, u"nul"_s}) {
        QString error;
        EXPECT_FALSE(FileLink::CopyFileBytes(Source(u"a.dat"_s), Cloud(name), &error));
        EXPECT_EQ(error, u"Windows does not allow the name \"%1\""_s.arg(name));
    }
    EXPECT_EQ(tree.Contents(u"cloud"_s), FileTree::Snapshot());
}

TEST_F(ForbiddenNames, PutNoFileAsideThatHasTheNameWithoutTheDot)
{
    tree.File(u"src/a.dat"_s, "new").File(u"cloud/a"_s, "other");

    EXPECT_FALSE(Replace(u"a."_s));

    EXPECT_EQ(tree.Contents(u"cloud"_s), (FileTree::Snapshot{{u"a"_s, "other"}}));
    EXPECT_EQ(Errors(),
              QStringList{u"ERROR Failed to copy file src/a.dat to cloud/a.. Error: Windows does "
                          "not allow the name \"a.\""_s});
}

TEST_F(ForbiddenNames, OfAParentFolderMakeNoFolder)
{
    tree.File(u"src/a.dat"_s, "new");

    EXPECT_FALSE(Replace(u"Demo./sub/a.dat"_s));

    EXPECT_EQ(tree.Contents(u"cloud"_s), FileTree::Snapshot());
    EXPECT_EQ(Errors(),
              QStringList{u"ERROR Failed to copy file src/a.dat to cloud/Demo./sub/a.dat. Error: "
                          "Windows does not allow the name \"Demo.\""_s});
}

TEST_F(ForbiddenNames, OfAFolderMakeNoneAndAreNotTakenForAnother)
{
    FileLinkImporterImp importer(nullptr);
    EXPECT_FALSE(importer.CreateFolder(Cloud(u"Demo."_s), false));
    EXPECT_EQ(tree.Contents(u"cloud"_s), FileTree::Snapshot());

    tree.Folder(u"cloud/Demo"_s);
    log.Clear();
    const auto problems = std::make_shared<CollectedProblems>();
    importer.SetProblemSink(problems);
    EXPECT_FALSE(importer.CreateFolder(Cloud(u"Demo."_s), false));
    EXPECT_EQ(Errors(), (QStringList{u"ERROR Failed to create folder cloud/Demo."_s,
                                     u"ERROR cloud/Demo.: Windows does not allow the "
                                     "name \"Demo.\""_s}));
    ASSERT_EQ(problems->list.size(), 1);
    EXPECT_EQ(problems->list.first().kind, FileLink::ProblemKind::NameRefused);
    EXPECT_EQ(problems->list.first().text, u"Windows does not allow the name \"Demo.\""_s);
}

} // namespace Halvern::Test
