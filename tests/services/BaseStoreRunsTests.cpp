// SPDX-License-Identifier: Apache-2.0

// What a run keeps stays until it ends.

#include "BaseStoreFixture.h"
#include "ProcessStart.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QProcess>

namespace Halvern::Test {

namespace {

constexpr int patience = 60000;

class BaseStoreRuns : public BaseStore
{
protected:
    BaseStoreRuns()
    {
        settings.baseStoreLimit = 1000;
        Restart();
    }

    QStringList RunFiles() const
    {
        return QDir(tree.Path(u"sync.db.base/runs"_s)).entryList(QDir::Files);
    }

    /// A process that begins a run, saves the files and ends the run when its input ends.
    void StartOther(QProcess& process, const QStringList& names)
    {
        QStringList arguments{u"run"_s, settings.databaseFile, settings.cloudCacheFolder,
                              QString::number(settings.baseStoreLimit)};
        for (const QString& name : names)
            arguments.append(tree.Path(name));
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        StartProcess(process, QString::fromUtf8(SERVICES_WRITER), arguments);
    }

    static void WaitUntilSaved(QProcess& process)
    {
        while (!process.canReadLine())
            ASSERT_TRUE(process.waitForReadyRead(patience));
        ASSERT_EQ(process.readLine().trimmed(), "saved");
        Wait();
    }

