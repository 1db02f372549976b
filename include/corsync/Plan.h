// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/FileLinks.h"

#include "filelink/Problem.h"

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::Jobs {

/// What will happen, or has happened, to a file.
enum class Outcome
{
    Copied,
    Moved,
    /// Copied to where another file stood.
    Replaced,
    /// The source changed since it was copied, the copy did not: the copy is made anew, the old one
    /// is in the base store. With the remark LinksRewritten only links in it changed, because what
    /// they lead to has got another place.
    Updated,
    /// Copied under a name that was free.
    Renamed,
    /// The file that stands at the target is used as it is.
    Kept,
    /// The copy changed since it was made, the source did not: it stays as it is.
    Left,
    /// Copied earlier, and changed on neither side since; or somebody else put the same content
    /// there.
    Unchanged,
    /// Lies in the cloud cache folder already.
    InPlace,
    /// Not to be copied; the remark says why.
    Skipped,
    /// Another program has the copy open: it is still to be replaced, or its links are still to be
    /// rewritten. Never in a plan.
    Locked,
    /// Linked, but not there.
    Missing,
    /// Linked, but not to be brought along: the boundary does not allow it.
    Refused,
    /// Linked, but no file of this machine.
    Url,
    /// Copied earlier by an import to the same target. Its source is gone from the selection since;
    /// or only links led to it, and no copy links it any more. The copy stays.
    Orphaned,
    /// The same, and the copy was put into the base store.
    Pruned,
    Failed,
    /// The job was cancelled before this file's turn.
    NotDone,
};

/// Why an outcome is what it is, where no problem of the module's tells.
enum class Remark
{
    None,
    /// Skipped: only what the file links to is wanted.
    OnlyLinksWanted,
    /// Skipped: a folder that is linked.
    LinkedFolder,
    /// Skipped: a symbolic link to a folder, or one that leads nowhere, in a source folder.
    LinkToFolder,
    LinkToNothing,
    /// Skipped: neither a file nor a folder.
    NoFile,
    /// Failed: a source that was given, and is neither a file nor a folder.
    SourceNoFile,
    /// Skipped: a pattern excludes it.
    Excluded,
    /// Skipped: the sync database or the base store, in a source folder.
    OwnRecord,
    /// Failed: a folder that could not be listed, a file that could not be read.
    NotReadable,
    /// Failed: a name that is no UTF-8.
    NameNotText,
    /// Failed: it was there when the selection was read, and is gone.
    Vanished,
    /// Failed: it changed while it was copied.
    ChangedWhileCopied,
    /// Failed: the target lies outside the cloud cache folder, also through a symbolic link.
    OutsideCloudFolder,
    /// Failed: the target's system refuses the name, or the path is too long for it.
    NameRefused,
    PathTooLong,
    /// Failed: a file stands where a folder of the target must be.
    FileInTheWay,
    /// Failed, or in place with the links that it has: a link inside the copy would be empty, or
    /// longer than 259 characters.
    LinkEmpty,
    LinkTooLong,
    /// Failed: what stands at the target could not be kept in the base store.
    NotKept,
    /// Orphaned: it is not pruned, because it was changed since it was copied.
    ChangedOrphan,
    /// Failed: after the plan was made another file appeared at the target, or the one there
    /// changed.
    TargetChanged,
    /// Refused: a place of the system, a place where secrets are kept, another user's home, or a
    /// place that is not among those allowed.
    SystemPlace,
    SecretPlace,
    OtherHome,
    NotWithin,
    /// In place, but its links could not be rewritten; every import and `retry` try again.
    RewritePending,
    /// In place, but its links could not be read; every import tries again.
    LinksNotRead,
    /// With Renamed: the earlier copy stays as it is, because files of another import link it.
    SharedCopyStays,
    /// In place, but a link leads to a folder or to something else that is no file: it stays as it
    /// is.
    LinksNoFile,
    /// Skipped: it is gone, because an earlier move of this project has brought it; the detail says
    /// where it is.
    MovedEarlier,
    /// Failed: the path below the source holds a ":".
    ColonInName,
    /// Failed: nothing says where in the cloud cache folder it goes.
    NoTarget,
    /// Failed: the folder could not be made.
    FolderNotMade,
    /// Failed: a folder stands at the target.
    FolderInTheWay,
    /// Failed, and nobody said why.
    Unexplained,
    /// In place, but a cancel came before its links were rewritten; the next import does it.
    LinksNotRewritten,
    /// Updated: nothing else changed in the copy, which is no new one.
    LinksRewritten,
    /// Replaced: a symbolic link stood there, and has the name that the detail tells.
    LinkSetAside,
    /// Orphaned: it is not pruned, because another copy links it.
    StillLinked,
    /// Failed: the file that stands at the target is read-only. Or in place, with links that are to
    /// be rewritten, and cannot be for that reason.
    TargetReadOnly,
};

/// Why the source of a file stays that a move was to delete.
enum class SourceStays
{
    /// It does not, or no move was asked for. Also of a file that failed: its line says enough.
    No,
    /// Something that it links, directly or through others, is not in order.
    LinkNotInOrder,
    /// Its own copy is not: it is to be replaced, or its links are to be read or rewritten.
    CopyNotInOrder,
    /// What stands there was kept, or was changed, and holds something else.
    CopyDiffers,
    /// A source that stays links it, and would lead nowhere.
    Linked,
    /// A registration file is broken: nobody knows whether it holds links.
    PluginBroken,
    /// The job was cancelled, or could not be recorded.
    NotCompleted,
    /// It changed since it was read, is its own copy, or the system refused; a problem tells.
    NotDeleted,
};

/// Why a file is part of the import.
enum class Origin
{
    /// It was given, or lies in a folder that was given.
    Selected,
    /// Another file links it.
    Linked,
    /// Another file finds it by its name and place, without storing a path that could be rewritten.
    Companion,
};

/// Where a file is linked.
struct LinkPlace
{
    QString file;
    /// The link as it stands in that file.
    QString text;

    bool operator==(const LinkPlace&) const = default;
};

/// A link inside a file of the plan, before and after the import.
struct PlannedLink : StoredLink
{
    /// Where the file that it leads to will be, when that is part of the import and gets a place.
    QString newFile;
    /// What the link will say: the way from the copy to `newFile`, which a plug-in writes in the
    /// notation of its format. Known for every link with a `newFile`, and for URLs, which stay as
    /// they are; empty for the others, which are left as they are. In a file that stays where it is
    /// (kept, unchanged, in place) links change only when a file that they lead to gets another
    /// place.
    QString newText;
};

struct PlannedFile
{
    /// Absolute, as is the target; of a URL the URL.
    QString source;
    /// Empty for what gets no place.
    QString target;
    Outcome outcome = Outcome::Copied;
    Remark remark = Remark::None;
    /// With a remark: the pattern that excludes, the file in the way.
    QString detail;
    Origin origin = Origin::Selected;
    /// The source is deleted after copying; or why it will not be, and because of which other file.
    bool deletesSource = false;
    SourceStays sourceStays = SourceStays::No;
    QString staysFor;
    /// It comes along through a link, and lies outside the project: the folder that holds the
    /// selection, or the version-controlled folder around it.
    bool outside = false;
    /// Links of the copy will be rewritten.
    bool rewritesLinks = false;
    /// No plug-in reads files of this type: whether it holds links is not known.
    bool isUnknownFormat = false;
    /// Size of the source; 0 for what is not copied.
    qint64 bytes = 0;
    /// Every link that leads here, in the order of the files that hold them.
    QList<LinkPlace> linkedFrom;
    /// The file's own links, in their order.
    QList<PlannedLink> links;
    /// What went wrong with the file while planning: it is imported as one without links when its
    /// links could not be read.
    QList<FileLink::Problem> problems;
};

/// Why a file cannot have its target.
enum class ConflictKind
{
    /// A file stands there, and the policy is to stop.
    TargetTaken,
    /// A file stands there, and no other name may be or could be given.
    CannotRename,
    /// A folder stands where the file must go.
    FolderInTheWay,
    /// A file stands where the folder must go.
    FileInTheWay,
    /// Another file of the same import goes there.
    SameTarget,
    /// Source and copy both changed since the copy was made.
    BothChanged,
};

/// One side of a conflict: what stands there now, and what stood there when it was recorded.
struct ConflictSide
{
    qint64 bytes = 0;
    QDateTime modified;
    /// Invalid when nothing is recorded.
    QDateTime recordedModified;
    qint64 recordedBytes = 0;
};

/// What to do about one conflict.
enum class ConflictAnswer
{
    Stop,
    Keep,
    Replace,
    Rename,
};

struct Conflict
{
    ConflictKind kind = ConflictKind::TargetTaken;
    QString source;
    QString target;
    /// With SameTarget: the source that has the target.
    QString other;
    /// The source is one of those given.
    bool selected = false;
    /// What would settle it: with BothChanged as ImportRequest::onConflict, otherwise as policy for
    /// collisions. Empty when something must be moved or renamed first.
    QList<ConflictAnswer> answers = {};
    /// With TargetTaken and BothChanged.
    ConflictSide sourceSide = {};
    ConflictSide targetSide = {};
};

/// What stands against an import as a whole. Looked for before the first byte is copied, all at
/// once.
enum class FindingKind
{
    /// Not enough room on the disk of the cloud cache folder.
    NoSpace,
    /// Not enough room for new files (inodes).
    NoFiles,
    /// What is to be replaced does not fit into the base store.
    BaseStoreTooSmall,
    BaseStoreBroken,
    /// A folder that must be written to cannot be.
    FolderNotWritable,
};

struct Finding
{
    FindingKind kind = FindingKind::NoSpace;
    /// The folder that it is about.
    QString path;
    /// With NoSpace, NoFiles and BaseStoreTooSmall: bytes or files.
    qint64 needed = 0;
    qint64 available = 0;
};

/// What lies in the selection but is never imported.
struct LeftOutItem
{
    QString source;
    Remark remark = Remark::NoFile;
    /// With Excluded the pattern, with NotReadable the system's reason.
    QString detail = {};

    /// True for a file that the user must have wanted: its absence is a failure.
    bool IsFailure() const
    {
        return remark == Remark::ColonInName || remark == Remark::NotReadable ||
               remark == Remark::NameNotText || remark == Remark::Vanished ||
               remark == Remark::SourceNoFile;
    }
};

/// What an import will do. Plain data, which may be kept for as long as one likes; it is as true as
/// the disk was when it was made.
struct Plan
{
    /// In the order in which they were found: the selection first. Folders are not listed.
    QList<PlannedFile> files;
    /// What keeps the plan from being executed, in the order of the files.
    QList<Conflict> conflicts;
    /// What keeps the plan from being executed although there is no conflict.
    QList<Finding> findings;
    QList<LeftOutItem> leftOut;
    /// Problems of no single file.
    QList<FileLink::Problem> problems;
    /// False when a cancel came first: what is missing is not known.
    bool complete = false;
};

} // namespace Halvern::Jobs
