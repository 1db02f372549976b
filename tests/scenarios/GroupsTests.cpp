// SPDX-License-Identifier: Apache-2.0

// Files that must stay beside each other: companions, and sets of which a file stores one pattern.

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

/// work/one/top.tlk and work/two/top.tlk link ../lib/part.tlk, which has a companion and a set.
class Groups : public ScenarioFixture
{
protected:
    Groups()
    {
        tree.File(u"plugins/layout.syncplugin"_s,
                  Registration(QStringLiteral(LAYOUT_PLUGIN), u"FileLayout"_s, u"tlk"_s));
        tree.File(u"work/one/top.tlk"_s, "link 1 ../lib/part.tlk\n")
            .File(u"work/two/top.tlk"_s, "link 1 ../lib/part.tlk\n")
            .File(u"work/lib/part.tlk"_s, "link companion:t table\n"
                                          "link set:a#1 tex/w.1.png\nlink set:a#2 tex/w.2.png\n")
            .File(u"work/lib/table"_s, "table\n")
            .File(u"work/lib/tex/w.1.png"_s, "one\n")
            .File(u"work/lib/tex/w.2.png"_s, "two\n");
    }
    ImportReport Bring(const QString& project, const QStringList& options = {}) const
    {
        return Report(QStringList{project + u"/top.tlk"_s, u"--to"_s, project} + options);
    }
    QByteArray Copy(const QString& name) const { return tree.Read(u"cloud/"_s + name); }
};

/// Laid out as the registered layout wants it.
class BoardGroups : public ScenarioFixture
{};

const QStringList Rename{u"--collisions"_s, u"rename"_s};

} // namespace

TEST_F(Groups, ComeWithEachProjectThatLinksThem)
{
    ASSERT_EQ(Bring(u"one"_s).exitCode, 0);
    const ImportReport report = Bring(u"two"_s);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.Statuses(), QStringList(5, u"copied"_s)) << ::testing::PrintToString(report);
    const FileTree::Snapshot first = tree.Contents(u"cloud/one/lib"_s);
    EXPECT_EQ(first.size(), 4);
    EXPECT_EQ(tree.Contents(u"cloud/two/lib"_s), first);
    EXPECT_EQ(Bring(u"two"_s).Statuses(), QStringList(5, u"unchanged"_s));
}

TEST_F(Groups, OfOneProjectAreUpdatedWithoutTheOthers)
{
    ASSERT_EQ(Bring(u"one"_s).exitCode, 0);
    ASSERT_EQ(Bring(u"two"_s).exitCode, 0);
    const auto two = Stamps(u"cloud/two"_s);
    Save(u"work/lib/tex/w.2.png"_s, "second two\n");
    Save(u"work/lib/table"_s, "second table\n");
    const ImportReport report = Bring(u"one"_s);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(Copy(u"one/lib/tex/w.2.png"_s), "second two\n");
    EXPECT_EQ(Copy(u"one/lib/table"_s), "second table\n");
    EXPECT_EQ(Stamps(u"cloud/two"_s), two);
}

TEST_F(Groups, ThatALayoutPutsElsewhereBecauseOfAFileInTheWayAreRenamed)
{
    tree.File(u"cloud/one/lib/tex/w.1.png"_s, "foreign");
    const ImportReport report = Bring(u"one"_s, Rename);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/lib/tex/w.1.png"_s), u"renamed"_s)
        << ::testing::PrintToString(report);
    const QString aside = report.Of(u"work/lib/tex/w.1.png"_s).target;
    EXPECT_NE(aside, u"cloud/one/lib/tex/w.1.png"_s);
    EXPECT_EQ(tree.Read(aside), "one\n");
    EXPECT_EQ(QFileInfo(report.Of(u"work/lib/tex/w.2.png"_s).target).path(),
              QFileInfo(aside).path());
    EXPECT_EQ(Copy(u"one/lib/tex/w.1.png"_s), "foreign");
    const auto before = Stamps(u"cloud"_s);
    const ImportReport again = Bring(u"one"_s, Rename);
    EXPECT_EQ(again.exitCode, 0) << ::testing::PrintToString(again);
    EXPECT_EQ(Stamps(u"cloud"_s), before) << ::testing::PrintToString(again);
}

