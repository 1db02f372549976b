// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QString>

/// What differs between operating systems: Platform_posix.cpp and Platform_windows.cpp.
namespace Halvern::SyncServices::Platform {

/// What the file system knows a file by. Symbolic links are followed.
struct FileIdentity
{
    bool exists = false;
    bool isFolder = false;
    quint64 device = 0;
    quint64 index = 0;
    /// How many names the file has.
    quint64 names = 0;
    qint64 size = -1;
    /// Opaque, but the same while the file is not written.
    qint64 modified = 0;
};

FileIdentity ReadFileIdentity(const QString& path);

/// When a file was written last, and its size; nothing of a file that does not exist. A shortcut of
/// Windows (.lnk) is the file that it is.
struct FileState
{
    QDateTime lastModified;
    qint64 size = -1;
};

FileState ReadFileState(const QString& path);

/// Whether names that differ in letter case alone name two files on an ordinary disk.
Qt::CaseSensitivity FileNameCase();

/// Opens a regular file for reading. False for anything else: a symbolic link is not followed and a
/// pipe is not waited for.
bool OpenRegularFile(const QString& path, QFile& file);

/// Makes the open file `target` share the bytes of the open file `source` until one is written.
/// False where the file system cannot.
bool CloneFile(QFile& source, QFile& target);

/// Makes a folder and those above it. False with the system's reason.
bool MakeFolder(const QString& path, QString* reason);
/// Gives a file another name on the same disk; a file that has that name is replaced.
bool Rename(const QString& from, const QString& to);

/// Whether a path that looks absolute leads to different places, depending on the current drive.
bool IsDriveRelative(const QString& path);

/// The user's folder for settings; the one for data.
QString ConfigFolder();
QString DataFolder();
/// The folder of the running program; empty when it cannot be told.
QString ProgramFolder();

} // namespace Halvern::SyncServices::Platform
