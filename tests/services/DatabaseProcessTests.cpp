// SPDX-License-Identifier: Apache-2.0

// One database file, several processes.

#include "DatabaseFixture.h"
#include "ProcessStart.h"
#include "Version1Database.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>

using namespace Halvern::SyncServices;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Halvern::SyncFolderManagerLib::FolderManager;

namespace {

constexpr int patience = 60000;

class DatabaseProcesses : public DatabaseFixture
{
protected:
    void Start(QProcess& process, const QStringList& arguments)
    {
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        StartProcess(process, QString::fromUtf8(SERVICES_WRITER), arguments);
    }

    void StartWriter(QProcess& process, const QString& prefix, int count)
    {
        Start(process, {u"items"_s, settings.databaseFile, settings.cloudCacheFolder, prefix,
                        QString::number(count)});
    }

    void StartLock(QProcess& process, const QString& kind)
    {
        Start(process, {kind, settings.databaseFile});
        ASSERT_TRUE(process.waitForReadyRead(patience));
        ASSERT_EQ(process.readLine().trimmed(), "locked");
    }

    static void EndLock(QProcess& process)
    {
        process.closeWriteChannel();
        ASSERT_TRUE(process.waitForFinished(patience));
        ASSERT_EQ(process.exitCode(), 0);
    }

    /// The last number that a writer printed.
    static int LastWritten(const QByteArray& output)
    {
        const QList<QByteArray> lines = output.left(output.lastIndexOf('\n')).split('\n');
        return lines.last().toInt();
    }

private:
    int m_argc = 1;
    char m_name[6] = "tests";
    char* m_argv[2] = {m_name, nullptr};
    QCoreApplication m_application{m_argc, m_argv};
};

} // namespace

TEST_F(DatabaseProcesses, TwoWriteAtOnceAndLoseNothing)
{
    constexpr int count = 500;
    QProcess first;
    QProcess second;
    StartWriter(first, u"first"_s, count);
    StartWriter(second, u"second"_s, count);
    for (int i = 1; i <= count; ++i)
        ASSERT_TRUE(Database().AddOrUpdateFileConfiguration(File(Cloud(u"own%1.prt"_s.arg(i)))))
            << Database().GetLastError().toStdString();
    for (QProcess* process : {&first, &second}) {
        ASSERT_TRUE(process->waitForFinished(patience));
        EXPECT_EQ(process->exitCode(), 0);
    }
    EXPECT_EQ(Database().GetAllItems(7).size(), 3 * count);
    EXPECT_EQ(Database().GetFileCopyHistoryByAuthenticationId(7).size(), 2 * count);
    EXPECT_EQ(Count("item_links"), 2 * 2 * count);
    EXPECT_EQ(Ask("PRAGMA integrity_check"), "ok");
}

TEST_F(DatabaseProcesses, SeveralMakeTheFileAtOnce)
{
    settings.databaseFile = tree.Path(u"fresh/sync.db"_s);
    QProcess processes[4];
    for (QProcess& process : processes)
        StartWriter(process, u"p%1-"_s.arg(&process - processes), 5);
    for (QProcess& process : processes) {
        ASSERT_TRUE(process.waitForFinished(patience));
        EXPECT_EQ(process.exitCode(), 0);
    }
    EXPECT_EQ(Count("items"), 20);
}

