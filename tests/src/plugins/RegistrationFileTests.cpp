// SPDX-License-Identifier: Apache-2.0

#include "PluginsFixture.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

class RegistrationFile : public PluginsFixture
{
protected:
    bool Load(const QByteArray& text)
    {
        tree.File(u"one.syncplugin"_s, text);
        return manager.LoadRegistrationFile(tree.Path(u"one.syncplugin"_s));
    }
    /// Loads a single plug-in element's content with the given service element.
    bool LoadService(const QByteArray& service)
    {
        return Load("<SyncPlugins><Plugin Module=\"a.so\">" + service + "</Plugin></SyncPlugins>");
    }
    QStringList Registered() const { return Modules(manager.Plugins()); }
    const Plugin& First() const { return *manager.Plugins().first(); }
    static QStringList List(std::initializer_list<const char*> texts)
    {
        QStringList list;
        for (const char* text : texts)
            list.append(QString::fromUtf8(text));
        return list;
    }
};

TEST_F(RegistrationFile, ADeclarationIsReadWithAllItsAttributes)
{
    EXPECT_TRUE(Load("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
                     "<SyncPlugins><Plugin Module=\"sub/Ferrule.so\" Name=\"Ferrule \xfc\">"
                     "<FileLinkResolver FileTypes=\"prt,asm,drw\" Priority=\"10\"/>"
                     "</Plugin></SyncPlugins>"));
    ASSERT_EQ(manager.Plugins().size(), 1);
    EXPECT_EQ(First().GetModule(), u"sub/Ferrule.so"_s);
    EXPECT_EQ(First().GetName(), u"Ferrule ü"_s);
    EXPECT_EQ(First().GetType(), PluginType::FileLinkResolver);
    EXPECT_EQ(First().GetFileTypes(), List({"prt", "asm", "drw"}));
    EXPECT_EQ(First().GetPriority(), 10u);
    EXPECT_EQ(First().GetLoadState(), Plugin::LoadState::NotLoaded);
}

TEST_F(RegistrationFile, TheContainerIsTheRootElementOrAChildOfIt)
{
    EXPECT_TRUE(Load("<SyncPlugins><P Module=\"a.so\"><FileLayout FileTypes=\"x\"/></P>"
                     "</SyncPlugins>"));
    EXPECT_TRUE(Load("<Product><Other/><SyncPlugins><P Module=\"b.so\"><FileLayout "
                     "FileTypes=\"x\"/></P></SyncPlugins></Product>"));
    EXPECT_EQ(Registered(), List({"a.so", "b.so"}));
}

TEST_F(RegistrationFile, AContainerFurtherDownOrUnderAnotherNameIsNotFound)
{
    const QByteArray plugin = "<P Module=\"a.so\"><FileLayout FileTypes=\"x\"/></P>";
    EXPECT_FALSE(Load("<A><B><SyncPlugins>" + plugin + "</SyncPlugins></B></A>"));
    EXPECT_FALSE(Load("<syncplugins>" + plugin + "</syncplugins>"));
    EXPECT_FALSE(Load("<SyncPlugins/>"));
    EXPECT_EQ(Registered(), QStringList());
}

TEST_F(RegistrationFile, AMissingOrMalformedFileFailsAndRegistersNothing)
{
    EXPECT_FALSE(manager.LoadRegistrationFile(tree.Path(u"none.syncplugin"_s)));
    EXPECT_FALSE(Load({}));
    EXPECT_FALSE(Load("<SyncPlugins><P Module=\"a.so\"><FileLayout FileTypes=\"x\"/></P>"));
    EXPECT_EQ(Registered(), QStringList());
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(RegistrationFile, FileTypesAreSplitAtCommas)
{
    struct Row
    {
        const char* written;
        QStringList types;
    };
    const Row rows[] = {
        {"prt,asm", List({"prt", "asm"})},
        {".prt,.asm", List({"prt", "asm"})},
        {"prt;asm", List({"prt;asm"})},
        {".prt, .asm", List({"prt", " .asm"})},
        {",prt,,asm,", List({"prt", "asm"})},
        {".tar.gz,.tar.xz", List({"targz", "tar.xz"})},
        {"tr(.prt,.asm)", List({"prt", "asm"})},
        {"*", List({"*"})},
        {",", QStringList()},
    };
    int number = 0;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.written);
        EXPECT_TRUE(Load("<SyncPlugins><P Module=\"m" + QByteArray::number(number++) +
                         "\"><FileLinkResolver FileTypes=\"" + row.written +
                         "\"/></P></SyncPlugins>"));
        ASSERT_EQ(manager.Plugins().size(), number);
        EXPECT_EQ(manager.Plugins().last()->GetFileTypes(), row.types);
    }
}

