// SPDX-License-Identifier: Apache-2.0

#include "LogCapture.h"
#include "Mappings.h"
#include "SmallStack.h"
#include "fileset/LinkGraph.h"
#include "fileset/LinkWalk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <memory>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

constexpr int LadderLevels = 40;
#ifdef CORSYNC_SANITIZED
constexpr int ChainLength = 20'000;
#else
constexpr int ChainLength = 100'000;
#endif

/// Counts the processor's time, whatever else the machine does.
class Stopwatch
{
public:
    double Seconds() const { return double(std::clock() - m_start) / CLOCKS_PER_SEC; }

private:
    std::clock_t m_start = std::clock();
};

/// Generous for the slowest machine and a sanitizer; walking 2^40 paths takes centuries.
constexpr double NoTime = 30;

QString Rung(QChar side, int level)
{
    return u"D:/ladder/%1%2"_s.arg(side).arg(level);
}

/// Each file of a level links both files of the next: 2^40 paths lead to the last.
void AddLadder(FileSet& set)
{
    AddTo(set, u"D:/ladder/top"_s, {Rung(u'l', 0), Rung(u'r', 0)}, FileMapping::Selected);
    for (int level = 0; level < LadderLevels; ++level)
        for (const QChar side : {u'l', u'r'}) {
            QStringList next;
            if (level + 1 < LadderLevels)
                next = {Rung(u'l', level + 1), Rung(u'r', level + 1)};
            AddTo(set, Rung(side, level), next);
        }
}

void WalkWithMemo(FileMappingRef& node, QSet<const FileMapping*>& visited)
{
    if (visited.contains(node.Mapping().get()))
        return;
    visited.insert(node.Mapping().get());
    for (const FileMappingRef::Pointer& child : node.Children())
        WalkWithMemo(*child, visited);
}

class DiamondLadder : public ::testing::Test
{
protected:
    DiamondLadder() { AddLadder(set); }
    ~DiamondLadder() override { EXPECT_LT(timer.Seconds(), NoTime); }

    FileSet set;
    Stopwatch timer;
};

TEST_F(DiamondLadder, GrowsWhereSomebodyLooks)
{
    const FileSetImp::NodeList roots = Imp(set).GetFileLinkHierarchy(true);
    ASSERT_EQ(roots.size(), 1);
    FileMappingRef* node = roots[0].get();
    for (int level = 0; level < LadderLevels; ++level) {
        ASSERT_EQ(node->Children().size(), 2);
        node = node->Children()[level % 2].get();
        EXPECT_EQ(node->SourceFile(), Rung(level % 2 == 0 ? u'l' : u'r', level));
    }
    EXPECT_TRUE(node->Children().isEmpty());
    EXPECT_EQ(node->Root(), roots[0].get());
}

TEST_F(DiamondLadder, IsWalkedInNoTimeByWhoRemembersWhereHeWas)
{
    const FileSetImp::NodeList roots = Imp(set).GetFileLinkHierarchy(true);
    QSet<const FileMapping*> visited;
    WalkWithMemo(*roots[0], visited);
    EXPECT_EQ(visited.size(), 1 + 2 * LadderLevels);
}

TEST_F(DiamondLadder, LeavesTheSetWithItsTop)
{
    EXPECT_TRUE(set.RemoveFile(u"D:/ladder/top"_s, true, false));
    EXPECT_TRUE(set.IsEmpty());
}

TEST_F(DiamondLadder, LosesOnlyThePartThatNothingElseLinks)
{
    EXPECT_TRUE(set.RemoveFile(Rung(u'l', 10), true, false));
    EXPECT_EQ(set.GetCount(), 2 * LadderLevels);
    EXPECT_TRUE(set.RemoveFile(Rung(u'r', 10), true, false));
    EXPECT_EQ(set.GetCount(), 1 + 2 * 10);
}

TEST_F(DiamondLadder, LeavesTheSetWhenTheLinksOfItsTopAreDropped)
{
    EXPECT_TRUE(Imp(set).DropFileLinks({set.GetFiles().first()}, true));
    EXPECT_EQ(SourcesOf(set.GetFiles()), QStringList{u"D:/ladder/top"_s});
}

TEST_F(DiamondLadder, LeavesTheSetWhenAllLinksAreSkipped)
{
    EXPECT_TRUE(set.SkipFileLinksInAllFiles());
    EXPECT_EQ(SourcesOf(set.GetFiles()), QStringList{u"D:/ladder/top"_s});
}

