// SPDX-License-Identifier: Apache-2.0

// Where a backslash can be part of a file's name.

#include "StepFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using PosixStep = StepFixture;

} // namespace

TEST_F(PosixStep, ABackslashStaysWhereAFileIsNamedWithIt)
{
    tree.File(u"p/x\\a.stp"_s);
    EXPECT_EQ(Data(Reference("x\\\\a.stp")), (Links{LinkTo(u"#2", u"x\\a.stp")}));
}

} // namespace Halvern::Test
