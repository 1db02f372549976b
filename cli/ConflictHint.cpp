// SPDX-License-Identifier: Apache-2.0

#include "ConflictHint.h"

#include "Words.h"

#include <QtCore/QStringList>

#include <algorithm>
#include <optional>

namespace Halvern::Cli {

using Jobs::Conflict;
using Jobs::ConflictAnswer;
using Jobs::ConflictKind;

namespace {

using Answers = QList<ConflictAnswer>;

bool IsBothChanged(const Conflict& conflict)
{
    return conflict.kind == ConflictKind::BothChanged;
}

/// What settles every conflict of a group that can be settled; nothing when there is none.
template <typename IsOfGroup>
std::optional<Answers> AnswersOf(const QList<Conflict>& conflicts, IsOfGroup isOfGroup)
{
    std::optional<Answers> common;
    for (const Conflict& conflict : conflicts) {
        if (conflict.answers.isEmpty() || !isOfGroup(conflict))
            continue;
        if (!common)
            common = conflict.answers;
        else
            common->removeIf(
                [&](ConflictAnswer answer) { return !conflict.answers.contains(answer); });
    }
    return common;
}

QString Option(const QString& name, const Answers& answers, bool mayAsk)
{
    QStringList words;
    for (const ConflictAnswer answer : answers)
        words.append(NameOf(answer));
    if (mayAsk)
        words.append(QStringLiteral("ask"));
    const QString last = words.takeLast();
    return name + u' ' +
           (words.isEmpty() ? last
                            : words.join(QStringLiteral(", ")) + QStringLiteral(" or ") + last);
}

/// "--collisions ..." for both kinds of files when one answer does for both.
QStringList CollisionOptions(const QList<Conflict>& conflicts)
{
    const auto selected =
        AnswersOf(conflicts, [](const Conflict& c) { return c.selected && !IsBothChanged(c); });
    const auto linked =
        AnswersOf(conflicts, [](const Conflict& c) { return !c.selected && !IsBothChanged(c); });
    if (selected && linked && *selected == *linked && !selected->isEmpty())
        return {Option(QStringLiteral("--collisions"), *selected, false)};
    QStringList options;
    if (selected && !selected->isEmpty())
        options.append(Option(QStringLiteral("--selected-collisions"), *selected, false));
    if (linked && !linked->isEmpty())
        options.append(Option(QStringLiteral("--linked-collisions"), *linked, false));
    return options;
}

QStringList Options(const QList<Conflict>& conflicts)
{
    QStringList options = CollisionOptions(conflicts);
    if (const auto answers = AnswersOf(conflicts, IsBothChanged); answers && !answers->isEmpty())
        options.append(Option(QStringLiteral("--on-conflict"), *answers, true));
    return options;
}

bool HasUnsettled(const QList<Conflict>& conflicts, bool (*predicate)(const Conflict&))
{
    return std::any_of(conflicts.begin(), conflicts.end(), [&](const Conflict& conflict) {
        return conflict.answers.isEmpty() && predicate(conflict);
    });
}

/// What no option settles.
QStringList Deeds(const QList<Conflict>& conflicts)
{
    QStringList deeds;
    if (HasUnsettled(conflicts,
                     [](const Conflict& c) { return c.kind != ConflictKind::SameTarget; }))
        deeds.append(
            QStringLiteral("move what stands in the way, or choose another folder with --to"));
    if (HasUnsettled(conflicts,
                     [](const Conflict& c) { return c.kind == ConflictKind::SameTarget; }))
        deeds.append(QStringLiteral("import files that want the same place one by one, each with "
                                    "another --to"));
    return deeds;
}

} // namespace

QString HintFor(const QList<Conflict>& conflicts)
{
    const QStringList options = Options(conflicts);
    QStringList hints{QStringLiteral("nothing was copied")};
    if (!options.isEmpty())
        hints.append(QStringLiteral("choose with ") + options.join(QStringLiteral(", and with ")));
    hints += Deeds(conflicts);
    if (hints.size() == 1)
        hints.append(
            QStringLiteral("no single policy settles all of these; import them one by one"));
    return hints.join(QStringLiteral("; "));
}

} // namespace Halvern::Cli
