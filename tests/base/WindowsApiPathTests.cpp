// SPDX-License-Identifier: Apache-2.0

#include "base/WindowsApiPath.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Halvern::Base;

/// A path of `size` units that begins so.
std::u16string Long(const std::u16string& begin, std::size_t size)
{
    return begin + std::u16string(size - begin.size(), u'x');
}

TEST(WindowsApiPaths, HaveBackslashes)
{
    EXPECT_EQ(WindowsApiPath(u"D:/a/b.prt"), u"D:\\a\\b.prt");
    EXPECT_EQ(WindowsApiPath(u"D:\\a\\b.prt"), u"D:\\a\\b.prt");
    EXPECT_EQ(WindowsApiPath(u"//server/share/a"), u"\\\\server\\share\\a");
}

TEST(WindowsApiPaths, HaveAPrefixFromTheLengthOnThatFunctionsRefuse)
{
    EXPECT_EQ(WindowsApiPath(Long(u"D:/a/", 247)), Long(u"D:\\a\\", 247));
    EXPECT_EQ(WindowsApiPath(Long(u"D:/a/", 248)), u"\\\\?\\" + Long(u"D:\\a\\", 248));
    EXPECT_EQ(WindowsApiPath(Long(u"//server/share/", 300)),
              u"\\\\?\\UNC" + Long(u"\\\\server\\share\\", 300).substr(1));
}

TEST(WindowsApiPaths, HaveThePrefixOnceAndOnlyWhenAbsolute)
{
    for (const char16_t* const begin :
         {u"\\\\?\\D:\\a\\", u"\\\\?\\UNC\\server\\share\\", u"\\\\.\\D:\\"})
        EXPECT_EQ(WindowsApiPath(Long(begin, 300)), Long(begin, 300));
    EXPECT_EQ(WindowsApiPath(Long(u"//?/D:/", 300)), Long(u"\\\\?\\D:\\", 300));
    EXPECT_EQ(WindowsApiPath(Long(u"a/", 300)), Long(u"a\\", 300));
}

TEST(WindowsApiPaths, LoseThePrefixWhereTheyHaveAnotherName)
{
    EXPECT_EQ(WithoutApiPrefix(u"\\\\?\\D:\\a\\b.exe"), u"D:\\a\\b.exe");
    EXPECT_EQ(WithoutApiPrefix(u"\\\\?\\UNC\\server\\share\\b.exe"), u"\\\\server\\share\\b.exe");
    for (const char16_t* const path :
         {u"D:\\a", u"\\\\server\\share", u"\\\\?\\Volume{1}\\a", u"\\\\.\\D:\\a", u""})
        EXPECT_EQ(WithoutApiPrefix(path), path);
}

TEST(WindowsApiPaths, WithThePrefixAreNoneForTheRuntime)
{
    EXPECT_TRUE(RuntimeTakesPath(WindowsApiPath(Long(u"D:/a/", 247))));
    EXPECT_FALSE(RuntimeTakesPath(WindowsApiPath(Long(u"D:/a/", 248))));
    EXPECT_TRUE(RuntimeTakesPath(WindowsApiPath(u"//server/share/a")));
    EXPECT_FALSE(RuntimeTakesPath(WindowsApiPath(Long(u"//server/share/", 248))));
    EXPECT_FALSE(RuntimeTakesPath(u"D:\\a*"));
}

} // namespace
