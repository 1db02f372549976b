// SPDX-License-Identifier: Apache-2.0

// What only paths with a drive can be wrong in.

#include "FolderManagerFixture.h"

using namespace Halvern::SyncServices;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Halvern::SyncFolderManagerLib::FolderManager;

namespace {

struct HandWrittenSettings : FolderManagerRunning
{
    QString File() const { return tree.Path(u"settings.ini"_s); }
    /// What a settings file of one line gives, and why it is refused.
    ServicesSettings Load(const QByteArray& line, QString& error)
    {
        tree.File(u"settings.ini"_s, "[General]\n" + line + '\n');
        return ServicesSettings::LoadOrCreate(File(), &error);
    }
    QString ErrorOf(const QByteArray& line)
    {
        QString error;
        Load(line, error);
        return error;
    }
};

QString Fault(const QString& key, const QString& path)
{
    return u"The path of %1 is not absolute: %2. In a settings file write / or \\\\ between "
           "folders, since a single \\ is lost."_s.arg(key, path);
}

} // namespace

TEST_F(HandWrittenSettings, WithSingleBackslashesAreRefused)
{
    const QString start = u"Failed to read settings file %1: "_s.arg(File());
    EXPECT_EQ(ErrorOf("cloudCacheFolder=D:\\Sync\\Work"),
              start + Fault(u"cloudCacheFolder"_s, u"D:yncork"_s));
    EXPECT_EQ(ErrorOf("databaseFile=D:\\Sync\\Work.db"),
              start + Fault(u"databaseFile"_s, u"D:yncork.db"_s));
    EXPECT_EQ(ErrorOf("baseStoreFolder=\\\\server\\share"),
              start + Fault(u"baseStoreFolder"_s, u"\\serverhare"_s));
}

TEST_F(HandWrittenSettings, WithSlashesOrDoubledBackslashesAreTaken)
{
    for (const char* const folder : {"D:/Sync/Work", "D:\\\\Sync\\\\Work"}) {
        QString error;
        const ServicesSettings found = Load("cloudCacheFolder=" + QByteArray(folder), error);
        EXPECT_EQ(error, QString());
        EXPECT_EQ(QDir::cleanPath(found.cloudCacheFolder), u"D:/Sync/Work"_s);
    }
    QString error;
    EXPECT_EQ(Load("baseStoreFolder=\\\\\\\\server\\\\share", error).baseStoreFolder,
              u"\\\\server\\share"_s);
    EXPECT_EQ(error, QString());
}

TEST_F(FolderManagerRunning, APathWithADriveAndNoFolderIsRefusedBeforeAnythingIsMade)
{
    tree.Remove(u"cloud"_s);
    settings.databaseFile = u"Z:sync.db"_s;
    Restart();
    EXPECT_EQ(Manager().GetLastError(),
              u"Failed to use the settings: "_s + Fault(u"databaseFile"_s, u"Z:sync.db"_s));
    EXPECT_EQ(Manager().GetSyncDatabase(), nullptr);
    EXPECT_FALSE(tree.Exists(u"cloud"_s));
}
