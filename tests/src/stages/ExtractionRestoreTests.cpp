// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

#include "importer/FileLinkExtractorImp.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;
using Link = SyncServices::FileLink;

/// Links that are restored where they are still current: from the copy history for files outside
/// the cloud cache folder, from the sync database for those inside.
class ExtractionRestore : public ImporterFixture
{
protected:
    FileMappingPointer History(const QString& source, const QString& target,
                               const QStringList& linkPaths, const QDateTime& extractedAt)
    {
        const auto mapping = std::make_shared<FileMapping>(tree.Path(source), target, 7);
        mapping->SetSourceFileLinks(MakeLinks(linkPaths));
        mapping->SetSourceFileLinksExtractedAtFileDate(extractedAt);
        mapping->SetFlag(FileMapping::Copied, true);
        return mapping;
    }
    static QList<Link> MakeLinks(const QStringList& linkPaths)
    {
        QList<Link> links;
        for (const QString& path : linkPaths)
            links.append({-1, u"old"_s, path, {}});
        return links;
    }
    void Record(const FileMappingPointer& mapping)
    {
        ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({mapping}, {}));
    }
    void RecordItem(const QString& path, const QStringList& linkPaths, const QDateTime& extractedAt)
    {
        using SyncFolderManagerLib::FolderManager;
        const auto root = FolderManager::GetInstance()->GetSyncRootFolder(Cloud());
        ASSERT_NE(root, nullptr);
        const auto item = std::make_shared<SyncItem>(path, u"/x"_s, root->GetCloudRoot());
        item->SetAuthenticationId(7);
        item->SetRootFolderId(root->GetId());
        item->SetParentFolderId(root->GetId());
        item->SetFileLinks(MakeLinks(linkPaths));
        item->SetFileLinksExtractedAtFileDate(extractedAt);
        ASSERT_TRUE(Database().AddOrUpdateFileConfiguration(item));
    }
    bool ExtractSelected(const QString& name, const QStringList& fileTypes = {})
    {
        return importer.Initialize({Source(name)}, Cloud(), false, {}, fileTypes) &&
               importer.ExtractFileLinks();
    }
    bool ExtractCloudFile(const QString& name, const QStringList& fileTypes = {})
    {
        return importer.Initialize({}, Cloud(name), true, {}, fileTypes) &&
               importer.ExtractFileLinks();
    }
    QStringList LinkPaths(const QString& source)
    {
        QStringList result;
        for (const Link& link : Member(importer, source)->GetSourceFileLinks())
            result.append(link.Path);
        return result;
    }
    QString FromHistory(const QString& name) const
    {
        return u"INFO File link extraction skipped for file %1. File links restored from copy "
               "history."_s.arg(Source(name));
    }
    QString FromDatabase(const QString& name) const
    {
        return u"INFO File link extraction skipped for file %1. File links restored from sync "
               "database."_s.arg(Cloud(name));
    }

    FileLinkImporterImp importer{nullptr};
    PluginCallLog calls;
};

TEST_F(ExtractionRestore, AnUnchangedFileTakesItsLinksFromTheHistoryWithoutBeingOpened)
{
    Assembly(u"src/a.tasm"_s, {u"1 new.tlk"_s}).Touch(u"src/a.tasm"_s, Time());
    Record(History(u"src/a.tasm"_s, {}, {u"old.txt"_s}, Time()));
    const LogCapture log;
    ASSERT_TRUE(ExtractSelected(u"a.tasm"_s));
    EXPECT_EQ(LinkPaths(u"src/a.tasm"_s), QStringList{u"old.txt"_s});
    EXPECT_EQ(calls.Calls(), QStringList());
    const QStringList lines = log.Lines();
    const qsizetype at = lines.indexOf(FromHistory(u"a.tasm"_s));
    ASSERT_GE(at, 0);
    EXPECT_EQ(lines.value(at + 1), u"INFO 1 file links found in %1"_s.arg(Source(u"a.tasm"_s)));
    EXPECT_EQ(lines.value(at + 2),
              u"WARN File link: Path: old.txt RefId: old (File not found: %1)"_s.arg(
                  Source(u"old.txt"_s)));
}

