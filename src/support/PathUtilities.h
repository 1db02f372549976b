// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QDir>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::FileLink {

// Paths have forward slashes; to clean one means QDir::cleanPath. Nothing here logs or throws.

/// The first two characters are two slashes (backslashes count as slashes): a network path.
bool IsUncPath(const QString& path);
/// A network path that names a server, or a server and a share, and nothing in it.
bool IsShareRoot(const QString& path);
/// Not relative: holds a ":" or is a network path; on POSIX also one that begins with "/".
bool IsAbsolutePath(const QString& path);
/// Not URL-like: no ":" at index 2 or later. On POSIX a path that begins with one "/" is local
/// whatever else it holds.
bool IsLocalPath(const QString& path);

/// Cleans an absolute path, and resolves a relative one against the folder `base` or, with
/// `baseIsFile`, the folder of the file `base`: sub/x.prt against D:/t/a.asm is D:/t/sub/x.prt.
QString MakeAbsolutePath(const QString& path, const QString& base, bool baseIsFile);
/// The reverse; a path on another drive stays absolute.
QString MakeRelativePath(const QString& path, const QString& base, bool baseIsFile);
/// MakeAbsolutePath for a link path as a file stores it: cleaned first, then resolved against the
/// file that holds it.
QString ResolveLinkPath(const QString& linkPath, const QString& holder);

/// The entries of a folder as cleaned absolute paths, unsorted; for a path that is no directory,
/// the entries of its folder with its file name as the name filter. `nameFilter` may hold several
/// patterns separated by "|"; empty means all. `filters` 0 means files. With `recursive` each
/// folder's files come before its subfolders, and each subfolder is followed by its contents, in
/// which the same names are looked for. Symbolic links are followed, but not back into a folder
/// that is being listed or lies above one.
QStringList ListFilesRecursive(const QString& path, const QString& nameFilter,
                               const QDir::Filters& filters, bool recursive);

/// `path` itself when nothing exists there; otherwise the first free name with `pattern` (its %1
/// counting up from 2) between base name and suffix: " (%1)" gives D:/t/a (2).prt. Only the disk
/// is asked. Empty when no name was free.
QString MakeUniqueFilePath(const QString& path, const QString& pattern);
/// The same with a first decoration to try before the counter.
QString MakeUniqueFilePath(const QString& path, const QString& pattern,
                           const QString& firstDecoration);

/// MD5 of the UTF-8 bytes of the path as given, in lower-case hexadecimal.
QByteArray GetPathHash(const QString& path);

/// Path and folder of the running program.
QString GetApplicationFilePath();
QString GetApplicationFolder();
/// The machine's folder for data of all users: CSIDL_COMMON_APPDATA, on POSIX /usr/share.
QString GetCommonAppDataFolder();

/// Trimmed, cleaned, without slashes at both ends (a network path keeps the leading ones), with
/// forward slashes. Roots and paths that are not local stay.
QString NormalizeServerPath(const QString& path);
/// True when `path` lies below `folder` at any depth; a path is not under itself. Letter case does
/// not count.
bool IsPathUnder(const QString& folder, const QString& path);

} // namespace Halvern::FileLink
