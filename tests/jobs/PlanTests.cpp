// SPDX-License-Identifier: Apache-2.0

#include "JobsFixture.h"

#include "corsync/FileLinks.h"
#include "corsync/JobError.h"

#include <algorithm>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

class PlanOfAnImport : public JobsFixture
{
protected:
    const PlannedFile& FileOf(const Plan& plan, const QString& name) const
    {
        const QString source = tree.Path(u"work/"_s + name);
        const auto found =
            std::find_if(plan.files.begin(), plan.files.end(),
                         [&](const PlannedFile& file) { return file.source == source; });
        EXPECT_NE(found, plan.files.end()) << name.toStdString();
        static const PlannedFile none;
        return found == plan.files.end() ? none : *found;
    }
};

} // namespace

TEST_F(PlanOfAnImport, TellsForEachFileWhereItGoesWhyItComesAndHowBigItIs)
{
    TakeGardenShed();
    ImportJob job(Begin(), Request({u"shed/scene/Shed.gltf"_s}, u"Demo"_s));
    const Plan& plan = job.MakePlan();
    EXPECT_TRUE(plan.complete);
    ASSERT_EQ(plan.files.size(), 11);
    const PlannedFile& scene = plan.files.first();
    EXPECT_EQ(scene.origin, Origin::Selected);
    EXPECT_EQ(scene.target, tree.Path(u"cloud/Demo/Shed.gltf"_s));
    EXPECT_EQ(scene.bytes, tree.Read(u"work/shed/scene/Shed.gltf"_s).size());
    const PlannedFile& planks = FileOf(plan, u"shed/textures/Planks.png"_s);
    EXPECT_EQ(planks.origin, Origin::Linked);
    EXPECT_EQ(planks.outcome, Outcome::Copied);
    EXPECT_EQ(planks.linkedFrom, (QList<LinkPlace>{{scene.source, u"../textures/Planks.png"_s},
                                                   {scene.source, u"../textures/Planks.png"_s}}));
    const PlannedFile& poster = FileOf(plan, u"shed/textures/Poster (spring).png"_s);
    EXPECT_EQ(poster.outcome, Outcome::Missing);
    EXPECT_EQ(poster.bytes, 0);
}

TEST_F(PlanOfAnImport, KnowsTheLinksThatTheCopiesWillHold)
{
    TakeGardenShed();
    ImportJob job(Begin(), Request({u"shed/scene"_s, u"shed/Lantern.glb"_s}, u"Demo"_s));
    const Plan plan = job.MakePlan();
    job.Execute();
    int links = 0;
    for (const PlannedFile& file : plan.files) {
        if (file.outcome != Outcome::Copied)
            continue;
        const LinksOfFile copy = ReadLinks(*session, {file.target}).first();
        ASSERT_EQ(copy.links.size(), file.links.size()) << file.target.toStdString();
        for (qsizetype i = 0; i < file.links.size(); ++i, ++links) {
            const PlannedLink& link = file.links[i];
            const bool isMissing = link.state == LinkState::Missing;
            EXPECT_EQ(copy.links[i].text, isMissing ? link.text : link.newText);
            EXPECT_EQ(link.newFile, isMissing ? QString() : copy.links[i].file);
            EXPECT_EQ(file.links[i].state, copy.links[i].state);
        }
    }
    EXPECT_EQ(links, 15);
}

TEST_F(PlanOfAnImport, TellsLinksOfEachKindWithTheTextsBeforeAndAfter)
{
    tree.File(u"work/a/top.tlk"_s, "link 1 ../lib/b.tlk\nlink 2 gone.tlk\nlink 3 https://x.org/y\n")
        .File(u"work/lib/b.tlk"_s, "b\n");
    ImportJob job(Begin(), Request({u"a/top.tlk"_s}));
    const QList<PlannedLink> links = job.MakePlan().files.first().links;
    ASSERT_EQ(links.size(), 3);
    EXPECT_EQ(links[0].text, u"../lib/b.tlk"_s);
    EXPECT_EQ(links[0].file, tree.Path(u"work/lib/b.tlk"_s));
    EXPECT_EQ(links[0].state, LinkState::Found);
    EXPECT_EQ(links[0].newFile, tree.Path(u"cloud/lib/b.tlk"_s));
    EXPECT_EQ(links[0].newText, u"lib/b.tlk"_s);
    EXPECT_EQ(links[1].state, LinkState::Missing);
    EXPECT_EQ(links[1].file, tree.Path(u"work/a/gone.tlk"_s));
    EXPECT_EQ(links[2].state, LinkState::Url);
    EXPECT_EQ(links[2].newText, u"https://x.org/y"_s);
    EXPECT_EQ(links[2].newFile, QString());
}

