// SPDX-License-Identifier: Apache-2.0

#include "MeshesFixture.h"

namespace Halvern::Test {

using DirectXFiles = MeshesFixture;

namespace {

const QString File = u"a.x"_s;
const QByteArray TextHead = "xof 0303txt 0032\n";
const QByteArray BinaryHead = "xof 0303bin 0032";

} // namespace

TEST_F(DirectXFiles, PicturesAndEffectsAreLinks)
{
    const QByteArray text =
        TextHead +
        "template TextureFilename { <A42790E1-7810-11cf-8F52-0040333594A3> STRING filename; }\n"
        "// TextureFilename { \"comment.png\"; }\n# TextureFilename { \"c.png\"; }\n"
        "Frame Root { Mesh { 3; 0.5;-1.0;2.0;, 1; MeshMaterialList { 1; Material Oak { 1.0;; "
        "TextureFilename { \"a.png\"; } } Material { TextureFileName Tex1 "
        "{\"tex\\\\H\xF6he.png\";} "
        "EffectInstance { \"e.fx\"; EffectParamString { \"Texture0\"; \"a.png\"; } "
        "EffectParamString { \"Name\"; \"none\"; } } } } } }\n";
    tree.File(u"a.png"_s);
    EXPECT_EQ(LinksOf(File, text), (Links{L(u"texture", u"a.png"), L(u"texture#2", u"tex/Höhe.png"),
                                          L(u"effect", u"e.fx"), L(u"parameter", u"a.png")}));
    EXPECT_EQ(Rewritten(File, text,
                        {L(u"texture#2", u"b ö.png"), L(u"parameter", u"../n/a.png"),
                         L(u"parameter#2", u"x.png")}),
              QByteArray(text)
                  .replace("tex\\\\H\xF6he.png", "b \xF6.png")
                  .replace("\"Texture0\"; \"a.png\"", "\"Texture0\"; \"../n/a.png\"")
                  .replace("\"none\"", "\"x.png\""));
}

TEST_F(DirectXFiles, BinaryFilesAreRead)
{
    const auto file = [](const QByteArray& a, const QByteArray& b) {
        return BinaryHead + Token(31) + NameToken("T") + Token(10) + Token(5) +
               QByteArray(16, 'g') + Token(49) + NameToken("filename") + Token(20) + Token(11) +
               NameToken("Mesh") + Token(10) + Token(6) + Number(2, 4, false) + QByteArray(8, 'i') +
               Token(7) + Number(3, 4, false) + QByteArray(12, 'f') + BinaryTexture(a) +
               BinaryTexture(b) + Token(3) + QByteArray(4, 'n') + Token(11);
    };
    EXPECT_EQ(LinksOf(File, file("a.png", "C:\\x\\a.png")),
              (Links{L(u"texture", u"a.png"), L(u"texture#2", u"C:/x/a.png")}));
    EXPECT_EQ(Rewritten(File, file("a.png", "a.png"), {L(u"texture#2", u"../long/木.png")}),
              file("a.png", "../long/木.png"));
}

TEST_F(DirectXFiles, FilesOfOtherProgramsHaveNoLinks)
{
    for (const QByteArray& content : {QByteArray(), QByteArray("xo"),
                                      QByteArray("program P { version V { void A(void) = 1; } = 1; "
                                                 "} = 1;\n/* TextureFilename { \"a.png\" } */")}) {
        EXPECT_EQ(LinksOf(File, content), Links()) << content.toStdString();
        EXPECT_EQ(RewriteFailure(File, content, {L(u"texture", u"b.png")}).toStdString(),
                  "the file has no link texture");
    }
}

TEST_F(DirectXFiles, AStringThatTextCannotHoldIsNotWritten)
{
    EXPECT_EQ(RewriteFailure(File, TextHead + "TextureFilename {\"a.png\";}",
                             {L(u"texture", u"a\"b.png")})
                  .toStdString(),
              "a string of this format cannot name a\"b.png (byte 35)");
}

} // namespace Halvern::Test
