// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

namespace Halvern::FileLink {

/// Where in a job something went wrong.
enum class Stage
{
    /// Reading registration files and loading plug-in libraries.
    Plugins,
    Intake,
    ExtractFileLinks,
    AssignTargetPaths,
    MarkCollisions,
    ResolveCollisions,
    CopyFiles,
    RepathFiles,
    UpdateSyncDatabase,
};

/// What went wrong.
enum class ProblemKind
{
    /// A file that must be there is not.
    FileMissing,
    /// A selected file or folder that no import takes: a root, a symbolic link to a folder, or
    /// what lies in the cloud cache folder already.
    SourceRefused,
    /// Nothing says where the file goes, or it cannot go there.
    NoTarget,
    /// No layout plug-in that knows the file said where what it links goes; the default layout did.
    TargetsNotAssigned,
    /// The system that holds the target cannot take this name.
    NameRefused,
    FolderNotMade,
    /// A folder stands where the file must go.
    FolderInTheWay,
    /// The target exists and is read-only; it was left as it is.
    TargetReadOnly,
    /// The existing target could not be renamed away; it stands as it was.
    TargetNotParked,
    NotCopied,
    /// Copied, but the source of a move could not be deleted.
    SourceNotDeleted,
    /// Copied, but the file that was replaced still lies beside the copy under a temporary name.
    ParkedFileNotDeleted,
    /// The plug-in could not read the file's links: the file counts as one without.
    LinksNotRead,
    /// Another program holds the file; its links are rewritten later.
    Locked,
    /// The links inside the copy are still those of the source.
    LinksNotRewritten,
    /// The sync database did not take the file's item, or the history of what was copied.
    NotRecorded,
    /// A plug-in's own words, logged as an error during a call. A call that also failed is told
    /// by a problem of its own after it.
    PluginMessage,
    /// A plug-in broke the contract: it cannot be loaded, threw, or answered what cannot be.
    PluginFault,
    /// A registration file does not say what its author meant.
    Registration,
    /// An exception ended the stage.
    StageEnded,
};

/// One thing that went wrong, as data: what a log line says for people stands here for programs.
struct Problem
{
    Stage stage = Stage::Intake;
    ProblemKind kind = ProblemKind::StageEnded;
    /// The file that it is about, as a path of the file set: its target for RepathFiles and
    /// UpdateSyncDatabase (the source of a file that has none), its source for all other stages.
    /// For what no mapping stands for (a target that was asked for, a registration file) that path.
    /// Empty when it is about no single file.
    QString file;
    /// One sentence for people, without the paths above unless they differ. Never empty.
    QString text;
    /// File name of the plug-in's library that said or did it; empty for the module itself.
    QString plugin;
};

/// Takes problems as they happen. The host implements it.
class IProblemSink
{
public:
    virtual ~IProblemSink() = default;
    /// Called on the thread that runs the stage, while it runs, once for each failure and in the
    /// order of the log lines. Never called while a plug-in runs: what that says comes right after
    /// its call. What it throws ends the stage.
    virtual void Report(const Problem& problem) = 0;
};

} // namespace Halvern::FileLink
