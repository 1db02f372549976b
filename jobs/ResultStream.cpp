// SPDX-License-Identifier: Apache-2.0

#include "ResultStream.h"

namespace Halvern::Jobs {

void ResultStream::Copied(const QString& source)
{
    qint64 bytes = 0;
    bool found = false;
    while (m_control.HasObserver() && !found && m_next < m_files.size()) {
        const auto& file = m_files.at(m_next);
        found = file->GetSourceFile() == source;
        if (const PlannedFile* planned = found ? m_maker.Planned(*file) : nullptr)
            bytes = planned->bytes;
        TellIfNew(m_next++);
    }
    m_control.Step(bytes);
}

void ResultStream::Modified(const QString& target)
{
    if (m_byTarget.isEmpty())
        for (qsizetype i = 0; i < m_files.size(); ++i)
            m_byTarget.insert(m_files.at(i)->GetTargetFile(), i);
    const qsizetype index = m_byTarget.value(target, -1);
    if (index >= 0)
        TellIfNew(index);
    m_control.Step(0);
}

void ResultStream::EndPhase()
{
    m_next = m_files.size();
    for (qsizetype i = 0; m_control.HasObserver() && i < m_files.size(); ++i)
        TellIfNew(i);
}

void ResultStream::TellIfNew(qsizetype index)
{
    const auto& file = m_files.at(index);
    if (!m_control.HasObserver() || !IsReported(*file, m_job))
        return;
    const FileResult result = m_maker.Make(*file);
    const Told now{result.outcome, result.problems.size(), result.linksRewritten};
    if (now == m_told.at(index))
        return;
    m_told[index] = now;
    m_control.Tell([&](IJobObserver& observer) { observer.FileDone(result); });
}

} // namespace Halvern::Jobs
