// SPDX-License-Identifier: Apache-2.0

#include "support/Problems.h"

#include <utility>

namespace Halvern::FileLink {

void ReportProblem(IProblemSink* sink, Problem problem)
{
    if (!sink)
        return;
    if (problem.text.isEmpty())
        problem.text = DescriptionOf(problem.kind);
    sink->Report(std::as_const(problem));
}

QString DescriptionOf(ProblemKind kind)
{
    switch (kind) {
    case ProblemKind::FileMissing:
        return QStringLiteral("The file does not exist");
    case ProblemKind::SourceRefused:
        return QStringLiteral("This cannot be imported: it is a root, a symbolic link to a folder, "
                              "or lies in the cloud cache folder");
    case ProblemKind::NoTarget:
        return QStringLiteral("The file has no target");
    case ProblemKind::TargetsNotAssigned:
        return QStringLiteral("No layout plug-in assigned target paths");
    case ProblemKind::NameRefused:
        return QStringLiteral("The system cannot take this name");
    case ProblemKind::FolderNotMade:
        return QStringLiteral("The target folder could not be made");
    case ProblemKind::FolderInTheWay:
        return QStringLiteral("A folder stands at the target");
    case ProblemKind::TargetReadOnly:
        return QStringLiteral("The target exists and is read-only");
    case ProblemKind::TargetNotParked:
        return QStringLiteral("The existing target could not be put aside");
    case ProblemKind::NotCopied:
        return QStringLiteral("The file could not be copied");
    case ProblemKind::SourceNotDeleted:
        return QStringLiteral("The source could not be deleted after it was copied");
    case ProblemKind::ParkedFileNotDeleted:
        return QStringLiteral("The replaced file could not be deleted");
    case ProblemKind::LinksNotRead:
        return QStringLiteral("The links could not be read");
    case ProblemKind::Locked:
        return QStringLiteral("Another program holds the file; its links are rewritten later");
    case ProblemKind::LinksNotRewritten:
        return QStringLiteral("The links could not be rewritten");
    case ProblemKind::NotRecorded:
        return QStringLiteral("The file could not be recorded");
    case ProblemKind::PluginMessage:
        return QStringLiteral("The plug-in logged an error without a text");
    case ProblemKind::PluginFault:
        return QStringLiteral("The plug-in failed");
    case ProblemKind::Registration:
        return QStringLiteral("The registration file could not be loaded");
    case ProblemKind::StageEnded:
        return QStringLiteral("An exception ended the stage");
    }
    return {};
}

} // namespace Halvern::FileLink
