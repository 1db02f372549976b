// SPDX-License-Identifier: Apache-2.0

#include "KicadFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class KicadReader : public KicadFixture
{
protected:
    QStringList PathsIn(const QString& file, const QByteArray& content)
    {
        tree.File(file, content);
        return Paths(file);
    }
};

const QString Top = u"p/a.kicad_sch"_s;
const QString BoardFile = u"p/a.kicad_pcb"_s;

struct TextRow
{
    const char* name;
    const char* stored;
    const char* path;
};

/// As a model of a board stores them; a null path is no link.
const TextRow Models[] = {
    {"relative", "\"3d/a.step\"", "3d/a.step"},
    {"above", "\"../lib/a.step\"", "../lib/a.step"},
    {"absolute", "\"/usr/lib/a.step\"", "/usr/lib/a.step"},
    {"on a drive", "\"D:/lib/a.step\"", "D:/lib/a.step"},
    {"backslashes", "\"3d\\\\sub\\\\a.step\"", "3d/sub/a.step"},
    {"the project's folder", "\"${KIPRJMOD}/3d/a.step\"", "3d/a.step"},
    {"the project's folder in parentheses", "\"$(KIPRJMOD)/3d/a.step\"", "3d/a.step"},
    {"the project's folder with a backslash", "\"${KIPRJMOD}\\\\3d\\\\a.step\"", "3d/a.step"},
    {"above the project's folder", "\"${KIPRJMOD}/../3d/a.step\"", "../3d/a.step"},
    {"without quotation marks", "3d/a.step", "3d/a.step"},
    {"quotation marks in the name", "\"3d/a \\\"q\\\".step\"", "3d/a \"q\".step"},
    {"umlauts and CJK", "\"3d/Größe 木.step\"", "3d/Größe 木.step"},
    {"bytes as octal numbers", "\"3d/Gr\\303\\266e.step\"", "3d/Gröe.step"},
    {"bytes as hexadecimal numbers", "\"3d/Gr\\xC3\\xB6e.step\"", "3d/Gröe.step"},
    {"parentheses in the name", "\"3d/a (2).step\"", "3d/a (2).step"},
    {"an installed library", "\"${KICAD6_3DMODEL_DIR}/R.3dshapes/a.step\"", nullptr},
    {"an older installed library", "\"$(KISYS3DMOD)/a.step\"", nullptr},
    {"a variable within", "\"3d/${SIZE}.step\"", nullptr},
    {"a variable after the project's folder", "\"${KIPRJMOD}/${SIZE}.step\"", nullptr},
    {"an alias", "\":models:a.step\"", nullptr},
    {"empty", "\"\"", nullptr},
    {"a variable that begins alike", "\"${KIPRJMODX}/a.step\"", nullptr},
};

} // namespace

TEST_F(KicadReader, UnderstandsEveryFormOfAModelsPath)
{
    for (const TextRow& row : Models) {
        const QStringList expected =
            row.path ? QStringList{QString::fromUtf8(row.path)} : QStringList();
        EXPECT_EQ(PathsIn(BoardFile, Board(Footprint("1-1", Model(row.stored)))), expected)
            << row.name;
    }
}

TEST_F(KicadReader, TheProjectOfABoardIsInItsOwnFolderWhateverIsAbove)
{
    tree.File(u"p/a.kicad_pro"_s, "{}");
    EXPECT_EQ(PathsIn(u"p/panel/b.kicad_pcb"_s,
                      Board(Footprint("1-1", Model("\"${KIPRJMOD}/3d/a.step\"") +
                                                 Model("\"3d/b.step\"")))),
              (QStringList{u"3d/a.step"_s, u"3d/b.step"_s}));
}

TEST_F(KicadReader, SheetsAreRelativeToTheirOwnFileAndVariablesAreLetters)
{
    EXPECT_EQ(
        PathsIn(u"p/sub/b.kicad_sch"_s,
                Schematic(Sheet("1-1", "\"tief/c.kicad_sch\"") +
                          Sheet("2-2", "\"../d.kicad_sch\"") +
                          Sheet("3-3", "\"${KIPRJMOD}/e.kicad_sch\"") + Sheet("4-4", "\"\""))),
        (QStringList{u"tief/c.kicad_sch"_s, u"../d.kicad_sch"_s, u"${KIPRJMOD}/e.kicad_sch"_s}));
}

TEST_F(KicadReader, IdsAreTheIdentifiersThatKicadGave)
{
    tree.File(Top, Schematic(Sheet("aa-1", "\"x.kicad_sch\"") + Sheet("bb-2", "\"x.kicad_sch\"")));
    EXPECT_EQ(Read(Top),
              (Links{{u"aa-1 file"_s, u"x.kicad_sch"_s}, {u"bb-2 file"_s, u"x.kicad_sch"_s}}));
    tree.File(BoardFile, Board(Footprint("cc-3", Model("\"y.step\"") + Model("\"y.step\"")) +
                               Footprint("dd-4", Model("\"y.step\""))));
    tree.Remove(Top);
    EXPECT_EQ(Read(BoardFile), (Links{{u"cc-3 model"_s, u"y.step"_s},
                                      {u"cc-3 model 2"_s, u"y.step"_s},
                                      {u"dd-4 model"_s, u"y.step"_s}}));
}

