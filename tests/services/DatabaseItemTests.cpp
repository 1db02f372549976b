// SPDX-License-Identifier: Apache-2.0

#include "DatabaseFixture.h"

using namespace Halvern::SyncServices;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

namespace {

struct DatabaseItems : DatabaseFixture
{
    ItemPointer Root() { return Database().AddRootFolder(Cloud(), u"/"_s, 7); }
    ItemPointer Folder(const QString& name)
    {
        return Database().AddFolderItem(Root(), Cloud(name));
    }
    bool Write(const ItemPointer& item) { return Database().AddOrUpdateFileConfiguration(item); }
    ItemPointer Nearest(const QString& path, int user = 7)
    {
        return Database().GetSyncItem(path, false, user, FileItem::ItemOnly);
    }
};

} // namespace

TEST_F(DatabaseItems, AnItemComesBackAsItWasWritten)
{
    const ItemPointer root = Root();
    const auto item =
        std::make_shared<SyncItem>(Cloud(u"Gehäuse 設計.asm"_s), u"/Gehäuse 設計.asm"_s, u"/P"_s);
    const QList<FileLink> links{{5, u"r2"_s, u"lib/b.prt"_s, u"cloud-5"_s},
                                {-1, u"r1"_s, u"lib/a.prt"_s, QString()},
                                {5, u"r3"_s, u"lib/b.prt"_s, u"cloud-5"_s}};
    const QDateTime date = QDateTime::fromMSecsSinceEpoch(1700000000123, Qt::UTC);
    item->SetAuthenticationId(7);
    item->SetProductConfigurationId(3);
    item->SetSourceConsumerId(u"consumer"_s);
    item->SetRootFolderId(root->GetId());
    item->SetParentFolderId(root->GetId());
    item->SetFileLinks(links);
    item->SetFileLinksExtractedAtFileDate(date);
    item->SetSyncOption(SyncItem::RepathPending | SyncItem::SkipFileLinks);
    ASSERT_TRUE(Write(item)) << Database().GetLastError().toStdString();
    EXPECT_GT(item->GetId(), 0);
    EXPECT_FALSE(item->GetCloudItemId().isEmpty());

    Restart();
    const ItemPointer found = Find(item->GetLocalPath());
    ASSERT_TRUE(found);
    EXPECT_EQ(found->GetId(), item->GetId());
    EXPECT_EQ(found->GetKind(), SyncItem::File);
    EXPECT_EQ(found->GetLocalPath(), Cloud(u"Gehäuse 設計.asm"_s));
    EXPECT_EQ(found->GetCloudPath(), u"/Gehäuse 設計.asm"_s);
    EXPECT_EQ(found->GetCloudRoot(), u"/P"_s);
    EXPECT_EQ(found->GetCloudItemId(), item->GetCloudItemId());
    EXPECT_EQ(found->GetAuthenticationId(), 7);
    EXPECT_EQ(found->GetProductConfigurationId(), 3);
    EXPECT_EQ(found->GetSourceConsumerId(), u"consumer"_s);
    EXPECT_EQ(found->GetRootFolderId(), root->GetId());
    EXPECT_EQ(found->GetParentFolderId(), root->GetId());
    EXPECT_EQ(found->GetFileLinks(), links);
    EXPECT_EQ(found->GetFileLinksExtractedAtFileDate(), date);
    EXPECT_EQ(found->GetSyncOption(), SyncItem::RepathPending | SyncItem::SkipFileLinks);
}

TEST_F(DatabaseItems, AnInvalidDateAndUnknownFoldersStayUnknown)
{
    ASSERT_TRUE(Write(File(u"/c/a.prt"_s)));
    const ItemPointer found = Find(u"/c/a.prt"_s);
    ASSERT_TRUE(found);
    EXPECT_FALSE(found->GetFileLinksExtractedAtFileDate().isValid());
    EXPECT_EQ(found->GetParentFolderId(), -1);
    EXPECT_EQ(found->GetRootFolderId(), -1);
    EXPECT_TRUE(found->GetFileLinks().isEmpty());
}

