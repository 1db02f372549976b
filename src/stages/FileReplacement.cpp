// SPDX-License-Identifier: Apache-2.0

#include "stages/FileReplacement.h"

#include "support/FileOperations.h"
#include "support/PathUtilities.h"

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace Halvern::FileLink::Stages {

static_assert(int(QFile::WriteOther) == 0x2);
static_assert(int(QFile::WriteOwner) == 0x2000);

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

void ReportCopyFailure(IProblemSink* sink, const QString& source, const QString& target,
                       ProblemKind kind, const QString& error)
{
    FILELINK_PROBLEM(sink, Operation::CopyFile, LogLevel::Error,
                     QStringLiteral("Failed to copy file %1 to %2. Error: %3")
                         .arg(source)
                         .arg(target)
                         .arg(error),
                     {Stage::CopyFiles, kind, source, error, {}});
}

bool MakeParentFolder(const StageContext& context, const QString& source, const QString& target)
{
    const QDir folder(QFileInfo(target).absolutePath());
    if (folder.exists())
        return true;
    if (!folder.mkpath(folder.absolutePath()))
        FILELINK_PROBLEM(
            context.problems.get(), Operation::CopyFile, LogLevel::Error,
            QStringLiteral("Failed to create folder %1").arg(folder.absolutePath()),
            {Stage::CopyFiles,
             ProblemKind::FolderNotMade,
             source,
             QStringLiteral("The folder %1 could not be made").arg(folder.absolutePath()),
             {}});
    if (!folder.exists())
        return false;
    context.signals.folderCreated(folder.absolutePath());
    return true;
}

/// The name under which the file is parked; empty when it could not be renamed. The copy then fails
/// on the existing name.
QString ParkExistingFile(const StageContext& context, const QString& source, const QString& target)
{
    context.services->SaveBaseFile(target);
    const QString parked = MakeUniqueFilePath(
        QStringLiteral("%1.%2").arg(target, QStringLiteral("tmp")), QStringLiteral("_%1"));
    QString error;
    if (RenameFile(target, parked, &error))
        return parked;
    FILELINK_PROBLEM(context.problems.get(), Operation::CopyFile, LogLevel::Error,
                     QStringLiteral("Failed to rename existing file %1 to temp file %2. Error: %3")
                         .arg(target)
                         .arg(parked)
                         .arg(error),
                     {Stage::CopyFiles,
                      ProblemKind::TargetNotParked,
                      source,
                      QStringLiteral("The existing file could not be put aside: ") + error,
                      {}});
    return QString();
}

bool DeleteMovedSource(const StageContext& context, const QString& source, const QString& target)
{
    // A power cut must not find the source gone and the copy not yet on the disk.
    QString error;
    if (FlushToDisk(target, &error)) {
        ClearReadOnly(source, QFile::WriteOther);
        QFile file(source);
        if (file.remove())
            return true;
        error = file.errorString();
    }
    FILELINK_PROBLEM(
        context.problems.get(), Operation::CopyFile, LogLevel::Error,
        QStringLiteral("Failed to delete source file %1 after copying it to target for "
                       "move operation. Error: %2")
            .arg(source)
            .arg(error),
        {Stage::CopyFiles,
         ProblemKind::SourceNotDeleted,
         source,
         QStringLiteral("The source was copied, but could not be deleted: ") + error,
         {}});
    return false;
}

void DeleteParkedFile(const StageContext& context, const QString& source, const QString& parked,
                      const QString& target)
{
    QString error;
    if (FlushToDisk(target, &error)) {
        QFile file(parked);
        if (!IsWritable(parked))
            ClearReadOnly(parked, file.permissions() | QFile::WriteOwner);
        if (file.remove())
            return;
        error = file.errorString();
    }
    FILELINK_PROBLEM(
        context.problems.get(), Operation::CopyFile, LogLevel::Error,
        QStringLiteral("Failed to delete temp file %1. Error: %2").arg(parked).arg(error),
        {Stage::CopyFiles,
         ProblemKind::ParkedFileNotDeleted,
         source,
         QStringLiteral("The replaced file lies at %1: %2").arg(parked, error),
         {}});
}

/// Nothing is made or put aside before this has said yes: the system would do that to the file "a"
/// for "a.".
bool CanBeCopied(const StageContext& context, const QString& source, const QString& target)
{
    IProblemSink* const sink = context.problems.get();
    if (source.isEmpty() || target.isEmpty()) {
        context.Report(Stage::CopyFiles,
                       source.isEmpty() ? ProblemKind::FileMissing : ProblemKind::NoTarget, source);
        return false;
    }
    if (!PathExists(source)) {
        FILELINK_PROBLEM(sink, Operation::CopyFile, LogLevel::Error,
                         QStringLiteral("Failed to copy file %1 to %2. Source file is not found.")
                             .arg(source)
                             .arg(target),
                         {Stage::CopyFiles, ProblemKind::FileMissing, source, {}, {}});
        return false;
    }
    const QString error = WhyForbidden(target);
    if (!error.isEmpty()) {
        ReportCopyFailure(sink, source, target, ProblemKind::NameRefused, error);
        return false;
    }
    if (IsFolder(target)) {
        context.Report(Stage::CopyFiles, ProblemKind::FolderInTheWay, source);
        return false;
    }
    return MakeParentFolder(context, source, target);
}

/// False when the file that stands at the target must stay. Otherwise `parked` is its new name, if
/// it has one.
bool MakeWay(const StageContext& context, const QString& source, const QString& target,
             QString& parked)
{
    if (!PathExists(target))
        return true;
    if (!IsWritable(target)) {
        FILELINK_PROBLEM(context.problems.get(), Operation::CopyFile, LogLevel::Info,
                         QStringLiteral("Copy skipped for file %1. Target file %2 exists and is "
                                        "read-only.")
                             .arg(source)
                             .arg(target),
                         {Stage::CopyFiles, ProblemKind::TargetReadOnly, source, {}, {}});
        return false;
    }
    parked = ParkExistingFile(context, source, target);
    return true;
}

void RecordCopy(const StageContext& context, const FileMappingPointer& mapping, bool deleteSource)
{
    mapping->UpdateSourceFileProperties();
    mapping->UpdateTargetFileProperties();
    context.history->AddOrUpdate(mapping);
    mapping->SetFlag(FileMapping::Copied, true);
    if (deleteSource)
        context.signals.fileMoved(mapping->GetSourceFile(), mapping->GetTargetFile());
    else
        context.signals.fileCopied(mapping->GetSourceFile(), mapping->GetTargetFile());
}

} // namespace

bool CopyFile(const StageContext& context, const FileMappingPointer& mapping, bool deleteSource)
{
    if (!mapping)
        return false;
    if (mapping->AreSourceAndTargetSame())
        return true;
    const QString source = mapping->GetSourceFile();
    const QString target = mapping->GetTargetFile();
    QString parked;
    if (!CanBeCopied(context, source, target) || !MakeWay(context, source, target, parked))
        return false;
    QString error;
    if (!CopyFileBytes(source, target, &error)) {
        ReportCopyFailure(context.problems.get(), source, target, ProblemKind::NotCopied, error);
        return false;
    }
    if (deleteSource && !DeleteMovedSource(context, source, target))
        return false;
    mapping->SetCopyDate(QDateTime::currentDateTime());
    FILELINK_LOG_FOR(
        Operation::CopyFile, LogLevel::Debug,
        QStringLiteral("File copied successfully from %1 to %2").arg(source).arg(target));
    if (!parked.isEmpty())
        DeleteParkedFile(context, source, parked, target);
    RecordCopy(context, mapping, deleteSource);
    return true;
}

} // namespace Halvern::FileLink::Stages
