// SPDX-License-Identifier: Apache-2.0

// Files whose links mean what they mean because of what stands around them: KiCad looks for the
// project in the folders above a sheet or a footprint, OpenSCAD for the imports of an included file
// in the folder of the model.

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

QByteArray Symbol(const QByteArray& id, const QByteArray& datasheet)
{
    return "  (symbol (lib_id \"x:y\") (uuid " + id + ")\n    (property \"Datasheet\" \"" +
           datasheet + "\" (id 3)))\n";
}

QByteArray Schematic(const QByteArray& content)
{
    return "(kicad_sch (version 20211123) (generator eeschema)\n" + content + ")\n";
}

/// work/p is a project with a sheet in p/sub, which names data sheets with the project's variable.
class Surroundings : public ScenarioFixture
{
protected:
    Surroundings()
    {
        tree.File(u"work/p/b.kicad_pro"_s, "{}\n")
            .File(u"work/p/b.kicad_sch"_s,
                  Schematic("  (sheet (at 50 50) (size 20 20) (uuid 1-1)\n"
                            "    (property \"Sheet name\" \"S\" (id 0))\n"
                            "    (property \"Sheet file\" \"sub/s.kicad_sch\" (id 1)))\n"))
            .File(Sheet, Schematic(Symbol("2-1", "${KIPRJMOD}/../docs/r.pdf") +
                                   Symbol("2-2", "${KIPRJMOD}/own.pdf") +
                                   Symbol("2-3", "${KIPRJMOD}/../docs/lost.pdf")))
            .File(u"work/p/own.pdf"_s, "own\n")
            .File(u"work/docs/r.pdf"_s, "r\n");
    }
    ImportReport Bring(const QString& source, const QStringList& options = {}) const
    {
        return Report(QStringList{source, u"--to"_s, u"Demo"_s} + options);
    }
    /// What a program reads that looks at the copy where it is.
    QStringList FoundFrom(const QString& copy) const
    {
        QStringList found;
        const CommandResult result = Run({u"links"_s, u"--plugin-path"_s, tree.Path(u"plugins"_s),
                                          u"--json"_s, tree.Path(copy)});
        for (const QJsonObject& event : result.Json())
            if (event.value(u"event"_s) == u"link"_s && event.value(u"status"_s) == u"found"_s)
                found.append(
                    QDir(tree.Path({})).relativeFilePath(event.value(u"resolved"_s).toString()));
        found.sort();
        return found;
    }

    const QString Sheet = u"work/p/sub/s.kicad_sch"_s;
    const QString Copy = u"cloud/Demo/sub/s.kicad_sch"_s;
};

} // namespace

TEST_F(Surroundings, AProjectsVariableLeadsToTheCopiesFromASheetInASubfolder)
{
    const ImportReport report = Bring(u"p/b.kicad_pro"_s);
    EXPECT_EQ(report.exitCode, 4) << ::testing::PrintToString(report);
    QByteArray expected = tree.Read(Sheet);
    expected.replace("${KIPRJMOD}/../docs/r.pdf", "${KIPRJMOD}/docs/r.pdf");
    EXPECT_EQ(tree.Read(Copy).toStdString(), expected.toStdString());
    EXPECT_EQ(tree.Read(u"cloud/Demo/docs/r.pdf"_s), "r\n");
    EXPECT_EQ(Leftovers(), QStringList());
    const auto before = Stamps(u"cloud"_s);
    const ImportReport again = Bring(u"p/b.kicad_pro"_s);
    EXPECT_EQ(again.exitCode, 4) << ::testing::PrintToString(again);
    EXPECT_EQ(Stamps(u"cloud"_s), before) << ::testing::PrintToString(again);
}

TEST_F(Surroundings, AProjectsVariableAloneInItsFileLeadsToTheCopy)
{
    tree.File(Sheet, Schematic(Symbol("2-1", "${KIPRJMOD}/../docs/r.pdf")));
    const ImportReport report = Bring(u"p/b.kicad_pro"_s);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(Copy).toStdString(),
              Schematic(Symbol("2-1", "${KIPRJMOD}/docs/r.pdf")).toStdString());
    EXPECT_EQ(FoundFrom(Copy), QStringList(u"cloud/Demo/docs/r.pdf"_s));
}

TEST_F(Surroundings, ASheetWithoutItsProjectLeadsToTheCopies)
{
    tree.File(u"work/docs/lost.pdf"_s, "found\n");
    const ImportReport report = Bring(u"p/sub/s.kicad_sch"_s);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_FALSE(tree.Exists(u"cloud/Demo/b.kicad_pro"_s));
    QStringList copies;
    for (const QString& source :
         {u"work/docs/lost.pdf"_s, u"work/docs/r.pdf"_s, u"work/p/own.pdf"_s})
        copies.append(report.Of(source).target);
    copies.sort();
    EXPECT_EQ(FoundFrom(report.Of(Sheet).target), copies) << ::testing::PrintToString(report);
}

TEST_F(Surroundings, ACopyInASubfolderIsRelinkedForWhatCameLater)
{
    ASSERT_EQ(Bring(u"p/b.kicad_pro"_s).exitCode, 4);
    tree.File(u"work/docs/lost.pdf"_s, "found\n");
    const ImportReport report = Bring(u"p/b.kicad_pro"_s);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    QByteArray expected = tree.Read(Sheet);
    expected.replace("${KIPRJMOD}/../docs/", "${KIPRJMOD}/docs/");
    EXPECT_EQ(tree.Read(Copy).toStdString(), expected.toStdString());
    EXPECT_EQ(FoundFrom(Copy), (QStringList{u"cloud/Demo/docs/lost.pdf"_s,
                                            u"cloud/Demo/docs/r.pdf"_s, u"cloud/Demo/own.pdf"_s}));
    EXPECT_EQ(Leftovers(), QStringList());
}

