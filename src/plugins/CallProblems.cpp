// SPDX-License-Identifier: Apache-2.0

#include "plugins/CallProblems.h"

#include <utility>

namespace Halvern::FileLink {

CallProblems::CallProblems(IProblemSink* sink, Stage stage, QString file)
    : m_sink(sink), m_stage(stage), m_file(std::move(file))
{}

void CallProblems::ReportMessages()
{
    const QStringList messages = std::exchange(m_messages, {});
    for (const QString& message : messages)
        Report(ProblemKind::PluginMessage, message);
}

Problem CallProblems::Make(ProblemKind kind, const QString& text) const
{
    return {m_stage, kind, m_file, text, m_plugin};
}

void CallProblems::Report(ProblemKind kind, const QString& text) const
{
    ReportProblem(m_sink, Make(kind, text));
}

} // namespace Halvern::FileLink
