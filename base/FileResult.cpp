// SPDX-License-Identifier: Apache-2.0

#include "base/FileResult.h"

namespace Halvern::Base {

FileProblem FileResult::Problem() const noexcept
{
    if (!m_failed)
        return FileProblem::None;
    if (m_problem != FileProblem::Other)
        return m_problem;
    return m_isHeld ? FileProblem::Held : ProblemOf(m_code);
}

std::string FileResult::Text() const
{
    if (m_code == 0)
        return m_what;
    const std::string reason = SystemErrorText(m_code);
    return m_what.empty() ? reason : m_what + ": " + reason;
}

} // namespace Halvern::Base
