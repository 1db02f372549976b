// SPDX-License-Identifier: Apache-2.0

#include "OpenScadFixture.h"

#include "pluginkit/FileScanner.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class OpenScadReader : public OpenScadFixture
{
protected:
    void SetUp() override { qputenv("OPENSCADPATH", tree.Path(u"libs"_s).toUtf8()); }
    void TearDown() override { qunsetenv("OPENSCADPATH"); }
};

struct Row
{
    const char* what;
    QByteArray text;
    Links links;
};

} // namespace

TEST_F(OpenScadReader, IncludesUsesAndImportsAreLinks)
{
    EXPECT_EQ(Model("include <lib/Maße.scad>\nuse<../木 1.scad>\nuse < \n<no>\n"
                    "use\r\n<c.ttf>\nimport(\"a.stl\");\n  surface ( file = \"h f.dat\" ) ;"),
              (Links{LinkTo(u"include 1", u"lib/Maße.scad"), LinkTo(u"use 1", u"../木 1.scad"),
                     LinkTo(u"use 2", u" <no"), LinkTo(u"use 3", u"c.ttf"),
                     LinkTo(u"import 1", u"a.stl"), LinkTo(u"surface 1", u"h f.dat")}));
}

TEST_F(OpenScadReader, TheFileOfACallIsFoundAmongItsArguments)
{
    const Row rows[] = {
        {"the first without a name", R"(import("a.stl", 3);)", {LinkTo(u"import 1", u"a.stl")}},
        {"after named ones", R"(import(convexity=2, "a.stl");)", {LinkTo(u"import 1", u"a.stl")}},
        {"by name", R"(import(layer="x", file="a.dxf");)", {LinkTo(u"import 1", u"a.dxf")}},
        {"by its old name", R"(import(filename="a.stl");)", {LinkTo(u"import 1", u"a.stl")}},
        {"by name before one without",
         R"(import(file="a.stl", "b.stl");)",
         {LinkTo(u"import 1", u"a.stl")}},
        {"a layer is no file", R"(import(layer="x");)", {}},
        {"nothing", "import();", {}},
        {"an empty name", R"(import("");)", {}},
        {"undefined", "import(undef);", {}},
        {"old calls",
         R"(import_stl("a.stl"); import_off("b.off"); import_dxf("c.dxf");)",
         {LinkTo(u"import_stl 1", u"a.stl"), LinkTo(u"import_off 1", u"b.off"),
          LinkTo(u"import_dxf 1", u"c.dxf")}},
        {"an extrusion of a file",
         R"(linear_extrude(height=2, file="a.dxf"); )"
         R"(rotate_extrude("b.dxf");)",
         {LinkTo(u"linear_extrude 1", u"a.dxf"), LinkTo(u"rotate_extrude 1", u"b.dxf")}},
        {"an extrusion of anything else", R"(linear_extrude(h) text("a.dxf");)", {}},
        {"calls in one another",
         R"(linear_extrude(height=dxf_dim(file="a.dxf", name="h"))"
         R"(+dxf_cross(file="b.dxf")) import("c.dxf");)",
         {LinkTo(u"dxf_dim 1", u"a.dxf"), LinkTo(u"dxf_cross 1", u"b.dxf"),
          LinkTo(u"import 1", u"c.dxf")}},
        {"a choice",
         R"(import(big ? "a.stl" : small ? "b.stl" : "c.stl");)",
         {LinkTo(u"import 1", u"a.stl"), LinkTo(u"import 1 value 2", u"b.stl"),
          LinkTo(u"import 1 value 3", u"c.stl")}},
        {"a definition", R"(module import(file="a.stl") {} function surface(f="b") = f;)", {}},
        {"another name", R"(reimport("a.stl"); import_("a.stl"); imports("a.stl");)", {}},
        {"only the name", R"(import; x = import + "a.stl";)", {}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Model(row.text), row.links) << row.what;
}

TEST_F(OpenScadReader, CommentsAndStringsHoldNoLinks)
{
    EXPECT_EQ(Model("// import(\"1\") /* \n/* include <2> \" ** / */ x = \"use <3> \\\" import(\";"
                    "/**/y=a/b; z = \"/*\"; import(/* \"4\" */ \"5.stl\" // \"6\"\n); //"),
              (Links{LinkTo(u"import 1", u"5.stl")}));
    EXPECT_EQ(Model(""), Links{});
    EXPECT_EQ(Model("reuse <a>; included < b; x = a < b > c;"), Links{});
}

TEST_F(OpenScadReader, EscapesOfStringsAreResolved)
{
    EXPECT_EQ(Model(R"(import("\u00e4 \"q\" \\ \x41\U01F600\q.stl");)"),
              (Links{LinkTo(u"import 1", u"ä \"q\" / A😀q.stl")}));
    EXPECT_EQ(
        Model(R"(import("..\\lib\\a.stl"); include <..\lib\b.scad>)"),
        (Links{LinkTo(u"import 1", u"../lib/a.stl"), LinkTo(u"include 1", u"../lib/b.scad")}));
}

