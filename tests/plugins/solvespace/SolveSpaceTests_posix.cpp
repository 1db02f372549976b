// SPDX-License-Identifier: Apache-2.0

// Where a backslash can be part of a file's name.

#include "SolveSpaceFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using PosixSolveSpace = SolveSpaceFixture;

} // namespace

TEST_F(PosixSolveSpace, ABackslashStaysWhereAFileIsNamedWithIt)
{
    tree.File(u"p/x\\a.slvs"_s);
    EXPECT_EQ(Records(Group("3", "x\\a.slvs")), (Links{LinkTo(u"group 3", u"x\\a.slvs")}));
}

} // namespace Halvern::Test
