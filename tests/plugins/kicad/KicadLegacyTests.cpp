// SPDX-License-Identifier: Apache-2.0

// Projects of KiCad 5 and earlier: .pro, .sch and what they find by name.

#include "KicadFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using KicadLegacy = KicadFixture;

const QString Top = u"p/a b.sch"_s;
const QString Project = u"p/a b.pro"_s;

QByteArray LegacySheet(const QByteArray& id, const QByteArray& file)
{
    return "$Sheet\nS 6100 4400 2000 1450\n" + (id.isEmpty() ? id : "U " + id + '\n') +
           "F0 \"a name\" 60\nF1 " + file + " 60\nF2 \"VCC\" I L 100 200 60\n$EndSheet\n";
}

QByteArray Symbol(const QByteArray& id, const QByteArray& fields)
{
    return "$Comp\nL Device:R R1\nU 1 1 " + id + "\nP 1 2\nF 0 \"R1\" H 1 2 50  0000 C CNN\n" +
           "F 1 \"x.sch\" H 1 2 50  0000 C CNN\n" + fields + "\t1    1 2\n$EndComp\n";
}

QByteArray Legacy(const QByteArray& content, const QByteArray& libraries = {})
{
    return "EESchema Schematic File Version 4\n" + libraries +
           "EELAYER 29 0\nEELAYER END\n$Descr A4 11693 8268\nencoding utf-8\nSheet 1 3\n"
           "Title \"F1 \\\"x.sch\\\" 60\"\n$EndDescr\n" +
           content + "$EndSCHEMATC\n";
}

QByteArray LegacyProject(const QByteArray& folders, const QByteArray& libraries)
{
    return "update=05/07/2010 19:03:21\nversion=1\n[general]\nversion=1\n[eeschema]\nversion=1\n"
           "LibDir=" +
           folders + "\n[eeschema/libraries]\n" + libraries +
           "[pcbnew]\nversion=1\nPageLayoutDescrFile=\nLastNetListRead=a.net\n"
           "[pcbnew/libraries]\nLibDir=\nLibName1=own\n";
}

Links Companions(const QStringList& names)
{
    Links links;
    for (const QString& name : names)
        links.append({u"companion:"_s + name.section(u'=', 0, 0), name.section(u'=', 1)});
    return links;
}

} // namespace

TEST_F(KicadLegacy, ASchematicNamesItsSheets)
{
    tree.File(Top, Legacy(LegacySheet("5A1", "\"x.sch\"") + LegacySheet("5A2", "\"x.sch\"") +
                          LegacySheet({}, "\"sub\\\\deep/y.sch\"") +
                          LegacySheet("5A3", "\"Gr\xF6\xDF"
                                             "e \\\"q\\\".sch\"") +
                          LegacySheet("5A4", "\"\"") + Symbol("5A5", {})));
    EXPECT_EQ(Read(Top), (Links{{u"5A1 file"_s, u"x.sch"_s},
                                {u"5A2 file"_s, u"x.sch"_s},
                                {u"file"_s, u"sub/deep/y.sch"_s},
                                {u"5A3 file"_s, u"Größe \"q\".sch"_s}}));
}

TEST_F(KicadLegacy, ASchematicNamesDataSheetsAndFilesOfTheSimulator)
{
    tree.File(Project, {});
    const QString sub = u"p/sub/b.sch"_s;
    tree.File(sub,
              Legacy(Symbol("5B1", "F 3 \"${KIPRJMOD}/doc/c.pdf\" H 1 2 50  0001 C CNN\n"
                                   "F 4 \"${KIPRJMOD}/doc/d.pdf\" H 1 2 50  0001 C CNN \"More\"\n"
                                   "F 5 \"m/x.lib\" H 1 2 50  0001 C CNN \"Spice_Lib_File\"\n") +
                     Symbol("5B2", "F 3 \"~\" H 1 2 50  0001 C CNN\n"
                                   "F 4 \"\" H 1 2 50  0001 C CNN \"Spice_Lib_File\"\n"
                                   "F 5 \"open\n") +
                     "Text Notes 1 2 0    60   ~ 0\n.tran 1u\\n.include \"m/y.lib\"\\nmore\n"
                     "Text Label 1 2 0    60   ~ 0\n$Sheet\n"
                     "Text Notes 1 2 0    60   ~ 0\n$EndSCHEMATC\n"));
    EXPECT_EQ(Read(sub), (Links{{u"5B1 datasheet"_s, u"../doc/c.pdf"_s},
                                {u"5B1 simulation"_s, u"../m/x.lib"_s},
                                {u"include"_s, u"../m/y.lib"_s}}));
}

