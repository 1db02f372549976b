// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class ImportThatFails : public CommandFixture
{};

} // namespace

TEST_F(ImportThatFails, ASourceThatDoesNotExistIsNamedAndNothingIsCopied)
{
    tree.File(u"work/a.tlk"_s);
    const CommandResult result = Import({u"a.tlk"_s, u"nope.tlk"_s});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_TRUE(result.err.contains(u"nope.tlk"_s));
    EXPECT_FALSE(result.err.contains(u"a.tlk"_s));
    EXPECT_EQ(Cloud(), FileTree::Snapshot());
}

TEST_F(ImportThatFails, PlacesThatCannotBeImportedFromOrToAreUsageErrors)
{
    tree.File(u"work/a.tlk"_s).File(u"cloud/in.tlk"_s);
    struct Row
    {
        QStringList arguments;
        QString reason;
    };
    const QList<Row> rows = {
        {{u"a.tlk"_s, u"--to"_s, tree.Path(u"elsewhere"_s)}, u"does not lie in"_s},
        {{u"a.tlk"_s, u"--to"_s, u"../elsewhere"_s}, u"does not lie in"_s},
        {{u"a.tlk"_s, u"--to"_s, u"in.tlk"_s}, u"is a file"_s},
        {{u"../cloud/in.tlk"_s}, u"lies in the cloud cache folder already"_s},
        {{u".."_s}, u"contains the cloud cache folder"_s},
        {{QDir::rootPath()}, u"is a whole drive"_s},
        {{u"a.tlk"_s, u"--plugin-path"_s, u"nope"_s}, u"no such plug-in folder"_s},
        {{u"a.tlk"_s, u"--log-file"_s, u"no/such/folder.log"_s}, u"log file"_s},
    };
    for (const Row& row : rows) {
        const CommandResult result = Import(row.arguments);
        EXPECT_EQ(result.exitCode, 2) << row.reason.toStdString();
        EXPECT_TRUE(result.err.contains(row.reason)) << ::testing::PrintToString(result);
        EXPECT_EQ(result.out, QString());
    }
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"in.tlk"_s, "cloud/in.tlk"}}));
}

TEST_F(ImportThatFails, AReadOnlyTargetIsAFailureWithItsReason)
{
    tree.File(u"work/a.tlk"_s, "new").File(u"work/b.tlk"_s, "b").File(u"cloud/a.tlk"_s, "old");
    QFile::setPermissions(tree.Path(u"cloud/a.tlk"_s), QFile::ReadOwner | QFile::ReadUser);
    const CommandResult result = Import({u"a.tlk"_s, u"b.tlk"_s, u"--collisions"_s, u"replace"_s});
    EXPECT_EQ(result.exitCode, 1) << ::testing::PrintToString(result);
    ASSERT_FALSE(result.Lines().isEmpty());
    EXPECT_TRUE(result.Lines()[0].startsWith(u"failed     a.tlk -> a.tlk: "_s));
    EXPECT_TRUE(result.Lines()[0].contains(u"read-only"_s));
    EXPECT_EQ(tree.Read(u"cloud/a.tlk"_s), "old");
    EXPECT_EQ(tree.Read(u"cloud/b.tlk"_s), "b");
}

TEST_F(ImportThatFails, AFileInThePlaceOfATargetsFolderIsTheReasonGiven)
{
    tree.File(u"work/top.tlk"_s, "link 1 ../parts/p.tlk\n")
        .File(u"parts/p.tlk"_s, "p")
        .File(u"cloud/parts"_s, "a file");
    const CommandResult result = Import({u"top.tlk"_s});
    EXPECT_EQ(result.exitCode, 1) << ::testing::PrintToString(result);
    const QStringList failed = result.Lines().filter(u"failed "_s);
    ASSERT_FALSE(failed.isEmpty());
    EXPECT_TRUE(failed[0].contains(u"p.tlk"_s));
    EXPECT_TRUE(failed[0].endsWith(u": a file stands where a folder must be: "_s +
                                   tree.Path(u"cloud/parts"_s)))
        << failed[0].toStdString();
}

