// SPDX-License-Identifier: Apache-2.0

#include "support/FileOperations.h"

#include <QtCore/QByteArray>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <cerrno>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::FileLink {

namespace {

constexpr mode_t WriteBits = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr size_t CopyBlock = size_t(1) << 30;

class Descriptor
{
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return m_fd; }
    explicit operator bool() const { return m_fd >= 0; }
    /// False when the system reports a write error only now.
    bool Close() { return ::close(std::exchange(m_fd, -1)) == 0; }

private:
    int m_fd;
};

bool ReadMode(const QString& path, mode_t& mode)
{
    struct stat info;
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return false;
    mode = info.st_mode & 07777;
    return true;
}

bool HasDrive(const QString& path)
{
    return path.size() >= 2 && path[0].isLetter() && path[1] == u':' &&
           (path.size() == 2 || path[2] == u'/');
}

bool HoldsForeignFlock(int fd)
{
    if (::flock(fd, LOCK_SH | LOCK_NB) != 0)
        return errno == EWOULDBLOCK;
    ::flock(fd, LOCK_UN);
    return false;
}

bool HoldsForeignFcntlLock(int fd)
{
    struct flock lock = {};
    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    return ::fcntl(fd, F_OFD_GETLK, &lock) == 0 && lock.l_type == F_WRLCK;
}

bool IsUnsupported(int error)
{
    return error == EXDEV || error == ENOSYS || error == EINVAL || error == EOPNOTSUPP ||
           error == EBADF || error == EPERM;
}

