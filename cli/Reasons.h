// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Logging.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Cli {

/// Finds the log records that name a path. Each record is read once, however many paths there are.
class Reasons
{
public:
    /// Keeps the records of at least ERROR, and the copy stage's read-only targets.
    Reasons(const QList<LogRecord>& records, const QSet<QString>& paths);

    /// The records that name the path, oldest first. A plug-in's own explanation, which need not
    /// name a file, comes with the record about the plug-in that follows it.
    QList<LogRecord> For(const QString& path) const { return m_byPath.value(path); }
    /// The records that name none of the paths, each text once.
    const QList<LogRecord>& General() const { return m_general; }
    /// One sentence for the user: each text once, and of a plug-in that explained itself only what
    /// it said.
    static QString Join(const QList<LogRecord>& records);

private:
    QStringList NamedPaths(const QString& text) const;
    void Assign(const LogRecord& record);
    void AddGeneral(const LogRecord& record);

    QSet<QString> m_paths;
    QHash<QString, QList<LogRecord>> m_byPath;
    /// What a plug-in said without naming a file, until the record that tells the file.
    QList<LogRecord> m_unassigned;
    QList<LogRecord> m_general;
    QSet<QString> m_generalTexts;
};

} // namespace Halvern::Cli
