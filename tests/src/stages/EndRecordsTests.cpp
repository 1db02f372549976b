// SPDX-License-Identifier: Apache-2.0

// Each way out of each stage from copying on: what it answers, every record that it leaves with the
// function that the record names, and what it left undone.

#include "CopyingFixture.h"
#include "LockedFile.h"
#include "RecordLines.h"
#include "WatchedDatabase.h"

#include "syncservices/FolderManager.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using SyncFolderManagerLib::FolderManager;

RecordsOf Of(const char* function)
{
    return RecordsOf(QString::fromLatin1("FileLinkImporterImp::") + QString::fromLatin1(function));
}

const RecordsOf copyFiles = Of("CopyFiles");
const RecordsOf copyFile = Of("CopyFile");
const RecordsOf createFolder = Of("CreateFolder");
const RecordsOf repathFiles = Of("RepathFiles");
const RecordsOf repathMapping = Of("RepathFile");
const RecordsOf repathPath = Of("RepathFile");
const RecordsOf repathItems = Of("RepathFiles");
const RecordsOf update = Of("UpdateSyncDatabase");
const RecordsOf updateNode = Of("UpdateSyncDatabase");
const RecordsOf logTree = Of("LogFileTree");
const RecordsOf logNode = Of("LogFileTree");

const QString canceled = Of("CheckIfCanceled").Info("Operation canceled");
const QString waits = u". File is locked. File will be repathed after it is "
                      "unlocked."_s;
const QString unsupported = u". File links not supported for this file type."_s;

class EndRecords : public CopyingFixture
{
protected:
    QStringList Records() const { return RecordLines(log, tree.Path()); }
    /// A cancel at this poll and all that follow.
    void CancelFrom(int poll)
    {
        log.Clear();
        controller->polls = 0;
        controller->from = poll;
    }
    void RemoveSet()
    {
        importer = std::make_unique<FileLinkImporterImp>(controller);
        log.Clear();
    }
    /// A member that is copied and has its links already.
    FileMappingPointer AddCopied(const QString& name, const FileLinkList& targetLinks = {},
                                 FileMappingFlag flags = FileMapping::Selected)
    {
        tree.File("src/" + name, "").File("cloud/" + name, LinkText({{"1", "old"}}));
        const auto mapping = Add("src/" + name, name, flags | FileMapping::Copied);
        mapping->SetTargetFileLinks(targetLinks);
        return mapping;
    }
    std::shared_ptr<SyncItem> Root() const
    {
        return FolderManager::GetInstance()->GetSyncRootFolder(Cloud());
    }
    std::shared_ptr<SyncItem> AddPendingItem(const QString& name)
    {
        const auto item = std::make_shared<SyncItem>(Cloud(name), "/" + name, "/");
        item->SetAuthenticationId(7);
        item->SetRootFolderId(Root()->GetId());
        item->SetParentFolderId(Root()->GetId());
        item->SetSyncOption(SyncItem::RepathPending);
        item->SetFileLinks({Link("1", "new")});
        EXPECT_TRUE(Database().AddOrUpdateFileConfiguration(item));
        return item;
    }
};

class CopyingEnds : public EndRecords
{
protected:
    const QStringList frame = {copyFiles.Info("Begin copying files"),
                               ClosingRecord("Finished copying files")};

    QStringList Framed(const QStringList& records) const
    {
        return QStringList{frame[0]} + records + QStringList{frame[1]};
    }
    /// A file whose type supports no links, so that no tree is logged.
    FileMappingPointer AddPlain(const QString& name)
    {
        tree.File("src/" + name);
        return Add("src/" + name, name, FileMapping::Selected | FileMapping::FileLinksNotSupported);
    }
    static QString Copied(const QString& name)
    {
        return copyFile.Debug("File copied successfully from src/" + name + " to cloud/" + name);
    }
    static QString Summary(const QString& counters)
    {
        return copyFiles.Info("Finished copying files. " + counters);
    }
};

} // namespace

TEST_F(CopyingEnds, WithoutASetInTheFrameAlone)
{
    RemoveSet();
    EXPECT_FALSE(importer->CopyFiles());
    EXPECT_EQ(Records(), frame);
}

