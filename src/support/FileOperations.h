// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::FileLink {

// Files and folders for texts of Qt: the rules stand in base/. Nothing here logs or throws.

/// The absolute folder of a file. On POSIX the folder of D:/t/a.asm is D:/t, not one below the
/// current folder.
QString AbsoluteFolderOf(const QString& file);
/// QDir::relativeFilePath, also for two paths on one drive where the system knows no drives.
QString RelativePathFrom(const QString& folder, const QString& path);
/// Path of the running program, from the system.
QString GetExecutableFilePath();
QString GetCommonAppDataPath();

// A shortcut of Windows (.lnk) is a file with bytes of its own and is copied as one, but Qt answers
// with what it leads to. These answer for the shortcut, and on POSIX as Qt does.

bool PathExists(const QString& path);
bool IsFile(const QString& path);
bool IsFolder(const QString& path);
QDateTime LastModified(const QString& path);
/// QFile::rename, with its text in `error` when it fails.
[[nodiscard]] bool RenameFile(const QString& path, const QString& newPath, QString* error);
/// QDir::entryInfoList, unsorted: a shortcut is among the files only, wherever it leads to.
QFileInfoList ListEntries(const QDir& dir, const QStringList& patterns, QDir::Filters filters);

/// Windows: the read-only attribute is not set. POSIX: the owner may write (not access(), which
/// says yes to root for everything). False for a file that does not exist.
bool IsWritable(const QString& path);

/// What ClearReadOnly changed.
struct ReadOnlyState
{
    quint32 writeBits = 0;
};

/// Makes a file writable for an operation. Windows sets exactly `permissions`, which there decide
/// the read-only attribute; POSIX adds the owner's write bit and touches nothing else.
ReadOnlyState ClearReadOnly(const QString& path, QFile::Permissions permissions);
/// Undoes it: Windows sets exactly `permissions`, POSIX the write bits that the file had.
void RestoreReadOnly(const QString& path, ReadOnlyState state, QFile::Permissions permissions);

/// Windows: sets the hidden attribute. POSIX: the name says it already.
void HideFolder(const QString& path);

/// Why no file or folder of this path can be made: one of its parts is a name that the system
/// forbids or takes for another one ("a." for "a"). Empty when there is no such part; on POSIX
/// always.
QString WhyForbidden(const QString& path);

/// True when another program holds the file. False for a file that does not exist, is read-only,
/// or cannot be asked. The probe leaves times and attributes as they were.
///
/// POSIX: a write lock of another process (flock or fcntl), or a file that cannot be opened for
/// append although its write bit is set.
bool IsFileLocked(const QString& path);

/// Copies a regular file's bytes, permissions and modification time to a name that does not exist
/// yet; the name appears only when the copy is complete. Shares blocks where the file system can.
/// The data is not flushed. False with `error`, and nothing left behind, on failure. A process that
/// is killed may leave a file .copy-... in the target's folder.
[[nodiscard]] bool CopyFileBytes(const QString& source, const QString& target, QString* error);

/// Waits until a file's data and its name are on the disk. False with `error` when the system could
/// not promise that.
[[nodiscard]] bool FlushToDisk(const QString& path, QString* error);

} // namespace Halvern::FileLink
