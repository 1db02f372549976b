// SPDX-License-Identifier: Apache-2.0

// The file that the ledger shares with the sync database: what is refused, what stays as it is, and
// other processes.

#include "LedgerFixture.h"
#include "ProcessStart.h"

#include "syncservices/SyncItem.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QThread>

#include <gmock/gmock.h>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

using Records = QList<CopyRecord>;

class LedgerFile : public LedgerFixture
{
protected:
    /// What is said of a file that the ledger refuses to read and to write, whichever it is opened
    /// for.
    QString Refusal(const QString& file)
    {
        QString error;
        for (const bool readOnly : {true, false}) {
            const auto ledger = Ledger::Open(file, 7, 1000, readOnly);
            error = ledger->Error();
            EXPECT_TRUE(ledger->ReadAll(u"/cloud"_s).isEmpty());
            Records records{RecordOf(u"/cloud/a"_s)};
            EXPECT_FALSE(ledger->Write(records));
            EXPECT_EQ(records[0].id, -1);
            EXPECT_FALSE(ledger->Remove({u"/cloud/a"_s}));
            EXPECT_EQ(ledger->Error(), error);
        }
        const QString begin =
            u"Opening the records of copies failed on sync database %1: "_s.arg(file);
        EXPECT_TRUE(error.startsWith(begin)) << error.toStdString();
        return error.mid(begin.size());
    }

    QString Tables() const
    {
        return QString::fromStdString(
            Ask("SELECT group_concat(name, ' ') FROM (SELECT name FROM sqlite_master "
                "WHERE type = 'table' AND name NOT LIKE 'sqlite_%' ORDER BY name)"));
    }
};

const QString tablesOfServices = u"copy_history copy_history_links item_links items"_s;
const QString allTables = tablesOfServices + u" ledger_copies ledger_version"_s;

} // namespace

TEST_F(LedgerFile, OfAnEarlierVersionHasNoRecordsUntilTheFirstIsWritten)
{
    const std::string version = Ask("PRAGMA user_version");
    {
        const auto ledger = Open();
        EXPECT_EQ(ledger->Error(), QString());
        EXPECT_TRUE(ledger->ReadAll(u"/cloud"_s).isEmpty());
        EXPECT_EQ(ledger->Error(), QString());
        EXPECT_EQ(Tables(), tablesOfServices);

        Records records{RecordOf(u"/cloud/a"_s)};
        EXPECT_TRUE(ledger->Write(records));
        EXPECT_EQ(ledger->ReadAll(u"/cloud"_s), records);
    }
    EXPECT_EQ(Tables(), allTables);
    EXPECT_EQ(Ask("SELECT version FROM ledger_version"), "2");
    EXPECT_EQ(Ask("PRAGMA user_version"), version) << "the sync database counts by itself";
}

TEST_F(LedgerFile, OfTheFirstVersionIsReadAsItIsAndGetsOriginsWithTheFirstWrite)
{
    Write({RecordOf(u"/cloud/a"_s)});
    Change("ALTER TABLE ledger_copies DROP COLUMN origin; UPDATE ledger_version SET version = 1");
    const FileTree::Snapshot before = FilesOfTheDatabase();
    const Records read = Read();
    ASSERT_EQ(read.size(), 1);
    EXPECT_EQ(read[0].origin, CopyOrigin::Selected);
    EXPECT_EQ(read[0].linkedTargets, RecordOf(u"/cloud/a"_s).linkedTargets);
    EXPECT_EQ(FilesOfTheDatabase(), before);
    Write({RecordOf(u"/cloud/b"_s)});
    EXPECT_EQ(Ask("SELECT version FROM ledger_version"), "2");
    ASSERT_EQ(Read().size(), 2);
    EXPECT_EQ(Read()[0].origin, CopyOrigin::Selected);
    EXPECT_EQ(Read()[1].origin, CopyOrigin::Linked);
}

TEST_F(LedgerFile, ServesTheSyncDatabaseAsBefore)
{
    Write({RecordOf(u"/cloud/a"_s)});
    StartServices();
    const auto item = std::make_shared<SyncServices::SyncItem>(u"/cloud/a"_s, u"/a"_s, u"/"_s);
    EXPECT_TRUE(Database().AddOrUpdateFileConfiguration(item));
    EXPECT_TRUE(Database().DeleteAllFileCopyHistory(7));
    EXPECT_EQ(Read().size(), 1) << "both may have the file open";
    Write({RecordOf(u"/cloud/b"_s)});
    EndServices();
    EXPECT_EQ(Read().size(), 2);
    EXPECT_EQ(Ask("SELECT count(*) FROM items"), "1");
    EXPECT_EQ(Ask("PRAGMA integrity_check"), "ok");
}

