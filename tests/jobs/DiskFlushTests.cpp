// SPDX-License-Identifier: Apache-2.0

// What waits for the disk, and what becomes of a job when the disk fails then.

#include "DiskFlush.h"
#include "JobsFixture.h"

#include "base/FileSystemFlush.h"

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

constexpr int Files = 60;

class FlushOfAJob : public JobsFixture
{
protected:
    FlushOfAJob()
    {
        Save("first");
        DiskFlush::SetWatch([this] {
            ++flushes;
            return flushes == failing ? Base::FileResult::Failed("the disk is tired")
                                      : Base::FileResult();
        });
        Begin();
    }
    ~FlushOfAJob() override { DiskFlush::SetWatch({}); }

    void Save(const QByteArray& content)
    {
        for (int i = 0; i < Files; ++i)
            tree.File(u"work/proj/%1.txt"_s.arg(i), content + ' ' + QByteArray::number(i));
    }
    ImportRequest Wanted(bool move = false) const
    {
        ImportRequest request = Request({u"proj"_s});
        request.move = move;
        return request;
    }
    JobResult Run(const ImportRequest& request, int atFlush = 0)
    {
        flushes = 0;
        failing = atFlush;
        return Import(request);
    }
    int CopiesOf(const QByteArray& content) const
    {
        int copies = 0;
        for (int i = 0; i < Files; ++i)
            copies +=
                tree.Read(u"cloud/proj/%1.txt"_s.arg(i)) == content + ' ' + QByteArray::number(i);
        return copies;
    }
    bool Stands(const QString& file) const { return tree.Exists(file); }

    int flushes = 0;
    int failing = 0;
};

} // namespace

TEST_F(FlushOfAJob, ComesAFewTimesHoweverManyFilesThereAre)
{
    // Where the system flushes single files only, there are as many flushes as files.
    const bool isWhole =
        static_cast<bool>(Base::FlushFileSystem(tree.Path(u"cloud"_s).toStdU16String()));
    const int most = isWhole ? 6 : 6 * Files;
    EXPECT_EQ(Run(Wanted()).summary.filesWithProblems, 0);
    EXPECT_GE(flushes, 2) << "of what is copied, and of the names";
    EXPECT_LE(flushes, most);
    Save("second, longer");
    EXPECT_EQ(Run(Wanted()).summary.Count(Outcome::Updated), Files);
    EXPECT_GE(flushes, 2);
    EXPECT_LE(flushes, most);
}

TEST_F(FlushOfAJob, IsNotMadeWhenNobodyWantsItOrNothingIsWritten)
{
    ImportRequest request = Wanted();
    request.flush = false;
    Run(request);
    EXPECT_EQ(flushes, 0);
    EXPECT_EQ(CopiesOf("first"), Files);
    Run(Wanted());
    EXPECT_EQ(flushes, 0) << "nothing changed";
}

TEST_F(FlushOfAJob, ThatFailsLeavesWhatStandsThereAndIsMadeUpForByTheNextJob)
{
    Run(Wanted());
    Save("second, longer");
    const JobResult result = Run(Wanted(), 1);
    EXPECT_EQ(result.summary.Count(Outcome::Failed), Files);
    EXPECT_TRUE(LinesOf(result.files, tree).first().contains(u"the disk is tired"_s))
        << LinesOf(result.files, tree).first().toStdString();
    EXPECT_EQ(CopiesOf("first"), Files);
    EXPECT_EQ(Run(Wanted()).summary.Count(Outcome::Updated), Files);
    EXPECT_EQ(CopiesOf("second, longer"), Files);
}

TEST_F(FlushOfAJob, ThatFailsAtAnyTimeDeletesNoSourceAndSaysSo)
{
    Run(Wanted());
    const int usual = flushes;
    for (int at = 1; at <= usual; ++at) {
        StartOver();
        Begin();
        const JobResult result = Run(Wanted(true), at);
        EXPECT_TRUE(result.summary.filesWithProblems > 0 || !result.summary.problems.isEmpty())
            << at;
        for (int i = 0; i < Files; ++i)
            EXPECT_TRUE(Stands(u"work/proj/%1.txt"_s.arg(i))) << at;
        const JobResult again = Run(Wanted(true));
        EXPECT_EQ(again.summary.filesWithProblems, 0) << at;
        EXPECT_TRUE(again.summary.problems.isEmpty()) << at;
        EXPECT_EQ(CopiesOf("first"), Files) << at;
        EXPECT_FALSE(Stands(u"work/proj"_s)) << at;
        Save("first");
    }
}

TEST_F(FlushOfAJob, OfAFewFilesIsOneOfEach)
{
    Run(Wanted());
    tree.File(u"work/proj/1.txt"_s, "another one");
    EXPECT_EQ(Run(Wanted()).summary.Count(Outcome::Updated), 1);
    EXPECT_GE(flushes, 3) << "the copy, what it replaces, the folder";
    EXPECT_LE(flushes, 8);
}

} // namespace Halvern::Test
