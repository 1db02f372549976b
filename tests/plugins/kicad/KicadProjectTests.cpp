// SPDX-License-Identifier: Apache-2.0

// Files that KiCad finds by name, and what the project file itself names.

#include "KicadFixture.h"

#include <filesystem>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class KicadProject : public KicadFixture
{
protected:
    const QString project = u"p/a b.kicad_pro"_s;

    Links Companions(const QStringList& names)
    {
        Links links;
        for (const QString& name : names)
            links.append({u"companion:"_s + name.section(u'=', 0, 0), name.section(u'=', 1)});
        return links;
    }
};

} // namespace

TEST_F(KicadProject, NamesTheFilesWithItsBaseNameAndTheTables)
{
    tree.File(project, "{}").File(u"p/a b.kicad_sch"_s).File(u"p/a b.kicad_pcb"_s);
    tree.File(u"p/a b.kicad_dru"_s).File(u"p/a b.kicad_prl"_s);
    tree.File(u"p/other.kicad_sch"_s).File(u"p/fp-lib-table"_s, "(fp_lib_table)");
    tree.File(u"p/sym-lib-table"_s, "(sym_lib_table)");
    EXPECT_EQ(Read(project),
              Companions({u"kicad_sch=a b.kicad_sch"_s, u"kicad_pcb=a b.kicad_pcb"_s,
                          u"kicad_dru=a b.kicad_dru"_s, u"sym-lib-table=sym-lib-table"_s,
                          u"fp-lib-table=fp-lib-table"_s}));
}

TEST_F(KicadProject, IsNamedByItsSchematicAndItsBoard)
{
    const QString schematic = u"p/a b.kicad_sch"_s;
    const QString board = u"p/a b.kicad_pcb"_s;
    tree.File(schematic, Schematic({})).File(board, Board({}));
    EXPECT_EQ(Read(schematic), Companions({u"kicad_pcb=a b.kicad_pcb"_s}));
    EXPECT_EQ(Read(board), Companions({u"kicad_sch=a b.kicad_sch"_s}));
    tree.File(project, "{}");
    EXPECT_EQ(Read(schematic), Companions({u"kicad_pro=a b.kicad_pro"_s}));
    EXPECT_EQ(Read(board), Companions({u"kicad_pro=a b.kicad_pro"_s}));
}

TEST_F(KicadProject, BringsLibrariesOfItsOwnFolderAndNoOthers)
{
    tree.File(project, "{}");
    tree.File(
        u"p/sym-lib-table"_s,
        "(sym_lib_table\n  (lib (name \"own\")(type \"KiCad\")(uri "
        "\"${KIPRJMOD}/lib/own.kicad_sym\"))\n"
        "  (lib (name \"gone\")(type \"KiCad\")(uri \"${KIPRJMOD}/lib/gone.kicad_sym\"))\n"
        "  (lib (name \"above\")(type \"KiCad\")(uri \"${KIPRJMOD}/../above.kicad_sym\"))\n"
        "  (lib (name \"far\")(type \"KiCad\")(uri \"${KICAD6_SYMBOL_DIR}/far.kicad_sym\")))");
    tree.File(u"p/fp-lib-table"_s,
              "(fp_lib_table (lib (name \"Füße\")(uri \"${KIPRJMOD}/lib/./Füße.pretty\")))");
    tree.File(u"p/lib/own.kicad_sym"_s).File(u"above.kicad_sym"_s);
    tree.File(u"p/lib/Füße.pretty/R 2.kicad_mod"_s).File(u"p/lib/Füße.pretty/C.kicad_mod"_s);
    tree.File(u"p/lib/Füße.pretty/notes.txt"_s);
    EXPECT_EQ(Read(project),
              Companions({u"sym-lib-table=sym-lib-table"_s,
                          u"sym-lib-table/own=lib/own.kicad_sym"_s, u"fp-lib-table=fp-lib-table"_s,
                          u"fp-lib-table/Füße/C.kicad_mod=lib/Füße.pretty/C.kicad_mod"_s,
                          u"fp-lib-table/Füße/R 2.kicad_mod=lib/Füße.pretty/R 2.kicad_mod"_s}));
}

