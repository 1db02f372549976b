// SPDX-License-Identifier: Apache-2.0

// Rules of the stages from copying on that no case of trouble shows.

#include "CopyingFixture.h"
#include "RecordLines.h"
#include "WatchedDatabase.h"

#include "syncservices/FolderManager.h"

#include <QtTest/QSignalSpy>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using SyncFolderManagerLib::FolderManager;

class CopyingRules : public CopyingFixture
{};

} // namespace

TEST_F(CopyingRules, NoFileIsReportedAsModified)
{
    tree.File("src/a.tlk", LinkText({{"1", "b.tlk"}})).File("cloud/a.tlk", "old");
    Add("src/a.tlk", "a.tlk", FileMapping::Selected, {Link("1", "b.tlk")});
    QSignalSpy modified(importer.get(), &FileLinkImporterImp::FileModified);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_TRUE(modified.isEmpty());
    EXPECT_EQ(tree.Read("cloud/a.tlk"), LinkText({{"1", "b.tlk"}}));
}

TEST_F(CopyingRules, OnlyTheOptionToMoveMoves)
{
    Restart(Global::CopyOption(~quint32(Global::MoveFiles)));
    tree.File("src/F/a.prt");
    Add("src/F", "F", FileMapping::Selected | FileMapping::Folder);
    Add("src/F/a.prt", "F/a.prt");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_TRUE(tree.Exists("src/F/a.prt"));
    EXPECT_EQ(tree.Read("cloud/F/a.prt"), "src/F/a.prt");
}

TEST_F(CopyingRules, AMovedFileIsRememberedLikeACopiedOne)
{
    Restart(Global::MoveFiles);
    tree.File("src/a.prt");
    const auto mapping = Add("src/a.prt", "a.prt");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_TRUE(mapping->HasFlag(FileMapping::Copied));
    EXPECT_TRUE(mapping->GetCopyDate().isValid());
    importer.reset();
    const auto history = Database().GetFileCopyHistoryByAuthenticationId(7);
    ASSERT_EQ(history.size(), 1);
    EXPECT_EQ(history[0]->GetSourceFile(), tree.Path("src/a.prt"));
}

TEST_F(CopyingRules, ASelectedFolderThatIsNoFolderAnyMoreIsNotRemovedAfterAMove)
{
    Restart(Global::MoveFiles);
    tree.File("src/F", "a file by now");
    Add("src/F", "F", FileMapping::Selected | FileMapping::Folder);
    Add("src/gone", "gone", FileMapping::Selected | FileMapping::Folder);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(tree.Contents("src"), (FileTree::Snapshot{{"F", "a file by now"}}));
    // The places that they were to have are made all the same.
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"F/", {}}, {"gone/", {}}}));
}

namespace {

class TargetLinksRules : public CopyingFixture
{};

} // namespace

TEST_F(TargetLinksRules, ALinkToAFileInASiblingFolderLeadsThroughTheParent)
{
    tree.File("cloud/Frames/a.tlk", "").File("cloud/Parts/Bolt.prt", "");
    const auto a =
        Add("src/a.tlk", "Frames/a.tlk", FileMapping::Selected, {Link("1", "lib/Bolt.prt")});
    Add("src/lib/Bolt.prt", "Parts/Bolt.prt", FileMapping::NoFlag);
    EXPECT_TRUE(importer->ComputeTargetFileLinks());
    EXPECT_EQ(PathsOf(a->GetTargetFileLinks()), QStringList{"../Parts/Bolt.prt"});
}

TEST_F(TargetLinksRules, ALinkOfAFileToItselfNamesItsCopy)
{
    tree.File("cloud/lib/a (2).tlk", "");
    const auto a =
        Add("src/a.tlk", "lib/a (2).tlk", FileMapping::Selected, {Link("1", "../src/a.tlk")});
    EXPECT_TRUE(importer->ComputeTargetFileLinks());
    EXPECT_EQ(PathsOf(a->GetTargetFileLinks()), QStringList{"a (2).tlk"});
}

TEST_F(TargetLinksRules, AFileOnAnotherDriveIsNamedByItsWholePath)
{
    tree.File("cloud/a.tlk", "");
    const auto a = Add("src/a.tlk", "a.tlk", FileMapping::Selected, {Link("1", "b.tlk")});
    AddPaths(tree.Path("src/b.tlk"), "Q:/lib/b.tlk", FileMapping::NoFlag);
    EXPECT_FALSE(importer->ComputeTargetFileLinks()); // for b.tlk, which has no copy
    EXPECT_EQ(PathsOf(a->GetTargetFileLinks()), QStringList{"Q:/lib/b.tlk"});
}

TEST_F(TargetLinksRules, FoldersCostAPollAndNothingElse)
{
    tree.Folder("src/F").File("cloud/a.tlk", "");
    Add("src/F", "F", FileMapping::Selected | FileMapping::Folder);
    Add("src/a.tlk", "a.tlk", FileMapping::Selected, {Link("1", "x"), Link("2", "vault://y")});
    EXPECT_TRUE(importer->ComputeTargetFileLinks());
    // One for each member, one for each link.
    EXPECT_EQ(controller->polls, 4);
}

