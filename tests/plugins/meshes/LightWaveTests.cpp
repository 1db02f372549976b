// SPDX-License-Identifier: Apache-2.0

#include "MeshesFixture.h"

namespace Halvern::Test {

using LightWaveObjects = MeshesFixture;

namespace {

const QString File = u"a.lwo"_s;

} // namespace

TEST_F(LightWaveObjects, PicturesAndFilmsOfClipsAreLinks)
{
    EXPECT_EQ(
        LinksOf(File,
                LightWave("LWO2", Part("PNTS", "abc", 4) +
                                      Clip(1, Part("STIL", Name("Images/a.tga"), 2) +
                                                  Part("CONT", "abcd", 2)) +
                                      Clip(2, Part("STIL", Name("C:img/b.png"), 2)) +
                                      Clip(2, Part("STIL", Name("b.png"), 2)) +
                                      Clip(3, Part("ANIM", Name("f.avi") + Name("s") + "xy", 2)) +
                                      Clip(4, Part("STCC", "abcd" + Name("c.iff"), 2)))),
        (Links{L(u"clip 1/STIL", u"Images/a.tga"), L(u"clip 2/STIL", u"C:/img/b.png"),
               L(u"clip 2/STIL#2", u"b.png"), L(u"clip 3/ANIM", u"f.avi"),
               L(u"clip 4/STCC", u"c.iff")}));
}

TEST_F(LightWaveObjects, PicturesOfOldSurfacesAreLinks)
{
    const auto surface = [](const QByteArray& name, const QByteArray& a, const QByteArray& b) {
        return Part("SURF",
                    Name(name) + Part("COLR", "abcd", 2) + Part("CTEX", Name("Planar"), 2) +
                        Part("TIMG", Name(a), 2) + Part("BTEX", Name("Planar"), 2) +
                        Part("TIMG", Name(b), 2) + Part("RIMG", Name("(none)"), 2),
                    4);
    };
    const QByteArray before = LightWave("LWOB", surface("Oak", "a.iff", "b.iff") +
                                                    surface("Oak", "a.iff", "s.001 (sequence)"));
    EXPECT_EQ(LinksOf(File, before),
              (Links{L(u"Oak/CTEX/TIMG", u"a.iff"), L(u"Oak/BTEX/TIMG", u"b.iff"),
                     L(u"Oak/CTEX/TIMG#2", u"a.iff")}));
    EXPECT_EQ(Rewritten(File, before,
                        {L(u"Oak/CTEX/TIMG", u"x/aa.iff"), L(u"Oak/BTEX/TIMG", u"y/b.iff")}),
              LightWave("LWOB", surface("Oak", "x/aa.iff", "y/b.iff") +
                                    surface("Oak", "a.iff", "s.001 (sequence)")));
}

TEST_F(LightWaveObjects, LengthsFollowAndEverythingStaysOnEvenPlaces)
{
    const auto object = [](const QByteArray& a, const QByteArray& b) {
        return LightWave("LWO2", Clip(1, Part("STIL", Name(a), 2) + Part("FLAG", "abc", 2)) +
                                     Part("PNTS", "abc", 4) + Clip(2, Part("STIL", Name(b), 2)));
    };
    const QByteArray before = object("a.tga", "b.tga");
    EXPECT_EQ(Rewritten(File, before, {L(u"clip 1/STIL", u"../n/a.tga")}),
              object("../n/a.tga", "b.tga"));
    EXPECT_EQ(Rewritten(File, before, {L(u"clip 1/STIL", u"../nn/a.tga"), L(u"clip 2/STIL", u"b")}),
              object("../nn/a.tga", "b"));
    EXPECT_EQ(Read(File), (Links{L(u"clip 1/STIL", u"../nn/a.tga"), L(u"clip 2/STIL", u"b")}));
}

TEST_F(LightWaveObjects, APartThatIsNotPaddedAsItShouldBeKeepsItsPlace)
{
    const auto object = [](const QByteArray& name) {
        return LightWave("LWO2", Clip(1, Part("STIL", name, 2)) + Part("PNTS", "ab", 4));
    };
    // Five bytes, and one outside of the part.
    EXPECT_EQ(Rewritten(File, object(Text("a.pn")), {L(u"clip 1/STIL", u"aa.pn")}),
              object(Text("aa.pn") + '\0'));
}

} // namespace Halvern::Test
