// SPDX-License-Identifier: Apache-2.0

#include "Console.h"

#include "Masking.h"
#include "Streams.h"

#include <QtCore/QJsonDocument>

namespace Halvern::Cli {

namespace {

QByteArray LineOf(const QString& text)
{
    return Masked(text).toUtf8() + '\n';
}

} // namespace

Console::Console(bool json, bool quiet) : m_json(json), m_quiet(quiet) {}

void Console::Write(const QString& text)
{
    WriteResults(MaskedLines(text).toUtf8());
}

void Console::Line(const QString& line)
{
    if (!m_json && !m_quiet)
        WriteResults(LineOf(line));
}

void Console::ProblemLine(const QString& line)
{
    if (m_json)
        return;
    if (m_quiet)
        ErrorLine(line);
    else
        WriteResults(LineOf(line));
}

void Console::Json(const QJsonObject& object)
{
    if (m_json)
        WriteResults(MaskedJson(QJsonDocument(object).toJson(QJsonDocument::Compact)) + '\n');
}

void Console::Error(const QString& text)
{
    ErrorLine(QStringLiteral("corsync: ") + text);
}

void Console::Note(const QString& text)
{
    if (!m_quiet)
        Error(text);
}

void Console::WriteError(const QString& text)
{
    WriteMessages(MaskedLines(text).toUtf8());
}

void Console::ErrorLine(const QString& line)
{
    WriteMessages(LineOf(line));
}

ExitCode Console::End(ExitCode code)
{
    const QString failure = ResultsFailure();
    if (failure.isEmpty())
        return code;
    Error(QStringLiteral("not everything could be written to standard output: ") + failure);
    return MostSerious({code, ExitCode::Failed});
}

} // namespace Halvern::Cli
