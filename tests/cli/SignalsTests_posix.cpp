// SPDX-License-Identifier: Apache-2.0

// Ctrl-C and other wishes to end, at work that takes long: a large file, a plug-in that hangs.

#include "CommandFixture.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace Halvern::Test {

namespace {

constexpr char Line[] =
    "corsync: Cancelling after the current step; press Ctrl-C again to end at once\n";
constexpr int Patience = 60'000;

#ifdef CORSYNC_SANITIZED
constexpr qint64 AtOnce = 20'000;
#else
/// The system may be busy with other tests.
constexpr qint64 AtOnce = 5'000;
#endif

class SignalledCommand : public CommandFixture
{
protected:
    SignalledCommand() { RegisterTestTalker(tree, u"plugins"_s); }

    ~SignalledCommand() override
    {
        process.kill();
        process.waitForFinished();
    }

    /// Starts the command and waits for these words on standard error.
    void Start(const QStringList& arguments, const QByteArray& words)
    {
        Prepare(process, arguments);
        process.setReadChannel(QProcess::StandardError);
        process.start();
        WaitFor(words);
    }
    void WaitFor(const QByteArray& words)
    {
        QElapsedTimer timer;
        timer.start();
        while (!messages.contains(words) && timer.elapsed() < Patience &&
               (process.waitForReadyRead(100) || process.state() == QProcess::Running))
            messages += process.readAllStandardError();
        messages += process.readAllStandardError();
        ASSERT_TRUE(messages.contains(words)) << messages.toStdString();
    }
    void Send(int signal)
    {
        sent.start();
        // Number 0 would be this program and all that belong to it.
        ASSERT_GT(process.processId(), 0) << "it has ended: " << messages.toStdString();
        ASSERT_EQ(::kill(pid_t(process.processId()), signal), 0);
    }
    /// The exit code; 128 and its number for a signal, as shells have it.
    int Wait()
    {
        EXPECT_TRUE(process.waitForFinished(Patience));
        EXPECT_LT(sent.elapsed(), AtOnce);
        messages += process.readAllStandardError();
        out = QString::fromUtf8(process.readAllStandardOutput());
        return process.exitStatus() == QProcess::CrashExit ? 128 + process.exitCode()
                                                           : process.exitCode();
    }
    /// Until the plug-in is in the call from which it does not return.
    void WaitForPlugin()
    {
        QElapsedTimer timer;
        timer.start();
        while (!tree.Exists(u"begun"_s) && timer.elapsed() < Patience)
            ASSERT_FALSE(process.waitForFinished(10)) << messages.toStdString();
        ASSERT_TRUE(tree.Exists(u"begun"_s));
    }
    QByteArray HangingFile() const
    {
        // While the shell is waited for, the system lets nobody interrupt.
        return "system (sleep 0.3; touch '" + QFile::encodeName(tree.Path(u"begun"_s)) +
               "') &\nloop";
    }
    QStringList HangingImport(const QString& isolate, const QString& progress = u"always"_s)
    {
        tree.File(u"work/proj/a.talk"_s, HangingFile()).File(u"work/proj/b.tlk"_s, "b");
        return ImportArguments({u"proj"_s, u"--isolate"_s, isolate, u"--progress"_s, progress,
                                u"--plugin-path"_s, tree.Path(u"plugins"_s)});
    }
    /// So large that nobody waits for its end, and almost without bytes.
    QStringList HugeImport()
    {
        tree.File(u"work/proj/a.tlk"_s, "a").Folder(u"cloud"_s);
        QFile file(tree.Path(u"work/proj/huge.dat"_s));
        EXPECT_TRUE(file.open(QFile::WriteOnly) && file.resize(qint64(4) << 40) &&
                    file.write("begin") == 5);
        return ImportArguments({u"proj"_s, u"--progress"_s, u"always"_s});
    }

    QProcess process;
    QElapsedTimer sent;
    QByteArray messages;
    QString out;
};

} // namespace