TEST_F(RegistrationFile, APriorityThatIsNoUnsignedDecimalNumberIsZero)
{
    struct Row
    {
        const char* written;
        quint32 priority;
    };
    const Row rows[] = {{"abc", 0},  {"", 0},      {"-1", 0},         {"0x10", 0},
                        {"1.5", 0},  {"tr(5)", 0}, {"4294967296", 0}, {"4294967295", 4294967295u},
                        {"010", 10}, {"7", 7}};
    int number = 0;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.written);
        ASSERT_TRUE(Load("<SyncPlugins><P Module=\"m" + QByteArray::number(number++) +
                         "\"><FileLayout FileTypes=\"x\" Priority=\"" + row.written +
                         "\"/></P></SyncPlugins>"));
        EXPECT_EQ(manager.Plugins().last()->GetPriority(), row.priority);
    }
}

TEST_F(RegistrationFile, WithoutAPriorityItIsZeroAndWithoutANameItIsEmpty)
{
    ASSERT_TRUE(LoadService("<FileLayout FileTypes=\"x\"/>"));
    EXPECT_EQ(First().GetPriority(), 0u);
    EXPECT_EQ(First().GetName(), QString());
    EXPECT_EQ(First().GetType(), PluginType::FileLayout);
}

TEST_F(RegistrationFile, ModuleAndNameWrittenInTrAreUnwrapped)
{
    ASSERT_TRUE(Load("<SyncPlugins><P Module=\"tr(Foo.dll)\" Name=\" TR ( Foo files) \">"
                     "<FileLayout FileTypes=\"x\"/></P></SyncPlugins>"));
    EXPECT_EQ(First().GetModule(), u"Foo.dll"_s);
    EXPECT_EQ(First().GetName(), u" Foo files"_s);
}

TEST_F(RegistrationFile, OfTwoServicesOnlyTheLayoutCounts)
{
    ASSERT_TRUE(LoadService("<FileLinkResolver FileTypes=\"r\"/><FileLayout FileTypes=\"l\"/>"));
    ASSERT_EQ(manager.Plugins().size(), 1);
    EXPECT_EQ(First().GetType(), PluginType::FileLayout);
    EXPECT_EQ(First().GetFileTypes(), List({"l"}));
}

TEST_F(RegistrationFile, ALayoutWithoutFileTypesIsSkippedEvenWhenTheResolverHasThem)
{
    EXPECT_FALSE(LoadService("<FileLayout/><FileLinkResolver FileTypes=\"r\"/>"));
    EXPECT_EQ(Registered(), QStringList());
}