TEST_F(DatabaseItems, APathIsFoundCleanedAndInAnyLetterCase)
{
    const ItemPointer item = File(u"/c/Größe/Ärmel.PRT"_s);
    ASSERT_TRUE(Write(item));
    for (const QString& path :
         {u"/c/Größe/Ärmel.PRT"_s, u"/C/GRÖßE/äRMEL.prt"_s, u"/c//x/../Größe/./Ärmel.PRT"_s}) {
        const ItemPointer found = Find(path);
        ASSERT_TRUE(found) << path.toStdString();
        EXPECT_EQ(found->GetId(), item->GetId());
        EXPECT_EQ(found->GetLocalPath(), u"/c/Größe/Ärmel.PRT"_s);
    }
    EXPECT_FALSE(Find(u"/c/Größe/Armel.PRT"_s));
    EXPECT_FALSE(Find(QString()));
}

TEST_F(DatabaseItems, UsersHaveItemsOfTheirOwnAndMinusOneAsksForAnyUser)
{
    const ItemPointer mine = File(u"/c/a.prt"_s);
    const ItemPointer other = File(u"/c/a.prt"_s);
    const ItemPointer alone = File(u"/c/b.prt"_s);
    other->SetAuthenticationId(8);
    alone->SetAuthenticationId(8);
    ASSERT_TRUE(Write(mine) && Write(other) && Write(alone));
    EXPECT_NE(mine->GetId(), other->GetId());
    EXPECT_EQ(Find(u"/c/a.prt"_s, 7)->GetId(), mine->GetId());
    EXPECT_EQ(Find(u"/c/a.prt"_s, 8)->GetId(), other->GetId());
    EXPECT_FALSE(Find(u"/c/b.prt"_s, 7));
    EXPECT_EQ(Find(u"/c/b.prt"_s, -1)->GetId(), alone->GetId());
    EXPECT_EQ(Paths(Database().GetAllItems(7)), QStringList(u"/c/a.prt"_s));
    EXPECT_EQ(Paths(Database().GetAllItems(-1)),
              QStringList({u"/c/a.prt"_s, u"/c/a.prt"_s, u"/c/b.prt"_s}));
}

TEST_F(DatabaseItems, AnUpdateReplacesLinksAndOptionsAndKeepsTheCloudItemId)
{
    const ItemPointer item = File(u"/c/a.asm"_s, SyncItem::RepathPending);
    item->SetFileLinks({{-1, u"1"_s, u"a"_s, QString()}, {-1, u"2"_s, u"b"_s, QString()}});
    ASSERT_TRUE(Write(item));
    const QString cloudItemId = item->GetCloudItemId();

    const ItemPointer again = Find(u"/c/a.asm"_s);
    const QList<FileLink> links{{9, u"2"_s, u"b"_s, u"x"_s}};
    again->SetFileLinks(links);
    again->SetSyncOption(SyncItem::RepathPending, false);
    ASSERT_TRUE(Write(again));
    EXPECT_EQ(again->GetId(), item->GetId());

    const ItemPointer found = Find(u"/c/a.asm"_s);
    EXPECT_EQ(found->GetFileLinks(), links);
    EXPECT_EQ(found->GetSyncOption(), SyncItem::NoSyncOption);
    EXPECT_EQ(found->GetCloudItemId(), cloudItemId);
    EXPECT_EQ(Count("items"), 1);
    EXPECT_EQ(Count("item_links"), 1);
}

TEST_F(DatabaseItems, ANewItemForAKnownPathTakesOverItsIds)
{
    const ItemPointer first = File(u"/c/a.asm"_s);
    first->SetFileLinks({{-1, u"1"_s, u"a"_s, QString()}});
    ASSERT_TRUE(Write(first));
    const ItemPointer second = File(u"/C/A.asm"_s, SyncItem::SkipFileLinks);
    second->SetCloudItemId(u"another"_s);
    ASSERT_TRUE(Write(second));
    EXPECT_EQ(second->GetId(), first->GetId());
    EXPECT_EQ(second->GetCloudItemId(), first->GetCloudItemId());
    const ItemPointer found = Find(u"/c/a.asm"_s);
    EXPECT_EQ(found->GetLocalPath(), u"/C/A.asm"_s);
    EXPECT_EQ(found->GetCloudItemId(), first->GetCloudItemId());
    EXPECT_EQ(found->GetSyncOption(), SyncItem::SkipFileLinks);
    EXPECT_TRUE(found->GetFileLinks().isEmpty());
}

