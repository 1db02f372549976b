// SPDX-License-Identifier: Apache-2.0

#include "fileset/PathIndex.h"

namespace Halvern::FileLink {

QString PathOf(const FileMapping& mapping, PathSide side)
{
    return side == PathSide::Source ? mapping.GetSourceFile() : mapping.GetTargetFile();
}

void PathIndex::Clear()
{
    m_entries.clear();
}

void PathIndex::Add(const QString& path, int position)
{
    m_entries[path.toCaseFolded()].append({path, position});
}

int PathIndex::Find(const QString& path) const
{
    const auto found = m_entries.constFind(path.toCaseFolded());
    if (found == m_entries.constEnd())
        return -1;
    // Full case folding maps some texts together ("ss" and "ß") that a comparison tells apart.
    for (const Entry& entry : *found)
        if (entry.path.compare(path, Qt::CaseInsensitive) == 0)
            return entry.position;
    return -1;
}

} // namespace Halvern::FileLink