TEST_F(SignalledCommand, IsCancelledInTheMiddleOfALargeFile)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        messages.clear();
        Start(HugeImport(), "of 4.4 TB");
        Send(signal);
        // A terminal that closes sends it twice, a service manager that ends a service both.
        if (signal != SIGINT) {
            WaitFor("Cancelling");
            Send(signal);
            Send(SIGHUP);
        }
        EXPECT_EQ(Wait(), 20) << messages.toStdString();
        EXPECT_EQ(messages.count(Line), signal == SIGINT ? 1 : 0);
        EXPECT_TRUE(messages.contains("corsync: Cancelling after the current step"));
        EXPECT_TRUE(out.contains(u"not done   proj/huge.dat"_s)) << out.toStdString();
        EXPECT_EQ(Cloud().keys(), (QStringList{u"proj/a.tlk"_s}));
    }
}

TEST_F(SignalledCommand, EndsAtOnceAfterASecondOneAndLeavesWhatAKillWould)
{
    // It looks at no cancel.
    Start(HangingImport(u"never"_s), "Reading links");
    WaitForPlugin();
    Send(SIGINT);
    WaitFor(Line);
    EXPECT_FALSE(process.waitForFinished(300)) << "the plug-in is still at work";
    Send(SIGINT);
    EXPECT_EQ(Wait(), 130);
    EXPECT_EQ(messages.count(Line), 1);
    EXPECT_EQ(Cloud(), FileTree::Snapshot());
    tree.File(u"work/proj/a.talk"_s, "harmless");
    EXPECT_EQ(Import({u"proj"_s}).exitCode, 0);
}

TEST_F(SignalledCommand, EndsAtOnceAfterAnotherWishOfAnyKind)
{
    Start(HangingImport(u"never"_s), "Reading links");
    WaitForPlugin();
    Send(SIGINT);
    WaitFor(Line);
    Send(SIGTERM);
    EXPECT_EQ(Wait(), 128 + SIGTERM);
}

TEST_F(SignalledCommand, EndsAPluginThatRunsApartInsteadOfWaitingForIt)
{
    Start(HangingImport(u"auto"_s), "Reading links");
    WaitForPlugin();
    Send(SIGINT);
    EXPECT_EQ(Wait(), 20) << messages.toStdString();
    EXPECT_FALSE(out.contains(u"failed"_s)) << out.toStdString();
    EXPECT_FALSE(out.contains(u"plug-in"_s)) << out.toStdString();
    EXPECT_TRUE(messages.contains("nothing was copied"));
}

TEST_F(SignalledCommand, EndsThePluginOfACommandThatOnlyReads)
{
    tree.File(u"work/a.talk"_s, HangingFile());
    Start({u"links"_s, u"a.talk"_s, u"--plugin-path"_s, tree.Path(u"plugins"_s), u"--plugin-path"_s,
           TestPluginFolder(), u"-v"_s},
          {});
    WaitForPlugin();
    Send(SIGINT);
    EXPECT_EQ(Wait(), 20) << messages.toStdString();
}

TEST_F(SignalledCommand, GoesOnWithoutATerminalWhereThatIsWanted)
{
    Prepare(process, HugeImport());
    process.setChildProcessModifier([] { ::signal(SIGHUP, SIG_IGN); });
    process.setReadChannel(QProcess::StandardError);
    process.start();
    WaitFor("of 4.4 TB");
    Send(SIGHUP);
    EXPECT_FALSE(process.waitForFinished(500));
    Send(SIGINT);
    EXPECT_EQ(Wait(), 20);
}

// Nobody reads what is printed, and the pipe is full.
TEST_F(SignalledCommand, IsCancelledThoughItsMessagesAreNotRead)
{
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    const QByteArray block(4096, 'x');
    while (::write(ends[1], block.constData(), size_t(block.size())) > 0)
        continue;
    ASSERT_EQ(::fcntl(ends[1], F_SETFL, 0), 0);
    Prepare(process, HangingImport(u"never"_s, u"never"_s));
    process.setChildProcessModifier([end = ends[1]] { ::dup2(end, STDERR_FILENO); });
    process.start();
    WaitForPlugin();
    Send(SIGINT);
    EXPECT_FALSE(process.waitForFinished(200)) << "it waits for the plug-in";
    Send(SIGINT);
    EXPECT_EQ(Wait(), 130);
    ::close(ends[0]);
    ::close(ends[1]);
}

} // namespace Halvern::Test
