// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class LinksCommand : public CommandFixture
{
protected:
    CommandResult Links(const QStringList& arguments) const
    {
        return Run(QStringList{u"links"_s, u"--plugin-path"_s, tree.Path(u"plugins"_s),
                               u"--plugin-path"_s, TestPluginFolder()} +
                   arguments);
    }
};

} // namespace

TEST_F(LinksCommand, ShowsEachLinkWhereItLeadsAndWhetherItIsThere)
{
    tree.File(u"work/a.tlk"_s, "link 1 sub/b.tlk\nlink 2 gone.tlk\nlink 3 https://x.org/y\n"
                               "link 4 sub/b.tlk\n")
        .File(u"work/sub/b.tlk"_s, "link 1 deeper.tlk\n");
    const FileTree::Snapshot before = tree.Contents();
    const CommandResult result = Links({u"a.tlk"_s});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.Lines(),
              (QStringList{tree.Path(u"work/a.tlk"_s) + u": 4 links"_s,
                           u"  found    sub/b.tlk -> "_s + tree.Path(u"work/sub/b.tlk"_s),
                           u"  missing  gone.tlk -> "_s + tree.Path(u"work/gone.tlk"_s),
                           u"  url      https://x.org/y"_s,
                           u"  found    sub/b.tlk -> "_s + tree.Path(u"work/sub/b.tlk"_s)}))
        << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Contents(), before);
}

TEST_F(LinksCommand, AreAllFoundForACompleteFileAndNoneForAFileWithout)
{
    tree.File(u"work/a.tlk"_s, "link 1 b.tlk\n").File(u"work/b.tlk"_s, "b\n");
    const CommandResult result = Links({u"a.tlk"_s, u"b.tlk"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.Has(tree.Path(u"work/b.tlk"_s) + u": no links"_s));
}

TEST_F(LinksCommand, OfAFormatThatNobodyReadsAreNotCalledNone)
{
    tree.File(u"work/a.dwg"_s, "a").File(u"work/b.tlk"_s, "b").File(u"work/README"_s, "c");
    const QStringList files{u"a.dwg"_s, u"b.tlk"_s, u"README"_s};
    const CommandResult result = Links(files);
    EXPECT_EQ(result.Lines(),
              (QStringList{tree.Path(u"work/a.dwg"_s) + u": no plug-in reads .dwg"_s,
                           tree.Path(u"work/b.tlk"_s) + u": no links"_s,
                           tree.Path(u"work/README"_s) +
                               u": no plug-in reads files without an extension"_s}))
        << ::testing::PrintToString(result);
    const QList<QJsonObject> lines = Links(files + QStringList{u"--json"_s}).Json();
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0][u"event"].toString(), u"unknown-format"_s);
    EXPECT_EQ(lines[0][u"file"].toString(), tree.Path(u"work/a.dwg"_s));
    EXPECT_EQ(lines[0][u"extension"].toString(), u"dwg"_s);
    EXPECT_EQ(lines[1][u"file"].toString(), tree.Path(u"work/README"_s));
}

TEST_F(LinksCommand, OfOneBrokenFileAreAFailureAndTheOthersAreShown)
{
    tree.File(u"work/a.tlk"_s, "fail\n").File(u"work/b.tlk"_s, "link 1 a.tlk\n");
    const CommandResult result = Links({u"a.tlk"_s, u"b.tlk"_s});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_TRUE(result.Has(tree.Path(u"work/a.tlk"_s) + u": test resolver: told to fail"_s))
        << ::testing::PrintToString(result);
    EXPECT_TRUE(result.Has(u"  found    a.tlk -> "_s + tree.Path(u"work/a.tlk"_s)));
    const QList<QJsonObject> lines = Links({u"a.tlk"_s, u"--json"_s}).Json();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0][u"event"].toString(), u"problem"_s);
    EXPECT_EQ(lines[0][u"file"].toString(), tree.Path(u"work/a.tlk"_s));
    EXPECT_EQ(lines[1][u"exitCode"].toInt(), 7);
}

TEST_F(LinksCommand, OfOneFileAreShownWhateverIsWrongWithARegistrationWhichIsTold)
{
    tree.File(u"work/x.foo"_s).File(u"plugins/broken.syncplugin"_s, "<SyncPlugins");
    const CommandResult result = Links({u"x.foo"_s});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_TRUE(result.err.contains(tree.Path(u"plugins/broken.syncplugin"_s)))
        << ::testing::PrintToString(result);
    EXPECT_EQ(result.Lines(),
              QStringList{tree.Path(u"work/x.foo"_s) + u": no plug-in reads .foo"_s});
    const QList<QJsonObject> lines = Links({u"x.foo"_s, u"--json"_s}).Json();
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[1][u"event"].toString(), u"problem"_s);
    EXPECT_EQ(lines[1][u"file"].toString(), tree.Path(u"plugins/broken.syncplugin"_s));
    EXPECT_EQ(lines[2][u"exitCode"].toInt(), 7);
}

TEST_F(LinksCommand, OfNoFileAreAnError)
{
    tree.Folder(u"work/sub"_s);
    EXPECT_EQ(Links({u"nope.tlk"_s}).exitCode, 3);
    EXPECT_EQ(Links({u"sub"_s}).exitCode, 2);
}

TEST_F(LinksCommand, ComeAsJsonOneLineEach)
{
    tree.File(u"work/a.tlk"_s, "link 1 ä.tlk\nlink 2 https://x.org/y\n");
    const QList<QJsonObject> lines = Links({u"a.tlk"_s, u"--json"_s}).Json();
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0][u"status"].toString(), u"missing"_s);
    EXPECT_EQ(lines[0][u"path"].toString(), u"ä.tlk"_s);
    EXPECT_EQ(lines[0][u"resolved"].toString(), tree.Path(u"work/ä.tlk"_s));
    EXPECT_EQ(lines[1][u"resolved"].toString(), u"https://x.org/y"_s);
    EXPECT_EQ(lines[2][u"exitCode"].toInt(), 4);
}

} // namespace Halvern::Test
