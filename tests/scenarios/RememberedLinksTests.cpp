// SPDX-License-Identifier: Apache-2.0

// What is remembered of the links of a copy, while they cannot be read or nobody asks for them.

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

/// work/proj/top.tlk links mid.tlk, and that one ../lib/part.tlk.
class RememberedLinks : public ScenarioFixture
{
protected:
    RememberedLinks()
    {
        tree.File(u"work/proj/top.tlk"_s, "link 1 mid.tlk\n")
            .File(u"work/proj/mid.tlk"_s, "link 1 ../lib/part.tlk\n")
            .File(u"work/lib/part.tlk"_s, "part\n");
    }
    ImportReport Bring(const QStringList& options = {}) const
    {
        return Report(QStringList{u"proj/top.tlk"_s, u"--to"_s, u"Demo"_s} + options);
    }
    QByteArray Mid() const { return tree.Read(u"cloud/Demo/mid.tlk"_s); }
    void ExpectUpdateIsRefused(const QString& file)
    {
        const auto before = Stamps(u"cloud"_s);
        for (int run = 0; run < 2; ++run) {
            const ImportReport report = Bring();
            EXPECT_NE(report.exitCode, 0) << ::testing::PrintToString(report);
            const ReportedFile line = report.Of(file);
            EXPECT_EQ(line.status, u"failed"_s) << ::testing::PrintToString(report);
            EXPECT_FALSE(line.reason.isEmpty());
            EXPECT_EQ(Stamps(u"cloud"_s), before);
        }
    }
};

} // namespace

TEST_F(RememberedLinks, OfACopyForbidAnUpdateByOneWhoseLinksCannotBeRead)
{
    ASSERT_EQ(Bring().exitCode, 0);
    Save(u"work/proj/mid.tlk"_s, "link 1 ../lib/part.tlk\nmore\n");
    {
        const PluginOrders orders("fail");
        ExpectUpdateIsRefused(u"work/proj/mid.tlk"_s);
    }
    const QByteArray registration = tree.Read(u"plugins/test_resolver.syncplugin"_s);
    tree.File(u"plugins/test_resolver.syncplugin"_s,
              Registration(u"NoSuchLibrary.so"_s, u"FileLinkResolver"_s, u"tlk"_s));
    Save(u"work/proj/top.tlk"_s, "link 1 mid.tlk\nlink 2 ../lib/part.tlk\n");
    ExpectUpdateIsRefused(u"work/proj/top.tlk"_s);
    tree.File(u"plugins/test_resolver.syncplugin"_s, registration);
    const ImportReport report = Bring();
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.Statuses().count(u"updated"_s), 2);
    EXPECT_EQ(tree.Read(u"cloud/Demo/top.tlk"_s), "link 1 mid.tlk\nlink 2 lib/part.tlk\n");
    EXPECT_EQ(Mid(), "link 1 lib/part.tlk\nmore\n");
}

TEST_F(RememberedLinks, ThatAPluginOnlySaysToHaveWrittenAreStillToBeRewrittenInAFileInTheWay)
{
    tree.File(u"cloud/Demo/mid.tlk"_s, tree.Read(u"work/proj/mid.tlk"_s));
    {
        const PluginOrders orders("lies");
        for (int run = 0; run < 2; ++run) {
            const ImportReport report = Bring();
            EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
            EXPECT_FALSE(report.Of(u"work/proj/mid.tlk"_s).reason.isEmpty());
            EXPECT_EQ(Mid(), tree.Read(u"work/proj/mid.tlk"_s));
        }
    }
    EXPECT_EQ(Bring().exitCode, 0);
    EXPECT_EQ(Mid(), "link 1 lib/part.tlk\n");
}

// Some plug-ins show a link only where its file is, and a copy whose links could not be written has
// those of its source, which lead to nothing there.
TEST_F(RememberedLinks, ThatCouldNotBeWrittenAreSoThoughThePluginDoesNotShowThemInTheCopy)
{
    for (const QStringList& options : {QStringList(), QStringList{u"--move"_s}}) {
        {
            const PluginOrders orders("norepath");
            ASSERT_EQ(Bring().exitCode, 7);
        }
        ASSERT_EQ(Mid(), "link 1 ../lib/part.tlk\n");
        const PluginOrders orders("overlooks");
        const ImportReport report = Bring(options);
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        EXPECT_EQ(report.StatusOf(u"work/proj/mid.tlk"_s), u"updated"_s);
        EXPECT_EQ(Mid(), "link 1 lib/part.tlk\n");
        tree.Remove(u"cloud/Demo"_s);
    }
}

