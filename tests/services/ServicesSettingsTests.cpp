// SPDX-License-Identifier: Apache-2.0

#include "FileTree.h"

#include "syncservices/ServicesSettings.h"

#include <gtest/gtest.h>

using namespace Halvern::SyncServices;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

namespace {

struct SettingsFile : testing::Test
{
    ServicesSettings Load()
    {
        return ServicesSettings::LoadOrCreate(tree.Path(u"conf/settings.ini"_s), &error);
    }
    ServicesSettings Load(const QByteArray& content)
    {
        tree.File(u"conf/settings.ini"_s, content);
        return Load();
    }

    FileTree tree;
    QString error;
};

} // namespace

TEST_F(SettingsFile, IsMadeWithTheDefaultsOnFirstUse)
{
    const ServicesSettings settings = Load();
    EXPECT_EQ(error, QString());
    EXPECT_EQ(settings.cloudCacheFolder, ServicesSettings::Defaults().cloudCacheFolder);
    EXPECT_TRUE(tree.Exists(u"conf/settings.ini"_s));
    const ServicesSettings again = Load();
    EXPECT_EQ(error, QString());
    EXPECT_EQ(again.databaseFile, ServicesSettings::Defaults().databaseFile);
    EXPECT_EQ(again.baseStoreLimit, qint64(1) << 30);
    EXPECT_TRUE(again.supportedFileTypes.isEmpty());
    EXPECT_TRUE(again.loggedIn);
}

TEST_F(SettingsFile, GivesBackEveryValue)
{
    ServicesSettings settings;
    settings.cloudCacheFolder = u"//home/müller/設計, neu; \"x\" \\ %20/Corsync"_s;
    settings.databaseFile = u"//data/Größe.db"_s;
    settings.databaseBusyTimeout = 1234;
    settings.baseStoreFolder = u"//base/x"_s;
    settings.baseStoreLimit = qint64(5) << 40;
    settings.userName = u" Jörg  Ω "_s;
    settings.authenticationConfigurationId = 42;
    settings.productConfigurationId = -3;
    settings.sourceConsumerId = u"consumer"_s;
    settings.loggedIn = false;
    settings.cloudCacheFolderSyncEnabled = false;
    settings.supportedFileTypes = QStringList({u"prt"_s, u"asm"_s});
    settings.allowedFolders = QStringList({u"//lib/Größe, 2"_s, u"//lib/b"_s});
    settings.serviceFolder = u"//opt/x"_s;
    settings.cloudRoot = u"/Projects"_s;
    ASSERT_TRUE(settings.Save(tree.Path(u"conf/settings.ini"_s), &error)) << error.toStdString();
    const ServicesSettings found = Load();
    EXPECT_EQ(error, QString());
    EXPECT_EQ(found.cloudCacheFolder, settings.cloudCacheFolder);
    EXPECT_EQ(found.databaseFile, settings.databaseFile);
    EXPECT_EQ(found.databaseBusyTimeout, 1234);
    EXPECT_EQ(found.baseStoreFolder, settings.baseStoreFolder);
    EXPECT_EQ(found.baseStoreLimit, settings.baseStoreLimit);
    EXPECT_EQ(found.userName, settings.userName);
    EXPECT_EQ(found.authenticationConfigurationId, 42);
    EXPECT_EQ(found.productConfigurationId, -3);
    EXPECT_EQ(found.sourceConsumerId, settings.sourceConsumerId);
    EXPECT_FALSE(found.loggedIn);
    EXPECT_FALSE(found.cloudCacheFolderSyncEnabled);
    EXPECT_EQ(found.supportedFileTypes, settings.supportedFileTypes);
    EXPECT_EQ(found.allowedFolders, settings.allowedFolders);
    EXPECT_EQ(found.serviceFolder, settings.serviceFolder);
    EXPECT_EQ(found.cloudRoot, settings.cloudRoot);
}

