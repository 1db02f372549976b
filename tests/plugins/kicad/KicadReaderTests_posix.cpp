// SPDX-License-Identifier: Apache-2.0

// File names that only POSIX has.

#include "KicadFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

TEST_F(KicadFixture, ABackslashThatIsPartOfAnExistingNameStays)
{
    const QString board = u"p/a.kicad_pcb"_s;
    tree.File(board, Board(Footprint("1-1", Model("\"3d\\\\a.step\""))));
    EXPECT_EQ(Paths(board), QStringList{u"3d/a.step"_s});
    tree.File(u"p/3d\\a.step"_s);
    EXPECT_EQ(Paths(board), QStringList{u"3d\\a.step"_s});
}

} // namespace Halvern::Test
