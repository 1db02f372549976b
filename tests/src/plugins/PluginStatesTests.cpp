// SPDX-License-Identifier: Apache-2.0

// The states of a plug-in, for both services alike: what each failure of a request logs, returns,
// keeps and leaves behind.

#include "OverRelease.h"
#include "PluginsFixture.h"

#include <QtCore/QFile>

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using LoadState = Plugin::LoadState;

/// One of the two services and what is particular to it.
struct Service
{
    const char* name;
    PluginType type;
    const void* (*request)(Plugin&);
    const void* (*stored)(const Plugin&);
    const char* exportName;
    const char* creatorName;
    /// How the zoo's call log names the object.
    const char* object;
    /// After a request without an object whose library was unloaded: a resolver is marked after
    /// the unload, a layout before it, which clears the mark.
    LoadState withoutObject;
};

void PrintTo(const Service& service, std::ostream* out)
{
    *out << service.name;
}

const Service services[] = {
    {"Resolver", PluginType::FileLinkResolver,
     [](Plugin& plugin) -> const void* { return plugin.GetFileLinkResolver(); },
     [](const Plugin& plugin) -> const void* { return plugin.GetStoredResolver(); },
     "CreateFileLinkResolverFactory", "CreateFileLinkResolver", "resolver", LoadState::Failed},
    {"Layout", PluginType::FileLayout,
     [](Plugin& plugin) -> const void* { return plugin.GetFileLayout(); },
     [](const Plugin& plugin) -> const void* { return plugin.GetStoredLayout(); },
     "CreateSyncPluginFactory", "CreateFileLayout", "layout", LoadState::NotLoaded},
};

class PluginStates : public ::testing::TestWithParam<Service>
{
protected:
    Plugin& Make(const QString& itsModule)
    {
        module = itsModule;
        Plugin::Registration registration;
        registration.type = service.type;
        registration.module = module;
        plugin = std::make_unique<Plugin>(registration, searchPaths);
        return *plugin;
    }
    Plugin& MakeZoo(const char* fault) { return Make(ZooModule(QString::fromLatin1(fault))); }
    /// Lets "<folder>/<name>" in the tree be a copy of a library.
    void CopyLibrary(const QString& library, const QString& folder, const QString& name)
    {
        tree.Folder(folder);
        ASSERT_TRUE(QFile::copy(library, tree.Path(folder + u'/' + name)));
    }
    qsizetype Calls(const char* what) const
    {
        return calls.Calls().count(QString::fromLatin1("%1 %2").arg(
            QString::fromLatin1(what), QString::fromLatin1(service.object)));
    }
    QString Loaded() const { return u"INFO Plugin %1 loaded"_s.arg(module); }
    QString Unloaded() const { return u"INFO Plugin %1 unloaded"_s.arg(module); }
    QString NullFactory() const
    {
        // The same export's name for both services.
        return u"ERROR Plugin %1 returned NULL in CreateFileLinkResolverFactory"_s.arg(module);
    }
    QString NullObject() const
    {
        return u"ERROR Plugin %1 returned NULL in %2"_s.arg(
            module, QString::fromLatin1(service.creatorName));
    }
    QString MissingExport() const
    {
        return u"ERROR Exported function %1 not found in plugin %2"_s.arg(
            QString::fromLatin1(service.exportName), module);
    }

    const Service service = GetParam();
    FileTree tree;
    LogCapture log;
    PluginCallLog calls;
    QStringList searchPaths{TestPluginFolder(), ZooFolder()};
    QString module;
    std::unique_ptr<Plugin> plugin;
};

