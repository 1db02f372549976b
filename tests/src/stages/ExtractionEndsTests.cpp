// SPDX-License-Identifier: Apache-2.0

// Each way out of the extractor's operations: the answer, every record with the function that it
// names, and what the file's mapping, the set and the history hold afterwards.

#include "ImporterFixture.h"
#include "LogCapture.h"
#include "RecordLines.h"

#include "importer/FileLinkExtractorImp.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;
using FileLink::FileCopyHistory;
using FileLink::FileLinkExtractorImp;
using FileLink::FileSet;
using Link = SyncServices::FileLink;

namespace {

RecordsOf Of(const QString& function)
{
    return RecordsOf(u"FileLinkExtractorImp::"_s + function);
}
const RecordsOf extractSet = Of(u"ExtractFileLinks"_s);
const RecordsOf extractMapping = Of(u"ExtractFileLinks"_s);
const RecordsOf extractFile = Of(u"ExtractFileLinks"_s);
const RecordsOf logLinks = Of(u"LogFileLinks"_s);
const QString canceled = Of(u"CheckIfCanceled"_s).Info(u"File link operation canceled"_s);
const QString begin = extractSet.Info(u"Begin extracting file links"_s);
const QString finished = ClosingRecord(u"Finished extracting file links"_s);
const QString skipped = u"File link extraction skipped for file "_s;
const QString unsupported = u". File links not supported for this file type."_s;

QString Reads(const QString& file)
{
    return extractFile.Trace(u"Extracting file links from "_s + file);
}
QString Found(int count, const QString& file)
{
    return logLinks.Info(count == 0 ? u"No file links found in "_s + file
                                    : u"%1 file links found in %2"_s.arg(count).arg(file));
}
QString Shows(const QString& path, const QString& refId)
{
    return logLinks.Debug(u"File link: Path: %1 RefId: %2"_s.arg(path, refId));
}

} // namespace

/// a.tasm links b.tlk and c.tlk, which link nothing. The plug-in is loaded already, so that its
/// loading is not among the records.
class ExtractionEnds : public ImporterFixture
{
protected:
    ExtractionEnds()
    {
        Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s, u"2 c.tlk"_s});
        tree.File(u"src/b.tlk"_s).File(u"src/c.tlk"_s);
        tree.File(u"warm/x.tasm"_s, "").File(u"warm/x.tlk"_s, "");
        QList<Link> none;
        extractor.ExtractFileLinks(tree.Path(u"warm/x.tasm"_s), none);
        extractor.ExtractFileLinks(tree.Path(u"warm/x.tlk"_s), none);
        calls.Clear();
        log.Clear();
    }

    FileMappingPointer Mapping(const QString& path, const QString& target = {}) const
    {
        return std::make_shared<FileMapping>(tree.Path(path), target, 7);
    }
    /// Records of an earlier copy.
    void Record(const QString& source, const QString& target, const QDateTime& extractedAt)
    {
        const FileMappingPointer earlier = Mapping(source, target);
        earlier->SetSourceFileLinks({{-1, u"old"_s, u"b.tlk"_s, {}}});
        earlier->SetSourceFileLinksExtractedAtFileDate(extractedAt);
        ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({earlier}, {}));
    }
    void CancelFrom(int poll)
    {
        controller->CancelAt(poll);
        log.Clear();
    }
    QStringList Records() const { return RecordLines(log, tree.Path()); }
    bool IsInHistory(const QString& path) { return history.Find(tree.Path(path), 7) != nullptr; }
    static QStringList RefIds(const QList<Link>& links)
    {
        QStringList ids;
        for (const Link& link : links)
            ids.append(link.RefId);
        return ids;
    }
    static QStringList ReadsA()
    {
        return {Reads(u"src/a.tasm"_s), Found(2, u"src/a.tasm"_s), Shows(u"b.tlk"_s, u"1"_s),
                Shows(u"c.tlk"_s, u"2"_s)};
    }

    LogCapture log;
    PluginCallLog calls;
    std::shared_ptr<PollCounter> controller = std::make_shared<PollCounter>();
    FileCopyHistory history;
    FileLinkExtractorImp extractor{controller, &history};
};

