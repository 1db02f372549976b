// SPDX-License-Identifier: Apache-2.0

#include "ProgressLine.h"

#include "FileTree.h"

#include <gtest/gtest.h>

using namespace Halvern::Cli;
using namespace Qt::StringLiterals;

TEST(Progress, ShowsPhaseCountTotalAndBytes)
{
    EXPECT_EQ(RenderProgress(u"Copying"_s, {12, 340, 1200000, 3400000000}, 80),
              u"Copying 12/340 files, 1.2 MB of 3.4 GB"_s);
}

TEST(Progress, LeavesOutWhatIsNotKnown)
{
    EXPECT_EQ(RenderProgress(u"Reading links"_s, {}, 80), u"Reading links"_s);
    EXPECT_EQ(RenderProgress(u"Rewriting links"_s, {3, 0, 0, 0}, 80), u"Rewriting links 3 files"_s);
    EXPECT_EQ(RenderProgress(u"Copying"_s, {0, 2, 0, 7}, 80), u"Copying 0/2 files"_s);
    EXPECT_EQ(RenderProgress(u"Copying"_s, {0, 2, 5, 0}, 80), u"Copying 0/2 files, 5 bytes"_s);
}

TEST(Progress, IsNeverWiderThanTheTerminal)
{
    EXPECT_EQ(RenderProgress(u"Copying"_s, {12, 340, 1, 0}, 10), u"Copying 12"_s);
}