namespace {

class RepathingRules : public CopyingFixture
{};

} // namespace

TEST_F(RepathingRules, TheFileIsReadOnlyAgainWhenItIsReportedAsModified)
{
    tree.File("cloud/a.tlk", LinkText({{"1", "old"}}));
    QFile::setPermissions(Cloud("a.tlk"), QFile::ReadOwner | QFile::ReadUser);
    int reports = 0;
    QObject::connect(importer.get(), &FileLinkImporterImp::FileModified, importer.get(),
                     [&](const QString& path) {
                         ++reports;
                         EXPECT_FALSE(QFile::permissions(path) & QFile::WriteOwner);
                         EXPECT_EQ(tree.Read("cloud/a.tlk"), LinkText({{"1", "new"}}));
                     });
    EXPECT_TRUE(importer->RepathFile(Cloud("a.tlk"), FileLinkList{Link("1", "new")}));
    EXPECT_EQ(reports, 1);
    QFile::setPermissions(Cloud("a.tlk"), QFile::ReadOwner | QFile::WriteOwner);
}

TEST_F(RepathingRules, OneFileByPathWithoutLinksIsReportedWithoutAskingThePlugin)
{
    tree.File("cloud/a.tlk", LinkText({{"1", "old"}}));
    const PluginCallLog calls;
    QSignalSpy modified(importer.get(), &FileLinkImporterImp::FileModified);
    EXPECT_TRUE(importer->RepathFile(Cloud("a.tlk"), FileLinkList()));
    EXPECT_EQ(Lines(), QStringList{"INFO Repathing file " + Cloud("a.tlk")});
    EXPECT_EQ(modified.size(), 1);
    EXPECT_TRUE(calls.Calls().isEmpty());
}

TEST_F(RepathingRules, APendingItemWithoutLinksIsDone)
{
    tree.File("cloud/a.tlk", "content");
    const auto root = FolderManager::GetInstance()->GetSyncRootFolder(Cloud());
    const auto item = std::make_shared<SyncItem>(Cloud("a.tlk"), "/a.tlk", "/");
    item->SetAuthenticationId(7);
    item->SetRootFolderId(root->GetId());
    item->SetParentFolderId(root->GetId());
    item->SetSyncOption(SyncItem::RepathPending);
    ASSERT_TRUE(Database().AddOrUpdateFileConfiguration(item));
    QSignalSpy modified(importer.get(), &FileLinkImporterImp::FileModified);
    EXPECT_TRUE(importer->RepathFiles(root->GetId()));
    EXPECT_EQ(modified.size(), 1);
    EXPECT_EQ(Item("a.tlk")->GetSyncOption(), SyncItem::NoSyncOption);
    EXPECT_EQ(tree.Read("cloud/a.tlk"), "content");
}

TEST_F(RepathingRules, TheFirstCopiedFileAmongTheLinksEndsTheSearch)
{
    for (const QString& name : {u"stays.tlk"_s, u"b.tlk"_s, u"c.tlk"_s})
        tree.File("src/" + name, "").File("cloud/" + name, "");
    Add("src/stays.tlk", "stays.tlk", FileMapping::Selected,
        {Link("1", "b.tlk"), Link("2", "c.tlk"), Link("3", "c.tlk")});
    Add("src/b.tlk", "b.tlk", FileMapping::NoFlag);
    Add("src/c.tlk", "c.tlk", FileMapping::Copied);
    EXPECT_TRUE(importer->RepathFiles());
    // To mark: three files, and two of the three links. Then three files, two of them marked.
    EXPECT_EQ(controller->polls, 3 + 2 + 3 + 2);
}

namespace {

class DatabaseRules : public CopyingFixture
{
protected:
    DatabaseRules() : database(WatchedDatabase::Install())
    {
        tree.File("src/a.tlk", "").File("cloud/P/a.tlk", "").File("cloud/P/b.tlk", "");
    }

    FileMappingPointer AddCopied(const FileLinkList& links)
    {
        const auto mapping =
            Add("src/a.tlk", "P/a.tlk", FileMapping::Selected | FileMapping::Copied);
        mapping->SetTargetFileLinks(links);
        return mapping;
    }
    bool Update()
    {
        database->Clear();
        return importer->UpdateSyncDatabase();
    }

    std::shared_ptr<WatchedDatabase> database;
};

} // namespace

TEST_F(DatabaseRules, ALinkThatWasResolvedIsNotLookedUpAgain)
{
    SyncServices::FileLink resolved = Link("1", "b.tlk");
    resolved.ItemId = 0;
    resolved.CloudItemId = "kept";
    AddCopied({resolved, Link("2", "c.tlk")});
    EXPECT_TRUE(Update());
    EXPECT_EQ(database->queried, (QStringList{Cloud("P/a.tlk"), Cloud("P/c.tlk")}));
    const FileLinkList links = Item("P/a.tlk")->GetFileLinks();
    ASSERT_EQ(links.size(), 2);
    EXPECT_EQ(links[0].ItemId, 0);
    EXPECT_EQ(links[0].CloudItemId, "kept");
    EXPECT_EQ(links[1].ItemId, -1);
}

