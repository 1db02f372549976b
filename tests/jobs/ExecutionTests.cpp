// SPDX-License-Identifier: Apache-2.0

// What a plan says is what its execution does.

#include "JobsFixture.h"

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

class ExecutionOfAPlan : public JobsFixture
{
protected:
    /// Executes and expects what the plan said; the result's lines.
    QStringList Carry(const ImportRequest& request)
    {
        ImportJob job(*session, request);
        job.MakePlan();
        const JobResult expected = job.Preview();
        EXPECT_FALSE(expected.summary.executed);
        const JobResult result = job.Execute();
        EXPECT_TRUE(result.summary.executed);
        EXPECT_EQ(LinesOf(result.files, tree), LinesOf(expected.files, tree));
        EXPECT_EQ(result.summary.counts, expected.summary.counts);
        EXPECT_EQ(result.summary.filesWithProblems, expected.summary.filesWithProblems);
        return LinesOf(result.files, tree);
    }

    /// work/a.tlk links work/b.tlk; files of both names are in the cloud cache folder already.
    void PutInTheWay()
    {
        tree.File(u"work/a.tlk"_s, "link 1 b.tlk\n").File(u"work/b.tlk"_s, "new b\n");
        tree.File(u"cloud/a.tlk"_s, "link 1 b.tlk\nold\n").File(u"cloud/b.tlk"_s, "old b\n");
    }
    ImportRequest WithPolicy(CollisionPolicy policy) const
    {
        ImportRequest request = Request({u"a.tlk"_s});
        request.selectedCollisions = request.linkedCollisions = policy;
        return request;
    }
};

} // namespace

TEST_F(ExecutionOfAPlan, BringsARealProjectAndFindsItUnchangedAfterwards)
{
    TakeGardenShed();
    Begin();
    const ImportRequest request =
        Request({u"shed/scene/Shed.gltf"_s, u"shed/Lantern.glb"_s}, u"Demo"_s);
    const QStringList first = Carry(request);
    EXPECT_EQ(first.filter(u"copied "_s).size(), first.size() - 1);
    EXPECT_EQ(first.filter(u"missing "_s),
              QStringList{u"missing work/shed/textures/Poster (spring).png ->  "
                          u"linked from work/shed/scene/Shed.gltf"_s});
    const FileTree::Snapshot cloud = tree.Contents(u"cloud"_s);
    EXPECT_EQ(cloud.size(), first.size() - 1);
    const QStringList second = Carry(request);
    EXPECT_EQ(second.filter(u"unchanged "_s).size(), second.size() - 1);
    EXPECT_EQ(tree.Contents(u"cloud"_s), cloud);
}

TEST_F(ExecutionOfAPlan, MovesGivenFilesAndCopiesLinkedOnes)
{
    TakeGardenShed();
    Begin();
    ImportRequest request = Request({u"shed/scene/Work bench.gltf"_s});
    request.move = true;
    const QStringList lines = Carry(request);
    EXPECT_EQ(lines.first(), u"moved work/shed/scene/Work bench.gltf -> cloud/Work bench.gltf "
                             u"(source deleted)"_s);
    EXPECT_EQ(lines.filter(u"copied "_s).size(), 2);
    EXPECT_FALSE(tree.Exists(u"work/shed/scene/Work bench.gltf"_s));
    EXPECT_TRUE(tree.Exists(u"work/shed/textures/Planks.png"_s));
}

TEST_F(ExecutionOfAPlan, ReplacesKeepsAndRenamesAsThePolicySays)
{
    struct Row
    {
        CollisionPolicy policy;
        QStringList lines;
        FileTree::Snapshot cloud;
    };
    const QList<Row> rows = {
        {CollisionPolicy::Replace,
         {u"replaced work/a.tlk -> cloud/a.tlk"_s, u"replaced work/b.tlk -> cloud/b.tlk"_s},
         {{u"a.tlk"_s, "link 1 b.tlk\n"}, {u"b.tlk"_s, "new b\n"}}},
        {CollisionPolicy::Keep,
         {u"kept work/a.tlk -> cloud/a.tlk"_s, u"kept work/b.tlk -> cloud/b.tlk"_s},
         {{u"a.tlk"_s, "link 1 b.tlk\nold\n"}, {u"b.tlk"_s, "old b\n"}}},
        {CollisionPolicy::Rename,
         {u"renamed work/a.tlk -> cloud/a (2).tlk"_s, u"renamed work/b.tlk -> cloud/b (2).tlk"_s},
         {{u"a.tlk"_s, "link 1 b.tlk\nold\n"},
          {u"b.tlk"_s, "old b\n"},
          {u"a (2).tlk"_s, "link 1 b (2).tlk\n"},
          {u"b (2).tlk"_s, "new b\n"}}},
    };
    for (const Row& row : rows) {
        StartOver();
        PutInTheWay();
        Begin();
        EXPECT_EQ(Carry(WithPolicy(row.policy)), row.lines);
        EXPECT_EQ(tree.Contents(u"cloud"_s), row.cloud);
    }
}

