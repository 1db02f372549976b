// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobControl.h"
#include "Results.h"

#include "filelink/FileSet.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::Jobs {

/// Hands results to the observer as they come: each file when its turn of copying is over, and
/// again when a later phase changes what there is to say.
class ResultStream
{
public:
    /// Requires job.files.
    ResultStream(JobControl& control, ResultMaker& maker, const JobState& job)
        : m_control(control), m_maker(maker), m_job(job), m_files(job.files->GetFiles()),
          m_told(m_files.size())
    {}

    /// The copy stage has put this file in place, and so has passed all before it.
    void Copied(const QString& source);
    /// The links inside the file at this target were rewritten.
    void Modified(const QString& target);
    /// A phase has ended: whatever it has changed is told.
    void EndPhase();

private:
    /// What was told about a file last.
    struct Told
    {
        Outcome outcome = Outcome::NotDone;
        qsizetype problems = -1;
        bool linksRewritten = false;
        bool operator==(const Told&) const = default;
    };

    void TellIfNew(qsizetype index);

    JobControl& m_control;
    ResultMaker& m_maker;
    const JobState& m_job;
    const FileLink::FileSet::FileMappingList m_files;
    QList<Told> m_told;
    /// The first file of which nothing was told.
    qsizetype m_next = 0;
    QHash<QString, qsizetype> m_byTarget;
};

} // namespace Halvern::Jobs
