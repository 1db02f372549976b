// SPDX-License-Identifier: Apache-2.0

// Names that differ in letter case alone, on a disk to which that is a difference.

#include "DatabaseFixture.h"
#include "Version1Database.h"

#include <QtCore/QFile>

#include <filesystem>

namespace Halvern::Test {

using namespace Halvern::SyncServices;
using namespace Qt::StringLiterals;
using Halvern::SyncFolderManagerLib::FolderManager;

namespace {

class DatabaseOfTwins : public DatabaseFixture
{
protected:
    ItemPointer Write(const QString& name)
    {
        const ItemPointer item = File(tree.Path(name), SyncItem::RepathPending);
        EXPECT_TRUE(Database().AddOrUpdateFileConfiguration(item))
            << Database().GetLastError().toStdString();
        return item;
    }

    int IdOf(const QString& name, bool exactPath = true) const
    {
        const ItemPointer found =
            Database().GetSyncItem(tree.Path(name), exactPath, 7, FileItem::ItemOnly);
        return found ? found->GetId() : -1;
    }

    QStringList Sources() const
    {
        QStringList sources;
        for (const MappingPointer& row : Database().GetFileCopyHistoryByAuthenticationId(7))
            sources.append(row->GetSourceFile() + u" > "_s + row->GetTargetFile());
        return sources.replaceInStrings(tree.Path() + u'/', QString());
    }

