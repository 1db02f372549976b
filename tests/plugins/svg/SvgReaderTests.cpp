// SPDX-License-Identifier: Apache-2.0

#include "SvgFixture.h"

#include "pluginkit/Compression.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

using SvgReader = SvgFixture;

TEST_F(SvgReader, LinksOfElementsAreFoundWithAndWithoutAPrefix)
{
    EXPECT_EQ(LinksOf("<image href='t/a.png'/><g><image id='i' xlink:href=\"t/a.png\"/></g>"
                      "<use xlink:href='b.svg#part'/><image href='t/c.png'/><feImage href='d.png'/>"
                      "<a xlink:href='page.html'/><svg:image xmlns:svg='http://www.w3.org/2000/svg'"
                      " svg:href='e.png'/>"),
              (Links{L(u"image/href", u"t/a.png"), L(u"#i/xlink:href", u"t/a.png"),
                     L(u"use/xlink:href", u"b.svg"), L(u"image/href#2", u"t/c.png"),
                     L(u"feImage/href", u"d.png"), L(u"a/xlink:href", u"page.html"),
                     L(u"image/svg:href", u"e.png")}));
}

TEST_F(SvgReader, WhatNamesNoFileIsNoLink)
{
    tree.Folder(u"plan/folder"_s);
    EXPECT_EQ(LinksOf("<use href='#a'/><image href=''/><image href='data:image/png;base64,AA=='/>"
                      "<a href='https://example.com/a.svg'/><a href='mailto:x@example.com'/>"
                      "<a href='folder'/><a href='../'/>"
                      "<rect style='fill:url(#g);stroke:url(data:x)' fill='url(#h)'/>"
                      "<text>href='no.png' url(no.png)</text><!-- <image href='no.png'/> -->"),
              Links());
    EXPECT_TRUE(context.lines.isEmpty());
}

TEST_F(SvgReader, ADrawingThatNamesItselfByItsFileIsALink)
{
    EXPECT_EQ(LinksOf("<use href='a.svg#b'/><rect fill='url(./a.svg#g)'/>"),
              (Links{L(u"use/href", u"a.svg"), L(u"rect/fill/url", u"./a.svg")}));
}

TEST_F(SvgReader, IdsDoNotDependOnNeighboursThatAreNoLinks)
{
    EXPECT_EQ(LinksOf("<image href='data:,'/><image href='#x'/><image href='a.png'/>"),
              (Links{L(u"image/href#3", u"a.png")}));
}

TEST_F(SvgReader, StylesAreReadWhereverTheyStand)
{
    EXPECT_EQ(
        LinksOf("<rect id='r' style='fill:url(&quot;o.svg#g&quot;);mask:url(b.svg#m)'/>"
                "<rect fill='URL(c.svg#g) red' d='M 0 0'/>"
                "<style>@import 'd.css'; @font-face { src: url(e.ttf) }</style>"
                "<style id='s' type='text/css'><![CDATA[ p > q { fill: url('f &amp; g.svg') } ]]>"
                "</style><style type='text/plain'>url(no)</style><style/>"),
        (Links{L(u"#r/style/url", u"o.svg"), L(u"#r/style/url#2", u"b.svg"),
               L(u"rect/fill/url", u"c.svg"), L(u"style/@import", u"d.css"),
               L(u"style/url", u"e.ttf"), L(u"#s/url", u"f &amp; g.svg")}));
}

TEST_F(SvgReader, LinkedStyleSheetsAreFound)
{
    tree.File(m_file,
              "<?xml version='1.0'?><?xml-stylesheet type=\"text/css\" href='a &amp; b.css' ?>"
              "<?xml-stylesheet href = \"c.xsl\"?><?xml-stylesheet broken href?>"
              "<?other href='no'?><svg/>");
    EXPECT_EQ(Read(m_file), (Links{L(u"xml-stylesheet/href", u"a & b.css"),
                                   L(u"xml-stylesheet/href#2", u"c.xsl")}));
}

