// SPDX-License-Identifier: Apache-2.0

#include "FileTree.h"
#include "Mounts.h"
#include "support/FileOperations.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

constexpr QFile::Permissions Clear = QFile::ReadOther | QFile::WriteOther;
constexpr QFile::Permissions Restore = QFile::ReadOther;

class ReadOnlyFiles : public ::testing::TestWithParam<int>
{
protected:
    void SetMode(int mode)
    {
        tree.File(u"a.prt"_s);
        ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), mode_t(mode)), 0);
    }
    int Mode()
    {
        struct stat info;
        EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &info), 0);
        return int(info.st_mode & 07777);
    }

    FileTree tree;
    const QString path = tree.Path(u"a.prt"_s);
};

TEST_P(ReadOnlyFiles, AreThoseThatTheirOwnerMayNotWrite)
{
    SetMode(GetParam());
    EXPECT_EQ(IsWritable(path), (GetParam() & 0200) != 0);
}

TEST_P(ReadOnlyFiles, GetTheOwnersWriteBitAndLoseItAgain)
{
    SetMode(GetParam());
    const ReadOnlyState state = ClearReadOnly(path, Clear);
    EXPECT_EQ(Mode(), GetParam() | 0200);
    EXPECT_TRUE(IsWritable(path));
    RestoreReadOnly(path, state, Restore);
    EXPECT_EQ(Mode(), GetParam());
}

TEST_P(ReadOnlyFiles, KeepOtherBitsThatChangedInBetween)
{
    SetMode(GetParam());
    const ReadOnlyState state = ClearReadOnly(path, Clear);
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0711), 0);
    RestoreReadOnly(path, state, Restore);
    EXPECT_EQ(Mode(), (0711 & ~0222) | (GetParam() & 0222));
}

INSTANTIATE_TEST_SUITE_P(Modes, ReadOnlyFiles,
                         ::testing::Values(0, 0400, 0444, 0555, 0466, 0600, 0644, 0664, 0755));

TEST_F(ReadOnlyFiles, ThatDoNotExistAreNotWritableAndNotMade)
{
    EXPECT_FALSE(IsWritable(path));
    const ReadOnlyState state = ClearReadOnly(path, Clear);
    RestoreReadOnly(path, state, Restore);
    EXPECT_FALSE(tree.Exists(u"a.prt"_s));
}

TEST_F(ReadOnlyFiles, AreChangedThroughASymbolicLink)
{
    SetMode(0444);
    const QString link = tree.Path(u"link"_s);
    ASSERT_TRUE(QFile::link(path, link));
    EXPECT_FALSE(IsWritable(link));
    ClearReadOnly(link, Clear);
    EXPECT_EQ(Mode(), 0644);
}

TEST_F(ReadOnlyFiles, KeepTheirTimes)
{
    SetMode(0444);
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'600'000'000);
    tree.Touch(u"a.prt"_s, time);
    RestoreReadOnly(path, ClearReadOnly(path, Clear), Restore);
    EXPECT_EQ(tree.Modified(u"a.prt"_s), time);
}

TEST(HiddenFolders, HaveNameAndPermissionsAsBefore)
{
    FileTree tree;
    tree.Folder(u".hidden"_s);
    const QFile::Permissions before = QFile::permissions(tree.Path(u".hidden"_s));
    HideFolder(tree.Path(u".hidden"_s));
    EXPECT_EQ(QFile::permissions(tree.Path(u".hidden"_s)), before);
    HideFolder(tree.Path(u"gone"_s));
    EXPECT_FALSE(tree.Exists(u"gone"_s));
}

TEST(Flushing, SucceedsForAFileOnAnyFileSystem)
{
    FileTree tree;
    tree.File(u"a.prt"_s).Folder(u"memory"_s);
    QString error;
    EXPECT_TRUE(FlushToDisk(tree.Path(u"a.prt"_s), &error)) << error.toStdString();
    const Mount memory = Mount::Small(tree.Path(u"memory"_s), 1 << 20);
    ASSERT_TRUE(memory.IsMounted());
    tree.File(u"memory/b.prt"_s);
    EXPECT_TRUE(FlushToDisk(tree.Path(u"memory/b.prt"_s), &error)) << error.toStdString();
    EXPECT_EQ(error, QString());
}

TEST(Flushing, SucceedsForAReadOnlyFile)
{
    FileTree tree;
    tree.File(u"a.prt"_s);
    ASSERT_EQ(::chmod(QFile::encodeName(tree.Path(u"a.prt"_s)).constData(), 0444), 0);
    QString error;
    EXPECT_TRUE(FlushToDisk(tree.Path(u"a.prt"_s), &error)) << error.toStdString();
}

TEST(Flushing, OfAMissingFileFailsWithTheReason)
{
    FileTree tree;
    QString error;
    EXPECT_FALSE(FlushToDisk(tree.Path(u"gone.prt"_s), &error));
    EXPECT_EQ(error, u"Cannot flush %1: No such file or directory"_s.arg(tree.Path(u"gone.prt"_s)));
}

} // namespace
