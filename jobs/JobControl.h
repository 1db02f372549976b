// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ProblemBook.h"

#include "corsync/CancelToken.h"
#include "corsync/JobObserver.h"

#include "filelink/ICancelController.h"
#include "filelink/Problem.h"

#include <exception>
#include <utility>

namespace Halvern::Jobs {

/// Stands between the module and the host: hands the host's wish to stop to the module, and what
/// happens to the observer. What an observer throws crosses no stage: it stops the job, and waits
/// here until the job has ended in good order.
class JobControl : public FileLink::ICancelController, public FileLink::IProblemSink
{
public:
    JobControl(IJobObserver* observer, const CancelToken* cancel)
        : m_observer(observer), m_cancel(cancel)
    {}

    bool IsCancelRequested() override;
    void Report(const FileLink::Problem& problem) override;

    void BeginPhase(Phase phase, qint64 total);
    void Step(qint64 bytes);
    /// Calls the observer, when there is one.
    template <typename Call>
    void Tell(Call call);
    bool HasObserver() const { return m_observer != nullptr; }

    /// True once the job was told to stop: a wish that comes after the last poll stops nothing.
    bool StoppedJob() const { return m_stopped; }
    const ProblemBook& Problems() const { return m_problems; }
    /// Throws what the observer threw, once.
    void Rethrow();

private:
    IJobObserver* m_observer;
    const CancelToken* m_cancel;
    ProblemBook m_problems;
    Progress m_progress;
    std::exception_ptr m_thrown;
    bool m_stopped = false;
};

template <typename Call>
void JobControl::Tell(Call call)
{
    if (!m_observer || m_thrown)
        return;
    try {
        call(*m_observer);
    } catch (...) {
        m_thrown = std::current_exception();
        m_stopped = true;
    }
}

} // namespace Halvern::Jobs
