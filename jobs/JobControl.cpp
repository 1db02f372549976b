// SPDX-License-Identifier: Apache-2.0

#include "JobControl.h"

namespace Halvern::Jobs {

IJobObserver::~IJobObserver() = default;
void IJobObserver::PhaseBegun(Phase, qint64) {}
void IJobObserver::Progressed(const Progress&) {}
void IJobObserver::FileDone(const FileResult&) {}
void IJobObserver::ProblemFound(const FileLink::Problem&) {}
void IJobObserver::Waiting(const QString&) {}

bool JobControl::IsCancelRequested()
{
    Tell([&](IJobObserver& observer) { observer.Progressed(m_progress); });
    if (m_goesOn)
        return false;
    m_stopped = m_stopped || (m_cancel && m_cancel->IsCancelled());
    return m_stopped;
}

void JobControl::Report(const FileLink::Problem& problem)
{
    if (m_muted)
        return;
    FileLink::Problem meant = problem;
    if (!m_aliasPath.isEmpty()) {
        if (meant.file == m_aliasPath)
            meant.file = m_aliasMeant;
        meant.text.replace(m_aliasPath, m_aliasMeant);
    }
    m_problems.Add(meant);
    Tell([&](IJobObserver& observer) { observer.ProblemFound(meant); });
}

void JobControl::BeginPhase(Phase phase, qint64 total)
{
    m_progress = {phase, 0, total, 0};
    Tell([&](IJobObserver& observer) { observer.PhaseBegun(phase, total); });
}

void JobControl::Step(qint64 bytes)
{
    ++m_progress.files;
    m_progress.bytes += bytes;
    Tell([&](IJobObserver& observer) { observer.Progressed(m_progress); });
}

void JobControl::Rethrow()
{
    if (m_thrown)
        std::rethrow_exception(std::exchange(m_thrown, nullptr));
}

} // namespace Halvern::Jobs
