// SPDX-License-Identifier: Apache-2.0

#include "Paths.h"

#include "FileTree.h"

#include <QtCore/QDir>

#include <gtest/gtest.h>

using namespace Halvern::Jobs;
using namespace Qt::StringLiterals;

TEST(JobPathsOnWindows, GetTheDriveAndTheFolderThatTheyLeaveOut)
{
    const QString here = QDir::currentPath();
    const QString drive = here.left(2);
    EXPECT_EQ(AbsolutePath(u"\\Sync\\a"_s), drive + u"/Sync/a"_s);
    EXPECT_EQ(AbsolutePath(drive + u"a\\b"_s), here + u"/a/b"_s);
    EXPECT_EQ(AbsolutePath(u"\\\\server\\share\\a"_s), u"//server/share/a"_s);
    EXPECT_EQ(AbsolutePath(u"D:\\a\\..\\b."_s), u"D:/b."_s);
}
