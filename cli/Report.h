// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Conflicts.h"
#include "ExitCode.h"
#include "Outcome.h"

#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::Cli {

class Console;

/// The folders against which a reader takes the paths of a report: sources are shown relative to
/// the one when they lie in it, targets relative to the other.
struct ReportFolders
{
    QString current;
    QString cloud;
};

/// All that there is to tell about an import.
struct ImportReport
{
    QList<FileOutcome> files;
    QList<Conflict> conflicts;
    /// What went wrong without belonging to a file.
    QStringList problems;
    bool pluginProblem = false;
    /// Empty: the sync database works.
    QString databaseError;
    bool cancelled = false;
    ReportFolders folders;

    ExitCode Result() const;
};

QString TextOf(const FileOutcome& outcome, const ReportFolders& folders);
QString TextOf(const Conflict& conflict, const ReportFolders& folders);
/// "3 copied, 1 missing; cloud cache folder /home/x/Corsync".
QString CountLine(const QList<FileOutcome>& outcomes, const ReportFolders& folders);

QJsonObject JsonOf(const FileOutcome& outcome);
QJsonObject JsonOf(const Conflict& conflict);
QJsonObject JsonSummary(const QList<FileOutcome>& outcomes, qsizetype conflicts, ExitCode exitCode);
QJsonObject JsonProblem(const QString& text);

void Print(const ImportReport& report, Console& console);

} // namespace Halvern::Cli
