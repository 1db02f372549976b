// SPDX-License-Identifier: Apache-2.0

// File names that only POSIX has.

#include "KicadFixture.h"

namespace Halvern::Test {

TEST_F(KicadFixture, ABackslashThatIsPartOfAnExistingNameStays)
{
    const QString board = QStringLiteral("p/a.kicad_pcb");
    tree.File(board, Board(Footprint("1-1", Model("\"3d\\\\a.step\""))));
    EXPECT_EQ(Paths(board), QStringList{QStringLiteral("3d/a.step")});
    tree.File(QStringLiteral("p/3d\\a.step"));
    EXPECT_EQ(Paths(board), QStringList{QStringLiteral("3d\\a.step")});
}

} // namespace Halvern::Test
