// SPDX-License-Identifier: Apache-2.0

#include "importer/FileLinkImporterImp.h"
#include "support/FileOperations.h"
#include "support/Problems.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <algorithm>

namespace Halvern::FileLink {

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

constexpr char CreateFolderOperation[] =
    "bool Halvern::FileLink::FileLinkImporterImp::CreateFolder(const QString&, bool)";

} // namespace

bool FileLinkImporterImp::CopyFiles()
{
    if (HasFilesWhichSupportFileLinks())
        LogFileTree(true);
    FILELINK_LOG(LogLevel::Info, QStringLiteral("Begin copying files"));
    const LogFinally finally(&ModuleLogger(), LogLevel::Info,
                             QStringLiteral("Finished copying files"));
    const FileMappingList files = Files();
    if (files.isEmpty())
        return false;

    const bool move = HasOption(Global::MoveFiles);
    CopyCounters counters;
    if (!CopyAll(files, move, counters))
        return false;
    if (move && !RemoveMovedFolders(files))
        return false;
    FILELINK_LOG(LogLevel::Info,
                 QStringLiteral("Finished copying files. Copied: %1, Folders created: %2, Failed: "
                                "%3, Skipped: %4, Total: %5")
                     .arg(counters.copied)
                     .arg(counters.foldersCreated)
                     .arg(counters.failed)
                     .arg(counters.skipped)
                     .arg(files.size()));
    ComputeTargetFileLinks();
    if (HasFilesWhichSupportFileLinks())
        LogFileTree(false);
    return true;
}

bool FileLinkImporterImp::CopyAll(const FileMappingList& files, bool move, CopyCounters& counters)
{
    for (const FileMappingPointer& mapping : files) {
        if (CheckIfCanceled())
            return false;
        const bool selected = mapping->HasFlag(FileMapping::Selected);
        if (SkipCopy(mapping)) {
            ++counters.skipped;
        } else if (!mapping->IsFolder()) {
            ++(CopyFile(mapping, move && selected) ? counters.copied : counters.failed);
        } else if (selected) {
            const QFileInfo source(mapping->GetSourceFile());
            const bool hidden = source.exists() && source.isHidden();
            const bool made =
                CreateFolder(mapping->GetTargetFile(), hidden, mapping->GetSourceFile());
            ++(made ? counters.foldersCreated : counters.failed);
        }
    }
    return true;
}

bool FileLinkImporterImp::SkipCopy(const FileMappingPointer& mapping)
{
    const bool isInPlace = mapping->AreSourceAndTargetSame();
    if (!isInPlace && !mapping->HasFlag(FileMapping::NotFilePath) &&
        !mapping->HasFlag(FileMapping::Unchanged) && !mapping->HasFlag(FileMapping::NoCopy))
        return false;
    // A selected file that is its own target, or stays where it is on purpose, counts as present
    // in the target.
    if (mapping->HasFlag(FileMapping::Selected | FileMapping::NoCopy) ||
        (isInPlace && mapping->HasFlag(FileMapping::Selected)))
        mapping->SetFlag(FileMapping::Copied, true);
    return true;
}

bool FileLinkImporterImp::RemoveMovedFolders(const FileMappingList& files)
{
    QStringList folders;
    for (const FileMappingPointer& mapping : files)
        if (mapping->IsFolder() && mapping->HasFlag(FileMapping::Selected) &&
            !mapping->HasFlag(FileMapping::NoCopy))
            folders.append(mapping->GetSourceFile());
    // Descending: a folder comes before those whose path its own begins with.
    std::sort(folders.begin(), folders.end(),
              [](const QString& a, const QString& b) { return QString::compare(a, b) > 0; });
    for (const QString& folder : std::as_const(folders)) {
        if (CheckIfCanceled())
            return false;
        const QFileInfo info(folder);
        if (info.exists() && info.isDir())
            QDir(info.absolutePath()).rmdir(info.fileName());
    }
    return true;
}

bool FileLinkImporterImp::CreateFolder(const QString& path, bool hidden)
{
    return CreateFolder(path, hidden, path);
}

bool FileLinkImporterImp::CreateFolder(const QString& path, bool hidden, const QString& source)
{
    constexpr const char* operation = CreateFolderOperation;
    if (path.isEmpty()) {
        Report(Stage::CopyFiles, ProblemKind::NoTarget, source);
        return false;
    }
    const QString forbidden = WhyForbidden(path);
    if (!forbidden.isEmpty()) {
        // As when the system refuses a name, which it does not do with all of these.
        FILELINK_LOG_FOR(operation, LogLevel::Error,
                         QStringLiteral("Failed to create folder %1").arg(path));
        FILELINK_PROBLEM(m_problems.get(), operation, LogLevel::Error,
                         QStringLiteral("%1: %2").arg(path, forbidden),
                         {Stage::CopyFiles, ProblemKind::NameRefused, source, forbidden, {}});
        Q_EMIT FolderCreated(path);
        return false;
    }
    const QDir folder(path);
    if (folder.exists())
        return true;
    if (!folder.mkpath(folder.absolutePath()))
        FILELINK_PROBLEM(m_problems.get(), operation, LogLevel::Error,
                         QStringLiteral("Failed to create folder %1").arg(folder.absolutePath()),
                         {Stage::CopyFiles, ProblemKind::FolderNotMade, source, {}, {}});
    Q_EMIT FolderCreated(path);
    if (hidden && folder.exists())
        HideFolder(path);
    return folder.exists();
}

} // namespace Halvern::FileLink