TEST_F(Groups, AreReadAgainByAnyMemberWhereTheOthersAreNotBesideTheCopy)
{
    // KiCad's models: the file stores one, and others of its name are used in its place.
    tree.File(u"work/board/b.kicad_pcb"_s,
              "(kicad_pcb (version 20221018) (generator pcbnew)\n"
              "  (footprint \"R\" (layer \"F.Cu\")\n"
              "    (model \"../models/R.wrl\" (offset (xyz 0 0 0)))))\n")
        .File(u"work/models/R.wrl"_s, "#VRML V2.0 utf8\n")
        .File(u"work/models/R.step"_s, DesignFile(u"R.stp"_s, {}));
    const ImportReport report = Report({u"board/b.kicad_pcb"_s, u"--to"_s, u"Demo/deep"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    const QString model = report.Of(u"work/models/R.wrl"_s).target;
    EXPECT_EQ(tree.Read(model), "#VRML V2.0 utf8\n");
    EXPECT_EQ(tree.Read(QFileInfo(model).path() + u"/R.step"_s),
              tree.Read(u"work/models/R.step"_s));
    const QString way = QDir(tree.Path(u"cloud/Demo/deep"_s)).relativeFilePath(tree.Path(model));
    EXPECT_NE(way, u"../models/R.wrl"_s) << "the link has to be rewritten";
    EXPECT_TRUE(Copy(u"Demo/deep/b.kicad_pcb"_s).contains("\"" + way.toUtf8() + "\""))
        << Copy(u"Demo/deep/b.kicad_pcb"_s).toStdString();
}

TEST_F(BoardGroups, WithTheGivenFileThatWereRenamedAreUnchangedAfterwards)
{
    tree.File(u"work/board/b.kicad_pcb"_s, "(kicad_pcb (version 20221018) (generator pcbnew))")
        .File(u"work/board/b.kicad_sch"_s, "(kicad_sch (version 20230121) (generator eeschema))")
        .File(u"work/board/b.kicad_pro"_s, R"({"meta":{"filename":"b.kicad_pro","version":1}})")
        .File(u"cloud/One/b.kicad_pcb"_s, "foreign")
        .File(u"cloud/Two/b.kicad_pro"_s, "foreign")
        .File(u"cloud/Three/board/b.kicad_sch"_s, "foreign");
    const auto bring = [&](const QString& source, const QString& to) {
        return Report(QStringList{source, u"--to"_s, to} + Rename);
    };
    const QList<QStringList> imports{{u"board/b.kicad_pro"_s, u"One"_s},
                                     {u"board/b.kicad_pro"_s, u"Two"_s},
                                     {u"board"_s, u"Three"_s}};
    for (const QStringList& import : imports) {
        const ImportReport first = bring(import.first(), import.last());
        EXPECT_EQ(first.exitCode, 0) << ::testing::PrintToString(first);
        EXPECT_TRUE(first.Statuses().contains(u"renamed"_s)) << ::testing::PrintToString(first);
        const auto before = Stamps(u"cloud"_s);
        const ImportReport second = bring(import.first(), import.last());
        EXPECT_EQ(second.exitCode, 0) << ::testing::PrintToString(second);
        EXPECT_EQ(second.Statuses(), QStringList(3, u"unchanged"_s))
            << ::testing::PrintToString(second);
        EXPECT_EQ(Stamps(u"cloud"_s), before);
    }
    // What comes to them later goes where they are.
    tree.File(u"work/board/b.kicad_dru"_s, "(version 1)");
    Save(u"work/board/b.kicad_sch"_s, "(kicad_sch (version 20230121) (generator eeschema) (a))");
    const ImportReport report = bring(u"board/b.kicad_pro"_s, u"One"_s);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.Of(u"work/board/b.kicad_dru"_s).target, u"cloud/One/b (2)/b.kicad_dru"_s);
    EXPECT_EQ(report.StatusOf(u"work/board/b.kicad_sch"_s), u"updated"_s);
    EXPECT_FALSE(tree.Exists(u"cloud/One/b (3)"_s));
}

} // namespace Halvern::Test
