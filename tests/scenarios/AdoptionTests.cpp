// SPDX-License-Identifier: Apache-2.0

// Files that somebody has copied to the cloud folder by other means are taken for copies.

#include "ScenarioFixture.h"

#include <QtCore/QFile>

namespace Halvern::Test {

namespace {

/// work/proj/top.svg links ../lib/part.bin; cloud/Demo/top.svg is the same file, byte for byte, and
/// so its link leads nowhere.
class Adoption : public ScenarioFixture
{
protected:
    Adoption()
    {
        Design(TopSource, {u"../lib/part.bin"_s}, "content");
        tree.File(u"work/lib/part.bin"_s, "part").File(TopCopy, tree.Read(TopSource));
    }
    ImportReport Bring(const QStringList& options = {}) const
    {
        return Report(QStringList{u"proj/top.svg"_s, u"--to"_s, u"Demo"_s} + options);
    }

    const QString TopSource = u"work/proj/top.svg"_s;
    const QString TopCopy = u"cloud/Demo/top.svg"_s;
    const QByteArray Raw = DesignFile(u"a.svg"_s, {u"../lib/part.bin"_s}, "content");
    const QByteArray Relinked = DesignFile(u"a.svg"_s, {u"lib/part.bin"_s}, "content");
};

} // namespace

TEST_F(Adoption, OfTheBytesOfTheSourceRewritesTheLinksWithoutAQuestion)
{
    const ImportReport planned = Bring({u"--dry-run"_s});
    EXPECT_EQ(tree.Read(TopCopy), Raw);
    const ImportReport report = Bring();
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(TopSource), u"updated"_s);
    EXPECT_TRUE(report.Of(TopSource).reason.contains(u"links were rewritten"_s));
    EXPECT_EQ(planned.Lines(), report.Lines());
    EXPECT_EQ(tree.Read(TopCopy), Relinked);
    EXPECT_TRUE(BaseStoreHolds(Raw));
    EXPECT_EQ(Bring().Statuses(), QStringList(2, u"unchanged"_s));
}

TEST_F(Adoption, MakesItACopyLikeAnyOther)
{
    ASSERT_EQ(Bring().exitCode, 0);
    Save(TopSource, DesignFile(TopSource, {u"../lib/part.bin"_s}, "second"));
    EXPECT_EQ(Bring().StatusOf(TopSource), u"updated"_s);
    EXPECT_EQ(tree.Read(TopCopy), DesignFile(TopCopy, {u"lib/part.bin"_s}, "second"));
}

TEST_F(Adoption, OfWhatTheImportWouldMakeChangesNothing)
{
    tree.File(TopCopy, Relinked);
    const FileStamp before = Stamp(TopCopy);
    const ImportReport report = Bring();
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(TopSource), u"unchanged"_s);
    EXPECT_EQ(Stamp(TopCopy), before);
    Save(TopSource, DesignFile(TopSource, {u"../lib/part.bin"_s}, "second"));
    EXPECT_EQ(Bring().StatusOf(TopSource), u"updated"_s);
}

