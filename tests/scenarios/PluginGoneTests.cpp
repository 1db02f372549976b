// SPDX-License-Identifier: Apache-2.0

// A format that a plug-in has read is none without links because the plug-in was uninstalled.

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

/// work/proj/top.tlk links ../lib/part.tlk; both were imported to Demo.
class PluginGone : public ScenarioFixture
{
protected:
    PluginGone() : m_registration(tree.Read(File))
    {
        tree.File(u"work/proj/top.tlk"_s, Top).File(u"work/lib/part.tlk"_s, "part\n");
    }
    void SetUp() override
    {
        ASSERT_EQ(Bring().exitCode, 0);
        Uninstall();
    }
    void Uninstall() { tree.Remove(File); }
    void Install() { tree.File(File, m_registration); }
    ImportReport Bring(const QStringList& options = {}) const
    {
        return Report(QStringList{u"proj/top.tlk"_s, u"--to"_s, u"Demo"_s} + options);
    }
    void ExpectUnread(const ImportReport& report, const QString& status)
    {
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        const ReportedFile top = report.Of(u"work/proj/top.tlk"_s);
        EXPECT_EQ(top.status, status);
        EXPECT_EQ(top.remark, u"links-not-read"_s);
        EXPECT_TRUE(top.reason.contains(u"no plug-in reads its format any more"_s))
            << top.reason.toStdString();
    }

    static constexpr char Top[] = "link 1 ../lib/part.tlk\n";
    static constexpr char Relinked[] = "link 1 lib/part.tlk\n";
    const QString Copy = u"cloud/Demo/top.tlk"_s;

private:
    const QString File = u"plugins/test_resolver.syncplugin"_s;
    const QByteArray m_registration;
};

} // namespace

TEST_F(PluginGone, EveryRunSaysThatTheLinksCouldNotBeReadUntilItIsBack)
{
    const auto before = Stamps(u"cloud"_s);
    for (int run = 0; run < 3; ++run)
        ExpectUnread(Bring(), u"unchanged"_s);
    EXPECT_EQ(Corsync(u"retry"_s).exitCode, 1);
    Install();
    EXPECT_EQ(Bring().exitCode, 0);
    EXPECT_EQ(Corsync(u"retry"_s).exitCode, 0);
    EXPECT_EQ(Stamps(u"cloud"_s), before);
}

TEST_F(PluginGone, AnUpdatedSourceTakesNoCopyItsLinks)
{
    for (const bool looksBefore : {false, true}) {
        if (looksBefore)
            ExpectUnread(Bring(), u"unchanged"_s);
        Save(u"work/proj/top.tlk"_s, QByteArray(Top) + (looksBefore ? "2\n" : "1\n"));
        const auto before = Stamps(u"cloud"_s);
        for (const QStringList& options :
             {QStringList(), QStringList{u"--force"_s}, QStringList{u"--reread"_s}})
            ExpectUnread(Bring(options), u"failed"_s);
        EXPECT_EQ(Stamps(u"cloud"_s), before);
        Install();
        EXPECT_EQ(Bring().exitCode, 0);
        EXPECT_EQ(tree.Read(Copy), QByteArray(Relinked) + (looksBefore ? "2\n" : "1\n"));
        Uninstall();
    }
}

TEST_F(PluginGone, ForceLeavesTheCopyItsLinks)
{
    const auto before = Stamps(u"cloud"_s);
    ExpectUnread(Bring({u"--force"_s}), u"unchanged"_s);
    EXPECT_EQ(Stamps(u"cloud"_s), before);
}

TEST_F(PluginGone, AMoveLeavesTheSourceAndWhatItLinked)
{
    const ImportReport report =
        Report({u"proj/top.tlk"_s, u"lib/part.tlk"_s, u"--to"_s, u"Demo"_s, u"--move"_s});
    ExpectUnread(report, u"unchanged"_s);
    EXPECT_EQ(report.Of(u"work/proj/top.tlk"_s).sourceStays, u"copy-not-in-order"_s);
    EXPECT_EQ(tree.Read(u"work/proj/top.tlk"_s), Top);
    EXPECT_EQ(tree.Read(u"work/lib/part.tlk"_s), "part\n");
    Install();
    EXPECT_EQ(Bring({u"--move"_s}).exitCode, 0);
    EXPECT_FALSE(tree.Exists(u"work/proj/top.tlk"_s));
    EXPECT_EQ(tree.Read(Copy), "link 1 part.tlk\n");
    EXPECT_EQ(tree.Read(u"cloud/Demo/part.tlk"_s), "part\n");
}

TEST_F(PluginGone, WhatTheSourceLinkedStaysThoughAnotherFormatIsReadWell)
{
    Design(u"work/lib/wood.svg"_s, {});
    tree.File(u"work/proj/top.tlk"_s, "link 1 ../lib/wood.svg\n");
    Install();
    ASSERT_EQ(Bring().exitCode, 0);
    Uninstall();
    const ImportReport report = Report({u"proj"_s, u"lib/wood.svg"_s, u"--move"_s});
    EXPECT_EQ(report.exitCode, 1);
    EXPECT_EQ(report.Of(u"work/lib/wood.svg"_s).sourceStays, u"linked"_s);
    EXPECT_EQ(report.Of(u"work/lib/wood.svg"_s).staysFor, u"work/proj/top.tlk"_s);
    EXPECT_TRUE(tree.Exists(u"work/lib/wood.svg"_s));
}

TEST_F(PluginGone, ACopyForAnotherTargetSaysSoAndIsRelinkedWhenItIsBack)
{
    const QStringList arguments{u"proj/top.tlk"_s, u"--to"_s, u"Other"_s, u"--self-contained"_s};
    ExpectUnread(Report(arguments), u"copied"_s);
    ExpectUnread(Report(arguments), u"unchanged"_s);
    Install();
    EXPECT_EQ(Report(arguments).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/Other/top.tlk"_s), Relinked);
    EXPECT_EQ(tree.Read(u"cloud/Other/lib/part.tlk"_s), "part\n");
}

TEST_F(PluginGone, ForTheLinksAloneIsAFailure)
{
    EXPECT_EQ(Bring({u"--links-only"_s}).exitCode, 1);
    Install();
    EXPECT_EQ(Bring({u"--links-only"_s}).exitCode, 0);
}

TEST_F(PluginGone, AFormatThatNoneHasEverReadIsNoFailure)
{
    tree.File(u"work/plan.dwg"_s, "unknown");
    for (int run = 0; run < 2; ++run)
        EXPECT_EQ(Report({u"plan.dwg"_s}).exitCode, 0);
    EXPECT_EQ(Report({u"plan.dwg"_s, u"--move"_s}).exitCode, 0);
    EXPECT_FALSE(tree.Exists(u"work/plan.dwg"_s));
}

TEST_F(PluginGone, WhatNobodyReadBecauseNobodyAskedIsNoFailure)
{
    tree.File(u"work/dir/user.svg"_s, DesignFile(u"user.svg"_s, {u"plan.dwg"_s}))
        .File(u"work/dir/plan.dwg"_s, "unknown");
    ASSERT_EQ(Report({u"dir/user.svg"_s, u"--direct-links-only"_s}).exitCode, 0);
    EXPECT_EQ(Report({u"dir/user.svg"_s}).exitCode, 0);
}

} // namespace Halvern::Test
