// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include "syncservices/ServicesSettings.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class SettingsOfTheCommand : public CommandFixture
{
protected:
    QString SettingsFile() const
    {
        SyncServices::ServicesSettings settings;
        settings.cloudCacheFolder = tree.Path(u"my cloud"_s);
        settings.databaseFile = tree.Path(u"data/my.db"_s);
        const QString file = tree.Path(u"settings.ini"_s);
        QString error;
        EXPECT_TRUE(settings.Save(file, &error)) << error.toStdString();
        return file;
    }
};

} // namespace

TEST_F(SettingsOfTheCommand, NeitherWrittenNorReadWhenFolderAndDatabaseAreGiven)
{
    tree.File(u"work/a.tlk"_s);
    const CommandResult result = Import({u"a.tlk"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Contents(u"home"_s), FileTree::Snapshot());
}

TEST_F(SettingsOfTheCommand, AFileGivenNamesFolderAndDatabase)
{
    tree.File(u"work/a.tlk"_s);
    const CommandResult result = Run({u"import"_s, u"a.tlk"_s, u"--settings"_s, SettingsFile()});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(tree.Exists(u"my cloud/a.tlk"_s));
    EXPECT_TRUE(tree.Exists(u"data/my.db"_s));
    EXPECT_EQ(tree.Contents(u"home"_s), FileTree::Snapshot());
}

TEST_F(SettingsOfTheCommand, ACloudFolderGivenAloneHasADatabaseOfItsOwnOutsideOfIt)
{
    tree.File(u"work/a.tlk"_s);
    const QStringList arguments{u"import"_s,    u"a.tlk"_s,          u"--settings"_s,
                                SettingsFile(), u"--cloud-folder"_s, tree.Path(u"other"_s)};
    EXPECT_EQ(Run(arguments).exitCode, 0);
    EXPECT_EQ(tree.Contents(u"other"_s), (FileTree::Snapshot{{u"a.tlk"_s, "work/a.tlk"}}));
    EXPECT_FALSE(tree.Exists(u"data/my.db"_s));
    // The second run finds what the first one recorded.
    EXPECT_TRUE(Run(arguments).out.startsWith(u"unchanged"_s));
}

TEST_F(SettingsOfTheCommand, ADatabaseInTheCloudFolderIsRefused)
{
    tree.File(u"work/a.tlk"_s);
    const CommandResult result =
        Run({u"import"_s, u"a.tlk"_s, u"--cloud-folder"_s, tree.Path(u"cloud"_s), u"--database"_s,
             tree.Path(u"cloud/sync.db"_s)});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_FALSE(tree.Exists(u"cloud"_s));
}

TEST_F(SettingsOfTheCommand, ABaseStoreInTheCloudFolderIsRefusedBeforeAnythingIsMade)
{
    tree.File(u"work/a.tlk"_s)
        .File(u"settings.ini"_s,
              "[General]\ncloudCacheFolder=" + tree.Path(u"cloud"_s).toUtf8() +
                  "\ndatabaseFile=" + tree.Path(u"sync.db"_s).toUtf8() +
                  "\nbaseStoreFolder=" + tree.Path(u"cloud/old versions"_s).toUtf8() + '\n');
    for (const QString& command : {u"import"_s, u"retry"_s, u"versions"_s}) {
        const CommandResult result =
            Run({command, u"a.tlk"_s, u"--settings"_s, tree.Path(u"settings.ini"_s)});
        EXPECT_EQ(result.exitCode, 2) << ::testing::PrintToString(result);
        EXPECT_TRUE(result.err.contains(u"cloud/old versions must not lie in the cloud"_s))
            << ::testing::PrintToString(result);
    }
    EXPECT_FALSE(tree.Exists(u"cloud"_s));
    EXPECT_FALSE(tree.Exists(u"sync.db"_s));
}

TEST_F(SettingsOfTheCommand, AFileThatIsNamedAndNotThereIsAnErrorAndNothingIsMade)
{
    tree.File(u"work/a.tlk"_s);
    const FileTree::Snapshot before = tree.Contents();
    for (const QStringList& options : {QStringList(), QStringList{u"--dry-run"_s}}) {
        const CommandResult result =
            Run(QStringList{u"import"_s, u"a.tlk"_s, u"--settings"_s, u"setings.ini"_s} + options);
        EXPECT_EQ(result.exitCode, 2) << ::testing::PrintToString(result);
        EXPECT_TRUE(result.err.contains(u"no such settings file: setings.ini"_s))
            << ::testing::PrintToString(result);
    }
    EXPECT_EQ(tree.Contents(), before);
}

TEST_F(SettingsOfTheCommand, ABrokenFileIsAUsageErrorThatNamesIt)
{
    tree.File(u"work/a.tlk"_s).File(u"settings.ini"_s, "[General]\nloggedIn=maybe\n");
    const CommandResult result =
        Run({u"import"_s, u"a.tlk"_s, u"--settings"_s, tree.Path(u"settings.ini"_s)});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(result.err.contains(u"settings.ini"_s)) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.err.contains(u"loggedIn"_s));
}

TEST_F(SettingsOfTheCommand, ThatSayNotLoggedInKeepFilesFromBeingImported)
{
    tree.File(u"work/a.tlk"_s).File(u"settings.ini"_s, "[General]\nloggedIn=false\n");
    const CommandResult result =
        Import({u"a.tlk"_s, u"--settings"_s, tree.Path(u"settings.ini"_s)});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains(u"not logged in"_s));
    EXPECT_EQ(Cloud(), FileTree::Snapshot());
}

} // namespace Halvern::Test
