// SPDX-License-Identifier: Apache-2.0

#include "stages/Repathing.h"

#include "plugins/LinkRecords.h"
#include "plugins/PluginLogger.h"
#include "plugins/PluginManager.h"
#include "support/FileOperations.h"
#include "support/Problems.h"

#include <QtCore/QFile>

namespace Halvern::FileLink::Stages {

static_assert(int(QFile::ReadOther | QFile::WriteOther) == 0x6);
static_assert(int(QFile::ReadOther) == 0x4);

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

using SyncPlugin::FileLinkInfo;

/// A read-only file can be written meanwhile, whatever the way out.
class WritableWhile
{
public:
    explicit WritableWhile(const QString& path) : m_path(path), m_wasReadOnly(!IsWritable(path))
    {
        if (m_wasReadOnly)
            m_state = ClearReadOnly(path, QFile::ReadOther | QFile::WriteOther);
    }
    ~WritableWhile()
    {
        if (m_wasReadOnly)
            RestoreReadOnly(m_path, m_state, QFile::ReadOther);
    }
    WritableWhile(const WritableWhile&) = delete;
    WritableWhile& operator=(const WritableWhile&) = delete;

private:
    const QString& m_path;
    bool m_wasReadOnly;
    ReadOnlyState m_state;
};

QList<FileLinkInfo> ToFileLinkInfos(const FileLinkList& links)
{
    QList<FileLinkInfo> infos;
    infos.reserve(links.size());
    for (const SyncServices::FileLink& link : links)
        infos.append(MakeFileLinkInfo(link.RefId, link.Path));
    return infos;
}

bool LinksCopiedFile(const StageContext& context, const FileMappingPointer& mapping, bool& canceled)
{
    for (const FileMappingPointer& linked : context.fileSet->GetSourceFileLinks(mapping)) {
        canceled = context.IsCanceled();
        if (canceled)
            return false;
        if (linked->HasFlag(FileMapping::Copied))
            return true;
    }
    return false;
}

bool MarkFilesToRepath(const StageContext& context)
{
    for (const FileMappingPointer& mapping : context.Files()) {
        if (context.IsCanceled())
            return false;
        if (mapping->IsFolder())
            continue;
        if (mapping->HasFlag(FileMapping::FileLinksNotSupported)) {
            FILELINK_LOG_FOR(
                Operation::RepathFiles, LogLevel::Debug,
                QStringLiteral("Repathing skipped for file %1. File links not supported "
                               "for this file type.")
                    .arg(mapping->GetSourceFile()));
            continue;
        }
        bool canceled = false;
        if (mapping->HasFlag(FileMapping::Copied) || LinksCopiedFile(context, mapping, canceled))
            mapping->SetFlag(FileMapping::NeedsRepath, true);
        if (canceled)
            return false;
    }
    return true;
}

bool RepathAll(const StageContext& context)
{
    if (context.fileSet && !context.fileSet->HasFilesWhichSupportFileLinks())
        return true;
    FILELINK_LOG_FOR(Operation::RepathFiles, LogLevel::Info,
                     QStringLiteral("Begin repathing file links in target"));
    const LogFinally finally(&ModuleLogger(), LogLevel::Info,
                             QStringLiteral("Finished repathing file links in target"));
    if (!context.fileSet || !MarkFilesToRepath(context))
        return false;
    bool result = true;
    for (const FileMappingPointer& mapping : context.Files()) {
        if (context.IsCanceled())
            return false;
        if (mapping->HasFlag(FileMapping::NeedsRepath))
            result = RepathMapping(context, mapping) && result;
    }
    return result;
}

} // namespace

bool RepathFiles(const StageContext& context)
{
    return RunStage(context, Stage::RepathFiles, Operation::RepathFiles,
                    [&] { return RepathAll(context); });
}

bool RepathMapping(const StageContext& context, const FileMappingPointer& mapping)
{
    if (mapping->IsFolder())
        return true;
    const QString target = mapping->GetTargetFile();
    if (!PathExists(target)) {
        FILELINK_PROBLEM(
            context.problems.get(), Operation::RepathMapping, LogLevel::Error,
            QStringLiteral("Failed to repath file links in %1. File not found.").arg(target),
            {Stage::RepathFiles,
             ProblemKind::FileMissing,
             target.isEmpty() ? mapping->GetSourceFile() : target,
             QStringLiteral("There is no copy whose links could be rewritten"),
             {}});
        return false;
    }
    if (IsFileLocked(target)) {
        FILELINK_PROBLEM(context.problems.get(), Operation::RepathMapping, LogLevel::Info,
                         QStringLiteral("Repathing skipped for file %1. File is locked. File will "
                                        "be repathed after it is unlocked.")
                             .arg(target),
                         {Stage::RepathFiles, ProblemKind::Locked, target, {}, {}});
        return false;
    }
    const FileLinkList links = mapping->GetTargetFileLinks();
    bool result = true;
    if (links.isEmpty())
        FILELINK_LOG_FOR(
            Operation::RepathMapping, LogLevel::Debug,
            QStringLiteral("Repathing skipped for file %1. No links found.").arg(target));
    else
        result = RepathFile(context, target, links);
    if (context.IsCanceled())
        return false;
    // Whatever the result: a file whose rewrite failed is not tried again.
    mapping->SetFlag(FileMapping::NeedsRepath, false);
    mapping->SetFlag(FileMapping::Repathed, true);
    mapping->UpdateSourceFileProperties();
    mapping->UpdateTargetFileProperties();
    if (PathExists(target))
        mapping->SetTargetFileLinksExtractedAtFileDate(LastModified(target));
    context.history->AddOrUpdate(mapping);
    return result;
}

bool RepathFile(const StageContext& context, const QString& path, const FileLinkList& links)
{
    return RepathFile(context, path, ToFileLinkInfos(links));
}

bool RepathFile(const StageContext& context, const QString& path, const QList<FileLinkInfo>& links)
{
    if (!QFile::exists(path)) {
        FILELINK_PROBLEM(context.problems.get(), Operation::RepathFile, LogLevel::Error,
                         QStringLiteral("Failed to repath file %1. File not found.").arg(path),
                         {Stage::RepathFiles, ProblemKind::FileMissing, path, {}, {}});
        return false;
    }
    if (IsFileLocked(path)) {
        FILELINK_PROBLEM(context.problems.get(), Operation::RepathFile, LogLevel::Info,
                         QStringLiteral("Repathing skipped for file %1. File is locked. File will "
                                        "be repathed after it is unlocked.")
                             .arg(path),
                         {Stage::RepathFiles, ProblemKind::Locked, path, {}, {}});
        return false;
    }
    FILELINK_LOG_FOR(Operation::RepathFile, LogLevel::Info,
                     QStringLiteral("Repathing file %1").arg(path));
    for (const FileLinkInfo& link : links)
        FILELINK_LOG_FOR(Operation::RepathFile, LogLevel::Debug,
                         QStringLiteral("File link: Path: %1 RefId: %2")
                             .arg(GetLinkPath(link))
                             .arg(GetReferenceId(link)));
    const bool result = [&] {
        const WritableWhile writable(path);
        FileLinkResolverContext call(
            CallProblems(context.problems.get(), Stage::RepathFiles, path));
        PluginManager* const manager = context.services->Plugins();
        if (manager)
            return manager->RepathFileLinks(path, links, &call);
        context.Report(Stage::RepathFiles, ProblemKind::LinksNotRewritten, path,
                       QStringLiteral("No plug-ins: the module is not initialised"));
        return false;
    }();
    if (result)
        context.signals.fileModified(path);
    return result;
}

} // namespace Halvern::FileLink::Stages
