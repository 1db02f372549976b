// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

#include "importer/FileLinkExtractorImp.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;
using FileLink::FileLinkExtractorImp;
using Link = SyncServices::FileLink;

const QString skippedForAll =
    u"INFO File link extraction skipped for the entire file set. File set doesn't have any file "
    "which supports file links."_s;

class Extraction : public ImporterFixture
{
protected:
    bool Extract(const QStringList& sources, Global::CopyOption options = {},
                 const QStringList& fileTypes = {})
    {
        QStringList paths;
        for (const QString& source : sources)
            paths.append(Source(source));
        return importer.Initialize(paths, Cloud(), false, options, fileTypes) &&
               importer.ExtractFileLinks();
    }
    /// The links of a member as "RefId Path".
    QStringList LinksOf(const QString& source)
    {
        QStringList lines;
        for (const Link& link : Member(importer, source)->GetSourceFileLinks())
            lines.append(link.RefId + u' ' + link.Path);
        return lines;
    }
    QStringList OpenedFiles() const
    {
        QStringList files = Short(calls.Calls());
        files.replaceInStrings(u"GetFileLinks "_s, QString());
        return files;
    }

    FileLinkImporterImp importer{nullptr};
    PluginCallLog calls;
};

TEST_F(Extraction, ASetOfFoldersOnlyIsSkippedWithOneLine)
{
    tree.Folder(u"src/Proj/sub"_s);
    const LogCapture log;
    ASSERT_TRUE(Extract({u"Proj"_s}));
    EXPECT_EQ(log.Lines(), QStringList{skippedForAll});
}

TEST_F(Extraction, ASetOfUnsupportedTypesIsSkippedWithOneLine)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    const LogCapture log;
    ASSERT_TRUE(Extract({u"a.tasm"_s}, {}, {u"prt"_s}));
    EXPECT_EQ(log.Lines(), QStringList{skippedForAll});
    EXPECT_EQ(calls.Calls(), QStringList());
}

TEST_F(Extraction, AnEmptySetIsSkippedWithOneLine)
{
    const LogCapture log;
    ASSERT_TRUE(Extract({u"missing"_s}));
    EXPECT_EQ(log.Lines(), QStringList{skippedForAll});
}

TEST_F(Extraction, TheExtractorItselfSkipsASetWithoutSupportedFilesWithTheSameLine)
{
    const LogCapture log;
    FileLink::FileSet set;
    FileLinkExtractorImp extractor(nullptr, nullptr);
    EXPECT_TRUE(extractor.ExtractFileLinks(&set, true, {}));
    EXPECT_EQ(log.Lines(), QStringList{skippedForAll});
}

TEST_F(Extraction, LinkedFilesJoinTheSetBreadthFirstAndOnce)
{
    Assembly(u"src/a.tasm"_s, {u"1 sub.tasm"_s, u"2 part.tlk"_s});
    Assembly(u"src/sub.tasm"_s, {u"1 part.tlk"_s, u"2 deep.tlk"_s});
    tree.File(u"src/part.tlk"_s).File(u"src/deep.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    const QStringList expected = {u"src/a.tasm"_s, u"src/sub.tasm"_s, u"src/part.tlk"_s,
                                  u"src/deep.tlk"_s};
    EXPECT_EQ(Members(importer), expected);
    EXPECT_EQ(OpenedFiles(), expected);
}

TEST_F(Extraction, WithDirectLinksOnlyLinkedFilesAreAddedButNotOpened)
{
    Assembly(u"src/a.tasm"_s, {u"1 sub.tasm"_s, u"2 part.tlk"_s});
    Assembly(u"src/sub.tasm"_s, {u"1 deep.tlk"_s});
    tree.File(u"src/part.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s}, Global::DirectLinksOnly));
    EXPECT_EQ(Members(importer),
              (QStringList{u"src/a.tasm"_s, u"src/sub.tasm"_s, u"src/part.tlk"_s}));
    EXPECT_EQ(OpenedFiles(), QStringList{u"src/a.tasm"_s});
}

TEST_F(Extraction, WithDirectLinksOnlyASelectedFileThatAnotherLinksIsOpened)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tasm"_s});
    Assembly(u"src/b.tasm"_s, {u"1 c.tlk"_s});
    ASSERT_TRUE(Extract({u"a.tasm"_s, u"b.tasm"_s}, Global::DirectLinksOnly));
    EXPECT_EQ(OpenedFiles(), (QStringList{u"src/a.tasm"_s, u"src/b.tasm"_s}));
    EXPECT_EQ(Members(importer), (QStringList{u"src/a.tasm"_s, u"src/b.tasm"_s, u"src/c.tlk"_s}));
}