TEST_F(Adoption, LeadsLinksToWhereTheirFilesHaveGone)
{
    // Somebody else's file has the name of the part, and the adopted file leads to it.
    tree.File(TopCopy, Relinked).File(u"cloud/Demo/lib/part.bin"_s, "somebody's");
    const ImportReport report = Bring({u"--collisions"_s, u"rename"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/lib/part.bin"_s), u"renamed"_s);
    EXPECT_EQ(report.StatusOf(TopSource), u"updated"_s);
    EXPECT_EQ(LinksOf(TopCopy), QStringList{u"lib/part (2).bin"_s});
    EXPECT_TRUE(BaseStoreHolds(Relinked));
    EXPECT_EQ(Bring({u"--collisions"_s, u"rename"_s}).Statuses(), QStringList(2, u"unchanged"_s));
}

TEST_F(Adoption, OfTheSourcePutOverACopyRewritesItsLinksAgain)
{
    ASSERT_EQ(Bring().exitCode, 0);
    Save(TopCopy, Raw);
    const ImportReport report = Bring();
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(TopSource), u"updated"_s);
    EXPECT_EQ(tree.Read(TopCopy), Relinked);
    // Also where the source was saved before.
    const QByteArray second = DesignFile(TopSource, {u"../lib/part.bin"_s}, "second");
    Save(TopSource, second);
    Save(TopCopy, second);
    EXPECT_EQ(Bring().exitCode, 0);
    EXPECT_EQ(tree.Read(TopCopy), DesignFile(TopCopy, {u"lib/part.bin"_s}, "second"));
    EXPECT_TRUE(BaseStoreHolds(second));
}

TEST_F(Adoption, LetsAMoveDeleteTheSource)
{
    const ImportReport report = Bring({u"--move"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_FALSE(tree.Exists(TopSource));
    EXPECT_EQ(tree.Read(TopCopy), Relinked);
}

TEST_F(Adoption, IsNotOfACopyThatAnotherProjectHasBrought)
{
    // Demo/sub/x.svg of the project Demo is where the project Demo/sub wants its own x.svg.
    Design(u"work/sub/x.svg"_s, {u"../lib/part.bin"_s}, "x");
    tree.File(u"work/other/x.svg"_s, tree.Read(u"work/sub/x.svg"_s));
    tree.Remove(TopCopy);
    ASSERT_EQ(Report({u"sub"_s, u"--to"_s, u"Demo"_s}).exitCode, 0);
    const FileStamp before = Stamp(u"cloud/Demo/sub/x.svg"_s);
    tree.File(u"work/lib/part.bin"_s, "another part");
    Report({u"other/x.svg"_s, u"--to"_s, u"Demo/sub"_s});
    EXPECT_EQ(Stamp(u"cloud/Demo/sub/x.svg"_s), before);
}

TEST_F(Adoption, IsWhatAnEmptyDatabaseLeadsToAndIsSaid)
{
    tree.Remove(TopCopy);
    ASSERT_EQ(Bring().exitCode, 0);
    for (const QString& file : {u"sync.db"_s, u"sync.db-wal"_s, u"sync.db-shm"_s})
        QFile::remove(tree.Path(file));
    tree.File(u"sync.db"_s, "");
    const auto before = Stamps(u"cloud"_s);
    for (const QStringList& dry : {QStringList{u"--dry-run"_s}, QStringList()}) {
        const ImportReport report = Bring(dry);
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        EXPECT_EQ(report.Statuses(), QStringList(2, u"unchanged"_s));
        EXPECT_TRUE(report.result.err.contains(u"sync.db is empty: it is begun anew"_s))
            << ::testing::PrintToString(report);
        ASSERT_EQ(report.others.size(), 1);
        EXPECT_EQ(report.others.first()[u"event"_s].toString(), u"warning"_s);
        EXPECT_EQ(tree.Read(u"sync.db"_s).isEmpty(), !dry.isEmpty());
    }
    EXPECT_EQ(Stamps(u"cloud"_s), before);
    EXPECT_FALSE(Bring().result.err.contains(u"is empty"_s));
}

TEST_F(Adoption, OfACopyWhoseLinksAnImportHasLeftHalfWrittenRewritesTheRest)
{
    tree.Remove(TopCopy).File(u"work/lib/second.bin"_s, "second");
    Design(TopSource, {u"../lib/part.bin"_s, u"../lib/second.bin"_s});
    const QByteArray half = DesignFile(u"a.svg"_s, {u"lib/part.bin"_s, u"../lib/second.bin"_s});
    const QByteArray whole = DesignFile(u"a.svg"_s, {u"lib/part.bin"_s, u"lib/second.bin"_s});
    // Not recorded yet, and recorded as it was before.
    for (const bool isRecorded : {false, true}) {
        if (isRecorded)
            Save(TopCopy, half);
        else
            tree.File(TopCopy, half);
        const ImportReport report = Bring();
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        EXPECT_EQ(report.StatusOf(TopSource), u"updated"_s) << ::testing::PrintToString(report);
        EXPECT_EQ(tree.Read(TopCopy), whole);
        EXPECT_TRUE(BaseStoreHolds(half));
    }
    // What leads elsewhere, or differs in anything else, is its owner's.
    for (const QByteArray& mine :
         {DesignFile(u"a.svg"_s, {u"lib/part.bin"_s, u"mine.bin"_s}),
          DesignFile(u"a.svg"_s, {u"lib/part.bin"_s, u"../lib/second.bin"_s}, "mine")}) {
        Save(TopCopy, mine);
        EXPECT_EQ(Bring().StatusOf(TopSource), u"left"_s);
        EXPECT_EQ(tree.Read(TopCopy), mine);
    }
}

} // namespace Halvern::Test
