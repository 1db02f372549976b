// SPDX-License-Identifier: Apache-2.0

#include "CopyingFixture.h"

#include <QtTest/QSignalSpy>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class CopyFiles : public CopyingFixture
{
protected:
    /// The last line with counters, without its opening words.
    QString Summary() const
    {
        const QString begin = u"INFO Finished copying files. "_s;
        const QStringList lines = LinesWith(begin);
        return lines.isEmpty() ? QString() : lines.last().mid(begin.size());
    }
};

} // namespace

TEST_F(CopyFiles, CopiesEachFileByteForByteAndKeepsTheSource)
{
    const QByteArray large = PatternBytes(3'000'000);
    tree.File("src/large.prt", large).File("src/empty.prt", {});
    const auto a = Add("src/large.prt", "P/large.prt");
    const auto b = Add("src/empty.prt", "P/empty.prt");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(tree.Contents("cloud"),
              (FileTree::Snapshot{{"P/large.prt", large}, {"P/empty.prt", {}}}));
    EXPECT_EQ(tree.Contents("src"), (FileTree::Snapshot{{"large.prt", large}, {"empty.prt", {}}}));
    EXPECT_TRUE(a->HasFlag(FileMapping::Copied));
    EXPECT_TRUE(b->HasFlag(FileMapping::Copied));
}

TEST_F(CopyFiles, CountsEveryOutcomeInItsSummary)
{
    tree.File("src/a.prt").File("src/b.prt").File("src/c.prt").Folder("src/F").File("cloud/x");
    Add("src/a.prt", "a.prt");
    Add("src/b.prt", "b.prt");
    Add("src/F", "F", FileMapping::Selected | FileMapping::Folder);
    Add("src/F", "x", FileMapping::Selected | FileMapping::Folder); // a file stands there
    Add("src/missing.prt", "missing.prt");
    Add("src/c.prt", "c.prt", FileMapping::Selected | FileMapping::NoCopy);
    Add("src/F", "G", FileMapping::Folder); // not selected
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(Summary(), "Copied: 2, Folders created: 1, Failed: 2, Skipped: 1, Total: 7");
    EXPECT_FALSE(tree.Exists("cloud/G"));
    EXPECT_FALSE(tree.Exists("cloud/c.prt"));
}

TEST_F(CopyFiles, AnEmptySetFailsWithTheStageFrameAndNoSummary)
{
    EXPECT_FALSE(importer->CopyFiles());
    EXPECT_EQ(Lines(), (QStringList{"INFO Begin copying files", "INFO Finished copying files"}));
}

TEST_F(CopyFiles, WithoutASetFailsWithTheStageFrameAndNoSummary)
{
    importer = std::make_unique<FileLinkImporterImp>(controller);
    log.Clear();
    EXPECT_FALSE(importer->CopyFiles());
    EXPECT_EQ(Lines(), (QStringList{"INFO Begin copying files", "INFO Finished copying files"}));
}

TEST_F(CopyFiles, TheClosingLineFollowsTheSummaryAndComesFromTheServicesFile)
{
    tree.File("src/a.prt");
    Add("src/a.prt", "a.prt", FileMapping::Selected | FileMapping::FileLinksNotSupported);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(Lines(),
              (QStringList{"INFO Begin copying files",
                           "DEBUG File copied successfully from " + tree.Path("src/a.prt") +
                               " to " + Cloud("a.prt"),
                           "INFO Finished copying files. Copied: 1, Folders created: 0, Failed: 0, "
                           "Skipped: 0, Total: 1",
                           "INFO Finished copying files"}));
    EXPECT_EQ(log.Records().last().file, "InternalServices.cpp");
    EXPECT_EQ(log.Records().first().file, "FileLinkManagerImp.cpp");
}

TEST_F(CopyFiles, TheTreeIsLoggedBeforeTheOpeningAndAfterTheSummaryLine)
{
    tree.File("src/a.tlk", "");
    Add("src/a.tlk", "a.tlk");
    EXPECT_TRUE(importer->CopyFiles());
    const QStringList lines = Lines();
    EXPECT_EQ(lines.first(), "DEBUG ***Source file tree***");
    EXPECT_LT(lines.indexOf("DEBUG ***Source file tree***"),
              lines.indexOf("INFO Begin copying files"));
    EXPECT_GT(
        lines.indexOf("DEBUG ***Target file tree***"),
        lines.indexOf("INFO Finished copying files. Copied: 1, Folders created: 0, Failed: 0, "
                      "Skipped: 0, Total: 1"));
    EXPECT_EQ(lines.last(), "INFO Finished copying files");
}

