// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

/// work/proj/top.tlk links a part beside it and one in a library folder.
class ImportCommand : public CommandFixture
{
protected:
    ImportCommand()
    {
        tree.File(u"work/proj/top.tlk"_s, "link 1 part.tlk\nlink 2 ../lib/bolt.tlk\n")
            .File(u"work/proj/part.tlk"_s, "part\n")
            .File(u"work/lib/bolt.tlk"_s, "bolt\n");
    }

    static FileTree::Snapshot Imported()
    {
        return {{u"Demo/top.tlk"_s, "link 1 part.tlk\nlink 2 lib/bolt.tlk\n"},
                {u"Demo/part.tlk"_s, "part\n"},
                {u"Demo/lib/bolt.tlk"_s, "bolt\n"}};
    }
};

} // namespace

TEST_F(ImportCommand, BringsAFileWithItsLinkedFilesAndRewritesTheLinks)
{
    const CommandResult result = Import({u"proj/top.tlk"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud(), Imported());
    EXPECT_EQ(result.Lines(),
              (QStringList{u"copied     proj/top.tlk -> Demo/top.tlk"_s,
                           u"copied     proj/part.tlk -> Demo/part.tlk"_s,
                           u"copied     lib/bolt.tlk -> Demo/lib/bolt.tlk (outside the project)"_s,
                           u"3 copied, 1 from outside the project; cloud cache folder "_s +
                               tree.Path(u"cloud"_s)}));
    EXPECT_EQ(result.err, QString());
}

TEST_F(ImportCommand, RewritesLinksInFilesWhosePathsAreLong)
{
    const QString deep = QString(60, u'd') + (u'/' + QString(60, u'd')).repeated(4);
    tree.File(u"work/lib/part.scad"_s, "cube(1);\n")
        .File(u"work/"_s + deep + u"/top.scad"_s, "use <../../../../../lib/part.scad>\n");

    const CommandResult result = Import({deep + u"/top.scad"_s, u"--to"_s, deep});

    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{deep + u"/top.scad"_s, "use <lib/part.scad>\n"},
                                           {deep + u"/lib/part.scad"_s, "cube(1);\n"}}));
}

TEST_F(ImportCommand, DoesNothingTheSecondTime)
{
    const QStringList arguments{u"proj/top.tlk"_s, u"--to"_s, u"Demo"_s};
    ASSERT_EQ(Import(arguments).exitCode, 0);
    const QDateTime before = tree.Modified(u"cloud/Demo/top.tlk"_s);
    const PluginCallLog calls;
    const CommandResult result = Import(arguments);
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(calls.Calls(), QStringList());
    EXPECT_EQ(Cloud(), Imported());
    EXPECT_EQ(tree.Modified(u"cloud/Demo/top.tlk"_s), before);
    EXPECT_TRUE(result.out.contains(u"3 unchanged, "_s)) << ::testing::PrintToString(result);
}

TEST_F(ImportCommand, ADryRunPrintsWhatTheImportPrintsAndLeavesNothingBehind)
{
    int run = 0;
    for (const QStringList& options : {QStringList(), QStringList{u"--json"_s},
                                       QStringList{u"--move"_s}, QStringList{u"--links-only"_s}}) {
        const QString to = u"Demo"_s + QString::number(++run);
        tree.File(u"work/proj/top.tlk"_s,
                  "link 1 part.tlk\nlink 2 gone.tlk\nlink 3 https://x.org/y\n");
        const QStringList arguments = QStringList{u"proj/top.tlk"_s, u"--to"_s, to} + options;
        const FileTree::Snapshot unchanged = tree.Contents();
        const CommandResult dry = Import(arguments + QStringList{u"--dry-run"_s});
        EXPECT_EQ(tree.Contents(), unchanged) << to.toStdString();
        const CommandResult real = Import(arguments);
        EXPECT_EQ(dry.out, real.out);
        EXPECT_EQ(dry.exitCode, real.exitCode);
        // What a move leaves undone outranks the missing file that is its reason.
        EXPECT_EQ(real.exitCode, options.contains(u"--move"_s) ? 1 : 4)
            << ::testing::PrintToString(real);
    }
}

TEST_F(ImportCommand, AFileThatIsLinkedButMissingGivesItsOwnCodeAndItsLinkers)
{
    tree.Remove(u"work/lib/bolt.tlk"_s);
    const CommandResult result = Import({u"proj"_s});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_TRUE(result.Has(u"missing    lib/bolt.tlk (linked from proj/top.tlk)"_s))
        << ::testing::PrintToString(result);
    EXPECT_TRUE(tree.Exists(u"cloud/proj/top.tlk"_s));
}