TEST_F(PlanOfAnImport, TellsAFileThatIsFoundByItsNameFromOneThatIsLinked)
{
    tree.File(u"work/board/b.kicad_pro"_s, "{\"board\":{},\"meta\":{\"version\":1}}")
        .File(u"work/board/b.kicad_sch"_s, "(kicad_sch (version 20211123) (generator eeschema))\n");
    ImportJob job(Begin(), Request({u"board/b.kicad_pro"_s}));
    const Plan& plan = job.MakePlan();
    EXPECT_EQ(FileOf(plan, u"board/b.kicad_sch"_s).origin, Origin::Companion);
    EXPECT_EQ(FileOf(plan, u"board/b.kicad_pro"_s).origin, Origin::Selected);
}

TEST_F(PlanOfAnImport, HoldsConflictsWithBothSides)
{
    tree.File(u"work/p/x.tlk"_s).File(u"work/q/x.tlk"_s).File(u"work/y.tlk"_s);
    tree.File(u"cloud/y.tlk"_s);
    ImportJob job(Begin(), Request({u"p/x.tlk"_s, u"q/x.tlk"_s, u"y.tlk"_s}));
    const QList<Conflict> conflicts = job.MakePlan().conflicts;
    ASSERT_EQ(conflicts.size(), 2);
    EXPECT_EQ(conflicts[0].kind, ConflictKind::SameTarget);
    EXPECT_EQ(conflicts[0].source, tree.Path(u"work/q/x.tlk"_s));
    EXPECT_EQ(conflicts[0].other, tree.Path(u"work/p/x.tlk"_s));
    EXPECT_EQ(conflicts[1].kind, ConflictKind::TargetTaken);
    EXPECT_EQ(conflicts[1].target, tree.Path(u"cloud/y.tlk"_s));
    const FileTree::Snapshot before = tree.Contents(u"cloud"_s);
    const JobResult result = job.Execute();
    EXPECT_EQ(result.summary.conflicts, 2);
    EXPECT_FALSE(result.summary.executed);
    EXPECT_TRUE(result.files.isEmpty());
    EXPECT_EQ(tree.Contents(u"cloud"_s), before);
}

TEST_F(PlanOfAnImport, HoldsProblemsWithTheFileThatHasThem)
{
    tree.File(u"work/a.tlk"_s, "fail\n");
    ImportJob job(Begin(), Request({u"a.tlk"_s}));
    const PlannedFile file = job.MakePlan().files.first();
    ASSERT_EQ(file.problems.size(), 2);
    EXPECT_EQ(file.problems[0].kind, FileLink::ProblemKind::PluginMessage);
    EXPECT_EQ(file.problems[0].text, u"test resolver: told to fail"_s);
    EXPECT_EQ(file.problems[0].plugin, TestResolverModule());
    EXPECT_EQ(file.problems[1].kind, FileLink::ProblemKind::LinksNotRead);
    EXPECT_EQ(file.outcome, Outcome::Copied);
}

TEST_F(PlanOfAnImport, LeavesNothingOnTheDiskInASessionForPlans)
{
    TakeGardenShed();
    const FileTree::Snapshot before = tree.Contents();
    {
        ImportJob job(Begin(SessionUse::PlanOnly), Request({u"shed"_s}));
        EXPECT_TRUE(job.MakePlan().complete);
        EXPECT_THROW(job.Execute(), JobError);
    }
    session.reset();
    EXPECT_EQ(tree.Contents(), before);
}

TEST_F(PlanOfAnImport, WritesNothingToTheDatabaseUntilItIsExecuted)
{
    TakeGardenShed();
    Begin();
    const QByteArray database = tree.Read(u"sync.db"_s);
    const QByteArray log = tree.Read(u"sync.db-wal"_s);
    {
        ImportJob job(*session, Request({u"shed"_s}));
        job.MakePlan();
    }
    EXPECT_EQ(tree.Read(u"sync.db"_s), database);
    EXPECT_EQ(tree.Read(u"sync.db-wal"_s), log);
    EXPECT_EQ(tree.Contents(u"cloud"_s), FileTree::Snapshot());
}

TEST_F(PlanOfAnImport, MayBeKeptLongerThanItsJob)
{
    TakeGardenShed();
    Plan kept;
    {
        ImportJob job(Begin(), Request({u"shed/scene/Shed.gltf"_s}));
        kept = job.MakePlan();
    }
    session.reset();
    EXPECT_EQ(kept.files.size(), 11);
    EXPECT_EQ(kept.files.first().links.size(), 12);
}

} // namespace Halvern::Test
