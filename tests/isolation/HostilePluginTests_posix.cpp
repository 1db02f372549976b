// SPDX-License-Identifier: Apache-2.0

#include "HostilePlugin.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QThread>

#include <csignal>

namespace Halvern::Test {

namespace {

/// Whether a process runs that was started with this argument.
bool RunsWith(const QByteArray& argument)
{
    const QStringList processes = QDir(u"/proc"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& process : processes) {
        QFile arguments(u"/proc/%1/cmdline"_s.arg(process));
        if (arguments.open(QFile::ReadOnly) && arguments.readAll().split('\0').contains(argument))
            return true;
    }
    return false;
}

template <class Condition>
bool WaitUntil(Condition condition)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > 30'000)
            return false;
        QThread::msleep(20);
    }
    return true;
}

} // namespace

TEST_F(HostilePlugin, ThatNeverReturnsEndsWithTheCommandHoweverThatEnds)
{
    // Its library has a path of its own, by which its process is known.
    const QString library = tree.Path(u"plugins/"_s + TestTalkerModule());
    ASSERT_TRUE(QFile::copy(TestPluginFolder() + u'/' + TestTalkerModule(), library));
    tree.File(u"work/a.talk"_s, "loop");
    QProcess process;
    Prepare(process, {u"links"_s, u"a.talk"_s, u"--plugin-path"_s, tree.Path(u"plugins"_s)});
    process.start();
    ASSERT_TRUE(WaitUntil([&] { return RunsWith(library.toUtf8()); }));
    ::kill(pid_t(process.processId()), SIGKILL);
    process.waitForFinished();
    EXPECT_TRUE(WaitUntil([&] { return !RunsWith(library.toUtf8()); }));
}

#ifndef CORSYNC_SANITIZED
TEST_F(HostilePlugin, GetsNoMoreMemoryThanItMayHave)
{
    memoryLimit = qint64(256) << 20;
    const CommandResult result = ImportWith("memory");
    EXPECT_EQ(result.exitCode, 7) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.out.contains(u"std::bad_alloc"_s)) << ::testing::PrintToString(result);
}
#endif

} // namespace Halvern::Test
