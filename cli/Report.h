// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExitCode.h"

#include "corsync/JobResult.h"

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
    Jobs::JobResult result;
    QList<Jobs::Conflict> conflicts;
    ReportFolders folders;
    /// Files that a pattern excludes have lines, too.
    bool isVerbose = false;
};

QString TextOf(const Jobs::FileResult& result, const ReportFolders& folders);
QString TextOf(const Jobs::Conflict& conflict, const ReportFolders& folders);
/// Without sizes and times.
QString BriefTextOf(const Jobs::Conflict& conflict, const ReportFolders& folders);
/// "problem    not enough room on the disk that holds /x: 5.0 GB needed, 1.0 GB available".
QString TextOf(const Jobs::Finding& finding);
/// "2 files whose format no plug-in reads: 1 .dwg, 1 .rvt"; empty when there is none.
QString UnknownFormatsLine(const Jobs::Summary& summary);
/// "3 copied, 1 missing; cloud cache folder /home/x/Corsync".
QString CountLine(const Jobs::Summary& summary, const ReportFolders& folders);

/// "/x/y: disk full"; the file only when there is one and the text does not name it.
QString TextOf(const FileLink::Problem& problem);

QJsonObject JsonOf(const Jobs::FileResult& result);
QJsonObject JsonOf(const FileLink::Problem& problem);
QJsonObject JsonOf(const Jobs::Conflict& conflict);
QJsonObject JsonOf(const Jobs::Finding& finding);
QJsonObject JsonOf(const Jobs::Summary& summary);
QJsonObject JsonProblem(const QString& text);
QJsonObject JsonWarning(const QString& text);
/// A warning, or a problem when nothing came of the file.
QJsonObject JsonOf(const Jobs::RegistrationFault& fault);
void Print(const QList<Jobs::RegistrationFault>& faults, Console& console);

/// False for an outcome that puts nothing at the target.
bool ShowsTarget(const Jobs::FileResult& result);

void Print(const ImportReport& report, Console& console);

} // namespace Halvern::Cli
