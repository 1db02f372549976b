// SPDX-License-Identifier: Apache-2.0

// Folders as they are typed on Windows: letter case does not count, and a drive may be left out.

#include "CommandFixture.h"

#include "syncservices/ServicesSettings.h"

#include <QtCore/QDir>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class CloudFolderOnWindows : public CommandFixture
{
protected:
    CloudFolderOnWindows() { tree.File(u"work/a.tlk"_s); }

    CommandResult ImportTo(const QString& cloudFolder) const
    {
        return Run({u"import"_s, u"a.tlk"_s, u"--settings"_s, tree.Path(u"settings.ini"_s),
                    u"--cloud-folder"_s, cloudFolder});
    }
    void WriteSettings(const QString& cloudFolder) const
    {
        SyncServices::ServicesSettings settings;
        settings.cloudCacheFolder = cloudFolder;
        settings.databaseFile = tree.Path(u"data/my.db"_s);
        QString error;
        EXPECT_TRUE(settings.Save(tree.Path(u"settings.ini"_s), &error)) << error.toStdString();
    }
};

} // namespace

TEST_F(CloudFolderOnWindows, HasOneDatabaseHoweverItsNameIsTyped)
{
    WriteSettings(tree.Path(u"my cloud"_s));
    EXPECT_EQ(ImportTo(tree.Path(u"Sync"_s)).exitCode, 0);
    for (const QString& folder : {u"sYNC"_s, u"SYNC"_s, u"Sync"_s}) {
        const CommandResult result = ImportTo(QDir::toNativeSeparators(tree.Path(folder)));
        EXPECT_TRUE(result.out.startsWith(u"unchanged"_s)) << ::testing::PrintToString(result);
    }
}

TEST_F(CloudFolderOnWindows, KnowsASourceHoweverItsNameIsTyped)
{
    EXPECT_EQ(Import({u"a.tlk"_s}).exitCode, 0);
    const CommandResult result = Import({u"A.TLK"_s});
    EXPECT_TRUE(result.out.startsWith(u"unchanged"_s)) << ::testing::PrintToString(result);
}

TEST_F(CloudFolderOnWindows, ThatTheSettingsNameHasTheirDatabaseHoweverItsNameIsTyped)
{
    WriteSettings(QDir::toNativeSeparators(tree.Path(u"My Cloud"_s)));
    EXPECT_EQ(ImportTo(tree.Path(u"my cloud"_s)).exitCode, 0);
    EXPECT_TRUE(tree.Exists(u"data/my.db"_s));
}

TEST_F(CloudFolderOnWindows, WhosePathLostItsBackslashesInTheSettingsIsAUsageError)
{
    tree.File(u"settings.ini"_s, "[General]\ncloudCacheFolder=D:\\Sync\\Work\n");
    const CommandResult result =
        Run({u"import"_s, u"a.tlk"_s, u"--settings"_s, tree.Path(u"settings.ini"_s)});
    EXPECT_EQ(result.exitCode, 2) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.err.contains(u"cloudCacheFolder"_s)) << ::testing::PrintToString(result);
}

} // namespace Halvern::Test