TEST_F(ExtractionRestore, AFileOneSecondNewerThanTheHistorySaysIsOpened)
{
    Assembly(u"src/a.tasm"_s, {u"1 new.tlk"_s}).Touch(u"src/a.tasm"_s, Time(1));
    Record(History(u"src/a.tasm"_s, {}, {u"old.txt"_s}, Time()));
    ASSERT_TRUE(ExtractSelected(u"a.tasm"_s));
    EXPECT_EQ(LinkPaths(u"src/a.tasm"_s), QStringList{u"new.tlk"_s});
    const FileMappingPointer mapping = Member(importer, u"src/a.tasm"_s);
    EXPECT_EQ(mapping->GetSourceFileLinksExtractedAtFileDate(), Time(1));
    EXPECT_EQ(mapping->GetSourceFileLinksExtractedAtFileDate().timeSpec(), Qt::UTC);
}

TEST_F(ExtractionRestore, AFileOlderThanTheHistorySaysIsOpened)
{
    Assembly(u"src/a.tasm"_s, {u"1 new.tlk"_s}).Touch(u"src/a.tasm"_s, Time(-1));
    Record(History(u"src/a.tasm"_s, {}, {u"old.txt"_s}, Time()));
    ASSERT_TRUE(ExtractSelected(u"a.tasm"_s));
    EXPECT_EQ(LinkPaths(u"src/a.tasm"_s), QStringList{u"new.tlk"_s});
}

TEST_F(ExtractionRestore, PartsOfASecondDoNotCount)
{
    Assembly(u"src/a.tasm"_s, {u"1 new.tlk"_s}).Touch(u"src/a.tasm"_s, Time().addMSecs(900));
    Record(History(u"src/a.tasm"_s, {}, {u"old.txt"_s}, Time().addMSecs(100)));
    ASSERT_TRUE(ExtractSelected(u"a.tasm"_s));
    EXPECT_EQ(LinkPaths(u"src/a.tasm"_s), QStringList{u"old.txt"_s});
}

TEST_F(ExtractionRestore, AnEntryWithoutExtractionDateDoesNotSpareTheFileFromBeingOpened)
{
    Assembly(u"src/a.tasm"_s, {u"1 new.tlk"_s});
    Record(History(u"src/a.tasm"_s, {}, {u"old.txt"_s}, {}));
    ASSERT_TRUE(ExtractSelected(u"a.tasm"_s));
    EXPECT_EQ(LinkPaths(u"src/a.tasm"_s), QStringList{u"new.tlk"_s});
}

TEST_F(ExtractionRestore, AFileAtTheStartOfTimeIsOpenedWhenNoExtractionDateIsRecorded)
{
    Assembly(u"src/a.tasm"_s, {u"1 new.tlk"_s})
        .Touch(u"src/a.tasm"_s, QDateTime::fromSecsSinceEpoch(0));
    Record(History(u"src/a.tasm"_s, {}, {u"old.txt"_s}, {}));
    ASSERT_TRUE(ExtractSelected(u"a.tasm"_s));
    EXPECT_EQ(LinkPaths(u"src/a.tasm"_s), QStringList{u"new.tlk"_s});
}

TEST_F(ExtractionRestore, AVanishedFileIsMissingEvenWhenItsLinksWereReadAtTheStartOfTime)
{
    tree.File(u"src/a.tasm"_s);
    Record(History(u"src/a.tasm"_s, {}, {u"old.txt"_s}, QDateTime::fromSecsSinceEpoch(0)));
    ASSERT_TRUE(importer.Initialize({Source(u"a.tasm"_s)}, Cloud(), false, {}, {}));
    tree.Remove(u"src/a.tasm"_s);
    const LogCapture log;
    ASSERT_TRUE(importer.ExtractFileLinks());
    EXPECT_TRUE(log.Has(
        u"ERROR Failed to extract file links from %1. File not found."_s.arg(Source(u"a.tasm"_s))));
}

