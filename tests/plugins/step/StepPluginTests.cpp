// SPDX-License-Identifier: Apache-2.0

// The plug-in as a host meets it: the built library, loaded by its exported name, on files that
// another program wrote.

#include "FormatFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class StepPlugin : private LoadedResolver, public ResolverFixture
{
protected:
    StepPlugin() : LoadedResolver(QStringLiteral(STEP_PLUGIN_FILE)), ResolverFixture(Get())
    {
        Import(QStringLiteral(STEP_CORPUS "/anlage"), u"p"_s);
    }
};

} // namespace

TEST(StepPluginLibrary, ExportsTheResolverFactoryAndNoLayoutFactory)
{
    ExpectResolverLibrary(QStringLiteral(STEP_PLUGIN_FILE));
}

TEST(StepPluginLibrary, ItsRegistrationFileNamesItAndItsTypes)
{
    ExpectRegistration(QStringLiteral(STEP_PLUGIN_FILE), u"step"_s, u"stp,step"_s);
}

TEST_F(StepPlugin, FindsEveryPartOfTheAssemblies)
{
    EXPECT_EQ(Read(u"p/Motor.stp"_s), (Links{LinkTo(u"#85", u"Motor_Welle 1.stp"),
                                             LinkTo(u"#97", u"Motor_Rotor's Blech.stp")}));
    EXPECT_EQ(PathsOf(Read(u"p/Anlage 木.stp"_s)),
              (QStringList{u"Teil_Welle 1.stp"_s, u"Teil_Größe.stp"_s, u"Teil_Platz.stp"_s,
                           u"Teil_Rest.stp"_s}));
    EXPECT_EQ(Read(u"p/Teil_Größe.stp"_s), Links{});
}

TEST_F(StepPlugin, RewritesAnAssemblyAndBackWithoutATrace)
{
    const FileTree::Snapshot before = tree.Contents();
    const QString file = u"p/Motor.stp"_s;
    const Links links = Read(file);
    QByteArray expected = tree.Read(file);
    expected.replace("'Motor_Welle 1.stp'", "'../M\\X2\\00E4\\X0\\/Motor_Welle 1.stp'");
    expected.replace("'Motor_Rotor''s Blech.stp'",
                     "'../M\\X2\\00E4\\X0\\/Motor_Rotor''s Blech.stp'");
    Links moved = links;
    for (Link& link : moved)
        link.second.prepend(u"../Mä/"_s);
    EXPECT_TRUE(Repath(file, moved));
    EXPECT_EQ(tree.Read(file), expected);
    EXPECT_EQ(expected.count("\\X2\\00E4\\X0\\"), 6);
    EXPECT_EQ(Read(file), moved);
    EXPECT_TRUE(Repath(file, links));
    EXPECT_EQ(tree.Contents(), before);
}

} // namespace Halvern::Test
