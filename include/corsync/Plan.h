// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/FileLinks.h"

#include "filelink/Problem.h"

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
    /// Copied under a name that was free.
    Renamed,
    /// The file that stands at the target is used as it is.
    Kept,
    /// Copied earlier, and changed on neither side since.
    Unchanged,
    /// Lies in the cloud cache folder already.
    InPlace,
    /// Not to be copied; the remark says why.
    Skipped,
    /// In place, but its links are still to be rewritten, because another program has it open.
    /// Never in a plan.
    Locked,
    /// Linked, but not there.
    Missing,
    /// Linked, but no file of this machine.
    Url,
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
    Origin origin = Origin::Selected;
    /// The source is deleted after copying.
    bool deletesSource = false;
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
};

/// What lies in the selection but is never imported.
struct LeftOutItem
{
    QString source;
    Remark remark = Remark::NoFile;

    /// True for a file that the user must have wanted: its absence is a failure.
    bool IsFailure() const { return remark == Remark::ColonInName; }
};

/// What an import will do. Plain data, which may be kept for as long as one likes; it is as true as
/// the disk was when it was made.
struct Plan
{
    /// In the order in which they were found: the selection first. Folders are not listed.
    QList<PlannedFile> files;
    /// What keeps the plan from being executed, in the order of the files.
    QList<Conflict> conflicts;
    QList<LeftOutItem> leftOut;
    /// Problems of no single file.
    QList<FileLink::Problem> problems;
    /// False when a cancel came first: what is missing is not known.
    bool complete = false;
};

} // namespace Halvern::Jobs
