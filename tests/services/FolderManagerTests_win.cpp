// What only paths with a drive can be wrong in.

#include "FolderManagerFixture.h"

using namespace Halvern::SyncServices;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Halvern::SyncFolderManagerLib::FolderManager;

namespace {

/// The settings that a file with this line gives; the rest is the tree's.
struct HandWrittenSettings : FolderManagerRunning
{
    QString ErrorWith(const QByteArray& line)
    {
        tree.File(u"settings.ini"_s, "[General]\ncloudCacheFolder=" + Cloud().toUtf8() +
                                         "\ndatabaseFile=" + settings.databaseFile.toUtf8() + '\n' +
                                         line + '\n');
        QString error;
        settings = ServicesSettings::LoadOrCreate(tree.Path(u"settings.ini"_s), &error);
        EXPECT_EQ(error, QString());
        Restart();
        EXPECT_EQ(Manager().GetSyncDatabase() == nullptr, !Manager().GetLastError().isEmpty());
        return Manager().GetLastError();
    }
};

QString Refusal(const QString& key, const QString& path)
{
    return u"Failed to use the setting %1, %2: It is not an absolute path. In a settings file "
           "write / or \\\\ for \\."_s.arg(key, path);
}

} // namespace

TEST_F(HandWrittenSettings, WithSingleBackslashesAreRefused)
{
    const FileTree::Snapshot before = tree.Contents(u"cloud"_s);
    EXPECT_EQ(ErrorWith("cloudCacheFolder=D:\\Sync\\Work"),
              Refusal(u"cloudCacheFolder"_s, u"D:yncork"_s));
    EXPECT_EQ(ErrorWith("databaseFile=D:\\Sync\\Work.db"),
              Refusal(u"databaseFile"_s, u"D:yncork.db"_s));
    EXPECT_EQ(ErrorWith("baseStoreFolder=\\\\server\\share"),
              Refusal(u"baseStoreFolder"_s, u"\\serverhare"_s));
    EXPECT_EQ(tree.Contents(u"cloud"_s), before);
}

TEST_F(HandWrittenSettings, WithSlashesOrDoubledBackslashesAreTaken)
{
    const QString folder = tree.Path(u"other"_s);
    EXPECT_EQ(ErrorWith("cloudCacheFolder=" + folder.toUtf8()), QString());
    EXPECT_EQ(Manager().GetCloudCacheFolderPath(false), folder);
    EXPECT_EQ(ErrorWith("cloudCacheFolder=" + QString(folder).replace(u'/', u"\\\\"_s).toUtf8()),
              QString());
    EXPECT_EQ(Manager().GetCloudCacheFolderPath(false), folder);
}
