// SPDX-License-Identifier: Apache-2.0

// Symbolic links, as every user can make them on POSIX.

#include "BaseStoreFixture.h"

#include <QtCore/QFile>

namespace Halvern::Test {

TEST_F(BaseStore, KeepsNoSymbolicLink)
{
    tree.File(u"a"_s);
    ASSERT_TRUE(QFile::link(tree.Path(u"a"_s), tree.Path(u"link"_s)));
    EXPECT_FALSE(Save(u"link"_s));
    EXPECT_EQ(Kept(), QList<QByteArray>());
}

} // namespace Halvern::Test
