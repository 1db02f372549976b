// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/JobError.h"
#include "corsync/JobResult.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <stdexcept>

namespace Halvern::Cli {

/// What the process answers. DO NOT CHANGE THESE VALUES: scripts read them.
enum class ExitCode : int
{
    Complete = 0,
    /// At least one file failed.
    Failed = 1,
    /// Wrong arguments or settings; nothing was done.
    Usage = 2,
    /// A source or file given does not exist; nothing was done.
    SourceMissing = 3,
    /// Done, but files that are linked do not exist.
    MissingLinks = 4,
    /// Done, but links inside files that were locked are still to be rewritten.
    Locked = 5,
    /// Targets are taken and no policy says what to do; nothing was copied.
    Collisions = 6,
    /// A plug-in or the sync database failed.
    PluginOrDatabase = 7,
    /// Done, but files that are linked were not brought along: the boundary does not allow it.
    Refused = 8,
    /// Stopped by the user.
    Cancelled = 20,
};

/// The one that outranks the others; Complete for an empty list. What kept the job from being done
/// outranks what it got wrong, and that outranks what is left to do:
/// usage, source missing, cancelled, collisions, plug-in or database, refused, failed, locked,
/// missing links.
ExitCode MostSerious(const QList<ExitCode>& codes);
/// A registration file of which nothing came keeps plug-ins from being used.
bool HasBroken(const QList<Jobs::RegistrationFault>& faults);
/// Of a whole import.
ExitCode ExitCodeOf(const Jobs::Summary& summary);
/// Of a command that could not begin.
ExitCode ExitCodeOf(Jobs::JobErrorKind kind);

/// Ends the command with a usage error; the text goes to the user.
class UsageError : public std::runtime_error
{
public:
    explicit UsageError(const QString& text) : std::runtime_error(text.toStdString()), m_text(text)
    {}
    const QString& Text() const { return m_text; }

private:
    QString m_text;
};

} // namespace Halvern::Cli
