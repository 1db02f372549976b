// SPDX-License-Identifier: Apache-2.0

#include "SvgFixture.h"

#include "pluginkit/Compression.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

using SvgRewriter = SvgFixture;

TEST_F(SvgRewriter, OnlyTheBytesOfTheAddressChange)
{
    EXPECT_EQ(
        Rewritten("<image  x = '1'\r\n\thref = \" old.svg?q=1#part \" y=\"&#49;\"/>"
                  "<!-- old.svg --><image href='old.svg'/><text>old.svg</text>",
                  {L(u"image/href", u"../Höhe & 木/neu's #1.svg")}),
        "<image  x = '1'\r\n\thref = \" ../H%C3%B6he%20&amp;%20%E6%9C%A8/neu&apos;s%20%231.svg"
        "?q=1#part \" y=\"&#49;\"/>"
        "<!-- old.svg --><image href='old.svg'/><text>old.svg</text>");
}

TEST_F(SvgRewriter, AFragmentKeepsItsBytes)
{
    EXPECT_EQ(Rewritten("<use href='o&#x6C;d.svg#p&#97;rt'/>", {L(u"use/href", u"n.svg")}),
              "<use href='n.svg#p&#97;rt'/>");
}

TEST_F(SvgRewriter, AddressesInStylesAreRewrittenWhereverTheyStand)
{
    const Links links = {L(u"#r/style/url#2", u"x (1)/b'&.svg"), L(u"rect/fill/url", u"c.svg"),
                         L(u"style/@import", u"n.css"), L(u"#s/url", u"f & g.svg")};
    EXPECT_EQ(
        Rewritten(
            "<rect id='r' style='fill:url(&quot;a.svg#g&quot;);mask:url( b.svg#m )'/>"
            "<rect fill='URL(&apos;o.svg#g&apos;) red'/><style>@import \"o.css\" print;</style>"
            "<style id='s'><![CDATA[ p > q { fill: url(o.svg#&) } ]]></style>",
            links),
        "<rect id='r' style='fill:url(&quot;a.svg#g&quot;);mask:url( x%20%281%29/b%27%26.svg#m )'/>"
        "<rect fill='URL(&apos;c.svg#g&apos;) red'/><style>@import \"n.css\" print;</style>"
        "<style id='s'><![CDATA[ p > q { fill: url(f%20%26%20g.svg#%26) } ]]></style>");
    for (const Link& link : links)
        EXPECT_TRUE(Read(m_file).contains(link)) << link.first.toStdString();
}

TEST_F(SvgRewriter, AnAddressThatEndsWithItsSectionLeavesTheSectionClosed)
{
    for (const char* address : {"@import url(%1", "@import '%1", "a { fill: url(\"%1"}) {
        const QByteArray text = "<style><![CDATA[" + QByteArray(address) + "]]></style><style>" +
                                QByteArray(address) + "<!-- x --></style>";
        const QString id = text.contains("import") ? u"style/@import"_s : u"style/url"_s;
        EXPECT_EQ(Rewritten(QByteArray(text).replace("%1", "o.css"),
                            {{id, u"n.css"_s}, {id + u"#2"_s, u"m.css"_s}}),
                  QByteArray(text).replace(text.indexOf("%1"), 2, "n.css").replace("%1", "m.css"));
    }
}

TEST_F(SvgRewriter, BlanksBeforeAFragmentDoNotBecomePartOfTheName)
{
    EXPECT_EQ(
        Rewritten("<rect style='fill:url( \"o.svg #g \" )'/>", {L(u"rect/style/url", u"n.svg")}),
        "<rect style='fill:url( \"n.svg#g\" )'/>");
    EXPECT_EQ(Read(m_file), (Links{L(u"rect/style/url", u"n.svg")}));
}

TEST_F(SvgRewriter, LinkedStyleSheetsAreRewritten)
{
    const QByteArray before =
        "<?xml version='1.0'?>\n<?xml-stylesheet href='a.css' type='text/css'?>\n<svg/>";
    tree.File(m_file, before);
    EXPECT_TRUE(Repath(m_file, {L(u"xml-stylesheet/href", u"../b & c.css")}));
    EXPECT_EQ(tree.Read(m_file), QByteArray(before).replace("a.css", "../b%20&amp;%20c.css"));
}

TEST_F(SvgRewriter, AnAddressWithEntitiesOfTheDocumentTypeIsReplacedWhole)
{
    const QByteArray before =
        "<!DOCTYPE svg [<!ENTITY dir 'x/y'>]><svg><use href='&dir;/a.svg#p'/></svg>";
    tree.File(m_file, before);
    EXPECT_TRUE(Repath(m_file, {L(u"use/href", u"b.svg")}));
    EXPECT_EQ(tree.Read(m_file), QByteArray(before).replace("&dir;/a.svg", "b.svg"));
}

