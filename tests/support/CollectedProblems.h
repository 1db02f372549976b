// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/Problem.h"

#include <QtCore/QList>
#include <QtCore/QStringList>

#include <functional>

namespace Halvern::Test {

/// Keeps what a job reports, and shows it to a watcher, which may throw.
class CollectedProblems : public FileLink::IProblemSink
{
public:
    void Report(const FileLink::Problem& problem) override
    {
        list.append(problem);
        if (watch)
            watch(problem);
    }
    bool Has(FileLink::ProblemKind kind) const { return Count(kind) > 0; }
    qsizetype Count(FileLink::ProblemKind kind) const { return Of(kind).size(); }
    QList<FileLink::Problem> Of(FileLink::ProblemKind kind) const
    {
        QList<FileLink::Problem> found = list;
        found.removeIf([kind](const FileLink::Problem& problem) { return problem.kind != kind; });
        return found;
    }
    QStringList Texts() const
    {
        QStringList texts;
        for (const FileLink::Problem& problem : list)
            texts.append(problem.text);
        return texts;
    }

    QList<FileLink::Problem> list;
    std::function<void(const FileLink::Problem&)> watch;
};

} // namespace Halvern::Test
