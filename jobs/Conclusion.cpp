// SPDX-License-Identifier: Apache-2.0

#include "Conclusion.h"

#include "Orphans.h"
#include "Paths.h"
#include "Pruning.h"
#include "SourceRemoval.h"
#include "UnchangedCopies.h"

#include <algorithm>

namespace Halvern::Jobs {

void Conclusion::Draw(const std::function<QString()>& databaseError)
{
    m_control.BeginPhase(Phase::Recording, 0);
    // What was done is recorded also when the job was cancelled.
    m_control.GoOn();
    const bool secured = SecureCopies();
    const bool recorded = secured && m_records.Commit();
    if (secured)
        static_cast<void>(m_records.Finish());
    // Copies that could not be made anew link what they linked.
    if (!m_job.cancelled)
        m_job.orphans = Orphans(m_job, m_copies).Find();
    if (m_job.request.move && recorded && !m_job.cancelled && databaseError().isEmpty())
        MoveSources();
    else if (m_job.request.move)
        SourceRemoval(m_job, m_control).KeepRest();
    m_job.pruned.clear();
    m_job.notPruned.clear();
    if (m_job.request.prune && recorded && !m_job.cancelled)
        Pruning(m_job).Prune(m_cloud, m_flush, m_records);
    // Otherwise the next job sees to what may be on the disk or not.
    if (secured)
        static_cast<void>(m_records.End(databaseError().isEmpty() && recorded && !HasFailed()));
    m_results.TellRest();
}

bool Conclusion::HasFailed() const
{
    return std::any_of(m_job.files.begin(), m_job.files.end(), [](const JobFile& file) {
        return file.outcome == Outcome::Failed && !file.isDropped;
    });
}

/// Whatever the records will say, and whatever is deleted because of it, is on the disk before.
/// Copies that are older than this job may not have reached it either.
bool Conclusion::SecureCopies()
{
    for (const JobFile& file : m_job.files)
        if (m_job.request.move && !file.isFolder && file.outcome == Outcome::Unchanged) {
            m_flush.AddFile(BelowCloudFolder(file.target, m_job));
            m_flush.AddName(BelowCloudFolder(file.target, m_job));
        }
    const Base::FileResult secured = m_flush.Run();
    if (secured)
        return true;
    m_control.Report({FileLink::Stage::CopyFiles,
                      FileLink::ProblemKind::NotCopied,
                      {},
                      QStringLiteral("A power cut may take back what was copied: ") +
                          QString::fromStdString(secured.Text()),
                      {}});
    m_records.Drop();
    return false;
}

void Conclusion::MoveSources()
{
    FindChangedCopies();
    RemoveSources();
}

/// A source may go when its copy still stands under its name.
void Conclusion::FindChangedCopies()
{
    for (JobFile& file : m_job.files) {
        const bool isCopy = file.isDone || file.outcome == Outcome::Unchanged;
        if (file.isFolder || file.wasMoved || file.isPending || !isCopy)
            continue;
        Base::FileStatus status;
        if (!m_cloud.Status(BelowCloudFolder(file.target, m_job), status) ||
            !IsStamped(status, file.targetStamp))
            file.End(Outcome::Failed, Remark::TargetChanged);
    }
}

void Conclusion::NoteMove(JobFile& file, bool isMoved)
{
    file.sourceDeleted = isMoved;
    m_records.Note(file);
}

/// What is gone must be known as moved also when the process is killed right after: it is noted
/// before, and taken back for what stays.
void Conclusion::RemoveSources()
{
    const auto announced = [this](const QList<JobFile*>& files) {
        for (JobFile* file : files)
            NoteMove(*file, true);
        if (m_records.Commit())
            return true;
        // None of them goes.
        m_records.Drop();
        return false;
    };
    SourceRemoval(m_job, m_control).Remove(announced, [this](JobFile& file) {
        // Another import that moves it may have been faster.
        if (!file.sourceDeleted)
            NoteMove(file, !ExistsOnDisk(file.source));
        if (file.sourceDeleted) {
            file.sourceStays = SourceStays::No;
            file.staysFor.clear();
        }
        m_results.Tell(file);
    });
}

} // namespace Halvern::Jobs
