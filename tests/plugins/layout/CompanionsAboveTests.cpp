// SPDX-License-Identifier: Apache-2.0

// Companions that a file finds further up, as an OpenSCAD model does those of files that it
// includes.

#include "Plans.h"

#include "layout/Groups.h"
#include "layout/Placement.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

using Formats::Layout::MoveWhatIsInTheWay;
using Formats::Layout::PlaceFiles;
using Formats::Layout::PlaceGroups;
using Formats::Layout::RaiseBase;
using Formats::Layout::TreePath;

namespace {

using Targets = std::map<std::string, std::string>;

/// A model with an included file, and a logo one folder up.
struct Model : Plan
{
    explicit Model(const std::string& target = "/cloud/Demo/case.scad")
        : Plan("/p/shed/models/case.scad", target)
    {
        Links("/p/shed/models/lib/b.scad");
        Links("/p/shed/logo.stl");
        Companion("/p/shed/models/case.scad", "/p/shed/logo.stl");
    }

    void Place()
    {
        RaiseBase(linked);
        PlaceFiles(linked, {});
        PlaceGroups(linked);
    }
};

const Targets Placed{{"/p/shed/models/case.scad", "/cloud/Demo/models/case.scad"},
                     {"/p/shed/models/lib/b.scad", "/cloud/Demo/models/lib/b.scad"},
                     {"/p/shed/logo.stl", "/cloud/Demo/logo.stl"}};

} // namespace

TEST(CompanionsAbove, TheTopFileGoesDownByAsManyFolders)
{
    Model model;
    model.Place();
    EXPECT_EQ(model.Targets(), Placed);
}

TEST(CompanionsAbove, AskedOnceMoreTheLayoutKeepsItsPlaces)
{
    Model model;
    model.Place();
    model.Place();
    EXPECT_EQ(model.Targets(), Placed);
}

TEST(CompanionsAbove, TheFurthestOneCounts)
{
    Model model;
    model.Links("/p/tex/wood.png");
    model.Links("/p/shed/models/own.stl");
    model.Companion("/p/shed/models/case.scad", "/p/tex/wood.png");
    model.Companion("/p/shed/models/case.scad", "/p/shed/models/own.stl");
    model.Place();
    EXPECT_EQ(model.Targets(),
              (Targets{{"/p/shed/models/case.scad", "/cloud/Demo/shed/models/case.scad"},
                       {"/p/shed/models/lib/b.scad", "/cloud/Demo/shed/models/lib/b.scad"},
                       {"/p/shed/models/own.stl", "/cloud/Demo/shed/models/own.stl"},
                       {"/p/shed/logo.stl", "/cloud/Demo/shed/logo.stl"},
                       {"/p/tex/wood.png", "/cloud/Demo/tex/wood.png"}}));
}

TEST(CompanionsAbove, OtherPlacesDoNotMixWithTheFoldersInBetween)
{
    Model model;
    model.Links("/usr/share/models/oak.png");
    model.Links("/p/lib/c.scad");
    model.Place();
    EXPECT_EQ(model.Target("/usr/share/models/oak.png"), "/cloud/Demo/models (2)/oak.png");
    EXPECT_EQ(model.Target("/p/lib/c.scad"), "/cloud/Demo/lib/c.scad");
}

TEST(CompanionsAbove, OneThatTheImportItselfPlacedMovesNothing)
{
    Model model;
    model.File("/p/shed/logo.stl").target = TreePath::Parse("/cloud/Demo/logo.stl");
    model.File("/p/shed/logo.stl").isFixed = true;
    model.Place();
    EXPECT_EQ(model.Target("/p/shed/models/case.scad"), "/cloud/Demo/case.scad");
    EXPECT_EQ(model.Target("/p/shed/logo.stl"), "/cloud/Demo/logo.stl");
}

TEST(CompanionsAbove, OneThatAnEarlierImportPutElsewhereComesAlong)
{
    Model model;
    model.File("/p/shed/logo.stl").target = TreePath::Parse("/cloud/Other/logo.stl");
    model.File("/p/shed/logo.stl").wasPlaced = true;
    model.Place();
    EXPECT_EQ(model.Targets(), Placed);
}

TEST(CompanionsAbove, OneOnAnotherDriveStaysWhereItIsPut)
{
    Plan plan("D:/models/case.scad", "C:/cloud/Demo/case.scad");
    plan.Links("E:/logo.stl");
    plan.Companion("D:/models/case.scad", "E:/logo.stl");
    RaiseBase(plan.linked);
    PlaceFiles(plan.linked, {});
    PlaceGroups(plan.linked);
    EXPECT_EQ(plan.Target("D:/models/case.scad"), "C:/cloud/Demo/case.scad");
    EXPECT_EQ(plan.Target("E:/logo.stl"), "C:/cloud/Demo/E/logo.stl");
}

TEST(CompanionsAbove, OfALinkedFileTheyStayAboveIt)
{
    Plan plan("/p/all.scad", "/cloud/Demo/all.scad");
    plan.Links("/p/models/case.scad");
    plan.Links("/p/logo.stl");
    plan.Companion("/p/models/case.scad", "/p/logo.stl");
    RaiseBase(plan.linked);
    PlaceFiles(plan.linked, {});
    PlaceGroups(plan.linked);
    EXPECT_EQ(plan.Targets(), (Targets{{"/p/all.scad", "/cloud/Demo/all.scad"},
                                       {"/p/models/case.scad", "/cloud/Demo/models/case.scad"},
                                       {"/p/logo.stl", "/cloud/Demo/logo.stl"}}));
}

TEST(CompanionsAbove, WhatIsInTheWayMovesTheGroupAsAWhole)
{
    Model model;
    model.Place();
    model.File("/p/shed/logo.stl").mustMove = true;
    model.File("/p/shed/logo.stl").existsInTarget = true;
    MoveWhatIsInTheWay(model.linked, [](const TreePath&) { return false; });
    EXPECT_EQ(model.Target("/p/shed/models/case.scad"), "/cloud/Demo/case (2)/models/case.scad");
    EXPECT_EQ(model.Target("/p/shed/logo.stl"), "/cloud/Demo/case (2)/logo.stl");
    const Targets moved = model.Targets();
    model.Place();
    EXPECT_EQ(model.Targets(), moved);
}

} // namespace Halvern::Test
