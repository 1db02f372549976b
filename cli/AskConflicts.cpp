// SPDX-License-Identifier: Apache-2.0

#include "AskConflicts.h"

#include "ConflictText.h"

#include "Masking.h"

#include <QtCore/QStringList>

namespace Halvern::Cli {

using Jobs::Conflict;
using Jobs::ConflictAnswer;
using Jobs::ConflictKind;
using Jobs::ConflictSide;

namespace {

struct Answer
{
    ConflictAnswer answer = ConflictAnswer::Stop;
    bool isForAll = false;
};

QString SideLine(const QString& name, const ConflictSide& side)
{
    return QStringLiteral("  ") + name.leftJustified(8) + NowText(side) +
           QStringLiteral(" (when it was copied: ") + ThenText(side) + QStringLiteral(")\n");
}

QString Description(const Conflict& conflict, const ReportFolders& folders)
{
    // Masked here, because of the line breaks around it.
    return Masked(BriefTextOf(conflict, folders)) + u'\n' +
           SideLine(QStringLiteral("source"), conflict.sourceSide) +
           SideLine(QStringLiteral("copy"), conflict.targetSide);
}

QString Question()
{
    return QStringLiteral("[k]eep the copy, [r]eplace it, re[n]ame the new one, [s]top? "
                          "(capital letter: the same for all that follow) ");
}

std::optional<ConflictAnswer> Meaning(const QString& word)
{
    static const QHash<QString, ConflictAnswer> meanings = {
        {QStringLiteral("k"), ConflictAnswer::Keep},
        {QStringLiteral("keep"), ConflictAnswer::Keep},
        {QStringLiteral("r"), ConflictAnswer::Replace},
        {QStringLiteral("replace"), ConflictAnswer::Replace},
        {QStringLiteral("n"), ConflictAnswer::Rename},
        {QStringLiteral("rename"), ConflictAnswer::Rename},
        {QStringLiteral("s"), ConflictAnswer::Stop},
        {QStringLiteral("stop"), ConflictAnswer::Stop}};
    const auto meaning = meanings.constFind(word.toLower());
    return meaning == meanings.constEnd() ? std::nullopt : std::optional(*meaning);
}

/// "k", "keep", "K" or "k all"; nothing for anything else.
std::optional<Answer> Parse(const QString& line)
{
    const QStringList words = line.simplified().split(u' ');
    const std::optional<ConflictAnswer> meaning = Meaning(words.first());
    const bool saysAll =
        words.size() == 2 && words.last().compare(QStringLiteral("all"), Qt::CaseInsensitive) == 0;
    if (!meaning || (words.size() > 1 && !saysAll))
        return std::nullopt;
    const bool isCapital = words.first().size() == 1 && words.first().front().isUpper();
    return Answer{*meaning, saysAll || isCapital};
}

/// Nothing at the end of the input.
std::optional<Answer> Ask(const Person& person)
{
    while (true) {
        person.show(Question());
        const std::optional<QString> line = person.readLine();
        if (!line) {
            person.show(QStringLiteral("\n"));
            return std::nullopt;
        }
        if (const std::optional<Answer> answer = Parse(*line))
            return answer;
    }
}

} // namespace

bool CanBeAsked(const Conflict& conflict)
{
    switch (conflict.kind) {
    case ConflictKind::TargetTaken:
    case ConflictKind::BothChanged:
        return true;
    case ConflictKind::CannotRename:
    case ConflictKind::FolderInTheWay:
    case ConflictKind::FileInTheWay:
    case ConflictKind::SameTarget:
        return false;
    }
    return false;
}

std::optional<ConflictAnswers> AskConflicts(const QList<Conflict>& conflicts,
                                            const ConflictAnswers& answered,
                                            const ReportFolders& folders, const Person& person)
{
    ConflictAnswers answers;
    std::optional<Answer> last;
    for (const Conflict& conflict : conflicts) {
        if (!CanBeAsked(conflict) || answered.contains(conflict.source))
            continue;
        if (!last || !last->isForAll) {
            person.show(Description(conflict, folders));
            last = Ask(person);
        }
        if (!last || last->answer == ConflictAnswer::Stop)
            return std::nullopt;
        answers.insert(conflict.source, last->answer);
    }
    return answers;
}

} // namespace Halvern::Cli
