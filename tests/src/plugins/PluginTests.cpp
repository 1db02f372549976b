// SPDX-License-Identifier: Apache-2.0

#include "OverRelease.h"
#include "PluginsFixture.h"

#include <QtCore/QFile>

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using LoadState = Plugin::LoadState;

/// A plug-in of its own, without a manager.
class PluginTest : public ::testing::Test
{
protected:
    Plugin& Make(PluginType type, const QString& module)
    {
        Plugin::Registration registration;
        registration.type = type;
        registration.module = module;
        plugin = std::make_unique<Plugin>(registration, searchPaths);
        return *plugin;
    }
    Plugin& MakeResolver(const QString& module)
    {
        return Make(PluginType::FileLinkResolver, module);
    }
    Plugin& MakeLayout(const QString& module) { return Make(PluginType::FileLayout, module); }
    static QString Zoo(const char* fault) { return ZooModule(QString::fromLatin1(fault)); }
    static QString Line(const char* text, const QString& module)
    {
        return QString::fromLatin1(text).arg(module);
    }
    /// Copies the test resolver's library into the tree under another name.
    void CopyResolver(const QString& to)
    {
        const QString path = tree.Path(to);
        tree.File(to).Remove(to);
        ASSERT_TRUE(QFile::copy(TestPluginFolder() + u'/' + TestResolverModule(), path));
    }

    FileTree tree;
    LogCapture log;
    PluginCallLog calls;
    QStringList searchPaths{TestPluginFolder(), ZooFolder()};
    std::unique_ptr<Plugin> plugin;
};

TEST_F(PluginTest, ALibraryIsLoadedOnceAndUnloaded)
{
    Plugin& resolver = MakeResolver(TestResolverModule());
    EXPECT_EQ(resolver.GetLoadState(), LoadState::NotLoaded);
    EXPECT_TRUE(resolver.LoadModule());
    EXPECT_TRUE(resolver.LoadModule());
    EXPECT_EQ(resolver.GetLoadState(), LoadState::Loaded);
    EXPECT_TRUE(resolver.UnloadModule());
    EXPECT_EQ(resolver.GetLoadState(), LoadState::NotLoaded);
    EXPECT_FALSE(resolver.IsLoaded());
    EXPECT_EQ(log.Lines(u"CorsyncFileLink"_s),
              (QStringList{Line("INFO Plugin %1 loaded", TestResolverModule()),
                           Line("INFO Plugin %1 unloaded", TestResolverModule())}));
    EXPECT_EQ(log.Records().first().file, u"PluginManager.cpp"_s);
    EXPECT_TRUE(log.Records().first().function.contains(u"Plugin::LoadModule("_s));
    EXPECT_TRUE(log.Records().last().function.contains(u"Plugin::UnloadModule("_s));
}

TEST_F(PluginTest, ALibraryInTheSecondSearchFolderIsLoadedFromThere)
{
    const QString module = u"copy.so"_s;
    CopyResolver(u"second/"_s + module);
    searchPaths = {tree.Path(u"first"_s), tree.Path(u"second"_s)};
    EXPECT_TRUE(MakeResolver(module).LoadModule());
}

TEST_F(PluginTest, TheFirstSearchFolderWithSuchAFileWinsEvenIfItCannotBeLoaded)
{
    const QString module = u"copy.so"_s;
    CopyResolver(u"second/"_s + module);
    tree.File(u"first/"_s + module, "not a library");
    searchPaths = {tree.Path(u"first"_s), tree.Path(u"second"_s)};
    EXPECT_FALSE(MakeResolver(module).LoadModule());
}

TEST_F(PluginTest, SearchFoldersAddedLaterAreSearchedAtTheNextLoad)
{
    const QString module = u"copy.so"_s;
    CopyResolver(u"later/"_s + module);
    Plugin& resolver = MakeResolver(module);
    EXPECT_FALSE(resolver.LoadModule());
    EXPECT_EQ(resolver.GetLoadState(), LoadState::Failed);
    searchPaths.append(tree.Path(u"later"_s));
    EXPECT_TRUE(resolver.LoadModule());
    EXPECT_EQ(resolver.GetLoadState(), LoadState::Loaded);
    EXPECT_EQ(resolver.GetLastError(), QString());
}

TEST_F(PluginTest, ALibraryInNoSearchFolderIsLoadedByItsBareName)
{
    searchPaths = {tree.Path()};
    EXPECT_TRUE(MakeResolver(QStringLiteral(SYSTEM_LIBRARY)).LoadModule());
    EXPECT_EQ(log.Lines(),
              QStringList{Line("INFO Plugin %1 loaded", QStringLiteral(SYSTEM_LIBRARY))});
}

