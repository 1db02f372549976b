// SPDX-License-Identifier: Apache-2.0

// Folders as they are typed on Windows: letter case does not count, and a drive may be left out.

#include "CommandFixture.h"

#include "syncservices/ServicesSettings.h"

#include <QtCore/QDir>

namespace Halvern::Test {

namespace {

class CloudFolderOnWindows : public CommandFixture
{
protected:
    CloudFolderOnWindows() { tree.File(u"work/a.tlk"_qs); }

    CommandResult ImportTo(const QString& cloudFolder) const
    {
        return Run({u"import"_qs, u"a.tlk"_qs, u"--settings"_qs, tree.Path(u"settings.ini"_qs),
                    u"--cloud-folder"_qs, cloudFolder});
    }
    void WriteSettings(const QString& cloudFolder) const
    {
        SyncServices::ServicesSettings settings;
        settings.cloudCacheFolder = cloudFolder;
        settings.databaseFile = tree.Path(u"data/my.db"_qs);
        QString error;
        EXPECT_TRUE(settings.Save(tree.Path(u"settings.ini"_qs), &error)) << error.toStdString();
    }
};

} // namespace

TEST_F(CloudFolderOnWindows, HasOneDatabaseHoweverItsNameIsTyped)
{
    WriteSettings(tree.Path(u"my cloud"_qs));
    EXPECT_EQ(ImportTo(tree.Path(u"Sync"_qs)).exitCode, 0);
    for (const QString& folder : {u"sYNC"_qs, u"SYNC"_qs, u"Sync"_qs}) {
        const CommandResult result = ImportTo(QDir::toNativeSeparators(tree.Path(folder)));
        EXPECT_TRUE(result.out.startsWith(u"unchanged"_qs)) << ::testing::PrintToString(result);
    }
}

TEST_F(CloudFolderOnWindows, KnowsASourceHoweverItsNameIsTyped)
{
    EXPECT_EQ(Import({u"a.tlk"_qs}).exitCode, 0);
    const CommandResult result = Import({u"A.TLK"_qs});
    EXPECT_TRUE(result.out.startsWith(u"unchanged"_qs)) << ::testing::PrintToString(result);
}

TEST_F(CloudFolderOnWindows, ThatTheSettingsNameHasTheirDatabaseHoweverItsNameIsTyped)
{
    WriteSettings(QDir::toNativeSeparators(tree.Path(u"My Cloud"_qs)));
    EXPECT_EQ(ImportTo(tree.Path(u"my cloud"_qs)).exitCode, 0);
    EXPECT_TRUE(tree.Exists(u"data/my.db"_qs));
}

TEST_F(CloudFolderOnWindows, WhosePathLostItsBackslashesInTheSettingsIsAUsageError)
{
    tree.File(u"settings.ini"_qs, "[General]\ncloudCacheFolder=D:\\Sync\\Work\n");
    const CommandResult result =
        Run({u"import"_qs, u"a.tlk"_qs, u"--settings"_qs, tree.Path(u"settings.ini"_qs)});
    EXPECT_EQ(result.exitCode, 2) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.err.contains(u"cloudCacheFolder"_qs)) << ::testing::PrintToString(result);
}

} // namespace Halvern::Test
