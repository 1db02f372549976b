// SPDX-License-Identifier: Apache-2.0

#include "FileMaker.h"

#include "FileStamps.h"
#include "Paths.h"

#include "base/ContentHash.h"
#include "base/FileAttributes.h"
#include "base/FileLock.h"
#include "base/NativePath.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <utility>

namespace Halvern::Jobs {

using FileLink::ProblemKind;
using FileLink::Stage;

namespace {

QString Text(const Base::FileResult& result)
{
    return QString::fromStdString(result.Text());
}

bool IsSameContent(const Base::FileStatus& was, const Base::FileStatus& is)
{
    return was.size == is.size && was.modified == is.modified && was.index == is.index;
}

/// A plug-in looks at the copy.
bool IsLookedAt(const JobFile& file)
{
    return !file.rewrites.isEmpty() || (!file.skipsLinks && !file.links.isEmpty());
}

void NoteStamps(StagedCopy& staged)
{
    JobFile& file = *staged.file;
    file.targetStamp = StampOf(staged.text, staged.isRewritten);
    if (!staged.isRewritten)
        file.targetStamp.hash = file.sourceStamp.hash;
}

} // namespace

/// Once the job is to stop, what fails is cut off, and what succeeds is not put in place.
bool FileMaker::IsStopped()
{
    m_isStopped = m_isStopped || m_control.StoppedJob();
    return m_isStopped;
}

/// A disk that is full has more room once those that are ready have taken the places of others.
bool FileMaker::IsFull(const Base::FileResult& copied)
{
    m_isFull = copied.Problem() == Base::FileProblem::NoSpace && !m_batch.IsEmpty();
    return m_isFull;
}

QString FileMaker::Reason(const JobFile& file, const Base::FileResult& failure) const
{
    return m_staging.TextOf(failure, file.target);
}

void FileMaker::Fail(JobFile& file, ProblemKind kind, const QString& text)
{
    m_control.Report({Stage::CopyFiles, kind, file.source, text, {}});
    file.End(Outcome::Failed);
}

bool FileMaker::MakeFolder(const JobFile& file, std::vector<std::filesystem::path>& made)
{
    const std::filesystem::path folder = BelowCloudFolder(file.target, m_job);
    const Base::FileResult result = m_cloud.MakeFolders(folder, &made);
    if (!result) {
        m_control.Report({Stage::CopyFiles,
                          ProblemKind::FolderNotMade,
                          file.source,
                          QStringLiteral("Failed to create folder %1: %2")
                              .arg(QDir::toNativeSeparators(file.target), Text(result)),
                          {}});
        return false;
    }
    if (file.isHidden)
        static_cast<void>(m_cloud.Hide(folder)); // where it cannot be hidden it is seen
    return true;
}

void FileMaker::FailToCopy(JobFile& file, const Base::FileResult& why)
{
    if (why.Problem() == Base::FileProblem::Changed)
        file.End(Outcome::Failed, Remark::ChangedWhileCopied);
    else if (!ExistsOnDisk(file.source))
        file.End(Outcome::Failed, Remark::Vanished);
    else
        Fail(file, ProblemKind::NotCopied, QStringLiteral("Failed to copy: ") + Reason(file, why));
}

void FileMaker::NamePlace(StagedCopy& staged) const
{
    JobFile& file = *staged.file;
    file.recordedAt = ClockNow();
    staged.place.clear();
    if (!staged.isBeside && !staged.isRelink && !IsLookedAt(file))
        staged.place = m_staging.PlaceToWait();
    staged.isAside = !staged.place.empty();
    if (staged.isBeside)
        staged.place = m_staging.PlaceBeside(BelowCloudFolder(file.target, m_job));
    staged.isBeside = staged.isBeside && !staged.place.empty();
    if (staged.place.empty())
        staged.place = m_staging.PlaceFor(QFileInfo(file.target).fileName());
    staged.path = m_staging.Absolute(staged.place);
    staged.text = QStringView(Base::PathText(staged.path)).toString();
}

/// A source that was saved anew is another file under its name, and so is what a link leads to that
/// somebody put in its place: that one may be none that may come along.
bool FileMaker::MayBeTaken(const JobFile& file, const Base::FileStatus& taken)
{
    if (taken.device == file.status.device && taken.index == file.status.index)
        return true;
    const QString real = RealPath(file.source);
    return m_boundary && m_boundary->Check(real).allowed && m_realFiles.IsAt(real, taken);
}

/// Copies the source to the staging folder.
bool FileMaker::Take(StagedCopy& staged)
{
    JobFile& file = *staged.file;
    NamePlace(staged);
    Base::ContentHash hash;
    // The bytes go by anyway, and later only a hash tells some changes.
    const Base::FileResult copied =
        Base::CopyUnchangedBytes(Native(file.source), staged.path, staged.source, &hash);
    if (IsFull(copied))
        return false;
    if (!copied) {
        if (!IsStopped())
            FailToCopy(file, copied);
        return false;
    }
    if (!MayBeTaken(file, staged.source)) {
        file.End(Outcome::Failed, Remark::ChangedWhileCopied);
        return false;
    }
    // Its links were read before.
    if (!file.readers.isEmpty() && !IsSameContent(file.status, staged.source)) {
        file.End(Outcome::Failed, Remark::ChangedWhileCopied);
        return false;
    }
    file.sourceStamp = StampOf(staged.source, &hash);
    file.taken = staged.source;
    return true;
}

FileMaker::Made FileMaker::Make(JobFile& file, Round round)
{
    m_isStopped = false;
    m_isFull = false;
    StagedCopy staged(file);
    staged.isBeside = round == Round::Last;
    const State state = MakeCopy(staged, round);
    return HandOver(std::move(staged), state);
}

FileMaker::Made FileMaker::Relink(JobFile& file)
{
    m_isStopped = false;
    m_isFull = false;
    StagedCopy staged(file);
    const State state = RelinkCopy(staged) ? State::Ready : State::Ended;
    return HandOver(std::move(staged), state);
}

FileMaker::Made FileMaker::HandOver(StagedCopy staged, State state)
{
    if (state == State::Ready && !m_isStopped) {
        NoteStamps(staged);
        IsStopped();
    }
    if (m_isStopped || m_isFull) {
        staged.Drop();
        return m_isStopped ? Made::Stopped : Made::Full;
    }
    if (state == State::Ready)
        m_batch.Add(std::move(staged));
    return state == State::Later ? Made::Later : Made::Now;
}

bool FileMaker::MakeFolderOf(JobFile& file)
{
    const std::filesystem::path target = BelowCloudFolder(file.target, m_job);
    const Base::FileResult folder = m_cloud.MakeFolders(target.parent_path());
    if (folder)
        return true;
    if (folder.Problem() == Base::FileProblem::LeadsOutside)
        file.End(Outcome::Failed, Remark::OutsideCloudFolder);
    else
        Fail(file, ProblemKind::FolderNotMade,
             QStringLiteral("Failed to create folder %1: %2")
                 .arg(QDir::toNativeSeparators(QFileInfo(file.target).path()), Text(folder)));
    return false;
}

FileMaker::State FileMaker::MakeCopy(StagedCopy& staged, Round round)
{
    if (!MakeFolderOf(*staged.file) || !Take(staged))
        return State::Ended;
    if (round == Round::First && DependsOnPlace(staged))
        return IsStopped() ? State::Ended : State::Later;
    return GiveLinks(staged, round) ? State::Ready : State::Ended;
}

bool FileMaker::DependsOnPlace(const StagedCopy& staged)
{
    const JobFile& file = *staged.file;
    LinkReader::Links links;
    if (!file.skipsLinks)
        for (const JobLink& link : file.links)
            links.append(link.stored);
    return !links.isEmpty() && m_links.DependOnPlace(links, staged.text);
}

/// False when the file has ended: it is not to be put in place.
bool FileMaker::GiveLinks(StagedCopy& staged, Round round)
{
    const JobFile& file = *staged.file;
    if (round == Round::Last)
        return WriteBeside(staged) || GiveUp(staged);
    if (file.rewrites.isEmpty())
        return true;
    m_control.Mute(true);
    staged.isRewritten = m_links.Write(file, staged.text, file.rewrites, {});
    m_control.Mute(false);
    if (staged.isRewritten)
        return true;
    if (IsStopped())
        return false;
    // Some formats store paths that depend on where the file lies.
    staged.isBeside = true;
    return Take(staged) && (WriteBeside(staged) || GiveUp(staged));
}

/// The links are read and written where they will be read from then on.
bool FileMaker::WriteBeside(StagedCopy& staged)
{
    const JobFile& file = *staged.file;
    LinkReader::Links before;
    const JobControl::Alias alias(m_control, staged.text, file.target);
    const AliasLog log(CopyLinks::NamesFor(file, staged.text));
    if (!staged.isBeside || !m_reader.Read(staged.text, before))
        return false;
    const LinkReader::Links changes = m_links.ChangesOf(file, before);
    staged.isRewritten = !changes.isEmpty() && m_links.Write(file, staged.text, changes, before);
    return changes.isEmpty() || staged.isRewritten;
}

/// The copy holds the links of its source for now.
bool FileMaker::GiveUp(StagedCopy& staged)
{
    JobFile& file = *staged.file;
    if (IsStopped())
        return false;
    if (!staged.isBeside)
        m_control.Report({Stage::RepathFiles,
                          ProblemKind::LinksNotRewritten,
                          file.target,
                          QStringLiteral("The copy could not be made ready beside its place"),
                          {}});
    staged.isBeside = false;
    staged.isRewritten = false;
    // What stands at the target works; a copy with the links of the source would not.
    if (file.targetStatus.Exists() && file.outcome != Outcome::Renamed) {
        file.End(Outcome::Failed);
        return false;
    }
    file.isPending = true;
    return Take(staged);
}

/// True when it is ready to be put in place.
bool FileMaker::RelinkCopy(StagedCopy& staged)
{
    JobFile& file = *staged.file;
    const std::filesystem::path target = Native(file.target);
    // Whoever changed it since it was looked at has made it a file of their own.
    if (!IsAsItWas(file.targetStatus, Base::ReadLinkStatus(target))) {
        file.End(Outcome::Failed, Remark::TargetChanged);
        return false;
    }
    if (WriteOtherLinks(staged, target))
        return true;
    if (!file.isPending || file.RecordOfCopy())
        return false;
    // The copy is what this job made.
    file.targetStamp = staged.before.targetStamp;
    file.recordedAt = staged.before.recordedAt;
    return false;
}

/// Copies the copy that is to get other links.
bool FileMaker::TakeCopy(StagedCopy& staged)
{
    const JobFile& file = *staged.file;
    NamePlace(staged);
    Base::ContentHash hash;
    const Base::FileResult copied =
        Base::CopyUnchangedBytes(Native(file.target), staged.path, staged.source, &hash);
    staged.stamp = StampOf(staged.source, &hash);
    if (!IsFull(copied) && !copied && !IsStopped())
        m_control.Report({Stage::RepathFiles,
                          ProblemKind::LinksNotRewritten,
                          file.target,
                          QStringLiteral("Failed to copy: ") + Reason(file, copied),
                          {}});
    return static_cast<bool>(copied);
}

/// As a fresh copy gets its links, but that `read` was read where the copy lies.
bool FileMaker::WriteAgain(StagedCopy& staged, const LinkReader::Links& links,
                           const LinkReader::Links& read)
{
    const JobFile& file = *staged.file;
    if (!m_links.DependOnPlace(read, staged.text)) {
        m_control.Mute(true);
        const bool isWritten = m_links.Write(file, staged.text, links, {});
        m_control.Mute(false);
        if (isWritten)
            return true;
    }
    if (IsStopped())
        return false;
    staged.isBeside = true;
    return TakeCopy(staged) && staged.isBeside && m_links.Write(file, staged.text, links, read);
}

/// Always false.
bool FileMaker::FailToRewrite(JobFile& file)
{
    if (!IsStopped() && !m_isFull)
        FilePlacer::FailToRewrite(file, false);
    return false;
}

/// True when it is ready to be put in place.
bool FileMaker::WriteOtherLinks(StagedCopy& staged, const std::filesystem::path& target)
{
    JobFile& file = *staged.file;
    if (!Base::IsWritable(target)) {
        m_control.Report({Stage::RepathFiles,
                          ProblemKind::TargetReadOnly,
                          file.target,
                          QStringLiteral("The copy is read-only, and its links are old"),
                          {}});
        FilePlacer::FailToRewrite(file, false);
        return false;
    }
    if (Base::IsFileLocked(target)) {
        FilePlacer::FailToRewrite(file, true);
        return false;
    }
    if (!TakeCopy(staged))
        return FailToRewrite(file);
    LinkReader::Links read;
    if (!m_reader.Read(file.target, read))
        return FailToRewrite(file);
    const LinkReader::Links links = m_links.ChangesOf(file, read);
    if (!links.isEmpty() && !WriteAgain(staged, links, read))
        return FailToRewrite(file);
    file.isPending = false;
    if (const CopyRecord* record = file.RecordOfCopy())
        file.sourceStamp = record->sourceStamp;
    staged.isRewritten = !links.isEmpty();
    if (staged.isRewritten)
        return true;
    // They are what they should be.
    file.isDone = true;
    file.deed = Deed::Nothing;
    file.targetStamp = staged.stamp;
    return false;
}

} // namespace Halvern::Jobs
