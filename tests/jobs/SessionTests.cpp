// SPDX-License-Identifier: Apache-2.0

#include "JobsFixture.h"

#include "corsync/FileLinks.h"
#include "corsync/Plugins.h"

#include <algorithm>

namespace Halvern::Test {

using namespace Jobs;

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
    EXPECT_EQ(KindOf([&] { Session(Settings(), {tree.Path(u"nope"_qs)}); }),
              JobErrorKind::PluginFolderMissing);
    SyncServices::ServicesSettings noFolder = Settings();
    noFolder.cloudCacheFolder.clear();
    EXPECT_EQ(KindOf([&] { Session{noFolder}; }), JobErrorKind::SettingsRefused);
    tree.File(u"file"_qs);
    noFolder.cloudCacheFolder = tree.Path(u"file/cloud"_qs);
    EXPECT_EQ(KindOf([&] { Session{noFolder}; }), JobErrorKind::NoCloudFolder);
    tree.File(u"broken.db"_qs, QByteArray(8192, 'x'));
    SyncServices::ServicesSettings broken = Settings();
    broken.databaseFile = tree.Path(u"broken.db"_qs);
    EXPECT_EQ(KindOf([&] { Session{broken}; }), JobErrorKind::DatabaseNotOpened);
    EXPECT_EQ(tree.Read(u"broken.db"_qs), QByteArray(8192, 'x'));
    // None of these stands in the way of the next.
    EXPECT_EQ(Begin().CloudFolder(), tree.Path(u"cloud"_qs));
}

TEST_F(SessionOfAHost, IsTheOnlyOneOfItsProcess)
{
    Begin();
    EXPECT_EQ(KindOf([&] { Session{Settings()}; }), JobErrorKind::SessionTaken);
    tree.File(u"work/a.tlk"_qs);
    EXPECT_EQ(Import(Request({u"a.tlk"_qs})).summary.Count(Outcome::Copied), 1);
}

TEST_F(SessionOfAHost, RefusesRequestsThatCannotBe)
{
    tree.File(u"work/a.tlk"_qs).File(u"cloud/in.tlk"_qs);
    Begin();
    EXPECT_EQ(KindOfPlan(Request({u"nope.tlk"_qs})), JobErrorKind::SourceMissing);
    EXPECT_EQ(KindOfPlan(Request({u"../cloud/in.tlk"_qs})), JobErrorKind::SourceRefused);
    EXPECT_EQ(KindOfPlan(Request({u".."_qs})), JobErrorKind::SourceRefused);
    EXPECT_EQ(KindOfPlan(Request({u"a.tlk"_qs}, tree.Path(u"elsewhere"_qs))),
              JobErrorKind::TargetRefused);
    EXPECT_EQ(KindOfPlan(Request({u"a.tlk"_qs}, u"in.tlk"_qs)), JobErrorKind::TargetRefused);
}

TEST_F(SessionOfAHost, OfAUserWhoIsNotLoggedInImportsNothing)
{
    tree.File(u"work/a.tlk"_qs);
    SyncServices::ServicesSettings settings = Settings();
    settings.loggedIn = false;
    session.emplace(settings, PluginFolders());
    EXPECT_EQ(KindOfPlan(Request({u"a.tlk"_qs})), JobErrorKind::SyncOff);
    session.reset();
    settings.loggedIn = true;
    settings.cloudCacheFolderSyncEnabled = false;
    session.emplace(settings, PluginFolders());
    EXPECT_EQ(KindOfPlan(Request({u"a.tlk"_qs})), JobErrorKind::SyncOff);
}

TEST_F(SessionOfAHost, ResolvesPlacesWithoutASettingsFileWhenBothAreGiven)
{
    const Places places{{}, tree.Path(u"my cloud/"_qs), tree.Path(u"x/my.db"_qs)};
    const auto settings = ResolveSettings(places, SessionUse::Import);
    EXPECT_EQ(settings.cloudCacheFolder, tree.Path(u"my cloud"_qs));
    EXPECT_EQ(settings.databaseFile, tree.Path(u"x/my.db"_qs));
    const Places inside{{}, tree.Path(u"cloud"_qs), tree.Path(u"cloud/sync.db"_qs)};
    EXPECT_EQ(KindOf([&] { ResolveSettings(inside, SessionUse::Import); }),
              JobErrorKind::SettingsRefused);
}