TEST_F(ExecutionOfAPlan, TellsFilesThatAreNotCopied)
{
    tree.File(u"cloud/std.tlk"_s, "std\n")
        .File(u"work/a.tlk"_s, "link 1 ../cloud/std.tlk\nlink 2 https://x.org/y\nlink 3 no.tlk\n"
                               "link 4 .\n");
    Begin();
    ImportRequest request = Request({u"a.tlk"_s}, u"Demo"_s);
    request.linksOnly = true;
    const QStringList lines = Carry(request);
    EXPECT_TRUE(lines.first().startsWith(u"skipped work/a.tlk -> "_s));
    EXPECT_EQ(lines.filter(u"in place cloud/std.tlk"_s).size(), 1);
    EXPECT_EQ(lines.filter(u"url https:"_s).size(), 1);
    EXPECT_EQ(lines.filter(u"missing work/no.tlk"_s).size(), 1);
    EXPECT_EQ(lines.filter(u"skipped work -> "_s).size(), 1) << lines.join(u'\n').toStdString();
}

TEST_F(ExecutionOfAPlan, FailsWithReasonsAsDataWhereThePlanCouldNotKnow)
{
    tree.File(u"work/a.tlk"_s, "new").File(u"work/b.tlk"_s, "b").File(u"cloud/a.tlk"_s, "old");
    Begin();
    ImportRequest request = Request({u"a.tlk"_s, u"b.tlk"_s});
    request.selectedCollisions = CollisionPolicy::Replace;
    ImportJob job(*session, request);
    ASSERT_TRUE(job.MakePlan().conflicts.isEmpty());
    QFile::setPermissions(tree.Path(u"cloud/a.tlk"_s), QFile::ReadOwner | QFile::ReadUser);
    const JobResult result = job.Execute();
    ASSERT_EQ(result.files.size(), 2);
    EXPECT_EQ(result.files[0].outcome, Outcome::Failed);
    ASSERT_EQ(result.files[0].problems.size(), 1);
    EXPECT_EQ(result.files[0].problems[0].kind, FileLink::ProblemKind::TargetReadOnly);
    EXPECT_EQ(result.files[0].problems[0].file, tree.Path(u"work/a.tlk"_s));
    EXPECT_EQ(result.files[1].outcome, Outcome::Copied);
    EXPECT_EQ(result.summary.filesWithProblems, 1);
    EXPECT_EQ(result.summary.pluginFailures, 0);
    EXPECT_TRUE(result.summary.problems.isEmpty());
    EXPECT_EQ(tree.Read(u"cloud/a.tlk"_s), "old");
}

TEST_F(ExecutionOfAPlan, TellsWhichFilesHadTheirLinksRewritten)
{
    tree.File(u"work/a.tlk"_s, "link 1 lib/b.tlk\n")
        .File(u"work/lib/b.tlk"_s, "b")
        .File(u"work/x/c.tlk"_s, "link 1 ../lib/b.tlk\n");
    Begin();
    const JobResult result = Import(Request({u"a.tlk"_s, u"x/c.tlk"_s}));
    ASSERT_EQ(result.files.size(), 3);
    EXPECT_TRUE(result.files[1].linksRewritten);
    EXPECT_EQ(tree.Read(u"cloud/c.tlk"_s), "link 1 lib/b.tlk\n");
    EXPECT_FALSE(result.files[2].linksRewritten);
}

TEST_F(ExecutionOfAPlan, KeepsTheNextJobOfTheSessionFreeOfWhatHappenedToThisOne)
{
    tree.File(u"work/a.tlk"_s, "fail\n").File(u"work/b.tlk"_s, "b");
    Begin();
    EXPECT_EQ(Import(Request({u"a.tlk"_s})).summary.pluginFailures, 1);
    const JobResult second = Import(Request({u"b.tlk"_s}));
    EXPECT_EQ(LinesOf(second.files, tree), QStringList{u"copied work/b.tlk -> cloud/b.tlk"_s});
    EXPECT_EQ(second.summary.pluginFailures, 0);
    EXPECT_EQ(second.summary.databaseError, QString());
    const JobResult third = Import(Request({u"b.tlk"_s}));
    EXPECT_EQ(third.summary.Count(Outcome::Unchanged), 1);
}

TEST_F(ExecutionOfAPlan, HappensOnceAndAfterThePlan)
{
    tree.File(u"work/a.tlk"_s);
    ImportJob job(Begin(), Request({u"a.tlk"_s}));
    EXPECT_THROW(job.Preview(), JobError);
    EXPECT_THROW(job.Execute(), JobError);
    job.MakePlan();
    EXPECT_THROW(job.MakePlan(), JobError);
    EXPECT_EQ(job.Execute().summary.Count(Outcome::Copied), 1);
    EXPECT_THROW(job.Execute(), JobError);
}

} // namespace Halvern::Test