TEST_F(SvgReader, AddressesAreDecoded)
{
    tree.File(u"plan/50%20.png"_s);
    EXPECT_EQ(LinksOf("<image href=' H%C3%B6he%20&amp;%231.png '/><image href='Höhe &#x26;2.png'/>"
                      "<image href='file:///D:/x/a%20b.png'/><image href='file:c.png?x=1#y'/>"
                      "<image href='50%20.png'/>"),
              (Links{L(u"image/href", u"Höhe &#1.png"), L(u"image/href#2", u"Höhe &2.png"),
                     L(u"image/href#3", u"D:/x/a b.png"), L(u"image/href#4", u"c.png"),
                     L(u"image/href#5", u"50%20.png")}));
}

TEST_F(SvgReader, EntitiesOfTheDocumentTypeAreReplacedInAddresses)
{
    tree.File(m_file,
              "<!DOCTYPE svg [<!ENTITY dir 'x/y'><!ENTITY ns 'http://www.w3.org/2000/svg'>]>"
              "<svg xmlns='&ns;'><image href='&dir;/a.png'/><use href='&ns;'/></svg>");
    EXPECT_EQ(Read(m_file), (Links{L(u"image/href", u"x/y/a.png")}));
}

TEST_F(SvgReader, TheAbsoluteNameIsTakenWhenOnlyThatOneLeadsAnywhere)
{
    tree.File(u"far/a.png"_s);
    const QByteArray far = tree.Path(u"far/a.png"_s).toUtf8();
    const QByteArray image =
        "<image xlink:href='old/a.png' sodipodi:absref='" + far + "' xmlns:sodipodi='s'/>";
    EXPECT_EQ(LinksOf(image), (Links{{u"image/xlink:href"_s, QString::fromUtf8(far)}}));
    tree.File(u"plan/old/a.png"_s);
    EXPECT_EQ(LinksOf(image), (Links{L(u"image/xlink:href", u"old/a.png")}));
}

TEST_F(SvgReader, CompressedDrawingsAreReadWhateverTheirName)
{
    const std::string text = Svg("<image href='a.png'/>").toStdString();
    const std::string packed = PluginKit::Compressed(PluginKit::Compression::Gzip, text);
    for (const QString& name : {u"b.svgz"_s, u"c.svg"_s}) {
        tree.File(name, QByteArray::fromStdString(packed));
        EXPECT_EQ(Read(name), (Links{L(u"image/href", u"a.png")}));
    }
    tree.File(u"d.svgz"_s, QByteArray::fromStdString(text));
    EXPECT_EQ(Read(u"d.svgz"_s), (Links{L(u"image/href", u"a.png")}));
}

TEST_F(SvgReader, StyleSheetsAreReadAsFiles)
{
    const QString name = u"s/a.CSS"_s;
    tree.File(name,
              "@charset \"UTF-8\"; @import 'b.css'; p { fill: url(../c.svg#g) } /* url(no) */");
    EXPECT_EQ(Read(name), (Links{L(u"css/@import", u"b.css"), L(u"css/url", u"../c.svg")}));
    tree.File(name, "");
    EXPECT_EQ(Read(name), Links());
}

TEST_F(SvgReader, ReadingChangesNeitherBytesNorTimes)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(m_file, Svg("<image href='a.png'/>")).Touch(m_file, time);
    const FileTree::Snapshot before = tree.Contents();
    Read(m_file);
    EXPECT_EQ(tree.Contents(), before);
    EXPECT_EQ(tree.Modified(m_file), time);
}

TEST_F(SvgReader, ATagOfAnyNumberOfAttributesIsRead)
{
    // Going through all of them for each of them would take minutes.
    QByteArray attributes;
    for (int i = 0; i < 400'000; ++i)
        attributes += " a" + QByteArray::number(i) + "=''";
    EXPECT_EQ(LinksOf("<image" + attributes + " href='a.png' id='i'/>"),
              (Links{L(u"#i/href", u"a.png")}));
}

TEST_F(SvgReader, TensOfThousandsOfLinksAreAllRead)
{
    QByteArray elements;
    for (int i = 0; i < 50'000; ++i)
        elements += "<image href='" + QByteArray::number(i) + ".png'/>";
    const Links links = LinksOf(elements);
    ASSERT_EQ(links.size(), 50'000);
    EXPECT_EQ(links.last(), L(u"image/href#50000", u"49999.png"));
}

} // namespace Halvern::Test
