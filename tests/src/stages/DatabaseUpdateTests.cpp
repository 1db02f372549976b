// SPDX-License-Identifier: Apache-2.0

#include "CopyingFixture.h"
#include "WatchedDatabase.h"

#include "syncservices/FolderManager.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using SyncFolderManagerLib::FolderManager;

/// Members whose copies are in place, with the links that the copies hold.
class DatabaseUpdate : public CopyingFixture
{
protected:
    DatabaseUpdate() : database(WatchedDatabase::Install()) {}

    FileMappingPointer AddCopy(const QString& name, const QStringList& targetLinks,
                               FileMappingFlag flags = FileMapping::Selected | FileMapping::Copied)
    {
        tree.File("src/" + name, "").File("cloud/" + name, "");
        const auto mapping = Add("src/" + name, name, flags);
        FileLinkList links;
        for (const QString& path : targetLinks)
            links.append(Link(QString::number(links.size() + 1), path));
        mapping->SetTargetFileLinks(links);
        mapping->SetTargetFileLinksExtractedAtFileDate(extracted);
        return mapping;
    }
    FileMappingPointer AddLinked(const QString& name, const QStringList& targetLinks = {})
    {
        return AddCopy(name, targetLinks, FileMapping::Copied);
    }
    bool Update()
    {
        database->Clear();
        log.Clear();
        controller->polls = 0;
        return importer->UpdateSyncDatabase();
    }
    int IdOf(const QString& name) const { return Item(name) ? Item(name)->GetId() : -1; }
    qsizetype Queries(const QString& name) const { return database->queried.count(Cloud(name)); }
    QStringList Written() const
    {
        QStringList names;
        for (const QString& path : database->written)
            names.append(path.mid(Cloud().size() + 1));
        return names;
    }
    static QStringList Frame()
    {
        return {"INFO Begin updating sync database", "INFO Finished updating sync database"};
    }

    const QDateTime extracted = QDateTime::fromSecsSinceEpoch(1'600'000'000, Qt::UTC);
    std::shared_ptr<WatchedDatabase> database;
};

} // namespace

TEST_F(DatabaseUpdate, ASetOfUnsupportedTypesSucceedsWithoutAWord)
{
    AddCopy("a.tlk", {},
            FileMapping::Selected | FileMapping::Copied | FileMapping::FileLinksNotSupported);
    EXPECT_TRUE(Update());
    EXPECT_TRUE(Lines().isEmpty());
    EXPECT_TRUE(database->written.isEmpty());
}

TEST_F(DatabaseUpdate, AnEmptySetSucceedsWithoutAWord)
{
    EXPECT_TRUE(Update());
    EXPECT_TRUE(Lines().isEmpty());
}

TEST_F(DatabaseUpdate, WithoutASetFailsWithinTheStageFrame)
{
    importer = std::make_unique<FileLinkImporterImp>(controller);
    EXPECT_FALSE(Update());
    EXPECT_EQ(Lines(), Frame());
}

TEST_F(DatabaseUpdate, ASetWithoutSelectedFilesFailsWithinTheStageFrame)
{
    AddLinked("a.tlk");
    EXPECT_FALSE(Update());
    EXPECT_EQ(Lines(), Frame());
}

TEST_F(DatabaseUpdate, WithoutARootItemFailsWithinTheStageFrame)
{
    AddCopy("a.tlk", {});
    database->refuseWrites = true;
    EXPECT_FALSE(Update());
    EXPECT_EQ(Lines(), Frame());
}

TEST_F(DatabaseUpdate, WithoutADatabaseFailsWithinTheStageFrame)
{
    AddCopy("a.tlk", {});
    FolderManager::GetInstance()->SetSyncDatabase(nullptr);
    EXPECT_FALSE(Update());
    EXPECT_EQ(Lines(), Frame());
}

TEST_F(DatabaseUpdate, ANewItemTakesItsPlaceAndIdsFromTheRootItem)
{
    const auto root = FolderManager::GetInstance()->GetSyncRootFolder(Cloud());
    root->SetProductConfigurationId(12);
    root->SetSourceConsumerId("consumer");
    AddCopy("P/sub/a.tlk", {});
    EXPECT_TRUE(Update());
    const auto item = Item("P/sub/a.tlk");
    ASSERT_TRUE(item);
    EXPECT_EQ(item->GetKind(), SyncItem::File);
    EXPECT_EQ(item->GetLocalPath(), Cloud("P/sub/a.tlk"));
    EXPECT_EQ(item->GetCloudPath(), "/P/sub/a.tlk");
    EXPECT_EQ(item->GetCloudRoot(), root->GetCloudRoot());
    EXPECT_EQ(item->GetAuthenticationId(), 7);
    EXPECT_EQ(item->GetProductConfigurationId(), 12);
    EXPECT_EQ(item->GetSourceConsumerId(), "consumer");
    EXPECT_EQ(item->GetRootFolderId(), root->GetId());
    EXPECT_EQ(item->GetParentFolderId(), IdOf("P/sub"));
    EXPECT_EQ(item->GetFileLinksExtractedAtFileDate(), extracted);
    EXPECT_EQ(item->GetSyncOption(), SyncItem::NoSyncOption);
    EXPECT_EQ(Lines(), Frame());
}

