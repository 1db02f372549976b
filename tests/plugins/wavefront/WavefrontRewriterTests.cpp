// SPDX-License-Identifier: Apache-2.0

#include "FormatFixture.h"

#include "pluginkit/FileScanner.h"
#include "wavefront/WavefrontResolver.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class WavefrontRewriter : public ResolverFixture
{
protected:
    WavefrontRewriter() : ResolverFixture(m_resolver) {}

    QByteArray Object(const QByteArray& content, const Links& links)
    {
        return Rewritten(m_object, content, links);
    }
    QByteArray Library(const QByteArray& content, const Links& links)
    {
        return Rewritten(m_library, content, links);
    }

    const QString m_object = u"a.obj"_s;
    const QString m_library = u"lib.mtl"_s;

private:
    Formats::Wavefront::WavefrontResolver m_resolver;
};

} // namespace

TEST_F(WavefrontRewriter, OnlyTheBytesOfTheNamesChange)
{
    const QByteArray before = "\xEF\xBB\xBF# Höhe\r\n\tmtllib  one two.mtl \t\r\nv 0 0 0\nv 1 0 0\r"
                              "usemtl one two.mtl\n\nmtllib b.mtl";
    QByteArray after = before;
    after.replace("mtllib  one two.mtl \t", "mtllib  ../Größe/木 1.mtl \t");
    after.replace("b.mtl", "c.mtl");
    EXPECT_EQ(
        Object(before, {LinkTo(u"mtllib 1", u"../Größe/木 1.mtl"), LinkTo(u"mtllib 2", u"c.mtl")}),
        after);
}

TEST_F(WavefrontRewriter, MapsKeepTheirOptionsAndEverythingAroundThem)
{
    const QByteArray before = "newmtl a.png\r\nKd 1 0 0\r\nmap_Kd -s 1 1 1  a.png\t\r\n"
                              "bump -bm 0.50 a.png # x\r\nmap_Kd a.png\r\n";
    QByteArray after = before;
    after.replace("1  a.png\t", "1  ../t/ä b.png\t").replace("a.png # x", "n.png");
    EXPECT_EQ(Library(before,
                      {LinkTo(u"a.png/map_kd", u"../t/ä b.png"), LinkTo(u"a.png/bump", u"n.png")}),
              after);
}

TEST_F(WavefrontRewriter, OfSeveralNamesInALineTheOneThatIsNamedChanges)
{
    EXPECT_EQ(
        Object("mtllib a.mtl one two.mtl  c.mtl\n", {LinkTo(u"mtllib 1 words 2-3", u"x/y z.mtl"),
                                                     LinkTo(u"mtllib 1 words 4-4", u"q.mtl")}),
        "mtllib a.mtl x/y z.mtl  q.mtl\n");
}

TEST_F(WavefrontRewriter, AnIdMeansTheSameWordsWhereTheFilesAroundAreOthers)
{
    // In the source's folder these files exist and decide what a name is. Beside the copy they do
    // not.
    EXPECT_EQ(Object("mtllib one.mtl b.mtl\n", {LinkTo(u"mtllib 1", u"x.mtl")}), "mtllib x.mtl\n");
    EXPECT_EQ(Library("newmtl m\nmap_Kd -s 1 1 2 holes.png\n",
                      {LinkTo(u"m/map_kd words 4-5", u"sub/2 holes.png")}),
              "newmtl m\nmap_Kd -s 1 1 sub/2 holes.png\n");
    tree.File(u"one.mtl b.mtl"_s);
    EXPECT_EQ(Object("mtllib one.mtl b.mtl\n", {LinkTo(u"mtllib 1 words 2-2", u"x.mtl")}),
              "mtllib one.mtl x.mtl\n");
}

TEST_F(WavefrontRewriter, ANameThatWouldReadAsAnOptionGetsADotBeforeIt)
{
    EXPECT_EQ(Library("newmtl m\nmap_Kd -s 1 1 1 a.png\nmap_Ks a.png\nmap_Ka a.png\n",
                      {LinkTo(u"m/map_kd", u"2 holes.png"), LinkTo(u"m/map_ks", u"2 holes.png"),
                       LinkTo(u"m/map_ka", u"-s.png")}),
              "newmtl m\nmap_Kd -s 1 1 1 ./2 holes.png\nmap_Ks 2 holes.png\nmap_Ka ./-s.png\n");
    EXPECT_EQ(Read(m_library),
              (Links{LinkTo(u"m/map_kd", u"./2 holes.png"), LinkTo(u"m/map_ks", u"2 holes.png"),
                     LinkTo(u"m/map_ka", u"./-s.png")}));
}

