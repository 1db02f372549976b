// SPDX-License-Identifier: Apache-2.0

// What file operations answer when the kernel fails one of their calls.

#include "BaseFiles.h"
#include "FileTree.h"
#include "PoorerWorld.h"
#include "base/Directory.h"

#include <QtCore/QDir>

#include <gtest/gtest.h>

#include <cerrno>

#include <fcntl.h>

namespace {

using namespace Halvern::Test;
using namespace Qt::StringLiterals;

const Refusal noUnnamedFiles{SYS_openat, EOPNOTSUPP, 2, O_TMPFILE};
const Refusal noRangeCopy{SYS_copy_file_range, ENOSYS};

class KernelFaults : public ::testing::Test
{
protected:
    KernelFaults() { tree.File(u"in/a.prt"_s, PatternBytes(300'000)).Folder(u"out"_s); }

    /// The copy fails with this error in a world with these refusals, and leaves nothing.
    void ExpectFailure(const std::vector<Refusal>& refusals, const QString& expected)
    {
        const auto work = [&] {
            QString error;
            return !CopyFileBytes(tree.Path(u"in/a.prt"_s), target, &error) && error == expected;
        };
        EXPECT_EQ(InAPoorerWorld(refusals, work), Good) << expected.toStdString();
        EXPECT_EQ(QDir(tree.Path(u"out"_s))
                      .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                  QStringList());
    }
    QString CannotCreate(const QString& reason) const
    {
        return u"Cannot create %1 for output: %2"_s.arg(target, reason);
    }

    FileTree tree;
    const QString target = tree.Path(u"out/a.prt"_s);
};

TEST_F(KernelFaults, EveryErrorThatSaysARangeCopyIsNotForTheseFilesIsWorkedAround)
{
    for (const int error : {EXDEV, ENOSYS, EINVAL, EOPNOTSUPP, EBADF, EPERM}) {
        const auto work = [&] {
            QString message;
            return CopyFileBytes(tree.Path(u"in/a.prt"_s), target, &message);
        };
        EXPECT_EQ(InAPoorerWorld({{SYS_copy_file_range, error}}, work), Good) << error;
        EXPECT_TRUE(tree.Read(u"out/a.prt"_s) == tree.Read(u"in/a.prt"_s)) << error;
        tree.Remove(u"out/a.prt"_s);
    }
}

TEST_F(KernelFaults, AFolderThatCannotBeReadToItsEndIsAFailure)
{
    const auto work = [&] {
        const Halvern::Base::FileResult result = Halvern::Base::VisitEntries(
            Native(tree.Path(u"in"_s)), [](Halvern::Base::FolderEntry&&) { return true; });
        return !result && result.Text() == "Input/output error";
    };
    EXPECT_EQ(InAPoorerWorld({{SYS_getdents64, EIO}}, work), Good);
}

TEST_F(KernelFaults, AnErrorOfTheDiskFailsTheCopy)
{
    const QString failure = u"Failure to write block: Input/output error"_s;
    ExpectFailure({{SYS_copy_file_range, EIO}}, failure);
    // The size of the first piece tells this read from others.
    ExpectFailure({noRangeCopy, {SYS_pread64, EIO, 2, 64 * 1024}}, failure);
    ExpectFailure({{SYS_fchmod, EIO}}, failure);
    ExpectFailure({noUnnamedFiles, {SYS_close, EIO}}, failure);
}

TEST_F(KernelFaults, AnErrorWhileTheCopyGetsItsNameIsToldWithThatName)
{
    ExpectFailure({{SYS_linkat, EIO}}, CannotCreate(u"Input/output error"_s));
    ExpectFailure({{SYS_linkat, EEXIST}}, u"Destination file exists"_s);
    ExpectFailure({noUnnamedFiles, {SYS_renameat2, EIO}}, CannotCreate(u"Input/output error"_s));
    ExpectFailure({noUnnamedFiles, {SYS_renameat2, EEXIST}}, u"Destination file exists"_s);
    ExpectFailure({noUnnamedFiles, {SYS_renameat2, EINVAL}, {SYS_link, EEXIST}},
                  u"Destination file exists"_s);
}

TEST_F(KernelFaults, ASourceThatCannotBeLookedAtAndATargetThatCannotBeOpenedAreTold)
{
    ExpectFailure({{SYS_newfstatat, EIO, 3, AT_EMPTY_PATH}},
                  u"Cannot open %1 for input: Input/output error"_s.arg(tree.Path(u"in/a.prt"_s)));
    ExpectFailure({noUnnamedFiles, {SYS_openat, EACCES, 2, O_CREAT | O_EXCL}},
                  u"Cannot open for output: Permission denied"_s);
}

TEST_F(KernelFaults, AFlushSucceedsWhereThereIsNoDiskAndFailsWithTheDisk)
{
    const QString path = tree.Path(u"in/a.prt"_s);
    const auto flush = [&] {
        QString error;
        return FlushToDisk(path, &error) && error.isEmpty();
    };
    const auto fails = [&] {
        QString error;
        return !FlushToDisk(path, &error) &&
               error == u"Cannot flush %1: Input/output error"_s.arg(path);
    };
    for (const long call : {SYS_fdatasync, SYS_fsync}) {
        EXPECT_EQ(InAPoorerWorld({{call, EINVAL}}, flush), Good);
        EXPECT_EQ(InAPoorerWorld({{call, ENOTSUP}}, flush), Good);
        EXPECT_EQ(InAPoorerWorld({{call, EIO}}, fails), Good);
    }
}

TEST_F(KernelFaults, ASystemThatCannotTellLocksCountsAFileAsFree)
{
    const auto isFree = [&] { return !IsFileLocked(tree.Path(u"in/a.prt"_s)); };
    EXPECT_EQ(InAPoorerWorld({{SYS_fcntl, EINVAL, 1, F_OFD_GETLK}}, isFree), Good);
    EXPECT_EQ(InAPoorerWorld({{SYS_flock, ENOLCK}}, isFree), Good);
}

} // namespace
