// SPDX-License-Identifier: Apache-2.0

#include "corsync/JobError.h"

namespace Halvern::Jobs {

JobError::JobError(JobErrorKind kind, const QString& text)
    : std::runtime_error(text.toStdString()), m_kind(kind), m_text(text)
{}

JobError::~JobError() = default;

JobErrorKind JobError::Kind() const
{
    return m_kind;
}

const QString& JobError::Text() const
{
    return m_text;
}

} // namespace Halvern::Jobs
