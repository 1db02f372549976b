// SPDX-License-Identifier: Apache-2.0

#include "Decisions.h"

#include "FileStamps.h"
#include "LinkPlanning.h"
#include "Orphans.h"
#include "Paths.h"
#include "Settling.h"

#include "base/FileAttributes.h"
#include "base/FileHandle.h"

#include <algorithm>

namespace Halvern::Jobs {

namespace {

/// Otherwise it fails now, so that no link is rewritten to where it will not be.
bool IsReadable(JobFile& file)
{
    Base::Handle handle = Base::NoHandle;
    const Base::FileResult opened = Base::OpenForReading(Native(file.source), handle);
    if (opened)
        Base::Close(handle);
    else if (!ExistsOnDisk(file.source))
        file.End(Outcome::Failed, Remark::Vanished);
    else
        file.End(Outcome::Failed, Remark::NotReadable, QString::fromStdString(opened.Text()));
    return bool(opened);
}

bool IsTaken(Standing standing)
{
    return standing == Standing::SourceChanged || standing == Standing::BothChanged ||
           standing == Standing::Foreign;
}

/// It comes along, or what it links does, and nothing weightier is to be said of it.
bool MayBeRemarked(const JobFile& file)
{
    if (file.outcome == Outcome::Skipped)
        return file.remark == Remark::OnlyLinksWanted;
    return HasPlace(file) && file.outcome != Outcome::Failed &&
           (file.remark == Remark::None || file.remark == Remark::SharedCopyStays);
}

/// What stands at the target must stay: the file fails before anything is done.
void FailIfIrreplaceable(JobFile& file)
{
    if (file.LosesLinks()) {
        file.End(Outcome::Failed);
        file.NoteUnreadLinks();
    } else if (file.targetStatus.kind == Base::FileKind::File &&
               !Base::IsWritable(Native(file.target))) {
        file.End(Outcome::Failed, Remark::TargetReadOnly);
    }
}

} // namespace

Decisions::Decisions(JobState& job, JobControl& control, LinkReader& reader, Layout& layout,
                     const CopyIndex& copies)
    : m_job(job), m_control(control), m_layout(layout), m_copies(copies), m_keys(job.cloudFolder),
      m_threeWays(job, control, reader, copies), m_answers(job),
      m_placement(job, layout, copies, m_keys, m_threeWays, m_answers)
{}

bool Decisions::Make(const Answers& answers)
{
    m_answers.Take(answers);
    m_layout.TakeTargets();
    for (JobFile& file : m_job.files) {
        file.isPending = false;
        if (file.mapping && !file.isFolder)
            file.End(Outcome::NotDone);
    }
    if (!m_placement.Find() || !Look())
        return false;
    m_control.BeginPhase(Phase::ResolvingConflicts, 0);
    if (m_control.IsCancelRequested())
        return false;
    Settling settling(m_job, m_copies, m_keys, m_answers, m_standings);
    settling.Settle();
    m_conflicts = settling.Conflicts();
    PlanLinks(m_job);
    NoteLinks();
    Orphans orphans(m_job, m_copies);
    m_job.orphans = orphans.Find();
    m_job.lostCopies = orphans.Lost();
    return true;
}

bool Decisions::Look()
{
    WorkOutLinks(m_job);
    for (JobFile& file : m_job.files) {
        if (m_control.IsCancelRequested())
            return false;
        if (file.HasTarget())
            LookAt(file);
    }
    return true;
}

void Decisions::LookAt(JobFile& file)
{
    QString detail;
    Remark obstacle = ObjectionToTarget(file.target, m_job.cloudFolder);
    if (obstacle == Remark::None)
        obstacle = ObstacleOnTheWay(file.target, m_job.cloudFolder, detail);
    if (obstacle != Remark::None)
        return file.End(Outcome::Failed, obstacle, detail);
    if (!file.isSelected && IsSameFile(file.source, file.target))
        return TakeInPlace(file);
    if (m_job.request.linksOnly && file.isSelected)
        return file.End(Outcome::Skipped, Remark::OnlyLinksWanted);
    if (!IsReadable(file))
        return;
    const Standing standing = m_threeWays.Of(file);
    // What is gone meanwhile, by another move perhaps, is not another content.
    if (IsTaken(standing) && !ExistsOnDisk(file.source))
        return file.End(Outcome::Failed, Remark::Vanished);
    m_standings.insert(&file, standing);
    Decide(file, standing);
}

/// A copy of an earlier import that nobody changed may get other links; nothing else in the cloud
/// folder is touched.
void Decisions::TakeInPlace(JobFile& file) const
{
    file.End(Outcome::InPlace);
    const CopyRecord* record = m_copies.OfTarget(file.target);
    if (record && IsSameAsRecorded(record->targetStamp, record->recordedAt, file.target,
                                   m_job.request.checksum, nullptr)) {
        file.record = *record;
        file.targetStatus = Base::ReadLinkStatus(Native(file.target));
    }
}

bool Decisions::IsOfThisProject(const CopyRecord& record) const
{
    return PathKey(record.project) == PathKey(m_job.target);
}

void Decisions::Decide(JobFile& file, Standing standing)
{
    const auto copy = [&](Outcome outcome) {
        file.deed = Deed::Copy;
        file.outcome = outcome;
        file.remark = Remark::None;
    };
    switch (standing) {
    case Standing::Free:
        copy(file.isAside                            ? Outcome::Renamed
             : m_job.request.move && file.isSelected ? Outcome::Moved
                                                     : Outcome::Copied);
        return;
    case Standing::Ours:
    case Standing::SameContent:
        // What another project has brought is not this one's to renew.
        if (m_job.request.force && !file.LosesLinks() &&
            (!file.record || IsOfThisProject(*file.record))) {
            copy(Outcome::Updated);
            FailIfIrreplaceable(file);
        } else {
            file.End(Outcome::Unchanged);
        }
        return;
    case Standing::SourceChanged:
        copy(Outcome::Updated);
        // Beside a copy that another project links comes one of its own.
        if (file.LosesLinks() || file.keepsTarget ||
            !m_copies.IsLinkedElsewhere(file.target, m_job.target))
            FailIfIrreplaceable(file);
        return;
    case Standing::CopyChanged:
        file.End(Outcome::Left);
        return;
    case Standing::Folder:
    case Standing::BothChanged:
    case Standing::Foreign:
        DecideTaken(file, standing);
        return;
    }
}

void Decisions::DecideTaken(JobFile& file, Standing standing)
{
    file.deed = Deed::Copy;
    file.outcome = Outcome::Replaced;
    file.remark = Remark::None;
    if (standing == Standing::Folder)
        return;
    switch (m_answers.For(file, standing)) {
    case ConflictAnswer::Keep:
        file.End(Outcome::Kept);
        return;
    case ConflictAnswer::Rename:
        file.outcome = Outcome::Renamed;
        return;
    case ConflictAnswer::Replace:
        FailIfIrreplaceable(file);
        return;
    case ConflictAnswer::Stop:
        return;
    }
}

/// What is to be said of the links of files that come along all the same.
void Decisions::NoteLinks()
{
    const auto leadsToNoFile = [&](const JobLink& link) {
        if (link.member < 0)
            return false;
        const JobFile& linked = m_job.files.At(link.member);
        return linked.outcome == Outcome::Skipped &&
               (linked.remark == Remark::LinkedFolder || linked.remark == Remark::NoFile);
    };
    for (JobFile& file : m_job.files) {
        if (file.isFolder || file.isDropped || !MayBeRemarked(file))
            continue;
        const auto link = std::find_if(file.links.begin(), file.links.end(), leadsToNoFile);
        if (file.linksState == LinksState::Failed) {
            file.NoteUnreadLinks();
        } else if (link != file.links.end() && file.remark == Remark::None) {
            file.remark = Remark::LinksNoFile;
            file.detail = link->file;
        }
    }
}

} // namespace Halvern::Jobs
