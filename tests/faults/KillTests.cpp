// SPDX-License-Identifier: Apache-2.0

// An import is a process of its own here, and is killed. Whatever the moment: sources are as they
// were, every target is absent, the old file or the new one, nothing that was replaced is lost, the
// database is sound, and the next import completes what was left. Part of a copy may stand under a
// name of its own (.copy-...).

#include "FileTree.h"
#include "ProcessStart.h"
#include "TestPlugins.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QThread>

#include <gtest/gtest.h>

#include <random>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

constexpr int Assemblies = 5;
constexpr int PartsOfEach = 2;
constexpr qint64 PartSize = 200'000;
constexpr qint64 BigFile = qint64(96) << 20;

class Kill : public ::testing::Test
{
protected:
    /// The states that a target may be in.
    struct Expected
    {
        /// Empty when there was none.
        QByteArray old;
        QByteArray copied;
        QByteArray rewritten;
    };

    static QString AssemblyName(int a) { return u"asm%1.tlk"_s.arg(a); }
    static QString PartName(int a, int p) { return u"p%1_%2.tlk"_s.arg(a).arg(p); }

    /// A fresh tree: assemblies in src, each with parts in lib, and one part that all link.
    void Build(bool withOldTargets)
    {
        tree = std::make_unique<FileTree>();
        expected.clear();
        sources.clear();
        RegisterTestResolver(*tree, "plugins");
        tree->Folder("cloud/T");
        for (int a = 0; a < Assemblies; ++a) {
            QByteArray copied;
            QByteArray rewritten;
            for (int p = 0; p < PartsOfEach; ++p) {
                const QString name = PartName(a, p);
                AddFile("lib/" + name, "lib/" + name, PatternBytes(PartSize, quint32(a * 10 + p)),
                        {}, withOldTargets);
                const QByteArray begin = "link " + QByteArray::number(p) + ' ';
                copied += begin + "../lib/" + name.toUtf8() + '\n';
                rewritten += begin + "lib/" + name.toUtf8() + '\n';
            }
            copied += "link s ../lib/shared.tlk\n";
            rewritten += "link s lib/shared.tlk\n";
            const QString name = AssemblyName(a);
            sources.append(tree->Path("src/" + name));
            AddFile("src/" + name, name, copied, rewritten, withOldTargets);
        }
        AddFile("lib/shared.tlk", "lib/shared.tlk", "shared\n", {}, withOldTargets);
        before = tree->Contents("src");
        partsBefore = tree->Contents("lib");
    }

