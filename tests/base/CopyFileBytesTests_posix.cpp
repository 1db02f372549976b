// SPDX-License-Identifier: Apache-2.0

// What copies on POSIX are like: modes, links, pipes, devices, mounted disks.

#include "CopyBytesFixture.h"
#include "Mounts.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>
#include <QtCore/QThread>

#include <atomic>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Test {

namespace {

struct stat StatOf(const QString& path)
{
    struct stat info = {};
    EXPECT_EQ(::lstat(QFile::encodeName(path).constData(), &info), 0) << path.toStdString();
    return info;
}

} // namespace

TEST_F(CopyBytes, GivesEveryByteToAnotherFileSystem)
{
    const Mount memory = Mount::Small(tree.Path(u"out"_s), 16 << 20);
    ASSERT_TRUE(memory.IsMounted());
    const QByteArray content = PatternBytes(SeveralBuffers, 2);
    tree.File(u"in/big.prt"_s, content);
    EXPECT_TRUE(Copy(u"in/big.prt"_s, u"out/big.prt"_s)) << error.toStdString();
    EXPECT_TRUE(tree.Read(u"out/big.prt"_s) == content);
}

TEST_F(CopyBytes, ReadsFilesThatStateNoSizeToTheirEnd)
{
    QFile version(u"/proc/version"_s);
    ASSERT_TRUE(version.open(QFile::ReadOnly));
    ASSERT_TRUE(CopyFileBytes(u"/proc/version"_s, tree.Path(u"out/version"_s), &error))
        << error.toStdString();
    EXPECT_EQ(tree.Read(u"out/version"_s), version.readAll());
    EXPECT_FALSE(tree.Read(u"out/version"_s).isEmpty());
}

TEST_F(CopyBytes, KeepsPermissionsWhateverTheUmask)
{
    const mode_t umask = ::umask(077);
    for (const mode_t mode : {0444, 0600, 0644, 0664, 0751, 0777, 0000}) {
        tree.File(u"in/m"_s);
        ASSERT_EQ(::chmod(QFile::encodeName(tree.Path(u"in/m"_s)).constData(), mode), 0);
        EXPECT_TRUE(Copy(u"in/m"_s, u"out/m"_s)) << error.toStdString();
        EXPECT_EQ(StatOf(tree.Path(u"out/m"_s)).st_mode & 07777, mode);
        tree.Remove(u"out/m"_s).Remove(u"in/m"_s);
    }
    ::umask(umask);
}

TEST_F(CopyBytes, DoesNotPassOnTheRightToRunAsTheOwner)
{
    ASSERT_EQ(::chmod(QFile::encodeName(tree.Path(u"in/a.prt"_s)).constData(), 06755), 0);
    EXPECT_TRUE(Copy(u"in/a.prt"_s, u"out/a.prt"_s)) << error.toStdString();
    EXPECT_EQ(StatOf(tree.Path(u"out/a.prt"_s)).st_mode & 07777, mode_t(0755));
}