TEST_F(OpenScadReader, AVariableStandsForTheTextsThatItIsAssigned)
{
    EXPECT_EQ(Model("f = \"a.stl\"; g = \"no.stl\"; import(f); import(file = f);"),
              (Links{LinkTo(u"variable f 1", u"a.stl")}));
    EXPECT_EQ(Model("module part(name = \"a.stl\", x) { import(name); } part(name=\"b.stl\", 3);"
                    "part(x=1, name = \"c.stl\");"),
              (Links{LinkTo(u"variable name 1", u"a.stl"), LinkTo(u"variable name 2", u"b.stl"),
                     LinkTo(u"variable name 3", u"c.stl")}));
    EXPECT_EQ(Model("f = \"a\" == x; f == \"b\"; import(f);"),
              (Links{LinkTo(u"import 1", u"import(f)")}));
}

TEST_F(OpenScadReader, ATextPassedByItsPlaceOrThroughOtherVariablesIsALink)
{
    EXPECT_EQ(
        Model("module part(name = \"a.stl\") { import(name); } part(\"b.stl\"); part();"),
        (Links{LinkTo(u"variable name 1", u"a.stl"), LinkTo(u"variable name passed 1", u"b.stl")}));
    EXPECT_EQ(Model("part(2, name = \"c.stl\"); module part(x, name) { import(name); }"
                    "part(1, \"b.stl\"); part(name = \"d.stl\", \"no\", \"e.stl\"); cube(\"no\");"),
              (Links{LinkTo(u"variable name 1", u"c.stl"), LinkTo(u"variable name 2", u"d.stl"),
                     LinkTo(u"variable name passed 1", u"b.stl"),
                     LinkTo(u"variable name passed 2", u"no"),
                     LinkTo(u"variable name passed 3", u"e.stl")}));
    EXPECT_EQ(Model("module outer(n) { inner(n); inner(name = n); f = g; import(f); }"
                    "module inner(name) { import(name); } outer(\"a.stl\"); g = \"b.stl\";"),
              (Links{LinkTo(u"variable g 1", u"b.stl"), LinkTo(u"variable n passed 1", u"a.stl")}));
    EXPECT_EQ(Model("module a(f) { import(f); } module b(x, g) { import(g); import(x); }"
                    "module a(x, f) {} a(\"1\", \"2\"); f = undef; b(undef, 3); b(g = true);"),
              (Links{LinkTo(u"variable f passed 1", u"1"), LinkTo(u"variable f passed 2", u"2")}));
}

