// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include <csignal>

#include <algorithm>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

#ifdef CORSYNC_SANITIZED
constexpr int Files = 1000;
#else
constexpr int Files = 3000;
#endif

/// A folder with so many files that a signal arrives while they are copied.
class CancelledImport : public CommandFixture
{
protected:
    CancelledImport()
    {
        for (int i = 0; i < Files; ++i)
            tree.File(u"work/proj/%1.tlk"_s.arg(i, 5, 10, QChar(u'0')), "link 1 ../lib/part.tlk\n");
        tree.File(u"work/lib/part.tlk"_s, "part\n");
    }

    /// Sends the signal once the progress line shows the phase.
    CommandResult ImportAndSend(int signal, const QByteArray& phase,
                                const QStringList& options = {}) const
    {
        QProcess process;
        Prepare(process,
                ImportArguments(QStringList{u"proj"_s, u"--progress"_s, u"always"_s} + options));
        process.setReadChannel(QProcess::StandardError);
        process.start();
        QByteArray seen;
        while (!seen.contains(phase) && process.waitForReadyRead(60000))
            seen += process.readAllStandardError();
        EXPECT_TRUE(seen.contains(phase)) << seen.toStdString();
        kill(pid_t(process.processId()), signal);
        return Finish(process);
    }

    void ExpectTheNextImportToFinish(const QByteArray& link = "lib/part.tlk", int parts = 1) const
    {
        const CommandResult next = Import({u"proj"_s});
        EXPECT_EQ(next.exitCode, 0) << next.err.toStdString();
        EXPECT_EQ(next.Lines().filter(u"failed"_s), QStringList());
        const FileTree::Snapshot cloud = Cloud();
        EXPECT_EQ(cloud.size(), Files + parts);
        EXPECT_EQ(cloud.values().count("link 1 " + link + "\n"), Files);
        const PluginCallLog calls;
        EXPECT_EQ(Import({u"proj"_s}).exitCode, 0);
        EXPECT_EQ(calls.Calls(), QStringList());
    }
};

} // namespace

TEST_F(CancelledImport, WhileCopyingTellsWhatIsDoneAndTheNextOneFinishesIt)
{
    const CommandResult result = ImportAndSend(SIGINT, "Copying");
    EXPECT_EQ(result.exitCode, 20) << result.err.toStdString();
    EXPECT_TRUE(result.err.contains(u"cancelled"_s));
    const FileTree::Snapshot cloud = Cloud();
    EXPECT_LT(cloud.size(), Files);
    // A folder that is still empty stands in the snapshot, too.
    const auto copied = std::count_if(cloud.keyBegin(), cloud.keyEnd(),
                                      [](const QString& name) { return !name.endsWith(u'/'); });
    EXPECT_EQ(result.Lines().filter(u"not done "_s).size(), Files + 1 - copied);
    EXPECT_EQ(QStringList(cloud.keys()).filter(u".tmp"_s), QStringList());
    ExpectTheNextImportToFinish();
}

TEST_F(CancelledImport, WhileRewritingLinksLeavesNoCopyWithOldLinksForGood)
{
    ASSERT_EQ(Import({u"proj"_s}).exitCode, 0);
    // The part gets another name, so that every copy has to be rewritten where it stands.
    tree.File(u"work/lib/part.tlk"_s, "new part\n")
        .File(u"cloud/proj/lib/part.tlk"_s, "other part\n");
    const CommandResult result =
        ImportAndSend(SIGINT, "Rewriting links", {u"--on-conflict"_s, u"rename"_s});
    EXPECT_EQ(result.exitCode, 20) << result.err.toStdString();
    EXPECT_EQ(Cloud().size(), Files + 2);
    EXPECT_TRUE(result.out.contains(u"its links are not rewritten yet"_s));
    ExpectTheNextImportToFinish("lib/part (2).tlk", 2);
}

TEST_F(CancelledImport, BeforeCopyingLeavesNothing)
{
    const CommandResult result = ImportAndSend(SIGTERM, "Reading links");
    EXPECT_EQ(result.exitCode, 20) << result.err.toStdString();
    EXPECT_TRUE(result.err.contains(u"nothing was copied"_s));
    EXPECT_EQ(Cloud().size(), 0);
}

} // namespace Halvern::Test