TEST_F(DatabaseUpdate, LinkedFilesAreWrittenBeforeTheFilesThatLinkThem)
{
    AddCopy("a.tlk", {"b.tlk", "c.tlk"});
    AddLinked("b.tlk", {"d.tlk"});
    AddLinked("c.tlk");
    AddLinked("d.tlk");
    EXPECT_TRUE(Update());
    EXPECT_EQ(Written(), (QStringList{"d.tlk", "b.tlk", "c.tlk", "a.tlk"}));
}

TEST_F(DatabaseUpdate, AFileLinkedTwiceIsWrittenOnceAndNotAskedForAgain)
{
    AddCopy("a.tlk", {"shared.tlk"});
    AddCopy("b.tlk", {"SHARED.tlk"});
    AddLinked("shared.tlk");
    EXPECT_TRUE(Update());
    EXPECT_EQ(Written(), (QStringList{"shared.tlk", "a.tlk", "b.tlk"}));
    // Asked for once, to see whether it has an item; both links know it from then on.
    EXPECT_EQ(Queries("shared.tlk"), 1);
    EXPECT_EQ(Queries("SHARED.tlk"), 0);
    EXPECT_EQ(Item("a.tlk")->GetFileLinks()[0].ItemId, IdOf("shared.tlk"));
    EXPECT_EQ(Item("b.tlk")->GetFileLinks()[0].ItemId, IdOf("shared.tlk"));
    EXPECT_EQ(Item("b.tlk")->GetFileLinks()[0].CloudItemId, Item("shared.tlk")->GetCloudItemId());
    EXPECT_FALSE(Item("b.tlk")->GetFileLinks()[0].CloudItemId.isEmpty());
}

TEST_F(DatabaseUpdate, ALinkToAFileOfAnEarlierImportIsResolvedFromTheDatabase)
{
    AddCopy("P/b.tlk", {});
    EXPECT_TRUE(Update());
    Restart();
    AddCopy("a.tlk", {"P/b.tlk"});
    EXPECT_TRUE(Update());
    EXPECT_EQ(Queries("P/b.tlk"), 1);
    EXPECT_EQ(Item("a.tlk")->GetFileLinks()[0].ItemId, IdOf("P/b.tlk"));
    EXPECT_EQ(Item("a.tlk")->GetFileLinks()[0].CloudItemId, Item("P/b.tlk")->GetCloudItemId());
}

TEST_F(DatabaseUpdate, ALinkToAFileOutsideTheCloudFolderStaysUnresolved)
{
    AddCopy("a.tlk", {tree.Path("far/b.tlk"), "vault://x/c.tlk"});
    const auto outside =
        AddPaths(tree.Path("far/b.tlk"), tree.Path("far/b.tlk"), FileMapping::NoFlag);
    tree.File("far/b.tlk", "");
    EXPECT_TRUE(Update());
    const FileLinkList links = Item("a.tlk")->GetFileLinks();
    EXPECT_EQ(PathsOf(links), (QStringList{tree.Path("far/b.tlk"), "vault://x/c.tlk"}));
    EXPECT_EQ(links[0].ItemId, -1);
    EXPECT_EQ(links[1].ItemId, -1);
    EXPECT_EQ(Written(), QStringList{"a.tlk"});
}

TEST_F(DatabaseUpdate, ATargetOutsideTheCloudFolderFailsAndWritesNothing)
{
    tree.File("far/a.tlk", "");
    const auto mapping = AddPaths(tree.Path("src/a.tlk"), tree.Path("far/a.tlk"),
                                  FileMapping::Selected | FileMapping::Copied);
    mapping->SetTargetFileLinks({Link("1", Cloud("b.tlk"))});
    AddLinked("b.tlk");
    EXPECT_FALSE(Update());
    EXPECT_TRUE(database->written.isEmpty());
    EXPECT_EQ(Lines(), Frame());
}

TEST_F(DatabaseUpdate, AMissingTargetFailsButItsLinkedFilesAndOtherRootsAreWritten)
{
    AddCopy("a.tlk", {"b.tlk"});
    AddLinked("b.tlk");
    AddCopy("c.tlk", {});
    tree.Remove("cloud/a.tlk");
    EXPECT_FALSE(Update());
    EXPECT_EQ(Written(), (QStringList{"b.tlk", "c.tlk"}));
}

