// SPDX-License-Identifier: Apache-2.0

// Files that take long to be copied, compared or kept: somebody may cancel in the middle.

#include "JobsFixture.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>

#include <functional>
#include <thread>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 MiB = qint64(1) << 20;
constexpr qint64 Size = 24 * MiB;

/// Cancels once so many bytes of the file under way are copied, and counts what it is told then.
class CancellingAt : public NotingObserver
{
public:
    CancellingAt(CancelToken& token, qint64 bytes) : m_token(token), m_bytes(bytes) {}
    void Progressed(const Progress& now) override
    {
        toldAfterwards += m_token.IsCancelled() && now.phase == Phase::Copying ? 1 : 0;
        if (now.fileBytes >= m_bytes)
            std::thread([this] { m_token.Cancel(); }).join();
    }

    int toldAfterwards = 0;

private:
    CancelToken& m_token;
    qint64 m_bytes;
};

/// Cancels at a progress event of a phase.
class CancellingInPhase : public IJobObserver
{
public:
    CancellingInPhase(CancelToken& token, Phase phase, int events)
        : m_token(token), m_phase(phase), m_left(events)
    {}
    void Progressed(const Progress& now) override
    {
        if (now.phase == m_phase && m_left-- == 0)
            m_token.Cancel();
    }

private:
    CancelToken& m_token;
    Phase m_phase;
    int m_left;
};

class LargeFiles : public JobsFixture
{
protected:
    LargeFiles()
    {
        tree.File(u"work/proj/b.dat"_s, PatternBytes(Size));
        Begin();
    }

    JobResult ImportWith(IJobObserver& observer, const CancelToken& token,
                         const ImportRequest& request)
    {
        ImportJob job(Begin(), request, &observer, &token);
        job.MakePlan();
        return job.Execute();
    }
    QStringList CloudNames() const
    {
        QStringList names;
        for (const QString& name : tree.Contents(u"cloud"_s).keys())
            if (!name.endsWith(u'/'))
                names.append(name);
        return names;
    }
    /// As if nobody had cancelled anything before.
    void ExpectTheNextImportToFinish(const QByteArray& content)
    {
        ImportRequest request = Request({u"proj"_s});
        const JobResult next = Import(request);
        EXPECT_EQ(next.summary.filesWithProblems, 0);
        EXPECT_TRUE(tree.Read(u"cloud/proj/b.dat"_s) == content);
        EXPECT_EQ(Import(request).summary.Count(Outcome::Unchanged), next.files.size());
    }
};

} // namespace

TEST_F(LargeFiles, MoveTheProgressWhileTheyAreCopiedUpToTheirSize)
{
    tree.File(u"work/proj/a.dat"_s, PatternBytes(3 * MiB)).File(u"work/proj/c.dat"_s, "small");
    NotingObserver observer;
    const CancelToken token;
    ImportWith(observer, token, Request({u"proj"_s}));
    QList<qint64> sizes;
    qint64 events = 0;
    Progress before;
    for (const Progress& now : std::as_const(observer.progress)) {
        if (now.phase != Phase::Copying)
            continue;
        EXPECT_GE(now.bytes, before.bytes);
        EXPECT_LE(now.fileBytes, now.fileSize);
        EXPECT_EQ(now.totalBytes, Size + 3 * MiB + 5);
        const bool isNext = now.fileSize != before.fileSize;
        EXPECT_TRUE(isNext || now.fileBytes >= before.fileBytes);
        events += now.fileSize == Size ? 1 : 0;
        if (now.files > before.files) {
            EXPECT_EQ(now.fileBytes, now.fileSize);
            sizes.append(now.fileSize);
        }
        before = now;
    }
    EXPECT_EQ(sizes, (QList<qint64>{3 * MiB, Size, 5}));
    EXPECT_EQ(before.bytes, before.totalBytes);
    EXPECT_GE(events, Size / (256 * 1024));
}

