// SPDX-License-Identifier: Apache-2.0

#include "OpenScadFixture.h"

#include "openscad/ScadReferences.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class DamagedOpenScad : public OpenScadFixture
{
protected:
    std::string Failure(const QByteArray& text) { return ReadFailure(m_name, text).toStdString(); }
};

struct Row
{
    const char* what;
    QByteArray text;
    const char* message;
};

} // namespace

TEST_F(DamagedOpenScad, WhatIsNoModelIsReportedWithItsPlace)
{
    const Row rows[] = {
        {"a comment cut off", "cube(1); /* x", "a comment without an end (byte 9)"},
        {"a comment of one star", "/*/", "a comment without an end (byte 0)"},
        {"a string cut off", "x = \"abc", "a string without an end (byte 4)"},
        {"a string cut off in an escape", "x = \"abc\\", "a string without an end (byte 4)"},
        {"a string that ends in an escaped mark", "x = \"abc\\\"",
         "a string without an end (byte 4)"},
        {"a string cut off in a code", "\"\\u00", "a string without an end (byte 0)"},
        {"an include cut off", "include <abc", "an include without an end (byte 8)"},
        {"a use cut off", "\nuse\n<", "an include without an end (byte 5)"},
        {"a call cut off", "import(\"a.stl\"", "a call without an end (byte 0)"},
        {"a call cut off in another", "import(surface(", "a call without an end (byte 0)"},
        {"a bracket too many", "cube(1));", "a bracket is closed that was not opened (byte 7)"},
        {"a NUL in a name", QByteArray("use <a\0b>", 9),
         "the path of link use 1 holds a NUL character"},
        {"a NUL in a string", "import(\"a\\x00.stl\");",
         "the path of link import 1 holds a NUL character"},
        {"a name that is no UTF-8", "use <H\xF6he.scad>",
         "the path of link use 1 is no valid text"},
        {"half a surrogate pair", "import(\"\\ud83c.stl\");",
         "the path of link import 1 is no valid text"},
        {"a code beyond Unicode", "import(\"\\UFFFFFF.stl\");",
         "the path of link import 1 is no valid text"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Failure(row.text), row.message) << row.what;
}

TEST_F(DamagedOpenScad, NamesThatAreTooLongAreReportedNotCut)
{
    EXPECT_EQ(Failure("use <" + QByteArray(260, 'a') + ">"),
              "the path of link use 1 has 260 characters; a link can have 259");
    EXPECT_EQ(Failure("use <" + QByteArray(10'000'000, 'a') + ">"),
              "the path of link use 1 has 4096 characters; a link can have 259");
    const Links links = Model("import(\"" + QByteArray(10'000'000, 'a') + "\");");
    ASSERT_EQ(links.size(), 1); // an expression, to be looked at by a person
    EXPECT_TRUE(links[0].second.startsWith(u"import(..."_s));
}

TEST_F(DamagedOpenScad, NestingIsBounded)
{
    const auto levels = static_cast<qsizetype>(Formats::OpenScad::MaxNesting);
    EXPECT_EQ(Model(QByteArray(levels, '(') + QByteArray(levels, ')')), Links{});
    EXPECT_EQ(Failure(QByteArray(10 * levels, '[')),
              "nested deeper than 10000 levels (byte 10000)");
    EXPECT_EQ(Failure(QByteArray("import(").repeated(10 * levels)),
              "nested deeper than 10000 levels (byte 70006)");
    const Links links = Model(QByteArray("import(").repeated(levels) + QByteArray(levels, ')'));
    EXPECT_EQ(links.size(), 16);
}

TEST_F(DamagedOpenScad, TooManyNamesAreReported)
{
    const auto most = static_cast<qsizetype>(Formats::OpenScad::MaxReferences);
    EXPECT_EQ(Failure(QByteArray("use<a>").repeated(most + 1)),
              "the file names too many files (byte 600004)");
    EXPECT_EQ(Failure(QByteArray("x=\"\";").repeated(most + 1)),
              "too many strings are assigned (byte 500003)");
    EXPECT_EQ(Failure(QByteArray("import(x);").repeated(most + 1)),
              "the file names too many files (byte 1000000)");
}

TEST_F(DamagedOpenScad, OfMoreNamesThanCanBeKeptEveryVariableCanBeAnything)
{
    QByteArray text = "f = \"a.stl\"; import(f);";
    const auto addNames = [&](int from, int to) {
        for (int i = from; i < to; ++i)
            text += "v" + QByteArray::number(i) + "=g(" + QByteArray::number(i) + ");";
    };
    addNames(0, 100'000);
    EXPECT_EQ(Model(text), (Links{LinkTo(u"variable f 1", u"a.stl")}));
    addNames(100'000, 300'000);
    EXPECT_EQ(Model(text),
              (Links{LinkTo(u"variable f 1", u"a.stl"), LinkTo(u"import 1", u"import(f)")}));
}

TEST_F(DamagedOpenScad, VariablesThatTakeTheirValuesInACircleAreGoneThroughOnce)
{
    QByteArray text;
    for (int i = 0; i < 20'000; ++i) {
        const QByteArray next = QByteArray::number((i + 1) % 20'000);
        text += "v" + QByteArray::number(i) + "=v" + next + ";import(v" + next + ");";
    }
    EXPECT_EQ(Model(text + "v5=\"a.stl\";"), (Links{LinkTo(u"variable v5 1", u"a.stl")}));
}

TEST_F(DamagedOpenScad, AModelCutOffAnywhereIsReadOrReported)
{
    const QByteArray whole = "include <a.scad>\nx = \"b.stl\"; /* c */ import(file = x); // d\n"
                             "surface(str(\"e\\\"\", 1), center = [1, 2]);";
    for (qsizetype size = 0; size < whole.size(); ++size) {
        tree.File(m_name, whole.left(size));
        context.lines.clear();
        const bool ok = TryRead(m_name);
        EXPECT_EQ(ok, context.lines.isEmpty()) << size;
        EXPECT_TRUE(ok || context.lines[0].contains(u" without an end (byte "_s)) << size;
        EXPECT_EQ(tree.Read(m_name), whole.left(size));
    }
}

TEST_F(DamagedOpenScad, NoiseIsReadOrReportedAndLeftAsItIs)
{
    const QByteArray alphabet = "\"\\/*<>()[]{}=,;:?use include import(file x\n\t";
    for (quint32 seed = 1; seed <= 300; ++seed) {
        QByteArray noise;
        for (const char byte : PatternBytes(200, seed))
            noise.append(alphabet[static_cast<uchar>(byte) % alphabet.size()]);
        tree.File(m_name, noise);
        context.lines.clear();
        const bool ok = TryRead(m_name);
        EXPECT_EQ(ok, context.lines.isEmpty()) << seed;
        EXPECT_EQ(tree.Read(m_name), noise);
    }
}

TEST_F(DamagedOpenScad, AFileThatIsMissingOrAFolderIsReported)
{
    EXPECT_FALSE(TryRead(u"none.scad"_s));
    tree.Folder(u"folder.scad"_s);
    EXPECT_FALSE(TryRead(u"folder.scad"_s));
    EXPECT_EQ(context.lines.size(), 2);
}

} // namespace Halvern::Test