TEST_F(LedgerFile, IsLeftToTheSyncDatabaseToMake)
{
    const QString file = tree.Path(u"new.db"_s);
    EXPECT_EQ(Refusal(file), u"unable to open database file"_s);
    EXPECT_FALSE(tree.Exists(u"new.db"_s));
    tree.File(u"new.db"_s, QByteArray());
    EXPECT_EQ(Refusal(file), u"It is not a sync database."_s);
    EXPECT_EQ(tree.Read(u"new.db"_s), QByteArray());
}

TEST_F(LedgerFile, OfAnotherProgramIsRefusedAndLeftAlone)
{
    const QString file = tree.Path(u"other.db"_s);
    SQLite::Database(file.toStdString(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
        .exec("CREATE TABLE theirs (x)");
    const QByteArray before = tree.Read(u"other.db"_s);
    EXPECT_EQ(Refusal(file), u"It is not a sync database."_s);
    EXPECT_EQ(tree.Read(u"other.db"_s), before);
}

TEST_F(LedgerFile, ThatIsNoDatabaseIsRefusedAndLeftAlone)
{
    const QByteArray content = PatternBytes(10000);
    tree.File(u"sync2.db"_s, content);
    EXPECT_EQ(Refusal(tree.Path(u"sync2.db"_s)), u"file is not a database"_s);
    EXPECT_EQ(tree.Read(u"sync2.db"_s), content);
    tree.Folder(u"folder.db"_s);
    EXPECT_EQ(Refusal(tree.Path(u"folder.db"_s)), u"unable to open database file"_s);
}

TEST_F(LedgerFile, WithRecordsOfANewerVersionIsRefusedAndLeftAlone)
{
    Write({RecordOf(u"/cloud/a"_s)});
    Change("UPDATE ledger_version SET version = 3");
    const FileTree::Snapshot before = FilesOfTheDatabase();
    EXPECT_EQ(Refusal(settings.databaseFile),
              u"Its records of copies were written by a newer version (version 3, this one "
              "knows 2)."_s);
    EXPECT_EQ(FilesOfTheDatabase(), before);
    StartServices();
    EXPECT_TRUE(Database().GetAllItems(7).isEmpty());
    EXPECT_EQ(Database().GetLastError(), QString());
}

TEST_F(LedgerFile, WhoseRecordsBecomeANewerVersionsMeanwhileIsLeftAlone)
{
    Write({RecordOf(u"/cloud/a"_s)});
    const auto ledger = Open();
    EXPECT_EQ(ledger->ReadAll(u"/cloud"_s).size(), 1);
    Change("UPDATE ledger_version SET version = 3");
    EXPECT_TRUE(ledger->ReadAll(u"/cloud"_s).isEmpty());
    EXPECT_THAT(ledger->Error().toStdString(), testing::HasSubstr("newer version"));
    Records records{RecordOf(u"/cloud/b"_s)};
    EXPECT_FALSE(ledger->Write(records));
    EXPECT_FALSE(ledger->Remove({u"/cloud/a"_s}));
    EXPECT_EQ(Ask("SELECT group_concat(target) FROM ledger_copies"), "/cloud/a");
}

TEST_F(LedgerFile, WithoutTheNumberOfItsVersionIsRefused)
{
    Write({RecordOf(u"/cloud/a"_s)});
    Change("DELETE FROM ledger_version");
    EXPECT_EQ(Refusal(settings.databaseFile),
              u"The version of the records of copies is damaged."_s);
    EXPECT_EQ(Ask("SELECT count(*) FROM ledger_copies"), "1");
}

TEST_F(LedgerFile, InMemoryIsEmptyAndGoneAtTheEnd)
{
    Records records{RecordOf(u"/cloud/a"_s)};
    {
        const auto ledger = Ledger::Open(u":memory:"_s, 7, 1000, false);
        EXPECT_TRUE(ledger->ReadAll(u"/cloud"_s).isEmpty());
        EXPECT_TRUE(ledger->Write(records));
        EXPECT_EQ(ledger->ReadAll(u"/cloud"_s), records);
        EXPECT_EQ(ledger->Error(), QString());
    }
    const auto ledger = Ledger::Open(u":memory:"_s, 7, 1000, true);
    EXPECT_TRUE(ledger->ReadAll(u"/cloud"_s).isEmpty());
    EXPECT_EQ(ledger->Error(), QString());
    EXPECT_FALSE(ledger->Write(records));
}

TEST_F(LedgerFile, WhosePagesAreDamagedGivesNoRecordsAndTheReason)
{
    Write(RoundOfRecords(u"/cloud"_s, 1, 2000));
    // All but the first page, which has header and schema, and the last byte of the name of each
    // table's root page.
    const qint64 intact = 24 * 4096;
    {
        QFile file(settings.databaseFile);
        ASSERT_TRUE(file.open(QFile::ReadWrite));
        ASSERT_GT(file.size(), 2 * intact);
        ASSERT_TRUE(file.seek(intact));
        ASSERT_EQ(file.write(PatternBytes(file.size() - intact)), file.size() - intact);
    }
    const auto ledger = Open();
    EXPECT_EQ(ledger->Error(), QString()) << "nobody has looked at the records yet";
    EXPECT_TRUE(ledger->ReadAll(u"/cloud"_s).isEmpty());
    EXPECT_EQ(ledger->Error(), u"Reading the records of copies failed on sync database %1: "
                               "database disk image is malformed"_s.arg(settings.databaseFile));
}

TEST_F(LedgerFile, WhoseListsAreDamagedGivesNoRecordsAndTheReason)
{
    const QString reason =
        u"Reading the records of copies failed on sync database %1: The links of a record are "
        "damaged."_s.arg(settings.databaseFile);
    Write({RecordOf(u"/cloud/a"_s), RecordOf(u"/cloud/b"_s)});
    const std::string whole = Ask("SELECT hex(source_links) FROM ledger_copies");
    const auto damaged = [&](const std::string& hex) {
        Change(("UPDATE ledger_copies SET source_links = x'" + hex + "'").c_str());
        const auto ledger = Open(true);
        const bool isEmpty = ledger->ReadAll(u"/cloud"_s).isEmpty();
        return isEmpty && ledger->Error() == reason;
    };
    for (size_t size = 0; size < whole.size(); size += 2)
        EXPECT_TRUE(damaged(whole.substr(0, size))) << size / 2 << " bytes";
    EXPECT_TRUE(damaged(whole + "00")) << "a byte too many";
    EXPECT_TRUE(damaged("FFFFFFFFFFFFFFFFFF01")) << "more elements than bytes";
    EXPECT_TRUE(damaged("FFFFFFFFFFFFFFFFFFFFFFFFFFFF")) << "a number without an end";
    EXPECT_FALSE(damaged(whole));
}

TEST_F(LedgerFile, ThatIsOnlyReadKeepsEveryByte)
{
    const auto readAndRefuse = [&](qsizetype expected) {
        const auto ledger = Open(true);
        EXPECT_EQ(ledger->ReadAll(u"/cloud"_s).size(), expected);
        EXPECT_EQ(ledger->Error(), QString());
        Records records{RecordOf(u"/cloud/b"_s)};
        EXPECT_FALSE(ledger->Write(records));
        EXPECT_EQ(ledger->Error(),
                  u"Writing the records of copies failed on sync database %1: "
                  "They were opened to be read only."_s.arg(settings.databaseFile));
        EXPECT_FALSE(ledger->Remove({u"/cloud/a"_s}));
    };
    FileTree::Snapshot before = FilesOfTheDatabase();
    ASSERT_EQ(before.keys(), QStringList{u"sync.db"_s});
    readAndRefuse(0);
    EXPECT_EQ(FilesOfTheDatabase(), before) << "without the tables";

    Write({RecordOf(u"/cloud/a"_s)});
    before = FilesOfTheDatabase();
    ASSERT_EQ(before.keys(), QStringList{u"sync.db"_s});
    readAndRefuse(1);
    EXPECT_EQ(FilesOfTheDatabase(), before) << "with the tables";
}

namespace {

constexpr int patience = 60000;

class LedgerProcesses : public LedgerFile
{
protected:
    void Start(QProcess& process, const QStringList& arguments)
    {
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        StartProcess(process, QString::fromUtf8(LEDGER_WRITER), arguments);
    }
    void StartWriter(QProcess& process, const QString& folder, int rounds, int count)
    {
        Start(process, {u"write"_s, settings.databaseFile, folder, QString::number(rounds),
                        QString::number(count)});
    }
    /// Waits for this many rounds, and a little more.
    static QByteArray WaitForRounds(QProcess& process, int rounds, int milliseconds)
    {
        QByteArray output;
        while (output.count('\n') < rounds) {
            if (!process.waitForReadyRead(patience))
                break;
            output += process.readAll();
        }
        EXPECT_GE(output.count('\n'), rounds);
        QThread::msleep(static_cast<unsigned long>(milliseconds));
        return output;
    }
    /// The number of the last round that it told of.
    static int Kill(QProcess& process, QByteArray output)
    {
        process.kill();
        EXPECT_TRUE(process.waitForFinished(patience));
        output += process.readAll();
        return output.left(output.lastIndexOf('\n')).split('\n').last().toInt();
    }

private:
    int m_argc = 1;
    char m_name[6] = "tests";
    char* m_argv[2] = {m_name, nullptr};
    QCoreApplication m_application{m_argc, m_argv};
};

} // namespace

TEST_F(LedgerProcesses, WriteAtOnceAndLoseNothing)
{
    constexpr int rounds = 40;
    constexpr int count = 25;
    QProcess first;
    QProcess second;
    StartWriter(first, u"/cloud/first"_s, rounds, count);
    StartWriter(second, u"/cloud/second"_s, rounds, count);
    const auto ledger = Ledger::Open(settings.databaseFile, 7, patience, false);
    for (int round = 1; round <= rounds; ++round) {
        Records records = RoundOfRecords(u"/cloud/own"_s, round, count);
        ASSERT_TRUE(ledger->Write(records)) << ledger->Error().toStdString();
        ASSERT_EQ(ledger->ReadAll(u"/cloud/own"_s).size(), round * count);
        ASSERT_EQ(ledger->ReadAll(u"/cloud"_s).size() % count, 0) << "part of a round";
    }
    for (QProcess* process : {&first, &second}) {
        ASSERT_TRUE(process->waitForFinished(patience));
        EXPECT_EQ(process->exitCode(), 0);
    }
    EXPECT_EQ(ledger->ReadAll(u"/cloud"_s).size(), 3 * rounds * count);
    EXPECT_EQ(Ask("PRAGMA integrity_check"), "ok");
}

TEST_F(LedgerProcesses, ThatAreKilledLoseNothingThatTheyWereToldIsWrittenAndLeaveNoHalfRound)
{
    // So large that most of the time goes into the middle of a write.
    constexpr int count = 3000;
    qsizetype before = 0;
    for (int kill = 1; kill <= 6; ++kill) {
        SCOPED_TRACE("kill " + std::to_string(kill));
        const QString folder = u"/cloud/%1"_s.arg(kill);
        QProcess writer;
        StartWriter(writer, folder, 1000000, count);
        const int told = Kill(writer, WaitForRounds(writer, kill % 3, kill * 37));

        const Records read = Read(folder);
        EXPECT_EQ(read.size() % count, 0);
        EXPECT_GE(read.size(), told * count);
        EXPECT_LE(read.size(), (told + 1) * count) << "a round that it had not told of yet";
        for (const CopyRecord& record : read)
            ASSERT_EQ(record.sourceLinks.size(), 2);
        EXPECT_EQ(Ask("PRAGMA integrity_check"), "ok");
        Write({RecordOf(folder + u"/after"_s)});
        before += read.size() + 1;
        EXPECT_EQ(Read().size(), before);
    }
}

TEST_F(LedgerProcesses, LeaveALogThatIsReadAndKeptByWhoOnlyReads)
{
    QProcess writer;
    StartWriter(writer, u"/cloud"_s, 1000000, 10);
    const int told = Kill(writer, WaitForRounds(writer, 3, 0));
    // The index of the log (-shm) is no part of what is stored.
    const auto stored = [&] {
        FileTree::Snapshot files = FilesOfTheDatabase();
        files.remove(u"sync.db-shm"_s);
        return files;
    };
    const FileTree::Snapshot before = stored();
    ASSERT_EQ(before.keys(), (QStringList{u"sync.db"_s, u"sync.db-wal"_s}));
    ASSERT_FALSE(before[u"sync.db-wal"_s].isEmpty());
    EXPECT_GE(Read().size(), told * 10);
    EXPECT_EQ(stored(), before);
    Write({RecordOf(u"/cloud/after"_s)});
    EXPECT_EQ(stored().keys(), QStringList{u"sync.db"_s}) << "who writes tidies up";
}

TEST_F(LedgerProcesses, WaitForAWriterUntilTheBusyTimeout)
{
    Write({RecordOf(u"/cloud/a"_s, 1)});
    QProcess holder;
    Start(holder, {u"lock"_s, settings.databaseFile});
    ASSERT_TRUE(holder.waitForReadyRead(patience));

    const auto ledger = Ledger::Open(settings.databaseFile, 7, 300, false);
    EXPECT_EQ(ledger->Error(), QString());
    EXPECT_EQ(ledger->ReadAll(u"/cloud"_s).size(), 1) << "readers do not wait";
    QElapsedTimer time;
    time.start();
    Records records{RecordOf(u"/cloud/a"_s, 2)};
    EXPECT_FALSE(ledger->Write(records));
    EXPECT_GE(time.elapsed(), 250);
    EXPECT_LT(time.elapsed(), 20000);
    EXPECT_EQ(ledger->Error(),
              u"Writing the records of copies failed on sync database %1: database is locked"_s.arg(
                  settings.databaseFile));
    EXPECT_FALSE(ledger->Remove({u"/cloud/a"_s}));

    holder.closeWriteChannel();
    EXPECT_TRUE(Ledger::Open(settings.databaseFile, 7, patience, false)->Write(records));
    EXPECT_EQ(Read(), records);
    EXPECT_TRUE(holder.waitForFinished(patience));
}

} // namespace Halvern::Test
