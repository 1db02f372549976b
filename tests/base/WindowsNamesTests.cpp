// SPDX-License-Identifier: Apache-2.0

#include "base/WindowsNames.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Halvern::Base;

struct Name
{
    const char* name;
    std::u16string path;
    std::u16string forbidden;
};

void PrintTo(const Name& row, std::ostream* out)
{
    *out << row.name;
}

class WindowsNames : public ::testing::TestWithParam<Name>
{};

TEST_P(WindowsNames, AreToldFromWhatWindowsForbids)
{
    EXPECT_EQ(ForbiddenName(GetParam().path, System::Windows), GetParam().forbidden);
}

INSTANTIATE_TEST_SUITE_P(
    Table, WindowsNames,
    ::testing::Values(
        Name{"Drive", u"D:/a/b.prt", u""}, Name{"DriveRoot", u"D:/", u""},
        Name{"Network", u"//server/share/a.prt", u""}, Name{"Posix", u"/w/a.prt", u""},
        Name{"Everything", u"D:/ä +,;=[]()&'%$#@!^`~{}.a.prt", u""},
        Name{"LeadingDotAndBlank", u"D:/.a/ b", u""},
        Name{"QuestionMark", u"D:/a/b?.prt", u"b?.prt"}, Name{"Star", u"D:/a*/b.prt", u"a*"},
        Name{"Colon", u"D:/a/12:30.prt", u"12:30.prt"}, Name{"Stream", u"D:/a.prt:x", u"a.prt:x"},
        Name{"Less", u"D:/<a", u"<a"}, Name{"Greater", u"D:/a>", u"a>"},
        Name{"Quote", u"D:/\"a\"", u"\"a\""}, Name{"Bar", u"D:/a|b", u"a|b"},
        Name{"LineBreak", u"D:/a\nb", u"a\nb"},
        Name{"Null", std::u16string(u"D:/a") + std::u16string(1, u'\0'),
             std::u16string(u"a") + std::u16string(1, u'\0')},
        Name{"TrailingDot", u"D:/a./b", u"a."}, Name{"TrailingBlank", u"D:/a /b", u"a "},
        Name{"Device", u"D:/a/con", u"con"}, Name{"DeviceWithSuffix", u"D:/a/AUX.prt", u"AUX.prt"},
        Name{"DeviceWithSuffixes", u"D:/a/nul.tar.gz", u"nul.tar.gz"},
        Name{"DeviceWithBlank", u"D:/prn .prt", u"prn .prt"},
        Name{"Port", u"D:/Com7.prt", u"Com7.prt"},
        Name{"PortOfSuperscript", u"D:/lpt\u00b2", u"lpt\u00b2"},
        Name{"PortZero", u"D:/com0/lpt0", u""}, Name{"PortTen", u"D:/com10/com", u""},
        Name{"DeviceInName", u"D:/contact/a.con/auxiliary", u""},
        Name{"FourLetters", u"D:/part", u""}, Name{"OneLetter", u"a", u""}),
    [](const auto& row) { return row.param.name; });

TEST(ForbiddenNames, ThatAreWaysAreNoNames)
{
    EXPECT_EQ(ForbiddenName(u"../a/./b", System::Windows), u"");
    EXPECT_EQ(ForbiddenName(u"../a/.../b", System::Windows), u"...");
}

TEST(ForbiddenNames, AreNoneOnPosix)
{
    EXPECT_EQ(ForbiddenName(u"/a/con/b?./c ", System::Posix), u"");
}

} // namespace