TEST_F(DatabaseRules, ALinkWithoutAnItemKeepsTheCloudIdThatItHad)
{
    SyncServices::FileLink link = Link("1", "c.tlk");
    link.ItemId = -5;
    link.CloudItemId = "earlier";
    AddCopied({link});
    EXPECT_TRUE(Update());
    EXPECT_EQ(Item("P/a.tlk")->GetFileLinks()[0].ItemId, -1);
    EXPECT_EQ(Item("P/a.tlk")->GetFileLinks()[0].CloudItemId, "earlier");
}

TEST_F(DatabaseRules, TheItemIsLookedUpForTheUserOfTheMappingAndMadeForThatOfTheRoot)
{
    AddCopied({});
    EXPECT_TRUE(Update());
    EXPECT_EQ(database->foldersAdded.size(), 1);
    EXPECT_TRUE(Update());
    EXPECT_TRUE(database->foldersAdded.isEmpty());

    Restart();
    const auto mapping = std::make_shared<FileMapping>(tree.Path("src/a.tlk"), Cloud("P/a.tlk"), 8);
    mapping->SetFlag(FileMapping::Selected | FileMapping::Copied, true);
    ASSERT_TRUE(importer->GetFileSet()->AddFile(mapping));
    EXPECT_TRUE(Update());
    // The item of user 7 is not user 8's: a new one is made.
    EXPECT_EQ(database->foldersAdded, QStringList{Cloud("P")});
    EXPECT_FALSE(Database().GetSyncItem(Cloud("P/a.tlk"), true, 8, FileItem::ItemOnly));
    EXPECT_EQ(Item("P/a.tlk")->GetAuthenticationId(), 7);
}

TEST_F(DatabaseRules, ALinkOfAFileToItselfIsResolvedWithoutAQueryAndKnownFromTheNextTimeOn)
{
    // Neither copied nor recorded, so that it is not written once more as the file that it links.
    Restart(Global::UpdateSelectedInDatabase);
    const auto mapping = Add("src/a.tlk", "P/a.tlk");
    mapping->SetTargetFileLinks({Link("1", "a.tlk")});
    for (const bool known : {false, true}) {
        SCOPED_TRACE(known);
        EXPECT_TRUE(Update());
        EXPECT_EQ(database->queried, QStringList{Cloud("P/a.tlk")});
        EXPECT_EQ(database->written, QStringList{Cloud("P/a.tlk")});
        const auto item = Item("P/a.tlk");
        ASSERT_EQ(item->GetFileLinks().size(), 1);
        // An item has no id before it is written for the first time.
        EXPECT_EQ(item->GetFileLinks()[0].ItemId, known ? item->GetId() : -1);
    }
}

TEST_F(DatabaseRules, AnItemThatIsThereKeepsItsPlaceAndCloudPath)
{
    const auto root = FolderManager::GetInstance()->GetSyncRootFolder(Cloud());
    const auto item = std::make_shared<SyncItem>(Cloud("P/a.tlk"), "/elsewhere/a.tlk", "/other");
    item->SetAuthenticationId(7);
    item->SetProductConfigurationId(99);
    item->SetRootFolderId(root->GetId());
    item->SetParentFolderId(root->GetId());
    ASSERT_TRUE(Database().AddOrUpdateFileConfiguration(item));
    AddCopied({Link("1", "c.tlk")});
    EXPECT_TRUE(Update());
    const auto after = Item("P/a.tlk");
    EXPECT_EQ(after->GetCloudPath(), "/elsewhere/a.tlk");
    EXPECT_EQ(after->GetCloudRoot(), "/other");
    EXPECT_EQ(after->GetProductConfigurationId(), 99);
    EXPECT_EQ(after->GetParentFolderId(), root->GetId());
    EXPECT_EQ(PathsOf(after->GetFileLinks()), QStringList{"c.tlk"});
}

TEST_F(DatabaseRules, AFileWithoutLinksEmptiesTheListOfItsItem)
{
    const auto mapping = AddCopied({Link("1", "b.tlk")});
    EXPECT_TRUE(Update());
    ASSERT_EQ(Item("P/a.tlk")->GetFileLinks().size(), 1);
    mapping->SetTargetFileLinks({});
    EXPECT_TRUE(Update());
    EXPECT_TRUE(Item("P/a.tlk")->GetFileLinks().isEmpty());
}

TEST_F(DatabaseRules, AFolderIsAskedForEvenWhenAnotherFileOfItWasRecordedInTheSameRun)
{
    AddCopied({});
    const auto other = Add("src/b.tlk", "P/b.tlk", FileMapping::Selected | FileMapping::Copied);
    EXPECT_TRUE(Update());
    EXPECT_EQ(database->foldersAdded, (QStringList{Cloud("P"), Cloud("P")}));
    EXPECT_EQ(Item("P/a.tlk")->GetParentFolderId(), Item("P/b.tlk")->GetParentFolderId());
}

} // namespace Halvern::Test