TEST_F(Extraction, OfTwoMembersWhosePathsDifferInCaseTheSecondIsNotOpened)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    Assembly(u"src/A.TASM"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s, u"A.TASM"_s}));
    EXPECT_EQ(OpenedFiles(), (QStringList{u"src/a.tasm"_s, u"src/b.tlk"_s}));
    EXPECT_EQ(importer.GetFileSet()->GetCount(), 3);
}

TEST_F(Extraction, AFileSelectedTwiceIsOpenedOnce)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    ASSERT_TRUE(Extract({u"a.tasm"_s, u"a.tasm"_s}));
    EXPECT_EQ(OpenedFiles(), QStringList{u"src/a.tasm"_s});
}

TEST_F(Extraction, ALinkThatDiffersInCaseFindsTheMember)
{
    Assembly(u"src/a.tasm"_s, {u"1 B.TLK"_s});
    tree.File(u"src/b.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s, u"b.tlk"_s}));
    EXPECT_EQ(Members(importer), (QStringList{u"src/a.tasm"_s, u"src/b.tlk"_s}));
}

TEST_F(Extraction, RelativeLinksAreTakenFromTheFolderOfTheFileThatHoldsThem)
{
    Assembly(u"src/p/a.tasm"_s, {u"1 sub/x.tlk"_s, u"2 ../y.tlk"_s, u"3 ./sub/../z.tlk"_s});
    tree.File(u"src/p/sub/x.tlk"_s).File(u"src/y.tlk"_s).File(u"src/p/z.tlk"_s);
    ASSERT_TRUE(Extract({u"p/a.tasm"_s}));
    EXPECT_EQ(Members(importer), (QStringList{u"src/p/a.tasm"_s, u"src/p/sub/x.tlk"_s,
                                              u"src/y.tlk"_s, u"src/p/z.tlk"_s}));
    EXPECT_EQ(LinksOf(u"src/p/a.tasm"_s),
              (QStringList{u"1 sub/x.tlk"_s, u"2 ../y.tlk"_s, u"3 ./sub/../z.tlk"_s}));
}

TEST_F(Extraction, AbsoluteLinksStayAbsolute)
{
    tree.File(u"elsewhere/x.tlk"_s);
    const QString path = tree.Path(u"elsewhere/x.tlk"_s);
    Assembly(u"src/a.tasm"_s, {u"1 "_s + path});
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    EXPECT_EQ(Members(importer), (QStringList{u"src/a.tasm"_s, u"elsewhere/x.tlk"_s}));
}

TEST_F(Extraction, LinksToANetworkShareStayAbsolute)
{
    const QStringList shares = {u"//server/share/x.tlk"_s, u"\\\\server\\share\\y.tlk"_s};
    Assembly(u"src/a.tasm"_s, {u"1 "_s + shares[0], u"2 "_s + shares[1]});
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    EXPECT_EQ(Members(importer), (QStringList{u"src/a.tasm"_s, QDir::cleanPath(shares[0]),
                                              QDir::cleanPath(shares[1])}));
    EXPECT_EQ(LinksOf(u"src/a.tasm"_s), (QStringList{u"1 "_s + shares[0], u"2 "_s + shares[1]}));
}

TEST_F(Extraction, AWebAddressGivesAMappingThatIsNeverOpened)
{
    Assembly(u"src/a.tasm"_s, {u"1 http://host/x.tasm"_s});
    const LogCapture log;
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    const QString path = QDir::cleanPath(u"http://host/x.tasm"_s);
    const FileMappingPointer mapping = importer.GetFileSet()->GetFiles().value(1);
    ASSERT_NE(mapping, nullptr);
    EXPECT_EQ(mapping->GetSourceFile(), path);
    EXPECT_EQ(mapping->GetFlag(), FileMapping::NotFilePath);
    EXPECT_FALSE(mapping->HasTargetFile());
    EXPECT_EQ(OpenedFiles(), QStringList{u"src/a.tasm"_s});
    EXPECT_TRUE(log.Has(u"DEBUG File link: Path: http://host/x.tasm RefId: 1"_s));
    EXPECT_FALSE(log.Lines().join(u'\n').contains(u"WARN"_s));
}

TEST_F(Extraction, ADriveLetterIsALocalPath)
{
    Assembly(u"src/a.tasm"_s, {u"1 Q:/lib/x.tlk"_s});
    const LogCapture log;
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    const FileMappingPointer mapping = importer.GetFileSet()->GetFiles().value(1);
    ASSERT_NE(mapping, nullptr);
    EXPECT_EQ(mapping->GetSourceFile(), u"Q:/lib/x.tlk"_s);
    EXPECT_EQ(mapping->GetFlag(), FileMapping::NoFlag);
    EXPECT_TRUE(
        log.Has(u"WARN File link: Path: Q:/lib/x.tlk RefId: 1 (File not found: Q:/lib/x.tlk)"_s));
}

TEST_F(Extraction, ALinkIntoTheCloudCacheFolderIsItsOwnTarget)
{
    tree.File(u"cloud/lib/x.tlk"_s);
    Assembly(u"src/a.tasm"_s, {u"1 ../cloud/lib/x.tlk"_s, u"2 b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    EXPECT_EQ(Targets(importer),
              (QStringList{u"src/a.tasm -> cloud/a.tasm"_s, u"cloud/lib/x.tlk -> cloud/lib/x.tlk"_s,
                           u"src/b.tlk -> "_s}));
}

TEST_F(Extraction, NewMembersHaveNoFlagsAndTheUsersId)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    const FileMappingPointer mapping = Member(importer, u"src/b.tlk"_s);
    ASSERT_NE(mapping, nullptr);
    EXPECT_EQ(mapping->GetFlag(), FileMapping::NoFlag);
    EXPECT_EQ(mapping->GetAuthenticationId(), 7);
    EXPECT_EQ(mapping->GetFileSet(), importer.GetFileSet().get());
}

TEST_F(Extraction, TwoLinksToOneFileAreBothKeptAndGiveOneMember)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s, u"2 b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    EXPECT_EQ(LinksOf(u"src/a.tasm"_s), (QStringList{u"1 b.tlk"_s, u"2 b.tlk"_s}));
    EXPECT_EQ(importer.GetFileSet()->GetCount(), 2);
}

