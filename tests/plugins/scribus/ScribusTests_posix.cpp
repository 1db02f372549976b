// SPDX-License-Identifier: Apache-2.0

// Where a backslash can be part of a file's name.

#include "ScribusFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using PosixScribus = ScribusFixture;

} // namespace

TEST_F(PosixScribus, ABackslashStaysWhereAFileIsNamedWithIt)
{
    tree.File(u"p/x\\a.png"_s);
    EXPECT_EQ(Objects(Picture("1", "x\\a.png")),
              (Links{LinkTo(u"PAGEOBJECT 1/PFILE", u"x\\a.png")}));
}

} // namespace Halvern::Test