TEST_F(SvgRewriter, TheAbsoluteNameFollowsTheLink)
{
    const auto image = [](const QByteArray& href, const QByteArray& absolute) {
        return "<image sodipodi:absref=\"" + absolute + "\" xlink:href=\"" + href +
               "\" xmlns:sodipodi=\"s\"/>";
    };
    const QByteArray absolute = tree.Path(u"neu/ö & b.png"_s).toUtf8();
    EXPECT_EQ(
        Rewritten(image("old/a.png", "/gone/a.png"), {L(u"image/xlink:href", u"../neu/ö & b.png")}),
        image("../neu/%C3%B6%20&amp;%20b.png", QByteArray(absolute).replace("&", "&amp;")));
}

TEST_F(SvgRewriter, TheAbsoluteNameOfALinkThatIsWrittenForOldAndNewReadersFollowsOnce)
{
    const QByteArray absolute = tree.Path(u"neu/a.png"_s).toUtf8();
    const QByteArray rest = " xmlns:sodipodi='s'/>";
    EXPECT_EQ(
        Rewritten("<image href='a.png' xlink:href='a.png' sodipodi:absref='/gone/a.png'" + rest,
                  {L(u"image/href", u"../neu/a.png"), L(u"image/xlink:href", u"../neu/a.png")}),
        "<image href='../neu/a.png' xlink:href='../neu/a.png' sodipodi:absref='" + absolute + "'" +
            rest);
}

TEST_F(SvgRewriter, AnAbsoluteNameThatXmlCannotHoldLeavesTheDrawingAsItIs)
{
    const QByteArray rest = " xmlns:sodipodi='s'/>";
    const Links links = {L(u"image/href", u"a\020b.png")};
    EXPECT_TRUE(RewriteFailure(
                    m_file, Svg("<image href='a.png' sodipodi:absref='/gone/a.png'" + rest), links)
                    .startsWith(u"XML has no way to write "_s));
    EXPECT_EQ(Rewritten("<image href='a.png'" + rest, links), "<image href='a%10b.png'" + rest);
}

TEST_F(SvgRewriter, AnAbsolutePathBecomesAFileUri)
{
    EXPECT_EQ(Rewritten("<image href='a.png'/>", {L(u"image/href", u"D:/x y/a.png")}),
              "<image href='file:///D:/x%20y/a.png'/>");
}

TEST_F(SvgRewriter, ASecondRewriteDoesNothing)
{
    const Links links = {L(u"image/href", u"../Höhe & 木/50% #1?.png"),
                         L(u"rect/fill/url", u"(1).svg")};
    Rewritten("<image href='a.png'/><rect fill='url(b.svg#g)'/>", links);
    EXPECT_EQ(Read(m_file), links);
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.Touch(m_file, time);
    EXPECT_TRUE(Repath(m_file, links));
    EXPECT_EQ(tree.Modified(m_file), time);
}

TEST_F(SvgRewriter, ALinkWhoseOldNameIsAFolderBesideTheCopyIsRewritten)
{
    tree.Folder(u"plan/a"_s);
    EXPECT_EQ(Rewritten("<image href='a'/>", {L(u"image/href", u"b")}), "<image href='b'/>");
}

TEST_F(SvgRewriter, ACompressedDrawingStaysCompressed)
{
    using PluginKit::Compression;
    const auto packed = [](const QByteArray& text) {
        return QByteArray::fromStdString(
            PluginKit::Compressed(Compression::Gzip, text.toStdString()));
    };
    const QString name = u"a.svgz"_s;
    tree.File(name, packed(Svg("<image href='a.png'/>")));
    EXPECT_TRUE(Repath(name, {L(u"image/href", u"t/b.png")}));
    EXPECT_EQ(tree.Read(name), packed(Svg("<image href='t/b.png'/>")));
    EXPECT_EQ(tree.Contents().size(), 1);
}

TEST_F(SvgRewriter, AStyleSheetIsRewritten)
{
    const QString name = u"a.css"_s;
    tree.File(name, "@import 'b.css';\r\np { fill: url(c\\ d.svg#g) }");
    EXPECT_TRUE(Repath(name, {L(u"css/@import", u"x/ü.css"), L(u"css/url", u"y z.svg")}));
    EXPECT_EQ(tree.Read(name), "@import 'x/%C3%BC.css';\r\np { fill: url(y%20z.svg#g) }");
}

TEST_F(SvgRewriter, AnIdThatIsNotInTheFileFailsByNameAndNothingIsWritten)
{
    const QByteArray text = Svg("<image href='a.png'/>");
    tree.File(m_file, text);
    EXPECT_FALSE(Repath(m_file, {L(u"image/href", u"b.png"), L(u"image/href#2", u"c.png")}));
    EXPECT_EQ(context.lines, QStringList{u"ERROR Failed to rewrite the file links of %1: the file "
                                         "has no link image/href#2"_s.arg(tree.Path(m_file))});
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{m_file, text}}));
}

} // namespace Halvern::Test
