// SPDX-License-Identifier: Apache-2.0

#include "base/CopyContent_posix.h"

#include "base/ContentReader.h"
#include "base/FileCopy.h"
#include "base/PosixApi.h"
#include "base/WorkWatch.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace Halvern::Base {

namespace {

constexpr std::uint64_t RangeBlock = std::uint64_t(1) << 30;
/// Of a copy that is watched.
constexpr std::size_t FirstRangePiece = std::size_t(1) << 20;
constexpr std::size_t RangePiece = std::size_t(64) << 20;
/// More than one step of the clock of the files, which is as coarse as 10 ms on some kernels.
constexpr std::int64_t ClockStep = 20'000'000;

bool IsUnsupported(int error)
{
    return error == EXDEV || error == ENOSYS || error == EINVAL || error == EOPNOTSUPP ||
           error == EBADF || error == EPERM;
}

FileResult WriteFailure()
{
    return LastFailure("Failure to write block");
}

FileResult WriteFailure(const FileResult& why)
{
    return FileResult::Failed("Failure to write block", why.Code());
}

void TellCopied(const Original& original, std::uint64_t bytes)
{
    if (WorkWatch* const watch = WorkWatch::OfThisThread(); watch && original.watched)
        watch->Copied(bytes);
}

FileResult CopyByBlocks(const Original& original, int out, ContentReader& reader)
{
    ContentHasher hasher;
    bool endsInHole = false;
    for (ContentReader::Piece piece;;) {
        if (FileResult read = reader.Next(piece); !read)
            return read.Problem() == FileProblem::Stopped ? read : WriteFailure(read);
        const bool isEnd = piece.size == 0;
        const FileResult written = isEnd && endsInHole ? Lengthen(out, piece.offset)
                                                       : WriteAllAt(out, piece.offset, piece.bytes);
        if (!written)
            return WriteFailure(written);
        if (isEnd)
            break;
        endsInHole = piece.IsHole();
        if (original.hash && endsInHole)
            hasher.AddZeros(piece.size);
        else if (original.hash)
            hasher.Add(piece.bytes);
        TellCopied(original, piece.offset + piece.size);
    }
    if (original.hash)
        *original.hash = hasher.Result();
    return {};
}

/// Lets the system copy what it can, range after range.
class RangeCopy
{
public:
    RangeCopy(const Original& original, int out)
        : m_original(original), m_out(out), m_ranges(original.in),
          m_isWatched(WorkWatch::OfThisThread() != nullptr)
    {}

    /// Some file systems state no size for files that have bytes, or copy no range of them: from
    /// CopiedTo on the rest is still to be read.
    FileResult Run()
    {
        const auto size = static_cast<std::uint64_t>(m_original.info.st_size);
        bool isMoving = true;
        while (isMoving && m_at < size) {
            const DataRange range = m_ranges.Next(m_at);
            m_at = range.begin;
            if (range.IsEmpty())
                return ::ftruncate(m_out, static_cast<off_t>(m_at)) == 0 ? FileResult()
                                                                         : WriteFailure();
            if (FileResult copied = CopyTo(range.end); !copied)
                return copied;
            isMoving = m_at > range.begin;
        }
        return {};
    }
    std::uint64_t CopiedTo() const noexcept { return m_at; }

private:
    FileResult CopyTo(std::uint64_t end)
    {
        while (m_at < end) {
            auto from = static_cast<off_t>(m_at);
            off_t to = from;
            const std::uint64_t most = m_isWatched ? m_size.Next() : RangeBlock;
            const ssize_t got =
                ::copy_file_range(m_original.in, &from, m_out, &to, std::min(end - m_at, most), 0);
            if (got < 0 && errno == EINTR)
                continue;
            if (got == 0 || (got < 0 && !m_hasBegun && IsUnsupported(errno)))
                return {};
            if (got < 0)
                return WriteFailure();
            m_hasBegun = true;
            m_at += static_cast<std::uint64_t>(got);
            TellCopied(m_original, m_at);
            if (FileResult stopped = GoOnOrStop(); !stopped)
                return stopped;
        }
        return {};
    }

    const Original& m_original;
    int m_out;
    DataRanges m_ranges;
    bool m_isWatched;
    PieceSize m_size{FirstRangePiece, RangePiece};
    std::uint64_t m_at = 0;
    bool m_hasBegun = false;
};

FileResult CopyBytes(const Original& original, int out)
{
    // The hash is that of the copy's own bytes, also where it shares them with the source.
    if (CloneBytes(original.in, out))
        return original.hash ? HashContent(Handle(out), *original.hash) : FileResult();
    RangeCopy ranges(original, out);
    if (!original.hash)
        if (FileResult copied = ranges.Run(); !copied)
            return copied;
    ContentReader reader(original.in, ranges.CopiedTo());
    return CopyByBlocks(original, out, reader);
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
    if (FileResult copied = CopyBytes(original, out); !copied)
        return copied;
    if (::fchmod(out, info.st_mode & 0777) != 0 || ::futimens(out, times) != 0)
        return WriteFailure();
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
