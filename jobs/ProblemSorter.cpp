// SPDX-License-Identifier: Apache-2.0

#include "ProblemSorter.h"

#include <QtCore/QStringList>

#include <algorithm>
#include <utility>

namespace Halvern::Jobs {

using FileLink::Problem;
using FileLink::ProblemKind;

QList<Problem> ProblemSorter::Of(const JobFile& file)
{
    if (m_book.All().isEmpty())
        return {};
    QList<qsizetype> numbers = m_book.About(file.source);
    if (!file.target.isEmpty() && file.target != file.source)
        numbers += m_book.About(file.target);
    std::sort(numbers.begin(), numbers.end());
    QList<Problem> problems;
    for (const qsizetype number : std::as_const(numbers)) {
        m_taken.insert(number);
        const Problem& problem = m_book.All().at(number);
        if (!(file.outcome == Outcome::Locked && problem.kind == ProblemKind::Locked))
            problems.append(problem);
    }
    return problems;
}

QList<Problem> ProblemSorter::OfNoFile() const
{
    QList<Problem> problems;
    QSet<std::pair<QString, QString>> told;
    for (qsizetype number = 0; number < m_book.All().size(); ++number) {
        const Problem& problem = m_book.All().at(number);
        const std::pair fileAndText(problem.file, problem.text);
        if (m_taken.contains(number) || told.contains(fileAndText))
            continue;
        told.insert(fileAndText);
        problems.append(problem);
    }
    return problems;
}

} // namespace Halvern::Jobs
