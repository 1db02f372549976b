// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <filesystem>
#include <functional>

namespace Halvern::Jobs {

/// An argument as an absolute, cleaned path with forward slashes; empty for an empty argument.
QString AbsolutePath(const QString& argument);
/// What tells the files that absolute paths name from each other: on Windows letter case does not.
QString PathKey(const QString& path);
/// Equal for paths whose names are alike but for letter case and the form of their characters.
QString FoldedKey(const QString& path);
std::filesystem::path Native(const QString& path);
/// Both exist, and the disk says that they are one file.
bool IsSameFile(const QString& a, const QString& b);
/// True when the cloud cache folder is the file's place on the disk, also through symbolic links:
/// a folder beside it whose name differs in letter case is another one, where the disk knows.
/// Requires a session.
bool IsInCloudFolder(const QString& path);
/// What lies in the cloud cache folder, by the path that begins with that folder as it is set:
/// another one may lead there through symbolic links. Empty for what lies elsewhere.
QString PlaceInCloudFolder(const QString& path);
/// Where a path leads, through symbolic links; what does not exist stays as it is at its end.
QString RealPath(const QString& path);
/// True when `path` is `folder` or lies below it, without regard to letter case.
bool IsInFolder(const QString& path, const QString& folder);
/// True also for a symbolic link that leads nowhere. A shortcut of Windows (.lnk) is the file that
/// it is, and no folder, whatever it leads to.
bool ExistsOnDisk(const QString& path);
bool IsFolder(const QString& path);
bool IsShortcut(const QString& path);
/// No URL: no ":" at index 2 or later, but in "//?/D:/x". On POSIX a path that begins with one "/"
/// is local whatever else it holds.
bool IsLocalPath(const QString& path);
/// The path that a link leads to, as the module finds it; a URL as it stands.
QString ResolveLink(const QString& text, const QString& holder);
/// Whether a link's text goes down into a folder and up again, as "lib/../part.stl": programs only
/// follow it where that folder is.
bool GoesBackUp(const QString& text);
/// The folders that it needs for that, from the folder of `holder`.
QStringList FoldersOnTheWay(const QString& text, const QString& holder);
/// What the module hands to a plug-in as the new text of a link inside `holder` that leads to
/// `file`: the way there. A file on another drive keeps its absolute path.
QString WayFrom(const QString& holder, const QString& file);
/// The first of "a (2).prt", "a (3).prt" ... beside `path`, "a.prt", that is not taken.
QString FreePath(const QString& path, const std::function<bool(const QString&)>& isTaken);
/// The same from a number on, which becomes that of the answer.
QString FreePath(const QString& path, int& number,
                 const std::function<bool(const QString&)>& isTaken);

} // namespace Halvern::Jobs
