// SPDX-License-Identifier: Apache-2.0

#include "LinkPlanning.h"

#include "Paths.h"

#include "base/FileAttributes.h"
#include "syncplugin/FileLinkInfo.h"

#include <QtCore/QDir>
#include <QtCore/QHash>
#include <QtCore/QSet>

#include <algorithm>

namespace Halvern::Jobs {

using SyncServices::FileLink;

namespace {

/// What a link record of the contract holds, without its terminating zero.
constexpr qsizetype LongestLink = qsizetype(SyncPlugin::MaxLinkText) - 1;

/// The folders that there will be, as far as links go through them: the job's, and those on the
/// disk.
class TargetFolders
{
public:
    explicit TargetFolders(const JobFiles& files) : m_files(files) {}

    bool Hold(const QString& folder)
    {
        if (m_keys.isEmpty())
            Collect();
        return m_keys.contains(PathKey(folder)) || IsFolder(folder);
    }

private:
    void Collect()
    {
        for (const JobFile& file : m_files)
            for (QString folder = file.target; folder.lastIndexOf(u'/') > 0;) {
                folder.truncate(folder.lastIndexOf(u'/'));
                const qsizetype size = m_keys.size();
                m_keys.insert(PathKey(folder));
                if (m_keys.size() == size)
                    break;
            }
    }

    const JobFiles& m_files;
    QSet<QString> m_keys;
};

bool LeadsThereAsItStands(const QString& text, const QString& holder, const JobFile& linked,
                          TargetFolders& folders)
{
    // Programs do not get through a folder that does not come along.
    const QStringList way = FoldersOnTheWay(text, holder);
    if (!std::all_of(way.begin(), way.end(),
                     [&](const QString& folder) { return folders.Hold(folder); }))
        return false;
    const QString path = ResolveLink(text, holder);
    // A whole path may lead into the cloud folder through symbolic links.
    return PathKey(path) == PathKey(linked.target) ||
           (linked.StaysInPlace() && QDir::isAbsolutePath(text) &&
            PathKey(RealPath(path)) == PathKey(RealPath(linked.target)));
}

void WorkOutLinksOf(JobFile& file, const JobFiles& files, TargetFolders& folders)
{
    file.wantedLinks.clear();
    file.rewrites.clear();
    for (const JobLink& link : file.links) {
        FileLink wanted = link.stored;
        const QString place = file.skipsLinks ? QString() : PlaceOf(link, file, files);
        if (!place.isEmpty() &&
            !LeadsThereAsItStands(wanted.Path, file.target, files.At(link.member), folders)) {
            wanted.Path = WayFrom(file.target, place);
            file.rewrites.append(wanted);
        }
        file.wantedLinks.append(wanted);
    }
}

/// None when all links can be written.
Remark ObjectionTo(const QList<FileLink>& links)
{
    for (const FileLink& link : links) {
        if (link.Path.isEmpty())
            return Remark::LinkEmpty;
        if (IsLinkTooLong(link.Path))
            return Remark::LinkTooLong;
    }
    return Remark::None;
}

/// Where the file of a link is gone from the sources, what the copy holds stays.
void KeepWhatIsRecorded(JobFile& file, const JobFiles& files)
{
    const QList<FileLink>& recorded = file.record->targetLinks;
    if (recorded.size() != file.links.size())
        return;
    for (qsizetype i = 0; i < recorded.size(); ++i)
        if (PlaceOf(file.links.at(i), file, files).isEmpty())
            file.wantedLinks[i].Path = recorded.at(i).Path;
}

bool HoldsOtherLinks(const JobFile& file)
{
    const QList<FileLink>& recorded = file.record->targetLinks;
    return !std::equal(recorded.begin(), recorded.end(), file.wantedLinks.begin(),
                       file.wantedLinks.end(),
                       [](const FileLink& a, const FileLink& b) { return a.Path == b.Path; });
}

/// A copy that this project made, that nobody changed, and whose links are known.
bool IsOurs(const JobFile& file, const JobState& job)
{
    return (file.outcome == Outcome::Unchanged || file.outcome == Outcome::InPlace) &&
           file.linksKnown && file.linksState == LinksState::Read && file.record &&
           PathKey(file.record->project) == PathKey(job.target);
}

/// Its links are still to be rewritten, and this job does not try: it does not ask for them.
bool StaysPending(const JobFile& file, const JobState& job)
{
    return file.outcome == Outcome::Unchanged && file.deed == Deed::Nothing && !file.isDone &&
           file.record && file.record->isRewritePending &&
           PathKey(file.record->project) == PathKey(job.target);
}

/// True when a file failed.
bool FailImpossibleLinks(JobState& job)
{
    bool anyFailed = false;
    for (JobFile& file : job.files) {
        const Remark objection =
            file.deed == Deed::Copy ? ObjectionTo(file.rewrites) : Remark::None;
        if (objection == Remark::None)
            continue;
        file.End(Outcome::Failed, objection);
        anyFailed = true;
    }
    return anyFailed;
}

} // namespace

bool IsLinkTooLong(const QString& text)
{
    return text.size() > LongestLink;
}

bool HasPlace(const JobFile& file)
{
    if (file.isDropped || file.target.isEmpty())
        return false;
    switch (file.outcome) {
    case Outcome::Copied:
    case Outcome::Moved:
    case Outcome::Replaced:
    case Outcome::Updated:
    case Outcome::Renamed:
    case Outcome::Kept:
    case Outcome::Left:
    case Outcome::Unchanged:
    case Outcome::InPlace:
    case Outcome::Locked:
    case Outcome::NotDone:
        return true;
    case Outcome::Skipped:
        return (file.remark == Remark::OnlyLinksWanted || file.remark == Remark::LinksNotRead) &&
               ExistsOnDisk(file.target);
    case Outcome::Failed:
        // The earlier copy, which could not be replaced.
        return file.record && ExistsOnDisk(file.target);
    case Outcome::Missing:
    case Outcome::Refused:
    case Outcome::Url:
    case Outcome::Orphaned:
    case Outcome::Pruned:
        return false;
    }
    return false;
}

QString PlaceOf(const JobLink& link, const JobFile& holder, const JobFiles& files)
{
    if (link.member < 0 || link.state != LinkState::Found)
        return {};
    const JobFile& linked = files.At(link.member);
    // A file that links itself means its copy.
    return &linked == &holder || HasPlace(linked) ? linked.target : QString();
}

void WorkOutLinks(JobState& job)
{
    TargetFolders folders(job.files);
    for (JobFile& file : job.files)
        if (!file.isFolder && !file.target.isEmpty())
            WorkOutLinksOf(file, job.files, folders);
}

void PlanLinks(JobState& job)
{
    // What has failed has no place: links that should lead there stay as they are.
    do
        WorkOutLinks(job);
    while (FailImpossibleLinks(job));
    for (JobFile& file : job.files)
        if (IsOurs(file, job))
            KeepWhatIsRecorded(file, job.files);
    for (JobFile& file : job.files) {
        if (!IsOurs(file, job) || !(file.record->isRewritePending || HoldsOtherLinks(file)))
            continue;
        file.remark = ObjectionTo(file.rewrites);
        if (file.remark == Remark::None && !Base::IsWritable(Native(file.target)))
            file.remark = Remark::TargetReadOnly;
        file.isPending = file.remark != Remark::None;
        if (!file.isPending)
            file.deed = Deed::Relink;
    }
    for (JobFile& file : job.files)
        if (!file.isPending && StaysPending(file, job)) {
            file.isPending = true;
            file.remark = Remark::RewritePending;
        }
}

} // namespace Halvern::Jobs
