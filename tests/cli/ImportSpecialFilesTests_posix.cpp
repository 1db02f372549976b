// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include <QtCore/QFile>

#include <sys/stat.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

/// Names and kinds of files that only POSIX systems have.
class ImportOfSpecialFiles : public CommandFixture
{};

} // namespace

TEST_F(ImportOfSpecialFiles, ASymbolicLinkToAFolderIsNoSource)
{
    ASSERT_TRUE(QFile::link(tree.Path(u"work"_s), tree.Path(u"work/loop"_s)));
    for (const QString& source : {u"loop"_s, u"loop/"_s}) {
        const CommandResult result = Import({source});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_TRUE(result.err.contains(u"symbolic link to a folder"_s));
    }
}

TEST_F(ImportOfSpecialFiles, WhatIsLeftOutOfAFolderIsTold)
{
    tree.File(u"work/proj/a.tlk"_s).File(u"work/other/o.tlk"_s);
    ASSERT_TRUE(QFile::link(tree.Path(u"work/other"_s), tree.Path(u"work/proj/link"_s)));
    ASSERT_TRUE(QFile::link(tree.Path(u"work/nowhere"_s), tree.Path(u"work/proj/dead"_s)));
    ASSERT_EQ(mkfifo(QFile::encodeName(tree.Path(u"work/proj/pipe"_s)).constData(), 0600), 0);
    const CommandResult result = Import({u"proj"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.Has(u"skipped    proj/link: a symbolic link to a folder"_s));
    EXPECT_TRUE(result.Has(u"skipped    proj/dead: a symbolic link that leads nowhere"_s));
    EXPECT_TRUE(result.Has(u"skipped    proj/pipe: neither a file nor a folder"_s));
}

TEST_F(ImportOfSpecialFiles, WhatIsNoFileFailsWhenItWasGiven)
{
    tree.File(u"work/a.tlk"_s).Folder(u"work/proj"_s);
    for (const QString& pipe : {u"work/pipe"_s, u"work/proj/pipe"_s})
        ASSERT_EQ(mkfifo(QFile::encodeName(tree.Path(pipe)).constData(), 0600), 0);
    const CommandResult alone = Import({u"pipe"_s});
    EXPECT_EQ(alone.exitCode, 1) << ::testing::PrintToString(alone);
    EXPECT_TRUE(alone.Has(u"failed     pipe: it is neither a file nor a folder"_s))
        << ::testing::PrintToString(alone);
    const CommandResult others = Import({u"a.tlk"_s, u"proj"_s, u"proj/pipe"_s});
    EXPECT_EQ(others.exitCode, 1) << ::testing::PrintToString(others);
    EXPECT_TRUE(others.Has(u"failed     proj/pipe: it is neither a file nor a folder"_s))
        << ::testing::PrintToString(others);
    EXPECT_TRUE(tree.Exists(u"cloud/a.tlk"_s));
}

TEST_F(ImportOfSpecialFiles, AFileWhoseNameHoldsAColonIsAFailure)
{
    tree.File(u"work/proj/a.tlk"_s).File(u"work/proj/10:30.tlk"_s);
    const CommandResult result = Import({u"proj"_s});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.Has(u"failed     proj/10:30.tlk: its path holds a \":\""_s))
        << ::testing::PrintToString(result);
    EXPECT_TRUE(tree.Exists(u"cloud/proj/a.tlk"_s));
}

} // namespace Halvern::Test
