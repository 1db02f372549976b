// SPDX-License-Identifier: Apache-2.0

#include "Paths.h"

#include "FileTree.h"

#include <QtCore/QDir>

#include <gtest/gtest.h>

using namespace Halvern::Jobs;

TEST(JobPathsOnWindows, GetTheDriveAndTheFolderThatTheyLeaveOut)
{
    const QString here = QDir::currentPath();
    const QString drive = here.left(2);
    EXPECT_EQ(AbsolutePath(u"\\Sync\\a"_qs), drive + u"/Sync/a"_qs);
    EXPECT_EQ(AbsolutePath(drive + u"a\\b"_qs), here + u"/a/b"_qs);
    EXPECT_EQ(AbsolutePath(u"\\\\server\\share\\a"_qs), u"//server/share/a"_qs);
    EXPECT_EQ(AbsolutePath(u"D:\\a\\..\\b."_qs), u"D:/b."_qs);
}