TEST_F(RememberedLinks, ThatCouldNotBeWrittenAreSoByRetryThoughThePluginDoesNotShowThem)
{
    {
        const PluginOrders orders("norepath");
        ASSERT_EQ(Bring().exitCode, 7);
    }
    const PluginOrders orders("overlooks");
    const CommandResult retry = Corsync(u"retry"_s);
    EXPECT_EQ(retry.exitCode, 0) << ::testing::PrintToString(retry);
    EXPECT_EQ(Mid(), "link 1 lib/part.tlk\n");
}

TEST_F(RememberedLinks, ThatAreNotWhatWasAskedForAreNamedWithBothPaths)
{
    const PluginOrders orders("lies");
    const ImportReport report = Bring();
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    // Of the paths of Windows each separator is two characters in JSON, and output is read with
    // slashes.
    QString reason = report.Of(u"work/proj/mid.tlk"_s).reason;
    reason.replace(u"//"_s, u"/"_s);
    EXPECT_TRUE(reason.contains(u": link 1 leads to %1, and %2 was asked for"_s.arg(
        tree.Path(u"cloud/lib/part.tlk"_s), tree.Path(u"cloud/Demo/lib/part.tlk"_s))))
        << reason.toStdString();
}

TEST_F(RememberedLinks, ThatAreStillToBeRewrittenAreSoThoughNobodyAsksForThem)
{
    {
        const PluginOrders orders("norepath");
        ASSERT_EQ(Bring().exitCode, 7);
    }
    ASSERT_EQ(Mid(), "link 1 ../lib/part.tlk\n");
    for (int run = 0; run < 2; ++run) {
        const ImportReport direct = Bring({u"--direct-links-only"_s});
        EXPECT_NE(direct.exitCode, 0) << ::testing::PrintToString(direct);
        EXPECT_FALSE(direct.Of(u"work/proj/mid.tlk"_s).reason.isEmpty())
            << ::testing::PrintToString(direct);
    }
    const CommandResult retry = Corsync(u"retry"_s);
    EXPECT_EQ(retry.exitCode, 0) << ::testing::PrintToString(retry);
    EXPECT_EQ(Mid(), "link 1 lib/part.tlk\n");
    EXPECT_EQ(Bring({u"--direct-links-only"_s}).exitCode, 0);
    EXPECT_EQ(Bring().exitCode, 0);
}

TEST_F(RememberedLinks, ThatCouldNotBeReadAreNamedByRetryWhichCannotReadThem)
{
    {
        const PluginOrders orders("fail");
        ASSERT_EQ(Bring().exitCode, 7);
    }
    const auto before = Stamps(u"cloud"_s);
    const CommandResult retry = Corsync(u"retry"_s, {u"--json"_s});
    EXPECT_NE(retry.exitCode, 0) << ::testing::PrintToString(retry);
    const ReportedFile line = ReportOf(retry).Of(u"work/proj/top.tlk"_s);
    EXPECT_EQ(line.status, u"unchanged"_s) << ::testing::PrintToString(retry);
    EXPECT_FALSE(line.reason.isEmpty());
    EXPECT_EQ(Stamps(u"cloud"_s), before);
    ASSERT_EQ(Bring().exitCode, 0);
    EXPECT_EQ(Corsync(u"retry"_s).exitCode, 0);
}

TEST_F(RememberedLinks, RetryOfAFolderThatIsNotThereOrNoFolderIsAnError)
{
    ASSERT_EQ(Bring().exitCode, 0);
    for (const QString& folder : {u"cloud/Nowhere"_s, u"cloud/Demo/top.tlk"_s, u"work"_s}) {
        const CommandResult result = Corsync(u"retry"_s, {tree.Path(folder)});
        EXPECT_NE(result.exitCode, 0) << ::testing::PrintToString(result);
        EXPECT_FALSE(result.err.isEmpty());
    }
}