TEST_F(KicadProject, ALibraryOfKicad5ComesWithItsDescriptions)
{
    tree.File(project, "{}");
    tree.File(
        u"p/sym-lib-table"_s,
        "(sym_lib_table (lib (name \"a\")(type \"Legacy\")(uri \"${KIPRJMOD}/lib/a-rescue.lib\"))"
        "(lib (name \"b\")(type \"Legacy\")(uri \"${KIPRJMOD}/b.lib\"))"
        "(lib (name \"c\")(type \"KiCad\")(uri \"${KIPRJMOD}/c.kicad_sym\")))");
    for (const char* const name :
         {"lib/a-rescue.lib", "lib/a-rescue.dcm", "b.lib", "c.kicad_sym", "c.dcm"})
        tree.File(u"p/"_s + QLatin1String(name));
    const Links links =
        Companions({u"sym-lib-table=sym-lib-table"_s, u"sym-lib-table/a=lib/a-rescue.lib"_s,
                    u"sym-lib-table/a:dcm=lib/a-rescue.dcm"_s, u"sym-lib-table/b=b.lib"_s,
                    u"sym-lib-table/c=c.kicad_sym"_s});
    EXPECT_EQ(Read(project), links);
    tree.Remove(u"p/lib/a-rescue.dcm"_s);
    EXPECT_TRUE(Repath(project, links));
    EXPECT_EQ(RewriteFailure(project, "{}", Companions({u"sym-lib-table/a:dcm=a-rescue.dcm"_s})),
              u"KiCad finds lib/a-rescue.dcm by its name; it cannot be a-rescue.dcm"_s);
    EXPECT_EQ(RewriteFailure(project, "{}", Companions({u"sym-lib-table/c:dcm=c.dcm"_s})),
              u"the file has no link companion:sym-lib-table/c:dcm"_s);
}

TEST_F(KicadProject, NamesItsDrawingSheets)
{
    tree.File(project,
              "\xEF\xBB\xBF{\"pcbnew\": {\"page_layout_descr_file\": \"b/\\u00e4.kicad_wks\", "
              "\"x\": [1e99]},\n"
              "\"schematic\": {\"page_layout_descr_file\": \"${KIPRJMOD}/c.kicad_wks\"},\n"
              "\"other\": {\"page_layout_descr_file\": \"d\"}, \"page_layout_descr_file\": \"e\",\n"
              "\"board\": {\"pcbnew\": {\"page_layout_descr_file\": \"f\"}}}");
    EXPECT_EQ(Read(project), (Links{{u"pcbnew sheet"_s, u"b/ä.kicad_wks"_s},
                                    {u"schematic sheet"_s, u"c.kicad_wks"_s}}));
    tree.File(project, "{\"pcbnew\": {\"page_layout_descr_file\": \"\"}}");
    EXPECT_EQ(Read(project), Links());
}

TEST_F(KicadProject, ALinkByNameIsNotRewritten)
{
    const FileTree::Snapshot before =
        tree.File(project, "{}").File(u"p/a b.kicad_sch"_s).Contents();
    const QString id = u"companion:kicad_sch"_s;
    EXPECT_TRUE(Repath(project, {{id, u"a b.kicad_sch"_s}}));
    EXPECT_FALSE(Repath(project, {{id, u"a b (2).kicad_sch"_s}}));
    EXPECT_TRUE(context.lines.last().endsWith(
        u"KiCad finds a b.kicad_sch by its name; it cannot be a b (2).kicad_sch"_s))
        << context.lines.last().toStdString();
    EXPECT_EQ(tree.Contents(), before);
}

