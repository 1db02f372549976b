// SPDX-License-Identifier: Apache-2.0

#include "support/WindowsNames.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Qt::StringLiterals;

struct Name
{
    const char* name;
    QString path;
    QString forbidden;
};

void PrintTo(const Name& row, std::ostream* out)
{
    *out << row.name;
}

class WindowsNames : public ::testing::TestWithParam<Name>
{};

TEST_P(WindowsNames, AreToldFromWhatWindowsForbids)
{
    EXPECT_EQ(ForbiddenWindowsName(GetParam().path), GetParam().forbidden);
}

INSTANTIATE_TEST_SUITE_P(
    Table, WindowsNames,
    ::testing::Values(
        Name{"Drive", u"D:/a/b.prt"_s, u""_s}, Name{"DriveRoot", u"D:/"_s, u""_s},
        Name{"Network", u"//server/share/a.prt"_s, u""_s}, Name{"Posix", u"/w/a.prt"_s, u""_s},
        Name{"Everything", u"D:/ä +,;=[]()&'%$#@!^`~{}.a.prt"_s, u""_s},
        Name{"LeadingDotAndBlank", u"D:/.a/ b"_s, u""_s},
        Name{"QuestionMark", u"D:/a/b?.prt"_s, u"b?.prt"_s},
        Name{"Star", u"D:/a*/b.prt"_s, u"a*"_s}, Name{"Colon", u"D:/a/12:30.prt"_s, u"12:30.prt"_s},
        Name{"Stream", u"D:/a.prt:x"_s, u"a.prt:x"_s}, Name{"Less", u"D:/<a"_s, u"<a"_s},
        Name{"Greater", u"D:/a>"_s, u"a>"_s}, Name{"Quote", u"D:/\"a\""_s, u"\"a\""_s},
        Name{"Bar", u"D:/a|b"_s, u"a|b"_s}, Name{"LineBreak", u"D:/a\nb"_s, u"a\nb"_s},
        Name{"Null", u"D:/a"_s + QChar(u'\0'), u"a"_s + QChar(u'\0')},
        Name{"TrailingDot", u"D:/a./b"_s, u"a."_s}, Name{"TrailingBlank", u"D:/a /b"_s, u"a "_s},
        Name{"Device", u"D:/a/con"_s, u"con"_s},
        Name{"DeviceWithSuffix", u"D:/a/AUX.prt"_s, u"AUX.prt"_s},
        Name{"DeviceWithSuffixes", u"D:/a/nul.tar.gz"_s, u"nul.tar.gz"_s},
        Name{"DeviceWithBlank", u"D:/prn .prt"_s, u"prn .prt"_s},
        Name{"Port", u"D:/Com7.prt"_s, u"Com7.prt"_s},
        Name{"PortOfSuperscript", u"D:/lpt\u00b2"_s, u"lpt\u00b2"_s},
        Name{"PortZero", u"D:/com0/lpt0"_s, u""_s}, Name{"PortTen", u"D:/com10/com"_s, u""_s},
        Name{"DeviceInName", u"D:/contact/a.con/auxiliary"_s, u""_s},
        Name{"FourLetters", u"D:/part"_s, u""_s}, Name{"OneLetter", u"a"_s, u""_s}),
    [](const auto& row) { return row.param.name; });

QString Long(const QString& start, qsizetype size)
{
    return start + QString(size - start.size(), u'x');
}

TEST(WindowsApiPaths, HaveBackslashes)
{
    EXPECT_EQ(WindowsApiPath(u"D:/a/b.prt"_s), u"D:\\a\\b.prt"_s);
    EXPECT_EQ(WindowsApiPath(u"//server/share/a"_s), u"\\\\server\\share\\a"_s);
}

TEST(WindowsApiPaths, HaveAPrefixFromTheLengthOnThatFunctionsRefuse)
{
    EXPECT_EQ(WindowsApiPath(Long(u"D:/a/"_s, 247)), Long(u"D:\\a\\"_s, 247));
    EXPECT_EQ(WindowsApiPath(Long(u"D:/a/"_s, 248)), u"\\\\?\\"_s + Long(u"D:\\a\\"_s, 248));
    EXPECT_EQ(WindowsApiPath(Long(u"//server/share/"_s, 300)),
              u"\\\\?\\UNC"_s + Long(u"\\\\server\\share\\"_s, 300).mid(1));
}

TEST(WindowsApiPaths, HaveThePrefixOnceAndOnlyWhenAbsolute)
{
    const QString prefixed = Long(u"\\\\?\\D:\\a\\"_s, 300);
    EXPECT_EQ(WindowsApiPath(prefixed), prefixed);
    EXPECT_EQ(WindowsApiPath(Long(u"a/"_s, 300)), Long(u"a\\"_s, 300));
}

TEST(WindowsApiPaths, WithThePrefixAreNoneForTheRuntime)
{
    EXPECT_TRUE(RuntimeTakesPath(WindowsApiPath(Long(u"D:/a/"_s, 247))));
    EXPECT_FALSE(RuntimeTakesPath(WindowsApiPath(Long(u"D:/a/"_s, 248))));
    EXPECT_TRUE(RuntimeTakesPath(WindowsApiPath(u"//server/share/a"_s)));
    EXPECT_FALSE(RuntimeTakesPath(WindowsApiPath(Long(u"//server/share/"_s, 248))));
    EXPECT_FALSE(RuntimeTakesPath(u"D:\\a*"_s));
}

} // namespace