TEST_F(DatabaseItems, ACloudItemIdThatTheHostChoseIsKept)
{
    const ItemPointer item = File(u"/c/a.asm"_s);
    item->SetCloudItemId(u"chosen"_s);
    ASSERT_TRUE(Write(item));
    EXPECT_EQ(Find(u"/c/a.asm"_s)->GetCloudItemId(), u"chosen"_s);
    const ItemPointer other = File(u"/c/b.asm"_s);
    ASSERT_TRUE(Write(other));
    EXPECT_NE(other->GetCloudItemId(), u"chosen"_s);
}

TEST_F(DatabaseItems, AnItemWhoseRowIsGoneIsNotWrittenAndTheReasonIsTold)
{
    const ItemPointer item = File(u"/c/a.asm"_s);
    item->SetId(4711);
    EXPECT_FALSE(Write(item));
    EXPECT_EQ(Database().GetLastError(),
              u"AddOrUpdateFileConfiguration failed on sync database %1: "
              "There is no item with id 4711."_s.arg(settings.databaseFile));
    EXPECT_FALSE(Write(nullptr));
    EXPECT_EQ(Count("items"), 0);
}

TEST_F(DatabaseItems, AWriteThatFailsHalfWayLeavesTheItemAsItWas)
{
    const ItemPointer item = File(u"/c/a.asm"_s);
    item->SetFileLinks({{-1, u"1"_s, u"a"_s, QString()}});
    ASSERT_TRUE(Write(item));
    // A parent that does not exist breaks a rule that is checked when the row is written.
    const ItemPointer broken = Find(u"/c/a.asm"_s);
    broken->SetFileLinks({});
    broken->SetParentFolderId(4711);
    EXPECT_FALSE(Write(broken));
    EXPECT_THAT(Database().GetLastError().toStdString(), testing::HasSubstr("FOREIGN KEY"));
    EXPECT_EQ(Find(u"/c/a.asm"_s)->GetFileLinks().size(), 1);
    EXPECT_TRUE(Write(item)) << "the connection is usable again";
}

TEST_F(DatabaseItems, TheNearestFolderAboveAnswersForAPathWithoutItem)
{
    const ItemPointer root = Root();
    const ItemPointer folder = Folder(u"a"_s);
    ASSERT_TRUE(Write(File(Cloud(u"a/file"_s))));
    EXPECT_EQ(Nearest(Cloud(u"a/b/c.prt"_s))->GetId(), folder->GetId());
    EXPECT_EQ(Nearest(Cloud(u"A/file/x"_s))->GetId(), folder->GetId()) << "a file holds no files";
    EXPECT_EQ(Nearest(Cloud(u"b/c.prt"_s))->GetId(), root->GetId());
    EXPECT_EQ(Nearest(Cloud(u"a/file"_s))->GetLocalPath(), Cloud(u"a/file"_s));
    EXPECT_FALSE(Nearest(tree.Path(u"elsewhere/c.prt"_s)));
    EXPECT_FALSE(Nearest(Cloud(u"a/b.prt"_s), 8));
    EXPECT_FALSE(Nearest(u"C:/x/y.prt"_s));
    EXPECT_FALSE(Nearest(u"https://host/y.prt"_s));
    EXPECT_FALSE(Find(Cloud(u"a/b/c.prt"_s)));
}

TEST_F(DatabaseItems, ARootFolderIsMadeOnce)
{
    const ItemPointer root = Root();
    ASSERT_TRUE(root);
    EXPECT_EQ(root->GetKind(), SyncItem::RootFolder);
    EXPECT_EQ(root->GetLocalPath(), Cloud());
    EXPECT_EQ(root->GetCloudPath(), u"/"_s);
    EXPECT_EQ(root->GetCloudRoot(), u"/"_s);
    EXPECT_EQ(root->GetAuthenticationId(), 7);
    EXPECT_EQ(root->GetRootFolderId(), root->GetId());
    EXPECT_EQ(root->GetParentFolderId(), -1);
    EXPECT_EQ(Root()->GetId(), root->GetId());
    EXPECT_EQ(Root()->GetCloudItemId(), root->GetCloudItemId());
    EXPECT_NE(Database().AddRootFolder(Cloud(), u"/"_s, 8)->GetId(), root->GetId());
    EXPECT_FALSE(Database().AddRootFolder(QString(), u"/"_s, 7));
    EXPECT_EQ(Count("items"), 2);
}

