// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Report.h"

#include "corsync/Plan.h"

#include <QtCore/QHash>
#include <QtCore/QList>

#include <functional>
#include <optional>

namespace Halvern::Cli {

/// Answers by the source of each file, as ImportJob::Resolve takes them.
using ConflictAnswers = QHash<QString, Jobs::ConflictAnswer>;

/// The person who answers.
struct Person
{
    /// Shows text, whose last line may have no end.
    std::function<void(const QString&)> show;
    /// What the person types; nothing at the end of the input.
    std::function<std::optional<QString>()> readLine;
};

/// What is asked about: a file that stands there, and one that changed on both sides.
bool CanBeAsked(const Jobs::Conflict& conflict);

/// Shows each conflict that can be asked about, but for those in `answered`, and asks what to do.
/// Nothing when the person wants to stop, or the input ends.
std::optional<ConflictAnswers> AskConflicts(const QList<Jobs::Conflict>& conflicts,
                                            const ConflictAnswers& answered,
                                            const ReportFolders& folders, const Person& person);

} // namespace Halvern::Cli
