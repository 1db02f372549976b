#include "services/Platform.h"

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

/// As functions of the system take it: from a length on they need a prefix.
QString Native(const QString& path)
{
    const QString native = QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath());
    if (native.size() < 248 || native.startsWith(u"\\\\?\\"))
        return native;
    return native.startsWith(u"\\\\") ? QStringLiteral("\\\\?\\UNC") + native.mid(1)
                                      : QStringLiteral("\\\\?\\") + native;
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
