// SPDX-License-Identifier: Apache-2.0

#include "FilePlacer.h"

#include "FileStamps.h"
#include "Paths.h"

#include "base/FileAttributes.h"
#include "base/FileCopy.h"
#include "base/FileLock.h"
#include "base/NativePath.h"
#include "syncservices/SyncManager.h"

namespace Halvern::Jobs {

using FileLink::ProblemKind;
using FileLink::Stage;
using SyncServices::SyncManager;

namespace {

/// A copy with another name has become this job's own by the time its links change.
bool Replaces(const JobFile& file)
{
    return file.targetStatus.Exists() &&
           (file.outcome != Outcome::Renamed || file.deed == Deed::Relink);
}

/// A link is set aside.
bool IsInTheWay(const Base::FileStatus& there)
{
    return there.Exists() && there.kind != Base::FileKind::Link;
}

} // namespace

std::filesystem::path FilePlacer::Below(const QString& target) const
{
    return BelowCloudFolder(target, m_job);
}

void FilePlacer::Fail(JobFile& file, ProblemKind kind, const QString& text)
{
    m_control.Report({Stage::CopyFiles, kind, file.source, text, {}});
    file.End(Outcome::Failed);
}

QString FilePlacer::Reason(const JobFile& file, const Base::FileResult& failure) const
{
    return m_staging.TextOf(failure, file.target);
}

bool FilePlacer::IsStopped()
{
    m_isStopped = m_isStopped || m_control.StoppedJob();
    return m_isStopped;
}

bool FilePlacer::Place(JobFile& file, const StagedCopy& staged)
{
    const std::filesystem::path target = Below(file.target);
    NoteStamps(file, staged);
    if (IsStopped())
        return false;
    Base::FileStatus there;
    Base::FileResult result = m_cloud.Status(target, there);
    if (result && there.Exists()) {
        const bool isExpected = Replaces(file) && IsAsItWas(file.targetStatus, there);
        if (!isExpected && Adopt(file, staged))
            return true;
        if (IsStopped() || !MayReplace(file, there))
            return false;
    }
    if (result)
        result = Secure(file, staged, there);
    if (result)
        result = Move(file, staged, there);
    if (!result && there.kind == Base::FileKind::Link)
        static_cast<void>(m_cloud.Move(Below(file.detail), target, Base::Existing::Keep));
    if (!result)
        return (result.Problem() == Base::FileProblem::NameTaken && Adopt(file, staged)) ||
               FailToPlace(file, result);
    file.isRecordOld = file.isRecordOld || file.deed == Deed::Copy;
    file.isDone = true;
    file.deed = Deed::Nothing;
    return true;
}

bool FilePlacer::MayReplace(JobFile& file, const Base::FileStatus& there)
{
    if (Replaces(file))
        return MakeWay(file, there);
    file.End(Outcome::Failed, Remark::TargetChanged);
    return false;
}

/// The disk must never hold neither the old content nor the new. Keeping the old content and the
/// flush take their time, and somebody may have saved meanwhile.
Base::FileResult FilePlacer::Secure(JobFile& file, const StagedCopy& staged,
                                    const Base::FileStatus& there)
{
    Base::FileResult result;
    if (there.Exists() || m_job.request.move)
        result = m_cloud.Flush(staged.place);
    Base::FileStatus now;
    if (result && IsInTheWay(there))
        result = m_cloud.Status(Below(file.target), now);
    if (result && IsInTheWay(there) && now != there)
        return Base::FileResult::Refused(Base::FileProblem::Changed, {});
    return result;
}

Base::FileResult FilePlacer::Move(JobFile& file, const StagedCopy& staged,
                                  const Base::FileStatus& there)
{
    const std::filesystem::path target = Below(file.target);
    Base::FileResult result = m_cloud.Move(
        staged.place, target, IsInTheWay(there) ? Base::Existing::Replace : Base::Existing::Keep);
    if (result.Problem() == Base::FileProblem::OtherDisk) {
        result = MoveAcross(staged, target, IsInTheWay(there));
        // Its clock may count in other steps.
        file.targetStamp.modified = StampOf(file.target, false).modified;
    }
    return result;
}

/// False when what stands at the target must stay.
bool FilePlacer::MakeWay(JobFile& file, const Base::FileStatus& there)
{
    const std::filesystem::path target = Native(file.target);
    if (!IsAsItWas(file.targetStatus, there)) {
        file.End(Outcome::Failed, Remark::TargetChanged);
        return false;
    }
    if (there.kind == Base::FileKind::Link)
        return SetLinkAside(file);
    const bool isRelink = file.deed == Deed::Relink;
    if (!isRelink && !Base::IsWritable(target)) {
        m_control.Report({Stage::CopyFiles,
                          ProblemKind::TargetReadOnly,
                          file.source,
                          QStringLiteral("The target exists and is read-only"),
                          {}});
        file.End(Outcome::Failed);
        return false;
    }
    if (Base::IsFileLocked(target)) {
        file.End(Outcome::Locked);
        return false;
    }
    QString reason;
    if (SyncManager::GetInstance()->SaveVersion(file.target, &reason,
                                                [&] { return m_control.GoesOn(); }))
        return true;
    if (!IsStopped())
        file.End(Outcome::Failed, Remark::NotKept, reason);
    return false;
}

/// What the link leads to is not touched, and how it read is not lost.
bool FilePlacer::SetLinkAside(JobFile& file)
{
    const Base::FileResult moved =
        file.remark == Remark::LinkSetAside
            ? m_cloud.Move(Below(file.target), Below(file.detail), Base::Existing::Keep)
            : Base::FileResult::Refused(Base::FileProblem::NameTaken, {});
    if (moved)
        return true;
    if (moved.Problem() == Base::FileProblem::NameTaken)
        file.End(Outcome::Failed, Remark::TargetChanged);
    else
        Fail(file, ProblemKind::NotCopied,
             QStringLiteral("The symbolic link there could not be set aside: ") +
                 QString::fromStdString(moved.Text()));
    return false;
}

/// Another disk is mounted in the cloud folder: the copy is made ready beside its place.
Base::FileResult FilePlacer::MoveAcross(const StagedCopy& staged,
                                        const std::filesystem::path& target, bool replaces) const
{
    const std::filesystem::path beside = target.parent_path() / (m_staging.Name() + "-part");
    Base::FileResult result = Base::CopyFileBytes(staged.path, m_cloud.Path() / beside);
    if (result)
        result = m_cloud.Flush(beside);
    if (result)
        result =
            m_cloud.Move(beside, target, replaces ? Base::Existing::Replace : Base::Existing::Keep);
    if (result)
        return result;
    static_cast<void>(m_cloud.Remove(beside));
    return result.Code() == 0 ? result
                              : Base::FileResult::Failed(Base::PathToUtf8(target), result.Code());
}

/// Another import was faster: what has appeared at the target since the plan was made is what this
/// one would have put there.
bool FilePlacer::Adopt(JobFile& file, const StagedCopy& staged) const
{
    Base::FileStatus there;
    if (file.deed != Deed::Copy || !m_cloud.Status(Below(file.target), there) ||
        there.kind != Base::FileKind::File)
        return false;
    const QByteArray made =
        staged.isRewritten ? StampOf(staged.text, true).hash : file.sourceStamp.hash;
    const FileStamp found = StampOf(file.target, true);
    if (made.isEmpty() || found.hash != made)
        return false;
    file.targetStamp = found;
    file.End(Outcome::Unchanged);
    file.isDone = true;
    return true;
}

void FilePlacer::NoteStamps(JobFile& file, const StagedCopy& staged)
{
    file.targetStamp = StampOf(staged.text, staged.isRewritten);
    if (!staged.isRewritten)
        file.targetStamp.hash = file.sourceStamp.hash;
}

/// Always false.
bool FilePlacer::FailToPlace(JobFile& file, const Base::FileResult& why)
{
    if (why.Problem() == Base::FileProblem::Stopped || IsStopped())
        return false;
    if (why.Problem() == Base::FileProblem::NameTaken ||
        why.Problem() == Base::FileProblem::Changed)
        file.End(Outcome::Failed, Remark::TargetChanged);
    else if (why.Problem() == Base::FileProblem::LeadsOutside)
        file.End(Outcome::Failed, Remark::OutsideCloudFolder);
    else
        Fail(file, ProblemKind::NotCopied, QStringLiteral("Failed to copy: ") + Reason(file, why));
    return false;
}

} // namespace Halvern::Jobs
