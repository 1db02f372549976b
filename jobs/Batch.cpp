// SPDX-License-Identifier: Apache-2.0

#include "Batch.h"

#include "FileStamps.h"
#include "Paths.h"
#include "Turn.h"

#include "base/FileAttributes.h"
#include "base/FileCopy.h"
#include "base/FileLock.h"
#include "base/NativePath.h"
#include "syncservices/SyncManager.h"

#include <utility>

namespace Halvern::Jobs {

using Base::FileProblem;
using FileLink::ProblemKind;
using FileLink::Stage;
using SyncServices::SyncManager;

namespace {

/// So much work a kill takes back at most.
constexpr std::size_t MostFiles = 2000;
constexpr qint64 MostBytes = qint64(256) << 20;
constexpr qint64 LongestWait = 2000;

/// Nobody touched it since.
bool IsAsItWas(const Base::FileStatus& was, const Base::FileStatus& is)
{
    return was.kind == is.kind && was.size == is.size && was.modified == is.modified &&
           was.device == is.device && was.index == is.index;
}

/// A copy with another name has become this job's own by the time its links change.
bool Replaces(const StagedFile& staged)
{
    const JobFile& file = *staged.file;
    return file.targetStatus.Exists() && (file.outcome != Outcome::Renamed || staged.isRelink);
}

} // namespace

std::filesystem::path Batch::Below(const QString& target) const
{
    return Native(target.mid(m_job.cloudFolder.size() + 1));
}

void Batch::Add(StagedFile staged)
{
    if (m_files.empty())
        m_sinceFirst.start();
    // The next one is made ready alone, too: plug-ins look at what lies beside a file.
    const std::filesystem::path aside =
        staged.isAside ? staged.place : m_staging.SetAside(staged.place);
    m_cannotWait = m_cannotWait || aside.empty();
    if (!aside.empty()) {
        staged.place = aside;
        staged.path = m_staging.Absolute(aside);
        staged.text = QStringView(Base::PathText(staged.path)).toString();
    }
    m_bytes += staged.file->targetStamp.bytes;
    m_files.push_back(std::move(staged));
}

bool Batch::IsFull() const
{
    return m_cannotWait || m_files.size() >= MostFiles || m_bytes >= MostBytes ||
           (!m_files.empty() && m_sinceFirst.hasExpired(LongestWait));
}

bool Batch::Complete(const Hooks& hooks)
{
    bool goesOn = m_files.empty() || hooks.mayGoOn();
    for (std::size_t next = 0; goesOn && next < m_files.size();) {
        const std::vector<StagedFile*> ready = MakeWay(next, hooks);
        const Base::FileResult flushed = m_flush.Run();
        const std::vector<const StagedFile*> announced(ready.begin(), ready.end());
        if (!flushed)
            FailAll(ready, &flushed, hooks);
        else if (!hooks.announce(announced))
            FailAll(ready, nullptr, hooks);
        else if (!ready.empty()) {
            const Turn turn(m_cloud.Path(), hooks.waits);
            goesOn = PlaceAll(ready, hooks);
        }
    }
    for (const StagedFile& staged : m_files) {
        if (staged.file->deed != Deed::Nothing)
            Drop(staged);
        if (!staged.isPlaced)
            static_cast<void>(m_cloud.Remove(staged.place));
    }
    m_files.clear();
    m_bytes = 0;
    m_cannotWait = false;
    return goesOn;
}

/// Those that nothing stands against, from `next` on: fewer than all when no more can be kept
/// before some of them have got their places, which makes room.
std::vector<StagedFile*> Batch::MakeWay(std::size_t& next, const Hooks& hooks)
{
    std::vector<StagedFile*> ready;
    for (; next < m_files.size(); ++next) {
        StagedFile& staged = m_files[next];
        bool isToWait = false;
        if (Look(staged) && KeepOld(staged, ready.empty(), isToWait)) {
            m_flush.AddFile(staged.place);
            ready.push_back(&staged);
        } else if (isToWait) {
            break;
        } else {
            hooks.done(staged);
        }
    }
    return ready;
}

bool Batch::PlaceAll(const std::vector<StagedFile*>& files, const Hooks& hooks)
{
    for (StagedFile* staged : files) {
        if (!hooks.mayGoOn())
            return false;
        Settle(*staged, Place(*staged));
        hooks.done(*staged);
    }
    return true;
}

/// Without a reason the database is one, and says so itself.
void Batch::FailAll(const std::vector<StagedFile*>& files, const Base::FileResult* why,
                    const Hooks& hooks)
{
    for (StagedFile* staged : files) {
        Fail(*staged, why ? QString::fromStdString(why->Text())
                          : QStringLiteral("what was to be done could not be recorded"));
        hooks.done(*staged);
    }
}

void Batch::Fail(StagedFile& staged, const QString& text)
{
    JobFile& file = *staged.file;
    if (!staged.isRelink) {
        m_control.Report({Stage::CopyFiles,
                          ProblemKind::NotCopied,
                          file.source,
                          QStringLiteral("Failed to copy: ") + text,
                          {}});
        file.End(Outcome::Failed);
        return;
    }
    m_control.Report({Stage::RepathFiles, ProblemKind::LinksNotRewritten, file.target, text, {}});
    Settle(staged, false);
}

/// Another import was faster: what has appeared at the target since the plan was made is what this
/// one would have put there.
bool Batch::Adopt(JobFile& file, const StagedFile& staged)
{
    Base::FileStatus there;
    if (staged.isRelink || !m_cloud.Status(Below(file.target), there) ||
        there.kind != Base::FileKind::File)
        return false;
    const QByteArray made = file.targetStamp.hash;
    const FileStamp found = StampOf(file.target, true);
    if (made.isEmpty() || found.hash != made)
        return false;
    file.targetStamp = found;
    file.End(Outcome::Unchanged);
    file.isDone = true;
    m_flush.AddFile(Below(file.target));
    m_flush.AddName(Below(file.target));
    return true;
}

/// What stands at the target is what the plan saw, and may go. False when the file is settled.
bool Batch::Look(StagedFile& staged)
{
    JobFile& file = *staged.file;
    const Base::FileResult looked = m_cloud.Status(Below(file.target), staged.there);
    if (!looked) {
        Refuse(staged, looked);
        return false;
    }
    if (!staged.there.Exists())
        return true;
    const bool isExpected = Replaces(staged) && IsAsItWas(file.targetStatus, staged.there);
    if (isExpected)
        return true;
    if (Adopt(file, staged))
        Settle(staged, true);
    else
        Refuse(staged, Base::FileResult::Refused(FileProblem::Changed, {}));
    return false;
}

/// False when what stands at the target must stay; or when it is to wait until those before it have
/// got their places.
bool Batch::KeepOld(StagedFile& staged, bool isFirst, bool& isToWait)
{
    JobFile& file = *staged.file;
    const std::filesystem::path target = Native(file.target);
    if (!staged.there.Exists() || staged.there.kind == Base::FileKind::Link)
        return true;
    if (!staged.isRelink && !Base::IsWritable(target)) {
        m_control.Report({Stage::CopyFiles,
                          ProblemKind::TargetReadOnly,
                          file.source,
                          QStringLiteral("The target exists and is read-only"),
                          {}});
        file.End(Outcome::Failed);
        Settle(staged, false);
        return false;
    }
    if (Base::IsFileLocked(target)) {
        file.End(Outcome::Locked);
        Settle(staged, false);
        return false;
    }
    QString reason;
    if (SyncManager::GetInstance()->KeepVersion(file.target, &staged.version, &reason)) {
        m_flush.AddOutside(staged.version);
        return true;
    }
    isToWait = !isFirst;
    if (isToWait)
        return false;
    file.End(Outcome::Failed, Remark::NotKept, reason);
    Settle(staged, false);
    return false;
}

/// What the link leads to is not touched, and how it read is not lost.
bool Batch::SetLinkAside(JobFile& file)
{
    const Base::FileResult moved =
        file.remark == Remark::LinkSetAside
            ? m_cloud.Move(Below(file.target), Below(file.detail), Base::Existing::Keep)
            : Base::FileResult::Refused(FileProblem::NameTaken, {});
    if (moved)
        return true;
    if (moved.Problem() == FileProblem::NameTaken) {
        file.End(Outcome::Failed, Remark::TargetChanged);
        return false;
    }
    m_control.Report({Stage::CopyFiles,
                      ProblemKind::NotCopied,
                      file.source,
                      QStringLiteral("The symbolic link there could not be set aside: ") +
                          QString::fromStdString(moved.Text()),
                      {}});
    file.End(Outcome::Failed);
    return false;
}

Base::FileResult Batch::Rename(const StagedFile& staged)
{
    const std::filesystem::path target = Below(staged.file->target);
    const bool replaces = staged.there.Exists() && staged.there.kind != Base::FileKind::Link;
    const Base::FileResult result =
        replaces ? m_cloud.ReplaceUnchanged(staged.place, target, staged.there)
                 : m_cloud.Move(staged.place, target, Base::Existing::Keep);
    return result.Problem() == FileProblem::OtherDisk ? MoveAcross(staged) : result;
}

/// Another disk is mounted in the cloud folder: the copy is made ready beside its place.
Base::FileResult Batch::MoveAcross(const StagedFile& staged)
{
    const std::filesystem::path target = Below(staged.file->target);
    const std::filesystem::path beside = m_staging.PlaceOnOtherDisk(target);
    Base::FileResult result = beside.empty()
                                  ? Base::FileResult::Failed("no place beside it")
                                  : Base::CopyFileBytes(staged.path, m_cloud.Path() / beside);
    if (result)
        result = m_cloud.Flush(beside);
    if (result)
        result = staged.there.kind == Base::FileKind::File
                     ? m_cloud.ReplaceUnchanged(beside, target, staged.there)
                     : m_cloud.Move(beside, target, Base::Existing::Keep);
    if (result) {
        // Its clock may count in other steps.
        staged.file->targetStamp.modified = StampOf(staged.file->target, false).modified;
        static_cast<void>(m_cloud.Remove(staged.place));
        return result;
    }
    static_cast<void>(m_cloud.Remove(beside));
    return result.Code() == 0 ? result
                              : Base::FileResult::Failed(Base::PathToUtf8(target), result.Code());
}

bool Batch::Place(StagedFile& staged)
{
    JobFile& file = *staged.file;
    const std::filesystem::path target = Below(file.target);
    const bool isLink = staged.there.kind == Base::FileKind::Link;
    if (isLink && !SetLinkAside(file))
        return false;
    const Base::FileResult result = Rename(staged);
    if (result) {
        staged.isPlaced = true;
        file.isRecordOld = file.isRecordOld || !staged.isRelink;
        m_flush.AddName(target);
        return true;
    }
    if (isLink)
        static_cast<void>(m_cloud.Move(Below(file.detail), target, Base::Existing::Keep));
    Base::FileStatus now;
    const bool isTaken = result.Problem() == FileProblem::NameTaken ||
                         result.Problem() == FileProblem::Changed ||
                         (m_cloud.Status(target, now) && !IsAsItWas(staged.there, now));
    if (isTaken && Adopt(file, staged))
        return true;
    Refuse(staged, isTaken ? Base::FileResult::Refused(FileProblem::Changed, {}) : result);
    return false;
}

void Batch::Refuse(StagedFile& staged, const Base::FileResult& why)
{
    JobFile& file = *staged.file;
    switch (why.Problem()) {
    case FileProblem::Changed:
        file.End(Outcome::Failed, Remark::TargetChanged);
        break;
    case FileProblem::LeadsOutside:
        file.End(Outcome::Failed, Remark::OutsideCloudFolder);
        break;
    case FileProblem::None:
    case FileProblem::Other:
    case FileProblem::Held:
    case FileProblem::Missing:
    case FileProblem::NameTaken:
    case FileProblem::NotAFolder:
    case FileProblem::IsAFolder:
    case FileProblem::NotEmpty:
    case FileProblem::NoSpace:
    case FileProblem::OtherDisk:
    case FileProblem::NameRefused:
    case FileProblem::NotOffered:
        m_control.Report({Stage::CopyFiles,
                          ProblemKind::NotCopied,
                          file.source,
                          QStringLiteral("Failed to copy: ") + m_staging.TextOf(why, file.target),
                          {}});
        file.End(Outcome::Failed);
        break;
    }
    Settle(staged, false);
}

/// What a copy that is placed or failed is from now on.
void Batch::Settle(StagedFile& staged, bool isPlaced)
{
    JobFile& file = *staged.file;
    if (isPlaced) {
        file.isDone = true;
        file.deed = Deed::Nothing;
        if (staged.isRelink) {
            file.linksRewritten = true;
            return;
        }
        file.linksRewritten = staged.isRewritten && file.outcome != Outcome::Unchanged;
        if (file.isPending) {
            file.remark = Remark::RewritePending;
            file.detail.clear();
        }
        return;
    }
    if (!staged.isRelink)
        return;
    FailToRewrite(file, file.outcome == Outcome::Locked);
    if (file.RecordOfCopy())
        return;
    // The copy is what this job made.
    file.targetStamp = staged.made;
    file.recordedAt = staged.madeAt;
}

/// Its turn has not come: it is as it was before it was made ready.
void Batch::Drop(const StagedFile& staged)
{
    JobFile& file = *staged.file;
    file.isPending = staged.isRelink && staged.wasPending;
    if (!staged.isRelink)
        return;
    file.sourceStamp = staged.madeSource;
    file.targetStamp = staged.made;
    file.recordedAt = staged.madeAt;
}

void Batch::FailToRewrite(JobFile& file, bool isHeld)
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

} // namespace Halvern::Jobs
