// SPDX-License-Identifier: Apache-2.0

#include "base/PathText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Halvern::Base::IsShareRoot;

struct Row
{
    std::string name;
    std::u16string path;
    bool isRoot;
};

void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.name;
}

class ShareRoots : public ::testing::TestWithParam<Row>
{};

TEST_P(ShareRoots, AreToldByTheNamesInThePath)
{
    EXPECT_EQ(IsShareRoot(GetParam().path), GetParam().isRoot);
}

INSTANTIATE_TEST_SUITE_P(Table, ShareRoots,
                         ::testing::Values(Row{"Empty", u"", false}, Row{"Slashes", u"//", true},
                                           Row{"Server", u"//server", true},
                                           Row{"Share", u"//server/share", true},
                                           Row{"ShareWithSlash", u"//server/share/", true},
                                           Row{"Backslashes", u"\\\\server\\share", true},
                                           Row{"FileInShare", u"//server/share/a.prt", false},
                                           Row{"FolderInShare", u"\\\\server\\share\\a", false},
                                           Row{"Drive", u"D:/", false},
                                           Row{"PosixRoot", u"/", false},
                                           Row{"PosixFolder", u"/server/share", false},
                                           Row{"Relative", u"server/share", false}),
                         [](const auto& row) { return row.param.name; });

} // namespace
