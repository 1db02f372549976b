// SPDX-License-Identifier: Apache-2.0

#include "Execution.h"

#include "FileStamps.h"
#include "LinkPlanning.h"
#include "Paths.h"
#include "UnchangedCopies.h"

#include <algorithm>

namespace Halvern::Jobs {

using Made = FileMaker::Made;
using Round = FileMaker::Round;

namespace {

/// Those that are ready do not wait for so large a file: it takes its time, and may be stopped.
constexpr qint64 Large = qint64(16) << 20;

/// As it was when the job was planned.
qint64 SizeOf(const JobFile& file)
{
    return qint64(file.status.size);
}

bool IsMeant(const JobFile& file, Deed deed)
{
    return !file.isFolder && file.deed == deed;
}

} // namespace

void Execution::Run()
{
    MakeFolders();
    const bool copied = MakeFiles(Deed::Copy);
    RelinkAroundFailures();
    if (copied && MakeFiles(Deed::Relink))
        NoteUnchangedCopies(m_job, m_control, m_records);
}

bool Execution::IsStopped()
{
    m_job.cancelled = m_control.IsCancelRequested();
    return m_job.cancelled;
}

void Execution::MakeFolders()
{
    if (m_job.request.linksOnly)
        return;
    for (JobFile& file : m_job.files) {
        if (!file.isFolder || file.isDropped || m_control.IsCancelRequested())
            continue;
        std::vector<std::filesystem::path> made;
        if (!m_maker.MakeFolder(file, made))
            file.End(Outcome::Failed, Remark::FolderNotMade);
        for (const std::filesystem::path& folder : made)
            m_flush.AddName(folder);
    }
}

void Execution::BeginPhase(Deed deed)
{
    qint64 files = 0;
    qint64 bytes = 0;
    for (const JobFile& file : m_job.files)
        if (IsMeant(file, deed)) {
            ++files;
            bytes += SizeOf(file);
        }
    m_control.BeginPhase(deed == Deed::Copy ? Phase::Copying : Phase::RewritingLinks, files, bytes);
}

/// False when the job is cancelled.
bool Execution::MakeFiles(Deed deed)
{
    BeginPhase(deed);
    if (IsStopped())
        return false;
    m_untold.clear();
    QList<qsizetype> last;
    for (qsizetype place = 0; place < m_job.files.Size(); ++place) {
        JobFile& file = m_job.files.At(place);
        if (IsMeant(file, deed)) {
            m_untold.push_back(&file);
            if (MakeFile(file, Round::First) == Made::Later) {
                m_untold.pop_back();
                last.append(place);
            }
            if (m_job.cancelled)
                break;
        } else if (deed == Deed::Copy && file.deed == Deed::Nothing) {
            m_untold.push_back(&file);
            TellSettled();
        }
    }
    const bool isStopped = m_job.cancelled;
    return CompleteBatch() && !isStopped && MakeLast(last);
}

/// What stands around one of them has its name by the time when it is made, also another of them.
bool Execution::MakeLast(const QList<qsizetype>& places)
{
    for (const qsizetype place : places) {
        JobFile& file = m_job.files.At(place);
        m_untold.push_back(&file);
        MakeFile(file, Round::Last);
        if (!CompleteBatch() || m_job.cancelled)
            return false;
    }
    return true;
}

Made Execution::MakeFile(JobFile& file, Round round)
{
    if (IsStopped() || (SizeOf(file) >= Large && !CompleteBatch()))
        return Made::Stopped;
    // Its bytes count once.
    m_control.BeginFile(round == Round::First ? SizeOf(file) : 0);
    Made made = MakeReady(file, round);
    if (made == Made::Full)
        made = CompleteBatch() ? MakeReady(file, round) : Made::Stopped;
    m_job.cancelled = made == Made::Stopped;
    if (made != Made::Now)
        return made;
    if (file.isDone && file.deed == Deed::Nothing)
        m_records.Note(file);
    TellSettled();
    m_control.EndFile();
    if (m_batch.IsFull())
        CompleteBatch();
    return made;
}

Made Execution::MakeReady(JobFile& file, Round round)
{
    return file.deed == Deed::Copy ? m_maker.Make(file, round) : m_maker.Relink(file);
}

/// Observers hear of files in the order of the plan, and of those that are made last at the end.
void Execution::TellSettled()
{
    for (; !m_untold.empty() && m_untold.front()->deed == Deed::Nothing; m_untold.pop_front())
        m_results.Tell(*m_untold.front());
}

void Execution::TellOfWaiting()
{
    const QStringList living = m_journal.Living(m_job.cloudFolder);
    const QString who =
        living.isEmpty() ? QStringLiteral("another import") : living.join(QStringLiteral(", "));
    m_control.Tell([&](IJobObserver& observer) { observer.Waiting(who); });
}

/// False when the job is cancelled: what is ready then gets no name any more.
bool Execution::CompleteBatch()
{
    Batch::Hooks hooks;
    hooks.waits = [this] { TellOfWaiting(); };
    hooks.mayGoOn = [this] { return !IsStopped(); };
    hooks.announce = [this](const std::vector<const StagedCopy*>& ready) {
        return m_records.Commit(ready);
    };
    hooks.done = [this](const StagedCopy& staged) {
        if (staged.file->isDone)
            m_records.Note(*staged.file);
        else
            m_records.NoteSettled(*staged.file);
        TellSettled();
    };
    if (m_batch.Complete(hooks))
        return true;
    m_job.cancelled = true;
    return false;
}

/// A file that could not be copied is not where the links of others were to lead: those say again
/// what they say in the source.
void Execution::RelinkAroundFailures()
{
    const auto isFailed = [](const JobFile& file) { return file.outcome == Outcome::Failed; };
    if (!std::any_of(m_job.files.begin(), m_job.files.end(), isFailed))
        return;
    QList<QList<SyncServices::FileLink>> written;
    for (const JobFile& file : m_job.files)
        written.append(file.wantedLinks);
    PlanLinks(m_job);
    for (qsizetype place = 0; place < m_job.files.Size(); ++place) {
        JobFile& file = m_job.files.At(place);
        if (!file.isDone || file.isPending || file.wantedLinks == written.at(place))
            continue;
        file.targetStatus = Base::ReadLinkStatus(Native(file.target));
        if (IsStamped(file.targetStatus, file.targetStamp))
            file.deed = Deed::Relink;
        else
            file.End(Outcome::Failed, Remark::TargetChanged);
    }
}

} // namespace Halvern::Jobs
