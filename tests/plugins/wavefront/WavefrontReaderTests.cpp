// SPDX-License-Identifier: Apache-2.0

#include "FormatFixture.h"

#include "pluginkit/FileScanner.h"
#include "wavefront/WavefrontResolver.h"

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class WavefrontReader : public ResolverFixture
{
protected:
    WavefrontReader() : ResolverFixture(m_resolver) {}

    Links Object(const QByteArray& content)
    {
        tree.File(u"a.obj"_s, content);
        return Read(u"a.obj"_s);
    }
    /// The paths of a material library's links.
    QStringList Maps(const QByteArray& content)
    {
        tree.File(u"a.MTL"_s, content);
        QStringList paths;
        for (const Link& link : Read(u"a.MTL"_s))
            paths.append(link.second);
        tree.Remove(u"a.MTL"_s);
        return paths;
    }

private:
    Formats::Wavefront::WavefrontResolver m_resolver;
};

struct MapRow
{
    const char* what;
    QByteArray line;
    const char16_t* path;
};

} // namespace

TEST_F(WavefrontReader, ALibraryNamesTheRestOfItsLine)
{
    EXPECT_EQ(Object("# x\nmtllib Höhe 木.mtl  \t\r\nv 0 0 0\n"),
              (Links{LinkTo(u"mtllib 1", u"Höhe 木.mtl")}));
    EXPECT_EQ(Object("\t mtllib\t../lib/a #1.mtl"),
              (Links{LinkTo(u"mtllib 1", u"../lib/a #1.mtl")}));
    EXPECT_EQ(Object("\xEF\xBB\xBFmtllib /lib/a.mtl"), (Links{LinkTo(u"mtllib 1", u"/lib/a.mtl")}));
    EXPECT_EQ(Object("mtllib D:\\lib\\a.mtl"), (Links{LinkTo(u"mtllib 1", u"D:/lib/a.mtl")}));
}

TEST_F(WavefrontReader, EveryStatementIsALinkWithItsNumber)
{
    EXPECT_EQ(Object("mtllib a.mtl\rv 0 0 0\rmtllib\nmtllib b.mtl\nMTLLIB a.mtl"),
              (Links{LinkTo(u"mtllib 1", u"a.mtl"), LinkTo(u"mtllib 2", u"b.mtl"),
                     LinkTo(u"mtllib 3", u"a.mtl")}));
}

TEST_F(WavefrontReader, SeveralNamesOfOneLineAreToldByTheirExtensions)
{
    EXPECT_EQ(Object("mtllib one two.mtl b.MTL  c d.mtl"),
              (Links{LinkTo(u"mtllib 1 words 1-2", u"one two.mtl"),
                     LinkTo(u"mtllib 1 words 3-3", u"b.MTL"),
                     LinkTo(u"mtllib 1 words 4-5", u"c d.mtl")}));
    EXPECT_EQ(Object("mtllib one two"), (Links{LinkTo(u"mtllib 1", u"one two")}));
    EXPECT_EQ(Object("mtllib a.mtl rest"), (Links{LinkTo(u"mtllib 1", u"a.mtl rest")}));
}

TEST_F(WavefrontReader, ALineThatIsTheNameOfAFileIsOneName)
{
    tree.File(u"one.mtl b.mtl"_s);
    EXPECT_EQ(Object("mtllib one.mtl b.mtl"), (Links{LinkTo(u"mtllib 1", u"one.mtl b.mtl")}));
}

TEST_F(WavefrontReader, QuotationMarksAroundANameAreNotPartOfIt)
{
    EXPECT_EQ(Object("mtllib \"one two.mtl\""), (Links{LinkTo(u"mtllib 1", u"one two.mtl")}));
    EXPECT_EQ(Maps("map_Kd \"a b.png\""), QStringList{u"a b.png"_s});
    EXPECT_EQ(
        Object("mtllib \"one two.mtl\"  \"b.mtl\" c.mtl \"d.mtl e.MTL\""),
        (Links{LinkTo(u"mtllib 1 words 1-2", u"one two.mtl"),
               LinkTo(u"mtllib 1 words 3-3", u"b.mtl"), LinkTo(u"mtllib 1 words 4-4", u"c.mtl"),
               LinkTo(u"mtllib 1 words 5-6", u"d.mtl e.MTL")}));
    EXPECT_EQ(Object("mtllib \"a.mtl b.mtl\""), (Links{LinkTo(u"mtllib 1", u"a.mtl b.mtl")}));
}

