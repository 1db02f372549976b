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
    case Jobs::Remark::Excluded:
        return QStringLiteral("excluded");
    case Jobs::Remark::NotReadable:
        return QStringLiteral("it could not be read");
    case Jobs::Remark::NameNotText:
        return QStringLiteral("its name is no UTF-8");
    case Jobs::Remark::Vanished:
        return QStringLiteral("it is gone since the selection was read");
    case Jobs::Remark::ChangedWhileCopied:
        return QStringLiteral("it changed while it was copied; import it again");
    case Jobs::Remark::OutsideCloudFolder:
        return QStringLiteral("its place lies outside the cloud cache folder");
    case Jobs::Remark::NameRefused:
        return QStringLiteral("the target's system refuses the name");
    case Jobs::Remark::PathTooLong:
        return QStringLiteral("the path of its copy is too long");
    case Jobs::Remark::FileInTheWay:
        return QStringLiteral("a file stands where a folder must be");
    case Jobs::Remark::LinkEmpty:
        return QStringLiteral("a link inside the copy would be empty");
    case Jobs::Remark::LinkTooLong:
        return QStringLiteral("a link inside the copy would be longer than 259 characters");
    case Jobs::Remark::NotKept:
        return QStringLiteral("what stands there could not be kept in the base store");
    case Jobs::Remark::TargetChanged:
        return QStringLiteral(
            "what stands at the target changed after the plan was made; import it again");
    case Jobs::Remark::SystemPlace:
        return QStringLiteral("a place of the system; --within DIR allows it");
    case Jobs::Remark::SecretPlace:
        return QStringLiteral("a place where secrets are kept; --within DIR allows it");
    case Jobs::Remark::OtherHome:
        return QStringLiteral("another user's home; --within DIR allows it");
    case Jobs::Remark::NotWithin:
        return QStringLiteral("not in a folder that --within names");
    case Jobs::Remark::RewritePending:
        return QStringLiteral(
            "its links are still to be rewritten; every import tries, and so does corsync retry");
    case Jobs::Remark::LinksNotRead:
        return QStringLiteral("its links could not be read; every import tries again");
    case Jobs::Remark::SharedCopyStays:
        return QStringLiteral("files of another import link the earlier copy");
    case Jobs::Remark::SourceStays:
        return QStringLiteral("the source stays: not everything that it links is in order");
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
    case Jobs::Outcome::Updated:
        return QStringLiteral("updated");
    case Jobs::Outcome::Renamed:
        return QStringLiteral("renamed");
    case Jobs::Outcome::Kept:
        return QStringLiteral("kept");
    case Jobs::Outcome::Left:
        return QStringLiteral("left");
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
    case Jobs::Outcome::Refused:
        return QStringLiteral("refused");
    case Jobs::Outcome::Url:
        return QStringLiteral("url");
    case Jobs::Outcome::Orphaned:
        return QStringLiteral("orphaned");
    case Jobs::Outcome::Pruned:
        return QStringLiteral("pruned");
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
    case Jobs::ConflictKind::BothChanged:
        return QStringLiteral("both-changed");
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
