// SPDX-License-Identifier: Apache-2.0

#include "OpenScadFixture.h"

#include "pluginkit/FileScanner.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using OpenScadRewriter = OpenScadFixture;

} // namespace

TEST_F(OpenScadRewriter, OnlyTheBytesOfTheNamesChange)
{
    const QByteArray before = "\xEF\xBB\xBF/* b.scad */ include\r\n <b.scad>\r\nuse<c.scad> // ü\n"
                              "x=\"a.stl\";\timport ( file=\"a.stl\" , convexity = 3 ) ;\r\n";
    QByteArray after = before;
    after.replace("<b.scad>", "<../Größe/木 b.scad>").replace("<c.scad>", "<c d.scad>");
    after.replace("file=\"a.stl\"", "file=\"t/a.stl\"");
    EXPECT_EQ(Changed(before, {LinkTo(u"include 1", u"../Größe/木 b.scad"),
                               LinkTo(u"use 1", u"c d.scad"), LinkTo(u"import 1", u"t/a.stl")}),
              after);
}

TEST_F(OpenScadRewriter, OfTwoLinksWithEqualNamesTheOneThatIsNamedChanges)
{
    EXPECT_EQ(Changed("import(\"a.stl\");import(\"a.stl\");import(c?\"a.stl\":\"a.stl\");",
                      {LinkTo(u"import 2", u"b.stl"), LinkTo(u"import 3 value 2", u"c.stl")}),
              "import(\"a.stl\");import(\"b.stl\");import(c?\"a.stl\":\"c.stl\");");
}

TEST_F(OpenScadRewriter, AVariablesTextChangesWhereItIsAssigned)
{
    EXPECT_EQ(Changed("f = \"a.stl\"; import(f); module m(f=\"b.stl\") {} ",
                      {LinkTo(u"variable f 1", u"x/a.stl"), LinkTo(u"variable f 2", u"x/b.stl")}),
              "f = \"x/a.stl\"; import(f); module m(f=\"x/b.stl\") {} ");
}

TEST_F(OpenScadRewriter, ATextPassedByItsPlaceChangesWhereItIsPassed)
{
    const QByteArray model = "module part(f = \"a.stl\", g) { import(f); import(g); }";
    EXPECT_EQ(Changed(model + "part(\"b.stl\", \"b.stl\");",
                      {LinkTo(u"variable f passed 1", u"x/a.stl"),
                       LinkTo(u"variable g passed 1", u"x/b.stl")}),
              model + "part(\"x/a.stl\", \"x/b.stl\");");
}

TEST_F(OpenScadRewriter, QuotationMarksAndBackslashesAreEscapedInStringsOnly)
{
    const Links links = {LinkTo(u"import 1", u"a \"b\".stl"), LinkTo(u"use 1", u"a \"b\".scad")};
    EXPECT_EQ(Changed("import(\"x\");use <y>", links),
              "import(\"a \\\"b\\\".stl\");use <a \"b\".scad>");
    EXPECT_EQ(Read(m_name), (Links{links[0], links[1]}));
}

TEST_F(OpenScadRewriter, AnEscapedNameThatIsRightAlreadyKeepsItsBytes)
{
    const QByteArray text = R"(import("H\u00f6he\\a.stl");include <.\b.scad>)";
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(m_name, text).Touch(m_name, time);
    EXPECT_TRUE(
        Repath(m_name, {LinkTo(u"import 1", u"Höhe/a.stl"), LinkTo(u"include 1", u"b.scad")}));
    EXPECT_EQ(tree.Modified(m_name), time);
}

TEST_F(OpenScadRewriter, AComputedNameStaysAndHindersNoOther)
{
    EXPECT_EQ(Changed("import(str(\"../a\", i)); use <b.scad>",
                      {LinkTo(u"import 1", u"import(other)"), LinkTo(u"use 1", u"c.scad")}),
              "import(str(\"../a\", i)); use <c.scad>");
}

TEST_F(OpenScadRewriter, ALinkToAnInstalledLibraryCanBeRewrittenByItsId)
{
    // Beside the source there may have been such a file; beside the copy there is none yet.
    EXPECT_EQ(Changed("use <MCAD/gears.scad>", {LinkTo(u"use 1", u"x/gears.scad")}),
              "use <x/gears.scad>");
}

TEST_F(OpenScadRewriter, AFileOfManyBlocksKeepsEverythingElse)
{
    const QByteArray noise = PatternBytes(2 * qint64(PluginKit::FileScanner::BlockSize))
                                 .toHex()
                                 .prepend("x=\"")
                                 .append("\";");
    EXPECT_TRUE(Changed("use <a>" + noise + "use <b>",
                        {LinkTo(u"use 1", u"longer"), LinkTo(u"use 2", u"c")}) ==
                "use <longer>" + noise + "use <c>");
}

TEST_F(OpenScadRewriter, AnIdThatIsNotInTheFileFailsByName)
{
    for (const char16_t* id : {u"use 2", u"use", u"import 1", u"variable f 1", u""}) {
        EXPECT_EQ(RewriteFailure(m_name, "use <a.scad> f = \"x\";", {LinkTo(id, u"x")}),
                  u"the file has no link "_s + QString::fromUtf16(id));
    }
}

TEST_F(OpenScadRewriter, ANameThatCannotBeWrittenFailsAndNothingIs)
{
    const QByteArray text = "use <a.scad>import(\"a.stl\");";
    EXPECT_EQ(RewriteFailure(m_name, text,
                             {LinkTo(u"import 1", u"b.stl"), LinkTo(u"use 1", u"a>b.scad")}),
              u"link use 1 cannot name a>b.scad"_s);
    EXPECT_EQ(RewriteFailure(m_name, text, {LinkTo(u"import 1", u"a\nb.stl")}),
              u"link import 1 cannot name a\nb.stl"_s);
    EXPECT_EQ(Changed(text, {LinkTo(u"import 1", u"a>b.stl")}), "use <a.scad>import(\"a>b.stl\");");
}

} // namespace Halvern::Test
