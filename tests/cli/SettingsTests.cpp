// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include "syncservices/ServicesSettings.h"

namespace Halvern::Test {

namespace {

class SettingsOfTheCommand : public CommandFixture
{
protected:
    QString SettingsFile() const
    {
        SyncServices::ServicesSettings settings;
        settings.cloudCacheFolder = tree.Path(u"my cloud"_qs);
        settings.databaseFile = tree.Path(u"data/my.db"_qs);
        const QString file = tree.Path(u"settings.ini"_qs);
        QString error;
        EXPECT_TRUE(settings.Save(file, &error)) << error.toStdString();
        return file;
    }
};

} // namespace

TEST_F(SettingsOfTheCommand, NeitherWrittenNorReadWhenFolderAndDatabaseAreGiven)
{
    tree.File(u"work/a.tlk"_qs);
    const CommandResult result = Import({u"a.tlk"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Contents(u"home"_qs), FileTree::Snapshot());
}

TEST_F(SettingsOfTheCommand, AFileGivenNamesFolderAndDatabase)
{
    tree.File(u"work/a.tlk"_qs);
    const CommandResult result = Run({u"import"_qs, u"a.tlk"_qs, u"--settings"_qs, SettingsFile()});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(tree.Exists(u"my cloud/a.tlk"_qs));
    EXPECT_TRUE(tree.Exists(u"data/my.db"_qs));
    EXPECT_EQ(tree.Contents(u"home"_qs), FileTree::Snapshot());
}

TEST_F(SettingsOfTheCommand, ACloudFolderGivenAloneHasADatabaseOfItsOwnOutsideOfIt)
{
    tree.File(u"work/a.tlk"_qs);
    const QStringList arguments{u"import"_qs,   u"a.tlk"_qs,          u"--settings"_qs,
                                SettingsFile(), u"--cloud-folder"_qs, tree.Path(u"other"_qs)};
    EXPECT_EQ(Run(arguments).exitCode, 0);
    EXPECT_EQ(tree.Contents(u"other"_qs), (FileTree::Snapshot{{u"a.tlk"_qs, "work/a.tlk"}}));
    EXPECT_FALSE(tree.Exists(u"data/my.db"_qs));
    // The second run finds what the first one recorded.
    EXPECT_TRUE(Run(arguments).out.startsWith(u"unchanged"_qs));
}

TEST_F(SettingsOfTheCommand, ADatabaseInTheCloudFolderIsRefused)
{
    tree.File(u"work/a.tlk"_qs);
    const CommandResult result =
        Run({u"import"_qs, u"a.tlk"_qs, u"--cloud-folder"_qs, tree.Path(u"cloud"_qs),
             u"--database"_qs, tree.Path(u"cloud/sync.db"_qs)});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_FALSE(tree.Exists(u"cloud"_qs));
}

TEST_F(SettingsOfTheCommand, ABrokenFileIsAUsageErrorThatNamesIt)
{
    tree.File(u"work/a.tlk"_qs).File(u"settings.ini"_qs, "[General]\nloggedIn=maybe\n");
    const CommandResult result =
        Run({u"import"_qs, u"a.tlk"_qs, u"--settings"_qs, tree.Path(u"settings.ini"_qs)});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(result.err.contains(u"settings.ini"_qs)) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.err.contains(u"loggedIn"_qs));
}

TEST_F(SettingsOfTheCommand, ThatSayNotLoggedInKeepFilesFromBeingImported)
{
    tree.File(u"work/a.tlk"_qs).File(u"settings.ini"_qs, "[General]\nloggedIn=false\n");
    const CommandResult result =
        Import({u"a.tlk"_qs, u"--settings"_qs, tree.Path(u"settings.ini"_qs)});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains(u"not logged in"_qs));
    EXPECT_EQ(Cloud(), FileTree::Snapshot());
}

} // namespace Halvern::Test
