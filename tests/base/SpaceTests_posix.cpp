// SPDX-License-Identifier: Apache-2.0

// Disks of a known size, and those that count nothing.

#include "BaseFiles.h"
#include "FileTree.h"
#include "Mounts.h"
#include "base/FileStatus.h"
#include "base/Space.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

TEST(FreeSpaceOnPosix, ShrinksByWhatIsWrittenAndByEachFile)
{
    FileTree tree;
    tree.Folder(u"disk"_s);
    const Mount memory = Mount::Small(tree.Path(u"disk"_s), 1 << 20);
    ASSERT_TRUE(memory.IsMounted());
    const std::filesystem::path disk = Native(tree.Path(u"disk"_s));
    Base::Space before;
    ASSERT_TRUE(Base::ReadSpace(disk, before));
    EXPECT_EQ(before.freeBytes, 1U << 20);
    EXPECT_NE(before.device, Base::ReadFileStatus(Native(tree.Path())).device);
    tree.File(u"disk/a"_s, QByteArray(100'000, 'a')).File(u"disk/b"_s, {});
    Base::Space after;
    ASSERT_TRUE(Base::ReadSpace(disk, after));
    EXPECT_LE(*after.freeBytes, *before.freeBytes - 100'000);
    ASSERT_TRUE(before.freeFiles && after.freeFiles);
    EXPECT_EQ(*after.freeFiles, *before.freeFiles - 2);
}

TEST(FreeSpaceOnPosix, IsUnknownWhereNobodyCounts)
{
    Base::Space space;
    ASSERT_TRUE(Base::ReadSpace("/proc", space));
    EXPECT_FALSE(space.freeBytes);
    EXPECT_FALSE(space.freeFiles);
    EXPECT_EQ(space.device, Base::ReadFileStatus(std::filesystem::path("/proc")).device);
}

} // namespace Halvern::Test