TEST_F(KicadLegacy, ASchematicNamesLibrariesThatAreThereWithTheirDescriptions)
{
    tree.File(Top, Legacy({}, "LIBS:power\nLIBS:lib/own\nLIBS:../above,a b-cache,lib/own\n"));
    for (const char* const name : {"p/lib/own.lib", "p/lib/own.dcm", "above.lib"})
        tree.File(QLatin1String(name));
    EXPECT_EQ(Read(Top), (Links{{u"set:library 2#library"_s, u"lib/own.lib"_s},
                                {u"set:library 2#dcm"_s, u"lib/own.dcm"_s},
                                {u"set:library 3#library"_s, u"../above.lib"_s},
                                {u"set:library 5#library"_s, u"lib/own.lib"_s},
                                {u"set:library 5#dcm"_s, u"lib/own.dcm"_s}}));
}

TEST_F(KicadLegacy, RewritingChangesTheLinksThatAreAskedForAndNoOtherByte)
{
    const QByteArray text =
        Legacy(LegacySheet("5A1", "\"x.sch\"") + LegacySheet("5A2", "\"x.sch\"") +
                   Symbol("5B1", "F 3 \"${KIPRJMOD}/c.pdf\" H 1 2 50  0001 C CNN\n"
                                 "F 4 \"x.lib\" H 1 2 50  0001 C CNN \"Spice_Lib_File\"\n") +
                   "Text Notes 1 2 0    60   ~ 0\n.inc y.lib\\n\\n.inc z.lib\n",
               "LIBS:power,../above,own\n")
            .replace("\n", "\r\n");
    QByteArray expected = text;
    expected.replace("U 5A2\r\nF0 \"a name\" 60\r\nF1 \"x.sch\"",
                     "U 5A2\r\nF0 \"a name\" 60\r\nF1 \"sub/ü \\\"q\\\".sch\"");
    expected.replace("${KIPRJMOD}/c.pdf", "${KIPRJMOD}/doc/c.pdf");
    expected.replace("\"x.lib\"", "\"m/x.lib\"");
    expected.replace("z.lib", "\"m/z.lib\"");
    expected.replace("../above", "above");
    EXPECT_EQ(Rewritten(Top, text,
                        {{u"5A1 file"_s, u"x.sch"_s},
                         {u"5A2 file"_s, u"sub/ü \"q\".sch"_s},
                         {u"5B1 datasheet"_s, u"doc/c.pdf"_s},
                         {u"5B1 simulation"_s, u"m/x.lib"_s},
                         {u"include 2"_s, u"m/z.lib"_s},
                         {u"set:library 2#library"_s, u"above.lib"_s},
                         {u"set:library 2#dcm"_s, u"above.dcm"_s}}),
              expected);
}

TEST_F(KicadLegacy, ALibraryIsNotSeparatedFromItsDescriptionsAndKeepsItsExtension)
{
    const QByteArray text = Legacy({}, "LIBS:own\n");
    tree.File(u"p/own.lib"_s).File(u"p/own.dcm"_s);
    EXPECT_EQ(RewriteFailure(Top, text,
                             {{u"set:library#library"_s, u"x/own.lib"_s},
                              {u"set:library#dcm"_s, u"y/own.dcm"_s}}),
              u"KiCad finds y/own.dcm by the name of x/own.lib"_s);
    tree.Remove(u"p/own.dcm"_s);
    EXPECT_EQ(RewriteFailure(Top, text, {{u"set:library#library"_s, u"own.txt"_s}}),
              u"a library of symbols has to be named *.lib: own.txt"_s);
    EXPECT_EQ(RewriteFailure(Top, text, {{u"set:library 2#dcm"_s, u"own.dcm"_s}}),
              u"the file has no link set:library 2#dcm"_s);
}

TEST_F(KicadLegacy, AProjectNamesItsLibrariesAndWhatGoesByItsName)
{
    tree.File(Project,
              LegacyProject("../lib;/nowhere", "LibName1=power\nLibName2=own\nLibName3=far\n"
                                               "LibName4=sub\\\\deep\nLibName5=${KIPRJMOD}/k\n"));
    for (const char* const name :
         {"p/own.lib", "p/own.dcm", "lib/own.lib", "lib/far.lib", "p/sub/deep.lib", "p/k.lib",
          "p/a b.sch", "p/a b.kicad_pcb", "p/a b.brd", "p/a b-cache.lib", "p/c.lib"})
        tree.File(QLatin1String(name));
    tree.File(u"p/sym-lib-table"_s,
              "(sym_lib_table (lib (name \"c\")(type Legacy)(uri \"$(KIPRJMOD)/c.lib\")))");
    Links expected{{u"set:LibName2#library"_s, u"own.lib"_s},
                   {u"set:LibName2#dcm"_s, u"own.dcm"_s},
                   {u"set:LibName3#library"_s, u"../lib/far.lib"_s},
                   {u"set:LibName4#library"_s, u"sub/deep.lib"_s}};
    expected += Companions({u"sch=a b.sch"_s, u"kicad_pcb=a b.kicad_pcb"_s, u"brd=a b.brd"_s,
                            u"sym-lib-table=sym-lib-table"_s, u"sym-lib-table/c=c.lib"_s,
                            u"cache=a b-cache.lib"_s});
    expected.insert(4, {u"set:LibName5#library"_s, u"k.lib"_s});
    EXPECT_EQ(Read(Project), expected);
}

