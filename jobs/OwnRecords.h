// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Jobs {

/// What this library keeps for itself and a selection may hold: the sync database, which is open,
/// with its companions, and the base store. They are found also where the selection was given by
/// another name of their folder.
class OwnRecords
{
public:
    /// `sources` are absolute. Requires a session.
    explicit OwnRecords(const QStringList& sources);

    /// One of them, or something in one.
    bool Holds(const QString& path) const { return Is(path) || IsInOne(path); }
    bool Is(const QString& path) const;

private:
    bool IsInOne(const QString& path) const;

    /// As they are met in the selection.
    QSet<QString> m_places;
    QStringList m_folders;
};

} // namespace Halvern::Jobs
