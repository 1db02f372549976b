// SPDX-License-Identifier: Apache-2.0

#include "MeshesFixture.h"

namespace Halvern::Test {

using PlyFiles = MeshesFixture;

namespace {

QByteArray Ply(const QByteArray& comments, const QByteArray& end = "\n")
{
    return "ply" + end + "format binary_little_endian 1.0" + end + comments + "element vertex 1" +
           end + "property float x" + end + "end_header" + end +
           QByteArray("\0\0comment TextureFile body.png\n", 31);
}

} // namespace

TEST_F(PlyFiles, CommentsOfTheHeaderNamePictures)
{
    EXPECT_EQ(
        LinksOf(u"a.ply"_s, Ply("comment VCGLIB generated\ncomment TextureFile a b.png\n"
                                "comment TextureFile a b.png \ncomment texturefile\ttex\\c.png\n"
                                "comment TextureFile\nobj_info TextureFile d.png\n")),
        (Links{L(u"TextureFile", u"a b.png"), L(u"TextureFile#2", u"a b.png"),
               L(u"TextureFile#3", u"tex/c.png")}));
}

TEST_F(PlyFiles, OnlyTheNameChangesWhateverEndsALine)
{
    for (const QByteArray& end : {QByteArray("\n"), QByteArray("\r\n"), QByteArray("\r")})
        EXPECT_EQ(Rewritten(u"a.ply"_s, Ply("comment  TextureFile  a.png " + end, end),
                            {L(u"TextureFile", u"../Höhe 1/a.png")}),
                  Ply("comment  TextureFile  ../Höhe 1/a.png " + end, end));
}

TEST_F(PlyFiles, ANameThatALineCannotHoldIsNotWritten)
{
    EXPECT_EQ(RewriteFailure(u"a.ply"_s, Ply("comment TextureFile a.png\n"),
                             {L(u"TextureFile", u"a\nb.png")})
                  .toStdString(),
              "a line of this format cannot name a\nb.png (byte 56)");
}

} // namespace Halvern::Test
