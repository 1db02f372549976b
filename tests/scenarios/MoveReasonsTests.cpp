// SPDX-License-Identifier: Apache-2.0

// Which sources a move leaves, and that each line says why.

#include "MoveFixture.h"

namespace Halvern::Test {

namespace {

class MoveReasons : public MoveFixture
{
protected:
    static QString Why(const ImportReport& report, const QString& name)
    {
        const ReportedFile file = report.Of(u"work/proj/"_s + name);
        return file.sourceStays + u' ' + file.staysFor;
    }
};

} // namespace

TEST_F(MoveReasons, AKeptFileSaysThatItsSourceStaysAndTheMoveIsNotComplete)
{
    tree.File(u"cloud/proj/free.txt"_s, "foreign");
    for (const QStringList& dry : {QStringList{u"--dry-run"_s}, QStringList()}) {
        const ImportReport report = MoveProject(QStringList{u"--collisions"_s, u"keep"_s} + dry);
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_EQ(report.StatusOf(u"work/proj/free.txt"_s), u"kept"_s);
        EXPECT_EQ(Why(report, u"free.txt"_s), u"copy-differs "_s);
        EXPECT_EQ(report.Of(u"work/proj/free.txt"_s).reason,
                  u"the source stays: what stands there differs from it"_s);
    }
    EXPECT_EQ(Left(), QStringList{u"free.txt"_s});
    const CommandResult text = Import({u"proj"_s, u"--move"_s, u"--collisions"_s, u"keep"_s});
    EXPECT_TRUE(text.Has(u"kept       proj/free.txt -> proj/free.txt: the source stays: what "
                         "stands there differs from it"_s))
        << ::testing::PrintToString(text);
    EXPECT_EQ(tree.Read(u"cloud/proj/free.txt"_s), "foreign");
}

TEST_F(MoveReasons, ALeftCopySaysThatItsSourceStaysAndTheMoveIsNotComplete)
{
    ASSERT_EQ(Report({u"proj"_s}).exitCode, 0);
    Save(u"cloud/proj/free.txt"_s, "mine");
    const ImportReport report = MoveProject();
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/proj/free.txt"_s), u"left"_s);
    EXPECT_EQ(Why(report, u"free.txt"_s), u"copy-differs "_s);
    EXPECT_EQ(Left(), QStringList{u"free.txt"_s});
    EXPECT_EQ(Report({u"proj"_s}).exitCode, 0) << "without --move nothing was to go";
}

TEST_F(MoveReasons, WhatLeadsToAKeptFileNamesIt)
{
    tree.File(u"cloud/proj/leaf.txt"_s, "foreign");
    const ImportReport report = MoveProject({u"--collisions"_s, u"keep"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(Why(report, u"leaf.txt"_s), u"copy-differs "_s);
    EXPECT_EQ(Why(report, u"sub.tlk"_s), u"link-not-in-order work/proj/leaf.txt"_s);
    EXPECT_EQ(Why(report, u"top.tlk"_s), u"link-not-in-order work/proj/leaf.txt"_s);
    EXPECT_EQ(Left(), (QStringList{u"leaf.txt"_s, u"sub.tlk"_s, u"top.tlk"_s}));
    EXPECT_EQ(report.Lines().filter(u"moved "_s),
              QStringList{u"moved work/proj/free.txt -> cloud/proj/free.txt"_s});
}

TEST_F(MoveReasons, WhatASourceLinksThatStaysStaysWithIt)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 sub.tlk\nlink 2 gone.txt\n");
    for (const QStringList& dry : {QStringList{u"--dry-run"_s}, QStringList()}) {
        const ImportReport report = MoveProject(dry);
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_EQ(Why(report, u"top.tlk"_s), u"link-not-in-order work/proj/gone.txt"_s);
        EXPECT_EQ(Why(report, u"sub.tlk"_s), u"linked work/proj/top.tlk"_s);
        EXPECT_EQ(Why(report, u"leaf.txt"_s), u"linked work/proj/sub.tlk"_s);
        EXPECT_EQ(Why(report, u"free.txt"_s), u" "_s);
        EXPECT_EQ(report.Lines().filter(u"moved "_s),
                  QStringList{u"moved work/proj/free.txt -> cloud/proj/free.txt"_s});
    }
    EXPECT_EQ(Left(), (QStringList{u"leaf.txt"_s, u"sub.tlk"_s, u"top.tlk"_s}));
    tree.File(u"work/proj/gone.txt"_s, "here");
    EXPECT_EQ(MoveProject().exitCode, 0);
    EXPECT_FALSE(tree.Exists(u"work/proj"_s));
}

TEST_F(MoveReasons, WhatALinkedFileLinksThatIsOnlyCopiedStays)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 ../lib/user.tlk\n")
        .File(u"work/lib/user.tlk"_s, "link 1 ../proj/leaf.txt\n");
    const ImportReport report = MoveProject();
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(Why(report, u"leaf.txt"_s), u"linked work/lib/user.tlk"_s);
    EXPECT_EQ(report.Of(u"work/proj/leaf.txt"_s).reason,
              u"the source stays: one that stays links it, "_s + tree.Path(u"work/lib/user.tlk"_s));
    EXPECT_EQ(Left(), QStringList{u"leaf.txt"_s});
    EXPECT_EQ(Report({u"lib"_s, u"proj/leaf.txt"_s, u"--move"_s}).exitCode, 0);
    EXPECT_FALSE(tree.Exists(u"work/lib"_s));
}

TEST_F(MoveReasons, WhatAnEarlierImportBroughtAndLinksAMovedFileIsNotForgottenByTheNextRun)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 ../lib/user.tlk\n")
        .File(u"work/lib/user.tlk"_s, "link 1 ../proj/sub.tlk\n");
    for (int run = 0; run < 3; ++run) {
        const ImportReport report = MoveProject();
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_EQ(Why(report, u"sub.tlk"_s), u"linked work/lib/user.tlk"_s);
        EXPECT_EQ(Why(report, u"leaf.txt"_s), u"linked work/proj/sub.tlk"_s);
        EXPECT_EQ(Left(), (QStringList{u"leaf.txt"_s, u"sub.tlk"_s}));
    }
    Save(u"work/lib/user.tlk"_s, "link 1 other.txt\n");
    EXPECT_EQ(MoveProject().exitCode, 0) << "it links them no more";
    EXPECT_FALSE(tree.Exists(u"work/proj"_s));
}

