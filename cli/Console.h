// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QFile>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace Halvern::Cli {

/// The two outputs of the process: results on standard output, everything else on standard error.
class Console
{
public:
    explicit Console(bool json = false, bool quiet = false);

    bool IsJson() const { return m_json; }
    bool IsQuiet() const { return m_quiet; }
    /// Text for standard output as it is.
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
    /// Text for standard error as it is.
    void WriteError(const QString& text);

private:
    bool m_json;
    bool m_quiet;
    QFile m_out;
    QFile m_err;
};

} // namespace Halvern::Cli
