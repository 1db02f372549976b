// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

#include "plugins/PluginManager.h"
#include "syncservices/SyncManager.h"

#include <log4cplus/appender.h>
#include <log4cplus/spi/loggingevent.h>

#include <functional>

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;
using FileLink::FileLinkManager;

/// Looks around at each record of the module while it is written.
class Watcher : public log4cplus::Appender
{
public:
    explicit Watcher(std::function<void()> look) : m_look(std::move(look)) {}
    ~Watcher() override { destructorImpl(); }
    void close() override { closed = true; }

private:
    void append(const log4cplus::spi::InternalLoggingEvent&) override { m_look(); }

    std::function<void()> m_look;
};

class ModuleEnd : public ImporterFixture
{
protected:
    static log4cplus::Logger ModuleLogger()
    {
        return log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("CorsyncFileLink"));
    }
};

TEST_F(ModuleEnd, PluginsLeaveWhileTheServicesStillRun)
{
    ASSERT_TRUE(FileLinkManager::GetInstance()->LoadPlugin(TestResolverModule(), nullptr));
    const LogCapture log;
    int looks = 0;
    const log4cplus::SharedAppenderPtr watcher(new Watcher([&] {
        ++looks;
        EXPECT_NE(SyncServices::SyncManager::GetInstance(), nullptr);
        EXPECT_NE(SyncFolderManagerLib::FolderManager::GetInstance(), nullptr);
        EXPECT_NE(FileLinkManager::GetInstance(), nullptr);
    }));
    ModuleLogger().addAppender(watcher);
    FileLinkManager::Uninitialize();
    ModuleLogger().removeAppender(watcher);
    EXPECT_EQ(looks, 1);
    EXPECT_EQ(log.Lines(), QStringList{u"INFO Plugin %1 unloaded"_s.arg(TestResolverModule())});
    EXPECT_EQ(FileLink::GetPluginManager(), nullptr);
}

TEST_F(ModuleEnd, DeletingTheCopyHistoryLeavesWhatAnImporterHasInMemory)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    {
        FileLinkImporterImp importer(nullptr);
        ASSERT_TRUE(importer.CopyToCloudCacheFolder({Source(u"a.tasm"_s)}, Cloud(u"F"_s), {}, {}));
        EXPECT_TRUE(Database().GetFileCopyHistoryByAuthenticationId(7).isEmpty());
        EXPECT_TRUE(FileLinkManager::GetInstance()->DeleteFileCopyHistory());
    }
    // Written at the importer's end, after the history was deleted.
    EXPECT_EQ(Database().GetFileCopyHistoryByAuthenticationId(7).size(), 2);
    EXPECT_TRUE(FileLinkManager::GetInstance()->DeleteFileCopyHistory());
    EXPECT_TRUE(Database().GetFileCopyHistoryByAuthenticationId(7).isEmpty());
}

} // namespace Halvern::Test
