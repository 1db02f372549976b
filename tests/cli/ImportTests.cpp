// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

namespace Halvern::Test {

namespace {

/// work/proj/top.tlk links a part beside it and one in a library folder.
class ImportCommand : public CommandFixture
{
protected:
    ImportCommand()
    {
        tree.File(u"work/proj/top.tlk"_qs, "link 1 part.tlk\nlink 2 ../lib/bolt.tlk\n")
            .File(u"work/proj/part.tlk"_qs, "part\n")
            .File(u"work/lib/bolt.tlk"_qs, "bolt\n");
    }

    static FileTree::Snapshot Imported()
    {
        return {{u"Demo/top.tlk"_qs, "link 1 part.tlk\nlink 2 lib/bolt.tlk\n"},
                {u"Demo/part.tlk"_qs, "part\n"},
                {u"Demo/lib/bolt.tlk"_qs, "bolt\n"}};
    }
};

} // namespace

TEST_F(ImportCommand, BringsAFileWithItsLinkedFilesAndRewritesTheLinks)
{
    const CommandResult result = Import({u"proj/top.tlk"_qs, u"--to"_qs, u"Demo"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud(), Imported());
    EXPECT_EQ(result.Lines(),
              (QStringList{u"copied     proj/top.tlk -> Demo/top.tlk"_qs,
                           u"copied     proj/part.tlk -> Demo/part.tlk"_qs,
                           u"copied     lib/bolt.tlk -> Demo/lib/bolt.tlk"_qs,
                           u"3 copied; cloud cache folder "_qs + tree.Path(u"cloud"_qs)}));
    EXPECT_EQ(result.err, QString());
}

TEST_F(ImportCommand, RewritesLinksInFilesWhosePathsAreLong)
{
    const QString deep = QString(60, u'd') + (u'/' + QString(60, u'd')).repeated(4);
    tree.File(u"work/lib/part.scad"_qs, "cube(1);\n")
        .File(u"work/"_qs + deep + u"/top.scad"_qs, "use <../../../../../lib/part.scad>\n");

    const CommandResult result = Import({deep + u"/top.scad"_qs, u"--to"_qs, deep});

    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{deep + u"/top.scad"_qs, "use <lib/part.scad>\n"},
                                           {deep + u"/lib/part.scad"_qs, "cube(1);\n"}}));
}

TEST_F(ImportCommand, DoesNothingTheSecondTime)
{
    const QStringList arguments{u"proj/top.tlk"_qs, u"--to"_qs, u"Demo"_qs};
    ASSERT_EQ(Import(arguments).exitCode, 0);
    const QDateTime before = tree.Modified(u"cloud/Demo/top.tlk"_qs);
    const PluginCallLog calls;
    const CommandResult result = Import(arguments);
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(calls.Calls(), QStringList());
    EXPECT_EQ(Cloud(), Imported());
    EXPECT_EQ(tree.Modified(u"cloud/Demo/top.tlk"_qs), before);
    EXPECT_TRUE(result.out.contains(u"3 unchanged; "_qs)) << ::testing::PrintToString(result);
}

TEST_F(ImportCommand, ADryRunPrintsWhatTheImportPrintsAndLeavesNothingBehind)
{
    int run = 0;
    for (const QStringList& options :
         {QStringList(), QStringList{u"--json"_qs}, QStringList{u"--move"_qs},
          QStringList{u"--links-only"_qs}}) {
        const QString to = u"Demo"_qs + QString::number(++run);
        tree.File(u"work/proj/top.tlk"_qs,
                  "link 1 part.tlk\nlink 2 gone.tlk\nlink 3 https://x.org/y\n");
        const QStringList arguments = QStringList{u"proj/top.tlk"_qs, u"--to"_qs, to} + options;
        const FileTree::Snapshot unchanged = tree.Contents();
        const CommandResult dry = Import(arguments + QStringList{u"--dry-run"_qs});
        EXPECT_EQ(tree.Contents(), unchanged) << to.toStdString();
        const CommandResult real = Import(arguments);
        EXPECT_EQ(dry.out, real.out);
        EXPECT_EQ(dry.exitCode, real.exitCode);
        EXPECT_EQ(real.exitCode, 4) << ::testing::PrintToString(real);
    }
}

TEST_F(ImportCommand, AFileThatIsLinkedButMissingGivesItsOwnCodeAndItsLinkers)
{
    tree.Remove(u"work/lib/bolt.tlk"_qs);
    const CommandResult result = Import({u"proj"_qs});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_TRUE(result.Has(u"missing    lib/bolt.tlk (linked from proj/top.tlk)"_qs))
        << ::testing::PrintToString(result);
    EXPECT_TRUE(tree.Exists(u"cloud/proj/top.tlk"_qs));
}

