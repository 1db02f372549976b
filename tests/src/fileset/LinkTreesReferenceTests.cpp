// SPDX-License-Identifier: Apache-2.0

#include "EagerTrees.h"
#include "LogCapture.h"
#include "RandomSets.h"
#include "fileset/LinkGraph.h"
#include "fileset/LinkWalk.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

constexpr quint32 Seeds = 4000;

QString Head(const QString& linkPath, const QString& refId, qsizetype member, bool closesCycle)
{
    return u"%1|%2|%3%4("_s.arg(linkPath, refId).arg(member).arg(closesCycle ? u"!"_s : QString());
}

QString Text(const EagerNode& node, const FileMappingList& members)
{
    QString text = Head(node.linkPath, node.refId, members.indexOf(node.mapping), node.closesCycle);
    for (const auto& child : node.children)
        text += Text(*child, members);
    return text + u')';
}

QString Text(FileMappingRef& node, const FileMappingList& members)
{
    QString text =
        Head(node.LinkPath(), node.RefId(), members.indexOf(node.Mapping()), node.ClosesCycle());
    for (const FileMappingRef::Pointer& child : node.Children()) {
        EXPECT_EQ(child->Parent(), &node);
        text += Text(*child, members);
    }
    return text + u')';
}

/// The same text, by a walk.
QString Walked(const FileMappingRef::Pointer& root, const FileMappingList& members)
{
    QString text;
    LinkWalk walk;
    const auto enter = [&](const FileMappingRef::Pointer& node) {
        text += Head(node->LinkPath(), node->RefId(), members.indexOf(node->Mapping()),
                     node->ClosesCycle());
        walk.Enter(node);
    };
    for (enter(root); walk.IsOpen();) {
        if (const FileMappingRef::Pointer child = walk.NextChild()) {
            enter(child);
            continue;
        }
        text += u')';
        walk.Leave();
    }
    return text;
}

std::set<const FileMapping*> SetOf(const FileMappingList& files)
{
    std::set<const FileMapping*> set;
    for (const FileMappingPointer& file : files)
        set.insert(file.get());
    return set;
}

class RandomLinkTrees : public ::testing::TestWithParam<bool>
{};

TEST_P(RandomLinkTrees, HaveTheNodesOfTreesBuiltAtOnce)
{
    qsizetype cyclesMet = 0;
    for (quint32 seed = 0; seed < Seeds; ++seed) {
        const FileMappingList members = RandomMembers(seed);
        FileSet set;
        AddAll(set, members);
        const EagerTrees eager(members, GetParam());
        LogCapture log;
        const FileSetImp::NodeList roots = Imp(set).GetFileLinkHierarchy(GetParam());
        ASSERT_EQ(log.Lines(), eager.CycleLines()) << "seed " << seed;
        cyclesMet += eager.CycleLines().size();
        ASSERT_EQ(roots.size(), qsizetype(eager.Roots().size())) << "seed " << seed;
        for (qsizetype i = 0; i < roots.size(); ++i)
            ASSERT_EQ(Text(*roots[i], members), Text(*eager.Roots()[size_t(i)], members))
                << "seed " << seed;
    }
    EXPECT_GT(cyclesMet, 1000) << "the random sets hardly hold cycles";
}

TEST_P(RandomLinkTrees, AreWalkedNodeForNodeAsOftenAsOneLikes)
{
    for (quint32 seed = 0; seed < Seeds; seed += 4) {
        const FileMappingList members = RandomMembers(seed);
        FileSet set;
        AddAll(set, members);
        const EagerTrees eager(members, GetParam());
        const FileSetImp::NodeList roots = Imp(set).GetFileLinkHierarchy(GetParam());
        for (qsizetype i = 0; i < roots.size(); ++i)
            for (int round = 0; round < 2; ++round)
                ASSERT_EQ(Walked(roots[i], members), Text(*eager.Roots()[size_t(i)], members))
                    << "seed " << seed;
    }
}

TEST_P(RandomLinkTrees, ShowTheLinksOfTheirMakingWhateverChangesLater)
{
    for (quint32 seed = 0; seed < Seeds; seed += 10) {
        const FileMappingList members = RandomMembers(seed);
        FileSet set;
        AddAll(set, members);
        const EagerTrees eager(members, GetParam());
        const FileSetImp::NodeList roots = Imp(set).GetFileLinkHierarchy(GetParam());
        for (const FileMappingPointer& member : members) {
            member->ClearSourceFileLinks();
            member->ClearTargetFileLinks();
            member->SetTargetFile(u"D:/elsewhere"_s, true);
            set.RemoveFile(member->GetSourceFile(), false, false);
            member->SetSourceFile(u"D:/elsewhere"_s);
        }
        for (qsizetype i = 0; i < roots.size(); ++i)
            ASSERT_EQ(Text(*roots[i], members), Text(*eager.Roots()[size_t(i)], members))
                << "seed " << seed;
    }
}

