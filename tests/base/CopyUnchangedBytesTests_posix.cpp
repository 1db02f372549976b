// SPDX-License-Identifier: Apache-2.0

// Sources that somebody else writes while they are copied.

#include "CopyBytesFixture.h"
#include "PoorerWorld.h"
#include "base/ContentHash.h"
#include "base/FileStatus.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Test {

namespace {

constexpr qint64 Size = qint64(16) << 20;

/// What somebody does to a file again and again.
struct Change
{
    const char* name;
    void (*change)(const std::string& file);
};

void PrintTo(const Change& change, std::ostream* out)
{
    *out << change.name;
}

/// Opens, works, closes: a program of its own would do no other.
void WithFile(const std::string& file, int flags, const std::function<void(int)>& work)
{
    const int opened = ::open(file.c_str(), flags | O_CLOEXEC);
    work(opened);
    ::close(opened);
}

void Append(const std::string& file)
{
    WithFile(file, O_WRONLY | O_APPEND, [](int fd) { ASSERT_EQ(::write(fd, "x", 1), 1); });
}

void CutShort(const std::string& file)
{
    struct stat info = {};
    ASSERT_EQ(::stat(file.c_str(), &info), 0);
    ASSERT_EQ(::truncate(file.c_str(), info.st_size > 1 ? info.st_size - 1 : 0), 0);
}

void OverwriteWithOldTime(const std::string& file)
{
    WithFile(file, O_WRONLY, [](int fd) {
        const struct timespec times[2] = {{1'600'000'000, 0}, {1'600'000'000, 0}};
        ASSERT_EQ(::pwrite(fd, "x", 1, Size - 1), 1);
        ASSERT_EQ(::futimens(fd, times), 0);
    });
}

void ReplaceByAnother(const std::string& file)
{
    const std::string other = file + ".new";
    WithFile(other, O_WRONLY | O_CREAT, [](int fd) { ASSERT_EQ(::ftruncate(fd, Size), 0); });
    ASSERT_EQ(std::rename(other.c_str(), file.c_str()), 0);
}

class CopyUnchangedOnPosix : public CopyBytes, public ::testing::WithParamInterface<Change>
{
protected:
    CopyUnchangedOnPosix() { tree.File(u"in/big.prt"_s, PatternBytes(Size)); }

    /// Copies while somebody changes the source, until a copy fails; one that meets no change
    /// is whole.
    Base::FileResult CopyUntilOneFails(Base::ContentHash* hash)
    {
        std::atomic<bool> isOver = false;
        std::thread other([&, file = Native(tree.Path(u"in/big.prt"_s)).native()] {
            while (!isOver) {
                GetParam().change(file);
                std::this_thread::sleep_for(std::chrono::microseconds(200));
            }
        });
        Base::FileResult result;
        for (int attempt = 0; attempt < 50 && result; ++attempt) {
            result = Base::CopyUnchangedBytes(Native(tree.Path(u"in/big.prt"_s)),
                                              Native(tree.Path(u"out/big.prt"_s)), copied, hash);
            if (result)
                tree.Remove(u"out/big.prt"_s);
        }
        isOver = true;
        other.join();
        return result;
    }

    Base::FileStatus copied;
};

using CopyUnchangedInPoorerWorlds = CopyBytes;

} // namespace

