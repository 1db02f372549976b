// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

#include "filelink/FileLinkImporter.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

const QStringList allStages = {u"INFO Begin extracting file links"_s,
                               u"INFO Finished extracting file links"_s,
                               u"INFO Begin assigning target paths for file links"_s,
                               u"INFO Finished assigning target paths"_s,
                               u"INFO Begin marking file conflicts"_s,
                               u"INFO Finished marking file conflicts"_s,
                               u"INFO Begin resolving file conflicts"_s,
                               u"INFO Finished resolving file conflicts"_s,
                               u"INFO Begin copying files"_s,
                               u"INFO Finished copying files"_s,
                               u"INFO Begin repathing file links in target"_s,
                               u"INFO Finished repathing file links in target"_s,
                               u"INFO Begin updating sync database"_s,
                               u"INFO Finished updating sync database"_s};

QStringList StageLines(const LogCapture& log)
{
    QStringList stages;
    for (const QString& line : log.Lines())
        if (allStages.contains(line))
            stages.append(line);
    return stages;
}

class Driver : public ImporterFixture
{
protected:
    bool Copy(const QStringList& sources, const QString& target, Global::CopyOption options = {},
              const QStringList& fileTypes = {})
    {
        return importer.CopyToCloudCacheFolder(sources, target, options, fileTypes);
    }
    bool HasItem(const QString& cloudName)
    {
        return Database().GetSyncItem(Cloud(cloudName), true, 7,
                                      SyncServices::FileItem::ItemOnly) != nullptr;
    }

    FileLinkImporterImp importer{nullptr};
};

TEST_F(Driver, OneCallRunsEveryStageInOrder)
{
    Assembly(u"src/a.tasm"_s, {u"1 lib/b.tlk"_s});
    tree.File(u"src/lib/b.tlk"_s);
    const LogCapture log;
    ASSERT_TRUE(Copy({Source(u"a.tasm"_s)}, Cloud()));
    EXPECT_EQ(StageLines(log), allStages);
    EXPECT_EQ(tree.Contents(u"cloud"_s),
              (FileTree::Snapshot{{u"a.tasm"_s, "src/a.tasm\nlink 1 lib/b.tlk\n"},
                                  {u"lib/b.tlk"_s, "src/lib/b.tlk"}}));
    EXPECT_TRUE(HasItem(u"a.tasm"_s));
    EXPECT_TRUE(HasItem(u"lib/b.tlk"_s));
}

TEST_F(Driver, ALoneSourceGoesToTheExactTargetWhateverTheCallersBoolSays)
{
    tree.File(u"src/a.tlk"_s);
    FileLink::FileLinkImporter front;
    for (const bool targetIsFile : {false, true}) {
        const QString name = targetIsFile ? u"with"_s : u"without"_s;
        ASSERT_TRUE(
            front.CopyToCloudCacheFolder({Source(u"a.tlk"_s)}, Cloud(name), targetIsFile, {}, {}));
        EXPECT_EQ(tree.Read(u"cloud/"_s + name), "src/a.tlk");
    }
}

TEST_F(Driver, ACallerWhoIsNotLoggedInGetsNothingDoneAndNothingLogged)
{
    settings.loggedIn = false;
    Restart();
    tree.File(u"src/a.tlk"_s);
    const LogCapture log;
    EXPECT_FALSE(Copy({Source(u"a.tlk"_s)}, Cloud(), Global::MoveFiles));
    EXPECT_EQ(log.Lines(), QStringList());
    EXPECT_EQ(importer.GetFileSet(), nullptr);
    EXPECT_EQ(importer.GetCopyOption(), Global::NoCopyOption);
}

TEST_F(Driver, WithSyncOffNothingIsDoneAndNothingLogged)
{
    settings.cloudCacheFolderSyncEnabled = false;
    Restart();
    tree.File(u"src/a.tlk"_s);
    const LogCapture log;
    EXPECT_FALSE(Copy({Source(u"a.tlk"_s)}, Cloud(), Global::MoveFiles));
    EXPECT_EQ(log.Lines(), QStringList());
    EXPECT_EQ(importer.GetFileSet(), nullptr);
}