TEST_F(WavefrontRewriter, QuotationMarksStay)
{
    EXPECT_EQ(Object("mtllib \"a b.mtl\"\n", {LinkTo(u"mtllib 1", u"c/d.mtl")}),
              "mtllib \"c/d.mtl\"\n");
}

TEST_F(WavefrontRewriter, ANameWithABlankBeforeItsExtensionEndsThere)
{
    EXPECT_EQ(Object("mtllib a.mtl b c.mtl\n", {LinkTo(u"mtllib 1 words 1-1", u"x .mtl")}),
              "mtllib x .mtl b c.mtl\n");
    EXPECT_EQ(Read(m_object), (Links{LinkTo(u"mtllib 1 words 1-2", u"x .mtl"),
                                     LinkTo(u"mtllib 1 words 3-4", u"b c.mtl")}));
}

TEST_F(WavefrontRewriter, ANameInLatin1StaysInLatin1WhereItCan)
{
    EXPECT_EQ(Object("mtllib H\xF6he.mtl\n", {LinkTo(u"mtllib 1", u"Größe/Höhe.mtl")}),
              "mtllib Gr\xF6\xDF"
              "e/H\xF6he.mtl\n");
    EXPECT_EQ(Object("mtllib H\xF6he.mtl\n", {LinkTo(u"mtllib 1", u"木/Höhe.mtl")}),
              "mtllib 木/Höhe.mtl\n");
}

TEST_F(WavefrontRewriter, ANameIsNotWrittenInLatin1WhereThatWouldBeReadAsUtf8)
{
    // In Latin-1 these are the bytes of "ö".
    const Links links = {LinkTo(u"mtllib 1", u"\u00C3\u00B6.mtl")};
    EXPECT_EQ(Object("mtllib H\xF6he.mtl\n", links), "mtllib \xC3\x83\xC2\xB6.mtl\n");
    EXPECT_EQ(Read(m_object), links);
}

TEST_F(WavefrontRewriter, JoinedLinesAreReplacedWhole)
{
    EXPECT_EQ(Object("mtllib \\\r\na.mtl \\\r\nb.mtl\r\nv 0 0 0\r\n",
                     {LinkTo(u"mtllib 1 words 2-2", u"c.mtl")}),
              "mtllib \\\r\na.mtl \\\r\nc.mtl\r\nv 0 0 0\r\n");
}

TEST_F(WavefrontRewriter, ALibraryThatKeepsTheNameOfTheFileNeedsNoStatement)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(m_object, "v 0 0 0\n").Touch(m_object, time);
    EXPECT_TRUE(Repath(m_object, {LinkTo(u"companion:mtl", u"a.mtl")}));
    EXPECT_EQ(tree.Modified(m_object), time);
}

TEST_F(WavefrontRewriter, ALibraryThatLosesTheNameOfTheFileGetsAStatement)
{
    const Links links = {LinkTo(u"companion:mtl", u"a (2).mtl")};
    EXPECT_EQ(Object("v 0 0 0\nv 1 0 0\n", links), "mtllib a (2).mtl\nv 0 0 0\nv 1 0 0\n");
    EXPECT_EQ(Object("\xEF\xBB\xBF# x\r\nv 0 0 0\r\n", links),
              "\xEF\xBB\xBFmtllib a (2).mtl\r\n# x\r\nv 0 0 0\r\n");
    EXPECT_EQ(Object("", links), "mtllib a (2).mtl\n");
    EXPECT_EQ(Object("mtllib b.mtl\r\nv 0 0 0\r\n", links),
              "mtllib b.mtl\r\nmtllib a (2).mtl\r\nv 0 0 0\r\n");
    EXPECT_EQ(Object("mtllib b.mtl\nv 0 0 0\n",
                     {LinkTo(u"companion:mtl", u"x/a.mtl"), LinkTo(u"mtllib 1", u"x/b.mtl")}),
              "mtllib x/b.mtl\nmtllib x/a.mtl\nv 0 0 0\n");
}