TEST_F(ExtractionEnds, ASetWithoutFilesThatSupportLinksIsSkippedBeforeItBegins)
{
    const QString all = u"File link extraction skipped for the entire file set. File set doesn't "
                        "have any file which supports file links."_s;
    FileSet set;
    EXPECT_TRUE(extractor.ExtractFileLinks(&set, true, {}));
    EXPECT_EQ(Records(), QStringList{extractSet.Info(all)});
    log.Clear();
    FileLinkImporterImp importer(controller);
    EXPECT_TRUE(importer.ExtractFileLinks());
    EXPECT_EQ(Records(),
              QStringList{RecordsOf(u"FileLinkImporterImp::ExtractFileLinks"_s).Info(all)});
    EXPECT_EQ(controller->Polls(), 0);
}

TEST_F(ExtractionEnds, ACancelAtEachPollOfASetLeavesTheSetUntilTheVeryEnd)
{
    struct Row
    {
        const char* name;
        QStringList records;
        int cancels;
        /// Whether the links of a.tasm are stored, and how many members the set has.
        bool stored;
        int members;
    };
    const QStringList a = ReadsA();
    const QStringList readsB = {Reads(u"src/b.tlk"_s), Found(0, u"src/b.tlk"_s)};
    const QStringList readsC = {Reads(u"src/c.tlk"_s), Found(0, u"src/c.tlk"_s)};
    const Row rows[] = {
        {"before the first file", {}, 1, false, 1},
        // From here on the set-level loops find the cancel again.
        {"before it is read", {}, 2, false, 1},
        {"at its first link", a.first(1), 2, false, 1},
        {"at its second link", a.first(1), 2, false, 1},
        {"after it was read", a, 2, false, 1},
        {"before its first link is followed", a, 1, true, 1},
        {"before its second link is followed", a, 1, true, 1},
        {"before the second file", a, 1, true, 1},
        {"before the second file is read", a, 2, true, 1},
        {"after the second file was read", a + readsB, 2, true, 1},
        {"before the third file", a + readsB, 1, true, 1},
        {"before the third file is read", a + readsB, 2, true, 1},
        {"after the third file was read", a + readsB + readsC, 2, true, 1},
        {"before the first file is added", a + readsB + readsC, 1, true, 1},
        {"before the second file is added", a + readsB + readsC, 1, true, 1},
        {"before the third file is added", a + readsB + readsC, 1, true, 2},
        {"after everything", a + readsB + readsC, 0, true, 3},
    };
    int poll = 0;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        FileCopyHistory fresh;
        FileLinkExtractorImp alone(controller, &fresh);
        FileSet set;
        const FileMappingPointer mapping = Mapping(u"src/a.tasm"_s);
        set.AddFile(mapping);
        CancelFrom(++poll);
        EXPECT_EQ(alone.ExtractFileLinks(&set, true, {}), row.cancels == 0);
        EXPECT_EQ(Records(), QStringList{begin} + row.records + QStringList(row.cancels, canceled) +
                                 QStringList{finished});
        EXPECT_EQ(mapping->GetSourceFileLinks().size(), row.stored ? 2 : 0);
        EXPECT_EQ(mapping->GetSourceFileLinksExtractedAtFileDate().isValid(), row.stored);
        EXPECT_EQ(set.GetCount(), row.members);
        const bool recorded = fresh.Find(mapping->GetSourceFile(), 7) != nullptr;
        EXPECT_EQ(recorded, row.stored);
        // What the history holds is written at its end: the next round must not find it.
        fresh.Save();
        EXPECT_TRUE(Database().DeleteAllFileCopyHistory(7));
    }
    EXPECT_EQ(controller->Polls(), poll - 1);
}

TEST_F(ExtractionEnds, ACancelWhileTheFirstLinkIsFollowedAddsNoFile)
{
    FileSet set;
    set.AddFile(Mapping(u"src/a.tasm"_s));
    CancelFrom(7);
    EXPECT_FALSE(extractor.ExtractFileLinks(&set, true, {}));
    EXPECT_EQ(set.GetCount(), 1);
    EXPECT_EQ(set.IndexOfSourceFile(Source(u"b.tlk"_s)), -1);
}

