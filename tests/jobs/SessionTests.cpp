// SPDX-License-Identifier: Apache-2.0

#include "JobsFixture.h"

#include "corsync/FileLinks.h"
#include "corsync/Plugins.h"

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>

#include <algorithm>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

class SessionOfAHost : public JobsFixture
{
protected:
    /// The kind of the error that the call throws.
    template <typename Call>
    static JobErrorKind KindOf(Call call)
    {
        try {
            call();
        } catch (const JobError& error) {
            EXPECT_FALSE(error.Text().isEmpty());
            EXPECT_EQ(QString::fromUtf8(error.what()), error.Text());
            return error.Kind();
        }
        ADD_FAILURE() << "nothing was thrown";
        return JobErrorKind::WrongOrder;
    }

    JobErrorKind KindOfPlan(const ImportRequest& request)
    {
        ImportJob job(*session, request);
        return KindOf([&] { job.MakePlan(); });
    }
};

} // namespace

TEST_F(SessionOfAHost, SaysWhyItCannotBegin)
{
    EXPECT_EQ(KindOf([&] { Session(Settings(), {tree.Path(u"nope"_s)}); }),
              JobErrorKind::PluginFolderMissing);
    SyncServices::ServicesSettings noFolder = Settings();
    noFolder.cloudCacheFolder.clear();
    EXPECT_EQ(KindOf([&] { Session{noFolder}; }), JobErrorKind::SettingsRefused);
    tree.File(u"file"_s);
    noFolder.cloudCacheFolder = tree.Path(u"file/cloud"_s);
    EXPECT_EQ(KindOf([&] { Session{noFolder}; }), JobErrorKind::NoCloudFolder);
    tree.File(u"broken.db"_s, QByteArray(8192, 'x'));
    SyncServices::ServicesSettings broken = Settings();
    broken.databaseFile = tree.Path(u"broken.db"_s);
    EXPECT_EQ(KindOf([&] { Session{broken}; }), JobErrorKind::DatabaseNotOpened);
    EXPECT_EQ(tree.Read(u"broken.db"_s), QByteArray(8192, 'x'));
    // None of these stands in the way of the next.
    EXPECT_EQ(Begin().CloudFolder(), tree.Path(u"cloud"_s));
}

TEST_F(SessionOfAHost, IsTheOnlyOneOfItsProcess)
{
    Begin();
    EXPECT_EQ(KindOf([&] { Session{Settings()}; }), JobErrorKind::SessionTaken);
    tree.File(u"work/a.tlk"_s);
    EXPECT_EQ(Import(Request({u"a.tlk"_s})).summary.Count(Outcome::Copied), 1);
}

TEST_F(SessionOfAHost, RefusesRequestsThatCannotBe)
{
    tree.File(u"work/a.tlk"_s).File(u"cloud/in.tlk"_s);
    Begin();
    EXPECT_EQ(KindOfPlan(Request({u"nope.tlk"_s})), JobErrorKind::SourceMissing);
    EXPECT_EQ(KindOfPlan(Request({u"../cloud/in.tlk"_s})), JobErrorKind::SourceRefused);
    EXPECT_EQ(KindOfPlan(Request({u".."_s})), JobErrorKind::SourceRefused);
    EXPECT_EQ(KindOfPlan(Request({u"a.tlk"_s}, tree.Path(u"elsewhere"_s))),
              JobErrorKind::TargetRefused);
    EXPECT_EQ(KindOfPlan(Request({u"a.tlk"_s}, u"in.tlk"_s)), JobErrorKind::TargetRefused);
}

TEST_F(SessionOfAHost, OfAUserWhoIsNotLoggedInImportsNothing)
{
    tree.File(u"work/a.tlk"_s);
    SyncServices::ServicesSettings settings = Settings();
    settings.loggedIn = false;
    session.emplace(settings, PluginFolders());
    EXPECT_EQ(KindOfPlan(Request({u"a.tlk"_s})), JobErrorKind::SyncOff);
    session.reset();
    settings.loggedIn = true;
    settings.cloudCacheFolderSyncEnabled = false;
    session.emplace(settings, PluginFolders());
    EXPECT_EQ(KindOfPlan(Request({u"a.tlk"_s})), JobErrorKind::SyncOff);
}

