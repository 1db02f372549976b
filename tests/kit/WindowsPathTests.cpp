// SPDX-License-Identifier: Apache-2.0

#include "kit/WindowsPath.h"

#include <gtest/gtest.h>

namespace Halvern::PluginKit {

namespace {

WideString Text(const std::string& text)
{
    return ToUtf16(text).value();
}

/// A path of `size` units that begins so.
std::string Long(const std::string& begin, std::size_t size)
{
    return begin + std::string(size - begin.size(), 'x');
}

std::string ApiPath(const std::string& path)
{
    return ToUtf8(WindowsApiPath(Text(path))).value();
}

} // namespace

TEST(WindowsPath, GetsAPrefixFromTheLengthOnThatFunctionsRefuse)
{
    EXPECT_EQ(ApiPath("D:\\a.prt"), "D:\\a.prt");
    EXPECT_EQ(ApiPath(Long("D:\\a\\", 247)), Long("D:\\a\\", 247));
    EXPECT_EQ(ApiPath(Long("D:\\a\\", 248)), "\\\\?\\" + Long("D:\\a\\", 248));
}

TEST(WindowsPath, OfAServerGetsAPrefixOfItsOwn)
{
    EXPECT_EQ(ApiPath("\\\\server\\share\\a"), "\\\\server\\share\\a");
    EXPECT_EQ(ApiPath(Long("\\\\server\\share\\", 300)),
              "\\\\?\\UNC" + Long("\\\\server\\share\\", 300).substr(1));
}

TEST(WindowsPath, ThatHasAPrefixGetsNoSecondOne)
{
    for (const char* const begin : {"\\\\?\\D:\\a\\", "\\\\?\\UNC\\server\\share\\", "\\\\.\\D:\\"})
        EXPECT_EQ(ApiPath(Long(begin, 300)), Long(begin, 300));
}

TEST(WindowsPath, NamesAServerWithTwoSeparatorsAndAName)
{
    for (const char* const path : {"//server/share/a", "\\\\server\\share", "\\\\?\\D:\\a"})
        EXPECT_TRUE(IsNetworkPath(Text(path))) << path;
    for (const char* const path : {"", "/", "//", "///a", "/a", "a//b", "D:/a", "D://a/b"})
        EXPECT_FALSE(IsNetworkPath(Text(path))) << path;
}

TEST(WindowsPath, AnEntryWithALoneSurrogateHasNoNameThatALinkCouldHold)
{
    EXPECT_EQ(NameOfEntry(Text("Höhe.png")), "Höhe.png");
    EXPECT_EQ(NameOfEntry(Text("\U0001F332.png")), "\U0001F332.png");
    EXPECT_FALSE(NameOfEntry(Text("a") + SyncPlugin::WideChar(0xD83C)));
    EXPECT_FALSE(NameOfEntry(SyncPlugin::WideChar(0xDF32) + Text(".png")));
}

TEST(WindowsPath, AFolderIsNoEntryOfItself)
{
    EXPECT_FALSE(NameOfEntry(Text(".")));
    EXPECT_FALSE(NameOfEntry(Text("..")));
    EXPECT_EQ(NameOfEntry(Text("...")), "...");
}

} // namespace Halvern::PluginKit
