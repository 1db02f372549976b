// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

#include <QtCore/QRegularExpression>

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;
using Option = SyncServices::SyncItem::SyncOption;

/// Files that lie in the cloud cache folder already.
class CloudFiles : public ImporterFixture
{
protected:
    bool Run(const QStringList& names, const QList<Option>& options, int id = 1)
    {
        QStringList files;
        for (const QString& name : names)
            files.append(Cloud(name));
        return importer.ExtractAndImportFileLinksOfCloudFiles(id, files, options);
    }
    std::shared_ptr<SyncItem> Item(const QString& name)
    {
        return Database().GetSyncItem(Cloud(name), true, 7, SyncServices::FileItem::ItemOnly);
    }
    QString Processing(const QString& name) const
    {
        return u"INFO Processing file links in %1"_s.arg(Cloud(name));
    }
    QString Updating(const QString& name) const
    {
        return u"INFO Updating file links of file %1 in database"_s.arg(Cloud(name));
    }

    FileLinkImporterImp importer{nullptr};
};

TEST_F(CloudFiles, TheArgumentsAreCheckedInOrder)
{
    tree.File(u"cloud/a.tasm"_s);
    const LogCapture log;
    EXPECT_FALSE(Run({u"a.tasm"_s}, {SyncItem::NoSyncOption}, -1));
    EXPECT_FALSE(Run({}, {}, -1));
    EXPECT_TRUE(Run({}, {}));
    EXPECT_TRUE(Run({}, {SyncItem::NoSyncOption}));
    EXPECT_FALSE(Run({u"a.tasm"_s}, {}));
    EXPECT_FALSE(Run({u"a.tasm"_s}, {SyncItem::NoSyncOption, SyncItem::NoSyncOption}));
    EXPECT_EQ(log.Lines(), QStringList());
    EXPECT_EQ(importer.GetFileSet(), nullptr);
}

