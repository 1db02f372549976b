// SPDX-License-Identifier: Apache-2.0

#include "Words.h"

#include <QtCore/QStringList>

#include <algorithm>

namespace Halvern::Cli {

using FileLink::Problem;
using FileLink::ProblemKind;

namespace {

QString TextOf(Jobs::Remark remark)
{
    switch (remark) {
    case Jobs::Remark::None:
        return {};
    case Jobs::Remark::OnlyLinksWanted:
        return QStringLiteral("only its links are wanted");
    case Jobs::Remark::LinkedFolder:
        return QStringLiteral("a folder that is linked");
    case Jobs::Remark::LinkToFolder:
        return QStringLiteral("a symbolic link to a folder");
    case Jobs::Remark::LinkToNothing:
        return QStringLiteral("a symbolic link that leads nowhere");
    case Jobs::Remark::NoFile:
        return QStringLiteral("neither a file nor a folder");
    case Jobs::Remark::ColonInName:
        return QStringLiteral("its path holds a \":\"");
    case Jobs::Remark::NoTarget:
        return QStringLiteral("it got no place in the cloud cache folder");
    case Jobs::Remark::FolderNotMade:
        return QStringLiteral("the folder could not be made");
    case Jobs::Remark::FolderInTheWay:
        return QStringLiteral("a folder stands at the target");
    case Jobs::Remark::Unexplained:
        return QStringLiteral("it was not copied; a log file (--log-file) may tell why");
    case Jobs::Remark::LinksNotRewritten:
        return QStringLiteral("its links are not rewritten yet; import it again");
    }
    return {};
}

bool IsExplainedByPlugin(const Problem& problem)
{
    return problem.kind == ProblemKind::LinksNotRead ||
           problem.kind == ProblemKind::LinksNotRewritten;
}

} // namespace

QString NameOf(Jobs::Outcome outcome)
{
    switch (outcome) {
    case Jobs::Outcome::Copied:
        return QStringLiteral("copied");
    case Jobs::Outcome::Moved:
        return QStringLiteral("moved");
    case Jobs::Outcome::Replaced:
        return QStringLiteral("replaced");
    case Jobs::Outcome::Renamed:
        return QStringLiteral("renamed");
    case Jobs::Outcome::Kept:
        return QStringLiteral("kept");
    case Jobs::Outcome::Unchanged:
        return QStringLiteral("unchanged");
    case Jobs::Outcome::InPlace:
        return QStringLiteral("in-place");
    case Jobs::Outcome::Skipped:
        return QStringLiteral("skipped");
    case Jobs::Outcome::Locked:
        return QStringLiteral("locked");
    case Jobs::Outcome::Missing:
        return QStringLiteral("missing");
    case Jobs::Outcome::Url:
        return QStringLiteral("url");
    case Jobs::Outcome::Failed:
        return QStringLiteral("failed");
    case Jobs::Outcome::NotDone:
        return QStringLiteral("not-done");
    }
    return {};
}

QString WordOf(Jobs::Outcome outcome)
{
    return NameOf(outcome).replace(u'-', u' ');
}

QString NameOf(Jobs::ConflictKind kind)
{
    switch (kind) {
    case Jobs::ConflictKind::TargetTaken:
        return QStringLiteral("target-taken");
    case Jobs::ConflictKind::CannotRename:
        return QStringLiteral("cannot-rename");
    case Jobs::ConflictKind::FolderInTheWay:
        return QStringLiteral("folder-in-the-way");
    case Jobs::ConflictKind::FileInTheWay:
        return QStringLiteral("file-in-the-way");
    case Jobs::ConflictKind::SameTarget:
        return QStringLiteral("same-target");
    }
    return {};
}

QString NameOf(Jobs::LinkState state)
{
    switch (state) {
    case Jobs::LinkState::Found:
        return QStringLiteral("found");
    case Jobs::LinkState::Missing:
        return QStringLiteral("missing");
    case Jobs::LinkState::Url:
        return QStringLiteral("url");
    }
    return {};
}

QString WordOf(Jobs::PluginState state)
{
    switch (state) {
    case Jobs::PluginState::NotTried:
        return QStringLiteral("registered");
    case Jobs::PluginState::Loads:
        return QStringLiteral("ok");
    case Jobs::PluginState::Fails:
        return QStringLiteral("failed");
    }
    return {};
}

QString WordOf(Jobs::Phase phase)
{
    switch (phase) {
    case Jobs::Phase::ReadingSelection:
        return QStringLiteral("Reading the selection");
    case Jobs::Phase::ReadingLinks:
        return QStringLiteral("Reading links");
    case Jobs::Phase::LayingOut:
        return QStringLiteral("Laying out");
    case Jobs::Phase::LookingForConflicts:
        return QStringLiteral("Looking for conflicts");
    case Jobs::Phase::ResolvingConflicts:
        return QStringLiteral("Resolving conflicts");
    case Jobs::Phase::Copying:
        return QStringLiteral("Copying");
    case Jobs::Phase::RewritingLinks:
        return QStringLiteral("Rewriting links");
    case Jobs::Phase::Recording:
        return QStringLiteral("Recording");
    }
    return {};
}

QString Sentence(const QList<Problem>& problems)
{
    const bool explained =
        std::any_of(problems.begin(), problems.end(), [](const Problem& problem) {
            return problem.kind == ProblemKind::PluginMessage;
        });
    QStringList texts;
    for (const Problem& problem : problems)
        if (!(explained && IsExplainedByPlugin(problem)))
            texts.append(problem.text);
    texts.removeDuplicates();
    return texts.join(QStringLiteral("; "));
}

QString ReasonOf(const Jobs::FileResult& result)
{
    return result.problems.isEmpty() ? TextOf(result.remark) : Sentence(result.problems);
}

} // namespace Halvern::Cli