TEST_F(SessionOfAHost, ResolvesPlacesWithoutASettingsFileWhenBothAreGiven)
{
    const Places places{{}, tree.Path(u"my cloud/"_s), tree.Path(u"x/my.db"_s)};
    const auto settings = ResolveSettings(places, SessionUse::Import);
    EXPECT_EQ(settings.cloudCacheFolder, tree.Path(u"my cloud"_s));
    EXPECT_EQ(settings.databaseFile, tree.Path(u"x/my.db"_s));
    const Places inside{{}, tree.Path(u"cloud"_s), tree.Path(u"cloud/sync.db"_s)};
    EXPECT_EQ(KindOf([&] { ResolveSettings(inside, SessionUse::Import); }),
              JobErrorKind::SettingsRefused);
}

TEST_F(SessionOfAHost, ForPlansMakesNoSettingsFile)
{
    const Places places{tree.Path(u"settings.ini"_s), tree.Path(u"cloud"_s), {}};
    ResolveSettings(places, SessionUse::PlanOnly);
    EXPECT_FALSE(tree.Exists(u"settings.ini"_s));
    ResolveSettings(places, SessionUse::Import);
    EXPECT_TRUE(tree.Exists(u"settings.ini"_s));
}

TEST_F(SessionOfAHost, ReadsLinksAndChangesNothing)
{
    TakeGardenShed();
    const FileTree::Snapshot before = tree.Contents();
    {
        const auto temporary = Session::Temporary(PluginFolders(), {PluginIsolationMode::Never});
        const LinksOfFile scene =
            ReadLinks(*temporary, {tree.Path(u"work/shed/scene/Shed.gltf"_s)}).first();
        ASSERT_EQ(scene.links.size(), 12);
        EXPECT_TRUE(scene.problems.isEmpty());
        const auto missing =
            std::count_if(scene.links.begin(), scene.links.end(),
                          [](const StoredLink& link) { return link.state == LinkState::Missing; });
        EXPECT_EQ(missing, 1);
        EXPECT_EQ(KindOf([&] { ReadLinks(*temporary, {tree.Path(u"nope"_s)}); }),
                  JobErrorKind::SourceMissing);
        EXPECT_EQ(KindOf([&] { ReadLinks(*temporary, {tree.Path(u"work"_s)}); }),
                  JobErrorKind::SourceRefused);
    }
    EXPECT_EQ(tree.Contents(), before);
}

TEST_F(SessionOfAHost, LeavesOutTheLinksOfFilesThatACancelCameBefore)
{
    tree.File(u"work/a.tlk"_s, "link 1 b.tlk\n");
    const auto temporary = Session::Temporary(PluginFolders(), {PluginIsolationMode::Never});
    CancelToken token;
    token.Cancel();
    EXPECT_TRUE(ReadLinks(*temporary, {tree.Path(u"work/a.tlk"_s)}, &token).isEmpty());
}

TEST_F(SessionOfAHost, ListsPluginsAndTellsWhichDoNotLoad)
{
    tree.File(u"plugins/broken.syncplugin"_s,
              Registration(u"NoSuchLibrary.so"_s, u"FileLayout"_s, u"xyz"_s));
    Begin();
    const auto stateOf = [](const QList<PluginStatus>& plugins, const QString& module) {
        const auto found = std::find_if(plugins.begin(), plugins.end(), [&](const auto& status) {
            return status.plugin.module == module;
        });
        EXPECT_NE(found, plugins.end()) << module.toStdString();
        return found == plugins.end() ? PluginStatus() : *found;
    };
    const QList<PluginStatus> listed = ListPlugins(*session, false);
    EXPECT_EQ(stateOf(listed, TestResolverModule()).state, PluginState::NotTried);
    const QList<PluginStatus> loaded = ListPlugins(*session, true);
    EXPECT_EQ(stateOf(loaded, TestResolverModule()).state, PluginState::Loads);
    const PluginStatus broken = stateOf(loaded, u"NoSuchLibrary.so"_s);
    EXPECT_EQ(broken.state, PluginState::Fails);
    EXPECT_TRUE(broken.error.contains(u"NoSuchLibrary.so"_s));
    EXPECT_EQ(broken.plugin.registrationFile, tree.Path(u"plugins/broken.syncplugin"_s));
}

