// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

namespace Halvern::Test {

namespace {

class ImportThatFails : public CommandFixture
{};

} // namespace

TEST_F(ImportThatFails, ASourceThatDoesNotExistIsNamedAndNothingIsCopied)
{
    tree.File(u"work/a.tlk"_qs);
    const CommandResult result = Import({u"a.tlk"_qs, u"nope.tlk"_qs});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_TRUE(result.err.contains(u"nope.tlk"_qs));
    EXPECT_FALSE(result.err.contains(u"a.tlk"_qs));
    EXPECT_EQ(Cloud(), FileTree::Snapshot());
}

TEST_F(ImportThatFails, PlacesThatCannotBeImportedFromOrToAreUsageErrors)
{
    tree.File(u"work/a.tlk"_qs).File(u"cloud/in.tlk"_qs);
    struct Row
    {
        QStringList arguments;
        QString reason;
    };
    const QList<Row> rows = {
        {{u"a.tlk"_qs, u"--to"_qs, tree.Path(u"elsewhere"_qs)}, u"does not lie in"_qs},
        {{u"a.tlk"_qs, u"--to"_qs, u"../elsewhere"_qs}, u"does not lie in"_qs},
        {{u"a.tlk"_qs, u"--to"_qs, u"in.tlk"_qs}, u"is a file"_qs},
        {{u"../cloud/in.tlk"_qs}, u"lies in the cloud cache folder already"_qs},
        {{u".."_qs}, u"contains the cloud cache folder"_qs},
        {{QDir::rootPath()}, u"is a whole drive"_qs},
        {{u"a.tlk"_qs, u"--plugin-path"_qs, u"nope"_qs}, u"no such plug-in folder"_qs},
        {{u"a.tlk"_qs, u"--log-file"_qs, u"no/such/folder.log"_qs}, u"log file"_qs},
    };
    for (const Row& row : rows) {
        const CommandResult result = Import(row.arguments);
        EXPECT_EQ(result.exitCode, 2) << row.reason.toStdString();
        EXPECT_TRUE(result.err.contains(row.reason)) << ::testing::PrintToString(result);
        EXPECT_EQ(result.out, QString());
    }
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"in.tlk"_qs, "cloud/in.tlk"}}));
}

TEST_F(ImportThatFails, AReadOnlyTargetIsAFailureWithItsReason)
{
    tree.File(u"work/a.tlk"_qs, "new").File(u"work/b.tlk"_qs, "b").File(u"cloud/a.tlk"_qs, "old");
    QFile::setPermissions(tree.Path(u"cloud/a.tlk"_qs), QFile::ReadOwner | QFile::ReadUser);
    const CommandResult result =
        Import({u"a.tlk"_qs, u"b.tlk"_qs, u"--collisions"_qs, u"replace"_qs});
    EXPECT_EQ(result.exitCode, 1) << ::testing::PrintToString(result);
    ASSERT_FALSE(result.Lines().isEmpty());
    EXPECT_TRUE(result.Lines()[0].startsWith(u"failed     a.tlk -> a.tlk: "_qs));
    EXPECT_TRUE(result.Lines()[0].contains(u"read-only"_qs));
    EXPECT_EQ(tree.Read(u"cloud/a.tlk"_qs), "old");
    EXPECT_EQ(tree.Read(u"cloud/b.tlk"_qs), "b");
}

TEST_F(ImportThatFails, AFileInThePlaceOfATargetsFolderIsTheReasonGiven)
{
    tree.File(u"work/top.tlk"_qs, "link 1 ../parts/p.tlk\n")
        .File(u"parts/p.tlk"_qs, "p")
        .File(u"cloud/parts"_qs, "a file");
    const CommandResult result = Import({u"top.tlk"_qs});
    EXPECT_EQ(result.exitCode, 1) << ::testing::PrintToString(result);
    const QStringList failed = result.Lines().filter(u"failed "_qs);
    ASSERT_FALSE(failed.isEmpty());
    EXPECT_TRUE(failed[0].contains(u"p.tlk"_qs));
    EXPECT_TRUE(failed[0].endsWith(u": The folder "_qs + tree.Path(u"cloud/parts"_qs) +
                                   u" could not be made"_qs))
        << failed[0].toStdString();
}

TEST_F(ImportThatFails, AFileThatAPluginCannotReadIsCopiedAndReportedWithTheReason)
{
    tree.File(u"work/a.tlk"_qs, "fail\n");
    const CommandResult result = Import({u"a.tlk"_qs});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_TRUE(result.Has(u"copied     a.tlk -> a.tlk: test resolver: told to fail"_qs))
        << ::testing::PrintToString(result);
    EXPECT_TRUE(tree.Exists(u"cloud/a.tlk"_qs));
}

TEST_F(ImportThatFails, LinksThatAPluginCannotRewriteAreReportedWithTheReason)
{
    tree.File(u"work/a.tlk"_qs, "link 1 b.tlk\nnorepath\n").File(u"work/b.tlk"_qs, "b");
    const CommandResult result = Import({u"a.tlk"_qs});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_TRUE(result.Has(u"copied     a.tlk -> a.tlk: test resolver: told not to repath"_qs))
        << ::testing::PrintToString(result);
}

TEST_F(ImportThatFails, APluginThatDoesNotLoadIsAProblemOfEachFileThatNeedsIt)
{
    tree.File(u"work/a.xyz"_qs)
        .File(u"plugins/broken.syncplugin"_qs,
              Registration(u"NoSuchLibrary.so"_qs, u"FileLinkResolver"_qs, u"xyz"_qs));
    const CommandResult result = Import({u"a.xyz"_qs});
    EXPECT_EQ(result.exitCode, 7);
    const QStringList lines = result.Lines().filter(u"copied     a.xyz -> a.xyz: "_qs);
    ASSERT_EQ(lines.size(), 1) << ::testing::PrintToString(result);
    EXPECT_TRUE(lines[0].contains(u"NoSuchLibrary.so"_qs)) << lines[0].toStdString();
    EXPECT_TRUE(tree.Exists(u"cloud/a.xyz"_qs));
}

TEST_F(ImportThatFails, ADatabaseThatIsNoneEndsTheJobBeforeItBegins)
{
    tree.File(u"work/a.tlk"_qs).File(u"sync.db"_qs, QByteArray(8192, 'x'));
    const CommandResult result = Import({u"a.tlk"_qs});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_TRUE(result.err.contains(u"sync.db"_qs)) << ::testing::PrintToString(result);
    EXPECT_FALSE(tree.Exists(u"cloud/a.tlk"_qs));
    EXPECT_EQ(tree.Read(u"sync.db"_qs), QByteArray(8192, 'x'));
}

} // namespace Halvern::Test
