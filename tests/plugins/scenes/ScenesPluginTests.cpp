// SPDX-License-Identifier: Apache-2.0

// The built plug-in, on scenes that Blender exported (corpus/make-corpus.py).

#include "ScenesFixture.h"

namespace Halvern::Test {

namespace {

class ScenesPlugin : private LoadedResolver, public ResolverFixture
{
protected:
    ScenesPlugin() : LoadedResolver(QStringLiteral(SCENES_PLUGIN_FILE)), ResolverFixture(Get())
    {
        Import(QStringLiteral(SCENES_CORPUS), u"möbel"_s);
    }
};

const char16_t* const Oak = u"Bilder für alle/Eiche hell.png";
const char16_t* const Height = u"Bilder für alle/Höhe #1.png";
const char16_t* const Wood = u"Bilder für alle/木目 50%.png";

} // namespace

TEST(ScenesPluginLibrary, ExportsTheResolverFactoryAndNoLayoutFactory)
{
    ExpectResolverLibrary(QStringLiteral(SCENES_PLUGIN_FILE));
}

TEST(ScenesPluginLibrary, ItsRegistrationFileNamesItAndItsTypes)
{
    ExpectRegistration(QStringLiteral(SCENES_PLUGIN_FILE), u"scenes"_s,
                       u"dae,x3d,x3dv,x3dz,x3dvz,wrl,wrz,mtlx"_s);
}

TEST_F(ScenesPlugin, FindsThePicturesOfACollada)
{
    EXPECT_EQ(Read(u"möbel/Stuhl grün.dae"_s),
              (Links{L(u"#Eiche_hell/init_from", Oak), L(u"#Höhe__1/init_from", Height),
                     L(u"#木目_50_/init_from", Wood)}));
    EXPECT_TRUE(context.lines.isEmpty());
}

TEST_F(ScenesPlugin, FindsThePicturesOfAScene)
{
    const Links expected{
        L(u"ImageTexture/url", u"verloren.png"),   L(u"ImageTexture/url#2", Oak),
        L(u"ImageTexture/url#3", u"verloren.png"), L(u"ImageTexture/url#4", Height),
        L(u"ImageTexture/url#5", u"verloren.png"), L(u"ImageTexture/url#6", Wood)};
    EXPECT_EQ(Read(u"möbel/Stuhl grün.x3d"_s), expected);
    EXPECT_EQ(Read(u"möbel/Tisch 木.x3dz"_s).at(5), expected.at(5));
}

TEST_F(ScenesPlugin, RewritesThemAndBackWithoutATrace)
{
    for (const QString& file : {u"möbel/Stuhl grün.dae"_s, u"möbel/Stuhl grün.x3d"_s}) {
        const QByteArray before = tree.Read(file);
        const Links links = Read(file);
        Links moved = links;
        for (Link& link : moved)
            link.second.prepend(u"../ganz wo anders (2)/"_s);
        EXPECT_TRUE(Repath(file, moved));
        EXPECT_EQ(Read(file), moved);
        EXPECT_TRUE(Repath(file, links));
        // What Blender leaves as it is gets encoded.
        EXPECT_EQ(tree.Read(file), QByteArray(before)
                                       .replace("#1.png<", "%231.png<")
                                       .replace("50%.png<", "50%25.png<")
                                       .replace("Bilder für alle/Höhe %231.png",
                                                "Bilder%20f%C3%BCr%20alle/H%C3%B6he%20%231.png"));
    }
}

} // namespace Halvern::Test
