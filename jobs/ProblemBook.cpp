// SPDX-License-Identifier: Apache-2.0

#include "ProblemBook.h"

namespace Halvern::Jobs {

void ProblemBook::Add(const FileLink::Problem& problem)
{
    m_byFile[problem.file].append(m_problems.size());
    m_problems.append(problem);
}

} // namespace Halvern::Jobs