TEST_F(RememberedLinks, OfACopyAreNotReplacedByThoseOfASourceThatCannotBeRead)
{
    ASSERT_EQ(Bring().exitCode, 0);
    Save(u"work/proj/mid.tlk"_s, "link 1 ../lib/part.tlk\nmore\n");
    Save(u"cloud/Demo/mid.tlk"_s, "link 1 lib/part.tlk\nmine\n");
    const PluginOrders orders("fail");
    const auto before = Stamps(u"cloud"_s);
    for (const QStringList& dry : {QStringList{u"--dry-run"_s}, QStringList()}) {
        const ImportReport report = Bring(QStringList{u"--on-conflict"_s, u"replace"_s} + dry);
        EXPECT_EQ(report.exitCode, 7) << ::testing::PrintToString(report);
        EXPECT_EQ(report.StatusOf(u"work/proj/mid.tlk"_s), u"failed"_s);
        EXPECT_EQ(report.Of(u"work/proj/mid.tlk"_s).remark, u"links-not-read"_s);
        EXPECT_EQ(Stamps(u"cloud"_s), before);
    }
    const ImportReport stopped = Bring();
    ASSERT_EQ(stopped.exitCode, 6);
    EXPECT_FALSE(stopped.result.err.contains(u"replace"_s)) << ::testing::PrintToString(stopped);
}

TEST_F(RememberedLinks, OfAFileAreReadAgainWhenSomethingWasPutBesideIt)
{
    tree.File(u"work/obj/o.obj"_s, "mtllib o.mtl\nv 0 0 0\n")
        .File(u"work/obj/o.mtl"_s, "newmtl a\n")
        .File(u"work/board/b.kicad_pro"_s, R"({"meta":{"filename":"b.kicad_pro","version":1}})")
        .File(u"work/board/b.kicad_pcb"_s, "(kicad_pcb (version 20221018) (generator pcbnew))");
    const QStringList both{u"obj/o.obj"_s, u"board/b.kicad_pro"_s, u"--to"_s, u"Demo"_s};
    ASSERT_EQ(Report(both).exitCode, 0);
    ASSERT_EQ(Report(both).Statuses(), QStringList(4, u"unchanged"_s));
    tree.File(u"work/board/b.kicad_dru"_s, "(version 1)");
    const ImportReport report = Report(both);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/board/b.kicad_dru"_s), u"copied"_s)
        << ::testing::PrintToString(report);
    EXPECT_EQ(report.Statuses().count(u"unchanged"_s), 4);
    EXPECT_EQ(tree.Read(u"cloud/Demo/b.kicad_dru"_s), "(version 1)");
}

TEST_F(RememberedLinks, OfAFileAreReadAgainWhenASetThatItLinksHasGrown)
{
    tree.File(u"work/proj/top.tlk"_s, "link set:a#1 ../tex/w.1.png\n")
        .File(u"work/tex/w.1.png"_s, "one");
    ASSERT_EQ(Bring().exitCode, 0);
    const PluginCallLog log;
    ASSERT_EQ(Bring().exitCode, 0);
    EXPECT_EQ(log.Calls().filter(u"top.tlk"_s), QStringList());
    tree.File(u"work/tex/w.2.png"_s, "two");
    ASSERT_EQ(Bring().exitCode, 0);
    EXPECT_EQ(log.Calls().filter(u"top.tlk"_s).size(), 1);
    ASSERT_EQ(Bring().exitCode, 0);
    EXPECT_EQ(log.Calls().filter(u"top.tlk"_s).size(), 1) << "once is enough";
}

TEST_F(RememberedLinks, ThatNobodyAskedToChangeMustStillBeThereAfterwards)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 mid.tlk\nlink 2 ../lib/part.tlk\n");
    {
        const PluginOrders orders("drops");
        const ImportReport report = Bring();
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_EQ(report.Of(u"work/proj/top.tlk"_s).remark, u"rewrite-pending"_s);
        EXPECT_EQ(tree.Read(u"cloud/Demo/top.tlk"_s), tree.Read(u"work/proj/top.tlk"_s));
    }
    EXPECT_EQ(Bring().exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/Demo/top.tlk"_s), "link 1 mid.tlk\nlink 2 lib/part.tlk\n");
}

} // namespace Halvern::Test
