// SPDX-License-Identifier: Apache-2.0

// Symbolic links inside a selection.

#include "ScenarioFixture.h"

#include <QtCore/QFile>

namespace Halvern::Test {

namespace {

class SymbolicLinksInASelection : public ScenarioFixture
{
protected:
    SymbolicLinksInASelection()
    {
        tree.File(u"work/proj/a.txt"_s, "a")
            .File(u"outside/x.txt"_s, "x")
            .File(u"outside/deep/y.txt"_s, "y");
    }
    void Link(const QString& at, const QString& to)
    {
        ASSERT_TRUE(QFile::link(tree.Path(to), tree.Path(at)));
    }
};

} // namespace

TEST_F(SymbolicLinksInASelection, ToFoldersAreOneLineEachAndNothingOfThemIsImported)
{
    Link(u"work/proj/one"_s, u"outside"_s);
    Link(u"work/proj/two"_s, u"outside/deep"_s);
    Link(u"work/proj/round"_s, u"work/proj"_s);
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    QStringList lines = report.Lines();
    for (QString& line : lines)
        line = line.section(u':', 0, 0).section(u" ->"_s, 0, 0);
    lines.sort();
    EXPECT_EQ(lines, (QStringList{u"copied work/proj/a.txt"_s, u"skipped work/proj/one"_s,
                                  u"skipped work/proj/round"_s, u"skipped work/proj/two"_s}));
    EXPECT_EQ(tree.Contents(u"cloud"_s), (FileTree::Snapshot{{u"proj/a.txt"_s, "a"}}));
}

TEST_F(SymbolicLinksInASelection, ToFoldersKeepWhatTheyLeadToUnderAMove)
{
    Link(u"work/proj/one"_s, u"outside"_s);
    const auto outside = Stamps(u"outside"_s);
    EXPECT_EQ(Report({u"proj"_s, u"--move"_s}).exitCode, 0);
    EXPECT_EQ(Stamps(u"outside"_s), outside);
    EXPECT_EQ(tree.Contents(u"cloud"_s), (FileTree::Snapshot{{u"proj/a.txt"_s, "a"}}));
}

TEST_F(SymbolicLinksInASelection, ToFilesAreImportedAsTheFiles)
{
    Link(u"work/proj/link.txt"_s, u"outside/x.txt"_s);
    for (int run = 0; run < 2; ++run)
        EXPECT_EQ(Report({u"proj"_s}).exitCode, 0);
    EXPECT_EQ(Stamp(u"cloud/proj/link.txt"_s).kind, "file");
    EXPECT_EQ(tree.Read(u"cloud/proj/link.txt"_s), "x");
}

TEST_F(SymbolicLinksInASelection, AFileThatIsReachedThroughALinkedFolderComesForItsLink)
{
    Link(u"work/proj/lib"_s, u"outside"_s);
    Design(u"work/proj/top.gltf"_s, {u"lib/x.txt"_s});
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    const QString link = LinksOf(u"cloud/proj/top.gltf"_s).value(0);
    EXPECT_EQ(Stamp(u"cloud/proj/"_s + link).content, "x");
    EXPECT_FALSE(tree.Exists(u"cloud/proj/lib/deep/y.txt"_s));
}

TEST_F(SymbolicLinksInASelection, WhatIsGivenBehindALinkedFolderIsTakenThoughTheLinkIsNotFollowed)
{
    Link(u"work/proj/one"_s, u"outside"_s);
    const auto outside = Stamps(u"outside"_s);
    const ImportReport report = Report({u"proj"_s, u"proj/one/x.txt"_s, u"--move"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(report.Of(u"work/proj/one/x.txt"_s).sourceStays, u"not-deleted"_s);
    EXPECT_EQ(tree.Contents(u"cloud/proj"_s),
              (FileTree::Snapshot{{u"a.txt"_s, "a"}, {u"one/x.txt"_s, "x"}}));
    EXPECT_EQ(Stamps(u"outside"_s), outside);
}

} // namespace Halvern::Test