TEST_F(DatabaseItems, AFolderThatBecomesARootKeepsItsId)
{
    const ItemPointer folder = Folder(u"team"_s);
    const ItemPointer root = Database().AddRootFolder(Cloud(u"team"_s), u"/T"_s, 7);
    EXPECT_EQ(root->GetId(), folder->GetId());
    const ItemPointer found = Database().GetFolder(folder->GetId(), FileItem::ItemOnly);
    EXPECT_EQ(found->GetKind(), SyncItem::RootFolder);
    EXPECT_EQ(found->GetCloudRoot(), u"/T"_s);
    EXPECT_EQ(found->GetRootFolderId(), folder->GetId());
    EXPECT_EQ(found->GetCloudItemId(), folder->GetCloudItemId());
}

TEST_F(DatabaseItems, AFolderIsMadeWithAllFoldersAboveItUpToItsParent)
{
    const ItemPointer root = Root();
    const ItemPointer folder = Database().AddFolderItem(root, Cloud(u"a/B/c/"_s));
    ASSERT_TRUE(folder);
    EXPECT_EQ(folder->GetLocalPath(), Cloud(u"a/B/c"_s));
    EXPECT_EQ(folder->GetCloudPath(), u"/a/B/c"_s);
    EXPECT_EQ(folder->GetKind(), SyncItem::FolderItem);
    EXPECT_EQ(folder->GetRootFolderId(), root->GetId());
    EXPECT_EQ(folder->GetAuthenticationId(), 7);
    const ItemPointer b = Find(Cloud(u"a/B"_s));
    ASSERT_TRUE(b);
    EXPECT_EQ(folder->GetParentFolderId(), b->GetId());
    EXPECT_EQ(b->GetParentFolderId(), Find(Cloud(u"a"_s))->GetId());
    EXPECT_EQ(Find(Cloud(u"a"_s))->GetParentFolderId(), root->GetId());
    EXPECT_EQ(Count("items"), 4);

    EXPECT_EQ(Database().AddFolderItem(root, Cloud(u"A/b/C"_s))->GetId(), folder->GetId());
    EXPECT_EQ(Database().AddFolderItem(b, Cloud(u"a/b/d"_s))->GetParentFolderId(), b->GetId());
    EXPECT_EQ(Count("items"), 5);
}

TEST_F(DatabaseItems, TheFolderOfTheParentIsTheParent)
{
    const ItemPointer root = Root();
    EXPECT_EQ(Database().AddFolderItem(root, Cloud() + u'/'), root);
}

TEST_F(DatabaseItems, NoFolderIsMadeOutsideItsParent)
{
    const ItemPointer a = Folder(u"a"_s);
    const int before = Count("items");
    EXPECT_FALSE(Database().AddFolderItem(a, Cloud(u"ab/c"_s)));
    EXPECT_THAT(Database().GetLastError().toStdString(),
                testing::HasSubstr("The folder does not lie in its parent."));
    EXPECT_FALSE(Database().AddFolderItem(a, Cloud(u"a/../b"_s)));
    EXPECT_FALSE(Database().AddFolderItem(nullptr, Cloud(u"a"_s)));
    EXPECT_FALSE(Database().AddFolderItem(File(Cloud(u"f"_s)), Cloud(u"f/g"_s)));
    EXPECT_EQ(Count("items"), before);
}

TEST_F(DatabaseItems, AFolderThatTookAFilesPlaceIsAFolder)
{
    const ItemPointer file = File(Cloud(u"x"_s));
    ASSERT_TRUE(Write(file));
    const ItemPointer folder = Folder(u"x"_s);
    ASSERT_TRUE(folder);
    EXPECT_EQ(folder->GetId(), file->GetId());
    EXPECT_EQ(Find(Cloud(u"x"_s))->GetKind(), SyncItem::FolderItem);
}