TEST_F(KicadLegacy, AProjectIsRewrittenWhereItsLibrariesAreNotYet)
{
    const QByteArray text =
        LegacyProject("../lib", "LibName1=power\nLibName2=far\nLibName3=${KIPRJMOD}/k\n")
            .replace("PageLayoutDescrFile=", "PageLayoutDescrFile=w\\\\x.kicad_wks");
    QByteArray expected = text;
    expected.replace("=far", "=lib/far");
    expected.replace("${KIPRJMOD}/k", "${KIPRJMOD}/lib/k");
    expected.replace("w\\\\x.kicad_wks", "../x.kicad_wks");
    EXPECT_EQ(Rewritten(Project, text,
                        {{u"set:LibName2#library"_s, u"lib/far.lib"_s},
                         {u"set:LibName2#dcm"_s, u"lib/far.dcm"_s},
                         {u"set:LibName3#library"_s, u"lib/k.lib"_s},
                         {u"pcbnew sheet"_s, u"../x.kicad_wks"_s}}),
              expected);
}

TEST_F(KicadLegacy, ASchematicNamesItsProjectOrWhatThatWouldName)
{
    const QString board = u"p/a b.kicad_pcb"_s;
    tree.File(Top, Legacy({})).File(u"p/a b-cache.lib"_s);
    tree.File(board, Board({})).File(u"p/fp-lib-table"_s, "(fp_lib_table)");
    const Links without = Companions(
        {u"kicad_pcb=a b.kicad_pcb"_s, u"cache=a b-cache.lib"_s, u"fp-lib-table=fp-lib-table"_s});
    EXPECT_EQ(Read(Top), without);
    EXPECT_EQ(Read(board), Companions({u"sch=a b.sch"_s, u"fp-lib-table=fp-lib-table"_s}));
    EXPECT_TRUE(Repath(Top, without));
    tree.Remove(u"p/a b-cache.lib"_s);
    EXPECT_TRUE(Repath(Top, without));
    tree.File(Project, {});
    EXPECT_EQ(Read(Top), Companions({u"pro=a b.pro"_s}));
    EXPECT_EQ(Read(board), Companions({u"pro=a b.pro"_s}));
}

TEST_F(KicadLegacy, FilesOfOtherProgramsHaveNoLinks)
{
    for (const QByteArray& content :
         {QByteArray("v 20130925 2\nC 40000 40000 0 0 0 title-B.sym\n"), QByteArray(),
          QByteArray("<?xml version=\"1.0\"?><eagle/>"), QByteArray("EESchema\0Schematic", 18)}) {
        tree.File(Top, content);
        EXPECT_EQ(Read(Top), Links()) << content.left(20).toStdString();
    }
    tree.Remove(Top);
    for (const QByteArray& content :
         {QByteArray("TEMPLATE = app\nSOURCES = a.cpp\nLIBS += -lm\n"), QByteArray(),
          QByteArray("[eeschema\0/libraries]\nLibName1=x", 31)}) {
        tree.File(Project, content);
        EXPECT_EQ(Read(Project), Links()) << content.left(20).toStdString();
    }
}

TEST_F(KicadLegacy, EachDamagedSchematicFailsWithItsReason)
{
    const QByteArray longName = '"' + QByteArray(5000, 'x') + '"';
    EXPECT_EQ(ReadFailure(Top, Legacy(LegacySheet("5A1", longName))),
              u"a file name of more than 4096 bytes (byte 192)"_s);
    EXPECT_EQ(ReadFailure(Top, Legacy(LegacySheet("5A1", '"' + QByteArray(80'000, 'x') + '"'))),
              u"a file name of more than 4096 bytes (byte 189)"_s);
    EXPECT_EQ(ReadFailure(Top, Legacy(QByteArray("x\0y\n", 4))), u"a NUL byte (byte 140)"_s);
}

TEST_F(KicadLegacy, ACutSchematicFails)
{
    const QByteArray whole = Legacy(LegacySheet("5A1", "\"x.sch\"") + Symbol("5A5", {})).trimmed();
    for (qsizetype size = 31; size < whole.size(); ++size)
        EXPECT_EQ(ReadFailure(Top, whole.left(size)).section(u" ("_s, 0, 0),
                  u"the schematic has no end"_s)
            << size;
    tree.File(Top, whole);
    EXPECT_TRUE(TryRead(Top));
}

TEST_F(KicadLegacy, ChangedBytesNeverDoHarm)
{
    const QByteArray whole =
        Legacy(LegacySheet("5A1", "\"x.sch\"") + "Text Notes 1 2 0 60 ~ 0\n.inc \"y.lib\"\\n\n");
    for (const char byte : {'"', '\\', '\0', '\n', '\xFF', '$'})
        for (qsizetype at = 0; at < whole.size(); ++at) {
            QByteArray changed = whole;
            changed[at] = byte;
            tree.File(Top, changed);
            TryRead(Top);
            ASSERT_EQ(tree.Read(Top), changed);
        }
}

} // namespace Halvern::Test