TEST_F(ImportCommand, AUrlIsNoMissingFile)
{
    tree.File(u"work/proj/top.tlk"_qs, "link 1 https://example.org/x.tlk\n");
    const CommandResult result = Import({u"proj/top.tlk"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(result.Lines().filter(u"url "_qs).size(), 1) << ::testing::PrintToString(result);
}

TEST_F(ImportCommand, MovesGivenFilesAndCopiesLinkedOnes)
{
    const CommandResult result = Import({u"proj/top.tlk"_qs, u"--to"_qs, u"Demo"_qs, u"--move"_qs});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(Cloud(), Imported());
    EXPECT_FALSE(tree.Exists(u"work/proj/top.tlk"_qs));
    EXPECT_TRUE(tree.Exists(u"work/proj/part.tlk"_qs));
    EXPECT_TRUE(result.Has(u"moved      proj/top.tlk -> Demo/top.tlk"_qs))
        << ::testing::PrintToString(result);
}

TEST_F(ImportCommand, WithLinksOnlyLeavesTheGivenFileWhereItIs)
{
    const CommandResult result =
        Import({u"proj/top.tlk"_qs, u"--to"_qs, u"Demo"_qs, u"--links-only"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    FileTree::Snapshot expected = Imported();
    expected.remove(u"Demo/top.tlk"_qs);
    EXPECT_EQ(Cloud(), expected);
    EXPECT_TRUE(result.Has(u"skipped    proj/top.tlk: only its links are wanted"_qs))
        << ::testing::PrintToString(result);
}

TEST_F(ImportCommand, WithDirectLinksOnlyStopsAfterTheFirstStep)
{
    tree.File(u"work/proj/part.tlk"_qs, "link 1 deep.tlk\n").File(u"work/proj/deep.tlk"_qs);
    const CommandResult result = Import({u"proj/top.tlk"_qs, u"--direct-links-only"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(tree.Exists(u"cloud/part.tlk"_qs));
    EXPECT_FALSE(tree.Exists(u"cloud/deep.tlk"_qs));
}

TEST_F(ImportCommand, FollowsLinksOfTheGivenTypesOnly)
{
    const CommandResult result = Import({u"proj/top.tlk"_qs, u"--types"_qs, u"tasm"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud(),
              (FileTree::Snapshot{{u"top.tlk"_qs, "link 1 part.tlk\nlink 2 ../lib/bolt.tlk\n"}}));
    // Such a file is up to date although nothing about it is in the sync database.
    EXPECT_TRUE(Import({u"proj/top.tlk"_qs, u"--types"_qs, u"tasm"_qs})
                    .Has(u"unchanged  proj/top.tlk -> top.tlk"_qs));
}

TEST_F(ImportCommand, TakesFoldersWithTrailingSlashTheCurrentFolderAndNonAsciiNames)
{
    tree.File(u"work/Höhe über Grund/ä ö.tlk"_qs, "x");
    EXPECT_EQ(Import({u"Höhe über Grund/"_qs, u"--to"_qs, u"Ünter"_qs}).exitCode, 0);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"Ünter/Höhe über Grund/ä ö.tlk"_qs, "x"}}));
    const CommandResult here = Import({u"."_qs});
    EXPECT_EQ(here.exitCode, 0) << ::testing::PrintToString(here);
    EXPECT_TRUE(here.Has(u"copied     Höhe über Grund/ä ö.tlk -> work/Höhe über Grund/ä ö.tlk"_qs))
        << ::testing::PrintToString(here);
    EXPECT_TRUE(tree.Exists(u"cloud/work/proj/top.tlk"_qs));
}

TEST_F(ImportCommand, ASourceGivenTwiceOrInsideAnotherIsImportedOnce)
{
    const CommandResult result =
        Import({u"proj"_qs, u"proj/top.tlk"_qs, u"./proj/"_qs, u"--move"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(tree.Exists(u"cloud/proj/top.tlk"_qs));
    EXPECT_FALSE(tree.Exists(u"cloud/top.tlk"_qs));
}

TEST_F(ImportCommand, AnAbsoluteTargetInTheCloudFolderIsTheSameAsARelativeOne)
{
    EXPECT_EQ(Import({u"proj/top.tlk"_qs, u"--to"_qs, tree.Path(u"cloud/Demo"_qs) + u'/'}).exitCode,
              0);
    EXPECT_EQ(Cloud(), Imported());
}

TEST_F(ImportCommand, ALinkIntoTheCloudFolderStaysInPlace)
{
    tree.File(u"cloud/std.tlk"_qs, "std\n").File(u"work/a.tlk"_qs, "link 1 ../cloud/std.tlk\n");
    const CommandResult result = Import({u"a.tlk"_qs, u"--to"_qs, u"Demo"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Read(u"cloud/Demo/a.tlk"_qs), "link 1 ../std.tlk\n");
    EXPECT_EQ(result.Lines().filter(u"in place "_qs).size(), 1) << ::testing::PrintToString(result);
}

} // namespace Halvern::Test
