// SPDX-License-Identifier: Apache-2.0

#include "FileTimes.h"
#include "JobsFixture.h"

#include "corsync/Retry.h"

#include <algorithm>

namespace Halvern::Test {

using namespace Halvern::Jobs;
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 minute = 60'000'000'000;

/// Gives the other copy a later time, as a sync program does, once the first is told.
class TouchingObserver : public NotingObserver
{
public:
    explicit TouchingObserver(const FileTree& tree) : m_tree(tree) {}

    void FileDone(const Jobs::FileResult& result) override
    {
        if (done.isEmpty())
            for (const QString& name : {u"a"_s, u"b"_s}) {
                const QString copy = m_tree.Path(u"cloud/Demo/%1.tlk"_s.arg(name));
                if (copy != result.target)
                    SetModifiedNanoseconds(copy, ModifiedNanoseconds(copy) + minute);
            }
        NotingObserver::FileDone(result);
    }

private:
    const FileTree& m_tree;
};

class RetryOfCopies : public JobsFixture
{
protected:
    RetryOfCopies()
    {
        tree.File(u"work/proj/a.tlk"_s, "link 1 ../lib/part.tlk\n")
            .File(u"work/proj/b.tlk"_s, "link 1 ../lib/part.tlk\n")
            .File(u"work/lib/part.tlk"_s, "part\n");
    }
    void BringWithOldLinks()
    {
        const PluginOrders orders("norepath");
        Begin();
        Import(Request({u"proj/a.tlk"_s, u"proj/b.tlk"_s}, u"Demo"_s));
    }
    static qsizetype Problems(const JobResult& result)
    {
        return std::count_if(result.files.begin(), result.files.end(),
                             [](const FileResult& file) { return file.IsProblem(); });
    }
};

} // namespace

TEST_F(RetryOfCopies, ThatChangeMeanwhileLeavesThemToTheNextOne)
{
    BringWithOldLinks();
    Begin();
    TouchingObserver observer(tree);
    const JobResult first = RetryRewrites(*session, tree.Path(u"cloud"_s), &observer);
    EXPECT_EQ(first.files.size(), 2);
    EXPECT_EQ(Problems(first), 1);
    const JobResult second = RetryRewrites(*session, tree.Path(u"cloud"_s));
    EXPECT_EQ(second.files.size(), 1);
    for (const QString& name : {u"a"_s, u"b"_s})
        EXPECT_EQ(tree.Read(u"cloud/Demo/%1.tlk"_s.arg(name)), "link 1 lib/part.tlk\n");
    EXPECT_EQ(RetryRewrites(*session, tree.Path(u"cloud"_s)).files.size(), 0);
}

} // namespace Halvern::Test