TEST_F(DiamondLadder, IsNoReasonToSearchForCycles)
{
    LogCapture log;
    Imp(set).GetFileLinkHierarchy(true);
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(DiamondLadder, ThatLeadsBackToItsTopReportsCyclesUpToALimit)
{
    set.GetFiles().last()->SetSourceFileLinks(Links({u"top"_s}));
    LogCapture log;
    const FileSetImp::NodeList roots = Imp(set).GetFileLinkHierarchy(true);
    const QStringList lines = log.Lines();
    ASSERT_GT(lines.size(), 10'000);
    EXPECT_LE(lines.size(), 100'001);
    EXPECT_EQ(lines.first(), u"INFO Circular reference detected. File link D:/ladder/top in "
                             u"D:/ladder/r39 leads to circular reference."_s);
    EXPECT_EQ(lines.last(), u"INFO Too many circular references. Further ones are not listed."_s);
    EXPECT_EQ(log.Count(lines.last()), 1);
    FileMappingRef* node = roots[0].get();
    for (int level = 0; level < LadderLevels; ++level)
        node = node->Children().last().get();
    ASSERT_EQ(node->Children().size(), 1);
    EXPECT_TRUE(node->Children().first()->ClosesCycle());
}

QString ChainFile(int number)
{
    return u"D:/chain/%1.prt"_s.arg(number);
}

void AddChain(FileSet& set)
{
    for (int i = 0; i < ChainLength; ++i)
        AddTo(set, ChainFile(i), {u"%1.prt"_s.arg(i + 1)},
              i == 0 ? FileMapping::Selected : FileMapping::NoFlag);
}

class LongChain : public ::testing::Test
{
protected:
    LongChain() { AddChain(set); }
    ~LongChain() override { EXPECT_LT(timer.Seconds(), NoTime); }

    FileSet set;
    Stopwatch timer;
};

TEST_F(LongChain, IsWalkedToItsEndAndDestroyedWithoutADeepStack)
{
    OnASmallStack([this] {
        FileSetImp::NodeList roots = Imp(set).GetFileLinkHierarchy(true);
        int length = 1;
        for (FileMappingRef* node = roots[0].get(); !node->Children().isEmpty(); ++length)
            node = node->Children()[0].get();
        EXPECT_EQ(length, ChainLength);
        roots.clear();
    });
}

TEST_F(LongChain, OutlivesItsRootWhereSomebodyHoldsANode)
{
    OnASmallStack([this] {
        FileSetImp::NodeList roots = Imp(set).GetFileLinkHierarchy(true);
        FileSetImp::NodeList held;
        FileMappingRef* node = roots[0].get();
        for (int i = 0; i < ChainLength - 1; ++i) {
            if (i % 1000 == 999)
                held.append(node->Children()[0]);
            node = node->Children()[0].get();
        }
        roots.clear();
        EXPECT_EQ(held.first()->SourceFile(), ChainFile(1000));
        EXPECT_EQ(held.first()->Children().size(), 1);
        EXPECT_EQ(held.last()->SourceFile(), ChainFile(ChainLength - 1000));
    });
}

TEST_F(LongChain, LeavesTheSetWithItsFirstFile)
{
    OnASmallStack([this] { EXPECT_TRUE(set.RemoveFile(ChainFile(0), true, false)); });
    EXPECT_TRUE(set.IsEmpty());
}

TEST_F(LongChain, LeavesTheSetWhenTheLinksOfItsFirstFileAreDropped)
{
    OnASmallStack([this] { EXPECT_TRUE(Imp(set).DropFileLinks({set.GetFiles().first()}, true)); });
    EXPECT_EQ(SourcesOf(set.GetFiles()), QStringList{ChainFile(0)});
}

TEST_F(LongChain, AnswersParentsWithoutADeepStack)
{
    OnASmallStack([this] {
        const FileMappingList parents =
            FileSetImp::GetParents(set.GetFiles().last(), Imp(set).GetFileLinkHierarchy(true));
        EXPECT_EQ(SourcesOf(parents), QStringList{ChainFile(ChainLength - 2)});
    });
}

TEST_F(LongChain, ThatClosesIntoACycleReportsItOnce)
{
    // As long as the search for cycles goes.
    set.RemoveFile(ChainFile(ChainLength - 1), false, false);
    set.GetFiles().last()->SetSourceFileLinks(Links({u"0.prt"_s}));
    LogCapture log;
    OnASmallStack([this] { Imp(set).GetFileLinkHierarchy(true); });
    EXPECT_EQ(log.Lines(),
              QStringList{u"INFO Circular reference detected. File link D:/chain/0.prt in "
                          u"D:/chain/%1.prt leads to circular reference."_s.arg(ChainLength - 2)});
}

TEST_F(LongChain, OfTargetsIsWalkedAndLeftNodeByNode)
{
    for (const FileMappingPointer& file : set.GetFiles()) {
        file->SetTargetFile(u"E:"_s + file->GetSourceFile().mid(2), true);
        file->SetTargetFileLinks(file->GetSourceFileLinks());
    }
    OnASmallStack([this] {
        const FileSetImp::NodeList roots = Imp(set).GetFileLinkHierarchy(false);
        LinkWalk walk;
        int deepest = 0;
        for (walk.Enter(roots[0]); walk.IsOpen();) {
            deepest = std::max(deepest, walk.Depth());
            if (const LinkWalk::NodePointer child = walk.NextChild())
                walk.Enter(child);
            else
                walk.Leave();
        }
        EXPECT_EQ(deepest, ChainLength);
    });
}

TEST_F(LongChain, KnowsItsRootAtEveryDepthInNoTime)
{
    OnASmallStack([this] {
        const FileSetImp::NodeList roots = Imp(set).GetFileLinkHierarchy(true);
        roots[0]->SetTargetBaseFolder(u"/cloud"_s);
        int known = 0;
        for (FileMappingRef* node = roots[0].get(); !node->Children().isEmpty();
             node = node->Children()[0].get())
            known += node->GetRoot() == roots[0].get() &&
                     node->ResolveTargetPath(u"a"_s) == roots[0]->ResolveTargetPath(u"a"_s);
        EXPECT_EQ(known, ChainLength - 1);
    });
}

TEST_F(LongChain, ChangesASourceFileAndTheLinkThatNamesIt)
{
    OnASmallStack([this] {
        FileMappingRef node(QString(), QString(), set.GetFiles().last());
        EXPECT_TRUE(node.ChangeSourceFile(
            reinterpret_cast<const Halvern::SyncPlugin::WideChar*>(u"D:/other.prt")));
    });
    EXPECT_EQ(set.GetFiles()[ChainLength - 2]->GetSourceFileLinks().first().Path,
              u"D:/other.prt"_s);
}

TEST_F(LongChain, WhoseFilesAreAllSelectedIsLeftWhole)
{
    for (const FileMappingPointer& file : set.GetFiles())
        file->SetFlag(FileMapping::Selected, true);
    OnASmallStack([this] {
        FileSetImp::NodeList roots = Imp(set).GetFileLinkHierarchy(true);
        EXPECT_EQ(roots.size(), ChainLength);
        EXPECT_TRUE(set.RemoveFile(ChainFile(0), true, true));
    });
    EXPECT_EQ(set.GetCount(), ChainLength);
}

constexpr int HolderCount = 20'000;

/// A top file links thousands of files, which all link one.
class SharedByThousands : public ::testing::Test
{
protected:
    SharedByThousands()
    {
        QStringList holders;
        for (int i = 0; i < HolderCount; ++i)
            holders.append(u"h%1"_s.arg(i));
        AddTo(set, u"D:/s/top"_s, holders, FileMapping::Selected);
        for (const QString& holder : std::as_const(holders))
            AddTo(set, u"D:/s/"_s + holder, {u"bolt"_s});
        AddTo(set, u"D:/s/bolt"_s);
    }
    ~SharedByThousands() override { EXPECT_LT(timer.Seconds(), NoTime); }

    FileSet set;
    Stopwatch timer;
};

TEST_F(SharedByThousands, LeavesTheSetWithTheirTop)
{
    EXPECT_TRUE(set.RemoveFile(u"D:/s/top"_s, true, false));
    EXPECT_TRUE(set.IsEmpty());
}

TEST_F(SharedByThousands, StaysWhileOneOfThemStays)
{
    const FileMappingList allButOne = set.GetFiles().mid(1, HolderCount - 1);
    EXPECT_TRUE(Imp(set).DropFileLinks(allButOne, true));
    EXPECT_EQ(set.GetCount(), HolderCount + 2);
    EXPECT_TRUE(allButOne.last()->GetSourceFileLinks().isEmpty());
}

/// Selected files that all link each other, themselves included.
void AddClique(FileSet& set, int count)
{
    QStringList all;
    for (int i = 0; i < count; ++i)
        all.append(u"c%1"_s.arg(i));
    for (int i = 0; i < count; ++i)
        AddTo(set, u"D:/clique/c%1"_s.arg(i), all, FileMapping::Selected);
}

TEST(FilesThatAllLinkEachOther, ReportTheirCyclesUpToALimit)
{
    FileSet set;
    AddClique(set, 100);
    const Stopwatch timer;
    LogCapture log;
    Imp(set).GetFileLinkHierarchy(true);
    const QStringList lines = log.Lines();
    ASSERT_EQ(lines.size(), 100'001);
    EXPECT_EQ(lines.first(), u"INFO Circular reference detected. File link D:/clique/c0 in "
                             u"D:/clique/c0 leads to circular reference."_s);
    EXPECT_EQ(lines.last(), u"INFO Too many circular references. Further ones are not listed."_s);
    EXPECT_EQ(log.Count(lines.last()), 1);
    EXPECT_LT(timer.Seconds(), NoTime);
}

TEST(FilesThatAllLinkEachOther, AreNotSearchedWhenNobodyReadsTheLines)
{
    FileSet set;
    AddClique(set, 100);
    LogCapture log;
    log.SetLevel(u"CorsyncFileLink"_s, log4cplus::WARN_LOG_LEVEL);
    const FileSetImp::NodeList roots = Imp(set).GetFileLinkHierarchy(true);
    EXPECT_EQ(log.Lines(), QStringList());
    ASSERT_EQ(roots[0]->Children().size(), 100);
    EXPECT_TRUE(roots[0]->Children()[0]->ClosesCycle());
    EXPECT_FALSE(roots[0]->Children()[1]->ClosesCycle());
    EXPECT_TRUE(roots[0]->Children()[1]->Children()[0]->ClosesCycle());
}

} // namespace
