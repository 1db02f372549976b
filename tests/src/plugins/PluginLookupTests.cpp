// SPDX-License-Identifier: Apache-2.0

#include "PluginsFixture.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

class PluginLookup : public PluginsFixture
{
protected:
    QStringList Resolvers(const char* file)
    {
        return Modules(
            manager.FindPluginForFile(QString::fromUtf8(file), PluginType::FileLinkResolver));
    }
    QStringList Layouts(const char* file)
    {
        return Modules(manager.FindPluginForFile(QString::fromUtf8(file), PluginType::FileLayout));
    }
    /// Registers what stands in the folders and forgets the lines about it.
    void Start()
    {
        manager.EnsureRegistered();
        log.Clear();
    }
    static QStringList List(std::initializer_list<const char*> texts)
    {
        QStringList list;
        for (const char* text : texts)
            list.append(QString::fromUtf8(text));
        return list;
    }
    void Resolver(const char* module, const char* types)
    {
        RegisterResolver(QString::fromLatin1(module), QString::fromLatin1(types));
    }
    void Layout(const char* module, const char* types)
    {
        RegisterLayout(QString::fromLatin1(module), QString::fromLatin1(types));
    }
};

TEST_F(PluginLookup, TheFirstLookupRegistersPlugins)
{
    Resolver("a.so", "prt");
    EXPECT_EQ(Resolvers("x.prt"), List({"a.so"}));
}

TEST_F(PluginLookup, PluginsOfTheTypeAndExtensionComeInRegistrationOrder)
{
    Resolver("b.so", "asm,PRT");
    Layout("l.so", "prt");
    Resolver("a.so", "prt");
    Resolver("c.so", "drw");
    Start();
    EXPECT_EQ(Resolvers("D:/x.y/part.Prt"), List({"b.so", "a.so"}));
    EXPECT_EQ(log.Lines(), List({"DEBUG Searching for File Link Resolver plugin for file type PRT",
                                 "DEBUG Found 2 File Link Resolver plugin(s) for file type PRT: "
                                 "b.so,a.so"}));
    for (const LogRecord& record : log.Records()) {
        EXPECT_EQ(record.file, u"PluginManager.cpp"_s);
        EXPECT_TRUE(record.function.contains(u"PluginManager::FindPluginForFile("_s));
    }
    EXPECT_EQ(Layouts("part.prt"), List({"l.so"}));
}

TEST_F(PluginLookup, ALookupWithoutAResultIsLoggedAtInfo)
{
    Start();
    EXPECT_EQ(Layouts("x.prt"), QStringList());
    EXPECT_EQ(log.Lines(), List({"DEBUG Searching for File Layout plugin for file type PRT",
                                 "INFO No File Layout plugin found for file type PRT"}));
}

TEST_F(PluginLookup, FilesThatDifferInCaseShareOneAnswerAndAreSearchedOnce)
{
    Resolver("a.so", "prt");
    Start();
    EXPECT_EQ(Resolvers("a.PRT"), List({"a.so"}));
    EXPECT_EQ(Resolvers("b.prt"), List({"a.so"}));
    EXPECT_EQ(log.Records().size(), 2);
    // The type is part of the key.
    EXPECT_EQ(Layouts("b.prt"), QStringList());
    EXPECT_EQ(log.Records().size(), 4);
}

TEST_F(PluginLookup, AnEmptyAnswerIsRememberedToo)
{
    Start();
    Resolvers("a.prt");
    Resolvers("b.prt");
    EXPECT_EQ(log.Count(u"INFO No File Link Resolver plugin found for file type PRT"_s), 1);
}

TEST_F(PluginLookup, OnlyTheLastExtensionCounts)
{
    Resolver("gz.so", "gz");
    Resolver("tar.so", "tar,tar.gz");
    Start();
    EXPECT_EQ(Resolvers("archive.tar.gz"), List({"gz.so"}));
    EXPECT_TRUE(log.Has(u"DEBUG Searching for File Link Resolver plugin for file type GZ"_s));
}

TEST_F(PluginLookup, AFileWithoutADotHasTheEmptyExtension)
{
    Resolver("a.so", "prt");
    Start();
    EXPECT_EQ(Resolvers("folder.prt/README"), QStringList());
    EXPECT_EQ(log.Lines(), List({"DEBUG Searching for File Link Resolver plugin for file type ",
                                 "INFO No File Link Resolver plugin found for file type "}));
}

TEST_F(PluginLookup, ACatchAllResolverServesEveryExtensionAndComesLast)
{
    Resolver("all.so", "*");
    Resolver("a.so", "prt");
    Start();
    EXPECT_EQ(Resolvers("x.prt"), List({"a.so", "all.so"}));
    EXPECT_EQ(Resolvers("x.other"), List({"all.so"}));
    EXPECT_EQ(Resolvers("README"), List({"all.so"}));
}

TEST_F(PluginLookup, OfSeveralCatchAllsTheLastIsUsed)
{
    Resolver("all1.so", "*");
    Resolver("all2.so", "prt,*");
    Start();
    EXPECT_EQ(Resolvers("x.prt"), List({"all2.so"}));
}

TEST_F(PluginLookup, AStarHasNoMeaningForLayouts)
{
    Layout("all.so", "*");
    Layout("a.so", "prt");
    Start();
    EXPECT_EQ(Layouts("x.prt"), List({"a.so"}));
    EXPECT_EQ(Layouts("x.asm"), QStringList());
}

TEST_F(PluginLookup, PriorityDoesNotRank)
{
    WriteRegistration(u"low"_s,
                      "<SyncPlugins><P Module=\"low.so\"><FileLinkResolver FileTypes=\"prt\" "
                      "Priority=\"1\"/></P></SyncPlugins>");
    tree.File(u"more/high.syncplugin"_s,
              "<SyncPlugins><P Module=\"high.so\"><FileLinkResolver FileTypes=\"prt\" "
              "Priority=\"9\"/></P></SyncPlugins>");
    manager.AddRegistrationFolders({tree.Path(u"more"_s)});
    EXPECT_EQ(Resolvers("x.prt"), List({"low.so", "high.so"}));
}

TEST_F(PluginLookup, AnExtensionThatLooksLikeAPlaceholderIsLoggedAsItIs)
{
    Start();
    EXPECT_EQ(Resolvers("x.%1"), QStringList());
    EXPECT_TRUE(log.Has(u"INFO No File Link Resolver plugin found for file type %1"_s));
}

TEST_F(PluginLookup, TheNamesOfTheTypesAreThoseOfTheLog)
{
    EXPECT_EQ(GetPluginTypeName(PluginType::FileLayout), u"File Layout"_s);
    EXPECT_EQ(GetPluginTypeName(PluginType::FileLinkResolver), u"File Link Resolver"_s);
    EXPECT_EQ(GetPluginTypeName(PluginType(2)), QString());
}

} // namespace