TEST_F(Surroundings, AFootprintInALibraryLeadsToItsModelOutsideOfTheProject)
{
    const QString footprint = u"lib/own.pretty/R.kicad_mod"_s;
    tree.File(u"work/p/fp-lib-table"_s,
              "(fp_lib_table\n  (lib (name \"own\")(type \"KiCad\")"
              "(uri \"${KIPRJMOD}/lib/own.pretty\")(options \"\")(descr \"\"))\n)\n")
        .File(u"work/p/"_s + footprint,
              "(footprint \"R\" (version 20211014) (generator pcbnew)\n  (layer \"F.Cu\")\n"
              "  (model \"${KIPRJMOD}/../3d/x.step\" (offset (xyz 0 0 0)))\n"
              "  (model \"3d/y.step\" (offset (xyz 0 0 0)))\n)\n")
        .File(u"work/3d/x.step"_s, DesignFile(u"x.stp"_s, {}))
        .File(u"work/p/3d/y.step"_s, DesignFile(u"y.stp"_s, {}, "y"));
    const ImportReport report = Bring(u"p/b.kicad_pro"_s);
    EXPECT_EQ(report.exitCode, 4) << ::testing::PrintToString(report);
    QStringList copies{report.Of(u"work/3d/x.step"_s).target,
                       report.Of(u"work/p/3d/y.step"_s).target};
    copies.sort();
    EXPECT_EQ(FoundFrom(u"cloud/Demo/"_s + footprint), copies)
        << tree.Read(u"cloud/Demo/"_s + footprint).toStdString();
}

TEST_F(Surroundings, WhatAKilledImportLeftBesideATargetIsClearedAndNothingElse)
{
    const QString own = u".corsync-0000000000abc"_s;
    const QString theirs = u".corsync-0000000000abd-s.kicad_sch"_s;
    const QString replacement = u".s.kicad_sch.relink-0123456789abcdef.tmp"_s;
    // The program ended between making the lock and writing who it is.
    tree.File(u"cloud/"_s + own + u"/.lock"_s, "")
        .File(u"cloud/"_s + own + u"/.beside"_s, QByteArray("./Demo/sub\0./\0", 14))
        .File(u"cloud/Demo/sub/"_s + own + u"-s.kicad_sch"_s, "half")
        .File(u"cloud/Demo/sub/"_s + own + u"-s.kicad_sch.relink-0123456789abcdef.tmp"_s, "half")
        .File(u"cloud/"_s + own + u"-b.kicad_sch"_s, "half")
        .File(u"cloud/Demo/"_s + own + u"-b.kicad_sch"_s, "not noted")
        .File(u"cloud/Demo/sub/"_s + theirs, "theirs")
        .File(u"cloud/Demo/sub/"_s + replacement, "theirs");
    EXPECT_EQ(Bring(u"p/b.kicad_pro"_s).exitCode, 4);
    EXPECT_FALSE(tree.Exists(u"cloud/"_s + own));
    EXPECT_FALSE(tree.Exists(u"cloud/"_s + own + u"-b.kicad_sch"_s));
    EXPECT_FALSE(tree.Exists(u"cloud/Demo/sub/"_s + own + u"-s.kicad_sch"_s));
    EXPECT_FALSE(
        tree.Exists(u"cloud/Demo/sub/"_s + own + u"-s.kicad_sch.relink-0123456789abcdef.tmp"_s));
    EXPECT_EQ(tree.Read(u"cloud/Demo/"_s + own + u"-b.kicad_sch"_s), "not noted");
    EXPECT_EQ(tree.Read(u"cloud/Demo/sub/"_s + theirs), "theirs");
    EXPECT_EQ(tree.Read(u"cloud/Demo/sub/"_s + replacement), "theirs");
}

TEST_F(Surroundings, AnImportThatAnIncludedFileAndItsModelFindInTwoPlacesKeepsItsName)
{
    tree.File(u"work/m/a.scad"_s, "include <sub/inc.scad>\n")
        .File(u"work/m/sub/inc.scad"_s, "import(\"x.stl\");\n")
        .File(u"work/m/x.stl"_s, "of the model\n")
        .File(u"work/m/sub/x.stl"_s, "of the included file\n")
        .File(u"cloud/Demo/sub/x.stl"_s, "foreign");
    const ImportReport report = Bring(u"m/a.scad"_s, {u"--collisions"_s, u"rename"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    const QString included = report.Of(u"work/m/sub/inc.scad"_s).target;
    EXPECT_EQ(tree.Read(included), "import(\"x.stl\");\n");
    EXPECT_EQ(tree.Read(QFileInfo(included).path() + u"/x.stl"_s), "of the included file\n");
    const QString model = report.Of(u"work/m/a.scad"_s).target;
    EXPECT_EQ(tree.Read(QFileInfo(model).path() + u"/x.stl"_s), "of the model\n");
    EXPECT_EQ(FoundFrom(model), (QStringList{included, QFileInfo(model).path() + u"/x.stl"_s}));
    EXPECT_EQ(tree.Read(u"cloud/Demo/sub/x.stl"_s), "foreign");
}

} // namespace Halvern::Test