TEST_F(KicadProject, WhatIsMissingBesideACopyKeepsNoOtherLinkFromItsPath)
{
    const QByteArray text = "{\"pcbnew\": {\"page_layout_descr_file\": \"b.kicad_wks\"}}";
    tree.File(u"p/fp-lib-table"_s,
              "(fp_lib_table (lib (name \"x\")(uri \"${KIPRJMOD}/lib/x.pretty/\")))");
    tree.File(u"p/sym-lib-table"_s,
              "(sym_lib_table (lib (name \"y/z\")(uri \"${KIPRJMOD}/lib/y.kicad_sym\")))");
    Links links =
        Companions({u"kicad_sch=a b.kicad_sch"_s, u"kicad_pcb=a b.kicad_pcb"_s,
                    u"sym-lib-table=sym-lib-table"_s, u"sym-lib-table/y/z=lib/y.kicad_sym"_s,
                    u"fp-lib-table/x/R.kicad_mod=lib/x.pretty/R.kicad_mod"_s});
    links.append({u"pcbnew sheet"_s, u"../b.kicad_wks"_s});
    EXPECT_EQ(Rewritten(project, text, links),
              "{\"pcbnew\": {\"page_layout_descr_file\": \"../b.kicad_wks\"}}");
    EXPECT_EQ(RewriteFailure(project, text,
                             Companions({u"fp-lib-table/x/R.kicad_mod=x.pretty/R.kicad_mod"_s})),
              u"KiCad finds lib/x.pretty/R.kicad_mod by its name; it cannot be "
              "x.pretty/R.kicad_mod"_s);
    for (const QString& unknown :
         {u"fp-lib-table/w/R=a"_s, u"kicad_prl=a"_s, u"fp-lib-table/=a"_s, u"=a"_s})
        EXPECT_EQ(RewriteFailure(project, text, Companions({unknown})),
                  u"the file has no link companion:"_s + unknown.section(u'=', 0, 0));
}

TEST_F(KicadProject, WhatIsNotWhereItsNameSaysIsAFailureAndTheOtherLinksAreRewritten)
{
    tree.File(u"p/fp-lib-table"_s,
              "(fp_lib_table (lib (name \"x\")(uri \"${KIPRJMOD}/lib/x.pretty\")))");
    tree.File(project, "{\"pcbnew\": {\"page_layout_descr_file\": \"b.kicad_wks\"}}");
    Links links = Companions({u"kicad_sch=a b.kicad_sch"_s,
                              u"fp-lib-table/x/C.kicad_mod=x.pretty/C.kicad_mod"_s,
                              u"fp-lib-table/x/R.kicad_mod=x.pretty/R.kicad_mod"_s,
                              u"fp-lib-table/x/S.kicad_mod=lib/x.pretty/S.kicad_mod"_s});
    links.append({u"pcbnew sheet"_s, u"../b.kicad_wks"_s});
    EXPECT_FALSE(Repath(project, links));
    EXPECT_TRUE(context.lines.last().endsWith(
        u"KiCad finds lib/x.pretty/C.kicad_mod by its name; it cannot be "
        "x.pretty/C.kicad_mod (and 1 more)"_s))
        << context.lines.last().toStdString();
    EXPECT_EQ(tree.Read(project), "{\"pcbnew\": {\"page_layout_descr_file\": \"../b.kicad_wks\"}}");
}

