// SPDX-License-Identifier: Apache-2.0

#include "ProgressLine.h"

#include "FileTree.h"

#include <gtest/gtest.h>

using namespace Halvern::Cli;

TEST(Progress, ShowsPhaseCountTotalAndBytes)
{
    EXPECT_EQ(RenderProgress(u"Copying"_qs, 12, 340, 1200000, 80),
              u"Copying 12/340 files, 1.2 MB"_qs);
}

TEST(Progress, LeavesOutWhatIsNotKnown)
{
    EXPECT_EQ(RenderProgress(u"Reading links"_qs, 0, 0, 0, 80), u"Reading links"_qs);
    EXPECT_EQ(RenderProgress(u"Rewriting links"_qs, 3, 0, 0, 80), u"Rewriting links 3 files"_qs);
    EXPECT_EQ(RenderProgress(u"Copying"_qs, 0, 2, 0, 80), u"Copying 0/2 files"_qs);
}

TEST(Progress, IsNeverWiderThanTheTerminal)
{
    EXPECT_EQ(RenderProgress(u"Copying"_qs, 12, 340, 1, 10), u"Copying 12"_qs);
}