TEST_F(PluginTest, ALibraryThatIsNowhereFailsWithTheLoadersReason)
{
    const QString module = u"nowhere_to_be_found.so"_s;
    QLibrary reference(module);
    ASSERT_FALSE(reference.load());
    Plugin& resolver = MakeResolver(module);
    EXPECT_FALSE(resolver.LoadModule());
    const QString reason =
        u"Failed to load plugin %1. Error %2."_s.arg(module, reference.errorString());
    EXPECT_EQ(log.Lines(), QStringList{u"ERROR "_s + reason});
    EXPECT_EQ(resolver.GetLastError(), reason);
    EXPECT_EQ(resolver.GetLoadState(), LoadState::Failed);
}

TEST_F(PluginTest, AFileThatIsNoLibraryFailsAndIsTriedAgain)
{
    const QString module = u"text.so"_s;
    tree.File(module, "This is a text, and not a library.");
    searchPaths = {tree.Path()};
    Plugin& resolver = MakeResolver(module);
    EXPECT_EQ(resolver.GetFileLinkResolver(), nullptr);
    EXPECT_EQ(resolver.GetFileLinkResolver(), nullptr);
    QLibrary reference(tree.Path(module));
    ASSERT_FALSE(reference.load());
    EXPECT_EQ(log.Count(u"ERROR Failed to load plugin %1. Error %2."_s.arg(
                  module, reference.errorString())),
              2);

    tree.Remove(module);
    CopyResolver(module);
    EXPECT_NE(resolver.GetFileLinkResolver(), nullptr);
}

TEST_F(PluginTest, AnEmptyModuleFailsSilently)
{
    EXPECT_FALSE(MakeResolver({}).LoadModule());
    EXPECT_EQ(log.Lines(), QStringList());
    EXPECT_EQ(plugin->GetLoadState(), LoadState::NotLoaded);
}