TEST_F(LargeFiles, AreLeftInTheMiddleByACancel)
{
    tree.File(u"work/proj/a.dat"_s, "a").File(u"work/proj/c.dat"_s, "c");
    CancelToken token;
    CancellingAt observer(token, 8 * MiB);
    const JobResult result = ImportWith(observer, token, Request({u"proj"_s}));
    EXPECT_TRUE(result.summary.cancelled);
    EXPECT_TRUE(result.summary.executed);
    EXPECT_EQ(LinesOf(result.files, tree),
              (QStringList{u"copied work/proj/a.dat -> cloud/proj/a.dat"_s,
                           u"not done work/proj/b.dat -> cloud/proj/b.dat"_s,
                           u"not done work/proj/c.dat -> cloud/proj/c.dat"_s}));
    EXPECT_LE(observer.toldAfterwards, 1) << "the piece after that is not copied any more";
    EXPECT_EQ(observer.problems, QStringList());
    EXPECT_EQ(CloudNames(), QStringList{u"proj/a.dat"_s});
    EXPECT_EQ(
        QDir(tree.Path(u"cloud"_s)).entryList({u".corsync-*"_s}, QDir::AllEntries | QDir::Hidden),
        QStringList());
    ExpectTheNextImportToFinish(PatternBytes(Size));
}

TEST_F(LargeFiles, ThatAreUpdatedStayWhatTheyWereAfterACancel)
{
    const QByteArray old = PatternBytes(Size);
    const QByteArray saved = PatternBytes(Size + MiB);
    Import(Request({u"proj"_s}));
    tree.File(u"work/proj/b.dat"_s, saved);
    for (const qint64 bytes : {qint64(1), 8 * MiB, Size + MiB}) {
        CancelToken token;
        CancellingAt observer(token, bytes);
        const JobResult result = ImportWith(observer, token, Request({u"proj"_s}));
        EXPECT_TRUE(result.summary.cancelled);
        EXPECT_EQ(result.summary.Count(Outcome::NotDone), 1) << bytes;
        EXPECT_EQ(observer.problems, QStringList());
        EXPECT_TRUE(tree.Read(u"cloud/proj/b.dat"_s) == old);
        EXPECT_EQ(CloudNames(), QStringList{u"proj/b.dat"_s});
    }
    ExpectTheNextImportToFinish(saved);
}

// Keeping the old version and comparing contents take as long as copying does.
TEST_F(LargeFiles, MayBeCancelledAtEveryPieceOfAnUpdate)
{
    Import(Request({u"proj"_s}));
    const QByteArray saved = PatternBytes(Size + MiB);
    tree.File(u"work/proj/b.dat"_s, saved);
    int stopped = 0;
    for (const Phase phase : {Phase::ReadingLinks, Phase::LookingForConflicts, Phase::Copying})
        for (int events = 0; events < 400; events += 13) {
            const QByteArray before = tree.Read(u"cloud/proj/b.dat"_s);
            CancelToken token;
            CancellingInPhase observer(token, phase, events);
            ImportRequest request = Request({u"proj"_s});
            request.checksum = true;
            const JobResult result = ImportWith(observer, token, request);
            EXPECT_EQ(result.summary.filesWithProblems, 0);
            EXPECT_EQ(result.summary.cancelled, token.IsCancelled()) << int(phase) << events;
            if (!token.IsCancelled())
                break;
            ++stopped;
            const bool isDone = result.summary.Count(Outcome::Updated) > 0;
            EXPECT_TRUE(tree.Read(u"cloud/proj/b.dat"_s) == (isDone ? saved : before));
        }
    EXPECT_GT(stopped, 10);
    ExpectTheNextImportToFinish(saved);
}

TEST_F(LargeFiles, ThatWouldBeMovedStayAfterACancel)
{
    CancelToken token;
    CancellingAt observer(token, 8 * MiB);
    ImportRequest request = Request({u"proj"_s});
    request.move = true;
    EXPECT_TRUE(ImportWith(observer, token, request).summary.cancelled);
    EXPECT_TRUE(tree.Read(u"work/proj/b.dat"_s) == PatternBytes(Size));
    EXPECT_EQ(CloudNames(), QStringList());
    EXPECT_FALSE(Import(request).summary.cancelled);
    EXPECT_FALSE(tree.Exists(u"work/proj/b.dat"_s));
    EXPECT_TRUE(tree.Read(u"cloud/proj/b.dat"_s) == PatternBytes(Size));
}

} // namespace Halvern::Test