TEST_F(MoveReasons, FilesThatLinkEachOtherStayTogether)
{
    tree.File(u"work/proj/sub.tlk"_s, "link 1 leaf.txt\nlink 2 top.tlk\n")
        .File(u"work/proj/user.tlk"_s, "link 1 top.tlk\nlink 2 gone.txt\n");
    const ImportReport report = MoveProject();
    EXPECT_EQ(Why(report, u"user.tlk"_s), u"link-not-in-order work/proj/gone.txt"_s);
    EXPECT_EQ(Why(report, u"top.tlk"_s), u"linked work/proj/user.tlk"_s);
    EXPECT_EQ(Why(report, u"sub.tlk"_s), u"linked work/proj/top.tlk"_s);
    EXPECT_EQ(Why(report, u"leaf.txt"_s), u"linked work/proj/sub.tlk"_s);
}

TEST_F(MoveReasons, WhatStaysIsKnownByItsContentAfterwards)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 gone.txt\n");
    ASSERT_EQ(Report({u"proj/top.tlk"_s}).exitCode, 4);
    // The records can tell by the time.
    SetModifiedNanoseconds(tree.Path(u"work/proj/top.tlk"_s), 1'600'000'000'000'000'000);
    SetModifiedNanoseconds(tree.Path(u"cloud/top.tlk"_s), 1'600'000'000'000'000'000);
    for (int run = 0; run < 3; ++run)
        ASSERT_EQ(Report({u"proj/top.tlk"_s, u"--move"_s}).exitCode, 1);
    Save(u"work/proj/top.tlk"_s, "link 1 gone.txt\nmore\n");
    const ImportReport report = Report({u"proj/top.tlk"_s, u"--checksum"_s});
    EXPECT_EQ(report.exitCode, 4) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/proj/top.tlk"_s), u"updated"_s);
}