TEST_F(KicadReader, IdsDifferWhereIdentifiersAreMissingOrRepeated)
{
    tree.File(Top,
              Schematic("(sheet (property \"Sheet file\" \"a\"))(sheet (property \"Sheet file\" "
                        "\"b\"))" +
                        Sheet("1-1", "c") + Sheet("1-1", "d")));
    EXPECT_EQ(Read(Top), (Links{{u"file"_s, u"a"_s},
                                {u"file 2"_s, u"b"_s},
                                {u"1-1 file"_s, u"c"_s},
                                {u"1-1 file 2"_s, u"d"_s}}));
}

TEST_F(KicadReader, DataSheetsInTheProjectAreLinksAndOthersAreNot)
{
    const auto symbol = [](const QByteArray& id, const QByteArray& datasheet) {
        return "(symbol (lib_id \"x:y\") (uuid " + id + ") (property \"Datasheet\" " + datasheet +
               " (id 3)))\n";
    };
    tree.File(u"p/project.kicad_pro"_s, "{}");
    const QByteArray inLibrary =
        "(lib_symbols (symbol \"x:y\" (property \"Datasheet\" \"${KIPRJMOD}/doc/y.pdf\")))\n";
    tree.File(u"p/sub/b.kicad_sch"_s,
              Schematic(inLibrary + symbol("1-1", "\"${KIPRJMOD}/doc/c.pdf\"") +
                        symbol("2-2", "\"~\"") + symbol("3-3", "\"https://example.org/c.pdf\"") +
                        symbol("4-4", "\"doc/c.pdf\"") +
                        symbol("5-5", '"' + QByteArray(6000, 'x') + '"')));
    EXPECT_EQ(Read(u"p/sub/b.kicad_sch"_s), (Links{{u"x:y datasheet"_s, u"../doc/y.pdf"_s},
                                                   {u"1-1 datasheet"_s, u"../doc/c.pdf"_s}}));
}

TEST_F(KicadReader, WhatOnlyLooksLikeALinkIsNone)
{
    EXPECT_EQ(PathsIn(Top, Schematic("(text \"(sheet (property \\\"Sheet file\\\" \\\"x\\\"))\")\n"
                                     "# (sheet (property \"Sheet file\" \"y\"))\n"
                                     "  # (sheet (property \"Sheet file\" \"y\"))\n"
                                     "(symbol (property \"Sheet file\" \"z\"))\n"
                                     "(model \"m\")(property \"Sheet file\" \"n\")\n"
                                     "(image (at 1 1) (data iVBORw0KGgo= AAAA))")),
              QStringList());
    tree.Remove(Top);
    EXPECT_EQ(PathsIn(BoardFile, Board("(gr_text \"${KIPRJMOD}/x\")(model \"m\")")), QStringList());
}

TEST_F(KicadReader, ReadsOlderBoardsAndNewerSheets)
{
    EXPECT_EQ(PathsIn(BoardFile,
                      "(kicad_pcb (version 20171130) (host pcbnew 5.1)\n(module R (tstamp "
                      "5A) (model 3d/a.wrl (at (xyz 0 0 0)))))"),
              QStringList{u"3d/a.wrl"_s});
    tree.Remove(BoardFile);
    EXPECT_EQ(PathsIn(Top, Schematic("(sheet (property \"Sheetfile\" \"b.kicad_sch\"))")),
              QStringList{u"b.kicad_sch"_s});
}

TEST_F(KicadReader, ALongFileIsReadBlockByBlock)
{
    QByteArray content;
    QStringList expected;
    for (int i = 0; i < 5000; ++i) {
        const QByteArray number = QByteArray::number(i);
        content += Sheet("id-" + number, "\"" + QByteArray(i % 150, 'x') + number + "\"");
        expected.append(QString(i % 150, u'x') + QString::number(i));
    }
    EXPECT_EQ(PathsIn(Top, Schematic(content)), expected);
}

TEST_F(KicadReader, ReadingChangesNothing)
{
    tree.File(BoardFile, Board(Footprint("1-1", Model("\"3d/a.wrl\""))));
    tree.File(u"p/3d/a.step"_s);
    const FileTree::Snapshot before = tree.Contents();
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'600'000'000);
    tree.Touch(BoardFile, time);
    Read(BoardFile);
    EXPECT_EQ(tree.Contents(), before);
    EXPECT_EQ(tree.Modified(BoardFile), time);
}

} // namespace Halvern::Test
