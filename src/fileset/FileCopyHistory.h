// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/Platform.h"

#include <QtCore/QHash>
#include <QtCore/QString>

#include <memory>

namespace Halvern::FileLink {

/// What the current user copied earlier, read from the sync database once and kept in memory for
/// one importer. New copies are collected and written in one call when the history is saved, at the
/// latest by the destructor.
///
/// Entries are found by lower-cased source path. Recorded mappings are shared, not copied.
class FileCopyHistory
{
public:
    FileCopyHistory() = default;
    /// The database to use from now on in place of the platform's; null: that again. What was read
    /// stays, and what is not saved yet goes there.
    void SetDatabase(std::shared_ptr<SyncDatabase> database);
    /// Saves; a failure of that goes unreported.
    ~FileCopyHistory();
    FileCopyHistory(const FileCopyHistory&) = delete;
    FileCopyHistory& operator=(const FileCopyHistory&) = delete;

    /// Replaces what was read before; unsaved entries stay. Always true.
    bool Load(int authenticationId);
    /// The mapping recorded when that source was last copied, or null. Loads when needed.
    FileMappingPointer Find(const QString& sourcePath, int authenticationId);
    /// Records a mapping for the next save. False for null.
    bool AddOrUpdate(const FileMappingPointer& mapping);
    /// False when the database refused; the entries count as saved even then.
    bool Save();
    /// Deletes the current user's history from the database. What is in memory stays.
    static bool DeleteAll();

private:
    using Entries = QHash<QString, FileMappingPointer>;

    std::shared_ptr<SyncDatabase> Database() const;

    std::shared_ptr<SyncDatabase> m_database;
    bool m_loaded = false;
    int m_authenticationId = -1;
    Entries m_history;
    Entries m_added;
    Entries m_updated;
};

} // namespace Halvern::FileLink
