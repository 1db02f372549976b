// SPDX-License-Identifier: Apache-2.0

#include "services/Platform.h"

#include "base/Directory.h"
#include "base/FileStatus.h"
#include "base/KnownFolders.h"
#include "base/NativePath.h"
#include "base/Units.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QStandardPaths>

namespace Halvern::SyncServices::Platform {

namespace {

QString Text(const std::filesystem::path& path)
{
    return QStringView(Base::PathText(path)).toString();
}

} // namespace

std::filesystem::path NativePath(const QString& path)
{
    return Base::NativePath(Base::Units(path));
}

FileState ReadFileState(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isShortcut())
        return info.exists() ? FileState{info.lastModified(), info.size()} : FileState();
    // Qt would answer with the time and size of what the shortcut leads to.
    const Base::FileStatus status = Base::ReadFileStatus(NativePath(path));
    if (!status.Exists())
        return {};
    return {QDateTime::fromMSecsSinceEpoch(status.modified / 1'000'000),
            static_cast<qint64>(status.size)};
}

bool MakeFolder(const QString& path, QString* reason)
{
    const QString folder = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    const Base::FileResult made = Base::MakeFolders(NativePath(folder));
    if (!made)
        *reason = QString::fromStdString(made.Text());
    return bool(made);
}

QString ConfigFolder()
{
    const QString folder = Text(Base::RoamingDataFolder());
    return folder.isEmpty()
               ? QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
               : folder;
}

QString DataFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
}

QString ProgramFolder()
{
    return Text(Base::ProgramFile().parent_path());
}

} // namespace Halvern::SyncServices::Platform
