// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

namespace Halvern::Test {

namespace {

class LinksCommand : public CommandFixture
{
protected:
    CommandResult Links(const QStringList& arguments) const
    {
        return Run(QStringList{u"links"_qs, u"--plugin-path"_qs, tree.Path(u"plugins"_qs),
                               u"--plugin-path"_qs, TestPluginFolder()} +
                   arguments);
    }
};

} // namespace

TEST_F(LinksCommand, ShowsEachLinkWhereItLeadsAndWhetherItIsThere)
{
    tree.File(u"work/a.tlk"_qs, "link 1 sub/b.tlk\nlink 2 gone.tlk\nlink 3 https://x.org/y\n"
                                "link 4 sub/b.tlk\n")
        .File(u"work/sub/b.tlk"_qs, "link 1 deeper.tlk\n");
    const FileTree::Snapshot before = tree.Contents();
    const CommandResult result = Links({u"a.tlk"_qs});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.Lines(),
              (QStringList{tree.Path(u"work/a.tlk"_qs) + u": 4 links"_qs,
                           u"  found    sub/b.tlk -> "_qs + tree.Path(u"work/sub/b.tlk"_qs),
                           u"  missing  gone.tlk -> "_qs + tree.Path(u"work/gone.tlk"_qs),
                           u"  url      https://x.org/y"_qs,
                           u"  found    sub/b.tlk -> "_qs + tree.Path(u"work/sub/b.tlk"_qs)}))
        << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Contents(), before);
}

TEST_F(LinksCommand, AreAllFoundForACompleteFileAndNoneForAFileWithout)
{
    tree.File(u"work/a.tlk"_qs, "link 1 b.tlk\n").File(u"work/b.tlk"_qs, "b\n");
    const CommandResult result = Links({u"a.tlk"_qs, u"b.tlk"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.Has(tree.Path(u"work/b.tlk"_qs) + u": no links"_qs));
}

TEST_F(LinksCommand, OfOneBrokenFileAreAFailureAndTheOthersAreShown)
{
    tree.File(u"work/a.tlk"_qs, "fail\n").File(u"work/b.tlk"_qs, "link 1 a.tlk\n");
    const CommandResult result = Links({u"a.tlk"_qs, u"b.tlk"_qs});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_TRUE(result.Has(tree.Path(u"work/a.tlk"_qs) + u": test resolver: told to fail"_qs))
        << ::testing::PrintToString(result);
    EXPECT_TRUE(result.Has(u"  found    a.tlk -> "_qs + tree.Path(u"work/a.tlk"_qs)));
    const QList<QJsonObject> lines = Links({u"a.tlk"_qs, u"--json"_qs}).Json();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0][u"event"].toString(), u"problem"_qs);
    EXPECT_EQ(lines[0][u"file"].toString(), tree.Path(u"work/a.tlk"_qs));
    EXPECT_EQ(lines[1][u"exitCode"].toInt(), 7);
}

TEST_F(LinksCommand, OfNoFileAreAnError)
{
    tree.Folder(u"work/sub"_qs);
    EXPECT_EQ(Links({u"nope.tlk"_qs}).exitCode, 3);
    EXPECT_EQ(Links({u"sub"_qs}).exitCode, 2);
}

TEST_F(LinksCommand, ComeAsJsonOneLineEach)
{
    tree.File(u"work/a.tlk"_qs, "link 1 ä.tlk\n");
    const QList<QJsonObject> lines = Links({u"a.tlk"_qs, u"--json"_qs}).Json();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0][u"status"].toString(), u"missing"_qs);
    EXPECT_EQ(lines[0][u"path"].toString(), u"ä.tlk"_qs);
    EXPECT_EQ(lines[0][u"resolved"].toString(), tree.Path(u"work/ä.tlk"_qs));
    EXPECT_EQ(lines[1][u"exitCode"].toInt(), 4);
}

} // namespace Halvern::Test