TEST_F(CloudFiles, EverySyncOptionBitTurnsIntoItsCopyOption)
{
    Assembly(u"cloud/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"cloud/b.tlk"_s);
    for (quint32 bits = 0; bits <= 0x7c0; bits += 0x40) {
        SCOPED_TRACE(bits);
        const LogCapture log;
        ASSERT_TRUE(Run({u"a.tasm"_s}, {Option(bits)}));
        const bool links = bits & 0x80;
        Global::CopyOption expected = Global::LinkedFilesOnly;
        if (bits & 0x40)
            expected |= Global::UpdateSelectedInDatabase;
        if (bits & 0x100)
            expected |= Global::KeepExistingLinkedFiles;
        if (bits & 0x200)
            expected |= Global::RenameLinkedFiles;
        if (!links)
            expected = Global::RecordSelectedInDatabase | Global::ServicesCopyOption;
        EXPECT_EQ(importer.GetCopyOption(), expected);
        EXPECT_EQ(log.Count(Processing(u"a.tasm"_s)), links ? 1 : 0);
        EXPECT_EQ(log.Count(Updating(u"a.tasm"_s)), links ? 0 : 1);
    }
}

TEST_F(CloudFiles, TheLineComesBeforeTheWork)
{
    tree.File(u"cloud/a.tasm"_s);
    const LogCapture log;
    ASSERT_TRUE(Run({u"a.tasm"_s}, {SyncItem::ImportLinkedFiles}));
    EXPECT_EQ(log.Lines().value(0), Processing(u"a.tasm"_s));
    EXPECT_EQ(log.Lines().value(1), u"INFO Begin extracting file links"_s);
}

TEST_F(CloudFiles, LinkedFilesAreBroughtInAndTheFileIsRewritten)
{
    Assembly(u"cloud/a.tasm"_s, {u"1 ../src/b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    ASSERT_TRUE(Run({u"a.tasm"_s}, {SyncItem::ImportLinkedFiles}));
    EXPECT_EQ(tree.Contents(u"cloud"_s),
              (FileTree::Snapshot{{u"a.tasm"_s, "cloud/a.tasm\nlink 1 src/b.tlk\n"},
                                  {u"src/b.tlk"_s, "src/b.tlk"}}));
    ASSERT_NE(Item(u"a.tasm"_s), nullptr);
    EXPECT_NE(Item(u"src/b.tlk"_s), nullptr);
}

TEST_F(CloudFiles, WithoutThatOptionOnlyTheDatabaseLearnsOfTheLinks)
{
    Assembly(u"cloud/a.tasm"_s, {u"1 lib/b.tlk"_s, u"2 ../src/c.tlk"_s});
    tree.File(u"cloud/lib/b.tlk"_s).File(u"src/c.tlk"_s);
    const FileTree::Snapshot before = tree.Contents(u"cloud"_s);
    const LogCapture log;
    ASSERT_TRUE(Run({u"a.tasm"_s}, {SyncItem::NoSyncOption}));
    EXPECT_EQ(tree.Contents(u"cloud"_s), before);
    const auto item = Item(u"a.tasm"_s);
    ASSERT_NE(item, nullptr);
    // The file outside has no place in the cloud, so that nothing can link it there.
    ASSERT_EQ(item->GetFileLinks().size(), 1);
    EXPECT_EQ(item->GetFileLinks()[0].Path, u"lib/b.tlk"_s);
    EXPECT_EQ(item->GetFileLinksExtractedAtFileDate().toSecsSinceEpoch(),
              tree.Modified(u"cloud/a.tasm"_s).toSecsSinceEpoch());
    EXPECT_EQ(Item(u"lib/b.tlk"_s), nullptr);
    const QStringList stages = log.Lines().filter(u"INFO Begin"_s);
    EXPECT_EQ(stages, (QStringList{u"INFO Begin extracting file links"_s,
                                   u"INFO Begin updating sync database"_s}));
    EXPECT_TRUE(Member(importer, u"cloud/a.tasm"_s)
                    ->HasFlag(FileMapping::IncludeInDatabase | FileMapping::ServicesOption));
}

TEST_F(CloudFiles, TheSupportedTypesOfTheServicesAreUsed)
{
    settings.supportedFileTypes = QStringList{u"prt"_s};
    Restart();
    Assembly(u"cloud/a.tasm"_s, {u"1 b.tlk"_s});
    PluginCallLog calls;
    ASSERT_TRUE(Run({u"a.tasm"_s}, {SyncItem::NoSyncOption}));
    EXPECT_EQ(calls.Calls(), QStringList());
    EXPECT_TRUE(Member(importer, u"cloud/a.tasm"_s)->HasFlag(FileMapping::FileLinksNotSupported));
    EXPECT_EQ(Item(u"a.tasm"_s), nullptr);
}

TEST_F(CloudFiles, EachFileIsHandledByItsOwnOptionAndAFailureDoesNotStopTheOthers)
{
    Assembly(u"cloud/a.tasm"_s, {u"1 ../src/b.tlk"_s});
    Assembly(u"cloud/c.tasm"_s, {u"1 ../src/b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    const LogCapture log;
    ASSERT_TRUE(Run({u"missing.tasm"_s, u"gone.tasm"_s, u"a.tasm"_s, u"c.tasm"_s},
                    {SyncItem::ImportLinkedFiles, SyncItem::NoSyncOption,
                     SyncItem::ImportLinkedFiles, SyncItem::NoSyncOption}));
    const QStringList lines = log.Lines().filter(QRegularExpression(u"^INFO (Proc|Upd)"_s));
    EXPECT_EQ(lines, (QStringList{Processing(u"missing.tasm"_s), Updating(u"gone.tasm"_s),
                                  Processing(u"a.tasm"_s), Updating(u"c.tasm"_s)}));
    EXPECT_EQ(tree.Read(u"cloud/a.tasm"_s), "cloud/a.tasm\nlink 1 src/b.tlk\n");
    EXPECT_EQ(tree.Read(u"cloud/c.tasm"_s), "cloud/c.tasm\nlink 1 ../src/b.tlk\n");
}

TEST_F(CloudFiles, WithSyncOffNoFileIsTouchedAndTheResultIsStillTrue)
{
    settings.cloudCacheFolderSyncEnabled = false;
    Restart();
    tree.File(u"cloud/a.tasm"_s).File(u"cloud/b.tasm"_s);
    const LogCapture log;
    EXPECT_TRUE(
        Run({u"a.tasm"_s, u"b.tasm"_s}, {SyncItem::ImportLinkedFiles, SyncItem::NoSyncOption}));
    EXPECT_EQ(log.Lines(), (QStringList{Processing(u"a.tasm"_s), Updating(u"b.tasm"_s)}));
    EXPECT_EQ(importer.GetFileSet(), nullptr);
}

TEST_F(CloudFiles, TheDatabaseIsUpdatedForAUserWhoIsNotLoggedIn)
{
    settings.loggedIn = false;
    Restart();
    tree.File(u"cloud/a.tasm"_s).File(u"cloud/b.tasm"_s);
    ASSERT_TRUE(
        Run({u"a.tasm"_s, u"b.tasm"_s}, {SyncItem::ImportLinkedFiles, SyncItem::NoSyncOption}));
    EXPECT_EQ(Item(u"a.tasm"_s), nullptr);
    EXPECT_NE(Item(u"b.tasm"_s), nullptr);
}

TEST_F(CloudFiles, AFileThatIsUnchangedSinceItIsInTheDatabaseIsNotOpenedAgain)
{
    Assembly(u"cloud/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"cloud/b.tlk"_s);
    ASSERT_TRUE(Run({u"a.tasm"_s}, {SyncItem::NoSyncOption}));
    PluginCallLog calls;
    ASSERT_TRUE(Run({u"a.tasm"_s}, {SyncItem::NoSyncOption}));
    EXPECT_EQ(Short(calls.Calls()), QStringList{u"GetFileLinks cloud/b.tlk"_s});
}

TEST_F(CloudFiles, ACancelStopsBetweenFiles)
{
    tree.File(u"cloud/a.tasm"_s).File(u"cloud/b.tasm"_s);
    const auto controller = std::make_shared<PollCounter>(1);
    FileLinkImporterImp canceled(controller);
    const LogCapture log;
    EXPECT_FALSE(canceled.ExtractAndImportFileLinksOfCloudFiles(1, {Cloud(u"a.tasm"_s)},
                                                                {SyncItem::NoSyncOption}));
    EXPECT_EQ(log.Lines(), QStringList{u"INFO Operation canceled"_s});
    // Arguments are checked before the first poll.
    EXPECT_TRUE(canceled.ExtractAndImportFileLinksOfCloudFiles(1, {}, {}));
    EXPECT_EQ(controller->Polls(), 1);
}

} // namespace Halvern::Test