TEST_F(WavefrontRewriter, AStatementThatGetsAnotherNameDoesNotStandForTheLibrary)
{
    EXPECT_EQ(Object("mtllib b.mtl\n",
                     {LinkTo(u"mtllib 1", u"c.mtl"), LinkTo(u"companion:mtl", u"b.mtl")}),
              "mtllib c.mtl\nmtllib b.mtl\n");
    EXPECT_EQ(Object("mtllib b.mtl\n",
                     {LinkTo(u"mtllib 1", u"c.mtl"), LinkTo(u"companion:mtl", u"c.mtl")}),
              "mtllib c.mtl\n");
}

TEST_F(WavefrontRewriter, AStatementForTheLibraryIsAddedOnce)
{
    const Links links = {LinkTo(u"companion:mtl", u"a (2).mtl")};
    const QByteArray once = Object("v 0 0 0\n", links);
    EXPECT_EQ(Object(once, links), once);
}

TEST_F(WavefrontRewriter, WhereNothingChangesTheFileIsNotWritten)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(m_object, "mtllib tex\\a.mtl\nmtllib ./b.mtl\n").Touch(m_object, time);
    EXPECT_TRUE(
        Repath(m_object, {LinkTo(u"mtllib 1", u"tex/a.mtl"), LinkTo(u"mtllib 2", u"b.mtl")}));
    EXPECT_EQ(tree.Modified(m_object), time);
}

TEST_F(WavefrontRewriter, AFileOfManyBlocksKeepsItsGeometryByteForByte)
{
    QByteArray geometry;
    const QByteArray pattern =
        PatternBytes(2 * qint64(PluginKit::FileScanner::BlockSize) + 11).toHex();
    for (qsizetype at = 0; at < pattern.size(); at += 60)
        geometry += "v " + pattern.mid(at, 60) + "\r\n";
    EXPECT_TRUE(Object("mtllib a.mtl\r\n" + geometry + "mtllib b.mtl\r\n",
                       {LinkTo(u"mtllib 1", u"longer/a.mtl"), LinkTo(u"mtllib 2", u"c")}) ==
                "mtllib longer/a.mtl\r\n" + geometry + "mtllib c\r\n");
}

TEST_F(WavefrontRewriter, AnIdThatIsNotInTheFileFailsByName)
{
    for (const char16_t* id :
         {u"mtllib 2", u"mtllib", u"mtllib 1 words 1-3", u"mtllib 1 words 0-1",
          u"mtllib 1 words 2-1", u"mtllib 1 words 1-", u"mtllib 1 words 1-2 ", u"mtllib 11",
          u"mtllib 1 words 1-99999999999999999999", u"companion:png", u""}) {
        EXPECT_EQ(RewriteFailure(m_object, "mtllib a.mtl b.mtl\n", {LinkTo(id, u"x.mtl")}),
                  u"the file has no link "_s + QString::fromUtf16(id));
    }
    // A map with nothing but options names no file, which its plain id would have to mean.
    EXPECT_EQ(RewriteFailure(m_library, "newmtl m\nmap_Kd -s 1 1 1\n", {LinkTo(u"m/map_kd", u"x")}),
              u"the file has no link m/map_kd"_s);
}

TEST_F(WavefrontRewriter, APathThatNoLineCanHoldFailsAndNothingIsWritten)
{
    for (const char16_t* path : {u" a.mtl", u"a.mtl ", u"a\nb.mtl", u"a\rb.mtl", u"a\tb", u"a\\"}) {
        EXPECT_EQ(RewriteFailure(m_object, "mtllib a.mtl\nmtllib b.mtl\n",
                                 {LinkTo(u"mtllib 1", u"good.mtl"), LinkTo(u"mtllib 2", path)}),
                  u"a line of this format cannot name "_s + QString::fromUtf16(path));
    }
    EXPECT_EQ(RewriteFailure(m_object, "v 0 0 0\n", {LinkTo(u"companion:mtl", u"a\nb.mtl")}),
              u"a line of this format cannot name a\nb.mtl"_s);
}

} // namespace Halvern::Test
