// SPDX-License-Identifier: Apache-2.0

#include "JobOutcomes.h"

#include "Paths.h"
#include "Reasons.h"

#include <QtCore/QFileInfo>
#include <QtCore/QHash>

#include <algorithm>

namespace Halvern::Cli {

using FileLink::FileSet;
using SyncServices::FileMapping;

namespace {

QString ParentOf(const QString& path)
{
    return QFileInfo(path).path();
}

/// Every path by which a log record may name one of the files.
QSet<QString> PathsOf(const FileSet::FileMappingList& files)
{
    QSet<QString> paths;
    for (const auto& file : files) {
        paths.insert(file->GetSourceFile());
        if (file->HasTargetFile()) {
            paths.insert(file->GetTargetFile());
            paths.insert(ParentOf(file->GetTargetFile()));
        }
    }
    return paths;
}

/// For each missing file the files that link it.
QHash<const FileMapping*, QStringList> FindLinkers(FileSet& fileSet)
{
    QHash<const FileMapping*, QStringList> linkers;
    if (fileSet
            .GetFiles(FileMapping::SourceMissing, FileMapping::NoFlag, FileMapping::NoFlag,
                      FileMapping::NoFlag)
            .isEmpty())
        return linkers;
    for (const auto& file : fileSet.GetFiles()) {
        for (const auto& linked : fileSet.GetSourceFileLinks(file)) {
            if (!linked->HasFlag(FileMapping::SourceMissing))
                continue;
            QStringList& from = linkers[linked.get()];
            if (from.isEmpty() || from.last() != file->GetSourceFile())
                from.append(file->GetSourceFile());
        }
    }
    return linkers;
}

/// Why a copy failed of which the log says nothing.
QString VisibleReason(const FileMapping& file)
{
    if (!file.HasTargetFile())
        return QStringLiteral("it got no place in the cloud cache folder");
    if (file.HasFlag(FileMapping::Folder))
        return QStringLiteral("the folder could not be made");
    if (IsFolder(file.GetTargetFile()))
        return QStringLiteral("a folder stands at the target");
    return QStringLiteral("it was not copied; a log file (--log-file) may tell why");
}

/// The outcome of single files of one job.
class Describer
{
public:
    Describer(const ImportJob& job, const QList<LogRecord>& log)
        : m_job(job), m_files(job.Files()->GetFiles()), m_paths(PathsOf(m_files)),
          m_reasons(log, m_paths), m_linkers(FindLinkers(*job.Files()))
    {}

    QList<FileOutcome> All() const
    {
        QList<FileOutcome> outcomes;
        for (const auto& file : m_files)
            if (IsReported(*file))
                outcomes.append(Describe(*file));
        return outcomes;
    }
    const QList<LogRecord>& General() const { return m_reasons.General(); }

private:
    bool IsReported(const FileMapping& file) const;
    FileOutcome Describe(const FileMapping& file) const;
    FileStatus StatusOf(const FileMapping& file) const;
    FileStatus StatusOfCopy(const FileMapping& file) const;
    bool IsLocked(const FileMapping& file) const;
    QList<LogRecord> RecordsAbout(const FileMapping& file, FileStatus status) const;
    void Explain(const FileMapping& file, FileOutcome& outcome) const;
    bool HoldsOldLinks(const FileMapping& file) const;

