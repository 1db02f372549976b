// SPDX-License-Identifier: Apache-2.0

// The plug-in as a host meets it: the built library, loaded by its exported name.

#include "MeshesFixture.h"

namespace Halvern::Test {

namespace {

class MeshesPlugin : private LoadedResolver, public ResolverFixture
{
protected:
    MeshesPlugin() : LoadedResolver(QStringLiteral(MESHES_PLUGIN_FILE)), ResolverFixture(Get()) {}
};

const char* const Scan = "ply\nformat ascii 1.0\ncomment TextureFile %1\nelement vertex 0\n"
                         "end_header\n";

} // namespace

TEST(MeshesPluginLibrary, ExportsTheResolverFactoryAndNoLayoutFactory)
{
    ExpectResolverLibrary(QStringLiteral(MESHES_PLUGIN_FILE));
}

TEST(MeshesPluginLibrary, ItsRegistrationFileNamesItAndItsTypes)
{
    ExpectRegistration(QStringLiteral(MESHES_PLUGIN_FILE), u"meshes"_s, u"3ds,lwo,x,ply"_s);
}

TEST_F(MeshesPlugin, RewritesAFileAndBackWithoutATrace)
{
    const QString text = QString::fromUtf8(Scan);
    const QString file = u"Körper 木.ply"_s;
    tree.File(file, text.arg(u"Eiche hell.png"_s).toUtf8());
    const FileTree::Snapshot before = tree.Contents();
    const Links links = Read(file);
    EXPECT_EQ(links, (Links{L(u"TextureFile", u"Eiche hell.png")}));
    const Links moved{L(u"TextureFile", u"../Bilder für alle/木目 50%.png")};
    EXPECT_TRUE(Repath(file, moved));
    EXPECT_EQ(tree.Read(file), text.arg(u"../Bilder für alle/木目 50%.png"_s).toUtf8());
    EXPECT_EQ(Read(file), moved);
    EXPECT_TRUE(Repath(file, links));
    EXPECT_EQ(tree.Contents(), before);
}

} // namespace Halvern::Test