    static void End(QProcess& process)
    {
        process.closeWriteChannel();
        ASSERT_TRUE(process.waitForFinished(patience));
        ASSERT_EQ(process.exitCode(), 0);
    }

private:
    int m_argc = 1;
    char m_name[6] = "tests";
    char* m_argv[2] = {m_name, nullptr};
    QCoreApplication m_application{m_argc, m_argv};
};

} // namespace

TEST_F(BaseStoreRuns, FilesOfOneRunDoNotPushOutEachOther)
{
    ASSERT_EQ(ErrorOf(u"o"_s, 600), QString());
    {
        const BaseStoreRun run;
        EXPECT_EQ(ErrorOf(u"a"_s, 300), QString());
        EXPECT_EQ(KeptLetters(), u"ao"_s);
        EXPECT_EQ(ErrorOf(u"b"_s, 300), QString());
        EXPECT_EQ(KeptLetters(), u"ab"_s) << "what is older than the run gives way";
        EXPECT_EQ(ErrorOf(u"c"_s, 500), NoRoomFor(500));
        EXPECT_FALSE(Save(u"c"_s)) << "by this way neither";
        EXPECT_EQ(ErrorOf(u"d"_s, 400), QString());
        EXPECT_EQ(KeptLetters(), u"abd"_s);
    }
    EXPECT_EQ(ErrorOf(u"c"_s), QString());
    EXPECT_EQ(KeptLetters(), u"cd"_s) << "the run has ended";
}

TEST_F(BaseStoreRuns, AContentThatARunKeepsAgainStaysAsIfItWereNew)
{
    ASSERT_EQ(ErrorOf(u"a"_s, 500), QString());
    ASSERT_EQ(ErrorOf(u"b"_s, 500), QString());
    const BaseStoreRun run;
    EXPECT_EQ(ErrorOf(u"a"_s), QString());
    EXPECT_EQ(ErrorOf(u"c"_s, 500), QString());
    EXPECT_EQ(KeptLetters(), u"ac"_s);
}

TEST_F(BaseStoreRuns, ThatOverlapEndTogether)
{
    const auto outer = std::make_unique<BaseStoreRun>();
    auto inner = std::make_unique<BaseStoreRun>();
    ASSERT_EQ(ErrorOf(u"a"_s, 700), QString());
    inner.reset();
    EXPECT_EQ(ErrorOf(u"b"_s, 700), NoRoomFor(700));
    EXPECT_EQ(KeptLetters(), u"a"_s);
}

TEST_F(BaseStoreRuns, WriteNothingBeforeTheySaveAndLeaveNoMark)
{
    {
        const BaseStoreRun run;
        EXPECT_FALSE(tree.Exists(u"sync.db.base"_s));
        ASSERT_EQ(ErrorOf(u"a"_s, 1), QString());
        EXPECT_EQ(RunFiles().size(), 1);
    }
    EXPECT_EQ(RunFiles(), QStringList());
    SyncManager::GetInstance()->EndRun();
    SyncManager::GetInstance()->BeginRun();
    ASSERT_EQ(ErrorOf(u"a"_s, 1), QString());
    Restart();
    EXPECT_EQ(RunFiles(), QStringList()) << "the services ended before the run did";
}

TEST_F(BaseStoreRuns, NobodyRemovesWhatARunOfAnotherProcessKeeps)
{
    ASSERT_EQ(ErrorOf(u"o"_s, 300), QString());
    tree.File(u"x"_s, QByteArray(600, 'x'));
    QProcess other;
    StartOther(other, {u"x"_s});
    WaitUntilSaved(other);
    EXPECT_EQ(Status().available, 400);
    EXPECT_EQ(ErrorOf(u"a"_s, 500), NoRoomFor(500));
    EXPECT_FALSE(Save(u"a"_s));
    EXPECT_EQ(KeptLetters(), u"ox"_s) << "nothing is removed for a save that fails";
    EXPECT_EQ(ErrorOf(u"b"_s, 400), QString());
    EXPECT_EQ(KeptLetters(), u"bx"_s);
    End(other);
    EXPECT_EQ(ErrorOf(u"a"_s, 500), QString());
    EXPECT_EQ(KeptLetters(), u"ab"_s);
}

TEST_F(BaseStoreRuns, OfAKilledProcessHoldNothing)
{
    tree.File(u"x"_s, QByteArray(600, 'x'));
    QProcess other;
    StartOther(other, {u"x"_s});
    WaitUntilSaved(other);
    other.kill();
    ASSERT_TRUE(other.waitForFinished(patience));
    EXPECT_EQ(RunFiles().size(), 1);
    EXPECT_EQ(Status().available, 1000);
    EXPECT_EQ(ErrorOf(u"a"_s, 500), QString());
    EXPECT_EQ(KeptLetters(), u"a"_s);
    EXPECT_EQ(RunFiles(), QStringList());
}

TEST_F(BaseStoreRuns, AKillLeavesWholeCopiesOnly)
{
    settings.baseStoreLimit = 100 * 100 * 1000;
    Restart();
    QStringList names;
    for (int i = 0; i < 96; ++i) {
        names.append(u"f%1"_s.arg(i));
        tree.File(names.last(), PatternBytes(100 * 1000, quint32(i)));
    }
    const QString target = tree.Path(u"out"_s);
    for (int round = 0; round < 8; ++round) {
        const qint64 before = Status().used;
        QProcess other;
        StartOther(other, names.mid(12 * round, 12));
        for (int i = 0; i < patience && Status().used <= before + round * 100 * 1000; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        other.kill();
        EXPECT_GT(Status().used, before);
        ASSERT_TRUE(other.waitForFinished(patience));
        for (const QString& name : names) {
            for (const StoredVersion& version : Versions(name)) {
                QString error;
                EXPECT_TRUE(SyncManager::GetInstance()->WriteVersion(version, target, &error))
                    << error.toStdString();
                EXPECT_EQ(tree.Read(u"out"_s), tree.Read(name));
                tree.Remove(u"out"_s);
            }
        }
    }
    EXPECT_EQ(ErrorOf(u"own"_s, 10), QString());
    EXPECT_EQ(RunFiles(), QStringList());
}

TEST_F(BaseStoreRuns, OfSeveralProcessesKeepEverythingThatTheySaid)
{
    settings.baseStoreLimit = 100 * 1000;
    Restart();
    for (int i = 0; i < 20; ++i)
        ASSERT_EQ(ErrorOf(u"o%1"_s.arg(i), 5000), QString());
    QProcess others[3];
    for (int process = 0; process < 3; ++process) {
        QStringList names;
        for (int i = 0; i < 30; ++i) {
            names.append(u"n%1-%2"_s.arg(process).arg(i));
            tree.File(names.last(), QByteArray(1000, 'n') + names.last().toUtf8());
        }
        StartOther(others[process], names);
    }
    for (QProcess& other : others)
        WaitUntilSaved(other);
    for (QProcess& other : others)
        End(other);
    EXPECT_EQ(KeptLetters().count(u'n'), 90);
    // Each counts what the others keep from time to time only.
    EXPECT_LE(Status().used, settings.baseStoreLimit / 8 * 11);
}

} // namespace Halvern::Test
