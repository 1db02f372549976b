// SPDX-License-Identifier: Apache-2.0

// Symbolic links, as every user can make them on POSIX.

#include "MappingOnDisk.h"

#include <QtCore/QFile>

#include <filesystem>

namespace Halvern::Test {

TEST_F(MappingOnDisk, APathThroughASymbolicLinkIsTheSameFile)
{
    tree.File(QStringLiteral("d/a"));
    ASSERT_TRUE(QFile::link(tree.Path(QStringLiteral("d")), tree.Path(QStringLiteral("e"))));
    ASSERT_TRUE(QFile::link(tree.Path(QStringLiteral("d/a")), tree.Path(QStringLiteral("b"))));
    EXPECT_TRUE(SameInTree("d/a", "e/a"));
    EXPECT_TRUE(SameInTree("b", "d/a"));
    EXPECT_TRUE(SameInTree("d", "e"));
    EXPECT_FALSE(SameInTree("d", "e/a"));
}

TEST_F(MappingOnDisk, ASymbolicLinkIsTheOneOfTwoHardLinksThatItNames)
{
    tree.File(QStringLiteral("a"));
    std::filesystem::create_hard_link(tree.Path(QStringLiteral("a")).toStdU16String(),
                                      tree.Path(QStringLiteral("b")).toStdU16String());
    ASSERT_TRUE(QFile::link(tree.Path(QStringLiteral("a")), tree.Path(QStringLiteral("c"))));
    EXPECT_TRUE(SameInTree("a", "c"));
    EXPECT_FALSE(SameInTree("b", "c"));
}

} // namespace Halvern::Test
