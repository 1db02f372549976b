// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ProblemBook.h"

#include "corsync/CancelToken.h"
#include "corsync/JobObserver.h"

#include "base/WorkWatch.h"
#include "filelink/ICancelController.h"
#include "filelink/Problem.h"

#include <exception>
#include <utility>

namespace Halvern::Jobs {

/// Stands between the module and the host: hands the host's wish to stop to the module, and what
/// happens to the observer. What an observer throws crosses no stage: it stops the job, and waits
/// here until the job has ended in good order.
class JobControl : public FileLink::ICancelController,
                   public FileLink::IProblemSink,
                   public Base::WorkWatch
{
public:
    JobControl(IJobObserver* observer, const CancelToken* cancel)
        : m_observer(observer), m_cancel(cancel)
    {}

    bool IsCancelRequested() override;
    void Report(const FileLink::Problem& problem) override;
    /// Once it has answered false nothing more is reported: what was cut off did not fail.
    bool GoesOn() override;
    void Copied(std::uint64_t bytes) override;

    /// What is said about `path` while this lives is said about `meant`, a file of the job.
    class Alias
    {
    public:
        Alias(JobControl& control, const QString& path, const QString& meant) : m_control(control)
        {
            control.m_aliasPath = path;
            control.m_aliasMeant = meant;
        }
        ~Alias() { m_control.m_aliasPath.clear(); }
        Alias(const Alias&) = delete;
        Alias& operator=(const Alias&) = delete;

    private:
        JobControl& m_control;
    };

    /// From now on a wish to stop changes nothing: what was done is being recorded.
    void GoOn()
    {
        m_goesOn = true;
        m_isCutOff = false;
    }
    /// While a trial is made nothing that goes wrong with it is told.
    void Mute(bool on) { m_muted = on; }
    bool IsMuted() const { return m_muted; }

    void BeginPhase(Phase phase, qint64 total, qint64 totalBytes = 0);
    void BeginFile(qint64 size);
    void EndFile();
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
    bool m_muted = false;
    bool m_goesOn = false;
    bool m_isCutOff = false;
    QString m_aliasPath;
    QString m_aliasMeant;
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
