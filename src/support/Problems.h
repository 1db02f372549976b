// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/Problem.h"
#include "support/Logging.h"

/// A failure is told twice, as a line of the log and as data, and nowhere by the first alone:
///
///     FILELINK_PROBLEM(sink, operation, LogLevel::Error, <line>,
///                      {Stage::CopyFiles, ProblemKind::NotCopied, source, error})
///
/// The line is written in the name of `operation`. The sink may be null.
#define FILELINK_PROBLEM(sink, operation, level, line, ...)                                        \
    do {                                                                                           \
        FILELINK_LOG_FOR(operation, level, line);                                                  \
        ::Halvern::FileLink::ReportProblem((sink), ::Halvern::FileLink::Problem __VA_ARGS__);      \
    } while (false)

namespace Halvern::FileLink {

/// For a failure that the log does not tell. An empty text becomes the sentence of the kind.
void ReportProblem(IProblemSink* sink, Problem problem);

/// What a kind means, in one sentence.
QString DescriptionOf(ProblemKind kind);

} // namespace Halvern::FileLink
