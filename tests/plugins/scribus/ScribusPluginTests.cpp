// SPDX-License-Identifier: Apache-2.0

// The plug-in as a host meets it: the built library, loaded by its exported name, on files that
// Scribus wrote.

#include "FormatFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class ScribusPlugin : private LoadedResolver, public ResolverFixture
{
protected:
    ScribusPlugin() : LoadedResolver(QStringLiteral(SCRIBUS_PLUGIN_FILE)), ResolverFixture(Get())
    {
        Import(QStringLiteral(SCRIBUS_CORPUS "/heft"), u"p"_s);
    }
};

} // namespace

TEST(ScribusPluginLibrary, ExportsTheResolverFactoryAndNoLayoutFactory)
{
    ExpectResolverLibrary(QStringLiteral(SCRIBUS_PLUGIN_FILE));
}

TEST(ScribusPluginLibrary, ItsRegistrationFileNamesItAndItsTypes)
{
    ExpectRegistration(QStringLiteral(SCRIBUS_PLUGIN_FILE), u"scribus"_s, u"sla,scd,gz"_s);
}

TEST_F(ScribusPlugin, FindsEveryPicture)
{
    EXPECT_EQ(Read(u"p/Heft/Heft Größe.sla"_s),
              (Links{LinkTo(u"PAGEOBJECT 922556264/PFILE", u"../Bilder/Foto #1.png"),
                     LinkTo(u"PAGEOBJECT 923109368/PFILE", u"../Bilder/Grün & 50%.png"),
                     LinkTo(u"PAGEOBJECT 923086408/PFILE", u"../Bilder/木目.png"),
                     LinkTo(u"PAGEOBJECT 923373352/PFILE", u"../Bilder/Foto #1.png")}));
    EXPECT_EQ(PathsOf(Read(u"p/Heft/Beilage.sla.gz"_s)),
              (QStringList{u"../Bilder/Grün & 50%.png"_s, u"../Bilder/木目.png"_s}));
}

TEST_F(ScribusPlugin, RewritesADocumentAndBackWithoutATrace)
{
    const FileTree::Snapshot before = tree.Contents();
    const QString file = u"p/Heft/Heft Größe.sla"_s;
    const Links links = Read(file);
    QByteArray expected = tree.Read(file);
    expected.replace("PFILE=\"..", "PFILE=\"../Mä/..");
    Links moved = links;
    for (Link& link : moved)
        link.second.prepend(u"../Mä/"_s);
    EXPECT_TRUE(Repath(file, moved));
    EXPECT_EQ(tree.Read(file), expected);
    EXPECT_EQ(expected.count("../Mä/"), 4);
    EXPECT_EQ(Read(file), moved);
    EXPECT_TRUE(Repath(file, links));
    EXPECT_EQ(tree.Contents(), before);
}

} // namespace Halvern::Test
