// SPDX-License-Identifier: Apache-2.0

// A host of the module alone. It imports files with everything they link in one call, and prints
// what it copied:
//
//     one_shot CLOUD_FOLDER DATABASE FOLDER_BELOW FILE...
//
// Plug-ins are found beside the program, as corsync finds its own. Ends with 0 when every file
// given is in its place.

#include "filelink/FileLinkImporter.h"
#include "filelink/FileLinkManager.h"
#include "syncservices/FolderManager.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>

#include <cstdio>

using namespace Halvern;
using FileLink::FileLinkImporter;
using FileLink::FileLinkManager;
using SyncFolderManagerLib::FolderManager;
using SyncServices::FileMapping;

namespace {

void Print(const QString& line)
{
    std::puts(line.toUtf8().constData());
}

bool IsInPlace(const FileMapping& file)
{
    return file.HasFlagAny(FileMapping::Copied | FileMapping::Unchanged);
}

/// A lone file would get the folder's name if there were no such folder.
void MakeFolder(const QString& folder)
{
    QDir(FolderManager::GetInstance()->GetCloudCacheFolderPath(true)).mkpath(folder);
}

/// False when a file that was asked for is missing from the cloud cache folder.
bool Import(const QStringList& sources, const QString& folder)
{
    MakeFolder(folder);
    FileLinkImporter importer;
    QObject::connect(
        &importer, &FileLinkImporter::FileCopied,
        [](const QString& source, const QString& target) { Print(source + " -> " + target); });
    if (!importer.CopyToCloudCacheFolder(sources, folder, false, SyncServices::Global::NoCopyOption,
                                         {}))
        return false;
    bool complete = true;
    for (const auto& file : importer.GetFileSet()->GetFiles())
        if (sources.contains(file->GetSourceFile()))
            complete = complete && IsInPlace(*file);
    return complete;
} // The importer remembers what it copied when it is destroyed.

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QStringList arguments;
    for (const QString& argument : QCoreApplication::arguments().mid(1))
        arguments.append(QDir::fromNativeSeparators(argument));
    if (arguments.size() < 4) {
        Print("one_shot CLOUD_FOLDER DATABASE FOLDER_BELOW FILE...");
        return 2;
    }

    SyncServices::ServicesSettings settings;
    settings.cloudCacheFolder = arguments[0];
    settings.databaseFile = arguments[1];
    FolderManager::Configure(settings);
    FileLinkManager::Initialize();
    bool complete = false;
    if (FolderManager::GetInstance()->GetSyncDatabase())
        complete = Import(arguments.mid(3), arguments[2]);
    else
        Print(FolderManager::GetInstance()->GetLastError());
    FileLinkManager::Uninitialize();
    return complete ? 0 : 1;
}
