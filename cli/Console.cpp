// SPDX-License-Identifier: Apache-2.0

#include "Console.h"

#include <QtCore/QJsonDocument>

#include <cstdio>

namespace Halvern::Cli {

Console::Console(bool json, bool quiet) : m_json(json), m_quiet(quiet)
{
    // Fails only when the caller closed the stream; what is written then goes nowhere.
    (void)m_out.open(stdout, QFile::WriteOnly);
    (void)m_err.open(stderr, QFile::WriteOnly);
}

void Console::Write(const QString& text)
{
    m_out.write(text.toUtf8());
    m_out.flush();
}

void Console::Line(const QString& line)
{
    if (!m_json && !m_quiet)
        Write(line + u'\n');
}

void Console::ProblemLine(const QString& line)
{
    if (m_json)
        return;
    if (m_quiet)
        WriteError(line + u'\n');
    else
        Write(line + u'\n');
}

void Console::Json(const QJsonObject& object)
{
    if (m_json)
        Write(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + u'\n');
}

void Console::Error(const QString& text)
{
    WriteError(QStringLiteral("corsync: ") + text + u'\n');
}

void Console::Note(const QString& text)
{
    if (!m_quiet)
        Error(text);
}

void Console::WriteError(const QString& text)
{
    m_err.write(text.toUtf8());
    m_err.flush();
}

} // namespace Halvern::Cli