TEST_F(RegistrationFile, AnIncompleteDeclarationIsSkippedSilently)
{
    EXPECT_FALSE(LoadService({}));
    EXPECT_FALSE(LoadService("<Other FileTypes=\"x\"/>"));
    EXPECT_FALSE(LoadService("<FileLayout FileTypes=\"\"/>"));
    EXPECT_FALSE(LoadService("<FileLinkResolver Priority=\"3\"/>"));
    EXPECT_FALSE(LoadService("<Nested><FileLayout FileTypes=\"x\"/></Nested>"));
    EXPECT_FALSE(Load("<SyncPlugins><P><FileLayout FileTypes=\"x\"/></P></SyncPlugins>"));
    EXPECT_FALSE(Load("<SyncPlugins><P Module=\"\"><FileLayout FileTypes=\"x\"/></P>"
                      "</SyncPlugins>"));
    EXPECT_EQ(Registered(), QStringList());
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(RegistrationFile, AModuleThatIsRegisteredAlreadyIsNotAddedButTheFileCountsAsLoaded)
{
    ASSERT_TRUE(LoadService("<FileLayout FileTypes=\"x\"/>"));
    EXPECT_TRUE(Load("<SyncPlugins><P Module=\"other/A.SO\"><FileLinkResolver FileTypes=\"y\"/></P>"
                     "</SyncPlugins>"));
    // Even what is no complete declaration counts then.
    EXPECT_TRUE(Load("<SyncPlugins><P Module=\"A.so\"/></SyncPlugins>"));
    EXPECT_EQ(Registered(), List({"a.so"}));
    EXPECT_EQ(First().GetFileTypes(), List({"x"}));
}

TEST_F(RegistrationFile, CommentsAndTextBetweenElementsDoNotCount)
{
    EXPECT_TRUE(Load("<!-- a --><SyncPlugins>text<!-- <P Module=\"no.so\"/> --> more\n"
                     "<P Module=\"a.so\"> x <!-- b --><FileLayout FileTypes=\"x\">y</FileLayout>"
                     "</P></SyncPlugins>"));
    EXPECT_EQ(Registered(), List({"a.so"}));
}

TEST_F(RegistrationFile, OnlyTheFirstOfTwoPluginElementsIsRegistered)
{
    const QByteArray second = "<P Module=\"b.so\"><FileLayout FileTypes=\"x\"/></P>";
    EXPECT_TRUE(Load("<SyncPlugins><P Module=\"a.so\"><FileLayout FileTypes=\"x\"/></P>" + second +
                     "</SyncPlugins>"));
    EXPECT_EQ(Registered(), List({"a.so"}));
}

TEST_F(RegistrationFile, ASecondPluginElementIsNotReadWhenTheFirstIsSkipped)
{
    const QByteArray second = "<P Module=\"b.so\"><FileLayout FileTypes=\"x\"/></P>";
    for (const char* first :
         {"<P/>", "<P Module=\"c.so\"/>", "<P Module=\"c.so\"><FileLayout/></P>",
          "<P><FileLayout FileTypes=\"x\"/></P>"}) {
        SCOPED_TRACE(first);
        EXPECT_FALSE(Load("<SyncPlugins>" + QByteArray(first) + second + "</SyncPlugins>"));
    }
    EXPECT_EQ(Registered(), QStringList());
}

TEST_F(RegistrationFile, TheWalkGoesOnAmongTheChildrenOfWhatFollows)
{
    // After a skipped element the children of the next one are read as declarations.
    EXPECT_TRUE(Load("<SyncPlugins><P/><Group Module=\"group.so\">"
                     "<P Module=\"nested.so\"><FileLayout FileTypes=\"x\"/></P></Group>"
                     "</SyncPlugins>"));
    EXPECT_EQ(Registered(), List({"nested.so"}));
}

TEST_F(RegistrationFile, AfterAnAcceptedDeclarationTheWalkGoesOnBehindItsServiceElement)
{
    EXPECT_TRUE(Load("<SyncPlugins><P Module=\"a.so\"><FileLayout FileTypes=\"x\"/>"
                     "<Sibling><P Module=\"b.so\"><FileLinkResolver FileTypes=\"y\"/></P></Sibling>"
                     "</P><P Module=\"c.so\"><FileLayout FileTypes=\"x\"/></P></SyncPlugins>"));
    EXPECT_EQ(Registered(), List({"a.so", "b.so"}));
}

TEST_F(RegistrationFile, RepeatedServiceElementsGiveTheFirst)
{
    EXPECT_TRUE(LoadService("<FileLinkResolver FileTypes=\"first\"/>"
                            "<FileLinkResolver FileTypes=\"second\"/>"));
    ASSERT_EQ(manager.Plugins().size(), 1);
    EXPECT_EQ(First().GetFileTypes(), List({"first"}));
}

} // namespace
