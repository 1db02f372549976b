// SPDX-License-Identifier: Apache-2.0

#include "JobControl.h"

#include <algorithm>

namespace Halvern::Jobs {

IJobObserver::~IJobObserver() = default;
void IJobObserver::PhaseBegun(Phase, qint64) {}
void IJobObserver::Progressed(const Progress&) {}
void IJobObserver::FileDone(const FileResult&) {}
void IJobObserver::ProblemFound(const FileLink::Problem&) {}

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
    if (m_muted || m_isCutOff)
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

bool JobControl::GoesOn()
{
    m_isCutOff = IsCancelRequested();
    return !m_isCutOff;
}

void JobControl::Copied(std::uint64_t bytes)
{
    // A file that must be copied again, or has grown, does not count twice.
    const qint64 now = std::clamp(qint64(bytes), m_progress.fileBytes,
                                  qMax(m_progress.fileBytes, m_progress.fileSize));
    m_progress.bytes += now - m_progress.fileBytes;
    m_progress.fileBytes = now;
}

void JobControl::BeginPhase(Phase phase, qint64 total, qint64 totalBytes)
{
    m_progress = {phase, 0, total, 0, totalBytes, 0, 0};
    Tell([&](IJobObserver& observer) { observer.PhaseBegun(phase, total); });
}

void JobControl::BeginFile(qint64 size)
{
    m_progress.fileBytes = 0;
    m_progress.fileSize = size;
}

void JobControl::EndFile()
{
    Copied(std::uint64_t(m_progress.fileSize));
    ++m_progress.files;
    Tell([&](IJobObserver& observer) { observer.Progressed(m_progress); });
}

void JobControl::Rethrow()
{
    if (m_thrown)
        std::rethrow_exception(std::exchange(m_thrown, nullptr));
}

} // namespace Halvern::Jobs