    /// Runs the host and kills it as soon as anything stands in the target folder.
    void KillHostAtFirstSight()
    {
        QProcess host;
        StartProcess(host, QStringLiteral(FAULT_HOST), HostArguments(0, false));
        const QDir targets(tree->Path("cloud/T"));
        const QDir::Filters all = QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot;
        while (targets.entryList(all).isEmpty() && host.state() != QProcess::NotRunning)
            host.waitForFinished(1);
        host.kill();
        EXPECT_TRUE(host.waitForFinished(60'000) || host.state() == QProcess::NotRunning);
    }

    /// Runs the host. False when it was killed after `milliseconds` (-1: never).
    bool RunHost(int endAtPoll, bool move, int milliseconds = -1)
    {
        QProcess host;
        StartProcess(host, QStringLiteral(FAULT_HOST), HostArguments(endAtPoll, move));
        if (!host.waitForFinished(milliseconds < 0 ? 60'000 : milliseconds)) {
            EXPECT_GE(milliseconds, 0) << "the import does not end";
            host.kill();
            EXPECT_TRUE(host.waitForFinished(60'000));
        }
        if (host.exitStatus() == QProcess::NormalExit && host.exitCode() != 99) {
            EXPECT_EQ(host.exitCode(), 0) << host.readAllStandardError().toStdString();
            return true;
        }
        return false;
    }

    void CheckSources(bool move)
    {
        if (!move) {
            EXPECT_EQ(tree->Contents("src"), before);
        }
        EXPECT_EQ(tree->Contents("lib"), partsBefore);
        // A moved source is gone only when its copy is complete.
        const FileTree::Snapshot now = tree->Contents("src");
        for (auto it = before.cbegin(); it != before.cend(); ++it) {
            const QByteArray copy = tree->Contents("cloud/T").value(it.key());
            EXPECT_TRUE(now.contains(it.key()) ? now[it.key()] == it.value()
                                               : IsNew(copy, expected[it.key()]))
                << it.key().toStdString();
        }
    }

    void CheckTargets()
    {
        const FileTree::Snapshot now = tree->Contents("cloud/T");
        for (auto it = now.cbegin(); it != now.cend(); ++it) {
            SCOPED_TRACE(it.key().toStdString());
            if (!expected.contains(it.key())) {
                CheckLeftover(it.key(), it.value());
                continue;
            }
            EXPECT_TRUE(IsWhole(it.value(), expected[it.key()]));
        }
        for (auto it = expected.cbegin(); it != expected.cend(); ++it)
            EXPECT_TRUE(it->old.isEmpty() || IsWhole(now.value(it.key()), *it) ||
                        IsWhole(now.value(it.key() + ".tmp"), *it))
                << it.key().toStdString() << " is lost";
    }

    void CheckDatabase()
    {
        if (!tree->Exists("sync.db"))
            return;
        SQLite::Database database(tree->Path("sync.db").toStdString(), SQLite::OPEN_READWRITE);
        EXPECT_EQ(database.execAndGet("PRAGMA integrity_check").getString(), "ok");
        SQLite::Statement broken(database, "PRAGMA foreign_key_check");
        EXPECT_FALSE(broken.executeStep());
    }

    /// The state after a run that was not disturbed.
    void CheckComplete(bool move)
    {
        for (auto it = expected.cbegin(); it != expected.cend(); ++it)
            EXPECT_EQ(tree->Read("cloud/T/" + it.key()),
                      it->rewritten.isEmpty() ? it->copied : it->rewritten)
                << it.key().toStdString();
        if (move) {
            EXPECT_EQ(tree->Contents("src"), (FileTree::Snapshot{}));
        }
        SQLite::Database database(tree->Path("sync.db").toStdString(), SQLite::OPEN_READONLY);
        EXPECT_EQ(database.execAndGet("SELECT count(*) FROM items WHERE kind = 0").getInt(),
                  int(expected.size()));
        EXPECT_EQ(database.execAndGet("SELECT count(*) FROM item_links WHERE linked_item_id < 0")
                      .getInt(),
                  0);
    }

    void CheckAll(bool move)
    {
        CheckSources(move);
        CheckTargets();
        CheckDatabase();
    }

    std::unique_ptr<FileTree> tree;
    QMap<QString, Expected> expected;
    QStringList sources;
    FileTree::Snapshot before;
    FileTree::Snapshot partsBefore;

private:
    QStringList HostArguments(int endAtPoll, bool move) const
    {
        return QStringList{tree->Path(), TestPluginFolder(), QString::number(endAtPoll),
                           QString::number(move)} +
               sources;
    }
    void AddFile(const QString& source, const QString& target, const QByteArray& content,
                 const QByteArray& rewritten, bool withOldTarget)
    {
        tree->File(source, content);
        Expected& state = expected[target];
        state.copied = content;
        state.rewritten = rewritten;
        if (!withOldTarget)
            return;
        state.old = "old " + target.toUtf8() + '\n';
        tree->File("cloud/T/" + target, state.old);
    }
    static bool IsNew(const QByteArray& content, const Expected& state)
    {
        return content == state.copied ||
               (!state.rewritten.isEmpty() && content == state.rewritten);
    }
    static bool IsWhole(const QByteArray& content, const Expected& state)
    {
        return IsNew(content, state) || (!state.old.isEmpty() && content == state.old);
    }
    /// Besides targets there may be parked files, whole, copies that were not complete, folders
    /// that were to get one, and the plug-in's own temporary files.
    void CheckLeftover(const QString& name, const QByteArray& content)
    {
        if (name.section('/', -1).startsWith(".copy-") || name.endsWith('/'))
            return;
        static const QRegularExpression parked(u"^(.+?)(_[0-9]+)?\\.tmp$"_s);
        const QString target = parked.match(name).captured(1);
        if (expected.contains(target)) {
            EXPECT_TRUE(IsWhole(content, expected[target]));
            return;
        }
        EXPECT_TRUE(name.endsWith(".rewritten") && expected.contains(name.chopped(10)));
    }
};

class KillAtRandomMoments : public Kill, public ::testing::WithParamInterface<int>
{
protected:
    /// How long an import takes that is left alone.
    int Duration()
    {
        Build(true);
        QElapsedTimer timer;
        timer.start();
        EXPECT_TRUE(RunHost(0, false));
        return int(timer.elapsed());
    }
};

} // namespace

TEST_F(Kill, AnImportLeftAloneIsComplete)
{
    for (const bool move : {false, true}) {
        Build(true);
        EXPECT_TRUE(RunHost(0, move));
        CheckAll(move);
        CheckComplete(move);
        for (const QString& name : tree->Contents("cloud/T").keys())
            EXPECT_TRUE(expected.contains(name)) << name.toStdString();
    }
}

TEST_F(Kill, AtAnyPollLosesNothingAndTheNextImportCompletesIt)
{
    for (int poll = 1;; poll += 13) {
        SCOPED_TRACE("ended at poll " + std::to_string(poll));
        Build(true);
        const bool ended = RunHost(poll, false);
        CheckAll(false);
        EXPECT_TRUE(RunHost(0, false));
        CheckAll(false);
        CheckComplete(false);
        if (ended || HasFailure())
            break;
    }
}

TEST_P(KillAtRandomMoments, LosesNothingAndTheNextImportCompletesIt)
{
    std::mt19937 random{quint32(GetParam())};
    const int duration = Duration();
    for (int round = 0; round < 4 && !HasFailure(); ++round) {
        const bool withOldTargets = random() % 2;
        const int moment = int(random() % quint32(duration + 10));
        SCOPED_TRACE("killed after " + std::to_string(moment) + " of " + std::to_string(duration) +
                     " ms");
        Build(withOldTargets);
        // Killed, killed again on what the first kill left, and then left alone.
        RunHost(0, false, moment);
        CheckAll(false);
        RunHost(0, false, moment / 2);
        CheckAll(false);
        EXPECT_TRUE(RunHost(0, false));
        CheckAll(false);
        CheckComplete(false);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, KillAtRandomMoments, ::testing::Range(1, 5));

TEST_F(Kill, WhileABigFileIsCopiedLeavesNoPartOfItUnderItsName)
{
    Build(false);
    const QByteArray content = PatternBytes(BigFile);
    tree->File("src/big.dat", content);
    sources = {tree->Path("src/big.dat")};

    KillHostAtFirstSight();

    for (const QString& name : tree->Contents("cloud/T").keys())
        EXPECT_TRUE(name.startsWith(".copy-") || tree->Read("cloud/T/" + name) == content)
            << name.toStdString();
    EXPECT_TRUE(RunHost(0, false));
    EXPECT_TRUE(tree->Read("cloud/T/big.dat") == content);
}

TEST_F(Kill, DuringAMoveKeepsEachFileInOneOfItsPlaces)
{
    std::mt19937 random(1);
    Build(false);
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(RunHost(0, true));
    const quint32 duration = quint32(timer.elapsed());
    for (int round = 0; round < 8 && !HasFailure(); ++round) {
        const int moment = int(random() % (duration + 10));
        SCOPED_TRACE("killed after " + std::to_string(moment) + " ms");
        Build(false);
        RunHost(0, true, moment);
        CheckAll(true);
    }
}

} // namespace Halvern::Test