TEST_F(ExtractionEnds, AnUnsupportedFileIsNamedOnBothSidesOfTheCloudFolder)
{
    tree.File(u"cloud/x.tlk"_s);
    for (const QString& path : {u"src/b.tlk"_s, u"cloud/x.tlk"_s}) {
        SCOPED_TRACE(path.toStdString());
        log.Clear();
        const FileMappingPointer mapping = Mapping(path);
        EXPECT_TRUE(extractor.ExtractFileLinks(mapping, {u"tasm"_s}));
        EXPECT_EQ(Records(), QStringList{extractMapping.Debug(skipped + path + unsupported)});
        EXPECT_EQ(mapping->GetFlag(), FileMapping::FileLinksNotSupported);
        EXPECT_FALSE(IsInHistory(path));
    }
    EXPECT_EQ(controller->Polls(), 0);
    EXPECT_EQ(calls.Calls(), QStringList());
}

TEST_F(ExtractionEnds, LinksRestoredFromTheHistoryAreLoggedAsThoseThatWereRead)
{
    tree.Touch(u"src/a.tasm"_s, Time());
    Record(u"src/a.tasm"_s, {}, Time());
    const FileMappingPointer mapping = Mapping(u"src/a.tasm"_s);
    EXPECT_TRUE(extractor.ExtractFileLinks(mapping, {}));
    EXPECT_EQ(Records(),
              (QStringList{extractMapping.Info(skipped + u"src/a.tasm. File links restored from "
                                                         "copy history."_s),
                           Found(1, u"src/a.tasm"_s), Shows(u"b.tlk"_s, u"old"_s)}));
    EXPECT_EQ(controller->Polls(), 1);
    EXPECT_EQ(calls.Calls(), QStringList());
}

TEST_F(ExtractionEnds, LinksRestoredFromTheDatabaseAreLoggedAsThoseThatWereRead)
{
    using SyncFolderManagerLib::FolderManager;
    tree.File(u"cloud/x.tasm"_s, "link 1 y\n").Touch(u"cloud/x.tasm"_s, Time());
    const auto root = FolderManager::GetInstance()->GetSyncRootFolder(Cloud());
    ASSERT_NE(root, nullptr);
    const auto item = std::make_shared<SyncItem>(Cloud(u"x.tasm"_s), u"/x.tasm"_s, u"/"_s);
    item->SetAuthenticationId(7);
    item->SetRootFolderId(root->GetId());
    item->SetParentFolderId(root->GetId());
    item->SetFileLinks({{-1, u"old"_s, u"y.tlk"_s, {}}});
    item->SetFileLinksExtractedAtFileDate(Time());
    ASSERT_TRUE(Database().AddOrUpdateFileConfiguration(item));

    const FileMappingPointer mapping = Mapping(u"cloud/x.tasm"_s);
    EXPECT_TRUE(extractor.ExtractFileLinks(mapping, {}));
    EXPECT_EQ(
        Records(),
        (QStringList{extractMapping.Info(
                         skipped + u"cloud/x.tasm. File links restored from sync database."_s),
                     Found(1, u"cloud/x.tasm"_s),
                     logLinks.Warn(u"File link: Path: y.tlk RefId: old (File not found: "
                                   "cloud/y.tlk)"_s)}));
    EXPECT_EQ(mapping->GetSourceFileLinksExtractedAtFileDate(), Time());
    // What was restored without a change of the file is not recorded anew.
    EXPECT_FALSE(IsInHistory(u"cloud/x.tasm"_s));
}

TEST_F(ExtractionEnds, ACancelOfOneFileKeepsWhatWasRestored)
{
    tree.File(u"cloud/earlier.tasm"_s).Touch(u"src/a.tasm"_s, Time(5));
    Record(u"src/a.tasm"_s, Cloud(u"earlier.tasm"_s), Time());
    for (int poll : {1, 2, 3, 4}) {
        SCOPED_TRACE(poll);
        const FileMappingPointer mapping = Mapping(u"src/a.tasm"_s);
        mapping->SetFlag(FileMapping::NestedFolder, true);
        CancelFrom(poll);
        EXPECT_FALSE(extractor.ExtractFileLinks(mapping, {}));
        const QStringList reads = poll == 1 ? QStringList() : ReadsA().first(poll == 4 ? 4 : 1);
        EXPECT_EQ(Records(), reads + QStringList{canceled});
        EXPECT_EQ(mapping->GetTargetFile(), Cloud(u"earlier.tasm"_s));
        EXPECT_EQ(mapping->GetFlag(), FileMapping::NestedFolder);
        EXPECT_EQ(RefIds(mapping->GetSourceFileLinks()), QStringList{u"old"_s});
        EXPECT_EQ(mapping->GetSourceFileLinksExtractedAtFileDate(), Time());
    }
    const FileMappingPointer mapping = Mapping(u"src/a.tasm"_s);
    CancelFrom(5);
    EXPECT_TRUE(extractor.ExtractFileLinks(mapping, {}));
    EXPECT_EQ(Records(), ReadsA());
    EXPECT_EQ(RefIds(mapping->GetSourceFileLinks()), (QStringList{u"1"_s, u"2"_s}));
    EXPECT_EQ(mapping->GetSourceFileLinksExtractedAtFileDate(), Time(5));
    EXPECT_EQ(mapping->GetSourceFileLinksExtractedAtFileDate().timeSpec(), Qt::UTC);
    EXPECT_EQ(history.Find(Source(u"a.tasm"_s), 7), mapping);
}

