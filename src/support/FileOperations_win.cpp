#include "support/FileOperations.h"

#include "support/WindowsNames.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <sys/stat.h>
#include <sys/types.h>
#include <sys/utime.h>

#include <windows.h>

#include <shlobj.h>

namespace Halvern::FileLink {

namespace {

constexpr int PathBuffer = 260;

const wchar_t* Wide(const QString& text)
{
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

QString Native(const QString& path)
{
    return WindowsApiPath(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
}

} // namespace

bool IsPosixAbsolutePath(const QString&)
{
    return false;
}

QString AbsoluteFolderOf(const QString& file)
{
    return QFileInfo(file).absolutePath();
}

QString RelativePathFrom(const QString& folder, const QString& path)
{
    return QDir(folder).relativeFilePath(path);
}

QString GetExecutableFilePath()
{
    wchar_t path[PathBuffer] = {};
    ::GetModuleFileNameW(nullptr, path, PathBuffer);
    return QDir::fromNativeSeparators(QString::fromWCharArray(path));
}

QString GetCommonAppDataPath()
{
    wchar_t path[PathBuffer] = {};
    ::SHGetSpecialFolderPathW(nullptr, path, CSIDL_COMMON_APPDATA, TRUE);
    return QDir::fromNativeSeparators(QString::fromWCharArray(path));
}

bool IsWritable(const QString& path)
{
    return QFileInfo(path).isWritable();
}

ReadOnlyState ClearReadOnly(const QString& path, QFile::Permissions permissions)
{
    QFile(path).setPermissions(permissions);
    return {};
}

void RestoreReadOnly(const QString& path, ReadOnlyState, QFile::Permissions permissions)
{
    QFile(path).setPermissions(permissions);
}

void HideFolder(const QString& path)
{
    const QString native = Native(path);
    const DWORD attributes = ::GetFileAttributesW(Wide(native));
    if (attributes != INVALID_FILE_ATTRIBUTES)
        ::SetFileAttributesW(Wide(native), attributes | FILE_ATTRIBUTE_HIDDEN);
}

bool IsFileLocked(const QString& path)
{
    if (!QFileInfo::exists(path) || !IsWritable(path))
        return false;
    const QString native = Native(path);
    struct _stat64i32 status;
    if (::_wstat64i32(Wide(native), &status) != 0)
        return false;
    const DWORD attributes = ::GetFileAttributesW(Wide(native));
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return false;
    QFile file(path);
    if (!file.open(QIODevice::Append))
        return true;
    file.close();
    // The runtime takes the bytes in the ANSI code page, so that this misses paths with characters
    // outside it; opening alone leaves the times as they are.
    struct __utimbuf64 times = {status.st_atime, status.st_mtime};
    ::_utime64(path.toUtf8().constData(), &times);
    ::SetFileAttributesW(Wide(native), attributes);
    return false;
}

bool CopyFileBytes(const QString& source, const QString& target, QString* error)
{
    // The system would take some such names without an error: for a device, a stream, another file.
    const QString forbidden =
        ForbiddenWindowsName(QDir::cleanPath(QFileInfo(target).absoluteFilePath()));
    if (!forbidden.isEmpty()) {
        *error = QStringLiteral("Windows does not allow the name \"%1\"").arg(forbidden);
        return false;
    }
    if (::CopyFileW(Wide(Native(source)), Wide(Native(target)), TRUE))
        return true;
    const DWORD failure = ::GetLastError();
    *error = failure == ERROR_FILE_EXISTS ? QStringLiteral("Destination file exists")
                                          : qt_error_string(int(failure)).trimmed();
    return false;
}

bool FlushToDisk(const QString& path, QString* error)
{
    const QString native = Native(path);
    // Flushing takes write access, which the copy of a read-only file refuses.
    const DWORD attributes = ::GetFileAttributesW(Wide(native));
    const bool readOnly =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
    if (readOnly)
        ::SetFileAttributesW(Wide(native), attributes & ~DWORD(FILE_ATTRIBUTE_READONLY));
    const HANDLE file = ::CreateFileW(Wide(native), GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    const bool flushed = file != INVALID_HANDLE_VALUE && ::FlushFileBuffers(file);
    if (!flushed)
        *error = QStringLiteral("Cannot flush %1: %2")
                     .arg(path, qt_error_string(int(::GetLastError())).trimmed());
    if (file != INVALID_HANDLE_VALUE)
        ::CloseHandle(file);
    if (readOnly)
        ::SetFileAttributesW(Wide(native), attributes);
    return flushed;
}

} // namespace Halvern::FileLink
