// SPDX-License-Identifier: Apache-2.0

#include "MeshesFixture.h"

namespace Halvern::Test {

using ThreeDsFiles = MeshesFixture;

TEST_F(ThreeDsFiles, PicturesOfMaterialsTheBackgroundAndProjectorsAreLinks)
{
    const QByteArray lamp = Chunk(
        0x4000, Text("Lamp") + Chunk(0x4600, QByteArray(12, 'p') +
                                                 Chunk(0x4610, QByteArray(20, 't') +
                                                                   Chunk(0x4653, Text("p.tga")))));
    EXPECT_EQ(LinksOf(u"a.3ds"_s,
                      ThreeDs(Chunk(0x1100, Text("sky.bmp")) + Material("Oak", 0xA200, "OAK.JPG") +
                              Material("Oak", 0xA200, "OAK.JPG") +
                              Material("H\xF6he", 0xA230, "tex\\H\xF6he.png") +
                              Material("None", 0xA200, "") + lamp)),
              (Links{L(u"background", u"sky.bmp"), L(u"Oak/texture", u"OAK.JPG"),
                     L(u"Oak/texture#2", u"OAK.JPG"), L(u"Höhe/bump", u"tex/Höhe.png"),
                     L(u"Lamp/projector", u"p.tga")}));
}

TEST_F(ThreeDsFiles, LengthsUpTheTreeFollowTheNames)
{
    const auto file = [](const QByteArray& a, const QByteArray& b, const QByteArray& c) {
        return ThreeDs(Material("A", 0xA200, a) + Material("B", 0xA33E, b) +
                       Chunk(0x1100, Text(c)));
    };
    EXPECT_EQ(Rewritten(u"a.3ds"_s, file("a.png", "b.png", "c.png"),
                        {L(u"A/texture", u"../long path/Höhe 木.png"), L(u"background", u"c")}),
              file("../long path/Höhe 木.png", "b.png", "c"));
    EXPECT_EQ(Read(u"a.3ds"_s), (Links{L(u"A/texture", u"../long path/Höhe 木.png"),
                                       L(u"B/texture mask", u"b.png"), L(u"background", u"c")}));
}

TEST_F(ThreeDsFiles, ANameInLatin1StaysInIt)
{
    EXPECT_EQ(Rewritten(u"a.3ds"_s, ThreeDs(Material("A", 0xA200, "H\xF6he.png")),
                        {L(u"A/texture", u"n/Höhe.png")}),
              ThreeDs(Material("A", 0xA200, "n/H\xF6he.png")));
}

TEST_F(ThreeDsFiles, WhatFollowsTheMainChunkStays)
{
    const QByteArray rest("rest\0\1", 6);
    EXPECT_EQ(Rewritten(u"a.3ds"_s, ThreeDs(Material("A", 0xA200, "a.png")) + rest,
                        {L(u"A/texture", u"longer.png")}),
              ThreeDs(Material("A", 0xA200, "longer.png")) + rest);
}

} // namespace Halvern::Test