TEST_F(CopyingEnds, WithAnEmptySetInTheFrameAlone)
{
    EXPECT_FALSE(importer->CopyFiles());
    EXPECT_EQ(Records(), frame);
    EXPECT_EQ(controller->polls, 0);
}

TEST_F(CopyingEnds, ACancelBeforeAFileLeavesOutTheSummary)
{
    AddPlain("a.prt");
    AddPlain("b.prt");
    CancelFrom(1);
    EXPECT_FALSE(importer->CopyFiles());
    EXPECT_EQ(Records(), Framed({canceled}));
    EXPECT_EQ(tree.Contents("cloud"), FileTree::Snapshot());
    CancelFrom(2);
    EXPECT_FALSE(importer->CopyFiles());
    EXPECT_EQ(Records(), Framed({Copied("a.prt"), canceled}));
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"a.prt", "src/a.prt"}}));
}

TEST_F(CopyingEnds, ACancelAfterTheSourceTreeWasLoggedLeavesOutTheTargetTree)
{
    tree.File("src/a.tlk", "");
    Add("src/a.tlk", "a.tlk");
    CancelFrom(1);
    EXPECT_FALSE(importer->CopyFiles());
    EXPECT_EQ(Records(), (QStringList{logTree.Debug("***Source file tree***"),
                                      logNode.Debug("src/a.tlk (Selected)")}) +
                             Framed({canceled}));
}

TEST_F(CopyingEnds, ACancelBeforeAnEmptiedFolderIsRemovedLeavesOutTheSummary)
{
    Restart(Global::MoveFiles);
    tree.Folder("src/F");
    Add("src/F", "F", FileMapping::Selected | FileMapping::Folder);
    CancelFrom(2);
    EXPECT_FALSE(importer->CopyFiles());
    EXPECT_EQ(Records(), Framed({canceled}));
    EXPECT_TRUE(tree.Exists("src/F"));
}

TEST_F(CopyingEnds, ACancelWhileLinksAreComputedChangesNeitherResultNorSummary)
{
    AddPlain("a.prt");
    AddPlain("b.prt");
    CancelFrom(3);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(Records(), Framed({Copied("a.prt"), Copied("b.prt"),
                                 Summary("Copied: 2, Folders created: 0, Failed: 0, Skipped: 0, "
                                         "Total: 2"),
                                 canceled}));
}

TEST_F(CopyingEnds, EveryFailureOfAFileOrFolderNamesItsOperation)
{
    tree.File("cloud/P", "file").File("cloud/old.prt", "old").Folder("src/F").Folder("src/folder");
    QFile::setPermissions(Cloud("old.prt"), QFile::ReadOwner | QFile::ReadUser);
    AddPlain("a.prt")->SetTargetFile(Cloud("P/a.prt"), true);
    AddPlain("old.prt");
    AddPlain("gone.prt");
    tree.Remove("src/gone.prt");
    Add("src/F", "P/F", FileMapping::Selected | FileMapping::Folder);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(
        Records(),
        Framed({copyFile.Error("Failed to create folder cloud/P"),
                copyFile.Info("Copy skipped for file src/old.prt. Target file cloud/old.prt exists "
                              "and is read-only."),
                copyFile.Error("Failed to copy file src/gone.prt to cloud/gone.prt. Source file is "
                               "not found."),
                createFolder.Error("Failed to create folder cloud/P/F"),
                Summary("Copied: 0, Folders created: 0, Failed: 4, Skipped: 0, Total: 4")}));
    QFile::setPermissions(Cloud("old.prt"), QFile::ReadOwner | QFile::WriteOwner);
}

namespace {

class TargetLinksEnd : public EndRecords
{};

} // namespace

TEST_F(TargetLinksEnd, WithoutARecordWhateverTheResult)
{
    EXPECT_FALSE(importer->ComputeTargetFileLinks());
    AddCopied("a.tlk")->SetSourceFileLinks({Link("1", "gone"), Link("2", "vault://x")});
    EXPECT_TRUE(importer->ComputeTargetFileLinks());
    Add("src/missing.tlk", "missing.tlk");
    EXPECT_FALSE(importer->ComputeTargetFileLinks());
    RemoveSet();
    EXPECT_FALSE(importer->ComputeTargetFileLinks());
    EXPECT_EQ(Records(), QStringList());
}

