// SPDX-License-Identifier: Apache-2.0

#include "base/CopyContent_posix.h"

#include "base/FileCopy.h"
#include "base/PosixApi.h"

#include <cerrno>
#include <ctime>
#include <memory>

#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace Halvern::Base {

namespace {

constexpr std::size_t CopyBlock = std::size_t(1) << 30;
constexpr std::size_t BufferSize = std::size_t(256) * 1024;
/// More than one step of the clock of the files, which is as coarse as 10 ms on some kernels.
constexpr std::int64_t ClockStep = 20'000'000;

bool IsUnsupported(int error)
{
    return error == EXDEV || error == ENOSYS || error == EINVAL || error == EOPNOTSUPP ||
           error == EBADF || error == EPERM;
}

bool WriteBlock(int out, const char* bytes, ssize_t size)
{
    for (ssize_t done = 0; done < size;) {
        const ssize_t wrote = ::write(out, bytes + done, static_cast<std::size_t>(size - done));
        if (wrote < 0 && errno != EINTR)
            return false;
        done += wrote > 0 ? wrote : 0;
    }
    return true;
}

bool CopyByBlocks(int in, int out, ContentHasher* hasher)
{
    const auto buffer = std::make_unique<char[]>(BufferSize);
    for (;;) {
        const ssize_t got = ::read(in, buffer.get(), BufferSize);
        if (got == 0)
            return true;
        if (got < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        if (!WriteBlock(out, buffer.get(), got))
            return false;
        if (hasher)
            hasher->Add({buffer.get(), static_cast<std::size_t>(got)});
    }
}

bool CopyAndHash(const Original& original, int out)
{
    ContentHasher hasher;
    if (!CopyByBlocks(original.in, out, &hasher))
        return false;
    *original.hash = hasher.Result();
    return true;
}

bool CopyBytes(const Original& original, int out)
{
    const int in = original.in;
    if (CloneBytes(in, out))
        return !original.hash || HashContent(in, *original.hash);
    if (original.hash)
        return CopyAndHash(original, out);
    // Some file systems state no size for files that have bytes, or copy no range of them: whatever
    // was copied, the rest is read to its end.
    bool started = false;
    while (original.info.st_size > 0) {
        const ssize_t got = ::copy_file_range(in, nullptr, out, nullptr, CopyBlock, 0);
        if (got == 0)
            break;
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0 && !started && IsUnsupported(errno))
            break;
        if (got < 0)
            return false;
        started = true;
    }
    return CopyByBlocks(in, out, nullptr);
}

/// The open file, and what its name leads to: programs save by giving a new file the name of the
/// old one.
bool HasChanged(const Original& original)
{
    const FileStatus before = StatusOf(original.info);
    return ReadFileStatus(Handle(original.in)) != before ||
           ReadFileStatus(*original.watched) != before;
}

/// How long the clock of the files must still go on until a change gets another time than the last
/// one; not above 0 when it would get one now.
std::int64_t Nearness(const struct stat& info)
{
    struct timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const std::int64_t age = (now.tv_sec - info.st_ctim.tv_sec) * std::int64_t(1'000'000'000) +
                             now.tv_nsec - info.st_ctim.tv_nsec;
    // Times of another computer may lie in the future.
    return age < 0 ? 0 : ClockStep - age;
}

} // namespace

FileResult FillCopy(const Original& original, int out)
{
    const struct stat& info = original.info;
    const struct timespec times[2] = {{0, UTIME_OMIT}, info.st_mtim};
    if (!CopyBytes(original, out) || ::fchmod(out, info.st_mode & 0777) != 0 ||
        ::futimens(out, times) != 0)
        return LastFailure("Failure to write block");
    if (original.watched && HasChanged(original))
        return FileResult::Refused(FileProblem::Changed, "The file changed while it was copied");
    return {};
}

bool LetTheClockGoOn(int in, struct stat& info)
{
    for (int attempt = 0; attempt < 3; ++attempt) {
        const std::int64_t rest = Nearness(info);
        if (rest <= 0)
            return true;
        const struct timespec pause = {0, static_cast<long>(rest)};
        ::nanosleep(&pause, nullptr);
        if (::fstat(in, &info) != 0)
            return false;
    }
    return true;
}

bool CloneBytes(Handle source, Handle target) noexcept
{
    return ::ioctl(static_cast<int>(target), FICLONE, static_cast<int>(source)) == 0;
}

} // namespace Halvern::Base
