// SPDX-License-Identifier: Apache-2.0

#include "ProblemSorter.h"

#include "corsync/JobResult.h"

#include <QtCore/QFileInfo>
#include <QtCore/QStringList>

#include <algorithm>

namespace Halvern::Jobs {

using FileLink::Problem;
using FileLink::ProblemKind;
using SyncServices::FileMapping;

namespace {

bool IsAbsent(Outcome outcome)
{
    return outcome == Outcome::Missing || outcome == Outcome::Skipped ||
           outcome == Outcome::NotDone;
}

bool IsTold(const Problem& problem, Outcome outcome)
{
    if (outcome == Outcome::Locked && problem.kind == ProblemKind::Locked)
        return false;
    return IsPluginProblem(problem) || !IsAbsent(outcome);
}

} // namespace

QList<Problem> ProblemSorter::Of(const FileMapping& file, Outcome outcome)
{
    if (m_book.All().isEmpty())
        return {};
    const QString target = file.GetTargetFile();
    QList<qsizetype> numbers = m_book.About(file.GetSourceFile());
    if (!target.isEmpty() && target != file.GetSourceFile())
        numbers += m_book.About(target);
    if (!target.isEmpty() && outcome == Outcome::Failed)
        numbers += m_book.About(QFileInfo(target).path());
    std::sort(numbers.begin(), numbers.end());
    QList<Problem> problems;
    for (const qsizetype number : std::as_const(numbers)) {
        m_taken.insert(number);
        if (IsTold(m_book.All().at(number), outcome))
            problems.append(m_book.All().at(number));
    }
    return problems;
}

QList<Problem> ProblemSorter::OfNoFile() const
{
    QList<Problem> problems;
    QSet<QString> texts;
    for (qsizetype number = 0; number < m_book.All().size(); ++number) {
        const Problem& problem = m_book.All().at(number);
        if (m_taken.contains(number) || texts.contains(problem.text))
            continue;
        texts.insert(problem.text);
        problems.append(problem);
    }
    return problems;
}

} // namespace Halvern::Jobs
