// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Options.h"
#include "ProgressLine.h"

#include "corsync/JobObserver.h"

namespace Halvern::Cli {

class Console;

/// On a terminal, unless log lines would be written between.
bool WantsProgress(ProgressMode mode, const CommonOptions& common);

/// Shows how far a job is in the progress line.
class JobProgress : public Jobs::IJobObserver
{
public:
    JobProgress(bool isActive, Console& console) : m_line(isActive), m_console(console) {}

    void PhaseBegun(Jobs::Phase phase, qint64 total) override;
    void Progressed(const Jobs::Progress& progress) override;
    void Waiting(const QString& whom) override;
    /// Until the next phase begins.
    void Hide() { m_line.Clear(); }

private:
    ProgressLine m_line;
    Console& m_console;
};

} // namespace Halvern::Cli