TEST_F(OpenScadReader, ACallWhoseVariableCanBeSomethingElseIsShownBesideItsTexts)
{
    const Link known = LinkTo(u"variable f 1", u"a.stl");
    const Link shown = LinkTo(u"import 1", u"import(f)");
    const struct
    {
        const char* what;
        QByteArray text;
    } rows[] = {
        {"assigned elsewhere", "module m(i) { f = str(\"p\", i, \".stl\"); import(f); }"},
        {"a loop", "for (f = [\"b.stl\", \"c.stl\"]) import(f);"},
        {"let", "let (f = pick()) import(f);"},
        {"a definition for other files", "module m(f = \"\") { import(f); }"},
        {"passed by its place", "module m(f) { import(f); } m(str(1));"},
        {"passed by its name", "module m(f) { import(f); } m(f = str(1));"},
        {"passed as another variable", "module m(f) { import(f); } m(other);"},
        {"through other variables", "import(f); f = g; g = h; h = [\"b.stl\"][0];"},
        {"a function without a name", "x = function(f) f; import(f);"},
        {"a text that is cut", "import(f); f = \"" + QByteArray(5000, 'x') + "\";"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Model("f = \"a.stl\";" + row.text), (Links{known, shown})) << row.what;
    EXPECT_EQ(Model("$f = \"a.stl\"; import($f); anything($f = str(1));"),
              (Links{LinkTo(u"variable $f 1", u"a.stl"), LinkTo(u"import 1", u"import($f)")}));
    EXPECT_EQ(Model("f = \"a.stl\"; import(f); other(f = str(1)); cube([f = 1]);"), (Links{known}));
}

TEST_F(OpenScadReader, WhatOnlyRunningTheModelCanTellIsShownAsItStands)
{
    EXPECT_EQ(Model("import(str(\"../t/\", i, \".stl\")); import(names[0]);"
                    "surface(c ? \"a.dat\" : pick(\"C:\\\\x\"));"),
              (Links{LinkTo(u"import 1", u"import(str(\"..\u2215t\u2215\",i,\".stl\"))"),
                     LinkTo(u"import 2", u"import(names[0])"), LinkTo(u"surface 1", u"a.dat"),
                     LinkTo(u"surface 1 value 2",
                            u"surface(c?\"a.dat\"\u2236pick(\"C\u2236\u2216x\"))")}));
    const Links longOne = Model("import(str(" + QByteArray("\"ä\", ").repeated(1000) + "1));");
    ASSERT_EQ(longOne.size(), 1);
    EXPECT_TRUE(longOne[0].second.startsWith(u"import(str(\"ä\","_s));
    EXPECT_TRUE(longOne[0].second.endsWith(u"..."_s));
}

TEST_F(OpenScadReader, InstalledLibrariesAreNoFilesOfTheProject)
{
    tree.File(u"libs/gears/gear.scad"_s);
    const QByteArray text =
        "use <gears/gear.scad>\nuse <gears/none.scad>\ninclude <MCAD/boxes.scad>";
    EXPECT_EQ(Model(text), (Links{LinkTo(u"use 2", u"gears/none.scad")}));
    tree.File(u"p/gears/gear.scad"_s, "").File(u"p/MCAD/boxes.scad"_s, "");
    EXPECT_EQ(Model(text),
              (Links{LinkTo(u"use 1", u"gears/gear.scad"), LinkTo(u"use 2", u"gears/none.scad"),
                     LinkTo(u"include 1", u"MCAD/boxes.scad")}));
}

TEST_F(OpenScadReader, ANameThatIsAFolderIsNoLink)
{
    tree.Folder(u"p/parts"_s);
    EXPECT_EQ(Model("include <>use <parts>import(\"..\");import(\"parts/\");"), Links{});
}

TEST_F(OpenScadReader, LinksAreFoundAcrossTheEndsOfBlocks)
{
    const auto block = static_cast<qsizetype>(PluginKit::FileScanner::BlockSize);
    const QByteArray before = "use <a.scad>";
    for (qsizetype shift = 0; shift < 24; ++shift) {
        const QByteArray filler = "/*" + QByteArray(block - before.size() - 4 - shift, 'x') + "*/";
        EXPECT_EQ(Model(before + filler + "import( \"b\\\\c.stl\" );"),
                  (Links{LinkTo(u"use 1", u"a.scad"), LinkTo(u"import 1", u"b/c.stl")}))
            << shift;
    }
}

TEST_F(OpenScadReader, ReadingLeavesTheFileAlone)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    Model("use <b.scad>");
    tree.Touch(m_name, time);
    Read(m_name);
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{m_name, "use <b.scad>"}}));
    EXPECT_EQ(tree.Modified(m_name), time);
}

} // namespace Halvern::Test