TEST_F(PluginTest, UnloadingWhatWasNeverLoadedSucceedsSilently)
{
    EXPECT_TRUE(MakeResolver(TestResolverModule()).UnloadModule());
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(PluginTest, AFailedUnloadIsLoggedAndLeavesTheLibraryObject)
{
    const QString module = QStringLiteral(SYSTEM_LIBRARY);
    Plugin& resolver = MakeResolver(module);
    ASSERT_TRUE(resolver.LoadModule());
    OverRelease(module);
    log.Clear();

    EXPECT_FALSE(resolver.UnloadModule());
    ASSERT_EQ(log.Records().size(), 1);
    const QString reason = log.Records().first().text;
    EXPECT_EQ(log.Records().first().level, log4cplus::ERROR_LOG_LEVEL);
    EXPECT_TRUE(reason.startsWith(Line("Failed to unload plugin %1. Error ", module)));
    EXPECT_TRUE(reason.contains(u"Cannot unload library"_s));
    EXPECT_TRUE(reason.endsWith(u'.'));
    EXPECT_EQ(resolver.GetLastError(), reason);
    EXPECT_EQ(resolver.GetLoadState(), LoadState::Loaded);
}

TEST_F(PluginTest, TheFactoryLivesOnlyForOneCreation)
{
    MakeResolver(Zoo("WellBehaved")).GetFileLinkResolver();
    const QStringList resolverCalls{u"new factory"_s, u"new resolver"_s, u"delete factory"_s};
    EXPECT_EQ(calls.Calls(), resolverCalls);
    plugin.reset();
    EXPECT_EQ(calls.Calls(), resolverCalls + QStringList{u"delete resolver"_s});

    calls.Clear();
    MakeLayout(Zoo("WellBehaved")).GetFileLayout();
    plugin.reset();
    EXPECT_EQ(calls.Calls(), (QStringList{u"new factory"_s, u"new layout"_s, u"delete factory"_s,
                                          u"delete layout"_s}));
}

TEST_F(PluginTest, EachRequestMakesANewObjectAndTheReplacedOneIsNotDestroyed)
{
    Plugin& resolver = MakeResolver(Zoo("WellBehaved"));
    auto* first = resolver.GetFileLinkResolver();
    auto* second = resolver.GetFileLinkResolver();
    EXPECT_NE(first, second);
    EXPECT_EQ(resolver.GetStoredResolver(), second);
    EXPECT_EQ(calls.Calls().count(u"new resolver"_s), 2);
    EXPECT_TRUE(resolver.UnloadModule());
    EXPECT_EQ(calls.Calls().count(u"delete resolver"_s), 1);
}

TEST_F(PluginTest, APluginOfTheOtherTypeGivesNothingAndLoadsNothing)
{
    EXPECT_EQ(MakeResolver(Zoo("WellBehaved")).GetFileLayout(), nullptr);
    EXPECT_EQ(MakeLayout(Zoo("WellBehaved")).GetFileLinkResolver(), nullptr);
    EXPECT_EQ(log.Lines(), QStringList());
    EXPECT_EQ(calls.Calls(), QStringList());
}

/// A library that yields no service, with the line that says why.
struct FailureRow
{
    const char* name;
    QString module;
    const char* resolverLine;
    const char* layoutLine;
};

void PrintTo(const FailureRow& row, std::ostream* out)
{
    *out << row.name;
}

class PluginWithoutService : public PluginTest, public ::testing::WithParamInterface<FailureRow>
{};

TEST_P(PluginWithoutService, AsAResolverIsUnloadedAndStaysMarkedAsFailed)
{
    const FailureRow& row = GetParam();
    const QString module = row.module.isEmpty() ? TestLayoutModule() : row.module;
    Plugin& resolver = MakeResolver(module);
    EXPECT_EQ(resolver.GetFileLinkResolver(), nullptr);
    EXPECT_EQ(log.Lines(),
              (QStringList{Line("INFO Plugin %1 loaded", module), Line(row.resolverLine, module),
                           Line("INFO Plugin %1 unloaded", module)}));
    EXPECT_TRUE(log.Records()[1].function.contains(u"GetFileLinkResolver("_s));
    EXPECT_EQ(log.Records()[1].file, u"PluginManager.cpp"_s);
    EXPECT_EQ(resolver.GetLoadState(), LoadState::Failed);
    EXPECT_FALSE(resolver.IsLoaded());
    EXPECT_EQ(u"ERROR "_s + resolver.GetLastError(), Line(row.resolverLine, module));
    EXPECT_EQ(calls.Calls().count(u"new factory"_s), calls.Calls().count(u"delete factory"_s));
}

TEST_P(PluginWithoutService, AsALayoutIsUnloadedWhichClearsTheMark)
{
    const FailureRow& row = GetParam();
    const QString module = row.module.isEmpty() ? TestResolverModule() : row.module;
    Plugin& layout = MakeLayout(module);
    EXPECT_EQ(layout.GetFileLayout(), nullptr);
    EXPECT_EQ(log.Lines(),
              (QStringList{Line("INFO Plugin %1 loaded", module), Line(row.layoutLine, module),
                           Line("INFO Plugin %1 unloaded", module)}));
    EXPECT_TRUE(log.Records()[1].function.contains(u"GetFileLayout("_s));
    EXPECT_EQ(layout.GetLoadState(), LoadState::NotLoaded);
    EXPECT_FALSE(layout.IsLoaded());
    EXPECT_EQ(calls.Calls().count(u"new factory"_s), calls.Calls().count(u"delete factory"_s));
}

INSTANTIATE_TEST_SUITE_P(
    Zoo, PluginWithoutService,
    ::testing::Values(
        FailureRow{"MissingExport",
                   {},
                   "ERROR Exported function CreateFileLinkResolverFactory not found in plugin %1",
                   "ERROR Exported function CreateSyncPluginFactory not found in plugin %1"},
        // A layout's null factory is reported under the resolver's export, too.
        FailureRow{"NullFactory", ZooModule(u"NullFactory"_s),
                   "ERROR Plugin %1 returned NULL in CreateFileLinkResolverFactory",
                   "ERROR Plugin %1 returned NULL in CreateFileLinkResolverFactory"},
        FailureRow{"NullObject", ZooModule(u"NullObject"_s),
                   "ERROR Plugin %1 returned NULL in CreateFileLinkResolver",
                   "ERROR Plugin %1 returned NULL in CreateFileLayout"},
        FailureRow{"ThrowingFactory", ZooModule(u"ThrowingFactory"_s),
                   "ERROR Plugin %1 threw an exception in CreateFileLinkResolverFactory: "
                   "a fault of the zoo",
                   "ERROR Plugin %1 threw an exception in CreateSyncPluginFactory: "
                   "a fault of the zoo"},
        FailureRow{"ThrowingCreation", ZooModule(u"ThrowingCreation"_s),
                   "ERROR Plugin %1 threw an exception in CreateFileLinkResolver: "
                   "a fault of the zoo",
                   "ERROR Plugin %1 threw an exception in CreateFileLayout: a fault of the zoo"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(PluginTest, AfterANullFactoryTheObjectOfTheEarlierRequestIsReturned)
{
    const QString module = Zoo("NullFactoryTheSecondTime");
    Plugin& resolver = MakeResolver(module);
    auto* first = resolver.GetFileLinkResolver();
    ASSERT_NE(first, nullptr);
    log.Clear();
    EXPECT_EQ(resolver.GetFileLinkResolver(), first);
    EXPECT_EQ(log.Lines(),
              QStringList{
                  Line("ERROR Plugin %1 returned NULL in CreateFileLinkResolverFactory", module)});
    EXPECT_TRUE(resolver.IsLoaded());
    EXPECT_EQ(resolver.GetLoadState(), LoadState::Loaded);

    Plugin& layout = MakeLayout(module);
    auto* firstLayout = layout.GetFileLayout();
    ASSERT_NE(firstLayout, nullptr);
    EXPECT_EQ(layout.GetFileLayout(), firstLayout);
}

TEST_F(PluginTest, ANullObjectReplacesTheObjectOfTheEarlierRequest)
{
    const QString module = Zoo("NullObjectTheSecondTime");
    Plugin& resolver = MakeResolver(module);
    ASSERT_NE(resolver.GetFileLinkResolver(), nullptr);
    EXPECT_EQ(resolver.GetFileLinkResolver(), nullptr);
    EXPECT_EQ(resolver.GetStoredResolver(), nullptr);
    EXPECT_FALSE(resolver.IsLoaded());
    // The replaced object is not destroyed.
    EXPECT_EQ(calls.Calls().count(u"delete resolver"_s), 0);
    // The next request starts anew.
    EXPECT_NE(resolver.GetFileLinkResolver(), nullptr);
}

TEST_F(PluginTest, AnUnloadedPluginLoadsAgainOnItsNextRequest)
{
    Plugin& resolver = MakeResolver(Zoo("WellBehaved"));
    ASSERT_NE(resolver.GetFileLinkResolver(), nullptr);
    EXPECT_TRUE(resolver.UnloadModule());
    EXPECT_EQ(resolver.GetStoredResolver(), nullptr);
    EXPECT_NE(resolver.GetFileLinkResolver(), nullptr);
    EXPECT_EQ(log.Count(Line("INFO Plugin %1 loaded", Zoo("WellBehaved"))), 2);
}

TEST_F(PluginTest, TheExceptedModuleKeepsItsObjectsWhenItIsUnloaded)
{
    int number = 0;
    for (const char* name : {"FerruleSyncPlugin.dll", "ferrulesyncplugin.dll"}) {
        SCOPED_TRACE(name);
        const QString folder = QString::number(++number);
        const QString module = QString::fromLatin1(name);
        tree.Folder(folder);
        ASSERT_TRUE(QFile::copy(ZooFolder() + u'/' + Zoo("WellBehaved"),
                                tree.Path(folder + u'/' + module)));
        searchPaths = {tree.Path(folder)};
        calls.Clear();
        log.Clear();
        Plugin& resolver = MakeResolver(module);
        auto* object = resolver.GetFileLinkResolver();
        ASSERT_NE(object, nullptr);

        EXPECT_TRUE(resolver.UnloadModule());
        EXPECT_EQ(resolver.GetStoredResolver(), object);
        EXPECT_FALSE(resolver.IsLoaded());
        EXPECT_EQ(resolver.GetLoadState(), LoadState::NotLoaded);
        EXPECT_EQ(log.Lines(), (QStringList{Line("INFO Plugin %1 loaded", module),
                                            Line("INFO Plugin %1 unloaded", module)}));
        EXPECT_NE(resolver.GetFileLinkResolver(), nullptr);
        plugin.reset();
        EXPECT_EQ(calls.Calls().count(u"new resolver"_s), 2);
        EXPECT_EQ(calls.Calls().count(u"delete resolver"_s), 0);
    }
}

TEST_F(PluginTest, TryServiceTellsWhetherANewObjectWasMade)
{
    EXPECT_TRUE(MakeResolver(TestResolverModule()).TryService());
    EXPECT_TRUE(MakeLayout(TestLayoutModule()).TryService());
    EXPECT_FALSE(MakeResolver(TestLayoutModule()).TryService());
    Plugin& fading = MakeResolver(Zoo("NullFactoryTheSecondTime"));
    EXPECT_TRUE(fading.TryService());
    EXPECT_FALSE(fading.TryService());
    EXPECT_EQ(fading.GetLastError(),
              Line("Plugin %1 returned NULL in CreateFileLinkResolverFactory", fading.GetModule()));
}

} // namespace