TEST_F(DatabaseProcesses, SeveralBringAnOldFileToTheCurrentVersionAtOnce)
{
    settings.databaseFile = tree.Path(u"old.db"_s);
    SQLite::Database(settings.databaseFile.toStdString(),
                     SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
        .exec(version1Database);
    QProcess processes[4];
    for (QProcess& process : processes)
        StartWriter(process, u"p%1-"_s.arg(&process - processes), 5);
    for (QProcess& process : processes) {
        ASSERT_TRUE(process.waitForFinished(patience));
        EXPECT_EQ(process.exitCode(), 0);
    }
    EXPECT_EQ(Count("items"), 6 + 20);
    EXPECT_EQ(Count("copy_history"), 3 + 20);
    EXPECT_EQ(Ask("SELECT count(*) FROM items WHERE folded_key IS NULL"), "0");
    EXPECT_EQ(Ask("PRAGMA integrity_check"), "ok");
}

TEST_F(DatabaseProcesses, AKilledWriterLosesNothingThatItWasToldIsWritten)
{
    for (int round = 1; round <= 5; ++round) {
        const QString prefix = u"round%1-"_s.arg(round);
        QProcess writer;
        StartWriter(writer, prefix, 1000000);
        QByteArray output;
        while (output.count('\n') < 40 * round) {
            ASSERT_TRUE(writer.waitForReadyRead(patience));
            output += writer.readAll();
        }
        writer.kill();
        ASSERT_TRUE(writer.waitForFinished(patience));
        output += writer.readAll();

        EXPECT_EQ(Ask("PRAGMA integrity_check"), "ok");
        EXPECT_EQ(Ask("SELECT count(*) FROM pragma_foreign_key_check"), "0");
        const int written = LastWritten(output);
        ASSERT_GE(written, 40 * round);
        for (int i = 1; i <= written; ++i) {
            const ItemPointer item = Find(Cloud(u"%1%2.prt"_s.arg(prefix).arg(i)));
            ASSERT_TRUE(item) << i << " of " << written;
            ASSERT_EQ(item->GetFileLinks().size(), 2);
        }
        EXPECT_GE(Database().GetFileCopyHistoryByAuthenticationId(7).size(), written);
        EXPECT_TRUE(Database().AddOrUpdateFileConfiguration(File(Cloud(prefix + u"after"_s))));
    }
}

TEST_F(DatabaseProcesses, AWriteWaitsForTheLockAndFailsAfterTheBusyTimeout)
{
    settings.databaseBusyTimeout = 300;
    Restart();
    const ItemPointer item = File(Cloud(u"a"_s));
    ASSERT_TRUE(Database().AddOrUpdateFileConfiguration(item));
    item->SetSyncOption(SyncItem::RepathPending);

    QProcess holder;
    StartLock(holder, u"lock"_s);
    QElapsedTimer time;
    time.start();
    EXPECT_FALSE(Database().AddOrUpdateFileConfiguration(item));
    EXPECT_GE(time.elapsed(), 250);
    EXPECT_LT(time.elapsed(), 9000) << "the usual time-out";
    EXPECT_EQ(Database().GetLastError(),
              u"AddOrUpdateFileConfiguration failed on sync database %1: database is locked"_s.arg(
                  settings.databaseFile));
    EXPECT_FALSE(Database().AddAndUpdateFileCopyHistory({}, {}));
    EXPECT_FALSE(Database().AddRootFolder(Cloud(), u"/"_s, 7));
    EXPECT_EQ(Find(Cloud(u"a"_s))->GetSyncOption(), SyncItem::NoSyncOption)
        << "readers do not wait";

    EndLock(holder);
    EXPECT_TRUE(Database().AddOrUpdateFileConfiguration(item));
    EXPECT_EQ(Find(Cloud(u"a"_s))->GetSyncOption(), SyncItem::RepathPending);
}

TEST_F(DatabaseProcesses, AWriteThatFindsTheLockFreeInTimeSucceeds)
{
    QProcess holder;
    StartLock(holder, u"lock"_s);
    holder.closeWriteChannel();
    EXPECT_TRUE(Database().AddOrUpdateFileConfiguration(File(Cloud(u"a"_s))));
    EXPECT_TRUE(holder.waitForFinished(patience));
}

TEST_F(DatabaseProcesses, AFileThatAnotherKeepsToItselfIsReportedAfterTheBusyTimeout)
{
    FolderManager::Uninitialize();
    QProcess holder;
    StartLock(holder, u"own"_s);
    settings.databaseBusyTimeout = 300;
    Restart();
    EXPECT_EQ(FolderManager::GetInstance()->GetSyncDatabase(), nullptr);
    EXPECT_EQ(FolderManager::GetInstance()->GetLastError(),
              u"Failed to open sync database %1: database is locked"_s.arg(settings.databaseFile));
    EndLock(holder);
    Restart();
    EXPECT_NE(FolderManager::GetInstance()->GetSyncDatabase(), nullptr);
}
