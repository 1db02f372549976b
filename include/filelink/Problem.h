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
    /// The system that holds the target cannot take this name.
    NameRefused,
    FolderNotMade,
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
    LinksNotRead,
    /// Another program holds the file; its links are rewritten later.
    Locked,
    LinksNotRewritten,
    NotRecorded,
    /// A plug-in's own words, logged as an error during a call.
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
    /// The file that it is about, as a path of the file set: a source, or a target in the stages
    /// that work on copies. Empty when it is about no single file.
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
    /// Called on the thread that runs the stage, while it runs. What it throws ends the stage.
    virtual void Report(const Problem& problem) = 0;
};

} // namespace Halvern::FileLink