TEST_F(CopyFiles, ASetWithoutFilesThatSupportLinksLogsNoTree)
{
    tree.File("src/a.prt");
    Add("src/a.prt", "a.prt", FileMapping::Selected | FileMapping::FileLinksNotSupported);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_TRUE(LinesWith("DEBUG ***").isEmpty());
}

TEST_F(CopyFiles, AReadOnlyTargetIsLoggedAndCountsAsFailed)
{
    tree.File("src/a.prt").File("cloud/a.prt", "old");
    QFile::setPermissions(Cloud("a.prt"), QFile::ReadOwner);
    const auto mapping = Add("src/a.prt", "a.prt");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_TRUE(log.Has("INFO Copy skipped for file " + tree.Path("src/a.prt") + ". Target file " +
                        Cloud("a.prt") + " exists and is read-only."));
    EXPECT_EQ(Summary(), "Copied: 0, Folders created: 0, Failed: 1, Skipped: 0, Total: 1");
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"a.prt", "old"}}));
    EXPECT_FALSE(mapping->HasFlag(FileMapping::Copied));
}

TEST_F(CopyFiles, AFailureDoesNotStopTheFilesThatFollow)
{
    tree.File("src/b.prt");
    Add("src/missing.prt", "missing.prt");
    Add("src/b.prt", "b.prt");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"b.prt", "src/b.prt"}}));
    EXPECT_TRUE(log.Has("ERROR Failed to copy file " + tree.Path("src/missing.prt") + " to " +
                        Cloud("missing.prt") + ". Source file is not found."));
}

TEST_F(CopyFiles, ASelectedFileThatIsItsOwnTargetIsSkippedAndCountsAsPresent)
{
    tree.File("cloud/a.prt", "content");
    const auto mapping = AddPaths(Cloud("a.prt"), Cloud("a.prt"));
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(Summary(), "Copied: 0, Folders created: 0, Failed: 0, Skipped: 1, Total: 1");
    EXPECT_TRUE(mapping->HasFlag(FileMapping::Copied));
    EXPECT_EQ(tree.Read("cloud/a.prt"), "content");
}

TEST_F(CopyFiles, ALinkedFileThatIsItsOwnTargetIsSkippedAndNotMarked)
{
    tree.File("cloud/a.prt", "content");
    const auto mapping = AddPaths(Cloud("a.prt"), Cloud("a.prt"), FileMapping::NoFlag);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(Summary(), "Copied: 0, Folders created: 0, Failed: 0, Skipped: 1, Total: 1");
    EXPECT_FALSE(mapping->HasFlag(FileMapping::Copied));
}

