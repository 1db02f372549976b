// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobFile.h"

#include <QtCore/QHash>
#include <QtCore/QList>

namespace Halvern::Jobs {

/// Files that must stay beside each other, by what their plug-ins say: a file and its companions,
/// the members of a set.
class Groups
{
public:
    explicit Groups(const JobFiles& files);

    /// The places of all files that are bound to this one, with itself.
    QList<qsizetype> Of(qsizetype place) const;
    /// At these targets each of these members would have its own name, and find the others where it
    /// looks for them. Requires a target for each.
    bool StayTogether(const QList<qsizetype>& members,
                      const QHash<qsizetype, QString>& targets) const;

private:
    qsizetype RootOf(qsizetype place) const;

    const JobFiles& m_files;
    /// Two files that are bound, the way between which stays.
    QList<std::pair<qsizetype, qsizetype>> m_bonds;
    QList<qsizetype> m_above;
};

} // namespace Halvern::Jobs
