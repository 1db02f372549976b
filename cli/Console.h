// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExitCode.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace Halvern::Cli {

/// The two outputs of the process: results on standard output, everything else on standard error.
/// Nothing else writes text there, but for the progress line and the log. Control characters in
/// texts become visible here; JSON keeps them as escapes.
class Console
{
public:
    explicit Console(bool json = false, bool quiet = false);

    bool IsJson() const { return m_json; }
    bool IsQuiet() const { return m_quiet; }
    /// Text of several lines for standard output, whatever is wanted.
    void Write(const QString& text);
    /// A line of a result; not when JSON or nothing but errors is wanted.
    void Line(const QString& line);
    /// A line about something that went wrong: with the results, or on standard error when nothing
    /// but errors is wanted. Not when JSON is wanted.
    void ProblemLine(const QString& line);
    /// One line of JSON; only when JSON is wanted.
    void Json(const QJsonObject& object);
    /// "corsync: text" on standard error.
    void Error(const QString& text);
    /// The same, unless nothing but errors is wanted.
    void Note(const QString& text);
    /// Text of several lines for standard error, whatever is wanted.
    void WriteError(const QString& text);
    /// A line for standard error, whatever is wanted.
    void ErrorLine(const QString& line);
    /// The code of the whole command: a failure, when standard output did not take all results.
    ExitCode End(ExitCode code);

private:
    bool m_json;
    bool m_quiet;
};

} // namespace Halvern::Cli