TEST_F(CopyFiles, SkippedFilesAreMarkedOnlyWhenSelectedAndKeptOnPurpose)
{
    struct Row
    {
        const char* name;
        FileMappingFlag flags;
        bool marked;
    };
    const Row rows[] = {
        {"selected, kept", FileMapping::Selected | FileMapping::NoCopy, true},
        {"linked, kept", FileMapping::NoCopy, false},
        {"selected, unchanged", FileMapping::Selected | FileMapping::Unchanged, false},
        {"linked, unchanged", FileMapping::Unchanged, false},
        {"selected, no file path", FileMapping::Selected | FileMapping::NotFilePath, false},
        {"all", FileMapping::Selected | FileMapping::NoCopy | FileMapping::Unchanged, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Restart();
        tree.File("src/a.prt");
        const auto mapping = Add("src/a.prt", "never.prt", row.flags);
        EXPECT_TRUE(importer->CopyFiles());
        EXPECT_EQ(Summary(), "Copied: 0, Folders created: 0, Failed: 0, Skipped: 1, Total: 1");
        EXPECT_EQ(mapping->HasFlag(FileMapping::Copied), row.marked);
        EXPECT_FALSE(tree.Exists("cloud/never.prt"));
        EXPECT_FALSE(mapping->GetCopyDate().isValid());
    }
}

TEST_F(CopyFiles, AFileKeptOrUnchangedIsNotEvenLookedAt)
{
    // Copying them would fail with a message: their sources do not exist.
    Add("src/gone1.prt", "a.prt", FileMapping::Selected | FileMapping::NoCopy);
    Add("src/gone2.prt", "b.prt", FileMapping::Unchanged);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_TRUE(LinesWith("ERROR").isEmpty());
}

TEST_F(CopyFiles, TheSkipRuleHoldsForFoldersBeforeTheyCountAsFolders)
{
    tree.Folder("src/F");
    const auto kept =
        Add("src/F", "F", FileMapping::Selected | FileMapping::Folder | FileMapping::NoCopy);
    const auto linked = Add("src/F", "G", FileMapping::Folder | FileMapping::NoCopy);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(Summary(), "Copied: 0, Folders created: 0, Failed: 0, Skipped: 2, Total: 2");
    EXPECT_TRUE(kept->HasFlag(FileMapping::Copied));
    EXPECT_FALSE(linked->HasFlag(FileMapping::Copied));
    EXPECT_FALSE(tree.Exists("cloud/F"));
}

TEST_F(CopyFiles, AnExistingFolderCountsAsCreatedWithoutASignal)
{
    tree.Folder("src/F").Folder("src/G").Folder("cloud/F");
    Add("src/F", "F", FileMapping::Selected | FileMapping::Folder);
    Add("src/G", "G", FileMapping::Selected | FileMapping::Folder);
    QSignalSpy created(importer.get(), &FileLinkImporterImp::FolderCreated);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(Summary(), "Copied: 0, Folders created: 2, Failed: 0, Skipped: 0, Total: 2");
    ASSERT_EQ(created.size(), 1);
    EXPECT_EQ(created[0][0].toString(), Cloud("G"));
}

TEST_F(CopyFiles, AnUnselectedFolderIsCountedNowhereButInTheTotal)
{
    tree.Folder("src/F");
    Add("src/F", "F", FileMapping::Folder);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(Summary(), "Copied: 0, Folders created: 0, Failed: 0, Skipped: 0, Total: 1");
    EXPECT_FALSE(tree.Exists("cloud/F"));
}

TEST_F(CopyFiles, AHiddenFolderStaysHidden)
{
    tree.File("src/.hidden/a.prt");
    Add("src/.hidden", ".hidden", FileMapping::Selected | FileMapping::Folder);
    Add("src/.hidden/a.prt", ".hidden/a.prt");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_TRUE(QFileInfo(Cloud(".hidden")).isHidden());
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{".hidden/a.prt", "src/.hidden/a.prt"}}));
}

TEST_F(CopyFiles, TheParentFolderOfACopyIsReportedOnceAndNotCounted)
{
    tree.File("src/a.prt").File("src/b.prt");
    Add("src/a.prt", "deep/er/a.prt");
    Add("src/b.prt", "deep/er/b.prt");
    QSignalSpy created(importer.get(), &FileLinkImporterImp::FolderCreated);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(Summary(), "Copied: 2, Folders created: 0, Failed: 0, Skipped: 0, Total: 2");
    ASSERT_EQ(created.size(), 1);
    EXPECT_EQ(created[0][0].toString(), Cloud("deep/er"));
}

TEST_F(CopyFiles, CopiesAreComputedTheirTargetLinks)
{
    tree.File("src/a.tlk", LinkText({{"1", "b.tlk"}})).File("src/b.tlk", "");
    const auto a = Add("src/a.tlk", "A/a.tlk", FileMapping::Selected, {Link("1", "b.tlk")});
    Add("src/b.tlk", "B/b.tlk", FileMapping::NoFlag);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(PathsOf(a->GetTargetFileLinks()), QStringList{"../B/b.tlk"});
}

TEST_F(CopyFiles, CopiesAreRememberedWhenTheImporterEnds)
{
    tree.File("src/a.prt");
    Add("src/a.prt", "a.prt");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_TRUE(Database().GetFileCopyHistoryByAuthenticationId(7).isEmpty());
    importer.reset();
    const auto history = Database().GetFileCopyHistoryByAuthenticationId(7);
    ASSERT_EQ(history.size(), 1);
    EXPECT_EQ(history[0]->GetSourceFile(), tree.Path("src/a.prt"));
    EXPECT_EQ(history[0]->GetTargetFile(), Cloud("a.prt"));
}

} // namespace Halvern::Test