TEST_F(TargetLinksEnd, ACancelAtALinkIsFoundAgainBeforeTheNextFile)
{
    const auto a = AddCopied("a.tlk", {Link("1", "earlier")});
    a->SetSourceFileLinks({Link("1", "b.tlk"), Link("2", "b.tlk")});
    const auto b = AddCopied("b.tlk", {Link("1", "earlier")});
    for (int poll : {1, 2, 3}) {
        SCOPED_TRACE(poll);
        CancelFrom(poll);
        EXPECT_FALSE(importer->ComputeTargetFileLinks());
        EXPECT_EQ(Records(), QStringList(poll == 1 ? 1 : 2, canceled));
        EXPECT_EQ(PathsOf(a->GetTargetFileLinks()), QStringList{"earlier"});
        EXPECT_EQ(PathsOf(b->GetTargetFileLinks()), QStringList{"earlier"});
    }
    CancelFrom(4);
    EXPECT_FALSE(importer->ComputeTargetFileLinks());
    EXPECT_EQ(Records(), QStringList{canceled});
    EXPECT_EQ(PathsOf(a->GetTargetFileLinks()), (QStringList{"b.tlk", "b.tlk"}));
    EXPECT_EQ(PathsOf(b->GetTargetFileLinks()), QStringList{"earlier"});
}

namespace {

class RepathingEnds : public EndRecords
{
protected:
    const QStringList frame = {repathFiles.Info("Begin repathing file links in target"),
                               ClosingRecord("Finished repathing file links in target")};

    QStringList Framed(const QStringList& records) const
    {
        return QStringList{frame[0]} + records + QStringList{frame[1]};
    }
    static bool NeedsRepath(const FileMappingPointer& mapping)
    {
        return mapping->HasFlag(FileMapping::NeedsRepath);
    }
};

} // namespace

TEST_F(RepathingEnds, WithoutFilesThatSupportLinksBeforeItBegins)
{
    EXPECT_TRUE(importer->RepathFiles());
    AddCopied("a.tlk", {}, FileMapping::Selected | FileMapping::FileLinksNotSupported);
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_EQ(Records(), QStringList());
    EXPECT_EQ(controller->polls, 0);
}

TEST_F(RepathingEnds, WithoutASetInTheFrameAlone)
{
    RemoveSet();
    EXPECT_FALSE(importer->RepathFiles());
    EXPECT_EQ(Records(), frame);
}

TEST_F(RepathingEnds, ACancelWhileFilesAreMarkedMarksNoneOfTheFollowing)
{
    const auto a = AddCopied("a.tlk");
    const auto b = AddCopied("b.tlk");
    b->SetFlag(FileMapping::Copied, false);
    b->SetSourceFileLinks({Link("1", "a.tlk")});
    for (int poll : {1, 2, 3}) {
        SCOPED_TRACE(poll);
        a->SetFlag(FileMapping::NeedsRepath, false);
        CancelFrom(poll);
        EXPECT_FALSE(importer->RepathFiles());
        EXPECT_EQ(Records(), Framed({canceled}));
        EXPECT_EQ(NeedsRepath(a), poll > 1);
        EXPECT_FALSE(NeedsRepath(b));
    }
}

