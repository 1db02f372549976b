// SPDX-License-Identifier: Apache-2.0

#include "Words.h"

#include <QtCore/QStringList>

#include <algorithm>

namespace Halvern::Cli {

using FileLink::Problem;
using FileLink::ProblemKind;

namespace {

bool IsExplainedByPlugin(const Problem& problem)
{
    return problem.kind == ProblemKind::LinksNotRead ||
           problem.kind == ProblemKind::LinksNotRewritten;
}

/// What follows from a problem, beside what the problem says.
bool IsConsequence(Jobs::Remark remark)
{
    return remark == Jobs::Remark::RewritePending || remark == Jobs::Remark::SharedCopyStays ||
           remark == Jobs::Remark::LinksNoFile;
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

QString NameOf(Jobs::FindingKind kind)
{
    switch (kind) {
    case Jobs::FindingKind::NoSpace:
        return QStringLiteral("no-space");
    case Jobs::FindingKind::NoFiles:
        return QStringLiteral("no-files");
    case Jobs::FindingKind::BaseStoreTooSmall:
        return QStringLiteral("base-store-too-small");
    case Jobs::FindingKind::BaseStoreBroken:
        return QStringLiteral("base-store-broken");
    case Jobs::FindingKind::FolderNotWritable:
        return QStringLiteral("folder-not-writable");
    }
    return {};
}

QString SentenceOf(Jobs::FindingKind kind)
{
    switch (kind) {
    case Jobs::FindingKind::NoSpace:
        return QStringLiteral("not enough room on the disk that holds ");
    case Jobs::FindingKind::NoFiles:
        return QStringLiteral("not enough room for new files (inodes) on the disk that holds ");
    case Jobs::FindingKind::BaseStoreTooSmall:
        return QStringLiteral("the files that are to be replaced do not fit into the base store ");
    case Jobs::FindingKind::BaseStoreBroken:
        return QStringLiteral("replaced files cannot be kept in the base store ");
    case Jobs::FindingKind::FolderNotWritable:
        return QStringLiteral("nothing can be written to ");
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
    QStringList sentences{Sentence(result.problems)};
    if (result.problems.isEmpty() || IsConsequence(result.remark))
        sentences.append(TextOf(result.remark, result.detail));
    sentences.append(TextOf(result.sourceStays, result.staysFor));
    sentences.removeAll(QString());
    return sentences.join(QStringLiteral("; "));
}

} // namespace Halvern::Cli
