// SPDX-License-Identifier: Apache-2.0

// The walk over a registration file: every pass descends to a first child and steps to a sibling at
// its end, from wherever reading the declaration left it.

#include "PluginsFixture.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

const QByteArray Layout = "<FileLayout FileTypes=\"x\"/>";

QByteArray Declaration(const char* module, const QByteArray& content = Layout)
{
    return QByteArray("<P Module=\"") + module + "\">" + content + "</P>";
}

class RegistrationWalk : public PluginsFixture
{
protected:
    bool Load(const QByteArray& container)
    {
        const QString name = u"%1.syncplugin"_s.arg(++m_files);
        tree.File(name, "<SyncPlugins>" + container + "</SyncPlugins>");
        return manager.LoadRegistrationFile(tree.Path(name));
    }
    QString Registered() const { return Modules(manager.Plugins()).join(u' '); }

private:
    int m_files = 0;
};

TEST_F(RegistrationWalk, GoesOnBehindADeclarationThatIsRegisteredAlready)
{
    ASSERT_TRUE(Load(Declaration("known.so")));
    EXPECT_TRUE(Load(Declaration("known.so") + "<Group>" + Declaration("next.so") + "</Group>"));
    EXPECT_EQ(Registered(), u"known.so next.so"_s);
}

TEST_F(RegistrationWalk, GoesOnBehindADeclarationWithoutAService)
{
    EXPECT_TRUE(
        Load(Declaration("none.so", "<Other/>") + "<Group>" + Declaration("next.so") + "</Group>"));
    EXPECT_EQ(Registered(), u"next.so"_s);
}

TEST_F(RegistrationWalk, GoesOnBehindTheServiceElementThatHasNoFileTypes)
{
    EXPECT_TRUE(Load(
        Declaration("none.so", "<FileLayout/><Group>" + Declaration("inside.so") + "</Group>") +
        "<Group>" + Declaration("behind.so") + "</Group>"));
    EXPECT_EQ(Registered(), u"inside.so"_s);
}

TEST_F(RegistrationWalk, EndsWhereTheServiceElementIsTheLastOfItsDeclaration)
{
    EXPECT_TRUE(Load(Declaration("first.so") + "<Group>" + Declaration("next.so") + "</Group>"));
    EXPECT_EQ(Registered(), u"first.so"_s);
}

TEST_F(RegistrationWalk, EndsAtAnElementWithoutChildren)
{
    EXPECT_FALSE(Load("<A/><B/><Group>" + Declaration("next.so") + "</Group>"));
    EXPECT_EQ(Registered(), QString());
}

TEST_F(RegistrationWalk, DescendsOneLevelWithEveryPass)
{
    EXPECT_TRUE(Load("<A/><B><C/><D><E/><F>" + Declaration("deep.so") + "</F></D></B>"));
    EXPECT_EQ(Registered(), u"deep.so"_s);
}

TEST_F(RegistrationWalk, PassesOverEverythingThatIsNoElement)
{
    const QByteArray noise = "<!-- <P Module=\"no.so\"/> -->text<?target data?><![CDATA[<P/>]]>\n";
    EXPECT_TRUE(Load(noise + "<A/>" + noise + "<Group>" + noise +
                     Declaration("a.so", noise + Layout + noise) + noise + "</Group>" + noise));
    EXPECT_EQ(Registered(), u"a.so"_s);
}

TEST_F(RegistrationWalk, CountsAsLoadedOnceADeclarationWasAcceptedWhateverFollows)
{
    EXPECT_TRUE(Load(
        Declaration("a.so", Layout + "<Group>" + Declaration("none.so", "<Other/>") + "</Group>")));
    EXPECT_EQ(Registered(), u"a.so"_s);
}

TEST_F(RegistrationWalk, RegistersAModuleOnceThatOneFileDeclaresTwice)
{
    EXPECT_TRUE(Load(Declaration("a.so", Layout + "<Group>" + Declaration("A.SO") + "</Group>")));
    EXPECT_EQ(Registered(), u"a.so"_s);
}

TEST_F(RegistrationWalk, SkipsADeclarationWhoseTextsAreEmptyInTheirTr)
{
    EXPECT_FALSE(Load(Declaration("tr()")));
    EXPECT_FALSE(Load(Declaration("a.so", "<FileLayout FileTypes=\"tr()\"/>")));
    EXPECT_EQ(Registered(), QString());
}

TEST_F(RegistrationWalk, TakesTheDotsFromTheFirstTypeEvenWhenSeparatorsStandBeforeIt)
{
    ASSERT_TRUE(Load(Declaration("a.so", "<FileLayout FileTypes=\",.a.b,,.c.d, .e\"/>")));
    EXPECT_EQ(manager.Plugins().first()->GetFileTypes(),
              (QStringList{u"ab"_s, u"c.d"_s, u" .e"_s}));
}

TEST_F(RegistrationWalk, LeavesTheAnswersOfEarlierLookupsAsTheyAre)
{
    const QString file = u"a.x"_s;
    EXPECT_TRUE(manager.FindPluginForFile(file, PluginType::FileLayout).isEmpty());
    ASSERT_TRUE(Load(Declaration("a.so")));
    EXPECT_TRUE(manager.FindPluginForFile(file, PluginType::FileLayout).isEmpty());
}

TEST_F(RegistrationWalk, UnloadingKeepsTheAnswersOfEarlierLookups)
{
    ASSERT_TRUE(Load(Declaration("a.so")));
    const QString file = u"a.x"_s;
    ASSERT_EQ(manager.FindPluginForFile(file, PluginType::FileLayout).size(), 1);
    EXPECT_TRUE(manager.UnloadAllPlugins());
    log.Clear();
    EXPECT_EQ(manager.FindPluginForFile(file, PluginType::FileLayout).size(), 1);
    EXPECT_EQ(log.Lines(), QStringList()) << "nothing is searched anew";
}

} // namespace