TEST_F(RepathingEnds, ACancelBetweenTwoFilesKeepsTheMarkOfTheSecond)
{
    const auto a = AddCopied("a.tlk");
    const auto b = AddCopied("b.tlk");
    const QString skipped = "Repathing skipped for file cloud/%1. No links found.";
    // Two polls to mark, then one before and one after each file.
    CancelFrom(3);
    EXPECT_FALSE(importer->RepathFiles());
    EXPECT_EQ(Records(), Framed({canceled}));
    CancelFrom(4);
    EXPECT_FALSE(importer->RepathFiles());
    // The poll after the file, and the one before the next.
    EXPECT_EQ(Records(), Framed({repathMapping.Debug(skipped.arg("a.tlk")), canceled, canceled}));
    EXPECT_TRUE(NeedsRepath(a));
    CancelFrom(5);
    EXPECT_FALSE(importer->RepathFiles());
    EXPECT_EQ(Records(), Framed({repathMapping.Debug(skipped.arg("a.tlk")), canceled}));
    EXPECT_FALSE(NeedsRepath(a));
    EXPECT_TRUE(NeedsRepath(b));
    EXPECT_FALSE(b->HasFlag(FileMapping::Repathed));
}

TEST_F(RepathingEnds, EveryFileThatIsNotRewrittenIsNamedByItsOperation)
{
    AddCopied("gone.tlk");
    tree.Remove("cloud/gone.tlk");
    AddCopied("held.tlk", {Link("1", "x")});
    AddCopied("other.tlk", {}, FileMapping::Selected | FileMapping::FileLinksNotSupported);
    AddCopied("empty.tlk");
    const LockedFile locked(Cloud("held.tlk"));
    EXPECT_FALSE(importer->RepathFiles());
    EXPECT_EQ(
        Records(),
        Framed(
            {repathFiles.Debug("Repathing skipped for file src/other.tlk" + unsupported),
             repathMapping.Error("Failed to repath file links in cloud/gone.tlk. File not found."),
             repathMapping.Info("Repathing skipped for file cloud/held.tlk" + waits),
             repathMapping.Debug("Repathing skipped for file cloud/empty.tlk. No links found.")}));
}

TEST_F(RepathingEnds, OneFileByPathSaysWhyItIsNotRewritten)
{
    tree.File("cloud/a.tlk", LinkText({{"1", "old"}}));
    EXPECT_FALSE(importer->RepathFile(Cloud("gone.tlk"), FileLinkList{Link("1", "x")}));
    {
        const LockedFile locked(Cloud("a.tlk"));
        EXPECT_FALSE(importer->RepathFile(Cloud("a.tlk"), FileLinkList{Link("1", "x")}));
    }
    EXPECT_EQ(Records(),
              (QStringList{repathPath.Error("Failed to repath file cloud/gone.tlk. File "
                                            "not found."),
                           repathPath.Info("Repathing skipped for file cloud/a.tlk" + waits)}));
}

namespace {

class DeferredRepathingEnds : public EndRecords
{};

} // namespace

TEST_F(DeferredRepathingEnds, WithoutARecordWhenThereIsNothingToDo)
{
    const auto outside = Database().AddRootFolder(tree.Path("elsewhere"), "/", 7);
    ASSERT_TRUE(outside && Root());
    EXPECT_FALSE(importer->RepathFiles(-1));
    EXPECT_FALSE(importer->RepathFiles(4711));
    EXPECT_TRUE(importer->RepathFiles(outside->GetId()));
    EXPECT_TRUE(importer->RepathFiles(Root()->GetId()));
    EXPECT_TRUE(importer->RepathFiles(QList<std::shared_ptr<SyncItem>>()));
    EXPECT_EQ(Records(), QStringList());
    EXPECT_EQ(controller->polls, 0);
}

TEST_F(DeferredRepathingEnds, ALockedFileIsNamedAtTheLevelOfDetails)
{
    tree.File("cloud/a.tlk", LinkText({{"1", "old"}}));
    const auto item = AddPendingItem("a.tlk");
    const LockedFile locked(Cloud("a.tlk"));
    EXPECT_TRUE(importer->RepathFiles({item}));
    EXPECT_EQ(Records(),
              QStringList{repathItems.Debug("Repathing skipped for file cloud/a.tlk" + waits)});
    EXPECT_EQ(item->GetSyncOption(), SyncItem::RepathPending);
}

