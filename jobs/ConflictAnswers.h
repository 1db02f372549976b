// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobFile.h"
#include "ThreeWays.h"

#include <QtCore/QHash>

namespace Halvern::Jobs {

/// What is to be done with a file whose target is taken, by the source of the file; beside the
/// policies of the request.
using Answers = QHash<QString, ConflictAnswer>;

/// What is to be done where a target is taken: the answer of a person, or else the policy of the
/// request.
class ConflictAnswers
{
public:
    explicit ConflictAnswers(const JobState& job) : m_job(job) {}

    void Take(const Answers& answers) { m_answers = answers; }
    ConflictAnswer For(const JobFile& file, Standing standing) const;
    /// Whatever stands there, it is no earlier copy.
    ConflictAnswer ForCollision(const JobFile& file) const;

private:
    const JobState& m_job;
    Answers m_answers;
};

} // namespace Halvern::Jobs
