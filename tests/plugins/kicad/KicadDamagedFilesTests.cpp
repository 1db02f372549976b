// SPDX-License-Identifier: Apache-2.0

#include "KicadFixture.h"

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using KicadDamagedFiles = KicadFixture;

struct Row
{
    const char* name;
    const char* file;
    QByteArray content;
    const char* failure;
};

const QString Top = u"p/a.kicad_sch"_s;

QByteArray CorpusFile(const char* name)
{
    QFile file(QStringLiteral(KICAD_CORPUS "/Platine Größe/") + QString::fromUtf8(name));
    EXPECT_TRUE(file.open(QFile::ReadOnly)) << name;
    return file.readAll();
}

} // namespace

TEST_F(KicadDamagedFiles, EachFailsWithItsReason)
{
    const QByteArray deep = "(kicad_sch " + QByteArray(100'000, '(');
    const QByteArray longName(5000, 'x');
    const Row rows[] = {
        {"empty", "a.kicad_sch", {}, "the file does not begin with a list (byte 0)"},
        {"blanks", "a.kicad_sch", " \n ", "the file does not begin with a list (byte 3)"},
        {"no list", "a.kicad_sch", "EESchema Schematic File Version 4\n",
         "the file does not begin with a list (byte 0)"},
        {"half a byte order mark", "a.kicad_sch", "\xEF\xBB(kicad_sch)",
         "the file does not begin with a list (byte 0)"},
        {"another kind", "a.kicad_sch", "(kicad_symbol_lib (version 1))",
         "a file of the kind \"kicad_symbol_lib\" is not understood (byte 0)"},
        {"a kind with an endless name", "a.kicad_pcb", '(' + longName,
         "a file of the kind \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\" is not understood (byte "
         "0)"},
        {"a list without a name", "a.kicad_sch", "((kicad_sch))",
         "a file of the kind \"\" is not understood (byte 0)"},
        {"an open list", "a.kicad_sch", "(kicad_sch (sheet (uuid 1)",
         "the file ends within 2 open lists (byte 26)"},
        {"an open string", "a.kicad_sch", "(kicad_sch \"abc)",
         "the file ends within 1 open lists (byte 16)"},
        {"an open escape", "a.kicad_sch", "(kicad_sch \"abc\\",
         "the file ends within 1 open lists (byte 16)"},
        {"a NUL byte", "a.kicad_sch", QByteArray("(kicad_sch a\0b)", 15), "a NUL byte (byte 12)"},
        {"a written NUL", "a.kicad_sch",
         "(kicad_sch (sheet (property \"Sheet file\" \"a\\x00b\")))",
         "the path of link file holds a NUL character"},
        {"endless nesting", "a.kicad_sch", deep, "lists nested deeper than 256 levels (byte 266)"},
        {"a path that no link can hold", "a.kicad_sch",
         "(kicad_sch (sheet (property \"Sheet file\" \"" + longName + "\")))",
         "a file name of more than 4096 bytes (byte 41)"},
        {"a path that is too long for a link", "a.kicad_sch",
         "(kicad_sch (sheet (property \"Sheet file\" \"" + longName.left(300) + "\")))",
         "the path of link file has 300 characters; a link can have 259"},
        {"a path that is no text", "a.kicad_pcb", "(kicad_pcb (footprint x (model \"\xFF\xFE\")))",
         "the path of link model is no valid text"},
        {"an empty project", "a.kicad_pro", {}, "The document is empty. (byte 0)"},
        {"a project that is no object", "a.kicad_pro", "[1]",
         "the document is no JSON object (byte 0)"},
        {"a project that is a word", "a.kicad_pro", "true",
         "the document is no JSON object (byte 4)"},
        {"an open project", "a.kicad_pro", "{\"a\": {\"b\": 1}",
         "Missing a comma or '}' after an object member. (byte 14)"},
        {"a project with a NUL byte", "a.kicad_pro", QByteArray("{}\0", 3),
         "a NUL byte follows the document (byte 2)"},
        {"a project that is no text", "a.kicad_pro", "{\"a\": \"\xFF\"}",
         "Invalid encoding in string. (byte 7)"},
        {"a deep project", "a.kicad_pro", "{\"a\":" + QByteArray(100'000, '['),
         "nested deeper than 256 levels (byte 260)"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ReadFailure(QString::fromUtf8(row.file), row.content).toStdString(), row.failure)
            << row.name;
}

TEST_F(KicadDamagedFiles, ATableThatIsDamagedIsNamed)
{
    tree.File(u"sym-lib-table"_s, "(sym_lib_table (lib ");
    EXPECT_EQ(ReadFailure(u"a.kicad_pro"_s, "{}"),
              u"sym-lib-table: the file ends within 2 open lists (its byte 20)"_s);
    tree.File(u"sym-lib-table"_s, "nothing");
    EXPECT_EQ(ReadFailure(u"a.kicad_pro"_s, "{}"),
              u"sym-lib-table: the file does not begin with a list (its byte 0)"_s);
}

TEST_F(KicadDamagedFiles, ACutFileFails)
{
    for (const char* const name :
         {"Haupt 木.kicad_sch", "Haupt 木.kicad_pcb", "Haupt 木.kicad_pro"}) {
        const QString extension = QString::fromUtf8(name).section(u'.', -1);
        const QByteArray whole = CorpusFile(name).trimmed();
        ASSERT_GT(whole.size(), 1000);
        for (qsizetype size = 0; size < whole.size(); size += 3) {
            tree.File(u"a."_s + extension, whole.left(size));
            ASSERT_FALSE(TryRead(u"a."_s + extension)) << name << " cut at " << size;
        }
        tree.File(u"a."_s + extension, whole);
        EXPECT_TRUE(TryRead(u"a."_s + extension)) << name;
        tree.Remove(u"a."_s + extension);
    }
}

TEST_F(KicadDamagedFiles, ChangedBytesNeverDoHarm)
{
    const QByteArray whole = CorpusFile("Haupt 木.kicad_sch");
    int failures = 0;
    for (const char byte : {'(', ')', '"', '\\', '\0', '\xFF', '#'}) {
        for (qsizetype at = 0; at < whole.size(); at += 11) {
            QByteArray changed = whole;
            changed[at] = byte;
            tree.File(Top, changed);
            failures += !TryRead(Top);
            ASSERT_EQ(tree.Read(Top), changed);
        }
    }
    EXPECT_GT(failures, 50);
}

TEST_F(KicadDamagedFiles, AHugeStringIsReadInFixedMemory)
{
    tree.File(Top,
              Schematic("(text \"" + QByteArray(20'000'000, 'x') + "\")" + Sheet("1-1", "\"b\"")));
    EXPECT_EQ(Read(Top), (Links{{u"1-1 file"_s, u"b"_s}}));
}

} // namespace Halvern::Test
