// SPDX-License-Identifier: Apache-2.0

#include "support/FileOperations.h"

#include "base/Directory.h"
#include "base/FileAttributes.h"
#include "base/FileCopy.h"
#include "base/FileLock.h"
#include "base/FileRenaming.h"
#include "base/FileStatus.h"
#include "base/KnownFolders.h"
#include "base/NativePath.h"
#include "base/PathText.h"
#include "base/Units.h"
#include "base/WindowsNames.h"

namespace Halvern::FileLink {

namespace {

using Base::Units;

constexpr bool IsWindows = Base::ThisSystem == Base::System::Windows;

std::filesystem::path Native(const QString& path)
{
    return Base::NativePath(Units(path));
}

QString Text(const std::filesystem::path& path)
{
    return QStringView(Base::PathText(path)).toString();
}

bool Report(const Base::FileResult& result, QString* error)
{
    if (!result)
        *error = QString::fromStdString(result.Text());
    return bool(result);
}

/// "D:" alone or with a slash after it: what follows does not depend on a current folder.
bool HasDriveRoot(const QString& path)
{
    return Base::HasDrive(Units(path)) && (path.size() == 2 || path[2] == u'/');
}

/// For Qt every name that ends so is a shortcut, also that of a file that does not exist. Elsewhere
/// there are none, and Qt would ask the disk for nothing.
bool IsShortcut(const QString& path)
{
    return IsWindows && QFileInfo(path).isShortcut() && Base::Exists(Native(path));
}

} // namespace

QString AbsoluteFolderOf(const QString& file)
{
    const QFileInfo info(file);
    const bool hasForeignDrive =
        !IsWindows && file.contains(u':') && !Base::IsPosixAbsolutePath(Units(file));
    return hasForeignDrive ? info.path() : info.absolutePath();
}

QString RelativePathFrom(const QString& folder, const QString& path)
{
    if (IsWindows || !HasDriveRoot(folder) || !HasDriveRoot(path) ||
        folder[0].toLower() != path[0].toLower())
        return QDir(folder).relativeFilePath(path);
    return QDir(folder.mid(2) + u'/').relativeFilePath(path.mid(2));
}

QString GetExecutableFilePath()
{
    return Text(Base::ProgramFile());
}

QString GetCommonAppDataPath()
{
    return Text(Base::CommonDataFolder());
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
    if (!IsShortcut(path))
        return QFileInfo(path).lastModified();
    return QDateTime::fromMSecsSinceEpoch(Base::ReadFileStatus(Native(path)).modified / 1'000'000);
}

bool RenameFile(const QString& path, const QString& newPath, QString* error)
{
    // Qt renames no shortcut that leads nowhere.
    if (IsShortcut(path))
        return Report(Base::RenameToFree(Native(path), Native(newPath)), error);
    QFile file(path);
    const bool renamed = file.rename(newPath);
    *error = file.errorString();
    return renamed;
}

QFileInfoList ListEntries(const QDir& dir, const QStringList& patterns, QDir::Filters filters)
{
    QFileInfoList entries = dir.entryInfoList(patterns, filters, QDir::NoSort);
    if (!IsWindows)
        return entries;
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
    return Base::IsWritable(Native(path));
}

ReadOnlyState ClearReadOnly(const QString& path, QFile::Permissions permissions)
{
    if (!IsWindows)
        return {Base::AllowWriting(Native(path)).bits};
    QFile(path).setPermissions(permissions);
    return {};
}

void RestoreReadOnly(const QString& path, ReadOnlyState state, QFile::Permissions permissions)
{
    if (!IsWindows)
        Base::RestoreWriting(Native(path), {state.writeBits});
    else
        QFile(path).setPermissions(permissions);
}

void HideFolder(const QString& path)
{
    Base::Hide(Native(path));
}

QString WhyForbidden(const QString& path)
{
    // Joined as text: the system's own way to make a path absolute drops dots and blanks at its
    // end.
    const QString absolute = QDir::cleanPath(QDir::current().absoluteFilePath(path));
    const std::u16string_view name = Base::ForbiddenName(Units(absolute));
    return name.empty() ? QString()
                        : QStringLiteral("Windows does not allow the name \"%1\"")
                              .arg(QStringView(name).toString());
}

bool IsFileLocked(const QString& path)
{
    return PathExists(path) && Base::IsFileLocked(Native(path));
}

bool CopyFileBytes(const QString& source, const QString& target, QString* error)
{
    return Report(Base::CopyFileBytes(Native(source), Native(target)), error);
}

bool FlushToDisk(const QString& path, QString* error)
{
    return Report(Base::FlushFile(Native(path)), error);
}

} // namespace Halvern::FileLink
