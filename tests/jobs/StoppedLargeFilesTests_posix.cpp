// SPDX-License-Identifier: Apache-2.0

// Cancels in the middle of a file that is copied. On Windows the system makes the pieces and tells
// of them, which Wine does not.

#include "LargeFiles.h"

#include <QtCore/QDir>

#include <thread>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

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

class StoppedLargeFiles : public LargeFiles
{};

} // namespace

TEST_F(StoppedLargeFiles, AreLeftInTheMiddleByACancel)
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

TEST_F(StoppedLargeFiles, ThatAreUpdatedStayWhatTheyWereAfterACancel)
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

TEST_F(StoppedLargeFiles, ThatWouldBeMovedStayAfterACancel)
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