TEST_F(KicadProject, AModelThatShowsComesWithTheSolidsThatKicadExportsInItsPlace)
{
    const QString board = u"p/x.kicad_pcb"_s;
    tree.File(board, Board(Footprint("1-1", Model("\"${KIPRJMOD}/3d/a.wrl\"")) +
                           Footprint("2-2", Model("\"3d/b.WRL\"")) +
                           Footprint("3-3", Model("\"3d/a.step\""))));
    tree.File(u"p/3d/a.step"_s).File(u"p/3d/a.stp"_s).File(u"p/3d/a.txt"_s);
    const Links links = Read(board);
    EXPECT_EQ(links, (Links{{u"set:1-1 model#model"_s, u"3d/a.wrl"_s},
                            {u"set:1-1 model#stp"_s, u"3d/a.stp"_s},
                            {u"set:1-1 model#step"_s, u"3d/a.step"_s},
                            {u"set:2-2 model#model"_s, u"3d/b.WRL"_s},
                            {u"3-3 model"_s, u"3d/a.step"_s}}));
    Links moved = links;
    for (int i = 0; i < 3; ++i)
        moved[i].second.replace(u"3d/"_s, u"3d/a (2)/"_s);
    QByteArray expected = tree.Read(board);
    expected.replace("${KIPRJMOD}/3d/a.wrl", "${KIPRJMOD}/3d/a (2)/a.wrl");
    EXPECT_TRUE(Repath(board, moved)) << context.lines.join(u'\n').toStdString();
    EXPECT_EQ(tree.Read(board), expected);
}

TEST_F(KicadProject, AModelNamedWithBackslashesComesWithItsSolids)
{
    const QString board = u"p/x.kicad_pcb"_s;
    tree.File(board, Board(Footprint("1-1", Model("\"3d\\\\a.wrl\""))));
    tree.File(u"p/3d/a.wrl"_s).File(u"p/3d/a.step"_s);
    EXPECT_EQ(Read(board), (Links{{u"set:1-1 model#model"_s, u"3d/a.wrl"_s},
                                  {u"set:1-1 model#step"_s, u"3d/a.step"_s}}));
}

TEST_F(KicadProject, ASolidThatIsFoundUnderSeveralNamesIsOneLink)
{
    const QString board = u"p/x.kicad_pcb"_s;
    tree.File(board, Board(Footprint("1-1", Model("\"a.wrl\"")))).File(u"p/a.step"_s);
    // Where the case of letters means nothing the other name is there already.
    std::error_code error;
    std::filesystem::create_hard_link(tree.Path(u"p/a.step"_s).toStdString(),
                                      tree.Path(u"p/a.STEP"_s).toStdString(), error);
    ASSERT_TRUE(tree.Exists(u"p/a.STEP"_s)) << error.message();
    EXPECT_EQ(Read(board), (Links{{u"set:1-1 model#model"_s, u"a.wrl"_s},
                                  {u"set:1-1 model#step"_s, u"a.step"_s}}));
}

TEST_F(KicadProject, ACopyThatLiesElsewhereTakesTheSolidsOfItsModel)
{
    const QString board = u"copy/x.kicad_pcb"_s;
    tree.File(board, Board(Footprint("1-1", Model("\"3d/a.wrl\""))));
    const QString model = u"set:1-1 model#model"_s;
    EXPECT_TRUE(
        Repath(board, {{model, u"../3d/a.wrl"_s}, {u"set:1-1 model#step"_s, u"../3d/a.step"_s}}))
        << context.lines.join(u'\n').toStdString();
    EXPECT_EQ(Read(board), (Links{{model, u"../3d/a.wrl"_s}}));
    EXPECT_FALSE(Repath(board, {{u"set:2-2 model#step"_s, u"a.step"_s}}));
}

TEST_F(KicadProject, AModelIsNotSeparatedFromItsSolids)
{
    const QString board = u"p/x.kicad_pcb"_s;
    tree.File(board, Board(Footprint("1-1", Model("\"3d/a.wrl\"")))).File(u"p/3d/a.step"_s);
    const FileTree::Snapshot before = tree.Contents();
    EXPECT_FALSE(Repath(board, {{u"set:1-1 model#model"_s, u"3d/a.wrl"_s},
                                {u"set:1-1 model#step"_s, u"3d/a (2).step"_s}}));
    EXPECT_TRUE(
        context.lines.last().endsWith(u"KiCad finds 3d/a (2).step by the name of 3d/a.wrl"_s))
        << context.lines.last().toStdString();
    EXPECT_EQ(tree.Contents(), before);
}

} // namespace Halvern::Test
