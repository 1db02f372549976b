// SPDX-License-Identifier: Apache-2.0

#include "FileTree.h"
#include "support/PathUtilities.h"

#include <gtest/gtest.h>

namespace {

using namespace Qt::Literals::StringLiterals;
using Halvern::FileLink::IsShareRoot;

struct Row
{
    std::string name;
    QString path;
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

INSTANTIATE_TEST_SUITE_P(
    Table, ShareRoots,
    ::testing::Values(Row{"Empty", u""_s, false}, Row{"Slashes", u"//"_s, true},
                      Row{"Server", u"//server"_s, true}, Row{"Share", u"//server/share"_s, true},
                      Row{"ShareWithSlash", u"//server/share/"_s, true},
                      Row{"Backslashes", u"\\\\server\\share"_s, true},
                      Row{"FileInShare", u"//server/share/a.prt"_s, false},
                      Row{"FolderInShare", u"\\\\server\\share\\a"_s, false},
                      Row{"Drive", u"D:/"_s, false}, Row{"PosixRoot", u"/"_s, false},
                      Row{"PosixFolder", u"/server/share"_s, false},
                      Row{"Relative", u"server/share"_s, false}),
    [](const auto& row) { return row.param.name; });

} // namespace
