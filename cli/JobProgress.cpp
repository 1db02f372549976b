// SPDX-License-Identifier: Apache-2.0

#include "JobProgress.h"

#include "Streams.h"
#include "Words.h"

namespace Halvern::Cli {

bool WantsProgress(ProgressMode mode, const CommonOptions& common)
{
    switch (mode) {
    case ProgressMode::Always:
        return true;
    case ProgressMode::Never:
        return false;
    case ProgressMode::Auto:
        return IsStandardErrorTerminal() && !common.quiet && common.log.verbosity == 0;
    }
    return false;
}

void JobProgress::PhaseBegun(Jobs::Phase phase, qint64 total)
{
    m_line.Begin(WordOf(phase), total);
}

void JobProgress::Progressed(const Jobs::Progress& progress)
{
    m_line.Show({progress.files, progress.total, progress.bytes, progress.totalBytes});
}

} // namespace Halvern::Cli