TEST_F(SettingsFile, CanBeWrittenByHandInPart)
{
    const ServicesSettings settings = Load("[General]\ncloudCacheFolder=//srv/Größe, alt\n"
                                           "supportedFileTypes=prt\nloggedIn=0\nunknown=1\n");
    EXPECT_EQ(error, QString());
    EXPECT_EQ(settings.cloudCacheFolder, u"//srv/Größe, alt"_s);
    EXPECT_EQ(settings.supportedFileTypes, QStringList(u"prt"_s));
    EXPECT_FALSE(settings.loggedIn);
    EXPECT_TRUE(settings.cloudCacheFolderSyncEnabled);
    EXPECT_EQ(settings.databaseFile, ServicesSettings::Defaults().databaseFile);
}

TEST_F(SettingsFile, WithAWrongValueGivesTheDefaultsAndNamesTheKey)
{
    for (const char* line :
         {"baseStoreLimit=many", "authenticationConfigurationId=1.5", "loggedIn=perhaps"}) {
        const ServicesSettings settings =
            Load("[General]\ncloudCacheFolder=//srv/x\n" + QByteArray(line) + '\n');
        const QString key = QString::fromLatin1(line).section(u'=', 0, 0);
        EXPECT_EQ(error,
                  u"Failed to read settings file %1: The value of %2 has the wrong form."_s.arg(
                      tree.Path(u"conf/settings.ini"_s), key));
        EXPECT_EQ(settings.cloudCacheFolder, ServicesSettings::Defaults().cloudCacheFolder);
    }
}

TEST_F(SettingsFile, AllowsFoldersThatAreAbsoluteAndNoOthers)
{
    EXPECT_TRUE(Load("[General]\n").allowedFolders.isEmpty());
    const ServicesSettings settings =
        Load("[General]\nallowedFolders=//lib/a, \"//lib/b, c\", //lib/d\n");
    EXPECT_EQ(error, QString());
    EXPECT_EQ(settings.allowedFolders, QStringList({u"//lib/a"_s, u"//lib/b, c"_s, u"//lib/d"_s}));
    for (const QString& folder : {u"lib"_s, u"."_s, u"~/lib"_s}) {
        const QByteArray line = "allowedFolders=//lib/a, " + folder.toUtf8() + '\n';
        EXPECT_TRUE(Load("[General]\n" + line).allowedFolders.isEmpty());
        EXPECT_TRUE(error.contains(
            u"The path of allowedFolders is not absolute: %1. In a settings file"_s.arg(folder)))
            << error.toStdString();
    }
}

TEST_F(SettingsFile, ThatIsNoneIsReportedAndLeftAlone)
{
    Load("this is not a settings file\n");
    EXPECT_EQ(error, u"Failed to read settings file %1: It is not a settings file."_s.arg(
                         tree.Path(u"conf/settings.ini"_s)));
    EXPECT_EQ(tree.Read(u"conf/settings.ini"_s), "this is not a settings file\n");
}

TEST_F(SettingsFile, ThatCannotBeWrittenIsReportedWithTheReason)
{
    tree.File(u"conf"_s);
    const QString file = tree.Path(u"conf/settings.ini"_s);
    EXPECT_EQ(Load().cloudCacheFolder, ServicesSettings::Defaults().cloudCacheFolder);
    const QString start = u"Failed to write settings file %1: "_s.arg(file);
    EXPECT_TRUE(error.startsWith(start)) << error.toStdString();
    EXPECT_GT(error.size(), start.size());
    EXPECT_FALSE(ServicesSettings().Save(file, nullptr));
}

TEST_F(SettingsFile, ThatIsAFolderIsReported)
{
    tree.Folder(u"conf/settings.ini"_s);
    Load();
    EXPECT_TRUE(error.startsWith(u"Failed to read settings file "_s)) << error.toStdString();
    EXPECT_FALSE(ServicesSettings().Save(tree.Path(u"conf/settings.ini"_s), &error));
    EXPECT_TRUE(error.startsWith(u"Failed to write settings file "_s)) << error.toStdString();
}
