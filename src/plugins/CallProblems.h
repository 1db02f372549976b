// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/Problems.h"

#include <QtCore/QStringList>

namespace Halvern::FileLink {

/// What goes wrong during one call into a plug-in, for the host: the caller says which stage and
/// file it is about, the plug-in manager which plug-in.
class CallProblems
{
public:
    /// For a call whose problems nobody wants.
    CallProblems() = default;
    CallProblems(IProblemSink* sink, Stage stage, QString file);

    IProblemSink* Sink() const { return m_sink; }
    /// The plug-in that is called from now on.
    void SetPlugin(const QString& module) { m_plugin = module; }
    /// Keeps what the plug-in says while it runs: what a sink throws must not meet its frames.
    void Keep(const QString& message) { m_messages.append(message); }
    /// Hands out what was kept.
    void ReportMessages();
    Problem Make(ProblemKind kind, const QString& text = {}) const;
    /// For a failure that was logged elsewhere, or nowhere.
    void Report(ProblemKind kind, const QString& text = {}) const;

private:
    IProblemSink* m_sink = nullptr;
    Stage m_stage = Stage::Plugins;
    QString m_file;
    QString m_plugin;
    QStringList m_messages;
};

} // namespace Halvern::FileLink