TEST_F(ExtractionRestore, ASecondImportOpensNothingThatDidNotChange)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    {
        FileLinkImporterImp first(nullptr);
        ASSERT_TRUE(first.Initialize({Source(u"a.tasm"_s)}, Cloud(), false, {}, {}));
        ASSERT_TRUE(first.ExtractFileLinks());
        EXPECT_EQ(calls.Calls().size(), 2);
    }
    calls.Clear();
    ASSERT_TRUE(ExtractSelected(u"a.tasm"_s));
    EXPECT_EQ(calls.Calls(), QStringList());
    EXPECT_EQ(Members(importer), (QStringList{u"src/a.tasm"_s, u"src/b.tlk"_s}));
}

TEST_F(ExtractionRestore, ASelectedFileKeepsItsTargetAndItsFlags)
{
    Assembly(u"src/a.tasm"_s, {}).Touch(u"src/a.tasm"_s, Time());
    tree.File(u"cloud/earlier.tasm"_s);
    Record(History(u"src/a.tasm"_s, Cloud(u"earlier.tasm"_s), {}, Time()));
    ASSERT_TRUE(ExtractSelected(u"a.tasm"_s));
    const FileMappingPointer mapping = Member(importer, u"src/a.tasm"_s);
    EXPECT_EQ(mapping->GetTargetFile(), Cloud(u"a.tasm"_s));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::Selected);
}

TEST_F(ExtractionRestore, ALinkedFileGoesBackToThePlaceOfItsEarlierCopy)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s).File(u"cloud/lib/earlier.tlk"_s);
    Record(History(u"src/b.tlk"_s, Cloud(u"lib/earlier.tlk"_s), {}, {}));
    ASSERT_TRUE(ExtractSelected(u"a.tasm"_s));
    const FileMappingPointer mapping = Member(importer, u"src/b.tlk"_s);
    EXPECT_EQ(mapping->GetTargetFile(), Cloud(u"lib/earlier.tlk"_s));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::NoFlag);
}

TEST_F(ExtractionRestore, ALinkedFileWhoseEarlierCopyIsGoneHasNoTarget)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    Record(History(u"src/b.tlk"_s, Cloud(u"lib/gone.tlk"_s), {}, {}));
    ASSERT_TRUE(ExtractSelected(u"a.tasm"_s));
    EXPECT_FALSE(Member(importer, u"src/b.tlk"_s)->HasTargetFile());
}

TEST_F(ExtractionRestore, AFileOfAnUnsupportedTypeTakesTheEarlierPlaceButNoLinks)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s).File(u"cloud/lib/earlier.tlk"_s).Touch(u"src/b.tlk"_s, Time());
    Record(History(u"src/b.tlk"_s, Cloud(u"lib/earlier.tlk"_s), {u"old.txt"_s}, Time()));
    ASSERT_TRUE(ExtractSelected(u"a.tasm"_s, {u"tasm"_s}));
    const FileMappingPointer mapping = Member(importer, u"src/b.tlk"_s);
    EXPECT_EQ(mapping->GetTargetFile(), Cloud(u"lib/earlier.tlk"_s));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::FileLinksNotSupported);
    EXPECT_EQ(LinkPaths(u"src/b.tlk"_s), QStringList());
}

TEST_F(ExtractionRestore, TheHistoryOfAnotherUserDoesNotCount)
{
    Assembly(u"src/a.tasm"_s, {u"1 new.tlk"_s}).Touch(u"src/a.tasm"_s, Time());
    const auto mapping = std::make_shared<FileMapping>(Source(u"a.tasm"_s), QString(), 8);
    mapping->SetSourceFileLinksExtractedAtFileDate(Time());
    Record(mapping);
    ASSERT_TRUE(ExtractSelected(u"a.tasm"_s));
    EXPECT_EQ(LinkPaths(u"src/a.tasm"_s), QStringList{u"new.tlk"_s});
}