TEST_F(ImportCommand, AUrlIsNoMissingFile)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 https://example.org/x.tlk\n");
    const CommandResult result = Import({u"proj/top.tlk"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(result.Lines().filter(u"url "_s).size(), 1) << ::testing::PrintToString(result);
}

TEST_F(ImportCommand, MovesGivenFilesAndCopiesLinkedOnes)
{
    const CommandResult result = Import({u"proj/top.tlk"_s, u"--to"_s, u"Demo"_s, u"--move"_s});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(Cloud(), Imported());
    EXPECT_FALSE(tree.Exists(u"work/proj/top.tlk"_s));
    EXPECT_TRUE(tree.Exists(u"work/proj/part.tlk"_s));
    EXPECT_TRUE(result.Has(u"moved      proj/top.tlk -> Demo/top.tlk"_s))
        << ::testing::PrintToString(result);
}

TEST_F(ImportCommand, WithLinksOnlyLeavesTheGivenFileWhereItIs)
{
    const CommandResult result =
        Import({u"proj/top.tlk"_s, u"--to"_s, u"Demo"_s, u"--links-only"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    FileTree::Snapshot expected = Imported();
    expected.remove(u"Demo/top.tlk"_s);
    EXPECT_EQ(Cloud(), expected);
    EXPECT_TRUE(result.Has(u"skipped    proj/top.tlk: only its links are wanted"_s))
        << ::testing::PrintToString(result);
}

TEST_F(ImportCommand, WithDirectLinksOnlyStopsAfterTheFirstStep)
{
    tree.File(u"work/proj/part.tlk"_s, "link 1 deep.tlk\n").File(u"work/proj/deep.tlk"_s);
    const CommandResult result = Import({u"proj/top.tlk"_s, u"--direct-links-only"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(tree.Exists(u"cloud/part.tlk"_s));
    EXPECT_FALSE(tree.Exists(u"cloud/deep.tlk"_s));
}

TEST_F(ImportCommand, FollowsLinksOfTheGivenTypesOnly)
{
    const CommandResult result = Import({u"proj/top.tlk"_s, u"--types"_s, u"tasm"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud(),
              (FileTree::Snapshot{{u"top.tlk"_s, "link 1 part.tlk\nlink 2 ../lib/bolt.tlk\n"}}));
    // Such a file is up to date although nothing about it is in the sync database.
    EXPECT_TRUE(Import({u"proj/top.tlk"_s, u"--types"_s, u"tasm"_s})
                    .Has(u"unchanged  proj/top.tlk -> top.tlk"_s));
}

TEST_F(ImportCommand, TakesFoldersWithTrailingSlashTheCurrentFolderAndNonAsciiNames)
{
    tree.File(u"work/Höhe über Grund/ä ö.tlk"_s, "x");
    EXPECT_EQ(Import({u"Höhe über Grund/"_s, u"--to"_s, u"Ünter"_s}).exitCode, 0);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"Ünter/Höhe über Grund/ä ö.tlk"_s, "x"}}));
    const CommandResult here = Import({u"."_s});
    EXPECT_EQ(here.exitCode, 0) << ::testing::PrintToString(here);
    EXPECT_TRUE(here.Has(u"copied     Höhe über Grund/ä ö.tlk -> work/Höhe über Grund/ä ö.tlk"_s))
        << ::testing::PrintToString(here);
    EXPECT_TRUE(tree.Exists(u"cloud/work/proj/top.tlk"_s));
}

TEST_F(ImportCommand, ASourceGivenTwiceOrInsideAnotherIsImportedOnce)
{
    const CommandResult result = Import({u"proj"_s, u"proj/top.tlk"_s, u"./proj/"_s, u"--move"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(tree.Exists(u"cloud/proj/top.tlk"_s));
    EXPECT_FALSE(tree.Exists(u"cloud/top.tlk"_s));
}

TEST_F(ImportCommand, AnAbsoluteTargetInTheCloudFolderIsTheSameAsARelativeOne)
{
    EXPECT_EQ(Import({u"proj/top.tlk"_s, u"--to"_s, tree.Path(u"cloud/Demo"_s) + u'/'}).exitCode,
              0);
    EXPECT_EQ(Cloud(), Imported());
}

TEST_F(ImportCommand, OfLinkedFilesFromAFolderThatIsNoneIsAUsageErrorThatNamesIt)
{
    const CommandResult missing =
        Import({u"proj"_s, u"--within"_s, u"lib"_s, u"--within"_s, u"nowhere"_s});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_EQ(missing.err, u"corsync: --within nowhere: no such folder\n"_s);
    const CommandResult file = Import({u"proj"_s, u"--within"_s, u"proj/top.tlk"_s});
    EXPECT_EQ(file.exitCode, 2);
    EXPECT_EQ(file.err, u"corsync: --within proj/top.tlk is no folder\n"_s);
    EXPECT_EQ(Cloud(), FileTree::Snapshot());
}

TEST_F(ImportCommand, LeavesOutWhatAPatternMeansWithoutItsTrailingSpaces)
{
    Import({u"proj"_s, u"--exclude"_s, u"top.tlk  "_s});
    EXPECT_FALSE(tree.Exists(u"cloud/proj/top.tlk"_s));
}

TEST_F(ImportCommand, ALinkIntoTheCloudFolderStaysInPlace)
{
    tree.File(u"cloud/std.tlk"_s, "std\n").File(u"work/a.tlk"_s, "link 1 ../cloud/std.tlk\n");
    const CommandResult result = Import({u"a.tlk"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Read(u"cloud/Demo/a.tlk"_s), "link 1 ../std.tlk\n");
    EXPECT_EQ(result.Lines().filter(u"in place "_s).size(), 1) << ::testing::PrintToString(result);
}

} // namespace Halvern::Test