TEST_F(DeferredRepathingEnds, ACancelKeepsEveryFollowingItemPending)
{
    const auto gone = AddPendingItem("gone.tlk");
    const auto other = AddPendingItem("other.tlk");
    const QList<std::shared_ptr<SyncItem>> items = {gone, other};
    for (int poll : {1, 2, 3}) {
        SCOPED_TRACE(poll);
        CancelFrom(poll);
        EXPECT_FALSE(importer->RepathFiles(items));
        EXPECT_EQ(Records(), QStringList{canceled});
        EXPECT_EQ(gone->GetSyncOption(),
                  poll == 3 ? SyncItem::NoSyncOption : SyncItem::RepathPending);
        EXPECT_EQ(other->GetSyncOption(), SyncItem::RepathPending);
    }
    // The entry for a folder does not look at what became of its items.
    CancelFrom(1);
    EXPECT_TRUE(importer->RepathFiles(Root()->GetId()));
    EXPECT_EQ(Records(), QStringList{canceled});
}

namespace {

class DatabaseUpdateEnds : public EndRecords
{
protected:
    DatabaseUpdateEnds() : database(WatchedDatabase::Install()) {}

    const QStringList frame = {update.Info("Begin updating sync database"),
                               ClosingRecord("Finished updating sync database")};

    QStringList Framed(const QStringList& records) const
    {
        return QStringList{frame[0]} + records + QStringList{frame[1]};
    }

    std::shared_ptr<WatchedDatabase> database;
};

} // namespace

TEST_F(DatabaseUpdateEnds, WithoutFilesThatSupportLinksBeforeItBegins)
{
    EXPECT_TRUE(importer->UpdateSyncDatabase());
    AddCopied("a.tlk", {}, FileMapping::Selected | FileMapping::FileLinksNotSupported);
    EXPECT_TRUE(importer->UpdateSyncDatabase());
    EXPECT_EQ(Records(), QStringList());
    EXPECT_EQ(controller->polls, 0);
}

TEST_F(DatabaseUpdateEnds, WithoutSetRootsOrDatabaseInTheFrameAlone)
{
    AddCopied("linked.tlk", {}, FileMapping::NoFlag);
    EXPECT_FALSE(importer->UpdateSyncDatabase());
    EXPECT_EQ(Records(), frame);
    AddCopied("a.tlk");
    FolderManager::GetInstance()->SetSyncDatabase(nullptr);
    log.Clear();
    EXPECT_FALSE(importer->UpdateSyncDatabase());
    EXPECT_EQ(Records(), frame);
    RemoveSet();
    EXPECT_FALSE(importer->UpdateSyncDatabase());
    EXPECT_EQ(Records(), frame);
    EXPECT_EQ(controller->polls, 0);
    EXPECT_TRUE(database->written.isEmpty());
}

TEST_F(DatabaseUpdateEnds, AnUnsupportedRootIsNamedByTheStageAndALinkedFileByItsHolder)
{
    const FileMappingFlag no = FileMapping::FileLinksNotSupported;
    AddCopied("a.tlk", {Link("1", "b.tlk")});
    AddCopied("b.tlk", {}, no);
    AddCopied("c.tlk", {}, FileMapping::Selected | no);
    EXPECT_TRUE(importer->UpdateSyncDatabase());
    const QString skipped = "Sync database update skipped for file cloud/%1" + unsupported;
    EXPECT_EQ(Records(),
              Framed({updateNode.Debug(skipped.arg("b.tlk")), update.Debug(skipped.arg("c.tlk"))}));
}

TEST_F(DatabaseUpdateEnds, ACancelBeforeARootWritesNothingMore)
{
    AddCopied("a.tlk");
    AddCopied("b.tlk");
    CancelFrom(1);
    EXPECT_FALSE(importer->UpdateSyncDatabase());
    EXPECT_EQ(Records(), Framed({canceled}));
    EXPECT_TRUE(database->written.isEmpty());
    CancelFrom(2);
    EXPECT_FALSE(importer->UpdateSyncDatabase());
    EXPECT_EQ(Records(), Framed({canceled}));
    EXPECT_EQ(database->written, QStringList{Cloud("a.tlk")});
}

