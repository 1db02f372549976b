// SPDX-License-Identifier: Apache-2.0

#include "SourceRemoval.h"

#include "FileStamps.h"
#include "Paths.h"

#include <QtCore/QFileInfo>

#include <algorithm>
#include <utility>

namespace Halvern::Jobs {

namespace {

bool IsGiven(const JobFile& file)
{
    return file.isSelected && !file.isFolder && !file.isDropped;
}

} // namespace

/// Why it would stay if it were alone.
SourceStays SourceRemoval::OwnReason(const JobFile& file) const
{
    switch (file.outcome) {
    case Outcome::Copied:
    case Outcome::Moved:
    case Outcome::Replaced:
    case Outcome::Updated:
    case Outcome::Renamed:
        if (m_job.executed && !file.isDone)
            return SourceStays::NotCompleted;
        break;
    case Outcome::Unchanged:
        break;
    case Outcome::Kept:
    case Outcome::Left:
        return SourceStays::CopyDiffers;
    case Outcome::Locked:
    case Outcome::InPlace:
    case Outcome::Skipped:
    case Outcome::Missing:
    case Outcome::Refused:
    case Outcome::Url:
    case Outcome::Orphaned:
    case Outcome::Pruned:
    case Outcome::Failed:
    case Outcome::NotDone:
        return SourceStays::CopyNotInOrder;
    }
    if (file.isPending || file.linksState == LinksState::Failed)
        return SourceStays::CopyNotInOrder;
    // Whether it holds links is known again once the plug-ins are.
    return m_job.hasBrokenPlugins && file.isUnknownFormat ? SourceStays::PluginBroken
                                                          : SourceStays::No;
}

/// A copy of it is where it should be, with the links that it should have; in a plan, will be.
bool SourceRemoval::HasGoodCopy(const JobFile& file) const
{
    return OwnReason(file) == SourceStays::No;
}

bool SourceRemoval::IsInOrder(const JobFile& file) const
{
    return file.outcome == Outcome::Url || file.outcome == Outcome::InPlace || HasGoodCopy(file);
}

/// It is there after the move, and leads where it led.
bool SourceRemoval::WillStay(const JobFile& file) const
{
    if (file.isFolder || file.wasMoved || file.outcome == Outcome::Missing ||
        file.outcome == Outcome::Url)
        return false;
    // In the cloud folder, with links that this job lets lead to the copies.
    if (file.outcome == Outcome::InPlace && !file.isPending &&
        (file.linksRewritten || file.deed == Deed::Relink))
        return false;
    return !IsGiven(file) || file.sourceStays != SourceStays::No || !HasGoodCopy(file);
}

QList<qsizetype> SourceRemoval::LinkedFrom(const JobFile& holder) const
{
    QList<qsizetype> linked;
    const auto add = [&](qsizetype place) {
        if (place >= 0)
            linked.append(place);
    };
    for (const JobLink& link : holder.links)
        add(link.member);
    for (const QString& path : holder.earlierLinks)
        add(m_job.files.Find(path));
    const QFileInfo info(holder.source);
    if (info.isSymbolicLink()) {
        add(m_job.files.Find(AbsolutePath(info.symLinkTarget())));
        add(m_job.files.Find(info.canonicalFilePath()));
    }
    return linked;
}

void SourceRemoval::FindLinks()
{
    m_linked.clear();
    for (const JobFile& file : m_job.files)
        m_linked.append(file.isFolder ? QList<qsizetype>() : LinkedFrom(file));
}

void SourceRemoval::Keep(qsizetype place, SourceStays why, const QString& because)
{
    JobFile& file = m_job.files.At(place);
    file.sourceStays = why;
    file.staysFor = because;
    if (file.outcome == Outcome::Moved)
        file.outcome = Outcome::Copied;
}

/// Files that link something that is not in order, directly or through others.
void SourceRemoval::KeepForTheirLinks()
{
    JobFiles& files = m_job.files;
    QList<QList<qsizetype>> holders(files.Size());
    // For each file the one that is not in order; -1 when all is.
    QList<qsizetype> culprits(files.Size(), -1);
    QList<qsizetype> work;
    for (qsizetype place = 0; place < files.Size(); ++place) {
        const JobFile& file = files.At(place);
        for (const JobLink& link : file.links)
            if (link.member >= 0)
                holders[link.member].append(place);
        if (file.isFolder || file.isDropped || IsInOrder(file))
            continue;
        culprits[place] = place;
        work.append(place);
    }
    for (qsizetype at = 0; at < work.size(); ++at)
        for (const qsizetype holder : holders.at(work.at(at))) {
            if (culprits.at(holder) >= 0)
                continue;
            culprits[holder] = culprits.at(work.at(at));
            work.append(holder);
            if (IsGiven(files.At(holder)) && HasGoodCopy(files.At(holder)))
                Keep(holder, SourceStays::LinkNotInOrder, files.At(culprits.at(holder)).source);
        }
}

/// A source that stays would lead nowhere when what it links went.
void SourceRemoval::KeepWhatTheyLink(QList<qsizetype> staying)
{
    for (qsizetype at = 0; at < staying.size(); ++at)
        for (const qsizetype place : m_linked.at(staying.at(at))) {
            const JobFile& file = m_job.files.At(place);
            if (!IsGiven(file) || WillStay(file) || file.sourceDeleted)
                continue;
            Keep(place, SourceStays::Linked, m_job.files.At(staying.at(at)).source);
            staying.append(place);
        }
}

void SourceRemoval::Foresee()
{
    FindLinks();
    for (qsizetype place = 0; place < m_job.files.Size(); ++place) {
        JobFile& file = m_job.files.At(place);
        file.sourceStays = SourceStays::No;
        file.staysFor.clear();
        const bool isSettled = file.outcome == Outcome::Failed ||
                               file.outcome == Outcome::Skipped ||
                               file.outcome == Outcome::Refused || file.outcome == Outcome::NotDone;
        if (IsGiven(file) && !isSettled && OwnReason(file) != SourceStays::No)
            Keep(place, OwnReason(file));
    }
    KeepForTheirLinks();
    for (const OtherHolder& holder : std::as_const(m_job.otherHolders))
        if (!WillStay(m_job.files.At(holder.linked)))
            Keep(holder.linked, SourceStays::Linked, holder.source);
    QList<qsizetype> staying;
    for (qsizetype place = 0; place < m_job.files.Size(); ++place)
        if (WillStay(m_job.files.At(place)))
            staying.append(place);
    KeepWhatTheyLink(staying);
}

QList<qsizetype> SourceRemoval::Deletable() const
{
    QList<qsizetype> places;
    for (qsizetype place = 0; place < m_job.files.Size(); ++place) {
        const JobFile& file = m_job.files.At(place);
        if (IsGiven(file) && file.sourceStays == SourceStays::No && HasGoodCopy(file))
            places.append(place);
    }
    return places;
}

/// What links comes before what it links, so that a file that cannot be deleted leads to what is
/// there still; in a circle any order is as good as another.
QList<qsizetype> SourceRemoval::HoldersFirst(const QList<qsizetype>& places) const
{
    QList<bool> isOpen(m_job.files.Size(), false);
    for (const qsizetype place : places)
        isOpen[place] = true;
    QList<qsizetype> order;
    for (const qsizetype first : places) {
        // Places on the way down, with how many of their links were looked at.
        QList<std::pair<qsizetype, qsizetype>> way;
        if (std::exchange(isOpen[first], false))
            way.append({first, 0});
        while (!way.isEmpty()) {
            auto& [place, next] = way.last();
            if (next == m_linked.at(place).size()) {
                order.append(place);
                way.removeLast();
                continue;
            }
            const qsizetype linked = m_linked.at(place).at(next++);
            if (std::exchange(isOpen[linked], false))
                way.append({linked, 0});
        }
    }
    std::reverse(order.begin(), order.end());
    // Once what a symbolic link leads to is gone, it cannot be asked any more.
    std::stable_partition(order.begin(), order.end(), [&](qsizetype place) {
        return QFileInfo(m_job.files.At(place).source).isSymbolicLink();
    });
    return order;
}

/// Before the first one goes, so that what they link stays, too.
void SourceRemoval::KeepWhatMustNotGo(const QList<qsizetype>& places)
{
    QList<qsizetype> staying;
    for (const qsizetype place : places) {
        if (MayGo(m_job.files.At(place)))
            continue;
        Keep(place, SourceStays::NotDeleted);
        staying.append(place);
    }
    KeepWhatTheyLink(staying);
}

void SourceRemoval::Remove(const std::function<bool(const QList<JobFile*>&)>& announced,
                           const std::function<void(JobFile&)>& told)
{
    Foresee();
    KeepWhatMustNotGo(Deletable());
    for (JobFile& file : m_job.files)
        if (IsGiven(file) && file.sourceStays != SourceStays::No && HasGoodCopy(file))
            told(file);
    const QList<qsizetype> places = HoldersFirst(Deletable());
    QList<JobFile*> files;
    for (const qsizetype place : places)
        files.append(&m_job.files.At(place));
    const bool isAnnounced = announced(files);
    for (JobFile* file : std::as_const(files))
        file->sourceDeleted = false;
    if (!isAnnounced) {
        KeepRest();
        return;
    }
    for (const qsizetype place : places) {
        JobFile& file = m_job.files.At(place);
        if (file.sourceStays == SourceStays::No) {
            file.sourceDeleted = MayGo(file) && RemoveSource(file);
            if (!file.sourceDeleted) {
                Keep(place, SourceStays::NotDeleted);
                KeepWhatTheyLink({place});
            }
        }
        told(file);
    }
    RemoveFolders();
}

void SourceRemoval::KeepRest()
{
    for (qsizetype place = 0; place < m_job.files.Size(); ++place) {
        const JobFile& file = m_job.files.At(place);
        if (!IsGiven(file) || file.sourceStays != SourceStays::No ||
            !(file.isDone || file.outcome == Outcome::Unchanged))
            continue;
        const SourceStays own = OwnReason(file);
        Keep(place, own == SourceStays::No ? SourceStays::NotCompleted : own);
    }
}

/// The same file as when it was read: not only as long and as old.
bool SourceRemoval::IsWhatWasTaken(const JobFile& file, const Base::FileStatus& now)
{
    const Base::FileStatus& was = file.taken.Exists() ? file.taken : file.status;
    if (now.kind != Base::FileKind::File || now.size != was.size || now.modified != was.modified ||
        now.device != was.device || now.index != was.index)
        return false;
    // A name that it has lost meanwhile changes this time, too, and Windows has none; then its
    // content tells.
    if (now.changed == was.changed && now.changed != 0)
        return true;
    if (file.sourceStamp.hash.isEmpty())
        return now.changed == was.changed;
    return StampOf(file.source, true).hash == file.sourceStamp.hash;
}

bool SourceRemoval::Fail(const JobFile& file, const QString& text)
{
    m_control.Report({FileLink::Stage::CopyFiles,
                      FileLink::ProblemKind::SourceNotDeleted,
                      file.source,
                      text,
                      {}});
    return false;
}

/// It is what was copied, and not its own copy.
bool SourceRemoval::MayGo(const JobFile& file)
{
    Base::FileStatus now;
    const Base::FileResult result = m_folders.Status(file.source, now);
    if (!result)
        return Fail(file, QStringLiteral("The source could not be deleted: ") +
                              QString::fromStdString(result.Text()));
    // Another import that moves it was faster; the copy is in order.
    if (!now.Exists())
        return true;
    const bool isLink = now.kind == Base::FileKind::Link;
    if (!isLink && IsSameFile(file.source, file.target))
        return Fail(file, QStringLiteral("The source is its own copy and was not deleted"));
    if (!(isLink && QFileInfo(file.source).isSymbolicLink()) && !IsWhatWasTaken(file, now))
        return Fail(file, QStringLiteral("The source changed since it was copied and was not "
                                         "deleted"));
    return true;
}

/// The name goes, and with it the file, when it has no other.
bool SourceRemoval::RemoveSource(const JobFile& file)
{
    const Base::FileResult result = m_folders.Remove(file.source);
    // Another import that moves it was faster.
    return result || !ExistsOnDisk(file.source) ||
           Fail(file, QStringLiteral("The source could not be deleted: ") +
                          QString::fromStdString(result.Text()));
}

void SourceRemoval::RemoveFolders()
{
    QStringList folders;
    for (const JobFile& file : m_job.files)
        if (file.isFolder && file.isSelected && file.outcome != Outcome::Failed &&
            !m_job.request.linksOnly)
            folders.append(file.source);
    // Those inside come before those around them; one that holds something stays.
    std::sort(folders.begin(), folders.end(), std::greater<QString>());
    for (const QString& folder : std::as_const(folders))
        static_cast<void>(m_folders.RemoveFolder(folder));
}

} // namespace Halvern::Jobs