TEST_F(SessionOfAHost, ForPlansMakesNoSettingsFile)
{
    const Places places{tree.Path(u"settings.ini"_qs), tree.Path(u"cloud"_qs), {}};
    ResolveSettings(places, SessionUse::PlanOnly);
    EXPECT_FALSE(tree.Exists(u"settings.ini"_qs));
    ResolveSettings(places, SessionUse::Import);
    EXPECT_TRUE(tree.Exists(u"settings.ini"_qs));
}

TEST_F(SessionOfAHost, ReadsLinksAndChangesNothing)
{
    TakeGardenShed();
    const FileTree::Snapshot before = tree.Contents();
    {
        const auto temporary = Session::Temporary(PluginFolders());
        const LinksOfFile scene =
            ReadLinks(*temporary, {tree.Path(u"work/shed/scene/Shed.gltf"_qs)}).first();
        ASSERT_EQ(scene.links.size(), 12);
        EXPECT_TRUE(scene.problems.isEmpty());
        const auto missing =
            std::count_if(scene.links.begin(), scene.links.end(),
                          [](const StoredLink& link) { return link.state == LinkState::Missing; });
        EXPECT_EQ(missing, 1);
        EXPECT_EQ(KindOf([&] { ReadLinks(*temporary, {tree.Path(u"nope"_qs)}); }),
                  JobErrorKind::SourceMissing);
        EXPECT_EQ(KindOf([&] { ReadLinks(*temporary, {tree.Path(u"work"_qs)}); }),
                  JobErrorKind::SourceRefused);
    }
    EXPECT_EQ(tree.Contents(), before);
}

TEST_F(SessionOfAHost, LeavesOutTheLinksOfFilesThatACancelCameBefore)
{
    tree.File(u"work/a.tlk"_qs, "link 1 b.tlk\n");
    const auto temporary = Session::Temporary(PluginFolders());
    CancelToken token;
    token.Cancel();
    EXPECT_TRUE(ReadLinks(*temporary, {tree.Path(u"work/a.tlk"_qs)}, &token).isEmpty());
}

TEST_F(SessionOfAHost, ListsPluginsAndTellsWhichDoNotLoad)
{
    tree.File(u"plugins/broken.syncplugin"_qs,
              Registration(u"NoSuchLibrary.so"_qs, u"FileLayout"_qs, u"xyz"_qs));
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
    const PluginStatus broken = stateOf(loaded, u"NoSuchLibrary.so"_qs);
    EXPECT_EQ(broken.state, PluginState::Fails);
    EXPECT_TRUE(broken.error.contains(u"NoSuchLibrary.so"_qs));
    EXPECT_EQ(broken.plugin.registrationFile, tree.Path(u"plugins/broken.syncplugin"_qs));
}

TEST_F(SessionOfAHost, TellsRegistrationsThatAreBrokenFromThoseThatAreDoubtful)
{
    tree.File(u"plugins/garbage.syncplugin"_qs, "<SyncPlugins")
        .File(u"plugins/none.syncplugin"_qs, "<SyncPlugins/>")
        .File(u"plugins/blank.syncplugin"_qs,
              Registration(u"Other.so"_qs, u"FileLayout"_qs, u"xyz, abc"_qs));
    Begin();
    QStringList broken, doubtful;
    for (const RegistrationFault& fault : ListRegistrationFaults(*session)) {
        EXPECT_FALSE(fault.text.isEmpty());
        (fault.isBroken ? broken : doubtful).append(QFileInfo(fault.file).fileName());
    }
    EXPECT_EQ(broken, (QStringList{u"garbage.syncplugin"_qs, u"none.syncplugin"_qs}));
    EXPECT_EQ(doubtful, QStringList{u"blank.syncplugin"_qs});
}

} // namespace Halvern::Test