TEST_F(MoveReasons, ABrokenRegistrationFileLeavesWhatNoPluginReads)
{
    tree.File(u"plugins/broken.syncplugin"_s, "<broken");
    const ImportReport report = MoveProject();
    EXPECT_EQ(report.exitCode, 7) << ::testing::PrintToString(report);
    EXPECT_EQ(Why(report, u"free.txt"_s), u"plugin-broken "_s);
    EXPECT_EQ(report.StatusOf(u"work/proj/free.txt"_s), u"copied"_s);
    EXPECT_EQ(Why(report, u"sub.tlk"_s), u"link-not-in-order work/proj/leaf.txt"_s);
    EXPECT_EQ(report.Lines().filter(u"moved "_s), QStringList());
    EXPECT_EQ(Left().size(), 4);
    tree.Remove(u"plugins/broken.syncplugin"_s);
    EXPECT_EQ(MoveProject().exitCode, 0);
    EXPECT_FALSE(tree.Exists(u"work/proj"_s));
}

TEST_F(MoveReasons, ALinkToAFolderLeavesTheSource)
{
    tree.File(u"work/proj/free.tlk"_s, "link 1 ../folder\n").Folder(u"work/folder"_s);
    const ImportReport report = MoveProject();
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(Why(report, u"free.tlk"_s), u"link-not-in-order work/folder"_s);
    EXPECT_EQ(Left(), QStringList{u"free.tlk"_s});
}

TEST_F(MoveReasons, ASecondRunSaysWhereItsSourcesAre)
{
    const QStringList arguments{u"proj/top.tlk"_s, u"proj/sub.tlk"_s, u"proj/leaf.txt"_s,
                                u"--to"_s,         u"Demo"_s,         u"--move"_s};
    ASSERT_EQ(Report(arguments).exitCode, 0);
    const ImportReport second = Report(arguments);
    EXPECT_EQ(second.exitCode, 0) << ::testing::PrintToString(second);
    EXPECT_EQ(second.Statuses(), QStringList(3, u"skipped"_s));
    const ReportedFile top = second.Of(u"work/proj/top.tlk"_s);
    EXPECT_EQ(top.remark, u"moved-earlier"_s);
    EXPECT_EQ(top.reason, u"it is gone; what an earlier import has moved of it lies there: "_s +
                              tree.Path(u"cloud/Demo/top.tlk"_s));
    const CommandResult text = Import(arguments);
    EXPECT_EQ(text.Lines().filter(u"skipped "_s).size(), 3) << ::testing::PrintToString(text);
}

TEST_F(MoveReasons, ASecondRunSaysWhereItsFolderIs)
{
    ASSERT_EQ(MoveProject().exitCode, 0);
    ASSERT_FALSE(tree.Exists(u"work/proj"_s));
    const ImportReport second = MoveProject();
    EXPECT_EQ(second.exitCode, 0) << ::testing::PrintToString(second);
    EXPECT_EQ(
        second.Lines(),
        QStringList{
            u"skipped work/proj: it is gone; what an earlier import has moved of it lies there: "_s +
            tree.Path(u"cloud/proj"_s)});
    EXPECT_EQ(MoveProject({u"--to"_s, u"Other"_s}).exitCode, 3) << "never moved there";
}

TEST_F(MoveReasons, ARunWithSomeSourcesGoneMovesTheRestAndSaysBoth)
{
    ASSERT_EQ(Report({u"proj/free.txt"_s, u"--move"_s}).exitCode, 0);
    const ImportReport rest = Report({u"proj/free.txt"_s, u"proj/leaf.txt"_s, u"--move"_s});
    EXPECT_EQ(rest.exitCode, 0) << ::testing::PrintToString(rest);
    EXPECT_EQ(rest.StatusOf(u"work/proj/free.txt"_s), u"skipped"_s);
    EXPECT_EQ(rest.StatusOf(u"work/proj/leaf.txt"_s), u"moved"_s);
}

TEST_F(MoveReasons, ASourceThatWasNeverSeenIsAnError)
{
    ASSERT_EQ(Report({u"proj/free.txt"_s, u"--move"_s}).exitCode, 0);
    const CommandResult result =
        Import({u"proj/free.txt"_s, u"proj/never.txt"_s, u"proj/leaf.txt"_s, u"--move"_s});
    EXPECT_EQ(result.exitCode, 3) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.err.contains(u"never.txt"_s));
    EXPECT_FALSE(result.err.contains(u"free.txt"_s));
    EXPECT_TRUE(tree.Exists(u"work/proj/leaf.txt"_s));
    EXPECT_EQ(Import({u"proj/free.txt"_s}).exitCode, 3) << "without --move it is to be there";
}

} // namespace Halvern::Test
