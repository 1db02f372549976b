// SPDX-License-Identifier: Apache-2.0

#include "JobFile.h"

#include "Paths.h"

namespace Halvern::Jobs {

qsizetype JobFiles::Add(JobFile file)
{
    const qsizetype place = Size();
    const QString key = PathKey(file.source);
    if (!m_byPath.contains(key))
        m_byPath.insert(key, place);
    m_byFoldedPath.insert(FoldedKey(file.source), place);
    m_files.push_back(std::move(file));
    return place;
}

qsizetype JobFiles::Find(const QString& path) const
{
    const auto found = m_byPath.constFind(PathKey(path));
    if (found != m_byPath.constEnd())
        return *found;
    const auto [first, last] = m_byFoldedPath.equal_range(FoldedKey(path));
    for (auto it = first; it != last; ++it)
        if (IsSameFile(At(*it).source, path))
            return *it;
    return -1;
}

std::filesystem::path BelowCloudFolder(const QString& path, const JobState& job)
{
    return Native(path.mid(job.cloudFolder.size() + 1));
}

} // namespace Halvern::Jobs