TEST_F(ExtractionEnds, AMissingFileFailsAndIsNotRecorded)
{
    const FileMappingPointer mapping = Mapping(u"src/gone.tlk"_s);
    EXPECT_FALSE(extractor.ExtractFileLinks(mapping, {}));
    const QString failed =
        extractFile.Error(u"Failed to extract file links from src/gone.tlk. File not found."_s);
    EXPECT_EQ(Records(), QStringList{failed});
    EXPECT_EQ(controller->Polls(), 1);
    EXPECT_FALSE(mapping->GetSourceFileLinksExtractedAtFileDate().isValid());
    EXPECT_FALSE(IsInHistory(u"src/gone.tlk"_s));
}

TEST_F(ExtractionEnds, AFileThatThePluginCannotReadIsOneWithoutLinks)
{
    tree.File(u"src/bad.tlk"_s, "fail\n");
    const FileMappingPointer mapping = Mapping(u"src/bad.tlk"_s);
    EXPECT_TRUE(extractor.ExtractFileLinks(mapping, {}));
    const RecordsOf plugin(u"PluginLogger::LogError"_s, u"FileLinkManagerImp.cpp"_s,
                           u"ResolverPlugin"_s);
    const RecordsOf manager(u"PluginManager::GetFileLinks"_s, u"PluginManager.cpp"_s);
    EXPECT_EQ(Records(),
              (QStringList{Reads(u"src/bad.tlk"_s), plugin.Error(u"test resolver: told to fail"_s),
                           manager.Error(u"Failed to get file links from file "
                                         "src/bad.tlk"_s),
                           Found(0, u"src/bad.tlk"_s)}));
    EXPECT_TRUE(mapping->GetSourceFileLinksExtractedAtFileDate().isValid());
    EXPECT_TRUE(IsInHistory(u"src/bad.tlk"_s));
}

TEST_F(ExtractionEnds, ACancelOfOnePathGivesTheLinksBeforeItAndLogsNone)
{
    for (int poll : {1, 2, 3}) {
        SCOPED_TRACE(poll);
        CancelFrom(poll);
        QList<Link> links;
        EXPECT_EQ(extractor.ExtractFileLinks(Source(u"a.tasm"_s), links), poll == 3);
        EXPECT_EQ(links.size(), poll - 1);
        EXPECT_EQ(Records(),
                  poll == 3 ? ReadsA() : QStringList({Reads(u"src/a.tasm"_s), canceled}));
    }
}

TEST_F(ExtractionEnds, AMissingLinkIsAWarningUnlessItIsNoLocalPath)
{
    const QString holder = Source(u"a.tasm"_s);
    extractor.LogFileLinks(holder, {{-1, u"1"_s, u"./b.tlk"_s, {}},
                                    {-1, u"2"_s, u"lost/d.tlk"_s, {}},
                                    {-1, u"3"_s, u"http://host/d.tlk"_s, {}},
                                    {-1, u"4"_s, u"Q:/d.tlk"_s, {}}});
    const QString missing = u"File link: Path: %1 RefId: %2 (File not found: %3)"_s;
    EXPECT_EQ(Records(),
              (QStringList{Found(4, u"src/a.tasm"_s), Shows(u"./b.tlk"_s, u"1"_s),
                           logLinks.Warn(missing.arg(u"lost/d.tlk"_s, u"2"_s, u"src/lost/d.tlk"_s)),
                           Shows(u"http://host/d.tlk"_s, u"3"_s),
                           logLinks.Warn(missing.arg(u"Q:/d.tlk"_s, u"4"_s, u"Q:/d.tlk"_s))}));
}

} // namespace Halvern::Test