    void Copied(const QString& source, const QString& target)
    {
        const auto copy = std::make_shared<FileMapping>(tree.Path(source), tree.Path(target), 7);
        EXPECT_TRUE(Database().AddAndUpdateFileCopyHistory({copy}, {}));
    }
};

} // namespace

TEST_F(DatabaseOfTwins, TwoFilesAreTwoItems)
{
    tree.File(u"cloud/Part.prt"_s).File(u"cloud/part.PRT"_s);
    const ItemPointer first = Write(u"cloud/Part.prt"_s);
    EXPECT_EQ(IdOf(u"cloud/part.PRT"_s), -1) << "that is another file";
    const ItemPointer second = Write(u"cloud/part.PRT"_s);
    EXPECT_NE(first->GetId(), second->GetId());
    EXPECT_NE(first->GetCloudItemId(), second->GetCloudItemId());
    EXPECT_EQ(IdOf(u"cloud/Part.prt"_s), first->GetId());
    EXPECT_EQ(IdOf(u"cloud/part.PRT"_s), second->GetId());
    EXPECT_EQ(Write(u"cloud/Part.prt"_s)->GetId(), first->GetId());
    Restart();
    EXPECT_EQ(IdOf(u"cloud/part.PRT"_s), second->GetId());
    EXPECT_EQ(Count("items"), 2);
    EXPECT_EQ(Ask("PRAGMA integrity_check"), "ok");
}

TEST_F(DatabaseOfTwins, AnItemIsFoundByAnotherSpellingOfItsFile)
{
    tree.File(u"cloud/Part.prt"_s);
    const int id = Write(u"cloud/Part.prt"_s)->GetId();
    EXPECT_EQ(IdOf(u"cloud/part.PRT"_s), id) << "no file has this name";
    ASSERT_TRUE(QFile::rename(tree.Path(u"cloud/Part.prt"_s), tree.Path(u"cloud/PART.prt"_s)));
    EXPECT_EQ(IdOf(u"cloud/PART.prt"_s), id) << "the file was renamed";
    EXPECT_EQ(Write(u"cloud/PART.prt"_s)->GetId(), id);
    EXPECT_EQ(Find(tree.Path(u"cloud/part.prt"_s))->GetLocalPath(), tree.Path(u"cloud/PART.prt"_s));
    EXPECT_EQ(Count("items"), 1);
}

TEST_F(DatabaseOfTwins, AFileThatDoesNotExistTakesNothingFromOneThatDoes)
{
    tree.File(u"cloud/part.stl"_s);
    const int id = Write(u"cloud/part.stl"_s)->GetId();
    EXPECT_NE(Write(u"cloud/part.STL"_s)->GetId(), id);
    EXPECT_EQ(Find(tree.Path(u"cloud/part.stl"_s))->GetLocalPath(), tree.Path(u"cloud/part.stl"_s));
}

TEST_F(DatabaseOfTwins, TwoHardLinksAreTwoFilesAndASymbolicLinkIsWhatItLeadsTo)
{
    tree.File(u"cloud/a"_s).File(u"cloud/b"_s);
    std::filesystem::create_hard_link(tree.Path(u"cloud/a"_s).toStdString(),
                                      tree.Path(u"cloud/A"_s).toStdString());
    ASSERT_TRUE(QFile::link(tree.Path(u"cloud/b"_s), tree.Path(u"cloud/B"_s)));
    Write(u"cloud/a"_s);
    const int id = Write(u"cloud/b"_s)->GetId();
    EXPECT_EQ(IdOf(u"cloud/A"_s), -1);
    EXPECT_EQ(IdOf(u"cloud/B"_s), id);
}

TEST_F(DatabaseOfTwins, CloudFoldersBesideEachOtherAreTwoRoots)
{
    tree.Folder(u"corsync"_s).Folder(u"Corsync"_s).File(u"Corsync/a"_s).File(u"corsync/a"_s);
    const auto lower = Database().AddRootFolder(tree.Path(u"corsync"_s), u"/"_s, 7);
    const auto upper = Database().AddRootFolder(tree.Path(u"Corsync"_s), u"/"_s, 7);
    ASSERT_TRUE(lower && upper);
    EXPECT_NE(lower->GetId(), upper->GetId());
    EXPECT_EQ(IdOf(u"Corsync/x/y"_s, false), upper->GetId());
    EXPECT_EQ(IdOf(u"corsync/x/y"_s, false), lower->GetId());
    EXPECT_EQ(IdOf(u"CORSYNC/x/y"_s, false), lower->GetId()) << "no such folder: the older one";
    EXPECT_FALSE(Database().AddFolderItem(lower, tree.Path(u"Corsync/x"_s)));
    EXPECT_EQ(Database().GetLastError().section(u": "_s, -1),
              u"The folder does not lie in its parent."_s);
    EXPECT_EQ(Database().AddFolderItem(upper, tree.Path(u"Corsync/x"_s))->GetLocalPath(),
              tree.Path(u"Corsync/x"_s));
    Write(u"corsync/a"_s);
    Write(u"Corsync/a"_s);
    EXPECT_EQ(Paths(Database().GetFilesWithSyncOption(lower->GetId(), SyncItem::RepathPending)),
              QStringList(tree.Path(u"corsync/a"_s)));
    EXPECT_EQ(Paths(Database().GetFilesWithSyncOption(upper->GetId(), SyncItem::RepathPending)),
              QStringList(tree.Path(u"Corsync/a"_s)));
}

TEST_F(DatabaseOfTwins, FoldersBesideEachOtherAreTwoFolders)
{
    tree.Folder(u"cloud/Lib"_s).Folder(u"cloud/lib"_s);
    const auto root = Database().AddRootFolder(Cloud(), u"/"_s, 7);
    const auto upper = Database().AddFolderItem(root, Cloud(u"Lib/x"_s));
    const auto lower = Database().AddFolderItem(root, Cloud(u"lib/x"_s));
    ASSERT_TRUE(upper && lower);
    EXPECT_NE(upper->GetParentFolderId(), lower->GetParentFolderId());
    EXPECT_EQ(lower->GetLocalPath(), Cloud(u"lib/x"_s));
    EXPECT_EQ(Database().AddFolderItem(root, Cloud(u"LIB/x"_s))->GetId(), upper->GetId())
        << "no such folder: the older one";
}

TEST_F(DatabaseOfTwins, TwoSourcesHaveTwoRowsOfHistory)
{
    tree.File(u"work/Part.prt"_s).File(u"work/part.prt"_s);
    Copied(u"work/Part.prt"_s, u"cloud/1"_s);
    Copied(u"work/part.prt"_s, u"cloud/2"_s);
    Copied(u"work/Part.prt"_s, u"cloud/3"_s);
    EXPECT_EQ(Sources(), (QStringList{u"work/Part.prt > cloud/3"_s, u"work/part.prt > cloud/2"_s}));
    tree.Remove(u"work/Part.prt"_s);
    Copied(u"work/PART.prt"_s, u"cloud/4"_s);
    EXPECT_EQ(Sources(), (QStringList{u"work/PART.prt > cloud/4"_s, u"work/part.prt > cloud/2"_s}));
}

TEST_F(DatabaseOfTwins, AnOldDatabaseGetsKeysOfExactPaths)
{
    settings.databaseFile = tree.Path(u"old.db"_s);
    SQLite::Database(settings.databaseFile.toStdString(),
                     SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
        .exec(version1Database);
    Restart();
    EXPECT_EQ(Ask("SELECT group_concat(path_key || ' ' || folded_key, ', ') FROM items "
                  "WHERE id IN (3, 5)"),
              "/Cloud/Demo/Part.PRT /cloud/demo/part.prt, /Cloud/Demo/low.prt /cloud/demo/low.prt");
    EXPECT_EQ(Ask("SELECT source_key || ' ' || folded_key FROM copy_history WHERE id = 1"),
              "/Work/Part.PRT /work/part.prt");
}

} // namespace Halvern::Test
