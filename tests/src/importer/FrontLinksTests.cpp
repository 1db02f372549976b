// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"

#include "filelink/FileLinkImporter.h"

#include <QtTest/QSignalSpy>

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;
using FileLink::FileLinkImporter;

/// The operations of the public importer on files that lie in the cloud cache folder.
class FrontLinks : public ImporterFixture
{
protected:
    FrontLinks()
    {
        Assembly(u"cloud/a.tasm"_s, {u"1 ../src/b.tlk"_s});
        tree.File(u"src/b.tlk"_s);
    }
    std::shared_ptr<SyncItem> Item(const QString& name) const
    {
        return Database().GetSyncItem(Cloud(name), true, 7, SyncServices::FileItem::ItemOnly);
    }
    void ExpectLinkedFileIsIn() const
    {
        EXPECT_EQ(tree.Contents(u"cloud"_s),
                  (FileTree::Snapshot{{u"a.tasm"_s, "cloud/a.tasm\nlink 1 src/b.tlk\n"},
                                      {u"src/b.tlk"_s, "src/b.tlk"}}));
        EXPECT_NE(Item(u"src/b.tlk"_s), nullptr);
    }

    FileLinkImporter importer;
};

TEST_F(FrontLinks, OfACloudFileAreBroughtInAndTheFileIsRewritten)
{
    QSignalSpy copied(&importer, &FileLinkImporter::FileCopied);
    EXPECT_TRUE(importer.CopyFileLinksToCloudCacheFolder({}, Cloud(u"a.tasm"_s), {}, {}));
    ExpectLinkedFileIsIn();
    EXPECT_EQ(copied.size(), 1);
    EXPECT_EQ(importer.GetCopyOption(), Global::LinkedFilesOnly);
}

TEST_F(FrontLinks, OfASourceComeWithoutTheSource)
{
    Assembly(u"src/c.tasm"_s, {u"1 b.tlk"_s});
    EXPECT_TRUE(importer.CopyFileLinksToCloudCacheFolder(Source(u"c.tasm"_s), Cloud(u"P/c.tasm"_s),
                                                         Global::RenameLinkedFiles, {u"tasm"_s}));
    EXPECT_FALSE(tree.Exists(u"cloud/P/c.tasm"_s));
    EXPECT_EQ(tree.Read(u"cloud/P/b.tlk"_s), "src/b.tlk");
    EXPECT_EQ(importer.GetCopyOption(), Global::LinkedFilesOnly | Global::RenameLinkedFiles);
    const auto set = importer.GetFileSet();
    ASSERT_EQ(set->GetCount(), 2);
    EXPECT_TRUE(set->GetFiles()[1]->HasFlag(FileMapping::FileLinksNotSupported)) << "only tasm";
}

TEST_F(FrontLinks, OfSeveralCloudFilesAreBroughtInByTheOptionOfEach)
{
    EXPECT_FALSE(importer.ExtractAndImportFileLinksOfCloudFiles(-1, {}, {}));
    EXPECT_TRUE(importer.ExtractAndImportFileLinksOfCloudFiles(1, {Cloud(u"a.tasm"_s)},
                                                               {SyncItem::ImportLinkedFiles}));
    ExpectLinkedFileIsIn();
}

TEST_F(FrontLinks, ThatArePendingAreWrittenByTheIdOfTheirFolder)
{
    const auto root =
        SyncFolderManagerLib::FolderManager::GetInstance()->GetSyncRootFolder(Cloud());
    const auto item = std::make_shared<SyncItem>(Cloud(u"a.tasm"_s), u"/a.tasm"_s, u"/"_s);
    item->SetAuthenticationId(7);
    item->SetRootFolderId(root->GetId());
    item->SetParentFolderId(root->GetId());
    item->SetSyncOption(SyncItem::RepathPending);
    item->SetFileLinks({{-1, u"1"_s, u"new.tlk"_s, {}}});
    ASSERT_TRUE(Database().AddOrUpdateFileConfiguration(item));
    QSignalSpy modified(&importer, &FileLinkImporter::FileModified);
    EXPECT_FALSE(importer.RepathFiles(-1));
    EXPECT_TRUE(importer.RepathFiles(root->GetId()));
    EXPECT_EQ(tree.Read(u"cloud/a.tasm"_s), "cloud/a.tasm\nlink 1 new.tlk\n");
    EXPECT_EQ(Item(u"a.tasm"_s)->GetSyncOption(), SyncItem::NoSyncOption);
    EXPECT_EQ(modified.size(), 1);
}

TEST_F(FrontLinks, AreWrittenIntoOneFileAsGiven)
{
    EXPECT_FALSE(importer.RepathFile(Cloud(u"gone.tasm"_s), {{-1, u"1"_s, u"x.tlk"_s, {}}}));
    EXPECT_TRUE(importer.RepathFile(Cloud(u"a.tasm"_s), {{-1, u"1"_s, u"x.tlk"_s, {}}}));
    EXPECT_EQ(tree.Read(u"cloud/a.tasm"_s), "cloud/a.tasm\nlink 1 x.tlk\n");
}

} // namespace Halvern::Test
