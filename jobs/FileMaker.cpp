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

} // namespace

bool FileMaker::MakeFolder(const JobFile& file)
{
    const std::filesystem::path folder = m_placer.Below(file.target);
    const Base::FileResult made = m_cloud.MakeFolders(folder);
    if (!made) {
        m_control.Report({Stage::CopyFiles,
                          ProblemKind::FolderNotMade,
                          file.source,
                          QStringLiteral("Failed to create folder %1: %2")
                              .arg(QDir::toNativeSeparators(file.target), Text(made)),
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
        m_placer.Fail(file, ProblemKind::NotCopied,
                      QStringLiteral("Failed to copy: ") + m_placer.Reason(file, why));
}

void FileMaker::NamePlace(JobFile& file, StagedCopy& staged) const
{
    file.recordedAt = ClockNow();
    if (staged.isBeside)
        staged.place = m_staging.PlaceBeside(m_placer.Below(file.target));
    staged.isBeside = staged.isBeside && !staged.place.empty();
    if (!staged.isBeside)
        staged.place = m_staging.PlaceFor(QFileInfo(file.target).fileName());
    staged.path = m_staging.Absolute(staged.place);
    staged.text = QStringView(Base::PathText(staged.path)).toString();
}

/// Copies the source to the staging folder.
bool FileMaker::Take(JobFile& file, StagedCopy& staged)
{
    NamePlace(file, staged);
    Base::ContentHash hash;
    // The bytes go by anyway, and later only a hash tells some changes.
    const Base::FileResult copied =
        Base::CopyUnchangedBytes(Native(file.source), staged.path, staged.source, &hash);
    if (!copied) {
        if (!IsStopped())
            FailToCopy(file, copied);
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

FileMaker::Made FileMaker::Make(JobFile& file, Turn turn)
{
    const JobFile before = file;
    const bool isMade = MakeCopy(file, turn);
    if (!m_placer.WasStopped())
        return isMade ? Made::Now : Made::Later;
    file = before;
    return Made::Stopped;
}

bool FileMaker::Relink(JobFile& file)
{
    const JobFile before = file;
    RelinkCopy(file);
    if (m_placer.WasStopped())
        file = before;
    return !m_placer.WasStopped();
}

bool FileMaker::MakeFolderOf(JobFile& file)
{
    const Base::FileResult folder = m_cloud.MakeFolders(m_placer.Below(file.target).parent_path());
    if (folder)
        return true;
    if (folder.Problem() == Base::FileProblem::LeadsOutside)
        file.End(Outcome::Failed, Remark::OutsideCloudFolder);
    else
        m_placer.Fail(
            file, ProblemKind::FolderNotMade,
            QStringLiteral("Failed to create folder %1: %2")
                .arg(QDir::toNativeSeparators(QFileInfo(file.target).path()), Text(folder)));
    return false;
}

/// False when it is to be made last.
bool FileMaker::MakeCopy(JobFile& file, Turn turn)
{
    if (!MakeFolderOf(file))
        return true;
    StagedCopy staged;
    staged.isBeside = turn == Turn::Last;
    if (!Take(file, staged))
        return true;
    if (turn == Turn::First && DependsOnPlace(file, staged))
        return IsStopped();
    if (!GiveLinks(file, staged, turn) || !m_placer.Place(file, staged))
        return true;
    file.linksRewritten = staged.isRewritten && file.outcome != Outcome::Unchanged;
    if (!file.isPending)
        return true;
    file.remark = Remark::RewritePending;
    file.detail.clear();
    return true;
}

bool FileMaker::DependsOnPlace(const JobFile& file, const StagedCopy& staged)
{
    LinkReader::Links links;
    if (!file.skipsLinks)
        for (const JobLink& link : file.links)
            links.append(link.stored);
    return !links.isEmpty() && m_links.DependOnPlace(links, staged.text);
}

/// False when the file has ended: it is not to be put in place.
bool FileMaker::GiveLinks(JobFile& file, StagedCopy& staged, Turn turn)
{
    if (turn == Turn::Last)
        return WriteBeside(file, staged) || GiveUp(file, staged);
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
    return Take(file, staged) && (WriteBeside(file, staged) || GiveUp(file, staged));
}

/// The links are read and written where they will be read from then on.
bool FileMaker::WriteBeside(const JobFile& file, StagedCopy& staged)
{
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
bool FileMaker::GiveUp(JobFile& file, StagedCopy& staged)
{
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
    return Take(file, staged);
}

void FileMaker::FailToRewrite(JobFile& file, bool isHeld)
{
    file.isPending = true;
    file.isDone = true;
    file.deed = Deed::Nothing;
    if (isHeld) {
        file.outcome = Outcome::Locked;
    } else {
        file.remark = Remark::RewritePending;
        file.detail.clear();
    }
    // The copy is what it was.
    if (const CopyRecord* record = file.RecordOfCopy()) {
        file.sourceStamp = record->sourceStamp;
        file.targetStamp = record->targetStamp;
        file.recordedAt = record->recordedAt;
    }
}

void FileMaker::RelinkCopy(JobFile& file)
{
    const std::filesystem::path target = Native(file.target);
    // Whoever changed it since it was looked at has made it a file of their own.
    if (!IsAsItWas(file.targetStatus, Base::ReadLinkStatus(target)))
        return file.End(Outcome::Failed, Remark::TargetChanged);
    const FileStamp made = file.targetStamp;
    const qint64 madeAt = file.recordedAt;
    WriteOtherLinks(file, target);
    if (!file.isPending || file.RecordOfCopy())
        return;
    // The copy is what this job made.
    file.targetStamp = made;
    file.recordedAt = madeAt;
}

/// Copies the copy that is to get other links.
bool FileMaker::TakeCopy(JobFile& file, StagedCopy& staged)
{
    NamePlace(file, staged);
    Base::ContentHash hash;
    const Base::FileResult copied =
        Base::CopyUnchangedBytes(Native(file.target), staged.path, staged.source, &hash);
    staged.stamp = StampOf(staged.source, &hash);
    if (!copied && !IsStopped())
        m_control.Report({Stage::RepathFiles,
                          ProblemKind::LinksNotRewritten,
                          file.target,
                          QStringLiteral("Failed to copy: ") + m_placer.Reason(file, copied),
                          {}});
    return static_cast<bool>(copied);
}

/// As a fresh copy gets its links, but that `read` was read where the copy lies.
bool FileMaker::WriteAgain(JobFile& file, StagedCopy& staged, const LinkReader::Links& links,
                           const LinkReader::Links& read)
{
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
    return TakeCopy(file, staged) && staged.isBeside &&
           m_links.Write(file, staged.text, links, read);
}

void FileMaker::WriteOtherLinks(JobFile& file, const std::filesystem::path& target)
{
    if (!Base::IsWritable(target)) {
        m_control.Report({Stage::RepathFiles,
                          ProblemKind::TargetReadOnly,
                          file.target,
                          QStringLiteral("The copy is read-only, and its links are old"),
                          {}});
        return FailToRewrite(file, false);
    }
    if (Base::IsFileLocked(target))
        return FailToRewrite(file, true);
    StagedCopy staged;
    if (!TakeCopy(file, staged))
        return IsStopped() ? void() : FailToRewrite(file, false);
    LinkReader::Links read;
    LinkReader::Links links;
    if (!m_reader.Read(file.target, read))
        return IsStopped() ? void() : FailToRewrite(file, false);
    links = m_links.ChangesOf(file, read);
    if (!links.isEmpty() && !WriteAgain(file, staged, links, read))
        return IsStopped() ? void() : FailToRewrite(file, false);
    const Outcome outcome = file.outcome;
    const CopyRecord* record = file.RecordOfCopy();
    const FileStamp source = record ? record->sourceStamp : file.sourceStamp;
    file.isPending = false;
    if (links.isEmpty()) {
        // They are what they should be.
        file.isDone = true;
        file.deed = Deed::Nothing;
        file.targetStamp = staged.stamp;
        file.sourceStamp = source;
        return;
    }
    staged.isRewritten = true;
    if (!m_placer.Place(file, staged))
        return IsStopped() ? void() : FailToRewrite(file, file.outcome == Outcome::Locked);
    file.sourceStamp = source;
    file.outcome = outcome;
    file.linksRewritten = true;
}

} // namespace Halvern::Jobs