TEST_F(ImportThatFails, AFileThatAPluginCannotReadIsCopiedAndReportedWithTheReason)
{
    tree.File(u"work/a.tlk"_s, "fail\n");
    const CommandResult result = Import({u"a.tlk"_s});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_TRUE(result.Has(u"copied     a.tlk -> a.tlk: test resolver: told to fail"_s))
        << ::testing::PrintToString(result);
    EXPECT_TRUE(tree.Exists(u"cloud/a.tlk"_s));
}

TEST_F(ImportThatFails, LinksThatAPluginCannotRewriteAreReportedWithTheReason)
{
    tree.File(u"work/a.tlk"_s, "link 1 ../lib/b.tlk\nnorepath\n").File(u"lib/b.tlk"_s, "b");
    for (const QString& word : {u"copied     "_s, u"unchanged  "_s}) {
        const CommandResult result = Import({u"a.tlk"_s});
        EXPECT_EQ(result.exitCode, 7);
        EXPECT_TRUE(result.Has(word + u"a.tlk -> a.tlk: test resolver: told not to repath; its "
                                      "links are still to be rewritten; every import tries, and "
                                      "so does corsync retry"_s))
            << ::testing::PrintToString(result);
    }
}

TEST_F(ImportThatFails, APluginThatDoesNotLoadIsAProblemOfEachFileThatNeedsIt)
{
    tree.File(u"work/a.xyz"_s)
        .File(u"plugins/broken.syncplugin"_s,
              Registration(u"NoSuchLibrary.so"_s, u"FileLinkResolver"_s, u"xyz"_s));
    const CommandResult result = Import({u"a.xyz"_s});
    EXPECT_EQ(result.exitCode, 7);
    const QStringList lines = result.Lines().filter(u"copied     a.xyz -> a.xyz: "_s);
    ASSERT_EQ(lines.size(), 1) << ::testing::PrintToString(result);
    EXPECT_TRUE(lines[0].contains(u"NoSuchLibrary.so"_s)) << lines[0].toStdString();
    EXPECT_TRUE(tree.Exists(u"cloud/a.xyz"_s));
}

TEST_F(ImportThatFails, ADatabaseThatIsNoneEndsTheJobBeforeItBegins)
{
    tree.File(u"work/a.tlk"_s).File(u"sync.db"_s, QByteArray(8192, 'x'));
    const CommandResult result = Import({u"a.tlk"_s});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_TRUE(result.err.contains(u"sync.db"_s)) << ::testing::PrintToString(result);
    EXPECT_FALSE(tree.Exists(u"cloud/a.tlk"_s));
    EXPECT_EQ(tree.Read(u"sync.db"_s), QByteArray(8192, 'x'));
}

TEST_F(ImportThatFails, ADamagedDatabaseIsToldBeforeAnythingIsCopied)
{
    tree.File(u"work/a.tlk"_s, "link 1 b.tlk\n").File(u"work/b.tlk"_s);
    ASSERT_EQ(Import({u"a.tlk"_s}).exitCode, 0);
    QByteArray database = tree.Read(u"sync.db"_s);
    // The page after the first, whose tables and indexes every database has.
    const qsizetype page = 4096;
    ASSERT_GT(database.size(), 2 * page);
    tree.File(u"sync.db"_s, database.replace(page, 512, QByteArray(512, '\0')))
        .File(u"work/b.tlk"_s, "changed\n");
    const FileTree::Snapshot before = Cloud();
    const CommandResult result = Import({u"a.tlk"_s});
    EXPECT_EQ(result.exitCode, 7) << ::testing::PrintToString(result);
    EXPECT_TRUE(
        result.err.contains(u"the sync database %1 is damaged: "_s.arg(tree.Path(u"sync.db"_s))))
        << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud(), before);

    // As the line says.
    ASSERT_TRUE(QFile::rename(tree.Path(u"sync.db"_s), tree.Path(u"aside.db"_s)));
    const CommandResult again = Import({u"a.tlk"_s, u"--linked-collisions"_s, u"replace"_s});
    EXPECT_EQ(again.exitCode, 0) << ::testing::PrintToString(again);
    EXPECT_EQ(tree.Read(u"cloud/b.tlk"_s), "changed\n");
}

} // namespace Halvern::Test
