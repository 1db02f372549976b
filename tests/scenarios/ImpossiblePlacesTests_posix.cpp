// SPDX-License-Identifier: Apache-2.0

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

class ImpossibleNames : public ScenarioFixture
{};

} // namespace

TEST_F(ImpossibleNames, ANameWithoutRoomForANumberIsFoundInThePlan)
{
    const QString name = QString(251, u'n') + u".txt"_s;
    tree.File(u"work/proj/"_s + name, "new")
        .File(u"work/proj/good.txt"_s, "good")
        .File(u"cloud/proj/"_s + name, "old");
    const QStringList arguments{u"proj"_s, u"--collisions"_s, u"rename"_s};
    const ImportReport dry = Report(arguments + QStringList{u"--dry-run"_s});
    const ImportReport report = Report(arguments);
    EXPECT_EQ(dry.exitCode, report.exitCode);
    EXPECT_EQ(dry.Lines(), report.Lines());
    // Either it gets a name that fits, or the import says that it has none.
    const QString copy = report.Of(u"work/proj/"_s + name).target;
    EXPECT_TRUE(report.exitCode != 0 || Stamp(copy).content == "new")
        << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(u"cloud/proj/"_s + name), "old");
}

TEST_F(ImpossibleNames, APathThatIsTooLongForTheSystemFailsItsFile)
{
    // 240 characters a folder: the file's path in the cloud folder is the one that gets too long.
    const QString deep = (QString(240, u'd') + u'/').repeated(16);
    const QString source =
        u"work/proj/"_s + QString(120, u'e') + u'/' + QString(200, u'f') + u".txt"_s;
    tree.File(source, "far").File(u"work/proj/n.txt"_s, "near");
    const QStringList arguments{u"proj"_s, u"--to"_s, deep};
    const FileTree::Snapshot before = Cloud();
    const ImportReport dry = Report(arguments + QStringList{u"--dry-run"_s});
    EXPECT_EQ(Cloud(), before);
    const ImportReport report = Report(arguments);
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(dry.exitCode, report.exitCode);
    EXPECT_EQ(dry.Lines(), report.Lines());
    EXPECT_EQ(report.StatusOf(source), u"failed"_s) << ::testing::PrintToString(report);
    EXPECT_FALSE(report.Of(source).reason.isEmpty());
    EXPECT_EQ(report.StatusOf(u"work/proj/n.txt"_s), u"copied"_s);
}

TEST_F(ImpossibleNames, ACopyThatOthersLinkStaysWhereNoOtherNameHasRoom)
{
    // The link from the other project fits just so; " (2)" does not fit into the name.
    const QString part = u"l/"_s + QString(248, u'n') + u".bin"_s;
    Design(u"work/one/top.gltf"_s, {u"../"_s + part}, "one");
    Design(u"work/two/top.gltf"_s, {u"../"_s + part}, "two");
    tree.File(u"work/"_s + part, "part");
    ASSERT_EQ(Report({u"one/top.gltf"_s, u"--to"_s, u"A"_s}).exitCode, 0);
    ASSERT_EQ(Report({u"two/top.gltf"_s, u"--to"_s, u"B"_s}).exitCode, 0);
    Save(u"work/"_s + part, "second part");
    const auto before = Stamps(u"cloud"_s);
    for (const QStringList& options : {QStringList{u"--dry-run"_s}, QStringList()}) {
        const ImportReport report =
            Report(QStringList{u"one/top.gltf"_s, u"--to"_s, u"A"_s} + options);
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_EQ(report.StatusOf(u"work/"_s + part), u"failed"_s);
    }
    EXPECT_EQ(Stamps(u"cloud"_s), before);
}

TEST_F(ImpossibleNames, ACopyWhoseNewLinkWouldBeTooLongSaysSoAndKeepsItsSource)
{
    const QString deep = u"work/proj/"_s + u"d/"_s.repeated(95);
    tree.File(deep + u"top.tlk"_s, "link 1 " + tree.Path(u"lib/part.txt"_s).toUtf8() + '\n');
    ASSERT_EQ(Report({u"proj"_s}).exitCode, 4);
    // The missing file is given, and has its place far up from the copy.
    tree.File(u"lib/part.txt"_s, "part");
    ASSERT_EQ(Report({u"../lib"_s}).exitCode, 0);
    const auto before = Stamps(u"cloud"_s);
    for (const QString& option : {u"--dry-run"_s, u"--checksum"_s, u"--move"_s, u"--move"_s}) {
        const ImportReport report = Report({u"proj"_s, u"../lib"_s, option});
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_FALSE(report.Of(deep + u"top.tlk"_s).reason.isEmpty());
        EXPECT_EQ(Stamps(u"cloud"_s), before);
        EXPECT_TRUE(tree.Exists(deep + u"top.tlk"_s));
    }
}

} // namespace Halvern::Test