TEST_F(WavefrontReader, ABackslashAtTheEndOfALineJoinsTheNext)
{
    EXPECT_EQ(Object("f 1 2 \\\nmtllib no.mtl\nf 1 2 \\\r\nmtllib no.mtl\r\nmtllib \\\na.mtl\n"),
              (Links{LinkTo(u"mtllib 1", u"a.mtl")}));
    EXPECT_EQ(Object("# C:\\work\\\nmtllib a.mtl"), (Links{LinkTo(u"mtllib 1", u"a.mtl")}));
    EXPECT_EQ(
        Object("mtllib a.mtl \\\r\nb.mtl\r\n"),
        (Links{LinkTo(u"mtllib 1 words 1-1", u"a.mtl"), LinkTo(u"mtllib 1 words 2-2", u"b.mtl")}));
}

TEST_F(WavefrontReader, OtherStatementsAndCommentsAreNoLinks)
{
    EXPECT_EQ(Object("#mtllib a.mtl\n# mtllib a.mtl\nmtllibs a.mtl\no mtllib a.mtl\n\ng mtllib"
                     "\nusemtl a.mtl\nmtllib\nmtllib \t \n"),
              Links{});
    EXPECT_EQ(Object(""), Links{});
    EXPECT_EQ(Maps("newmtl map_Kd a.png\n#map_Kd a.png\nKd 1 1 1\nmap_aat on\nillum 2\nmap_Kd\n"
                   "map_Kd -s 1 1 1\nbumps a.png\n"),
              QStringList{});
}

TEST_F(WavefrontReader, ALibraryWithTheNameOfTheFileComesAlong)
{
    tree.File(u"a.mtl"_s);
    EXPECT_EQ(Object("v 0 0 0\n"), (Links{LinkTo(u"companion:mtl", u"a.mtl")}));
    EXPECT_EQ(Object("mtllib none.mtl\n"),
              (Links{LinkTo(u"mtllib 1", u"none.mtl"), LinkTo(u"companion:mtl", u"a.mtl")}));
    EXPECT_EQ(Object("mtllib ./a.mtl\n"), (Links{LinkTo(u"mtllib 1", u"./a.mtl")}));
}

TEST_F(WavefrontReader, EveryKindOfMapIsALinkNamedByItsMaterial)
{
    tree.File(u"a.mtl"_s, "newmtl Eiche hell\nmap_Kd 1.png\nmap_Bump 2.png\n"
                          "bump 3.png\nnewmtl b\r\nmap_Kd 4.png\r\ndisp 5.png\r\n"
                          "decal 6.png\r\nrefl 7.png\r\nrefl 8.png\r\nnorm 9.png\r\n"
                          "map_Pr 10.png\nnewmtl b\nMAP_KD 11.png\n");
    EXPECT_EQ(Read(u"a.mtl"_s),
              (Links{LinkTo(u"Eiche hell/map_kd", u"1.png"),
                     LinkTo(u"Eiche hell/map_bump", u"2.png"), LinkTo(u"Eiche hell/bump", u"3.png"),
                     LinkTo(u"b/map_kd", u"4.png"), LinkTo(u"b/disp", u"5.png"),
                     LinkTo(u"b/decal", u"6.png"), LinkTo(u"b/refl", u"7.png"),
                     LinkTo(u"b/refl#2", u"8.png"), LinkTo(u"b/norm", u"9.png"),
                     LinkTo(u"b/map_pr", u"10.png"), LinkTo(u"b/map_kd#2", u"11.png")}));
}

