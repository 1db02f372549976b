// SPDX-License-Identifier: Apache-2.0

#include "KicadFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using KicadRewriter = KicadFixture;

const QString BoardFile = u"p/a.kicad_pcb"_s;
const QString Top = u"p/a.kicad_sch"_s;

struct Row
{
    const char* name;
    const char* stored;
    const char* path;
    const char* expected;
};

const Row Models[] = {
    {"relative stays relative", "\"3d/a.step\"", "lib/b.step", "\"lib/b.step\""},
    {"a variable stays", "\"${KIPRJMOD}/3d/a.step\"", "../lib/b.step",
     "\"${KIPRJMOD}/../lib/b.step\""},
    {"an older variable becomes today's", "\"$(KIPRJMOD)/3d/a.step\"", "lib/b.step",
     "\"${KIPRJMOD}/lib/b.step\""},
    {"absolute becomes the project's", "\"/x/a.step\"", "lib/b.step", "\"${KIPRJMOD}/lib/b.step\""},
    {"of a drive becomes the project's", "\"D:\\\\x\\\\a.step\"", "lib/b.step",
     "\"${KIPRJMOD}/lib/b.step\""},
    {"to an absolute path", "\"${KIPRJMOD}/3d/a.step\"", "/x/b.step", "\"/x/b.step\""},
    {"a word gets quotation marks", "3d/a.step", "b c.step", "\"b c.step\""},
    {"quotation marks", "\"a.step\"", "b \"c\".step", "\"b \\\"c\\\".step\""},
    {"umlauts and CJK", "\"a.step\"", "Größe 木 (2)/ß.step", "\"Größe 木 (2)/ß.step\""},
};

} // namespace

TEST_F(KicadRewriter, WritesAModelsPathInTheMannerOfTheOldOne)
{
    for (const Row& row : Models) {
        const QByteArray text =
            Board(Footprint("1-1", Model(row.stored)) + Footprint("2-2", Model("\"o.step\"")));
        tree.File(BoardFile, text);
        EXPECT_TRUE(Repath(BoardFile, {{u"1-1 model"_s, QString::fromUtf8(row.path)}}))
            << row.name << context.lines.join(u'\n').toStdString();
        QByteArray expected = text;
        expected.replace(Model(row.stored), Model(row.expected));
        EXPECT_EQ(tree.Read(BoardFile), expected) << row.name;
        const QString read = Read(BoardFile).first().second;
        EXPECT_EQ(read, QString::fromUtf8(row.path)) << row.name;
    }
}

TEST_F(KicadRewriter, RefusesANameThatKicadWouldTakeForAnother)
{
    const QByteArray text = Board(Footprint("1-1", Model("\"a.step\"")));
    for (const QString& path : {u"a${x}.step"_s, u"lib/$(x).step"_s})
        EXPECT_EQ(RewriteFailure(BoardFile, text, {{u"1-1 model"_s, path}}),
                  u"KiCad would not take %1 for the path %1"_s.arg(path));
}

TEST_F(KicadRewriter, ChangesTheLinksThatItIsGivenAndNoOtherByte)
{
    const QByteArray text =
        "\r\n# a comment\r\n" +
        Schematic(Sheet("1-1", "\"a.kicad_sch\"") + "\t(text \"a\\\\b \\\"c\\\"\")\r\n" +
                  Sheet("2-2", "\"a.kicad_sch\"") + Sheet("3-3", "\"c.kicad_sch\"")) +
        "\n;behind\n";
    tree.File(Top, text);
    EXPECT_TRUE(Repath(Top, {{u"3-3 file"_s, u"sub/c.kicad_sch"_s},
                             {u"1-1 file"_s, u"a.kicad_sch"_s},
                             {u"2-2 file"_s, u"x.kicad_sch"_s}}))
        << context.lines.join(u'\n').toStdString();
    QByteArray expected = text;
    expected.replace(text.lastIndexOf("\"a.kicad_sch\""), 13, "\"x.kicad_sch\"");
    expected.replace("\"c.kicad_sch\"", "\"sub/c.kicad_sch\"");
    EXPECT_EQ(tree.Read(Top), expected);
}

TEST_F(KicadRewriter, WhatIsAsItShouldBeIsNotWritten)
{
    tree.File(Top, Schematic(Sheet("1-1", "\"sub\\\\a.kicad_sch\"")));
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'600'000'000);
    tree.Touch(Top, time);
    EXPECT_TRUE(Repath(Top, {{u"1-1 file"_s, u"sub/a.kicad_sch"_s}}));
    EXPECT_EQ(tree.Modified(Top), time);
}

TEST_F(KicadRewriter, AnUnknownIdLeavesTheFileAsItIs)
{
    tree.File(Top, Schematic(Sheet("1-1", "\"a.kicad_sch\"")));
    const FileTree::Snapshot before = tree.Contents();
    EXPECT_FALSE(Repath(Top, {{u"1-1 file"_s, u"b"_s}, {u"9"_s, u"c"_s}}));
    EXPECT_EQ(tree.Contents(), before);
}

TEST_F(KicadRewriter, ADataSheetOfASheetInASubfolderStaysRelativeToTheProject)
{
    const QString sub = u"p/sub/b.kicad_sch"_s;
    tree.File(u"p/a.kicad_pro"_s, "{}");
    tree.File(sub,
              Schematic("(symbol (uuid 1-1) (property \"Datasheet\" \"${KIPRJMOD}/doc/c.pdf\"))"));
    EXPECT_TRUE(Repath(sub, {{u"1-1 datasheet"_s, u"../lib/doc/d.pdf"_s}}));
    EXPECT_TRUE(tree.Read(sub).contains("\"${KIPRJMOD}/lib/doc/d.pdf\""))
        << tree.Read(sub).toStdString();
    EXPECT_TRUE(Repath(sub, {{u"1-1 datasheet"_s, u"doc/e.pdf"_s}}));
    EXPECT_TRUE(tree.Read(sub).contains("\"${KIPRJMOD}/sub/doc/e.pdf\""))
        << tree.Read(sub).toStdString();
}

TEST_F(KicadRewriter, ADrawingSheetKeepsItsVariableAndTheProjectEveryOtherByte)
{
    const QString project = u"p/a.kicad_pro"_s;
    const QByteArray text = "\xEF\xBB\xBF{ \"schematic\" :\n {\"page_layout_descr_file\" : "
                            "\"${KIPRJMOD}/b.kicad_wks\" ,\"x\":1.50},"
                            "\"pcbnew\":{\"page_layout_descr_file\":\"c.kicad_wks\"}}\n";
    tree.File(project, text);
    EXPECT_TRUE(Repath(project, {{u"schematic sheet"_s, u"ä \"b\".kicad_wks"_s},
                                 {u"pcbnew sheet"_s, u"../c.kicad_wks"_s}}));
    QByteArray expected = text;
    expected.replace("${KIPRJMOD}/b.kicad_wks", "${KIPRJMOD}/ä \\\"b\\\".kicad_wks");
    expected.replace("\"c.kicad_wks\"", "\"../c.kicad_wks\"");
    EXPECT_EQ(tree.Read(project), expected);
}

} // namespace Halvern::Test
