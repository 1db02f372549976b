// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobFile.h"
#include "ProblemBook.h"

#include <QtCore/QList>
#include <QtCore/QSet>

namespace Halvern::Jobs {

/// Gives each problem of a job to the files that it is about; what is left is about none.
class ProblemSorter
{
public:
    explicit ProblemSorter(const ProblemBook& book) : m_book(book) {}

    /// What is to be told about the file, in the order in which it happened.
    QList<FileLink::Problem> Of(const JobFile& file);
    /// The problems that no call of Of took, each once.
    QList<FileLink::Problem> OfNoFile() const;

private:
    const ProblemBook& m_book;
    QSet<qsizetype> m_taken;
};

} // namespace Halvern::Jobs
