// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Ledger.h"

#include <QtCore/QHash>

namespace Halvern::Jobs {

/// The records of earlier copies, found by what one job asks for.
class CopyIndex
{
public:
    CopyIndex() = default;
    explicit CopyIndex(QList<CopyRecord> records);

    const QList<CopyRecord>& All() const { return m_records; }
    /// The latest of a source in a project; null when there is none.
    const CopyRecord* OfProject(const QString& source, const QString& project) const;
    /// A move of the project has deleted the source, and nobody has copied one of its name since.
    bool WasMoved(const QString& source, const QString& project) const;
    /// All of a source, the latest first.
    QList<const CopyRecord*> OfSource(const QString& source) const;
    /// Null when no copy with this target is recorded.
    const CopyRecord* OfTarget(const QString& target) const;
    /// A copy of another project holds a link to this file.
    bool IsLinkedElsewhere(const QString& target, const QString& project) const;

private:
    QList<CopyRecord> m_records;
    /// Places in the list.
    QHash<QString, QList<qsizetype>> m_bySource;
    QHash<QString, qsizetype> m_byTarget;
    QMultiHash<QString, qsizetype> m_byLinkedTarget;
};

} // namespace Halvern::Jobs
