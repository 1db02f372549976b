// SPDX-License-Identifier: Apache-2.0

#include "support/FileOperations.h"

#include "support/WindowsNames.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>
#include <QtCore/QRandomGenerator>

#include <sys/stat.h>
#include <sys/types.h>
#include <sys/utime.h>

#include <windows.h>

#include <shlobj.h>

namespace Halvern::FileLink {

namespace {

constexpr int PathBuffer = 260;
// Scanners and indexers open what was just written, and let it go again within moments.
constexpr int PatienceMs = 2000;
constexpr DWORD PauseMs = 25;
// Windows counts from the year 1601.
constexpr qint64 MsFrom1601To1970 = 11'644'473'600'000;

const wchar_t* Wide(const QString& text)
{
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

QString Native(const QString& path)
{
    return WindowsApiPath(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
}

/// An open file or nothing; closed at the end of its life.
class Handle
{
public:
    Handle(const QString& native, DWORD access)
        : m_handle(::CreateFileW(Wide(native), access,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                 OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr))
    {}
    ~Handle()
    {
        if (*this)
            ::CloseHandle(m_handle);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    HANDLE Get() const { return m_handle; }
    explicit operator bool() const { return m_handle != INVALID_HANDLE_VALUE; }

private:
    HANDLE m_handle;
};

/// Calls `operation` again for a while as long as it fails because another program has the file.
/// The last failure is the system's last error.
template <typename Operation>
bool WithPatience(Operation operation)
{
    QElapsedTimer waited;
    waited.start();
    for (;;) {
        if (operation())
            return true;
        const DWORD failure = ::GetLastError();
        if ((failure != ERROR_SHARING_VIOLATION && failure != ERROR_ACCESS_DENIED) ||
            waited.elapsed() >= PatienceMs) {
            ::SetLastError(failure);
            return false;
        }
        ::Sleep(PauseMs);
    }
}

/// The system's text for its last error.
QString LastError()
{
    return qt_error_string(int(::GetLastError())).trimmed();
}

bool Exists(const QString& native)
{
    return ::GetFileAttributesW(Wide(native)) != INVALID_FILE_ATTRIBUTES;
}

/// For Qt every name that ends so is a shortcut, also that of a file that does not exist.
bool IsShortcut(const QString& path)
{
    return QFileInfo(path).isShortcut() && Exists(Native(path));
}

/// A name that is free in the folder of `target`, and says nothing of the target's own, which may
/// be as long as names can be.
QString TemporaryBeside(const QString& target)
{
    const QString folder = QFileInfo(target).absolutePath();
    QString native;
    do
        native = Native(QStringLiteral("%1/.copy-%2")
                            .arg(folder)
                            .arg(QRandomGenerator::global()->generate(), 8, 16, QChar(u'0')));
    while (Exists(native));
    return native;
}

void RemoveTemporary(const QString& native)
{
    // The copy of a read-only file is read-only, and such a file is not deleted.
    ::SetFileAttributesW(Wide(native), FILE_ATTRIBUTE_NORMAL);
    ::DeleteFileW(Wide(native));
}

/// Writes a file's times back as they were. The runtime's function knows whole seconds only.
void RestoreTimes(const QString& native, const WIN32_FILE_ATTRIBUTE_DATA& before)
{
    const Handle file(native, FILE_WRITE_ATTRIBUTES);
    if (file)
        ::SetFileTime(file.Get(), nullptr, &before.ftLastAccessTime, &before.ftLastWriteTime);
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

bool PathExists(const QString& path)
{
    return QFile::exists(path) || IsShortcut(path);
}

bool IsFile(const QString& path)
{
    return QFileInfo(path).isFile() || IsShortcut(path);
}

bool IsFolder(const QString& path)
{
    return QFileInfo(path).isDir() && !IsShortcut(path);
}

QDateTime LastModified(const QString& path)
{
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!IsShortcut(path) ||
        !::GetFileAttributesExW(Wide(Native(path)), GetFileExInfoStandard, &data))
        return QFileInfo(path).lastModified();
    const quint64 time =
        quint64(data.ftLastWriteTime.dwHighDateTime) << 32 | data.ftLastWriteTime.dwLowDateTime;
    return QDateTime::fromMSecsSinceEpoch(qint64(time / 10'000) - MsFrom1601To1970);
}

bool RenameFile(const QString& path, const QString& newPath, QString* error)
{
    // Qt renames no shortcut that leads nowhere.
    if (IsShortcut(path)) {
        const bool renamed = ::MoveFileExW(Wide(Native(path)), Wide(Native(newPath)), 0) != 0;
        *error = LastError();
        return renamed;
    }
    QFile file(path);
    const bool renamed = file.rename(newPath);
    *error = file.errorString();
    return renamed;
}

QFileInfoList ListEntries(const QDir& dir, const QStringList& patterns, QDir::Filters filters)
{
    QFileInfoList entries = dir.entryInfoList(patterns, filters, QDir::NoSort);
    entries.removeIf([](const QFileInfo& entry) { return entry.isShortcut(); });
    if (!filters.testFlag(QDir::Files))
        return entries;
    // Those that lead to folders, or nowhere, are listed with these filters only.
    for (const QFileInfo& entry :
         dir.entryInfoList(patterns, filters | QDir::AllDirs | QDir::System, QDir::NoSort))
        if (entry.isShortcut())
            entries.append(entry);
    return entries;
}

bool IsWritable(const QString& path)
{
    const DWORD attributes = ::GetFileAttributesW(Wide(Native(path)));
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_READONLY);
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
    if (!PathExists(path) || !IsWritable(path))
        return false;
    const QString native = Native(path);
    WIN32_FILE_ATTRIBUTE_DATA before;
    if (!::GetFileAttributesExW(Wide(native), GetFileExInfoStandard, &before))
        return false;
    struct _stat64i32 status = {};
    const bool isForRuntime = RuntimeTakesPath(native);
    if (isForRuntime && ::_wstat64i32(Wide(native), &status) != 0)
        return false;
    const DWORD attributes = ::GetFileAttributesW(Wide(native));
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return false;
    QFile file(path);
    if (!file.open(QIODevice::Append))
        return true;
    file.close();
    if (isForRuntime) {
        // The runtime takes the bytes in the ANSI code page, so that this misses paths with
        // characters outside it.
        struct __utimbuf64 times = {status.st_atime, status.st_mtime};
        ::_utime64(path.toUtf8().constData(), &times);
    }
    RestoreTimes(native, before);
    ::SetFileAttributesW(Wide(native), attributes);
    return false;
}

QString WhyForbidden(const QString& path)
{
    // Joined as text: the system's own way to make a path absolute drops dots and blanks at its
    // end.
    const QString forbidden =
        ForbiddenWindowsName(QDir::cleanPath(QDir::current().absoluteFilePath(path)));
    return forbidden.isEmpty()
               ? QString()
               : QStringLiteral("Windows does not allow the name \"%1\"").arg(forbidden);
}

bool CopyFileBytes(const QString& source, const QString& target, QString* error)
{
    *error = WhyForbidden(target);
    if (!error->isEmpty())
        return false;
    const QString native = Native(target);
    if (Exists(native)) {
        *error = QStringLiteral("Destination file exists");
        return false;
    }
    const QString temporary = TemporaryBeside(target);
    // Moved without the flag to replace: a file that came into being meanwhile stays.
    if (::CopyFileW(Wide(Native(source)), Wide(temporary), TRUE) &&
        WithPatience([&] { return ::MoveFileExW(Wide(temporary), Wide(native), 0) != 0; }))
        return true;
    *error = ::GetLastError() == ERROR_ALREADY_EXISTS ? QStringLiteral("Destination file exists")
                                                      : LastError();
    RemoveTemporary(temporary);
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
    const bool flushed = WithPatience([&] {
        const Handle file(native, GENERIC_WRITE);
        return file && ::FlushFileBuffers(file.Get());
    });
    if (!flushed)
        *error = QStringLiteral("Cannot flush %1: %2").arg(path, LastError());
    if (readOnly)
        ::SetFileAttributesW(Wide(native), attributes);
    return flushed;
}

} // namespace Halvern::FileLink