TEST_P(CopyUnchangedOnPosix, FailsWithAKindOfItsOwnAndLeavesNothing)
{
    const Base::FileResult result = CopyUntilOneFails(nullptr);
    EXPECT_EQ(result.Problem(), Base::FileProblem::Changed);
    EXPECT_EQ(result.Text(), "The file changed while it was copied");
    EXPECT_FALSE(tree.Exists(u"out/big.prt"_s));
    EXPECT_TRUE(
        QDir(tree.Path(u"out"_s)).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

TEST_P(CopyUnchangedOnPosix, FailsAlsoWhereTheBytesAreHashed)
{
    Base::ContentHash hash;
    EXPECT_EQ(CopyUntilOneFails(&hash).Problem(), Base::FileProblem::Changed);
    EXPECT_FALSE(tree.Exists(u"out/big.prt"_s));
}

INSTANTIATE_TEST_SUITE_P(Changes, CopyUnchangedOnPosix,
                         ::testing::Values(Change{"Grows", &Append}, Change{"Shrinks", &CutShort},
                                           Change{"HasItsOldTimeAgain", &OverwriteWithOldTime},
                                           Change{"IsReplaced", &ReplaceByAnother}),
                         [](const auto& change) { return change.param.name; });

TEST_F(CopyUnchangedInPoorerWorlds, GivesTheSameCopyAndHash)
{
    const QByteArray content = PatternBytes(SeveralBuffers);
    tree.File(u"in/big.prt"_s, content);
    const std::filesystem::path source = Native(tree.Path(u"in/big.prt"_s));
    Base::ContentHash expected;
    ASSERT_TRUE(Base::HashContent(source, expected));
    const auto work = [&] {
        Base::FileStatus copied;
        Base::ContentHash hash;
        const Base::FileResult result =
            Base::CopyUnchangedBytes(source, Native(tree.Path(u"out/big.prt"_s)), copied, &hash);
        EXPECT_TRUE(result) << result.Text();
        EXPECT_EQ(hash, expected);
        EXPECT_EQ(copied, Base::ReadFileStatus(source));
        return !HasFailure();
    };
    const Refusal noUnnamedFiles{SYS_openat, EOPNOTSUPP, 2, O_TMPFILE};
    // Then all bytes are copied, and hashed, a second time.
    const Refusal noHandles{SYS_linkat, ENOENT, 4, AT_SYMLINK_FOLLOW};
    for (const Refusal& refusal : {noUnnamedFiles, noHandles}) {
        EXPECT_EQ(InAPoorerWorld({refusal}, work), Good);
        EXPECT_TRUE(tree.Read(u"out/big.prt"_s) == content);
        EXPECT_EQ(Names(), (QStringList{u"a.prt"_s, u"big.prt"_s, u"big.prt"_s}));
        tree.Remove(u"out/big.prt"_s);
    }
}

TEST_F(CopyUnchangedInPoorerWorlds, FailsWithTheDiskAndLeavesNothing)
{
    const auto work = [&] {
        Base::FileStatus copied;
        Base::ContentHash hash;
        const Base::FileResult result = Base::CopyUnchangedBytes(
            Native(tree.Path(u"in/a.prt"_s)), Native(tree.Path(u"out/a.prt"_s)), copied, &hash);
        EXPECT_EQ(result.Text(), "Failure to write block: Input/output error");
        EXPECT_EQ(copied, Base::FileStatus());
        EXPECT_EQ(hash, Base::ContentHash());
        return !HasFailure();
    };
    EXPECT_EQ(InAPoorerWorld({{SYS_pread64, EIO, 2, 64 * 1024}}, work), Good);
    EXPECT_EQ(Names(), QStringList{u"a.prt"_s});
}

// On kernels whose clock for files is coarse, two saves within one of its steps have one time.
TEST_F(CopyUnchangedInPoorerWorlds, LetsTheClockGoOnAfterTheLastSave)
{
    for (int attempt = 0; attempt < 5; ++attempt) {
        tree.File(u"in/b.prt"_s, "saved");
        Base::FileStatus copied;
        ASSERT_TRUE(Base::CopyUnchangedBytes(Native(tree.Path(u"in/b.prt"_s)),
                                             Native(tree.Path(u"out/b.prt"_s)), copied));
        struct timespec now = {};
        ASSERT_EQ(::clock_gettime(CLOCK_REALTIME, &now), 0);
        EXPECT_GE(qint64(now.tv_sec) * 1'000'000'000 + now.tv_nsec - copied.changed, 20'000'000);
        tree.Remove(u"out/b.prt"_s);
    }
}

} // namespace Halvern::Test
