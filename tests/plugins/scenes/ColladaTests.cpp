// SPDX-License-Identifier: Apache-2.0

#include "ScenesFixture.h"

namespace Halvern::Test {

using ColladaDocuments = ScenesFixture;

namespace {

const QString File = u"plan/a.dae"_s;

} // namespace

TEST_F(ColladaDocuments, ImagesOfBothVersionsAndOfTheFirstOneAreLinks)
{
    EXPECT_EQ(
        LinksOf(File,
                Collada("<image id='wood'><init_from> ../H%C3%B6he.png\n</init_from></image>"
                        "<image id='new'><init_from><ref>b.png</ref></init_from></image>"
                        "<image id='cube'><create_cube><init_from face='POSITIVE_X'><ref>c.dds"
                        "</ref></init_from></create_cube></image>"
                        "<image id='old' source='d.png'/><image><init_from>e.png"
                        "</init_from></image>")),
        (Links{L(u"#wood/init_from", u"../Höhe.png"), L(u"#new/init_from", u"b.png"),
               L(u"#cube/init_from", u"c.dds"), L(u"#old/image/source", u"d.png"),
               L(u"init_from", u"e.png")}));
}

TEST_F(ColladaDocuments, AnImagesIdIsNoFile)
{
    EXPECT_EQ(LinksOf(File, Collada("<effect><newparam sid='s'><surface type='2D'><init_from>wood"
                                    "</init_from></surface></newparam></effect>")),
              Links());
}

TEST_F(ColladaDocuments, ElementsOfOtherDocumentsAreLinksAndThoseOfThisOneAreNot)
{
    EXPECT_EQ(
        LinksOf(
            File,
            Collada(
                "<node id='n'><instance_geometry url='lib/g.dae#mesh'><bind_material>"
                "<technique_common><instance_material symbol='m' target='m.dae#oak'/>"
                "<instance_material symbol='m' target='#oak'/></technique_common></bind_material>"
                "</instance_geometry><instance_node url='lib/g.dae#chair' proxy='p.dae#x'/>"
                "<instance_controller url='#c'><skeleton>s.dae#root</skeleton><skeleton>#r"
                "</skeleton></instance_controller></node>"
                "<channel source='#s' target='cube/rotateX.ANGLE'/><include sid='i' url='a.cg'/>")),
        (Links{L(u"#n/instance_geometry/url", u"lib/g.dae"),
               L(u"#n/instance_material/target", u"m.dae"),
               L(u"#n/instance_node/url", u"lib/g.dae"), L(u"#n/instance_node/proxy", u"p.dae"),
               L(u"#n/skeleton", u"s.dae"), L(u"include/url", u"a.cg")}));
}

TEST_F(ColladaDocuments, EqualPathsHaveIdsOfTheirOwn)
{
    const QByteArray text = Collada("<node id='n'><instance_node url='g.dae#a'/><instance_node "
                                    "url='g.dae#b'/></node>");
    EXPECT_EQ(LinksOf(File, text), (Links{L(u"#n/instance_node/url", u"g.dae"),
                                          L(u"#n/instance_node/url#2", u"g.dae")}));
    EXPECT_EQ(Rewritten(File, text, {L(u"#n/instance_node/url#2", u"h.dae")}),
              QByteArray(text).replace("g.dae#b", "h.dae#b"));
}

TEST_F(ColladaDocuments, AddressesOfEveryKindAreRead)
{
    EXPECT_EQ(
        LinksOf(File,
                Collada("<image id='1'><init_from>file:///D:/a%20b/c.png</init_from></image>"
                        "<image id='2'><init_from>file:///home/x/c&amp;d.png</init_from></image>"
                        "<image id='3'><init_from>tex\\wood.png</init_from></image>"
                        "<image id='4'><init_from><![CDATA[R&D.png]]></init_from></image>"
                        "<image id='5'><init_from>http://x/y.png</init_from></image>"
                        "<image id='6'><init_from>data:image/png;base64,xx</init_from></image>"
                        "<image id='7'><init_from/></image><image id='8'><init_from>"
                        "50%25%20#1 100%.png</init_from></image>")),
        (Links{L(u"#1/init_from", u"D:/a b/c.png"), L(u"#2/init_from", u"/home/x/c&d.png"),
               L(u"#3/init_from", u"tex/wood.png"), L(u"#4/init_from", u"R&D.png"),
               L(u"#8/init_from", u"50% #1 100%.png")}));
}

TEST_F(ColladaDocuments, OnlyTheBytesOfTheAddressChange)
{
    const QByteArray text =
        Collada("<image  id = 'w'>\r\n<init_from> old.png </init_from></image>"
                "<!-- old.png --><image id='c'><init_from><![CDATA[old.png]]>"
                "</init_from></image><node><instance_node url=\"old.dae?q#p&#97;rt\"/></node>");
    EXPECT_EQ(Rewritten(File, text,
                        {L(u"#w/init_from", u"../Höhe & 木/neu's #1.png"),
                         L(u"#c/init_from", u"R&D.png"), L(u"instance_node/url", u"n & m.dae")}),
              QByteArray(text)
                  .replace("> old.png <", "> ../H%C3%B6he%20%26%20%E6%9C%A8/neu's%20%231.png <")
                  .replace("[old.png]", "[R%26D.png]")
                  .replace("old.dae", "n%20&amp;%20m.dae"));
    EXPECT_EQ(Read(File),
              (Links{L(u"#w/init_from", u"../Höhe & 木/neu's #1.png"),
                     L(u"#c/init_from", u"R&D.png"), L(u"instance_node/url", u"n & m.dae")}));
}

TEST_F(ColladaDocuments, WhatProgramsNoteForThemselvesIsNoLink)
{
    EXPECT_EQ(LinksOf(File, Collada("<asset><contributor><source_data>file:///C:/a.max"
                                    "</source_data></contributor></asset><extra><technique "
                                    "profile='x'><a url='b.png'/></technique></extra>"
                                    "<image source='c.png'/>")),
              (Links{L(u"image/source", u"c.png")}));
}

TEST_F(ColladaDocuments, ABaseCountsAndGoesWhereItIsInTheWay)
{
    const auto text = [](const QByteArray& base, const QByteArray& a, const QByteArray& b) {
        return "<COLLADA xml:base='" + base + "'><image id='a'><init_from>" + a +
               "</init_from></image><image id='b'><init_from>" + b +
               "</init_from></image></COLLADA>";
    };
    const QByteArray before = text("../lib/x.dae", "wood.png", "s/oak.png");
    EXPECT_EQ(LinksOf(File, before), (Links{L(u"#a/init_from", u"../lib/wood.png"),
                                            L(u"#b/init_from", u"../lib/s/oak.png")}));
    EXPECT_EQ(Rewritten(File, before, {L(u"#a/init_from", u"../lib/new/a.png")}),
              text("../lib/x.dae", "new/a.png", "s/oak.png"));
    EXPECT_EQ(Rewritten(File, before, {L(u"#a/init_from", u"lib/a.png")}),
              text("", "lib/a.png", "../lib/s/oak.png"));
    EXPECT_EQ(LinksOf(File, text("http://x/", "wood.png", "file:///b.png")),
              (Links{L(u"#b/init_from", u"/b.png")}));
}

TEST_F(ColladaDocuments, OtherEncodingsStay)
{
    const QByteArray text = "<?xml version='1.0' encoding='ISO-8859-1'?><COLLADA><image id='\xE4'>"
                            "<init_from>H\xF6he.png</init_from></image></COLLADA>";
    EXPECT_EQ(LinksOf(File, text), (Links{L(u"#ä/init_from", u"Höhe.png")}));
    EXPECT_EQ(Rewritten(File, text, {L(u"#ä/init_from", u"b.png")}),
              QByteArray(text).replace("H\xF6he.png", "b.png"));
}

TEST_F(ColladaDocuments, AnAddressWithPartsBetweenMarkupIsNotRewritten)
{
    const QByteArray text =
        Collada("<image id='i'><init_from>a<!-- x -->b.png</init_from></image>");
    EXPECT_EQ(LinksOf(File, text), (Links{L(u"#i/init_from", u"ab.png")}));
    EXPECT_EQ(RewriteFailure(File, text, {L(u"#i/init_from", u"c.png")}).toStdString(),
              "link #i/init_from is made of entities or of several parts, which stay as they are");
}

} // namespace Halvern::Test