TEST_P(PluginStates, WithoutAModuleNameARequestFailsSilentlyAndMarksNothing)
{
    Make({});
    EXPECT_EQ(service.request(*plugin), nullptr);
    EXPECT_EQ(plugin->GetLoadState(), LoadState::NotLoaded);
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_P(PluginStates, AFailedLoadIsMarkedAndTriedAgainAtEveryRequest)
{
    tree.File(u"first/text.so"_s, "This is a text, and not a library.");
    searchPaths = {tree.Path(u"first"_s)};
    Make(u"text.so"_s);
    for (int attempt = 1; attempt <= 2; ++attempt) {
        EXPECT_EQ(service.request(*plugin), nullptr);
        EXPECT_EQ(plugin->GetLoadState(), LoadState::Failed);
        EXPECT_EQ(log.Lines().size(), attempt);
        EXPECT_TRUE(
            log.Lines().last().startsWith(u"ERROR Failed to load plugin text.so. Error "_s));
    }
    EXPECT_TRUE(plugin->UnloadModule());
    EXPECT_EQ(plugin->GetLoadState(), LoadState::Failed) << "there was nothing to unload";
    EXPECT_EQ(log.Lines().size(), 2);
}

TEST_P(PluginStates, ALibraryWithoutAnObjectThatCannotBeUnloadedStaysMarkedAsFailed)
{
    Make(QStringLiteral(SYSTEM_LIBRARY));
    ASSERT_TRUE(plugin->LoadModule());
    OverRelease(module);
    log.Clear();

    EXPECT_EQ(service.request(*plugin), nullptr);
    ASSERT_EQ(log.Lines().size(), 2);
    EXPECT_EQ(log.Lines().first(), MissingExport());
    EXPECT_TRUE(
        log.Lines().last().startsWith(u"ERROR Failed to unload plugin %1. Error "_s.arg(module)));
    EXPECT_EQ(plugin->GetLoadState(), LoadState::Failed);
}

TEST_P(PluginStates, EachRequestMakesANewObjectAndOnlyTheLastOneIsDestroyed)
{
    MakeZoo("WellBehaved");
    const void* const first = service.request(*plugin);
    const void* const second = service.request(*plugin);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    EXPECT_EQ(service.stored(*plugin), second);
    EXPECT_EQ(plugin->GetLoadState(), LoadState::Loaded);
    EXPECT_EQ(Calls("new"), 2);
    EXPECT_EQ(Calls("delete"), 0);
    EXPECT_EQ(log.Lines(), QStringList{Loaded()});

    EXPECT_TRUE(plugin->UnloadModule());
    EXPECT_EQ(Calls("delete"), 1);
    EXPECT_EQ(service.stored(*plugin), nullptr);
    EXPECT_EQ(plugin->GetLoadState(), LoadState::NotLoaded);
}

TEST_P(PluginStates, AnUnloadedLibraryIsLoadedAgainByTheNextRequest)
{
    MakeZoo("WellBehaved");
    for (int round = 0; round < 2; ++round) {
        ASSERT_NE(service.request(*plugin), nullptr);
        EXPECT_TRUE(plugin->UnloadModule());
        EXPECT_TRUE(plugin->UnloadModule());
    }
    EXPECT_EQ(log.Lines(), (QStringList{Loaded(), Unloaded(), Loaded(), Unloaded()}));
    EXPECT_EQ(Calls("new"), 2);
    EXPECT_EQ(Calls("delete"), 2);
}

TEST_P(PluginStates, ANullFactoryLeavesTheEarlierObjectWhichIsTheAnswer)
{
    MakeZoo("NullFactoryTheSecondTime");
    const void* const first = service.request(*plugin);
    ASSERT_NE(first, nullptr);
    log.Clear();
    EXPECT_EQ(service.request(*plugin), first);
    EXPECT_EQ(log.Lines(), QStringList{NullFactory()});
    EXPECT_EQ(plugin->GetLoadState(), LoadState::Loaded);
    EXPECT_TRUE(plugin->IsLoaded());
    EXPECT_EQ(Calls("delete"), 0);
}

TEST_P(PluginStates, ANullObjectTakesThePlaceOfTheEarlierOneAndUnloadsTheLibrary)
{
    MakeZoo("NullObjectTheSecondTime");
    ASSERT_NE(service.request(*plugin), nullptr);
    log.Clear();
    EXPECT_EQ(service.request(*plugin), nullptr);
    EXPECT_EQ(log.Lines(), (QStringList{NullObject(), Unloaded()}));
    EXPECT_EQ(service.stored(*plugin), nullptr);
    EXPECT_FALSE(plugin->IsLoaded());
    EXPECT_EQ(plugin->GetLoadState(), service.withoutObject);
    EXPECT_EQ(Calls("delete"), 0) << "the replaced object is not destroyed";

    EXPECT_NE(service.request(*plugin), nullptr);
    EXPECT_EQ(plugin->GetLoadState(), LoadState::Loaded);
}

TEST_P(PluginStates, AMissingExportLeavesTheEarlierObjectWhichIsTheAnswer)
{
    // Only the excepted module still has an object when its library is another one.
    const QString name = u"FerruleSyncPlugin.dll"_s;
    const QString other =
        service.type == PluginType::FileLayout ? TestResolverModule() : TestLayoutModule();
    CopyLibrary(ZooFolder() + u'/' + ZooModule(u"WellBehaved"_s), u"good"_s, name);
    CopyLibrary(TestPluginFolder() + u'/' + other, u"other"_s, name);
    searchPaths = {tree.Path(u"good"_s)};
    Make(name);
    const void* const first = service.request(*plugin);
    ASSERT_NE(first, nullptr);
    ASSERT_TRUE(plugin->UnloadModule());
    searchPaths = {tree.Path(u"other"_s)};
    log.Clear();

    EXPECT_EQ(service.request(*plugin), first);
    EXPECT_EQ(log.Lines(), (QStringList{Loaded(), MissingExport()}));
    EXPECT_EQ(plugin->GetLoadState(), LoadState::Loaded);
    EXPECT_TRUE(plugin->IsLoaded());
}

TEST_P(PluginStates, TheExceptedModuleIsUnloadedWithItsObjectLeftAlone)
{
    int number = 0;
    for (const char* name : {"FerruleSyncPlugin.dll", "FERRULESYNCPLUGIN.DLL"}) {
        SCOPED_TRACE(name);
        const QString folder = QString::number(++number);
        CopyLibrary(ZooFolder() + u'/' + ZooModule(u"WellBehaved"_s), folder,
                    QString::fromLatin1(name));
        searchPaths = {tree.Path(folder)};
        calls.Clear();
        log.Clear();
        Make(QString::fromLatin1(name));
        const void* const object = service.request(*plugin);
        ASSERT_NE(object, nullptr);
        EXPECT_TRUE(plugin->UnloadModule());
        EXPECT_EQ(service.stored(*plugin), object);
        EXPECT_EQ(plugin->GetLoadState(), LoadState::NotLoaded);
        EXPECT_EQ(log.Lines(), (QStringList{Loaded(), Unloaded()}));
        plugin.reset();
        EXPECT_EQ(Calls("delete"), 0);
    }
}

TEST_P(PluginStates, AModuleWhoseNameOnlyBeginsLikeTheExceptedOneIsNotExcepted)
{
    const QString name = u"FerruleSyncPlugin.dll.so"_s;
    CopyLibrary(ZooFolder() + u'/' + ZooModule(u"WellBehaved"_s), u"one"_s, name);
    searchPaths = {tree.Path(u"one"_s)};
    Make(name);
    ASSERT_NE(service.request(*plugin), nullptr);
    EXPECT_TRUE(plugin->UnloadModule());
    EXPECT_EQ(service.stored(*plugin), nullptr);
    EXPECT_EQ(Calls("delete"), 1);
}

INSTANTIATE_TEST_SUITE_P(Services, PluginStates, ::testing::ValuesIn(services),
                         [](const auto& service) { return std::string(service.param.name); });

} // namespace
