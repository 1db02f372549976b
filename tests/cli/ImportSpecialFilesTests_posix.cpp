// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include <QtCore/QFile>

#include <sys/stat.h>

namespace Halvern::Test {

namespace {

/// Names and kinds of files that only POSIX systems have.
class ImportOfSpecialFiles : public CommandFixture
{};

} // namespace

TEST_F(ImportOfSpecialFiles, ASymbolicLinkToAFolderIsNoSource)
{
    ASSERT_TRUE(QFile::link(tree.Path(u"work"_qs), tree.Path(u"work/loop"_qs)));
    for (const QString& source : {u"loop"_qs, u"loop/"_qs}) {
        const CommandResult result = Import({source});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_TRUE(result.err.contains(u"symbolic link to a folder"_qs));
    }
}

TEST_F(ImportOfSpecialFiles, WhatIsLeftOutOfAFolderIsTold)
{
    tree.File(u"work/proj/a.tlk"_qs).File(u"work/other/o.tlk"_qs);
    ASSERT_TRUE(QFile::link(tree.Path(u"work/other"_qs), tree.Path(u"work/proj/link"_qs)));
    ASSERT_TRUE(QFile::link(tree.Path(u"work/nowhere"_qs), tree.Path(u"work/proj/dead"_qs)));
    ASSERT_EQ(mkfifo(QFile::encodeName(tree.Path(u"work/proj/pipe"_qs)).constData(), 0600), 0);
    const CommandResult result = Import({u"proj"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.Has(u"skipped    proj/link: a symbolic link to a folder"_qs));
    EXPECT_TRUE(result.Has(u"skipped    proj/dead: a symbolic link that leads nowhere"_qs));
    EXPECT_TRUE(result.Has(u"skipped    proj/pipe: neither a file nor a folder"_qs));
}

TEST_F(ImportOfSpecialFiles, AFileWhoseNameHoldsAColonIsAFailure)
{
    tree.File(u"work/proj/a.tlk"_qs).File(u"work/proj/10:30.tlk"_qs);
    const CommandResult result = Import({u"proj"_qs});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.Has(u"failed     proj/10:30.tlk: its path holds a \":\""_qs))
        << ::testing::PrintToString(result);
    EXPECT_TRUE(tree.Exists(u"cloud/proj/a.tlk"_qs));
}

} // namespace Halvern::Test