TEST_F(DatabaseItems, GetFolderFindsFoldersAndRootsOnly)
{
    const ItemPointer folder = Folder(u"a"_s);
    const ItemPointer file = File(Cloud(u"f"_s));
    ASSERT_TRUE(Write(file));
    EXPECT_EQ(Database().GetFolder(folder->GetId(), FileItem::ItemOnly)->GetLocalPath(),
              Cloud(u"a"_s));
    EXPECT_TRUE(Database().GetFolder(Root()->GetId(), FileItem::ItemOnly));
    EXPECT_FALSE(Database().GetFolder(file->GetId(), FileItem::ItemOnly));
    EXPECT_FALSE(Database().GetFolder(4711, FileItem::ItemOnly));
    EXPECT_FALSE(Database().GetFolder(-1, FileItem::ItemOnly));
}

TEST_F(DatabaseItems, FilesWithAnOptionAreFoundAtAnyDepthBelowTheirFolderAndNowhereElse)
{
    const SyncItem::SyncOption pending = SyncItem::RepathPending;
    const ItemPointer folder = Folder(u"a_b%"_s);
    const ItemPointer inner = Folder(u"a_b%/inner"_s);
    inner->SetSyncOption(pending);
    ASSERT_TRUE(Write(inner));
    for (const QString& name : {u"a_b%/z"_s, u"a_b%/inner/Ä/deep"_s, u"A_B%/case"_s, u"aXbYY/x"_s,
                                u"a_b%x/y"_s, u"a_b%!"_s, u"a_b%0"_s, u"other"_s})
        ASSERT_TRUE(Write(File(Cloud(name), pending)));
    ASSERT_TRUE(Write(File(Cloud(u"a_b%/plain"_s))));
    const ItemPointer foreign = File(Cloud(u"a_b%/foreign"_s), pending);
    foreign->SetAuthenticationId(8);
    ASSERT_TRUE(Write(foreign));

    EXPECT_EQ(
        Paths(Database().GetFilesWithSyncOption(folder->GetId(), pending)),
        QStringList({Cloud(u"A_B%/case"_s), Cloud(u"a_b%/inner/Ä/deep"_s), Cloud(u"a_b%/z"_s)}));
    EXPECT_EQ(Database().GetFilesWithSyncOption(Root()->GetId(), pending).size(), 8);
    EXPECT_TRUE(Database().GetFilesWithSyncOption(4711, pending).isEmpty());
}

TEST_F(DatabaseItems, SeveralOptionsMustAllBeSet)
{
    const ItemPointer root = Root();
    const auto both = SyncItem::RepathPending | SyncItem::SkipFileLinks;
    ASSERT_TRUE(Write(File(Cloud(u"one"_s), SyncItem::RepathPending)));
    const ItemPointer linked = File(Cloud(u"two"_s), both);
    linked->SetFileLinks({{-1, u"1"_s, u"a"_s, QString()}});
    ASSERT_TRUE(Write(linked));
    const QList<ItemPointer> found = Database().GetFilesWithSyncOption(root->GetId(), both);
    ASSERT_EQ(Paths(found), QStringList(Cloud(u"two"_s)));
    EXPECT_EQ(found.first()->GetFileLinks(), linked->GetFileLinks());
}

TEST_F(DatabaseItems, DeletingAFolderRowTakesItsItemsAndTheirLinks)
{
    const ItemPointer folder = Folder(u"a"_s);
    const ItemPointer file = File(Cloud(u"a/f"_s));
    file->SetParentFolderId(folder->GetId());
    file->SetFileLinks({{-1, u"1"_s, u"a"_s, QString()}});
    ASSERT_TRUE(Write(file));
    SQLite::Database raw(settings.databaseFile.toStdString(), SQLite::OPEN_READWRITE, 10000);
    raw.exec("PRAGMA foreign_keys = ON");
    raw.exec("DELETE FROM items WHERE id = " + std::to_string(folder->GetId()));
    EXPECT_FALSE(Find(Cloud(u"a/f"_s)));
    EXPECT_EQ(Count("item_links"), 0);
}