TEST_F(DatabaseUpdate, AFailingChildDoesNotMakeItsParentFail)
{
    AddCopy("a.tlk", {"b.tlk"});
    AddLinked("b.tlk");
    tree.Remove("cloud/b.tlk");
    EXPECT_TRUE(Update());
    EXPECT_EQ(Written(), QStringList{"a.tlk"});
    EXPECT_EQ(Item("a.tlk")->GetFileLinks()[0].ItemId, -1);
}

TEST_F(DatabaseUpdate, AFolderThatCannotBeRecordedFailsTheFile)
{
    AddCopy("P/a.tlk", {});
    FolderManager::GetInstance()->GetSyncRootFolder(Cloud());
    database->refuseFolders = true;
    EXPECT_FALSE(Update());
    EXPECT_TRUE(database->written.isEmpty());
}

TEST_F(DatabaseUpdate, ARefusedWriteIsNotNoticed)
{
    AddCopy("a.tlk", {});
    FolderManager::GetInstance()->GetSyncRootFolder(Cloud());
    class RefusingFiles : public WatchedDatabase
    {
    public:
        using WatchedDatabase::WatchedDatabase;
        bool AddOrUpdateFileConfiguration(Item) override { return false; }
    };
    FolderManager::GetInstance()->SetSyncDatabase(std::make_shared<RefusingFiles>(database));
    EXPECT_TRUE(Update());
    EXPECT_FALSE(Item("a.tlk"));
}

TEST_F(DatabaseUpdate, TheFolderIsAskedForOncePerFile)
{
    AddCopy("P/a.tlk", {"b.tlk", "../Q/c.tlk"});
    AddLinked("P/b.tlk");
    AddLinked("Q/c.tlk");
    EXPECT_TRUE(Update());
    EXPECT_EQ(database->foldersAdded, (QStringList{Cloud("P"), Cloud("Q"), Cloud("P")}));
    EXPECT_TRUE(Update());
    EXPECT_TRUE(database->foldersAdded.isEmpty());
}