TEST_F(CopyBytes, KeepsTheModificationTimeToTheNanosecond)
{
    const struct timespec times[2] = {{1'500'000'000, 0}, {1'600'000'000, 123'456'789}};
    ASSERT_EQ(
        ::utimensat(AT_FDCWD, QFile::encodeName(tree.Path(u"in/a.prt"_s)).constData(), times, 0),
        0);
    EXPECT_TRUE(Copy(u"in/a.prt"_s, u"out/a.prt"_s)) << error.toStdString();
    const struct stat copy = StatOf(tree.Path(u"out/a.prt"_s));
    EXPECT_EQ(copy.st_mtim.tv_sec, 1'600'000'000);
    EXPECT_EQ(copy.st_mtim.tv_nsec, 123'456'789);
}

TEST_F(CopyBytes, CopiesWhatASymbolicLinkLeadsTo)
{
    ASSERT_TRUE(QFile::link(tree.Path(u"in/a.prt"_s), tree.Path(u"in/link"_s)));
    EXPECT_TRUE(Copy(u"in/link"_s, u"out/a.prt"_s)) << error.toStdString();
    EXPECT_TRUE(S_ISREG(StatOf(tree.Path(u"out/a.prt"_s)).st_mode));
    EXPECT_EQ(tree.Read(u"out/a.prt"_s), "content");
}

TEST_F(CopyBytes, NeverOverwritesAnythingElse)
{
    tree.Folder(u"out/folder"_s);
    ASSERT_TRUE(QFile::link(tree.Path(u"gone"_s), tree.Path(u"out/dangling"_s)));
    ASSERT_EQ(::mkfifo(QFile::encodeName(tree.Path(u"out/pipe"_s)).constData(), 0600), 0);
    for (const QString& name : {u"out/folder"_s, u"out/dangling"_s, u"out/pipe"_s})
        ExpectRefusal(u"in/a.prt"_s, name, u"Destination file exists"_s);
    EXPECT_FALSE(tree.Exists(u"gone"_s)) << "the copy was written through a symbolic link";
    EXPECT_TRUE(S_ISLNK(StatOf(tree.Path(u"out/dangling"_s)).st_mode));
    ExpectRefusal(u"in/a.prt"_s, u"in/a.prt"_s, u"Destination file exists"_s);
    EXPECT_EQ(tree.Read(u"in/a.prt"_s), "content");
}

TEST_F(CopyBytes, OfAMissingFileFails)
{
    ExpectRefusal(
        u"in/gone.prt"_s, u"out/a.prt"_s,
        u"Cannot open %1 for input: No such file or directory"_s.arg(tree.Path(u"in/gone.prt"_s)));
}

TEST_F(CopyBytes, OfAPipeFailsAtOnce)
{
    ASSERT_EQ(::mkfifo(QFile::encodeName(tree.Path(u"in/pipe"_s)).constData(), 0600), 0);
    QElapsedTimer timer;
    timer.start();
    ExpectRefusal(u"in/pipe"_s, u"out/a.prt"_s,
                  u"Cannot open %1 for input: Not a regular file"_s.arg(tree.Path(u"in/pipe"_s)));
    EXPECT_LT(timer.elapsed(), 5000);
}

TEST_F(CopyBytes, OfAFolderOrADeviceFails)
{
    ExpectRefusal(u"in"_s, u"out/a.prt"_s,
                  u"Cannot open %1 for input: Not a regular file"_s.arg(tree.Path(u"in"_s)));
    EXPECT_FALSE(CopyFileBytes(u"/dev/zero"_s, tree.Path(u"out/a.prt"_s), &error));
    EXPECT_EQ(error, u"Cannot open /dev/zero for input: Not a regular file"_s);
}

TEST_F(CopyBytes, IntoAMissingFolderFails)
{
    ExpectRefusal(u"in/a.prt"_s, u"out/gone/a.prt"_s,
                  u"Cannot open for output: No such file or directory"_s);
}

TEST_F(CopyBytes, ThroughAFileFails)
{
    ExpectRefusal(u"in/a.prt"_s, u"in/a.prt/b.prt"_s, u"Cannot open for output: Not a directory"_s);
}

TEST_F(CopyBytes, IntoAReadOnlyFolderFails)
{
    const Mount mount = Mount::ReadOnly(tree.Path(u"out"_s));
    ASSERT_TRUE(mount.IsMounted());
    ExpectRefusal(u"in/a.prt"_s, u"out/a.prt"_s,
                  u"Cannot open for output: Read-only file system"_s);
}

TEST_F(CopyBytes, OntoAFullDiskFailsAndLeavesNothing)
{
    const Mount memory = Mount::Small(tree.Path(u"out"_s), 1 << 20);
    ASSERT_TRUE(memory.IsMounted());
    tree.File(u"in/big.prt"_s, PatternBytes(3 << 20));
    ExpectRefusal(u"in/big.prt"_s, u"out/big.prt"_s,
                  u"Failure to write block: No space left on device"_s);
    EXPECT_TRUE(Copy(u"in/a.prt"_s, u"out/a.prt"_s)) << "the room is free again";
}

TEST_F(CopyBytes, WithinAFullDiskFailsAndLeavesNothing)
{
    const Mount memory = Mount::Small(tree.Path(u"out"_s), 1 << 20);
    ASSERT_TRUE(memory.IsMounted());
    tree.File(u"out/big.prt"_s, PatternBytes(700'000));
    ExpectRefusal(u"out/big.prt"_s, u"out/copy.prt"_s,
                  u"Failure to write block: No space left on device"_s);
}

TEST_F(CopyBytes, ShowsTheNameOnlyWhenTheCopyIsComplete)
{
    const qint64 size = 32 << 20;
    tree.File(u"in/big.prt"_s, PatternBytes(size));
    const QString target = tree.Path(u"out/big.prt"_s);
    std::atomic<bool> done = false;
    const std::unique_ptr<QThread> copier(QThread::create([&] {
        EXPECT_TRUE(Copy(u"in/big.prt"_s, u"out/big.prt"_s)) << error.toStdString();
        done = true;
    }));
    copier->start();
    while (!done) {
        struct stat info;
        if (::stat(QFile::encodeName(target).constData(), &info) == 0) {
            ASSERT_EQ(info.st_size, size);
        }
    }
    ASSERT_TRUE(copier->wait());
    EXPECT_EQ(StatOf(target).st_size, size);
}

} // namespace Halvern::Test
