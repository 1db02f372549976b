// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>

#include <filesystem>

/// What base/ knows of the system, for texts of Qt.
namespace Halvern::SyncServices::Platform {

std::filesystem::path NativePath(const QString& path);

/// When a file was written last, and its size; nothing of a file that does not exist. A shortcut of
/// Windows (.lnk) is the file that it is.
struct FileState
{
    QDateTime lastModified;
    qint64 size = -1;
};

FileState ReadFileState(const QString& path);

/// Makes a folder and those above it. False with the system's reason.
bool MakeFolder(const QString& path, QString* reason);

/// The user's folder for settings; the one for data.
QString ConfigFolder();
QString DataFolder();
/// The folder of the running program; empty when it cannot be told.
QString ProgramFolder();

} // namespace Halvern::SyncServices::Platform