TEST_F(DatabaseUpdateEnds, ACancelWhileLinksAreMergedIsFoundAgainBeforeTheNextRoot)
{
    AddCopied("a.tlk", {Link("1", "x"), Link("2", "y")});
    AddCopied("b.tlk");
    EXPECT_TRUE(importer->UpdateSyncDatabase());
    const FileLinkList before = Item("a.tlk")->GetFileLinks();
    database->Clear();
    CancelFrom(2);
    EXPECT_FALSE(importer->UpdateSyncDatabase());
    EXPECT_EQ(Records(), Framed({canceled, canceled}));
    EXPECT_TRUE(database->written.isEmpty());
    EXPECT_EQ(Item("a.tlk")->GetFileLinks(), before);
}

TEST_F(DatabaseUpdateEnds, ACancelWhileLinksOfTheLastRootAreMergedFails)
{
    AddCopied("a.tlk", {Link("1", "x")});
    EXPECT_TRUE(importer->UpdateSyncDatabase());
    database->Clear();
    CancelFrom(2);
    EXPECT_FALSE(importer->UpdateSyncDatabase());
    EXPECT_EQ(Records(), Framed({canceled}));
    EXPECT_TRUE(database->written.isEmpty());
}

TEST_F(DatabaseUpdateEnds, ACancelInALinkedFileLeavesItsHoldersUnwritten)
{
    AddCopied("a.tlk", {Link("1", "b.tlk")});
    AddCopied("b.tlk", {Link("1", "x")}, FileMapping::NoFlag);
    EXPECT_TRUE(importer->UpdateSyncDatabase());
    database->Clear();
    // The root, the linked file, and the first of its known links.
    CancelFrom(3);
    EXPECT_FALSE(importer->UpdateSyncDatabase());
    EXPECT_EQ(Records(), Framed({canceled}));
    EXPECT_TRUE(database->written.isEmpty());
}

namespace {

class FileTreeLogEnds : public EndRecords
{};

} // namespace

TEST_F(FileTreeLogEnds, WithDetailsOffWithoutARecord)
{
    tree.File("src/a.tlk", "");
    Add("src/a.tlk", "a.tlk");
    log.SetLevel("CorsyncFileLink", log4cplus::INFO_LOG_LEVEL);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(Records(),
              (QStringList{copyFiles.Info("Begin copying files"),
                           copyFiles.Info("Finished copying files. Copied: 1, Folders created: 0, "
                                          "Failed: 0, Skipped: 0, Total: 1"),
                           ClosingRecord("Finished copying files")}));
}

TEST_F(FileTreeLogEnds, WithoutRootsAfterItsHeader)
{
    tree.File("src/a.tlk", "");
    Add("src/a.tlk", "a.tlk", FileMapping::NoFlag);
    CancelFrom(1);
    EXPECT_FALSE(importer->CopyFiles());
    EXPECT_EQ(Records().first(), logTree.Debug("***Source file tree***"));
    EXPECT_EQ(Records()[1], copyFiles.Info("Begin copying files"));
}

TEST_F(FileTreeLogEnds, AtAFileWithoutATargetWithoutARecordForWhatItLinks)
{
    tree.File("src/b.tlk", "");
    const auto a = Add("src/a.tlk", QString());
    a->SetTargetFileLinks({Link("1", Cloud("b.tlk"))});
    Add("src/b.tlk", "b.tlk", FileMapping::NoFlag);
    EXPECT_TRUE(importer->CopyFiles());
    const QStringList records = Records();
    const qsizetype header = records.indexOf(logTree.Debug("***Target file tree***"));
    ASSERT_GT(header, 0);
    EXPECT_EQ(records.mid(header + 1), QStringList{ClosingRecord("Finished copying files")});
}

TEST_F(FileTreeLogEnds, AFileWithoutFlagsHasNoParenthesis)
{
    tree.File("src/a.tlk", "").File("src/b.tlk", "");
    Add("src/a.tlk", "a.tlk", FileMapping::Selected, {Link("1", "b.tlk")});
    Add("src/b.tlk", "b.tlk", FileMapping::NoFlag);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(Records().mid(1, 2),
              (QStringList{logNode.Debug("src/a.tlk (Selected)"), logNode.Debug("--->src/b.tlk")}));
}

} // namespace Halvern::Test