TEST_F(DatabaseUpdate, OnlyRecordedOrCopiedFilesAreWritten)
{
    struct Row
    {
        const char* name;
        FileMappingFlag flags;
        Global::CopyOption options;
        bool written;
    };
    const FileMappingFlag selected = FileMapping::Selected;
    const Row rows[] = {
        {"copied", selected | FileMapping::Copied, Global::NoCopyOption, true},
        {"recorded", selected | FileMapping::IncludeInDatabase, Global::NoCopyOption, true},
        {"neither", selected, Global::NoCopyOption, false},
        {"neither, all selected are wanted", selected, Global::UpdateSelectedInDatabase, true},
        {"copied, for the services", selected | FileMapping::Copied, Global::ServicesCopyOption,
         true},
        {"neither, for the services", selected, Global::ServicesCopyOption, false},
        {"neither, both options", selected,
         Global::ServicesCopyOption | Global::UpdateSelectedInDatabase, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Restart(row.options);
        AddCopy("a.tlk", {}, row.flags);
        EXPECT_TRUE(Update());
        EXPECT_EQ(database->written.size(), row.written ? 1 : 0);
        EXPECT_EQ(Lines(), Frame());
    }
}

TEST_F(DatabaseUpdate, LinkedFilesThatAreNeitherCopiedNorRecordedArePassedOverWithTheirLinks)
{
    Restart(Global::UpdateSelectedInDatabase);
    AddCopy("a.tlk", {"b.tlk", "d.tlk"});
    AddCopy("b.tlk", {"c.tlk"}, FileMapping::NoFlag);
    AddLinked("c.tlk");
    AddCopy("d.tlk", {}, FileMapping::IncludeInDatabase);
    EXPECT_TRUE(Update());
    EXPECT_EQ(Written(), (QStringList{"d.tlk", "a.tlk"}));
}

TEST_F(DatabaseUpdate, WithTheServicesOptionLinkedFilesAreNotWrittenEvenWhenCopied)
{
    Restart(Global::ServicesCopyOption);
    AddCopy("a.tlk", {"b.tlk", "c.tlk"});
    AddLinked("b.tlk");
    AddCopy("c.tlk", {});
    EXPECT_TRUE(Update());
    EXPECT_EQ(Written(), (QStringList{"c.tlk", "a.tlk"}));
    EXPECT_EQ(Item("a.tlk")->GetFileLinks()[0].ItemId, -1);
    EXPECT_EQ(Item("a.tlk")->GetFileLinks()[1].ItemId, IdOf("c.tlk"));
}

TEST_F(DatabaseUpdate, UnsupportedTypesArePassedOverAndSaidSo)
{
    const FileMappingFlag unsupported = FileMapping::Copied | FileMapping::FileLinksNotSupported;
    AddCopy("a.tlk", {"b.tlk"});
    AddCopy("b.tlk", {"c.tlk"}, unsupported);
    AddLinked("c.tlk");
    AddCopy("d.tlk", {}, FileMapping::Selected | unsupported);
    EXPECT_TRUE(Update());
    EXPECT_EQ(Written(), QStringList{"a.tlk"});
    const auto line = [&](const QString& name) {
        return "DEBUG Sync database update skipped for file " + Cloud(name) +
               ". File links not supported for this file type.";
    };
    EXPECT_EQ(Lines(), (QStringList{Frame()[0], line("b.tlk"), line("d.tlk"), Frame()[1]}));
}

TEST_F(DatabaseUpdate, OptionBitsFollowTheFlagsBothWaysAndOthersStay)
{
    const auto mapping = AddCopy("a.tlk", {});
    mapping->SetFlag(FileMapping::NeedsRepath | FileMapping::SkipFileLinks, true);
    EXPECT_TRUE(Update());
    auto item = Item("a.tlk");
    EXPECT_EQ(item->GetSyncOption(), SyncItem::RepathPending | SyncItem::SkipFileLinks);
    item->SetSyncOption(SyncItem::KeepExistingLinkedFiles, true);
    ASSERT_TRUE(Database().AddOrUpdateFileConfiguration(item));

    mapping->SetFlag(FileMapping::NeedsRepath, false);
    EXPECT_TRUE(Update());
    EXPECT_EQ(Item("a.tlk")->GetSyncOption(),
              SyncItem::SkipFileLinks | SyncItem::KeepExistingLinkedFiles);

    mapping->SetFlag(FileMapping::SkipFileLinks, false);
    mapping->SetFlag(FileMapping::NeedsRepath, true);
    EXPECT_TRUE(Update());
    EXPECT_EQ(Item("a.tlk")->GetSyncOption(),
              SyncItem::RepathPending | SyncItem::KeepExistingLinkedFiles);
}

TEST_F(DatabaseUpdate, FilesInACycleAllKnowEachOther)
{
    AddCopy("a.tlk", {"b.tlk"});
    AddLinked("b.tlk", {"a.tlk", "b.tlk"});
    EXPECT_TRUE(Update());
    EXPECT_EQ(Item("a.tlk")->GetFileLinks()[0].ItemId, IdOf("b.tlk"));
    EXPECT_EQ(Item("b.tlk")->GetFileLinks()[0].ItemId, IdOf("a.tlk"));
    EXPECT_EQ(Item("b.tlk")->GetFileLinks()[1].ItemId, IdOf("b.tlk"));
    EXPECT_EQ(Database().GetAllItems(7).size(), 3); // with the root
}

TEST_F(DatabaseUpdate, ASecondUpdateChangesNothing)
{
    AddCopy("a.tlk", {"b.tlk", "P/c.tlk", "missing.tlk"});
    AddLinked("b.tlk", {"P/c.tlk"});
    AddLinked("P/c.tlk");
    EXPECT_TRUE(Update());
    const auto before = Database().GetAllItems(7);
    EXPECT_TRUE(Update());
    const auto after = Database().GetAllItems(7);
    ASSERT_EQ(before.size(), after.size());
    for (qsizetype i = 0; i < before.size(); ++i) {
        EXPECT_EQ(before[i]->GetId(), after[i]->GetId());
        EXPECT_EQ(before[i]->GetCloudItemId(), after[i]->GetCloudItemId());
        EXPECT_EQ(before[i]->GetFileLinks(), after[i]->GetFileLinks());
        EXPECT_EQ(before[i]->GetSyncOption(), after[i]->GetSyncOption());
    }
}

TEST_F(DatabaseUpdate, SharedSubTreesAreWorkedThroughOnce)
{
    // Twenty levels, each linking the next twice: a million paths, whose last file is missing.
    const int levels = 20;
    for (int i = 0; i < levels; ++i) {
        const QString next = u"%1.tlk"_s.arg(i + 1);
        AddCopy(u"%1.tlk"_s.arg(i), {next, next},
                i == 0 ? FileMapping::Selected | FileMapping::Copied : FileMapping::Copied);
    }
    AddLinked(u"%1.tlk"_s.arg(levels));
    tree.Remove(u"cloud/%1.tlk"_s.arg(levels));
    EXPECT_TRUE(Update());
    EXPECT_EQ(database->written.size(), levels);
    EXPECT_LT(controller->polls, 10 * levels);
}

} // namespace Halvern::Test