TEST_F(Extraction, FilesThatLinkEachOtherOrThemselvesAreOpenedOnce)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tasm"_s, u"2 a.tasm"_s});
    Assembly(u"src/b.tasm"_s, {u"1 a.tasm"_s});
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    EXPECT_EQ(OpenedFiles(), (QStringList{u"src/a.tasm"_s, u"src/b.tasm"_s}));
    EXPECT_EQ(importer.GetFileSet()->GetCount(), 2);
}

TEST_F(Extraction, AMissingLinkedFileJoinsTheSetAndIsReported)
{
    Assembly(u"src/a.tasm"_s, {u"1 gone.tlk"_s, u"2 b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    const LogCapture log;
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    EXPECT_EQ(Members(importer), (QStringList{u"src/a.tasm"_s, u"src/gone.tlk"_s, u"src/b.tlk"_s}));
    const QString gone = Source(u"gone.tlk"_s);
    EXPECT_TRUE(
        log.Has(u"WARN File link: Path: gone.tlk RefId: 1 (File not found: %1)"_s.arg(gone)));
    EXPECT_TRUE(
        log.Has(u"ERROR Failed to extract file links from %1. File not found."_s.arg(gone)));
    EXPECT_TRUE(log.Has(u"DEBUG File link: Path: b.tlk RefId: 2"_s));
    EXPECT_TRUE(log.Has(u"INFO 2 file links found in %1"_s.arg(Source(u"a.tasm"_s))));
    EXPECT_TRUE(log.Has(u"INFO No file links found in %1"_s.arg(Source(u"b.tlk"_s))));
}

TEST_F(Extraction, ASelectedFileThatVanishedIsReportedAndTheOthersAreRead)
{
    Assembly(u"src/a.tasm"_s, {u"1 c.tlk"_s});
    Assembly(u"src/b.tasm"_s, {u"1 c.tlk"_s});
    ASSERT_TRUE(
        importer.Initialize({Source(u"a.tasm"_s), Source(u"b.tasm"_s)}, Cloud(), false, {}, {}));
    tree.Remove(u"src/a.tasm"_s).File(u"src/c.tlk"_s);
    const LogCapture log;
    ASSERT_TRUE(importer.ExtractFileLinks());
    EXPECT_TRUE(log.Has(
        u"ERROR Failed to extract file links from %1. File not found."_s.arg(Source(u"a.tasm"_s))));
    EXPECT_EQ(Members(importer), (QStringList{u"src/a.tasm"_s, u"src/b.tasm"_s, u"src/c.tlk"_s}));
}

TEST_F(Extraction, AFileThatThePluginCannotReadHasNoLinksAndTheOthersAreRead)
{
    tree.File(u"src/a.tasm"_s, "fail\n").File(u"src/b.tasm"_s, "throw\n");
    Assembly(u"src/c.tasm"_s, {u"1 d.tlk"_s});
    tree.File(u"src/d.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s, u"b.tasm"_s, u"c.tasm"_s}));
    EXPECT_EQ(LinksOf(u"src/a.tasm"_s), QStringList());
    EXPECT_EQ(LinksOf(u"src/b.tasm"_s), QStringList());
    EXPECT_EQ(importer.GetFileSet()->GetCount(), 4);
}

TEST_F(Extraction, AFileOfATypeWithoutPluginHasNoLinks)
{
    tree.File(u"src/a.txt"_s, Links({u"1 b.tlk"_s}));
    const LogCapture log;
    ASSERT_TRUE(Extract({u"a.txt"_s}));
    EXPECT_EQ(LinksOf(u"src/a.txt"_s), QStringList());
    EXPECT_TRUE(log.Has(u"INFO No file links found in %1"_s.arg(Source(u"a.txt"_s))));
}

TEST_F(Extraction, ALinkedFileOfAnUnsupportedTypeIsMarkedAndNotOpened)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s, Links({u"1 c.tlk"_s}));
    const LogCapture log;
    ASSERT_TRUE(Extract({u"a.tasm"_s}, {}, {u"tasm"_s}));
    EXPECT_EQ(OpenedFiles(), QStringList{u"src/a.tasm"_s});
    EXPECT_EQ(Member(importer, u"src/b.tlk"_s)->GetFlag(), FileMapping::FileLinksNotSupported);
    EXPECT_TRUE(log.Has(u"DEBUG File link extraction skipped for file %1. File links not supported "
                        "for this file type."_s.arg(Source(u"b.tlk"_s))));
}

TEST_F(Extraction, AFileWhoseLinksAreToBeSkippedIsNotOpened)
{
    Assembly(u"src/a.tasm"_s, {u"1 c.tlk"_s});
    Assembly(u"src/b.tasm"_s, {u"1 d.tlk"_s});
    ASSERT_TRUE(
        importer.Initialize({Source(u"a.tasm"_s), Source(u"b.tasm"_s)}, Cloud(), false, {}, {}));
    Member(importer, u"src/a.tasm"_s)->SetFlag(FileMapping::SkipFileLinks, true);
    ASSERT_TRUE(importer.ExtractFileLinks());
    EXPECT_EQ(OpenedFiles(), QStringList{u"src/b.tasm"_s});
}

TEST_F(Extraction, ALinkWhoseFileStandsBesideTheHolderInsteadIsStoredAsTheBareName)
{
    Assembly(u"src/a.tasm"_s, {u"1 ../old/place/b.tlk"_s, u"2 Q:/old/c.tlk"_s, u"3 lost/d.tlk"_s});
    tree.File(u"src/b.tlk"_s).File(u"src/c.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    EXPECT_EQ(LinksOf(u"src/a.tasm"_s),
              (QStringList{u"1 b.tlk"_s, u"2 c.tlk"_s, u"3 lost/d.tlk"_s}));
    EXPECT_EQ(Members(importer),
              (QStringList{u"src/a.tasm"_s, u"src/b.tlk"_s, u"src/c.tlk"_s, u"src/lost/d.tlk"_s}));
}

TEST_F(Extraction, ALinkWhoseFileExistsKeepsItsPathEvenWithANamesakeBesideTheHolder)
{
    Assembly(u"src/a.tasm"_s, {u"1 lib/../lib/b.tlk"_s});
    tree.File(u"src/b.tlk"_s).File(u"src/lib/b.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    EXPECT_EQ(LinksOf(u"src/a.tasm"_s), QStringList{u"1 lib/../lib/b.tlk"_s});
    EXPECT_EQ(Members(importer), (QStringList{u"src/a.tasm"_s, u"src/lib/b.tlk"_s}));
}

TEST_F(Extraction, AFolderBesideTheHolderDoesNotStandInForAMissingFile)
{
    Assembly(u"src/a.tasm"_s, {u"1 lost/b.tlk"_s});
    tree.Folder(u"src/b.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    EXPECT_EQ(LinksOf(u"src/a.tasm"_s), QStringList{u"1 lost/b.tlk"_s});
}

TEST_F(Extraction, ALinkToAFolderJoinsTheSetAndIsNotOpened)
{
    Assembly(u"src/a.tasm"_s, {u"1 lib"_s});
    tree.Folder(u"src/lib"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    EXPECT_EQ(Members(importer), (QStringList{u"src/a.tasm"_s, u"src/lib"_s}));
    EXPECT_EQ(OpenedFiles(), QStringList{u"src/a.tasm"_s});
}

TEST_F(Extraction, TheStageIsFramedAndEachFileIsTraced)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    const LogCapture log;
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    const QStringList lines = log.Lines();
    EXPECT_EQ(lines.first(), u"INFO Begin extracting file links"_s);
    EXPECT_EQ(lines.last(), u"INFO Finished extracting file links"_s);
    EXPECT_EQ(log.Count(u"TRACE Extracting file links from %1"_s.arg(Source(u"a.tasm"_s))), 1);
    EXPECT_EQ(log.Count(u"TRACE Extracting file links from %1"_s.arg(Source(u"b.tlk"_s))), 1);
}

TEST_F(Extraction, OneFileAloneAnswersWhetherItCouldBeRead)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    FileLink::FileCopyHistory history;
    FileLinkExtractorImp extractor(nullptr, &history);
    QList<Link> links;
    EXPECT_TRUE(extractor.ExtractFileLinks(Source(u"a.tasm"_s), links));
    ASSERT_EQ(links.size(), 1);
    EXPECT_EQ(links[0].Path, u"b.tlk"_s);
    EXPECT_EQ(links[0].RefId, u"1"_s);
    EXPECT_EQ(links[0].ItemId, -1);
    EXPECT_FALSE(extractor.ExtractFileLinks(Source(u"gone.tasm"_s), links));

    const auto present = std::make_shared<FileMapping>(Source(u"a.tasm"_s), Cloud(u"a.tasm"_s), 7);
    EXPECT_TRUE(extractor.ExtractFileLinks(present, {}));
    EXPECT_EQ(present->GetSourceFileLinks().size(), 1);
    const auto gone = std::make_shared<FileMapping>(Source(u"gone.tasm"_s), QString(), 7);
    EXPECT_FALSE(extractor.ExtractFileLinks(gone, {}));
    EXPECT_FALSE(gone->GetSourceFileLinksExtractedAtFileDate().isValid());
}

} // namespace Halvern::Test
