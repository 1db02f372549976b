// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "CommandFixture.h"

#include "syncservices/ServicesSettings.h"

namespace Halvern::Test {

/// The links of files of a plug-in that does in the first one as that file says.
class HostilePlugin : public CommandFixture
{
protected:
    HostilePlugin() { RegisterTestTalker(tree, u"plugins"_s); }

    QStringList PluginArguments() const
    {
        return {u"--plugin-path"_s, tree.Path(u"plugins"_s), u"--plugin-path"_s,
                TestPluginFolder()};
    }

    /// An import of "a.talk", which holds these orders, and of a harmless "b.talk".
    CommandResult ImportWith(const QByteArray& orders, const QStringList& arguments = {})
    {
        tree.File(u"work/a.talk"_s, orders).File(u"work/b.talk"_s, "harmless");
        return Run(QStringList{u"import"_s, u"a.talk"_s, u"b.talk"_s, u"--settings"_s, Settings()} +
                   PluginArguments() + arguments);
    }

    QString Settings()
    {
        SyncServices::ServicesSettings settings;
        settings.cloudCacheFolder = tree.Path(u"cloud"_s);
        settings.databaseFile = tree.Path(u"data/sync.db"_s);
        settings.pluginTimeLimit = timeLimit;
        settings.pluginMemoryLimit = memoryLimit;
        const QString file = tree.Path(u"settings.ini"_s);
        QString error;
        EXPECT_TRUE(settings.Save(file, &error)) << error.toStdString();
        return file;
    }

    int timeLimit = 60;
    qint64 memoryLimit = 0;
};

} // namespace Halvern::Test
