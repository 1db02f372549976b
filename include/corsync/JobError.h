// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Export.h"

#include <QtCore/QString>

#include <stdexcept>

namespace Halvern::Jobs {

/// What kept a session or a job from being done at all.
enum class JobErrorKind
{
    /// The settings file is broken, or the settings contradict each other.
    SettingsRefused,
    /// A plug-in folder that was named is none.
    PluginFolderMissing,
    /// The cloud cache folder could not be made.
    NoCloudFolder,
    /// The sync database could not be opened, or its records of copies could not be read.
    DatabaseNotOpened,
    /// The sync database is no whole database any more.
    DatabaseDamaged,
    /// The process has a session already, or runs the module by itself.
    SessionTaken,
    /// The settings say that the user is not logged in, or that the folder is not synced.
    SyncOff,
    /// A source or file that was named does not exist.
    SourceMissing,
    /// A source or file that exists cannot be taken.
    SourceRefused,
    /// The target does not lie in the cloud cache folder, or is a file.
    TargetRefused,
    /// A folder that linked files may come from is none.
    FolderMissing,
    /// A pattern of what is not to be imported could never match anything.
    PatternRefused,
    /// The module did not take the selection.
    SelectionRefused,
    /// An exception ended the making of the plan, for example for want of memory.
    PlanNotMade,
    /// There is no such old version of the file, or no such file.
    VersionMissing,
    /// The place where a version is to be restored is no good.
    RestoreRefused,
    /// A version could not be restored; the file is as it was.
    RestoreFailed,
    /// The calls came in an order that makes no sense.
    WrongOrder,
};

/// The one exception of this library. No file was copied, changed or deleted when it is thrown;
/// only a session may have made the cloud cache folder, the database and the settings file before
/// it failed. What goes wrong with single files is no exception but a part of the result.
class CORSYNCJOBS_EXPORT JobError : public std::runtime_error
{
public:
    JobError(JobErrorKind kind, const QString& text);
    ~JobError() override;

    JobErrorKind Kind() const;
    /// One sentence for people, without a full stop. It begins with what it is about.
    const QString& Text() const;

private:
    JobErrorKind m_kind;
    QString m_text;
};

} // namespace Halvern::Jobs
