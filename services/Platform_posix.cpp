// SPDX-License-Identifier: Apache-2.0

#include "services/Platform.h"

#include <QtCore/QFileInfo>
#include <QtCore/QStandardPaths>

#include <filesystem>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::SyncServices::Platform {

FileIdentity ReadFileIdentity(const QString& path)
{
    struct stat status;
    if (::stat(QFile::encodeName(path).constData(), &status) != 0)
        return {};
    FileIdentity identity;
    identity.exists = true;
    identity.isFolder = S_ISDIR(status.st_mode);
    identity.device = status.st_dev;
    identity.index = status.st_ino;
    identity.names = status.st_nlink;
    identity.size = status.st_size;
    identity.modified = status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec;
    return identity;
}

FileState ReadFileState(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() ? FileState{info.lastModified(), info.size()} : FileState();
}

Qt::CaseSensitivity FileNameCase()
{
    return Qt::CaseSensitive;
}

bool OpenRegularFile(const QString& path, QFile& file)
{
    const int handle =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (handle < 0)
        return false;
    struct stat status;
    if (::fstat(handle, &status) == 0 && S_ISREG(status.st_mode) &&
        file.open(handle, QFile::ReadOnly | QFile::Unbuffered, QFile::AutoCloseHandle))
        return true;
    ::close(handle);
    return false;
}

bool CloneFile(QFile& source, QFile& target)
{
    return ::ioctl(target.handle(), FICLONE, source.handle()) == 0;
}

bool MakeFolder(const QString& path, QString* reason)
{
    std::error_code error;
    std::filesystem::create_directories(QFileInfo(path).filesystemAbsoluteFilePath(), error);
    // An existing file of that name is no error to create_directories on every library version.
    if (!error && !QFileInfo(path).isDir())
        error = std::make_error_code(std::errc::not_a_directory);
    if (error)
        *reason = QString::fromLocal8Bit(error.message().c_str());
    return !error;
}

bool Rename(const QString& from, const QString& to)
{
    std::error_code error;
    std::filesystem::rename(QFileInfo(from).filesystemFilePath(),
                            QFileInfo(to).filesystemFilePath(), error);
    return !error;
}

bool IsDriveRelative(const QString&)
{
    return false;
}

QString ConfigFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
}

QString DataFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
}

QString ProgramFolder()
{
    const QString program = QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
    return program.isEmpty() ? QString() : QFileInfo(program).path();
}

} // namespace Halvern::SyncServices::Platform
