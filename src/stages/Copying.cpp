// SPDX-License-Identifier: Apache-2.0

#include "stages/Copying.h"

#include "stages/FileReplacement.h"
#include "stages/FileTreeLog.h"
#include "stages/TargetLinks.h"
#include "support/FileOperations.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <algorithm>

namespace Halvern::FileLink::Stages {

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

struct CopyCounters
{
    quint32 copied = 0;
    quint32 foldersCreated = 0;
    quint32 failed = 0;
    quint32 skipped = 0;
};

bool SkipCopy(const FileMappingPointer& mapping)
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

bool CopyAll(const StageContext& context, const FileMappingList& files, bool move,
             CopyCounters& counters)
{
    for (const FileMappingPointer& mapping : files) {
        if (context.IsCanceled())
            return false;
        const bool selected = mapping->HasFlag(FileMapping::Selected);
        if (SkipCopy(mapping)) {
            ++counters.skipped;
        } else if (!mapping->IsFolder()) {
            ++(CopyFile(context, mapping, move && selected) ? counters.copied : counters.failed);
        } else if (selected) {
            const QFileInfo source(mapping->GetSourceFile());
            const bool hidden = source.exists() && source.isHidden();
            const bool made =
                CreateFolder(context, mapping->GetTargetFile(), hidden, mapping->GetSourceFile());
            ++(made ? counters.foldersCreated : counters.failed);
        }
    }
    return true;
}

bool RemoveMovedFolders(const StageContext& context, const FileMappingList& files)
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
        if (context.IsCanceled())
            return false;
        const QFileInfo info(folder);
        if (info.exists() && info.isDir())
            QDir(info.absolutePath()).rmdir(info.fileName());
    }
    return true;
}

bool CopyEverything(const StageContext& context)
{
    if (context.HasFilesWhichSupportFileLinks())
        LogFileTree(context, true);
    FILELINK_LOG_FOR(Operation::CopyFiles, LogLevel::Info, QStringLiteral("Begin copying files"));
    const LogFinally finally(&ModuleLogger(), LogLevel::Info,
                             QStringLiteral("Finished copying files"));
    const FileMappingList files = context.Files();
    if (files.isEmpty())
        return false;

    const bool move = context.HasOption(Global::MoveFiles);
    CopyCounters counters;
    if (!CopyAll(context, files, move, counters))
        return false;
    if (move && !RemoveMovedFolders(context, files))
        return false;
    FILELINK_LOG_FOR(
        Operation::CopyFiles, LogLevel::Info,
        QStringLiteral("Finished copying files. Copied: %1, Folders created: %2, Failed: "
                       "%3, Skipped: %4, Total: %5")
            .arg(counters.copied)
            .arg(counters.foldersCreated)
            .arg(counters.failed)
            .arg(counters.skipped)
            .arg(files.size()));
    ComputeTargetFileLinks(context);
    if (context.HasFilesWhichSupportFileLinks())
        LogFileTree(context, false);
    return true;
}

} // namespace

bool CopyFiles(const StageContext& context)
{
    return RunStage(context, Stage::CopyFiles, Operation::CopyFiles,
                    [&] { return CopyEverything(context); });
}

bool CreateFolder(const StageContext& context, const QString& path, bool hidden,
                  const QString& source)
{
    if (path.isEmpty()) {
        context.Report(Stage::CopyFiles, ProblemKind::NoTarget, source);
        return false;
    }
    const QString forbidden = WhyForbidden(path);
    if (!forbidden.isEmpty()) {
        // As when the system refuses a name, which it does not do with all of these.
        FILELINK_LOG_FOR(Operation::CreateFolder, LogLevel::Error,
                         QStringLiteral("Failed to create folder %1").arg(path));
        FILELINK_PROBLEM(context.problems.get(), Operation::CreateFolder, LogLevel::Error,
                         QStringLiteral("%1: %2").arg(path, forbidden),
                         {Stage::CopyFiles, ProblemKind::NameRefused, source, forbidden, {}});
        context.signals.folderCreated(path);
        return false;
    }
    const QDir folder(path);
    if (folder.exists())
        return true;
    if (!folder.mkpath(folder.absolutePath()))
        FILELINK_PROBLEM(context.problems.get(), Operation::CreateFolder, LogLevel::Error,
                         QStringLiteral("Failed to create folder %1").arg(folder.absolutePath()),
                         {Stage::CopyFiles, ProblemKind::FolderNotMade, source, {}, {}});
    context.signals.folderCreated(path);
    if (hidden && folder.exists())
        HideFolder(path);
    return folder.exists();
}

} // namespace Halvern::FileLink::Stages
