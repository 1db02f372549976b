// SPDX-License-Identifier: Apache-2.0

#include "importer/FileLinkImporterImp.h"
#include "plugins/LinkRecords.h"
#include "plugins/PluginLogger.h"
#include "plugins/PluginManager.h"
#include "support/FileOperations.h"
#include "support/Problems.h"

#include <QtCore/QFile>

namespace Halvern::FileLink {

static_assert(int(QFile::ReadOther | QFile::WriteOther) == 0x6);
static_assert(int(QFile::ReadOther) == 0x4);

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

using SyncPlugin::FileLinkInfo;

QList<FileLinkInfo> ToFileLinkInfos(const FileLinkList& links)
{
    QList<FileLinkInfo> infos;
    infos.reserve(links.size());
    for (const SyncServices::FileLink& link : links)
        infos.append(MakeFileLinkInfo(link.RefId, link.Path));
    return infos;
}

} // namespace

bool FileLinkImporterImp::RepathFiles()
{
    if (m_fileSet && !m_fileSet->HasFilesWhichSupportFileLinks())
        return true;
    FILELINK_LOG(LogLevel::Info, QStringLiteral("Begin repathing file links in target"));
    const LogFinally finally(&ModuleLogger(), LogLevel::Info,
                             QStringLiteral("Finished repathing file links in target"));
    if (!m_fileSet || !MarkFilesToRepath(FILELINK_FUNCTION))
        return false;
    bool result = true;
    for (const FileMappingPointer& mapping : Files()) {
        if (CheckIfCanceled())
            return false;
        if (mapping->HasFlag(FileMapping::NeedsRepath))
            result = RepathFile(mapping) && result;
    }
    return result;
}

bool FileLinkImporterImp::MarkFilesToRepath(const char* operation)
{
    for (const FileMappingPointer& mapping : Files()) {
        if (CheckIfCanceled())
            return false;
        if (mapping->IsFolder())
            continue;
        if (mapping->HasFlag(FileMapping::FileLinksNotSupported)) {
            FILELINK_LOG_FOR(
                operation, LogLevel::Debug,
                QStringLiteral("Repathing skipped for file %1. File links not supported "
                               "for this file type.")
                    .arg(mapping->GetSourceFile()));
            continue;
        }
        bool canceled = false;
        if (mapping->HasFlag(FileMapping::Copied) || LinksCopiedFile(mapping, canceled))
            mapping->SetFlag(FileMapping::NeedsRepath, true);
        if (canceled)
            return false;
    }
    return true;
}

bool FileLinkImporterImp::LinksCopiedFile(const FileMappingPointer& mapping, bool& canceled) const
{
    for (const FileMappingPointer& linked : m_fileSet->GetSourceFileLinks(mapping)) {
        canceled = CheckIfCanceled();
        if (canceled)
            return false;
        if (linked->HasFlag(FileMapping::Copied))
            return true;
    }
    return false;
}

bool FileLinkImporterImp::RepathFile(const FileMappingPointer& mapping)
{
    if (mapping->IsFolder())
        return true;
    const QString target = mapping->GetTargetFile();
    if (!PathExists(target)) {
        FILELINK_PROBLEM(
            m_problems.get(), FILELINK_FUNCTION, LogLevel::Error,
            QStringLiteral("Failed to repath file links in %1. File not found.").arg(target),
            {Stage::RepathFiles,
             ProblemKind::FileMissing,
             target.isEmpty() ? mapping->GetSourceFile() : target,
             {},
             {}});
        return false;
    }
    if (IsFileLocked(target)) {
        FILELINK_PROBLEM(m_problems.get(), FILELINK_FUNCTION, LogLevel::Info,
                         QStringLiteral("Repathing skipped for file %1. File is locked. File will "
                                        "be repathed after it is unlocked.")
                             .arg(target),
                         {Stage::RepathFiles, ProblemKind::Locked, target, {}, {}});
        return false;
    }
    const FileLinkList links = mapping->GetTargetFileLinks();
    bool result = true;
    if (links.isEmpty())
        FILELINK_LOG(LogLevel::Debug,
                     QStringLiteral("Repathing skipped for file %1. No links found.").arg(target));
    else
        result = RepathFile(target, links);
    if (CheckIfCanceled())
        return false;
    // Whatever the result: a file whose rewrite failed is not tried again.
    mapping->SetFlag(FileMapping::NeedsRepath, false);
    mapping->SetFlag(FileMapping::Repathed, true);
    mapping->UpdateSourceFileProperties();
    mapping->UpdateTargetFileProperties();
    if (PathExists(target))
        mapping->SetTargetFileLinksExtractedAtFileDate(LastModified(target));
    m_copyHistory->AddOrUpdate(mapping);
    return result;
}

bool FileLinkImporterImp::RepathFile(const QString& path, const FileLinkList& links)
{
    return RepathFile(path, ToFileLinkInfos(links));
}

bool FileLinkImporterImp::RepathFile(const QString& path, const QList<FileLinkInfo>& links)
{
    if (!QFile::exists(path)) {
        FILELINK_PROBLEM(m_problems.get(), FILELINK_FUNCTION, LogLevel::Error,
                         QStringLiteral("Failed to repath file %1. File not found.").arg(path),
                         {Stage::RepathFiles, ProblemKind::FileMissing, path, {}, {}});
        return false;
    }
    if (IsFileLocked(path)) {
        FILELINK_PROBLEM(m_problems.get(), FILELINK_FUNCTION, LogLevel::Info,
                         QStringLiteral("Repathing skipped for file %1. File is locked. File will "
                                        "be repathed after it is unlocked.")
                             .arg(path),
                         {Stage::RepathFiles, ProblemKind::Locked, path, {}, {}});
        return false;
    }
    FILELINK_LOG(LogLevel::Info, QStringLiteral("Repathing file %1").arg(path));
    for (const FileLinkInfo& link : links)
        FILELINK_LOG(LogLevel::Debug, QStringLiteral("File link: Path: %1 RefId: %2")
                                          .arg(GetLinkPath(link))
                                          .arg(GetReferenceId(link)));
    const bool wasReadOnly = !IsWritable(path);
    ReadOnlyState state;
    if (wasReadOnly)
        state = ClearReadOnly(path, QFile::ReadOther | QFile::WriteOther);
    bool result = false;
    {
        FileLinkResolverContext context(CallProblems(m_problems.get(), Stage::RepathFiles, path));
        PluginManager* const manager = GetPluginManager();
        if (!manager)
            Report(Stage::RepathFiles, ProblemKind::LinksNotRewritten, path,
                   QStringLiteral("No plug-ins: the module is not initialised"));
        result = manager && manager->RepathFileLinks(path, links, &context);
        if (wasReadOnly)
            RestoreReadOnly(path, state, QFile::ReadOther);
    }
    if (result)
        Q_EMIT FileModified(path);
    return result;
}

} // namespace Halvern::FileLink