TEST_F(ExtractionRestore, AnUnchangedCloudFileTakesItsLinksFromTheDatabase)
{
    Assembly(u"cloud/a.tasm"_s, {u"1 new.tlk"_s}).Touch(u"cloud/a.tasm"_s, Time());
    RecordItem(Cloud(u"a.tasm"_s), {u"old.txt"_s}, Time());
    const LogCapture log;
    ASSERT_TRUE(ExtractCloudFile(u"a.tasm"_s));
    EXPECT_EQ(LinkPaths(u"cloud/a.tasm"_s), QStringList{u"old.txt"_s});
    EXPECT_TRUE(log.Has(FromDatabase(u"a.tasm"_s)));
    EXPECT_EQ(calls.Calls(), QStringList());
}

TEST_F(ExtractionRestore, ACloudFileOneSecondNewerThanTheDatabaseSaysIsOpened)
{
    Assembly(u"cloud/a.tasm"_s, {u"1 new.tlk"_s}).Touch(u"cloud/a.tasm"_s, Time(1));
    RecordItem(Cloud(u"a.tasm"_s), {u"old.txt"_s}, Time());
    ASSERT_TRUE(ExtractCloudFile(u"a.tasm"_s));
    EXPECT_EQ(LinkPaths(u"cloud/a.tasm"_s), QStringList{u"new.tlk"_s});
    EXPECT_EQ(Member(importer, u"cloud/a.tasm"_s)->GetSourceFileLinksExtractedAtFileDate(),
              Time(1));
}

TEST_F(ExtractionRestore, ACloudFileIgnoresTheCopyHistory)
{
    Assembly(u"cloud/a.tasm"_s, {u"1 new.tlk"_s}).Touch(u"cloud/a.tasm"_s, Time());
    Record(History(u"cloud/a.tasm"_s, {}, {u"old.txt"_s}, Time()));
    ASSERT_TRUE(ExtractCloudFile(u"a.tasm"_s));
    EXPECT_EQ(LinkPaths(u"cloud/a.tasm"_s), QStringList{u"new.tlk"_s});
}

TEST_F(ExtractionRestore, ALinkedCloudFileOfAnUnsupportedTypeAsksNeitherDatabaseNorPlugin)
{
    Assembly(u"src/a.tasm"_s, {u"1 ../cloud/b.tlk"_s});
    tree.File(u"cloud/b.tlk"_s).Touch(u"cloud/b.tlk"_s, Time());
    RecordItem(Cloud(u"b.tlk"_s), {u"old.txt"_s}, Time());
    const LogCapture log;
    ASSERT_TRUE(ExtractSelected(u"a.tasm"_s, {u"tasm"_s}));
    EXPECT_EQ(LinkPaths(u"cloud/b.tlk"_s), QStringList());
    EXPECT_TRUE(log.Has(u"DEBUG File link extraction skipped for file %1. File links not supported "
                        "for this file type."_s.arg(Cloud(u"b.tlk"_s))));
}

TEST_F(ExtractionRestore, WhatWasReadOutsideTheCloudIsRecordedInTheHistoryAndWhatLiesInItIsNot)
{
    Assembly(u"src/a.tasm"_s, {u"1 ../cloud/b.tlk"_s, u"2 c.xyz"_s});
    tree.File(u"cloud/b.tlk"_s).File(u"src/c.xyz"_s);
    {
        FileLinkImporterImp first(nullptr);
        ASSERT_TRUE(
            first.Initialize({Source(u"a.tasm"_s)}, Cloud(), false, {}, {u"tasm"_s, u"tlk"_s}));
        ASSERT_TRUE(first.ExtractFileLinks());
        EXPECT_TRUE(Database().GetFileCopyHistoryByAuthenticationId(7).isEmpty());
    }
    const FileMappingList rows = Database().GetFileCopyHistoryByAuthenticationId(7);
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows[0]->GetSourceFile(), Source(u"a.tasm"_s));
    EXPECT_EQ(rows[0]->GetSourceFileLinks().size(), 2);
}

} // namespace Halvern::Test
