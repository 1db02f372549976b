// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/Problem.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::Jobs {

/// The problems of one job, in the order in which they came, found by the file that they are about.
class ProblemBook
{
public:
    void Add(const FileLink::Problem& problem);
    /// Numbers of the problems about this path.
    QList<qsizetype> About(const QString& path) const { return m_byFile.value(path); }
    const QList<FileLink::Problem>& All() const { return m_problems; }

private:
    QList<FileLink::Problem> m_problems;
    QHash<QString, QList<qsizetype>> m_byFile;
};

} // namespace Halvern::Jobs
