// SPDX-License-Identifier: Apache-2.0

#include "services/Platform.h"

#include "services/Paths.h"
#include "services/WindowsPaths.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QStandardPaths>

#include <windows.h>

#include <shlobj.h>

namespace Halvern::SyncServices::Platform {

namespace {

// Windows counts from the year 1601.
constexpr qint64 MsFrom1601To1970 = 11'644'473'600'000;

const wchar_t* Wide(const QString& path)
{
    return reinterpret_cast<const wchar_t*>(path.utf16());
}

QString Native(const QString& path)
{
    return WindowsApiPath(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
}

/// Makes a folder whose path is absolute and clean, and those above it.
DWORD CreateFolders(const QString& path)
{
    const QString native = WindowsApiPath(path);
    if (::CreateDirectoryW(Wide(native), nullptr))
        return ERROR_SUCCESS;
    DWORD failure = ::GetLastError();
    const QString parent = ParentPath(path);
    if (failure == ERROR_PATH_NOT_FOUND && !parent.isEmpty()) {
        failure = CreateFolders(parent);
        if (failure == ERROR_SUCCESS && !::CreateDirectoryW(Wide(native), nullptr))
            failure = ::GetLastError();
    }
    // Another process may have made it meanwhile.
    return QFileInfo(path).isDir() ? DWORD(ERROR_SUCCESS) : failure;
}

qint64 Join(DWORD high, DWORD low)
{
    return static_cast<qint64>((static_cast<quint64>(high) << 32) | low);
}

} // namespace

FileIdentity ReadFileIdentity(const QString& path)
{
    const QString native = Native(path);
    const HANDLE handle = ::CreateFileW(
        Wide(native), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return {};
    BY_HANDLE_FILE_INFORMATION information;
    FileIdentity identity;
    if (::GetFileInformationByHandle(handle, &information)) {
        identity.exists = true;
        identity.isFolder = information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
        identity.device = information.dwVolumeSerialNumber;
        identity.index =
            static_cast<quint64>(Join(information.nFileIndexHigh, information.nFileIndexLow));
        identity.names = information.nNumberOfLinks;
        identity.size = Join(information.nFileSizeHigh, information.nFileSizeLow);
        identity.modified = Join(information.ftLastWriteTime.dwHighDateTime,
                                 information.ftLastWriteTime.dwLowDateTime);
    }
    ::CloseHandle(handle);
    return identity;
}

FileState ReadFileState(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isShortcut())
        return info.exists() ? FileState{info.lastModified(), info.size()} : FileState();
    // Qt would answer with the time and size of what the shortcut leads to.
    const FileIdentity identity = ReadFileIdentity(path);
    if (!identity.exists)
        return {};
    return {QDateTime::fromMSecsSinceEpoch(identity.modified / 10'000 - MsFrom1601To1970),
            identity.size};
}

Qt::CaseSensitivity FileNameCase()
{
    return Qt::CaseInsensitive;
}

bool OpenRegularFile(const QString& path, QFile& file)
{
    const QFileInfo info(path);
    if (!info.isShortcut() && (!info.isFile() || info.isSymLink()))
        return false;
    file.setFileName(path);
    return file.open(QFile::ReadOnly | QFile::Unbuffered);
}

bool CloneFile(QFile&, QFile&)
{
    return false;
}

bool MakeFolder(const QString& path, QString* reason)
{
    const DWORD failure = CreateFolders(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    if (failure != ERROR_SUCCESS)
        *reason = qt_error_string(int(failure)).trimmed();
    return failure == ERROR_SUCCESS;
}

bool Rename(const QString& from, const QString& to)
{
    return ::MoveFileExW(Wide(Native(from)), Wide(Native(to)), MOVEFILE_REPLACE_EXISTING);
}

bool IsDriveRelative(const QString& path)
{
    return SyncServices::IsDriveRelative(path);
}

QString ConfigFolder()
{
    wchar_t folder[MAX_PATH] = {};
    if (!::SHGetSpecialFolderPathW(nullptr, folder, CSIDL_APPDATA, FALSE))
        return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return QDir::fromNativeSeparators(QString::fromWCharArray(folder));
}

QString DataFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
}

QString ProgramFolder()
{
    wchar_t program[32768] = {};
    const DWORD size = ::GetModuleFileNameW(nullptr, program, 32768);
    if (size == 0 || size >= 32768)
        return {};
    return QFileInfo(QDir::fromNativeSeparators(QString::fromWCharArray(program))).path();
}

} // namespace Halvern::SyncServices::Platform
