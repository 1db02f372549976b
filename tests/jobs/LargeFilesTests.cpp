// SPDX-License-Identifier: Apache-2.0

// Files that take long to be copied, compared or kept: somebody may cancel in the middle.

#include "LargeFiles.h"

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

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

} // namespace Halvern::Test
