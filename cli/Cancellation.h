// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/ICancelController.h"

#include <functional>

namespace Halvern::Cli {

/// From now on Ctrl-C and the system's polite request to end do not end the process; they are
/// remembered. A second one changes nothing: the job ends at its next poll.
void WatchForCancel();
/// True once the user has asked to stop.
bool IsCancelled();

/// Hands the user's wish to the job.
class JobController : public FileLink::ICancelController
{
public:
    /// `onPoll` is called at every poll, on the thread that runs the job.
    explicit JobController(std::function<void()> onPoll) : m_onPoll(std::move(onPoll)) {}

    bool IsCancelRequested() override
    {
        m_onPoll();
        m_stoppedJob = m_stoppedJob || IsCancelled();
        return m_stoppedJob;
    }
    /// True once the job was told to stop: a wish that comes after the last poll stops nothing.
    bool StoppedJob() const { return m_stoppedJob; }

private:
    std::function<void()> m_onPoll;
    bool m_stoppedJob = false;
};

} // namespace Halvern::Cli
