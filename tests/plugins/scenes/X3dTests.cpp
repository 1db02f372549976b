// SPDX-License-Identifier: Apache-2.0

#include "ScenesFixture.h"

namespace Halvern::Test {

using X3dScenes = ScenesFixture;

namespace {

const QString File = u"plan/a.x3d"_s;

} // namespace

TEST_F(X3dScenes, EveryAddressOfAListIsALinkUnlessItIsOnTheWeb)
{
    EXPECT_EQ(
        LinksOf(File, X3d("<Inline DEF='Kitchen' url='\"k.x3d#View\"\n \"../far/k.x3d\","
                          "\"https://x.org/k.x3d\"'/>"
                          "<ImageTexture url='&quot;H%C3%B6he &amp; 1.png&quot;'/>"
                          "<ImageTexture url='plain.png'/>"
                          "<Background frontUrl='\"f.png\"' backUrl='\"f.png\"'/>")),
        (Links{L(u"#Kitchen/url", u"k.x3d"), L(u"#Kitchen/url#2", u"../far/k.x3d"),
               L(u"ImageTexture/url", u"Höhe & 1.png"), L(u"ImageTexture/url#2", u"plain.png"),
               L(u"Background/frontUrl", u"f.png"), L(u"Background/backUrl", u"f.png")}));
}

TEST_F(X3dScenes, FilmsSoundsPrototypesScriptsAndShadersAreLinks)
{
    EXPECT_EQ(LinksOf(File, X3d("<MovieTexture url='\"a.mp4\"'/><AudioClip url='\"a.ogg\"'/>"
                                "<ExternProtoDeclare name='P' url='\"p.x3d#P\"'><field name='url' "
                                "type='MFString' accessType='inputOutput'/></ExternProtoDeclare>"
                                "<ProtoInstance name='P'><fieldValue name='url' value='\"v.png\"'/>"
                                "<fieldValue name='title' value='\"t.png\"'/></ProtoInstance>"
                                "<Script url='\"s.js\" \"ecmascript: f()\" \"javascript:g()\"'/>"
                                "<ShaderPart url='\"s.frag\"'/><Anchor url='\"#Here\"'/>"
                                "<Anchor url='\"other.x3d\"'/>")),
              (Links{L(u"MovieTexture/url", u"a.mp4"), L(u"AudioClip/url", u"a.ogg"),
                     L(u"ExternProtoDeclare/url", u"p.x3d"), L(u"fieldValue/url", u"v.png"),
                     L(u"Script/url", u"s.js"), L(u"ShaderPart/url", u"s.frag"),
                     L(u"Anchor/url#2", u"other.x3d")}));
}

TEST_F(X3dScenes, OnlyTheBytesOfTheAddressChange)
{
    const QByteArray text =
        X3d("<ImageTexture  DEF='T' url = '\"a.png\"\r\n\t\"a.png#x\" \"http://x/a.png\"'/>"
            "<ImageTexture url=\"&quot;a.png&quot;\"/><!-- a.png -->");
    EXPECT_EQ(
        Rewritten(File, text,
                  {L(u"#T/url#2", u"../n & m/\"q\" 'r'.png"), L(u"ImageTexture/url", u"b.png")}),
        QByteArray(text)
            .replace("\"a.png#x\"", "\"../n &amp; m/%22q%22 &apos;r&apos;.png#x\"")
            .replace("&quot;a.png&quot;", "&quot;b.png&quot;"));
    EXPECT_EQ(Read(File), (Links{L(u"#T/url", u"a.png"), L(u"#T/url#2", u"../n & m/\"q\" 'r'.png"),
                                 L(u"ImageTexture/url", u"b.png")}));
}

TEST_F(X3dScenes, AnAddressIsEncodedWhereItWas)
{
    const QByteArray text = X3d("<Inline url='\"a%20b.x3d\" \"c.x3d\"'/>");
    const auto* const path = u"ä ö/50% %25 #1.x3d";
    EXPECT_EQ(Rewritten(File, text, {L(u"Inline/url", path), L(u"Inline/url#2", path)}),
              X3d("<Inline url='\"%C3%A4%20%C3%B6/50%25%20%2525%20%231.x3d\" "
                  "\"ä ö/50% %2525 %231.x3d\"'/>"));
    EXPECT_EQ(Read(File), (Links{L(u"Inline/url", path), L(u"Inline/url#2", path)}));
}

TEST_F(X3dScenes, AShaderOrAPictureInsideOfTheSceneIsNoLink)
{
    const QByteArray picture = "data:image/png;base64," + QByteArray(200'000, 'A');
    EXPECT_EQ(LinksOf(File, X3d("<ShaderPart url='\"void main()&#10;{ }\"'/><ShaderPart><![CDATA[\n"
                                "ecmascript: \"a.png\" ]]></ShaderPart><ImageTexture url='\"" +
                                picture + "\" \"b.png\"'/>")),
              (Links{L(u"ImageTexture/url#2", u"b.png")}));
}

TEST_F(X3dScenes, EscapesInAStringAreRead)
{
    const QByteArray text = X3d("<Inline url='\"a\\\\b.x3d\" \"c.x3d\"'/>");
    EXPECT_EQ(LinksOf(File, text),
              (Links{L(u"Inline/url", u"a/b.x3d"), L(u"Inline/url#2", u"c.x3d")}));
    EXPECT_EQ(Rewritten(File, text, {L(u"Inline/url", u"d.x3d")}),
              QByteArray(text).replace("a\\\\b.x3d", "d.x3d"));
}

TEST_F(X3dScenes, AnEntityOfTheDocumentTypeStays)
{
    const QByteArray text =
        "<!DOCTYPE X3D [<!ENTITY dir 'x/y'>]><X3D><Inline url='\"&dir;/a.x3d\"'/></X3D>";
    EXPECT_EQ(LinksOf(File, text), (Links{L(u"Inline/url", u"x/y/a.x3d")}));
    EXPECT_EQ(RewriteFailure(File, text, {L(u"Inline/url", u"b.x3d")}).toStdString(),
              "link Inline/url is made of entities or of several parts, which stay as they are");
}

TEST_F(X3dScenes, WhatAFileIsTheContentTells)
{
    const QByteArray xml = X3d("<Inline url='\"a.wrl\"'/>");
    const QByteArray classic = "#X3D V3.3 utf8\nInline { url \"a.wrl\" }";
    const Links links{L(u"Inline/url", u"a.wrl")};
    for (const char16_t* name : {u"a.x3d", u"a.x3dv", u"a.x3dz", u"a.wrl", u"a.WRZ"}) {
        const QString file = QString::fromUtf16(name);
        EXPECT_EQ(LinksOf(file, xml), links) << file.toStdString();
        EXPECT_EQ(LinksOf(file, Packed(xml)), links) << file.toStdString();
        EXPECT_EQ(LinksOf(file, Packed(classic)), links) << file.toStdString();
    }
}

TEST_F(X3dScenes, ACompressedSceneStaysCompressed)
{
    const QByteArray after = Rewritten(u"a.x3dz"_s, Packed(X3d("<Inline url='\"a.wrl\"'/>")),
                                       {L(u"Inline/url", u"b/c.wrl")});
    EXPECT_EQ(after, Packed(X3d("<Inline url='\"b/c.wrl\"'/>")));
}

} // namespace Halvern::Test