bool CopyByBlocks(int in, int out)
{
    QByteArray buffer(256 * 1024, Qt::Uninitialized);
    for (;;) {
        const ssize_t got = ::read(in, buffer.data(), size_t(buffer.size()));
        if (got == 0)
            return true;
        if (got < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        for (ssize_t done = 0; done < got;) {
            const ssize_t wrote = ::write(out, buffer.constData() + done, size_t(got - done));
            if (wrote < 0 && errno != EINTR)
                return false;
            done += wrote > 0 ? wrote : 0;
        }
    }
}

bool CopyBytes(int in, int out, const struct stat& info)
{
    if (::ioctl(out, FICLONE, in) == 0)
        return true;
    // Some file systems state no size for files that have bytes, or copy no range of them: whatever
    // was copied, the rest is read to its end.
    bool started = false;
    while (info.st_size > 0) {
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
    return CopyByBlocks(in, out);
}

bool FillCopy(int in, int out, const struct stat& info)
{
    const struct timespec times[2] = {{0, UTIME_OMIT}, info.st_mtim};
    return CopyBytes(in, out, info) && ::fchmod(out, info.st_mode & 0777) == 0 &&
           ::futimens(out, times) == 0;
}

QString Failure(const QString& text, int error)
{
    return QStringLiteral("%1: %2").arg(text, qt_error_string(error));
}

QString NameFailure(const QString& target, int error)
{
    if (error == EEXIST)
        return QStringLiteral("Destination file exists");
    return Failure(QStringLiteral("Cannot create %1 for output").arg(target), error);
}

enum class CopyOutcome
{
    Done,
    Failed,
    NotPossible
};

/// A file without a name until it is complete; not every file system has them.
CopyOutcome CopyThroughUnnamedFile(int in, const struct stat& info, const QString& target,
                                   QString* error)
{
    const QByteArray folder = QFile::encodeName(QFileInfo(target).absolutePath());
    Descriptor out(::open(folder.constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600));
    if (!out)
        return CopyOutcome::NotPossible;
    if (!FillCopy(in, out.Get(), info)) {
        *error = Failure(QStringLiteral("Failure to write block"), errno);
        return CopyOutcome::Failed;
    }
    const QByteArray handle = "/proc/self/fd/" + QByteArray::number(out.Get());
    if (::linkat(AT_FDCWD, handle.constData(), AT_FDCWD, QFile::encodeName(target).constData(),
                 AT_SYMLINK_FOLLOW) == 0)
        return CopyOutcome::Done;
    if (errno == ENOENT)
        return CopyOutcome::NotPossible;
    *error = NameFailure(target, errno);
    return CopyOutcome::Failed;
}

bool CopyThroughTemporaryName(int in, const struct stat& info, const QString& target,
                              QString* error)
{
    // Not made from the target's name, which may be as long as names can be.
    QByteArray temporary = QFile::encodeName(QFileInfo(target).absolutePath()) + "/.copy-XXXXXX";
    Descriptor out(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!out) {
        *error = Failure(QStringLiteral("Cannot open for output"), errno);
        return false;
    }
    if (::lseek(in, 0, SEEK_SET) < 0 || !FillCopy(in, out.Get(), info) || !out.Close()) {
        *error = Failure(QStringLiteral("Failure to write block"), errno);
        ::unlink(temporary.constData());
        return false;
    }
    if (::renameat2(AT_FDCWD, temporary.constData(), AT_FDCWD,
                    QFile::encodeName(target).constData(), RENAME_NOREPLACE) == 0)
        return true;
    // Without that flag (some network file systems) a hard link refuses an existing name as well.
    int failure = errno;
    if (failure == EINVAL &&
        ::link(temporary.constData(), QFile::encodeName(target).constData()) == 0) {
        ::unlink(temporary.constData());
        return true;
    }
    if (failure == EINVAL)
        failure = errno;
    *error = NameFailure(target, failure);
    ::unlink(temporary.constData());
    return false;
}

bool Synchronize(const QString& path, bool isFolder)
{
    const Descriptor fd(::open(QFile::encodeName(path).constData(),
                               O_RDONLY | O_CLOEXEC | (isFolder ? O_DIRECTORY : 0)));
    if (fd && (isFolder ? ::fsync(fd.Get()) : ::fdatasync(fd.Get())) == 0)
        return true;
    // File systems that keep nothing on a disk have nothing to flush.
    return fd && (errno == EINVAL || errno == ENOTSUP);
}

} // namespace

bool IsPosixAbsolutePath(const QString& path)
{
    return path.startsWith(u'/') && !(path.size() > 1 && (path[1] == u'/' || path[1] == u'\\'));
}

QString AbsoluteFolderOf(const QString& file)
{
    const QFileInfo info(file);
    return file.contains(u':') && !IsPosixAbsolutePath(file) ? info.path() : info.absolutePath();
}

QString RelativePathFrom(const QString& folder, const QString& path)
{
    if (!HasDrive(folder) || !HasDrive(path) || folder[0].toLower() != path[0].toLower())
        return QDir(folder).relativeFilePath(path);
    return QDir(folder.mid(2) + u'/').relativeFilePath(path.mid(2));
}

QString GetExecutableFilePath()
{
    return QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
}

QString GetCommonAppDataPath()
{
    return QStringLiteral("/usr/share");
}

bool PathExists(const QString& path)
{
    return QFile::exists(path);
}

bool IsFile(const QString& path)
{
    return QFileInfo(path).isFile();
}

bool IsFolder(const QString& path)
{
    return QFileInfo(path).isDir();
}

QDateTime LastModified(const QString& path)
{
    return QFileInfo(path).lastModified();
}

bool RenameFile(const QString& path, const QString& newPath, QString* error)
{
    QFile file(path);
    const bool renamed = file.rename(newPath);
    *error = file.errorString();
    return renamed;
}

QFileInfoList ListEntries(const QDir& dir, const QStringList& patterns, QDir::Filters filters)
{
    return dir.entryInfoList(patterns, filters, QDir::NoSort);
}

bool IsWritable(const QString& path)
{
    mode_t mode = 0;
    return ReadMode(path, mode) && (mode & S_IWUSR);
}

ReadOnlyState ClearReadOnly(const QString& path, QFile::Permissions)
{
    mode_t mode = 0;
    if (!ReadMode(path, mode))
        return {};
    ::chmod(QFile::encodeName(path).constData(), mode | S_IWUSR);
    return {mode & WriteBits};
}

void RestoreReadOnly(const QString& path, ReadOnlyState state, QFile::Permissions)
{
    mode_t mode = 0;
    if (ReadMode(path, mode))
        ::chmod(QFile::encodeName(path).constData(),
                (mode & ~WriteBits) | (state.writeBits & WriteBits));
}

void HideFolder(const QString&) {}

QString WhyForbidden(const QString&)
{
    return {};
}

bool IsFileLocked(const QString& path)
{
    if (!IsWritable(path))
        return false;
    const Descriptor fd(
        ::open(QFile::encodeName(path).constData(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NONBLOCK));
    if (!fd)
        return errno != ENOENT;
    return HoldsForeignFlock(fd.Get()) || HoldsForeignFcntlLock(fd.Get());
}

bool CopyFileBytes(const QString& source, const QString& target, QString* error)
{
    struct stat existing;
    if (::lstat(QFile::encodeName(target).constData(), &existing) == 0) {
        *error = NameFailure(target, EEXIST);
        return false;
    }
    // Without O_NONBLOCK opening a pipe would wait for a writer.
    const Descriptor in(
        ::open(QFile::encodeName(source).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat info;
    if (!in || ::fstat(in.Get(), &info) != 0) {
        *error = Failure(QStringLiteral("Cannot open %1 for input").arg(source), errno);
        return false;
    }
    if (!S_ISREG(info.st_mode)) {
        *error = QStringLiteral("Cannot open %1 for input: Not a regular file").arg(source);
        return false;
    }
    switch (CopyThroughUnnamedFile(in.Get(), info, target, error)) {
    case CopyOutcome::Done:
        return true;
    case CopyOutcome::Failed:
        return false;
    case CopyOutcome::NotPossible:
        break;
    }
    return CopyThroughTemporaryName(in.Get(), info, target, error);
}

bool FlushToDisk(const QString& path, QString* error)
{
    if (Synchronize(path, false) && Synchronize(QFileInfo(path).absolutePath(), true))
        return true;
    *error = Failure(QStringLiteral("Cannot flush %1").arg(path), errno);
    return false;
}

} // namespace Halvern::FileLink
