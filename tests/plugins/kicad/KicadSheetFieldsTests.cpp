// SPDX-License-Identifier: Apache-2.0

// Which field of a sheet names its file, in files of all versions that have sheets in lists.

#include "KicadFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using KicadSheetFields = KicadFixture;

const QString Top = u"p/a.kicad_sch"_s;

struct Row
{
    const char* name;
    const char* version;
    const char* properties;
    const char* path;
};

const Row Rows[] = {
    {"KiCad 6 in French", "20211123",
     "(property \"Nom feuille\" \"in_out\" (id 0) (at 1 2 0))"
     "(property \"Fichier de feuille\" \"in_out.kicad_sch\" (id 1) (at 1 2 0))",
     "in_out.kicad_sch"},
    {"KiCad 6 in Japanese, the file first", "20211123",
     "(property \"シートファイル\" \"b.kicad_sch\" (id 1))(property \"シート名\" \"b\" (id 0))",
     "b.kicad_sch"},
    {"a field of the user after them", "20211123",
     "(property \"Blattname\" \"b\" (id 0))(property \"Blattdatei\" \"b.kicad_sch\" (id 1))"
     "(property \"Sheet file\" \"note\" (id 2))",
     "b.kicad_sch"},
    {"a number that was given again to a field of the user", "20211123",
     "(property \"Blattname\" \"b\" (id 0))(property \"Blattdatei\" \"b.kicad_sch\" (id 1))"
     "(property \"Note\" \"note\" (id 1))",
     "b.kicad_sch"},
    {"a version with wrong numbers", "20200310",
     "(property \"Sheet file\" \"b\" (id 1))(property \"Sheet name\" \"b.kicad_sch\" (id 2))",
     "b.kicad_sch"},
    {"numbers without the file's, by name", "20211123",
     "(property \"Sheet file\" \"b.kicad_sch\" (id 7))(property \"Sheet name\" \"b\" (id 0))",
     "b.kicad_sch"},
    {"KiCad 7", "20230121",
     "(property \"Sheetname\" \"b\" (at 1 2 0))(property \"Sheetfile\" \"b.kicad_sch\" (at 1 2 0))",
     "b.kicad_sch"},
    {"KiCad 9, a field of the user first", "20250114",
     "(property \"Note\" \"n\")(property \"Other\" \"o\")(property \"Sheetname\" \"b\")"
     "(property \"Sheetfile\" \"b.kicad_sch\")",
     "b.kicad_sch"},
    {"without numbers in another language", "20230121",
     "(property \"Nombre\" \"b\")(property \"Archivo\" \"b.kicad_sch\")(property \"Nota\" \"n\")",
     "b.kicad_sch"},
    {"a name alone", "20230121", "(property \"Sheetname\" \"b\")", nullptr},
    {"nothing", "20230121", "", nullptr},
    {"a property without a value", "20211123", "(property \"Sheet file\")(property)", nullptr},
    {"an empty file", "20211123", "(property \"n\" \"b\" (id 0))(property \"f\" \"\" (id 1))",
     nullptr},
};

QByteArray Content(const Row& row)
{
    return "(kicad_sch (version " + QByteArray(row.version) + ")\n(sheet (at 1 1) (uuid 1-1)\n" +
           row.properties + "(pin \"x\" input (uuid 9-9))))";
}

} // namespace

TEST_F(KicadSheetFields, TheFileIsToldByItsNumberElseItsNameElseItsPlace)
{
    for (const Row& row : Rows) {
        tree.File(Top, Content(row));
        const Links expected =
            row.path ? Links{{u"1-1 file"_s, QString::fromUtf8(row.path)}} : Links();
        EXPECT_EQ(Read(Top), expected) << row.name;
    }
}

TEST_F(KicadSheetFields, TheFieldThatIsReadIsTheOneThatIsRewritten)
{
    for (const Row& row : Rows) {
        if (!row.path)
            continue;
        QByteArray expected = Content(row);
        expected.replace(QByteArray("\"") + row.path + '"', "\"sub/ü.kicad_sch\"");
        EXPECT_EQ(Rewritten(Top, Content(row), {{u"1-1 file"_s, u"sub/ü.kicad_sch"_s}}), expected)
            << row.name;
    }
}

TEST_F(KicadSheetFields, ANameThatIsTooLongMattersOnlyWhereItIsTheFile)
{
    const QByteArray longText(5000, 'x');
    tree.File(Top, Schematic("(sheet (property \"n\" \"" + longText +
                             "\" (id 0))(property \"f\" \"b\" (id 1)))"));
    EXPECT_EQ(Read(Top), (Links{{u"file"_s, u"b"_s}}));
    EXPECT_EQ(ReadFailure(Top, Schematic("(sheet (property \"n\" \"b\" (id 0))(property \"f\" \"" +
                                         longText + "\" (id 1)))")),
              u"a file name of more than 4096 bytes (byte 97)"_s);
}

TEST_F(KicadSheetFields, ADataSheetIsToldByItsNumber)
{
    tree.File(Top, Schematic("(symbol (uuid 1-1) (property \"Fiche technique\" "
                             "\"${KIPRJMOD}/a.pdf\" (id 3)))"));
    EXPECT_EQ(Read(Top), (Links{{u"1-1 datasheet"_s, u"a.pdf"_s}}));
}

TEST_F(KicadSheetFields, WhatIsEmbeddedInTheFileIsNoLink)
{
    const QString board = u"p/b.kicad_pcb"_s;
    tree.File(board, Board(Footprint("1-1", Model("\"kicad-embed://a.step\""))));
    EXPECT_EQ(Read(board), Links());
    tree.File(Top, Schematic("(symbol (uuid 1-1) (property \"Sim.Library\" "
                             "\"kicad-embed://a.lib\"))"));
    tree.Remove(board);
    EXPECT_EQ(Read(Top), Links());
}

} // namespace Halvern::Test