    const ImportJob& m_job;
    FileSet::FileMappingList m_files;
    QSet<QString> m_paths;
    Reasons m_reasons;
    QHash<const FileMapping*, QStringList> m_linkers;
};

/// Folders are reported only when one could not be made.
bool Describer::IsReported(const FileMapping& file) const
{
    if (!file.HasFlag(FileMapping::Folder))
        return true;
    return m_job.WasExecuted() && !m_job.WasCancelled() && !file.HasFlag(FileMapping::NoCopy) &&
           !IsFolder(file.GetTargetFile());
}

FileOutcome Describer::Describe(const FileMapping& file) const
{
    FileOutcome outcome;
    outcome.status = StatusOf(file);
    outcome.source = file.GetSourceFile();
    outcome.target = file.GetTargetFile();
    outcome.moved =
        m_job.WasExecuted()
            ? m_job.IsMoved(file)
            : m_job.GetOptions().move && file.HasFlag(FileMapping::Selected) &&
                  (outcome.status == FileStatus::Moved || outcome.status == FileStatus::Replaced ||
                   outcome.status == FileStatus::Renamed);
    if (outcome.status == FileStatus::Missing)
        outcome.linkedFrom = m_linkers.value(&file);
    Explain(file, outcome);
    return outcome;
}

FileStatus Describer::StatusOf(const FileMapping& file) const
{
    if (file.HasFlag(FileMapping::NotFilePath))
        return FileStatus::Url;
    if (file.HasFlag(FileMapping::SourceMissing))
        return file.HasFlag(FileMapping::Selected) ? FileStatus::Failed : FileStatus::Missing;
    if (IsLocked(file))
        return FileStatus::Locked;
    if (file.HasFlag(FileMapping::SameSourceAndTarget))
        return FileStatus::InPlace;
    if (file.HasFlag(FileMapping::Unchanged))
        return FileStatus::Unchanged;
    if (file.HasFlag(FileMapping::Folder))
        return FileStatus::Failed;
    if (file.HasFlag(FileMapping::NoCopy))
        return m_job.GetOptions().linksOnly && file.HasFlag(FileMapping::Selected)
                   ? FileStatus::Skipped
                   : FileStatus::Kept;
    if (IsFolder(file.GetSourceFile()))
        return FileStatus::Skipped;
    if (m_job.WasExecuted() && !file.HasFlag(FileMapping::Copied))
        return m_job.WasCancelled() ? FileStatus::NotDone : FileStatus::Failed;
    return m_job.WasCancelled() && !m_job.WasExecuted() ? FileStatus::NotDone : StatusOfCopy(file);
}

FileStatus Describer::StatusOfCopy(const FileMapping& file) const
{
    if (m_job.IsRenamed(file))
        return FileStatus::Renamed;
    if (file.HasFlag(FileMapping::Collision))
        return FileStatus::Replaced;
    return m_job.GetOptions().move && file.HasFlag(FileMapping::Selected) ? FileStatus::Moved
                                                                          : FileStatus::Copied;
}

bool Describer::IsLocked(const FileMapping& file) const
{
    return m_job.WasExecuted() && !m_job.WasCancelled() && file.HasFlag(FileMapping::NeedsRepath) &&
           file.ExistsInTarget();
}

/// What the log has to say about a file. Files that are not to be there are missed by the module
/// all the same; of them only what plug-ins say counts.
QList<LogRecord> Describer::RecordsAbout(const FileMapping& file, FileStatus status) const
{
    QList<LogRecord> records = m_reasons.For(file.GetSourceFile());
    if (file.HasTargetFile() && file.GetTargetFile() != file.GetSourceFile())
        records.append(m_reasons.For(file.GetTargetFile()));
    if (status == FileStatus::Failed && file.HasTargetFile())
        records.append(m_reasons.For(ParentOf(file.GetTargetFile())));
    const bool isAbsent = status == FileStatus::Missing || status == FileStatus::Skipped ||
                          status == FileStatus::NotDone;
    if (isAbsent)
        records.removeIf([](const LogRecord& record) { return !record.IsAboutPlugin(); });
    return records;
}

void Describer::Explain(const FileMapping& file, FileOutcome& outcome) const
{
    const QList<LogRecord> records = RecordsAbout(file, outcome.status);
    outcome.pluginFailed = std::any_of(records.begin(), records.end(),
                                       [](const auto& record) { return record.IsAboutPlugin(); });
    outcome.reason = Reasons::Join(records);
    if (!outcome.reason.isEmpty())
        return;
    if (outcome.status == FileStatus::Failed)
        outcome.reason = VisibleReason(file);
    else if (outcome.status == FileStatus::Skipped)
        outcome.reason = file.HasFlag(FileMapping::NoCopy)
                             ? QStringLiteral("only its links are wanted")
                             : QStringLiteral("a folder that is linked");
    else if (HoldsOldLinks(file))
        outcome.reason = QStringLiteral("its links are not rewritten yet; import it again");
}

bool Describer::HoldsOldLinks(const FileMapping& file) const
{
    return m_job.WasCancelled() && file.HasFlag(FileMapping::Copied) &&
           !file.HasFlag(FileMapping::Repathed) && !file.GetSourceFileLinks().isEmpty();
}

} // namespace

void Describe(const ImportJob& job, const QList<LogRecord>& log, ImportReport& report)
{
    report.cancelled = job.WasCancelled();
    QList<LogRecord> general = Reasons(log, {}).General();
    if (job.Files()) {
        const Describer describer(job, log);
        report.files = describer.All();
        general = describer.General();
    }
    for (const LogRecord& record : std::as_const(general)) {
        report.problems.append(record.text);
        report.pluginProblem = report.pluginProblem || record.IsAboutPlugin();
    }
}

} // namespace Halvern::Cli