TEST_F(Driver, AnIntakeThatFailsStopsTheSequence)
{
    tree.File(u"src/a.tlk"_s).File(u"src/b.tlk"_s).File(u"cloud/x"_s);
    const LogCapture log;
    EXPECT_FALSE(Copy({Source(u"a.tlk"_s), Source(u"b.tlk"_s)}, Cloud(u"x"_s)));
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(Driver, ANothingToImportIsAFailure)
{
    const LogCapture log;
    EXPECT_FALSE(Copy({Source(u"missing.tlk"_s)}, Cloud(u"F"_s)));
    // Stages over files with links skip an empty set; the others run.
    EXPECT_EQ(StageLines(log),
              (QStringList{u"INFO Begin marking file conflicts"_s,
                           u"INFO Finished marking file conflicts"_s,
                           u"INFO Begin resolving file conflicts"_s,
                           u"INFO Finished resolving file conflicts"_s,
                           u"INFO Begin copying files"_s, u"INFO Finished copying files"_s}));
}

TEST_F(Driver, FilesOfUnsupportedTypesAreCopiedWithoutTheLinkStages)
{
    tree.File(u"src/a.tlk"_s);
    const LogCapture log;
    EXPECT_TRUE(Copy({Source(u"a.tlk"_s)}, Cloud(), {}, {u"prt"_s}));
    EXPECT_EQ(StageLines(log).size(), 6);
    EXPECT_TRUE(tree.Exists(u"cloud/a.tlk"_s));
    EXPECT_FALSE(HasItem(u"a.tlk"_s));
}

TEST_F(Driver, AFailingRepathDoesNotSpoilAGoodCopy)
{
    tree.File(u"src/a.tasm"_s, "norepath\nlink 1 lib/b.tlk\n").File(u"src/lib/b.tlk"_s);
    const LogCapture log;
    EXPECT_TRUE(Copy({Source(u"a.tasm"_s)}, Cloud()));
    EXPECT_TRUE(
        log.Has(u"ERROR Failed to repath file links in file %1. Plugin returned false."_s.arg(
            Cloud(u"a.tasm"_s))));
    EXPECT_TRUE(HasItem(u"a.tasm"_s));
}

TEST_F(Driver, AStageAfterExtractionThatFailsDoesNotStopTheSequence)
{
    // A linked web address has no target.
    Assembly(u"src/a.tasm"_s, {u"1 http://host/x.tlk"_s, u"2 gone.tlk"_s});
    const LogCapture log;
    EXPECT_TRUE(Copy({Source(u"a.tasm"_s)}, Cloud()));
    EXPECT_EQ(StageLines(log), allStages);
}

TEST_F(Driver, CollidingFilesAreRenamedWhateverThePolicyAndFoldersFollowIt)
{
    const Global::CopyOption policy =
        Global::KeepExistingSelectedFiles | Global::KeepExistingLinkedFiles;
    for (const bool direct : {false, true}) {
        const QString job = direct ? u"direct"_s : u"plain"_s;
        Assembly(u"src/%1/a.tasm"_s.arg(job), {u"1 b.tlk"_s});
        tree.File(u"src/%1/b.tlk"_s.arg(job)).File(u"src/%1/Proj/p.tlk"_s.arg(job));
        tree.File(u"cloud/%1/a.tasm"_s.arg(job), "old").File(u"cloud/%1/b.tlk"_s.arg(job), "old");
        tree.Folder(u"cloud/%1/Proj"_s.arg(job));
        ASSERT_TRUE(Copy({Source(job + u"/a.tasm"_s), Source(job + u"/Proj"_s)}, Cloud(job),
                         direct ? policy | Global::DirectLinksOnly : policy));
        EXPECT_EQ(tree.Contents(u"cloud/"_s + job).keys(),
                  (QStringList{u"Proj/p.tlk"_s, u"a (2).tasm"_s, u"a.tasm"_s, u"b (2).tlk"_s,
                               u"b.tlk"_s}));
        EXPECT_EQ(tree.Read(u"cloud/%1/a.tasm"_s.arg(job)), "old");
        const FileMappingPointer folder = Member(importer, u"src/%1/Proj"_s.arg(job));
        EXPECT_TRUE(folder->HasFlag(FileMapping::Collision));
        EXPECT_FALSE(folder->HasFlag(FileMapping::RenameOnCollision));
        EXPECT_EQ(folder->HasFlag(FileMapping::NoCopy), direct);
        EXPECT_EQ(folder->GetTargetFile(), Cloud(job + u"/Proj"_s));
    }
}

TEST_F(Driver, EachCallStartsWithAFreshSet)
{
    tree.File(u"src/a.tlk"_s).File(u"src/b.tlk"_s);
    ASSERT_TRUE(Copy({Source(u"a.tlk"_s)}, Cloud(u"F/a"_s)));
    ASSERT_TRUE(Copy({Source(u"b.tlk"_s)}, Cloud(u"F/b"_s)));
    EXPECT_EQ(Members(importer), QStringList{u"src/b.tlk"_s});
}

TEST_F(Driver, CopyingLinksNeedsATarget)
{
    tree.File(u"src/a.tasm"_s);
    const LogCapture log;
    EXPECT_FALSE(importer.CopyFileLinksToCloudCacheFolder(Source(u"a.tasm"_s), {}, {}, {}));
    EXPECT_EQ(log.Lines(), QStringList());
    EXPECT_EQ(importer.GetFileSet(), nullptr);
}

TEST_F(Driver, CopyingLinksLeavesTheFileItselfWhereItIs)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s).Folder(u"cloud/F"_s);
    ASSERT_TRUE(importer.CopyFileLinksToCloudCacheFolder(Source(u"a.tasm"_s), Cloud(u"F"_s),
                                                         Global::RenameLinkedFiles, {}));
    EXPECT_EQ(importer.GetCopyOption(), Global::RenameLinkedFiles | Global::LinkedFilesOnly);
    EXPECT_EQ(tree.Contents(u"cloud"_s), (FileTree::Snapshot{{u"F/b.tlk"_s, "src/b.tlk"}}));
}

TEST_F(Driver, CopyingLinksOfACloudFileBringsThemInAndRewritesTheFile)
{
    Assembly(u"cloud/a.tasm"_s, {u"1 ../src/b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    ASSERT_TRUE(importer.CopyFileLinksToCloudCacheFolder({}, Cloud(u"a.tasm"_s), {}, {}));
    EXPECT_EQ(tree.Contents(u"cloud"_s),
              (FileTree::Snapshot{{u"a.tasm"_s, "cloud/a.tasm\nlink 1 src/b.tlk\n"},
                                  {u"src/b.tlk"_s, "src/b.tlk"}}));
    EXPECT_TRUE(HasItem(u"a.tasm"_s));
}

TEST_F(Driver, CopyingLinksOfNoFileNeedsAnExistingFileAsTarget)
{
    EXPECT_FALSE(importer.CopyFileLinksToCloudCacheFolder({}, Cloud(u"missing.tasm"_s), {}, {}));
    EXPECT_FALSE(importer.CopyFileLinksToCloudCacheFolder({}, Cloud(), {}, {}));
}

} // namespace Halvern::Test
