// SPDX-License-Identifier: Apache-2.0

#include "services/WindowsPaths.h"

#include "FileTree.h"

#include <gtest/gtest.h>

using namespace Halvern::SyncServices;
using namespace Qt::StringLiterals;

namespace {

/// A path of `size` characters that begins so.
QString Long(const QString& begin, qsizetype size)
{
    return begin + QString(size - begin.size(), u'x');
}

} // namespace

TEST(ServicesOnWindows, GiveAPathThePrefixFromTheLengthOnThatFunctionsRefuse)
{
    EXPECT_EQ(WindowsApiPath(u"D:/a/b.prt"_s), u"D:\\a\\b.prt"_s);
    EXPECT_EQ(WindowsApiPath(Long(u"D:/a/"_s, 247)), Long(u"D:\\a\\"_s, 247));
    EXPECT_EQ(WindowsApiPath(Long(u"D:/a/"_s, 248)), u"\\\\?\\"_s + Long(u"D:\\a\\"_s, 248));
    EXPECT_EQ(WindowsApiPath(u"//server/share/a"_s), u"\\\\server\\share\\a"_s);
    EXPECT_EQ(WindowsApiPath(Long(u"//server/share/"_s, 300)),
              u"\\\\?\\UNC"_s + Long(u"\\\\server\\share\\"_s, 300).mid(1));
    EXPECT_EQ(WindowsApiPath(Long(u"//?/D:/"_s, 300)), Long(u"\\\\?\\D:\\"_s, 300));
}

TEST(ServicesOnWindows, KnowPathsThatLeadElsewhereWithTheCurrentDrive)
{
    for (const QString& path : {u"D:yncork"_s, u"D:"_s, u"D:\twork"_s, u"/serverhare"_s, u"\\a"_s,
                                u"/"_s, u"\\"_s, u"d:a/b"_s})
        EXPECT_TRUE(IsDriveRelative(path)) << path.toStdString();
    for (const QString& path :
         {u"D:/Sync"_s, u"D:\\Sync"_s, u"D:/"_s, u"//server/share"_s, u"\\\\server\\share"_s,
          u":memory:"_s, u"data/sync.db"_s, QString()})
        EXPECT_FALSE(IsDriveRelative(path)) << path.toStdString();
}
