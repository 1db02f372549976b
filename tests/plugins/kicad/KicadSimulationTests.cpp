// SPDX-License-Identifier: Apache-2.0

// Files of models for the simulator: those that schematics name, and those that include others.

#include "KicadFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using KicadSimulation = KicadFixture;

const QString Top = u"p/a.kicad_sch"_s;
const QString Models = u"p/models/a.lib"_s;

QByteArray Symbol(const QByteArray& id, const QByteArray& field, const QByteArray& value)
{
    return "(symbol (lib_id \"x:y\") (uuid " + id + ") (property \"" + field + "\" \"" + value +
           "\" (at 0 0 0)))\n";
}

struct Row
{
    const char* name;
    const char* line;
    const char* path;
    /// The line after the path became "n m/ö.lib".
    const char* rewritten;
};

const Row Lines[] = {
    {"quoted", ".include \"x.lib\"", "x.lib", ".include \"n m/ö.lib\""},
    {"in apostrophes", ".include 'x y.lib' ", "x y.lib", ".include \"n m/ö.lib\" "},
    {"bare", ".include x.lib", "x.lib", ".include \"n m/ö.lib\""},
    {"bare with blanks within and behind", ".INCLUDE x y.lib \t", "x y.lib",
     ".INCLUDE \"n m/ö.lib\" \t"},
    {"short", "\t.inc\t../x.lib ; why", "../x.lib", "\t.inc\t\"n m/ö.lib\" ; why"},
    {"backslashes", ".include sub\\x.lib", "sub/x.lib", ".include \"n m/ö.lib\""},
    {"absolute", ".include /x/y.lib", "/x/y.lib", ".include \"n m/ö.lib\""},
    {"a section of a library", ".lib x.lib slow", "x.lib", ".lib \"n m/ö.lib\" slow"},
    {"a section of a quoted library", ".LIB 'x y.lib' slow", "x y.lib", ".LIB \"n m/ö.lib\" slow"},
    {"a section that begins", ".lib slow", nullptr, nullptr},
    {"another word", ".includes", nullptr, nullptr},
    {"a library word", ".library x.lib y", nullptr, nullptr},
    {"without a path", ".include ", nullptr, nullptr},
    {"an empty path", ".include \"\"", nullptr, nullptr},
    {"an open quotation", ".include \"x.lib", nullptr, nullptr},
    {"a comment", "* .include x.lib", nullptr, nullptr},
    {"a variable", ".include $MODELS/x.lib", nullptr, nullptr},
    {"the home folder", ".include ~/x.lib", nullptr, nullptr},
};

QByteArray Subcircuit(const char* line)
{
    return "* a model\r\n.subckt a 1 2\r\n" + QByteArray(line) + "\r\n.ends\r\n\xFC\n";
}

} // namespace

TEST_F(KicadSimulation, TheFileOfModelsOfASymbolIsRelativeToTheProject)
{
    const QString sub = u"p/sub/b.kicad_sch"_s;
    tree.File(u"p/a.kicad_pro"_s, "{}");
    tree.File(sub, Schematic(Symbol("1-1", "Sim.Library", "models/x.lib") +
                             Symbol("2-2", "Spice_Lib_File", "${KIPRJMOD}/y.mod") +
                             Symbol("3-3", "Sim.Library", "${MODELS}/z.lib") +
                             Symbol("4-4", "Sim.Library", "") +
                             Symbol("5-5", "Sim.Name", "models/x.lib")));
    EXPECT_EQ(Read(sub), (Links{{u"1-1 simulation"_s, u"../models/x.lib"_s},
                                {u"2-2 simulation"_s, u"../y.mod"_s}}));
    QByteArray expected = tree.Read(sub);
    expected.replace("models/x.lib\" (at 0 0 0)))\n(symbol (lib_id \"x:y\") (uuid 2-2)",
                     "lib/x.lib\" (at 0 0 0)))\n(symbol (lib_id \"x:y\") (uuid 2-2)");
    expected.replace("${KIPRJMOD}/y.mod", "${KIPRJMOD}/sub/y.mod");
    EXPECT_TRUE(
        Repath(sub, {{u"1-1 simulation"_s, u"../lib/x.lib"_s}, {u"2-2 simulation"_s, u"y.mod"_s}}));
    EXPECT_EQ(tree.Read(sub), expected);
}

