// SPDX-License-Identifier: Apache-2.0

#include "Plans.h"

#include "layout/Groups.h"
#include "layout/Placement.h"

#include <gtest/gtest.h>

#include <set>

namespace Halvern::Test {

using Formats::Layout::MoveWhatIsInTheWay;
using Formats::Layout::PlaceFiles;
using Formats::Layout::PlaceGroups;
using Formats::Layout::TreePath;

namespace {

using Targets = std::map<std::string, std::string>;

/// A board with the files that it finds by name, a part that it links, and a set of tiles.
struct Board : Plan
{
    explicit Board(const std::string& target = "/cloud/Demo/board.pro")
        : Plan("/p/board.pro", target)
    {
        Links("/p/board.sch");
        Links("/p/table");
        Links("/p/parts/part.x");
        Links("/p/tex/wood.1001.png");
        Links("/p/tex/wood.1002.png");
        Companion("/p/board.pro", "/p/board.sch");
        Companion("/p/board.pro", "/p/table");
        Set("/p/parts/part.x", {"/p/tex/wood.1001.png", "/p/tex/wood.1002.png"});
    }

    void Place()
    {
        PlaceFiles(linked, {});
        PlaceGroups(linked);
    }

    void Collide(const std::string& source)
    {
        File(source).mustMove = true;
        File(source).existsInTarget = true;
    }

