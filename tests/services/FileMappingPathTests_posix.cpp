// SPDX-License-Identifier: Apache-2.0

// Symbolic links, as every user can make them on POSIX.

#include "MappingOnDisk.h"

#include <QtCore/QFile>

#include <filesystem>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

TEST_F(MappingOnDisk, APathThroughASymbolicLinkIsTheSameFile)
{
    tree.File(u"d/a"_s);
    ASSERT_TRUE(QFile::link(tree.Path(u"d"_s), tree.Path(u"e"_s)));
    ASSERT_TRUE(QFile::link(tree.Path(u"d/a"_s), tree.Path(u"b"_s)));
    EXPECT_TRUE(SameInTree("d/a", "e/a"));
    EXPECT_TRUE(SameInTree("b", "d/a"));
    EXPECT_TRUE(SameInTree("d", "e"));
    EXPECT_FALSE(SameInTree("d", "e/a"));
}

TEST_F(MappingOnDisk, ASymbolicLinkIsTheOneOfTwoHardLinksThatItNames)
{
    tree.File(u"a"_s);
    std::filesystem::create_hard_link(tree.Path(u"a"_s).toStdU16String(),
                                      tree.Path(u"b"_s).toStdU16String());
    ASSERT_TRUE(QFile::link(tree.Path(u"a"_s), tree.Path(u"c"_s)));
    EXPECT_TRUE(SameInTree("a", "c"));
    EXPECT_FALSE(SameInTree("b", "c"));
}

} // namespace Halvern::Test
