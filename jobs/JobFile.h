// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Ledger.h"
#include "ProblemBook.h"

#include "corsync/ImportRequest.h"
#include "corsync/JobResult.h"
#include "corsync/Plan.h"

#include "base/FileStatus.h"
#include "filelink/FileSet.h"
#include "syncservices/FileMapping.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

namespace Halvern::Jobs {

/// A link inside a source file.
struct JobLink
{
    /// As it stands in the file.
    SyncServices::FileLink stored;
    /// The absolute path that it leads to; of a URL the URL.
    QString file;
    /// Place of that file in the job; -1: the file is no part of it.
    qsizetype member = -1;
    LinkState state = LinkState::Found;
};

/// What is to be done with a file.
enum class Deed
{
    Nothing,
    /// A copy is made, and its links are rewritten.
    Copy,
    /// The copy that is there gets other links.
    Relink,
};

/// A file or folder of a job, from its discovery until it is done.
struct JobFile
{
    QString source;
    bool isSelected = false;
    bool isFolder = false;
    bool isNestedFolder = false;
    bool isHidden = false;
    bool outside = false;
    bool isUnknownFormat = false;
    /// As it was before its links were read.
    Base::FileStatus status;

    QList<JobLink> links;
    LinksState linksState = LinksState::Read;
    /// False when its links are not asked for.
    bool linksKnown = false;
    /// An earlier job moved it: its copy is all that there is.
    bool wasMoved = false;
    /// Which plug-ins would read it, and what they find around it, as LinkReader tells; or which
    /// did so earlier and are gone. Empty for none.
    QString readers;
    /// Where its links led when they could be read. Requires that they cannot be now.
    QStringList earlierLinks;

    /// What the module sees of it while targets are assigned; null for what gets none.
    std::shared_ptr<SyncServices::FileMapping> mapping;
    QString target;
    /// Where a linked file lies that is in the cloud folder already, by that folder's own name.
    QString placeInCloud;
    /// A layout wants it at exactly its target.
    bool keepsTarget = false;
    /// The layout has put it elsewhere, because its place is taken.
    bool isAside = false;
    /// Its links are neither followed nor rewritten, a layout says.
    bool skipsLinks = false;
    /// Only links of such files led here: it is no part of the job any more.
    bool isDropped = false;
    /// What is recorded of the copy at the target, when it was made from this source.
    std::optional<CopyRecord> record;
    /// The copy was made anew since: of the record only the origin still holds, and what it linked.
    bool isRecordOld = false;
    /// What stood at the target when that was looked at.
    Base::FileStatus targetStatus;

    Deed deed = Deed::Nothing;
    Outcome outcome = Outcome::NotDone;
    Remark remark = Remark::None;
    QString detail;
    /// All links that the copy should hold, and those of them that must be written.
    QList<SyncServices::FileLink> wantedLinks;
    QList<SyncServices::FileLink> rewrites;

    bool linksRewritten = false;
    bool sourceDeleted = false;
    SourceStays sourceStays = SourceStays::No;
    /// The file because of which it stays.
    QString staysFor;
    /// The copy is in place, made or confirmed by this job.
    bool isDone = false;
    /// Its links are still to be rewritten.
    bool isPending = false;
    /// The source as it was copied; without a copy as it was when the selection was read.
    Base::FileStatus taken;
    FileStamp sourceStamp;
    FileStamp targetStamp;
    /// Before they were taken.
    qint64 recordedAt = 0;

    /// The copy would be the file itself.
    bool StaysInPlace() const
    {
        return !target.isEmpty() && (target == source || target == placeInCloud);
    }
    /// Null when nothing is recorded of the copy that is there now.
    const CopyRecord* RecordOfCopy() const { return record && !isRecordOld ? &*record : nullptr; }
    /// It is to have a copy, as far as is known.
    bool HasTarget() const { return !isFolder && !isDropped && mapping && !IsOut(); }
    /// It is settled that it gets no copy.
    bool IsOut() const
    {
        return isDropped || (outcome != Outcome::NotDone && deed == Deed::Nothing);
    }
    /// The copy that is there has its links right, and a new one would not: they cannot be read
    /// now.
    bool LosesLinks() const
    {
        return linksKnown && linksState != LinksState::Read && record &&
               !record->targetLinks.isEmpty();
    }
    /// Links that are there, but could not be read.
    void NoteUnreadLinks()
    {
        remark = Remark::LinksNotRead;
        detail =
            isUnknownFormat ? QStringLiteral("no plug-in reads its format any more") : QString();
    }
    void End(Outcome result, Remark why = Remark::None, const QString& more = {})
    {
        deed = Deed::Nothing;
        outcome = result;
        remark = why;
        detail = more;
    }
};

/// All files of a job, in the order in which they were found. Places never change.
class JobFiles
{
public:
    qsizetype Add(JobFile file);
    /// The file with this path, or another spelling of it that is the same file on the disk; -1.
    qsizetype Find(const QString& path) const;

    qsizetype Size() const { return qsizetype(m_files.size()); }
    JobFile& At(qsizetype place) { return m_files[std::size_t(place)]; }
    const JobFile& At(qsizetype place) const { return m_files[std::size_t(place)]; }
    auto begin() { return m_files.begin(); }
    auto end() { return m_files.end(); }
    auto begin() const { return m_files.begin(); }
    auto end() const { return m_files.end(); }

private:
    std::vector<JobFile> m_files;
    QHash<QString, qsizetype> m_byPath;
    /// The first of several whose paths fold alike, and whether there are more.
    QMultiHash<QString, qsizetype> m_byFoldedPath;
};

/// A source of an earlier import that is no part of this one, and a selected file that it links.
struct OtherHolder
{
    QString source;
    qsizetype linked = -1;
};

/// A copy that nothing asks for any more.
struct Orphan
{
    CopyRecord record;
    /// Its source is gone, but another copy links it.
    bool isStillLinked = false;
};

/// Everything one job knows.
struct JobState
{
    ImportRequest request;
    /// Absolute, cleaned.
    QString target;
    QString cloudFolder;
    JobFiles files;
    QList<LeftOutItem> leftOut;
    /// Of a move only.
    QList<OtherHolder> otherHolders;
    QList<Orphan> orphans;
    /// Targets of copies that files of this job link no more, which is to be recorded before
    /// anything is written.
    QStringList lostCopies;
    /// Targets of those that were put into the base store; in a plan, that will be.
    QStringList pruned;
    /// Why others were not, or will not be, by their targets.
    QHash<QString, QString> notPruned;
    /// A registration file is broken: what no plug-in reads may be read by one that is missing.
    bool hasBrokenPlugins = false;
    /// False until the selection was read.
    bool selectionRead = false;
    bool cancelled = false;
    bool executed = false;
};

/// The place of a path in the cloud folder of a job, below that folder.
std::filesystem::path BelowCloudFolder(const QString& path, const JobState& job);

} // namespace Halvern::Jobs