    void Move(const std::set<std::string>& existing = {})
    {
        MoveWhatIsInTheWay(linked,
                           [&](const TreePath& path) { return existing.contains(path.Text()); });
    }
};

} // namespace

TEST(Groups, StayTogetherUnderTheirOwnNames)
{
    Board board;
    board.Place();
    EXPECT_EQ(board.Targets(),
              (Targets{{"/p/board.pro", "/cloud/Demo/board.pro"},
                       {"/p/board.sch", "/cloud/Demo/board.sch"},
                       {"/p/table", "/cloud/Demo/table"},
                       {"/p/parts/part.x", "/cloud/Demo/parts/part.x"},
                       {"/p/tex/wood.1001.png", "/cloud/Demo/tex/wood.1001.png"},
                       {"/p/tex/wood.1002.png", "/cloud/Demo/tex/wood.1002.png"}}));
    for (const auto& file : board.linked.files)
        EXPECT_EQ(file.keepsName, file.source.Name() != "part.x") << file.source.Text();
}

TEST(Groups, CompanionsFollowATopFileThatIsImportedToAnotherFolder)
{
    Board board;
    board.File("/p/board.sch").target = TreePath::Parse("/cloud/Earlier/board.sch");
    board.File("/p/parts/part.x").target = TreePath::Parse("/cloud/Earlier/parts/part.x");
    board.Place();
    EXPECT_EQ(board.Target("/p/board.sch"), "/cloud/Demo/board.sch");
    EXPECT_EQ(board.Target("/p/parts/part.x"), "/cloud/Earlier/parts/part.x");
}

TEST(Groups, CompanionsWithTheNameOfATopFileFollowItsNewName)
{
    Board board("/cloud/Demo/new.pro");
    board.Place();
    EXPECT_EQ(board.Target("/p/board.sch"), "/cloud/Demo/new.sch");
    EXPECT_EQ(board.Target("/p/table"), "/cloud/Demo/table");
}

TEST(Groups, ACompanionThatTheImportItselfPlacedStays)
{
    Board board;
    board.File("/p/board.sch").target = TreePath::Parse("/cloud/Demo/x/board.sch");
    board.File("/p/board.sch").isFixed = true;
    board.Place();
    EXPECT_EQ(board.Target("/p/board.sch"), "/cloud/Demo/x/board.sch");
}

TEST(Groups, ACompanionThatLinksBackToTheTopFileDoesNotMoveIt)
{
    Board board;
    board.Companion("/p/board.sch", "/p/board.pro");
    board.Place();
    EXPECT_EQ(board.Target("/p/board.pro"), "/cloud/Demo/board.pro");
    EXPECT_EQ(board.Target("/p/board.sch"), "/cloud/Demo/board.sch");
}

TEST(Groups, ANewMemberJoinsTheSetWhereItIs)
{
    Board board;
    auto& known = board.File("/p/tex/wood.1002.png");
    known.target = TreePath::Parse("/cloud/Earlier/tex/wood.1002.png");
    known.wasPlaced = true;
    board.Place();
    EXPECT_EQ(board.Target("/p/tex/wood.1001.png"), "/cloud/Earlier/tex/wood.1001.png");
    EXPECT_EQ(board.Target("/p/tex/wood.1002.png"), "/cloud/Earlier/tex/wood.1002.png");
}

TEST(Groups, MembersOfASetFromOtherFoldersStayThere)
{
    Board board;
    board.Links("/p/other/wood.1003.png");
    board.Set("/p/parts/part.x", {"/p/other/wood.1003.png"});
    board.Place();
    EXPECT_EQ(board.Target("/p/other/wood.1003.png"), "/cloud/Demo/other/wood.1003.png");
}

TEST(Groups, AreNotMovedUnlessSomethingIsInTheWay)
{
    Board board;
    board.Place();
    const Targets before = board.Targets();
    board.Move({"/cloud/Demo/board.pro", "/cloud/Demo/board.sch"});
    EXPECT_EQ(board.Targets(), before);
}

TEST(Groups, OneMemberInTheWayMovesTheWholeGroupToANewFolder)
{
    Board board;
    board.Place();
    board.Collide("/p/board.sch");
    board.Move({"/cloud/Demo/board (2)"});
    EXPECT_EQ(board.Target("/p/board.pro"), "/cloud/Demo/board (3)/board.pro");
    EXPECT_EQ(board.Target("/p/board.sch"), "/cloud/Demo/board (3)/board.sch");
    EXPECT_EQ(board.Target("/p/table"), "/cloud/Demo/board (3)/table");
    EXPECT_EQ(board.Target("/p/parts/part.x"), "/cloud/Demo/parts/part.x");
    EXPECT_EQ(board.Target("/p/tex/wood.1001.png"), "/cloud/Demo/tex/wood.1001.png");
}

TEST(Groups, ASetMovesWithoutTheFileThatLinksIt)
{
    Board board;
    board.Place();
    board.Collide("/p/tex/wood.1002.png");
    board.Move();
    EXPECT_EQ(board.Target("/p/tex/wood.1001.png"), "/cloud/Demo/tex/wood.1001 (2)/wood.1001.png");
    EXPECT_EQ(board.Target("/p/tex/wood.1002.png"), "/cloud/Demo/tex/wood.1001 (2)/wood.1002.png");
    EXPECT_EQ(board.Target("/p/parts/part.x"), "/cloud/Demo/parts/part.x");
}

TEST(Groups, TheNewFolderIsOneThatNoOtherFileOfTheImportUses)
{
    Board board;
    board.Links("/p/board (2)/x.png");
    board.Place();
    board.Collide("/p/board.pro");
    board.Move();
    EXPECT_EQ(board.Target("/p/board.pro"), "/cloud/Demo/board (3)/board.pro");
}

TEST(Groups, AFileThatMayGetAnotherNameIsLeftToTheImport)
{
    Board board;
    board.Place();
    board.Collide("/p/parts/part.x");
    board.Move();
    EXPECT_EQ(board.Target("/p/parts/part.x"), "/cloud/Demo/parts/part.x");
}

TEST(Groups, WhatGoesToTheTargetOfAnotherFileMovesWithItsNeighbours)
{
    Board board;
    board.Links("/p/tex/fine/x.png");
    board.Place();
    board.File("/p/tex/wood.1001.png").mustMove = true;
    board.Move();
    EXPECT_EQ(board.Target("/p/tex/wood.1001.png"), "/cloud/Demo/board/tex/wood.1001.png");
    EXPECT_EQ(board.Target("/p/tex/wood.1002.png"), "/cloud/Demo/board/tex/wood.1002.png");
    EXPECT_EQ(board.Target("/p/tex/fine/x.png"), "/cloud/Demo/tex/fine/x.png");
    EXPECT_EQ(board.Target("/p/board.sch"), "/cloud/Demo/board.sch");
}

TEST(Groups, CompanionsOfTheTopFileDoNotLeaveItForAnotherFile)
{
    Board board;
    board.Place();
    board.File("/p/board.sch").mustMove = true;
    board.Move();
    EXPECT_EQ(board.Target("/p/board.sch"), "/cloud/Demo/board.sch");
}

} // namespace Halvern::Test