TEST_F(WavefrontReader, TheNameOfAMapFollowsItsOptions)
{
    const MapRow rows[] = {
        {"none", "map_Kd a b.png", u"a b.png"},
        {"a name with a dash", "map_Kd -a.png", u"-a.png"},
        {"a name with a number sign", "map_Kd a #1.png", u"a #1.png"},
        {"one number", "bump -bm 0.5 a b.png", u"a b.png"},
        {"one number and a name that is one", "bump -bm 0.5 1 a.png", u"1 a.png"},
        {"three numbers", "map_Kd -s 1 -2.5 +1e-3 a.png", u"a.png"},
        {"two numbers", "map_Kd -o 1 1 a.png", u"a.png"},
        {"one of three", "map_Kd -t 1 a.png", u"a.png"},
        {"a name that begins with a digit", "map_Kd -s 1 1 2nd floor.png", u"2nd floor.png"},
        {"words", "map_Kd -clamp on -blendu off -blendv on -cc on a.png", u"a.png"},
        {"a channel", "map_d -imfchan m a.png", u"a.png"},
        {"base and gain", "map_Kd -mm 0 1 a.png", u"a.png"},
        {"a type", "refl -type cube_top sky box.png", u"sky box.png"},
        {"a resolution", "map_Kd -texres 512 a.png", u"a.png"},
        {"all at once", "map_Kd -s 1 1 1 -o 0 0 0 -t 0 0 0 -boost 2 -mm 0 1 a.png", u"a.png"},
        {"blanks and tabs", "map_Kd \t-bm\t 1 \t a.png \t", u"a.png"},
        {"a backslash at the end", "map_Kd tex\\a.png\\\nKd 1 1 1", nullptr},
        {"a folder", "map_Kd textures/", nullptr},
        {"folders with backslashes", "map_Kd ..\\tex\\a.png", u"../tex/a.png"},
    };
    for (const MapRow& row : rows) {
        const QStringList expected =
            row.path ? QStringList{QString::fromUtf16(row.path)} : QStringList{};
        EXPECT_EQ(Maps("newmtl m\n" + row.line + "\n"), expected) << row.what;
    }
}

TEST_F(WavefrontReader, ANumberBelongsToTheNameWhereOnlySuchAFileExists)
{
    tree.File(u"2 holes.png"_s).File(u"a.mtl"_s, "newmtl m\nmap_Kd -s 1 1 2 holes.png\n");
    EXPECT_EQ(Read(u"a.mtl"_s), (Links{LinkTo(u"m/map_kd words 4-5", u"2 holes.png")}));
    tree.File(u"holes.png"_s);
    EXPECT_EQ(Read(u"a.mtl"_s), (Links{LinkTo(u"m/map_kd", u"holes.png")}));
}

TEST_F(WavefrontReader, BytesThatAreNoUtf8AreLatin1)
{
    EXPECT_EQ(Object("mtllib H\xF6he.mtl"), (Links{LinkTo(u"mtllib 1", u"Höhe.mtl")}));
    tree.File(u"b.mtl"_s, "newmtl Gr\xFCn\nmap_Kd gr\xFCn.png");
    EXPECT_EQ(Read(u"b.mtl"_s), (Links{LinkTo(u"Grün/map_kd", u"grün.png")}));
}

TEST_F(WavefrontReader, AMaterialWithALongNameStillHasAnId)
{
    tree.File(u"a.mtl"_s,
              "newmtl " + QByteArray("ä").repeated(500) + "\nmap_Kd a.png\nmap_Kd b.png\n");
    const QString name(50, QChar(0xE4));
    EXPECT_EQ(Read(u"a.mtl"_s),
              (Links{{name + u"/map_kd"_s, u"a.png"_s}, {name + u"/map_kd#2"_s, u"b.png"_s}}));
}

TEST_F(WavefrontReader, StatementsAreFoundBehindManyBlocksOfGeometry)
{
    const QByteArray vertex = "v 0.123456 -1.5 2.25\n";
    const auto block = static_cast<qsizetype>(PluginKit::FileScanner::BlockSize);
    QByteArray content = "mtllib first.mtl\n" + vertex.repeated(2 * block / vertex.size());
    // The keyword lies across the end of a block.
    content.append("#" + QByteArray(3 * block - content.size() - 4, 'x') + "\nmtllib last.mtl\n");
    ASSERT_EQ(content.indexOf("mtllib last"), 3 * block - 2);
    EXPECT_EQ(Object(content),
              (Links{LinkTo(u"mtllib 1", u"first.mtl"), LinkTo(u"mtllib 2", u"last.mtl")}));
}

TEST_F(WavefrontReader, ReadingLeavesTheFileAlone)
{
    const QByteArray content = "mtllib a.mtl\r\nv 0 0 0\r\n";
    tree.File(u"a.obj"_s, content);
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.Touch(u"a.obj"_s, time);
    Read(u"a.obj"_s);
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{u"a.obj"_s, content}}));
    EXPECT_EQ(tree.Modified(u"a.obj"_s), time);
}

} // namespace Halvern::Test
