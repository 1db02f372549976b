// SPDX-License-Identifier: Apache-2.0

#include "ConflictAnswers.h"

namespace Halvern::Jobs {

namespace {

ConflictAnswer AnswerOf(CollisionPolicy policy)
{
    switch (policy) {
    case CollisionPolicy::Stop:
        return ConflictAnswer::Stop;
    case CollisionPolicy::Keep:
        return ConflictAnswer::Keep;
    case CollisionPolicy::Rename:
        return ConflictAnswer::Rename;
    case CollisionPolicy::Replace:
        return ConflictAnswer::Replace;
    }
    return ConflictAnswer::Stop;
}

} // namespace

ConflictAnswer ConflictAnswers::ForCollision(const JobFile& file) const
{
    const ConflictAnswer policy = AnswerOf(file.isSelected ? m_job.request.selectedCollisions
                                                           : m_job.request.linkedCollisions);
    return m_answers.value(file.source, policy);
}

ConflictAnswer ConflictAnswers::For(const JobFile& file, Standing standing) const
{
    return standing == Standing::BothChanged
               ? m_answers.value(file.source, m_job.request.onConflict)
               : ForCollision(file);
}

} // namespace Halvern::Jobs