TEST_F(KicadSimulation, ATextOfASchematicIncludesFiles)
{
    const QByteArray text =
        Schematic("(text \".tran 1u 1m\\n.include \\\"mod\\\\ x.lib\\\"\\n.inc ${KIPRJMOD}/y.lib\" "
                  "(at 1 1 0) (uuid 1-1))\n"
                  "(text_box \".lib z.lib\" (uuid 2-2))\n"
                  "(text \".lib tt\" (uuid 3-3))\n"
                  "(text \"say .include x\" (uuid 4-4))\n"
                  "(symbol (text \".include no\"))");
    tree.File(u"p/z.lib"_s);
    tree.File(Top, text);
    EXPECT_EQ(Read(Top), (Links{{u"1-1 include"_s, u"mod/ x.lib"_s},
                                {u"1-1 include 2"_s, u"y.lib"_s},
                                {u"2-2 include"_s, u"z.lib"_s}}));
    QByteArray expected = text;
    expected.replace("\\\"mod\\\\ x.lib\\\"", "\\\"lib/x \\\\ y.lib\\\"");
    expected.replace("${KIPRJMOD}/y.lib", "\\\"${KIPRJMOD}/../y.lib\\\"");
    expected.replace("z.lib", "\\\"v/z.lib\\\"");
    EXPECT_EQ(Rewritten(Top, text,
                        {{u"2-2 include"_s, u"v/z.lib"_s},
                         {u"1-1 include"_s, u"lib/x \\ y.lib"_s},
                         {u"1-1 include 2"_s, u"../y.lib"_s}}),
              expected);
}

TEST_F(KicadSimulation, AnEscapeBeforeADirectiveDoesNotShiftIt)
{
    const QByteArray text =
        Schematic("(text \"\\303\\266\\x41 \\\"q\\\"\\r\\n.inc \\x78.lib\\n\")");
    tree.File(Top, text);
    EXPECT_EQ(Read(Top), (Links{{u"include"_s, u"x.lib"_s}}));
    QByteArray expected = text;
    expected.replace("\\x78.lib", "\\\"y.lib\\\"");
    EXPECT_EQ(Rewritten(Top, text, {{u"include"_s, u"y.lib"_s}}), expected);
}

TEST_F(KicadSimulation, AFileIncludesOthersRelativeToItself)
{
    for (const Row& row : Lines) {
        const QByteArray content = Subcircuit(row.line);
        tree.File(Models, content);
        const QString path = QString::fromUtf8(row.path ? row.path : "");
        EXPECT_EQ(Read(Models), row.path ? (Links{{u"include"_s, path}}) : Links()) << row.name;
        if (!row.path)
            continue;
        EXPECT_EQ(Rewritten(Models, content, {{u"include"_s, u"n m/ö.lib"_s}}),
                  Subcircuit(row.rewritten))
            << row.name;
    }
}

TEST_F(KicadSimulation, ALibraryWithoutASectionIsALinkWhereThereIsAFile)
{
    tree.File(Models, ".lib slow\n.lib part.lib\n");
    tree.File(u"p/models/part.lib"_s);
    EXPECT_EQ(Read(Models), (Links{{u"include 2"_s, u"part.lib"_s}}));
    EXPECT_EQ(Rewritten(Models, ".lib slow\n.lib gone.lib\n", {{u"include 2"_s, u"../a.lib"_s}}),
              ".lib slow\n.lib \"../a.lib\"\n");
    EXPECT_EQ(Read(Models), (Links{{u"include 2"_s, u"../a.lib"_s}}));
}

TEST_F(KicadSimulation, WhatIsNoTextOfTheSimulatorIncludesNothing)
{
    for (const QByteArray& content :
         {QByteArray(".include x.lib\n\0", 16), QByteArray("EESchema-LIBRARY\n.include x.lib\n"),
          QByteArray("!<arch>\n/\0\0\n.include x\n", 23), QByteArray(), QByteArray(".include"),
          ".include " + QByteArray(5000, 'x'), ".include " + QByteArray(100'000, 'x')}) {
        tree.File(Models, content);
        EXPECT_EQ(Read(Models), Links()) << content.left(20).toStdString();
    }
}

TEST_F(KicadSimulation, APathThatCannotBeWrittenLeavesTheFileAsItIs)
{
    EXPECT_EQ(RewriteFailure(Models, ".inc x", {{u"include"_s, u"a\"'b"_s}}),
              u"the simulator cannot read both kinds of quotation marks in one path: a\"'b"_s);
    for (const QString& path : {u"a$b.lib"_s, u"~a.lib"_s})
        EXPECT_EQ(RewriteFailure(Models, ".inc x", {{u"include"_s, path}}),
                  u"the simulator would look elsewhere for "_s + path);
    EXPECT_EQ(RewriteFailure(Models, ".inc x", {{u"include"_s, u"a\nb"_s}}),
              u"a path in a line of text cannot hold a line end: a\nb"_s);
    EXPECT_EQ(RewriteFailure(Models, ".inc x", {{u"include 2"_s, u"a"_s}}),
              u"the file has no link include 2"_s);
    EXPECT_EQ(Rewritten(Models, ".inc x", {{u"include"_s, u"a\"b"_s}}), ".inc 'a\"b'");
}

TEST_F(KicadSimulation, AFileOfManyMegabytesIsReadLineByLine)
{
    QByteArray content;
    for (int i = 0; i < 300'000; ++i)
        content += "+ " + QByteArray::number(i) + " 1e-3 2e-3 3e-3 4e-3\n";
    tree.File(Models, content + ".include \"x.lib\"\n" + content);
    EXPECT_EQ(Read(Models), (Links{{u"include"_s, u"x.lib"_s}}));
}

} // namespace Halvern::Test