TEST_F(SessionOfAHost, TellsRegistrationsThatAreBrokenFromThoseThatAreDoubtful)
{
    tree.File(u"plugins/garbage.syncplugin"_s, "<SyncPlugins")
        .File(u"plugins/none.syncplugin"_s, "<SyncPlugins/>")
        .File(u"plugins/blank.syncplugin"_s,
              Registration(u"Other.so"_s, u"FileLayout"_s, u"xyz, abc"_s));
    Begin();
    QStringList broken, doubtful;
    for (const RegistrationFault& fault : ListRegistrationFaults(*session)) {
        EXPECT_FALSE(fault.text.isEmpty());
        (fault.isBroken ? broken : doubtful).append(QFileInfo(fault.file).fileName());
    }
    EXPECT_EQ(broken, (QStringList{u"garbage.syncplugin"_s, u"none.syncplugin"_s}));
    EXPECT_EQ(doubtful, QStringList{u"blank.syncplugin"_s});
}

TEST_F(SessionOfAHost, WarnsOnceOfADoubtfulRegistrationThatLiesInTwoFolders)
{
    const QByteArray text = Registration(u"Other.so"_s, u"FileLayout"_s, u"xyz"_s)
                                .replace("<SyncPlugins>", "<SyncPlugins ContractVersion=\"1\">");
    tree.File(u"plugins/other.syncplugin"_s, text).File(u"more/other.syncplugin"_s, text);
    session.emplace(Settings(), PluginFolders() + QStringList{tree.Path(u"more"_s)});
    const QList<RegistrationFault> faults = ListRegistrationFaults(*session);
    ASSERT_EQ(faults.size(), 1);
    EXPECT_EQ(faults[0].file, tree.Path(u"plugins/other.syncplugin"_s));
    EXPECT_FALSE(faults[0].isBroken);
}

TEST_F(SessionOfAHost, CallsARegistrationWithoutAServiceBrokenThoughAnotherOneHoldsItsLibrary)
{
    const QByteArray broken = Registration(TestResolverModule(), u"FileLinkResolvers"_s, u"tlk"_s);
    tree.File(u"before/broken.syncplugin"_s, broken).File(u"after/broken.syncplugin"_s, broken);
    session.emplace(Settings(), QStringList{tree.Path(u"before"_s)} + PluginFolders() +
                                    QStringList{tree.Path(u"after"_s)});
    QStringList files;
    for (const RegistrationFault& fault : ListRegistrationFaults(*session)) {
        EXPECT_TRUE(fault.isBroken) << fault.text.toStdString();
        files.append(fault.file);
    }
    files.removeDuplicates();
    EXPECT_EQ(files, (QStringList{tree.Path(u"before/broken.syncplugin"_s),
                                  tree.Path(u"after/broken.syncplugin"_s)}));
}

TEST_F(SessionOfAHost, ThatSetsUpNoLogIsNotToldSoByTheLogLibrary)
{
    const log4cplus::SharedAppenderPtrList appenders =
        log4cplus::Logger::getRoot().getAllAppenders();
    log4cplus::Logger::getRoot().removeAllAppenders();
    tree.File(u"work/a.tlk"_s, "fail\n");
    ::testing::internal::CaptureStderr();
    Begin();
    Import(Request({u"a.tlk"_s}));
    session.reset();
    const std::string told = ::testing::internal::GetCapturedStderr();
    for (const log4cplus::SharedAppenderPtr& appender : appenders)
        log4cplus::Logger::getRoot().addAppender(appender);
    EXPECT_EQ(told, "");
}

} // namespace Halvern::Test