TEST_P(RandomLinkTrees, AnswerParentsInWalkingOrderWithDuplicates)
{
    for (quint32 seed = 0; seed < Seeds; seed += 4) {
        const FileMappingList members = RandomMembers(seed);
        FileSet set;
        AddAll(set, members);
        const EagerTrees eager(members, GetParam());
        const FileSetImp::NodeList roots = Imp(set).GetFileLinkHierarchy(GetParam());
        for (const FileMappingPointer& member : members)
            ASSERT_EQ(PositionsIn(members, FileSetImp::GetParents(member, roots)),
                      PositionsIn(members, eager.Parents(member.get())))
                << "seed " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(Modes, RandomLinkTrees, ::testing::Bool(),
                         [](const auto& mode) { return mode.param ? "Source" : "Target"; });

std::set<const FileMapping*> Parents(const LinkGraph& graph, const FileMapping* mapping)
{
    const QList<const FileMapping*> parents = graph.ParentsOf(mapping);
    const std::set<const FileMapping*> set(parents.begin(), parents.end());
    EXPECT_EQ(set.size(), size_t(parents.size())) << "a parent stands twice in the answer";
    return set;
}

FileMappingList Children(const LinkGraph& graph, const FileMapping* mapping)
{
    FileMappingList children;
    for (const LinkGraph::Edge& edge : graph.LinksOf(mapping))
        if (!children.contains(edge.target))
            children.append(edge.target);
    return children;
}

TEST(RandomLinkGraphs, NameTheParentsAndChildrenThatTheSourceTreesShow)
{
    for (quint32 seed = 0; seed < Seeds; ++seed) {
        const FileMappingList members = RandomMembers(seed);
        const EagerTrees eager(members, true);
        const LinkGraph graph(members, PathSide::Source);
        for (const FileMappingPointer& member : members) {
            ASSERT_EQ(Parents(graph, member.get()), SetOf(eager.Parents(member.get())))
                << "seed " << seed;
            ASSERT_EQ(PositionsIn(members, Children(graph, member.get())),
                      PositionsIn(members, eager.Children(member.get())))
                << "seed " << seed;
        }
    }
}

TEST(RandomLinkGraphs, LeaveOutNoParentThatTheTargetTreesShow)
{
    for (quint32 seed = 0; seed < Seeds; ++seed) {
        const FileMappingList members = RandomMembers(seed);
        const EagerTrees eager(members, false);
        const LinkGraph graph(members, PathSide::Target);
        for (const FileMappingPointer& member : members) {
            const std::set<const FileMapping*> parents = Parents(graph, member.get());
            for (const FileMapping* parent : SetOf(eager.Parents(member.get())))
                ASSERT_EQ(parents.count(parent), 1u) << "seed " << seed;
        }
    }
}

QStringList CyclesAndRemovals(const FileMappingList& members, const FileMappingList& removal)
{
    QStringList lines = EagerTrees(members, true).CycleLines();
    for (const FileMappingPointer& file : removal)
        lines.append(u"DEBUG Removing file from selection set: %1"_s.arg(file->GetSourceFile()));
    return lines;
}

TEST(RandomRemovals, TakeOutWhatWalkingAllTreesTakesOut)
{
    for (quint32 seed = 0; seed < Seeds; ++seed) {
        const FileMappingList members = RandomMembers(seed);
        const QString path = members[qsizetype(seed / 7) % members.size()]->GetSourceFile();
        const bool keepSelected = seed % 2 == 0;
        const FileMappingList removal = EagerRemoval(members, path, true, keepSelected);
        const QStringList lines = CyclesAndRemovals(members, removal);
        FileSet set;
        AddAll(set, members);
        LogCapture log;
        ASSERT_TRUE(set.RemoveFile(path, true, keepSelected));
        ASSERT_EQ(log.Lines(), lines) << "seed " << seed;
        FileMappingList rest = members;
        for (const FileMappingPointer& file : removal)
            rest.removeOne(file);
        ASSERT_EQ(PositionsIn(members, set.GetFiles()), PositionsIn(members, rest))
            << "seed " << seed;
        for (const FileMappingPointer& file : members)
            ASSERT_EQ(file->GetFileSet(), removal.contains(file) ? nullptr : &set);
    }
}

TEST(RandomDrops, TakeOutWhatWalkingAllTreesTakesOut)
{
    for (quint32 seed = 0; seed < Seeds; ++seed) {
        const FileMappingList members = RandomMembers(seed);
        FileMappingList given = members.mid(0, 1 + qsizetype(seed / 3) % members.size());
        const bool keepSelected = seed % 2 == 0;
        const FileMappingList removal = EagerDrop(members, given, keepSelected);
        FileSet set;
        AddAll(set, members);
        ASSERT_TRUE(Imp(set).DropFileLinks(given, keepSelected));
        FileMappingList rest = members;
        for (const FileMappingPointer& file : removal)
            rest.removeOne(file);
        ASSERT_EQ(PositionsIn(members, set.GetFiles()), PositionsIn(members, rest))
            << "seed " << seed;
        for (const FileMappingPointer& file : members)
            ASSERT_EQ(file->GetFileSet(), removal.contains(file) ? nullptr : &set);
    }
}

} // namespace
