// SPDX-License-Identifier: Apache-2.0

// Files that KiCad finds by name, and what the project file itself names.

#include "KicadFixture.h"

#include <filesystem>

namespace Halvern::Test {

namespace {

class KicadProject : public KicadFixture
{
protected:
    const QString project = QStringLiteral("p/a b.kicad_pro");

    Links Companions(const QStringList& names)
    {
        Links links;
        for (const QString& name : names)
            links.append(
                {QStringLiteral("companion:") + name.section(u'=', 0, 0), name.section(u'=', 1)});
        return links;
    }
};

} // namespace

TEST_F(KicadProject, NamesTheFilesWithItsBaseNameAndTheTables)
{
    tree.File(project, "{}")
        .File(QStringLiteral("p/a b.kicad_sch"))
        .File(QStringLiteral("p/a b.kicad_pcb"));
    tree.File(QStringLiteral("p/a b.kicad_dru")).File(QStringLiteral("p/a b.kicad_prl"));
    tree.File(QStringLiteral("p/other.kicad_sch"))
        .File(QStringLiteral("p/fp-lib-table"), "(fp_lib_table)");
    tree.File(QStringLiteral("p/sym-lib-table"), "(sym_lib_table)");
    EXPECT_EQ(Read(project), Companions({QStringLiteral("kicad_sch=a b.kicad_sch"),
                                         QStringLiteral("kicad_pcb=a b.kicad_pcb"),
                                         QStringLiteral("kicad_dru=a b.kicad_dru"),
                                         QStringLiteral("sym-lib-table=sym-lib-table"),
                                         QStringLiteral("fp-lib-table=fp-lib-table")}));
}

TEST_F(KicadProject, IsNamedByItsSchematicAndItsBoard)
{
    const QString schematic = QStringLiteral("p/a b.kicad_sch");
    const QString board = QStringLiteral("p/a b.kicad_pcb");
    tree.File(schematic, Schematic({})).File(board, Board({}));
    EXPECT_EQ(Read(schematic), Companions({QStringLiteral("kicad_pcb=a b.kicad_pcb")}));
    EXPECT_EQ(Read(board), Companions({QStringLiteral("kicad_sch=a b.kicad_sch")}));
    tree.File(project, "{}");
    EXPECT_EQ(Read(schematic), Companions({QStringLiteral("kicad_pro=a b.kicad_pro")}));
    EXPECT_EQ(Read(board), Companions({QStringLiteral("kicad_pro=a b.kicad_pro")}));
}

TEST_F(KicadProject, BringsLibrariesOfItsOwnFolderAndNoOthers)
{
    tree.File(project, "{}");
    tree.File(
        QStringLiteral("p/sym-lib-table"),
        "(sym_lib_table\n  (lib (name \"own\")(type \"KiCad\")(uri "
        "\"${KIPRJMOD}/lib/own.kicad_sym\"))\n"
        "  (lib (name \"gone\")(type \"KiCad\")(uri \"${KIPRJMOD}/lib/gone.kicad_sym\"))\n"
        "  (lib (name \"above\")(type \"KiCad\")(uri \"${KIPRJMOD}/../above.kicad_sym\"))\n"
        "  (lib (name \"far\")(type \"KiCad\")(uri \"${KICAD6_SYMBOL_DIR}/far.kicad_sym\")))");
    tree.File(QStringLiteral("p/fp-lib-table"),
              "(fp_lib_table (lib (name \"Füße\")(uri \"${KIPRJMOD}/lib/./Füße.pretty\")))");
    tree.File(QStringLiteral("p/lib/own.kicad_sym")).File(QStringLiteral("above.kicad_sym"));
    tree.File(QStringLiteral("p/lib/Füße.pretty/R 2.kicad_mod"))
        .File(QStringLiteral("p/lib/Füße.pretty/C.kicad_mod"));
    tree.File(QStringLiteral("p/lib/Füße.pretty/notes.txt"));
    EXPECT_EQ(
        Read(project),
        Companions(
            {QStringLiteral("sym-lib-table=sym-lib-table"),
             QStringLiteral("sym-lib-table/own=lib/own.kicad_sym"),
             QStringLiteral("fp-lib-table=fp-lib-table"),
             QStringLiteral("fp-lib-table/Füße/C.kicad_mod=lib/Füße.pretty/C.kicad_mod"),
             QStringLiteral("fp-lib-table/Füße/R 2.kicad_mod=lib/Füße.pretty/R 2.kicad_mod")}));
}

TEST_F(KicadProject, ALibraryOfKicad5ComesWithItsDescriptions)
{
    tree.File(project, "{}");
    tree.File(
        QStringLiteral("p/sym-lib-table"),
        "(sym_lib_table (lib (name \"a\")(type \"Legacy\")(uri \"${KIPRJMOD}/lib/a-rescue.lib\"))"
        "(lib (name \"b\")(type \"Legacy\")(uri \"${KIPRJMOD}/b.lib\"))"
        "(lib (name \"c\")(type \"KiCad\")(uri \"${KIPRJMOD}/c.kicad_sym\")))");
    for (const char* const name :
         {"lib/a-rescue.lib", "lib/a-rescue.dcm", "b.lib", "c.kicad_sym", "c.dcm"})
        tree.File(QStringLiteral("p/") + QLatin1String(name));
    const Links links = Companions({QStringLiteral("sym-lib-table=sym-lib-table"),
                                    QStringLiteral("sym-lib-table/a=lib/a-rescue.lib"),
                                    QStringLiteral("sym-lib-table/a:dcm=lib/a-rescue.dcm"),
                                    QStringLiteral("sym-lib-table/b=b.lib"),
                                    QStringLiteral("sym-lib-table/c=c.kicad_sym")});
    EXPECT_EQ(Read(project), links);
    tree.Remove(QStringLiteral("p/lib/a-rescue.dcm"));
    EXPECT_TRUE(Repath(project, links));
    EXPECT_EQ(
        RewriteFailure(project, "{}",
                       Companions({QStringLiteral("sym-lib-table/a:dcm=a-rescue.dcm")})),
        QStringLiteral("KiCad finds lib/a-rescue.dcm by its name; it cannot be a-rescue.dcm"));
    EXPECT_EQ(
        RewriteFailure(project, "{}", Companions({QStringLiteral("sym-lib-table/c:dcm=c.dcm")})),
        QStringLiteral("the file has no link companion:sym-lib-table/c:dcm"));
}

TEST_F(KicadProject, NamesItsDrawingSheets)
{
    tree.File(project,
              "\xEF\xBB\xBF{\"pcbnew\": {\"page_layout_descr_file\": \"b/\\u00e4.kicad_wks\", "
              "\"x\": [1e99]},\n"
              "\"schematic\": {\"page_layout_descr_file\": \"${KIPRJMOD}/c.kicad_wks\"},\n"
              "\"other\": {\"page_layout_descr_file\": \"d\"}, \"page_layout_descr_file\": \"e\",\n"
              "\"board\": {\"pcbnew\": {\"page_layout_descr_file\": \"f\"}}}");
    EXPECT_EQ(Read(project),
              (Links{{QStringLiteral("pcbnew sheet"), QStringLiteral("b/ä.kicad_wks")},
                     {QStringLiteral("schematic sheet"), QStringLiteral("c.kicad_wks")}}));
    tree.File(project, "{\"pcbnew\": {\"page_layout_descr_file\": \"\"}}");
    EXPECT_EQ(Read(project), Links());
}

TEST_F(KicadProject, ALinkByNameIsNotRewritten)
{
    const FileTree::Snapshot before =
        tree.File(project, "{}").File(QStringLiteral("p/a b.kicad_sch")).Contents();
    const QString id = QStringLiteral("companion:kicad_sch");
    EXPECT_TRUE(Repath(project, {{id, QStringLiteral("a b.kicad_sch")}}));
    EXPECT_FALSE(Repath(project, {{id, QStringLiteral("a b (2).kicad_sch")}}));
    EXPECT_TRUE(context.lines.last().endsWith(
        QStringLiteral("KiCad finds a b.kicad_sch by its name; it cannot be a b (2).kicad_sch")))
        << context.lines.last().toStdString();
    EXPECT_EQ(tree.Contents(), before);
}

TEST_F(KicadProject, WhatIsMissingBesideACopyKeepsNoOtherLinkFromItsPath)
{
    const QByteArray text = "{\"pcbnew\": {\"page_layout_descr_file\": \"b.kicad_wks\"}}";
    tree.File(QStringLiteral("p/fp-lib-table"),
              "(fp_lib_table (lib (name \"x\")(uri \"${KIPRJMOD}/lib/x.pretty/\")))");
    tree.File(QStringLiteral("p/sym-lib-table"),
              "(sym_lib_table (lib (name \"y/z\")(uri \"${KIPRJMOD}/lib/y.kicad_sym\")))");
    Links links = Companions(
        {QStringLiteral("kicad_sch=a b.kicad_sch"), QStringLiteral("kicad_pcb=a b.kicad_pcb"),
         QStringLiteral("sym-lib-table=sym-lib-table"),
         QStringLiteral("sym-lib-table/y/z=lib/y.kicad_sym"),
         QStringLiteral("fp-lib-table/x/R.kicad_mod=lib/x.pretty/R.kicad_mod")});
    links.append({QStringLiteral("pcbnew sheet"), QStringLiteral("../b.kicad_wks")});
    EXPECT_EQ(Rewritten(project, text, links),
              "{\"pcbnew\": {\"page_layout_descr_file\": \"../b.kicad_wks\"}}");
    EXPECT_EQ(RewriteFailure(
                  project, text,
                  Companions({QStringLiteral("fp-lib-table/x/R.kicad_mod=x.pretty/R.kicad_mod")})),
              QStringLiteral("KiCad finds lib/x.pretty/R.kicad_mod by its name; it cannot be "
                             "x.pretty/R.kicad_mod"));
    for (const QString& unknown :
         {QStringLiteral("fp-lib-table/w/R=a"), QStringLiteral("kicad_prl=a"),
          QStringLiteral("fp-lib-table/=a"), QStringLiteral("=a")})
        EXPECT_EQ(RewriteFailure(project, text, Companions({unknown})),
                  QStringLiteral("the file has no link companion:") + unknown.section(u'=', 0, 0));
}

TEST_F(KicadProject, WhatIsNotWhereItsNameSaysIsAFailureAndTheOtherLinksAreRewritten)
{
    tree.File(QStringLiteral("p/fp-lib-table"),
              "(fp_lib_table (lib (name \"x\")(uri \"${KIPRJMOD}/lib/x.pretty\")))");
    tree.File(project, "{\"pcbnew\": {\"page_layout_descr_file\": \"b.kicad_wks\"}}");
    Links links =
        Companions({QStringLiteral("kicad_sch=a b.kicad_sch"),
                    QStringLiteral("fp-lib-table/x/C.kicad_mod=x.pretty/C.kicad_mod"),
                    QStringLiteral("fp-lib-table/x/R.kicad_mod=x.pretty/R.kicad_mod"),
                    QStringLiteral("fp-lib-table/x/S.kicad_mod=lib/x.pretty/S.kicad_mod")});
    links.append({QStringLiteral("pcbnew sheet"), QStringLiteral("../b.kicad_wks")});
    EXPECT_FALSE(Repath(project, links));
    EXPECT_TRUE(context.lines.last().endsWith(
        QStringLiteral("KiCad finds lib/x.pretty/C.kicad_mod by its name; it cannot be "
                       "x.pretty/C.kicad_mod (and 1 more)")))
        << context.lines.last().toStdString();
    EXPECT_EQ(tree.Read(project), "{\"pcbnew\": {\"page_layout_descr_file\": \"../b.kicad_wks\"}}");
}

TEST_F(KicadProject, AModelThatShowsComesWithTheSolidsThatKicadExportsInItsPlace)
{
    const QString board = QStringLiteral("p/x.kicad_pcb");
    tree.File(board, Board(Footprint("1-1", Model("\"${KIPRJMOD}/3d/a.wrl\"")) +
                           Footprint("2-2", Model("\"3d/b.WRL\"")) +
                           Footprint("3-3", Model("\"3d/a.step\""))));
    tree.File(QStringLiteral("p/3d/a.step"))
        .File(QStringLiteral("p/3d/a.stp"))
        .File(QStringLiteral("p/3d/a.txt"));
    const Links links = Read(board);
    EXPECT_EQ(links, (Links{{QStringLiteral("set:1-1 model#model"), QStringLiteral("3d/a.wrl")},
                            {QStringLiteral("set:1-1 model#stp"), QStringLiteral("3d/a.stp")},
                            {QStringLiteral("set:1-1 model#step"), QStringLiteral("3d/a.step")},
                            {QStringLiteral("set:2-2 model#model"), QStringLiteral("3d/b.WRL")},
                            {QStringLiteral("3-3 model"), QStringLiteral("3d/a.step")}}));
    Links moved = links;
    for (int i = 0; i < 3; ++i)
        moved[i].second.replace(QStringLiteral("3d/"), QStringLiteral("3d/a (2)/"));
    QByteArray expected = tree.Read(board);
    expected.replace("${KIPRJMOD}/3d/a.wrl", "${KIPRJMOD}/3d/a (2)/a.wrl");
    EXPECT_TRUE(Repath(board, moved)) << context.lines.join(u'\n').toStdString();
    EXPECT_EQ(tree.Read(board), expected);
}

TEST_F(KicadProject, AModelNamedWithBackslashesComesWithItsSolids)
{
    const QString board = QStringLiteral("p/x.kicad_pcb");
    tree.File(board, Board(Footprint("1-1", Model("\"3d\\\\a.wrl\""))));
    tree.File(QStringLiteral("p/3d/a.wrl")).File(QStringLiteral("p/3d/a.step"));
    EXPECT_EQ(Read(board),
              (Links{{QStringLiteral("set:1-1 model#model"), QStringLiteral("3d/a.wrl")},
                     {QStringLiteral("set:1-1 model#step"), QStringLiteral("3d/a.step")}}));
}

TEST_F(KicadProject, ASolidThatIsFoundUnderSeveralNamesIsOneLink)
{
    const QString board = QStringLiteral("p/x.kicad_pcb");
    tree.File(board, Board(Footprint("1-1", Model("\"a.wrl\"")))).File(QStringLiteral("p/a.step"));
    // Where the case of letters means nothing the other name is there already.
    std::error_code error;
    std::filesystem::create_hard_link(tree.Path(QStringLiteral("p/a.step")).toStdString(),
                                      tree.Path(QStringLiteral("p/a.STEP")).toStdString(), error);
    ASSERT_TRUE(tree.Exists(QStringLiteral("p/a.STEP"))) << error.message();
    EXPECT_EQ(Read(board),
              (Links{{QStringLiteral("set:1-1 model#model"), QStringLiteral("a.wrl")},
                     {QStringLiteral("set:1-1 model#step"), QStringLiteral("a.step")}}));
}

TEST_F(KicadProject, ACopyThatLiesElsewhereTakesTheSolidsOfItsModel)
{
    const QString board = QStringLiteral("copy/x.kicad_pcb");
    tree.File(board, Board(Footprint("1-1", Model("\"3d/a.wrl\""))));
    const QString model = QStringLiteral("set:1-1 model#model");
    EXPECT_TRUE(
        Repath(board, {{model, QStringLiteral("../3d/a.wrl")},
                       {QStringLiteral("set:1-1 model#step"), QStringLiteral("../3d/a.step")}}))
        << context.lines.join(u'\n').toStdString();
    EXPECT_EQ(Read(board), (Links{{model, QStringLiteral("../3d/a.wrl")}}));
    EXPECT_FALSE(Repath(board, {{QStringLiteral("set:2-2 model#step"), QStringLiteral("a.step")}}));
}

TEST_F(KicadProject, AModelIsNotSeparatedFromItsSolids)
{
    const QString board = QStringLiteral("p/x.kicad_pcb");
    tree.File(board, Board(Footprint("1-1", Model("\"3d/a.wrl\""))))
        .File(QStringLiteral("p/3d/a.step"));
    const FileTree::Snapshot before = tree.Contents();
    EXPECT_FALSE(
        Repath(board, {{QStringLiteral("set:1-1 model#model"), QStringLiteral("3d/a.wrl")},
                       {QStringLiteral("set:1-1 model#step"), QStringLiteral("3d/a (2).step")}}));
    EXPECT_TRUE(context.lines.last().endsWith(
        QStringLiteral("KiCad finds 3d/a (2).step by the name of 3d/a.wrl")))
        << context.lines.last().toStdString();
    EXPECT_EQ(tree.Contents(), before);
}

} // namespace Halvern::Test
