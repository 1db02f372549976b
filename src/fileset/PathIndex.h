// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/Platform.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::FileLink {

/// Which of a mapping's two paths is meant.
enum class PathSide
{
    Source,
    Target
};

QString PathOf(const FileMapping& mapping, PathSide side);

/// Finds positions of a list by path. Answers are those of a walk from the front of the list that
/// compares paths as stored, without regard to letter case, and returns the first match.
class PathIndex
{
public:
    void Clear();
    /// Positions must be added in ascending order.
    void Add(const QString& path, int position);
    /// -1 when there is none. The argument is compared as it is, without cleaning.
    int Find(const QString& path) const;

private:
    struct Entry
    {
        QString path;
        int position;
    };
    QHash<QString, QList<Entry>> m_entries;
};

} // namespace Halvern::FileLink
