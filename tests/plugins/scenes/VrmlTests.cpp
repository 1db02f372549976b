// SPDX-License-Identifier: Apache-2.0

#include "ScenesFixture.h"

namespace Halvern::Test {

using VrmlScenes = ScenesFixture;

namespace {

const QString File = u"plan/a.wrl"_s;

} // namespace

TEST_F(VrmlScenes, AddressesOfNodesAreLinksOneByOne)
{
    EXPECT_EQ(
        LinksOf(File, Vrml("DEF Kitchen Inline { url [ \"k.wrl#View\", \"../far/k.wrl\"\n"
                           "\"http://x/k.wrl\" ] } Shape { appearance Appearance { texture DEF T "
                           "ImageTexture { repeatS FALSE url \"H%C3%B6he 1.png\" } } }\n"
                           "# url \"comment.png\"\nMovieTexture { url \"a.mpg\" } "
                           "Sound { source AudioClip { description \"x.wav\" url \"a.wav\" } }"
                           "Background { frontUrl \"f.png\" backUrl [\"f.png\"] }")),
        (Links{L(u"#Kitchen/url", u"k.wrl"), L(u"#Kitchen/url#2", u"../far/k.wrl"),
               L(u"#T/url", u"Höhe 1.png"), L(u"MovieTexture/url", u"a.mpg"),
               L(u"AudioClip/url", u"a.wav"), L(u"Background/frontUrl", u"f.png"),
               L(u"Background/backUrl", u"f.png")}));
}

TEST_F(VrmlScenes, PrototypesAndScriptsAreLinksUnlessTheyAreInside)
{
    EXPECT_EQ(
        LinksOf(File,
                Vrml("EXTERNPROTO Door [ field SFFloat a exposedField MFString url ] "
                     "\"door.wrl#Door\"\n"
                     "EXTERNPROTO Lamp [ ] [ \"lamp.wrl\" \"urn:inet:x\" ]\n"
                     "PROTO Wall [ field MFString url [ \"w.png\" ] eventIn MFString set_url ] "
                     "{ ImageTexture { url IS url } Text { string \"t.png\" } }\n"
                     "DEF S Script { field MFString pictureUrl \"p.png\" url [ \"s.js\" "
                     "\"javascript:\nfunction f() { url = 'a'; }\" \"vrmlscript: g()\" ] }")),
        (Links{L(u"#Door/EXTERNPROTO", u"door.wrl"), L(u"#Lamp/EXTERNPROTO", u"lamp.wrl"),
               L(u"Wall/url", u"w.png"), L(u"#S/pictureUrl", u"p.png"), L(u"#S/url", u"s.js")}));
}

TEST_F(VrmlScenes, OnlyTheBytesOfTheAddressChange)
{
    const QByteArray text = Vrml(
        "Inline {url[\"a.wrl\"  \"a.wrl#x\"]}#a.wrl\r\nDEF I Inline { url \"t\\\\a\\\"b.wrl\" }");
    EXPECT_EQ(
        Rewritten(File, text, {L(u"Inline/url#2", u"../n m/\"q\".wrl"), L(u"#I/url", u"b.wrl")}),
        QByteArray(text)
            .replace("a.wrl#x", "../n m/%22q%22.wrl#x")
            .replace("t\\\\a\\\"b.wrl", "b.wrl"));
    EXPECT_EQ(Read(File), (Links{L(u"Inline/url", u"a.wrl"),
                                 L(u"Inline/url#2", u"../n m/\"q\".wrl"), L(u"#I/url", u"b.wrl")}));
}

TEST_F(VrmlScenes, TheFirstVersionNamesFilesInFieldsOfItsOwn)
{
    const QByteArray text = OldVrml(
        "DEF Top Separator { WWWInline { name \"i.wrl\" bboxSize 1 1 1 } DEF Wood Texture2 { "
        "filename \"w.png\" } Texture2 { filename bare.png wrapS CLAMP } WWWAnchor { name "
        "\"http://x/\" Info { string \"name.png\" } } File { name iv/x.iv } Info { name "
        "\"no.png\" } }");
    EXPECT_EQ(LinksOf(File, text),
              (Links{L(u"WWWInline/name", u"i.wrl"), L(u"#Wood/filename", u"w.png"),
                     L(u"Texture2/filename", u"bare.png"), L(u"File/name", u"iv/x.iv")}));
    EXPECT_EQ(Rewritten(File, text,
                        {L(u"Texture2/filename", u"a b.png"), L(u"WWWInline/name", u"j.wrl")}),
              QByteArray(text).replace("bare.png", "\"a b.png\"").replace("i.wrl", "j.wrl"));
}

TEST_F(VrmlScenes, TheClassicEncodingOfX3dIsRead)
{
    EXPECT_EQ(LinksOf(u"a.x3dv"_s,
                      "#X3D V3.3 utf8\nPROFILE Immersive\nMETA \"title\" \"a.x3dv\"\n"
                      "IMPORT Kitchen.Door AS D\nShape { appearance Appearance { texture "
                      "ImageTexture { url \"a.png\" } shaders ComposedShader { parts ShaderPart { "
                      "url \"s.frag\" } inputOutput MFString iconUrl [ \"i.png\" ] } } }"),
              (Links{L(u"ImageTexture/url", u"a.png"), L(u"ShaderPart/url", u"s.frag"),
                     L(u"ComposedShader/iconUrl", u"i.png")}));
}

TEST_F(VrmlScenes, ACompressedSceneStaysCompressed)
{
    for (const QString& name : {u"a.wrl"_s, u"a.wrz"_s})
        EXPECT_EQ(
            Rewritten(name, Packed(Vrml("Inline { url \"a.wrl\" }")), {L(u"Inline/url", u"b.wrl")}),
            Packed(Vrml("Inline { url \"b.wrl\" }")));
}

TEST_F(VrmlScenes, NamesThatAreNoUtf8AreReadAsLatin1)
{
    EXPECT_EQ(LinksOf(File, Vrml("DEF K\xFC Inline { url \"H\xF6he.wrl\" }")),
              (Links{L(u"#Kü/url", u"Höhe.wrl")}));
}

} // namespace Halvern::Test
