// SPDX-License-Identifier: Apache-2.0

// Where a backslash can be part of a file's name.

#include "DxfFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using PosixDxf = DxfFixture;

} // namespace

TEST_F(PosixDxf, ABackslashStaysWhereAFileIsNamedWithIt)
{
    tree.File(u"p/x\\a.png"_s);
    EXPECT_EQ(Objects(Image("5A", "x\\a.png")), (Links{LinkTo(u"image 5A", u"x\\a.png")}));
}

} // namespace Halvern::Test
