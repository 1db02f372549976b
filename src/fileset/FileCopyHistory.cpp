// SPDX-License-Identifier: Apache-2.0

#include "fileset/FileCopyHistory.h"

#include <utility>

namespace Halvern::FileLink {

FileCopyHistory::~FileCopyHistory()
{
    // A database may throw, a destructor must not.
    try {
        Save();
    } catch (...) {
    }
}

void FileCopyHistory::SetDatabase(std::shared_ptr<SyncDatabase> database)
{
    m_database = std::move(database);
}

std::shared_ptr<SyncDatabase> FileCopyHistory::Database() const
{
    return m_database ? m_database : GetDatabase();
}

bool FileCopyHistory::Load(int authenticationId)
{
    m_history.clear();
    if (const std::shared_ptr<SyncDatabase> database = Database())
        for (const FileMappingPointer& mapping :
             database->GetFileCopyHistoryByAuthenticationId(authenticationId))
            m_history.insert(mapping->GetSourceFile().toLower(), mapping);
    m_loaded = true;
    m_authenticationId = authenticationId;
    return true;
}

FileMappingPointer FileCopyHistory::Find(const QString& sourcePath, int authenticationId)
{
    if (sourcePath.isEmpty())
        return nullptr;
    if (!m_loaded || m_authenticationId != authenticationId)
        Load(authenticationId);
    const QString key = sourcePath.toLower();
    for (const Entries* entries : {&m_history, &m_updated, &m_added})
        if (const auto found = entries->constFind(key); found != entries->constEnd())
            return *found;
    return nullptr;
}

bool FileCopyHistory::AddOrUpdate(const FileMappingPointer& mapping)
{
    if (!mapping)
        return false;
    const QString key = mapping->GetSourceFile().toLower();
    if (m_updated.contains(key)) {
        m_updated.insert(key, mapping);
    } else if (m_history.remove(key)) {
        m_updated.insert(key, mapping);
    } else {
        m_added.insert(key, mapping);
    }
    return true;
}

bool FileCopyHistory::Save()
{
    if (m_added.isEmpty() && m_updated.isEmpty())
        return true;
    // Before the call: what it throws must not make a second attempt.
    const Entries added = std::exchange(m_added, {});
    const Entries updated = std::exchange(m_updated, {});
    m_history.insert(added);
    m_history.insert(updated);
    const std::shared_ptr<SyncDatabase> database = Database();
    return database && database->AddAndUpdateFileCopyHistory(added.values(), updated.values());
}

bool FileCopyHistory::DeleteAll()
{
    const int authenticationId = GetAuthenticationId();
    const std::shared_ptr<SyncDatabase> database = GetDatabase();
    return database && database->DeleteAllFileCopyHistory(authenticationId);
}

} // namespace Halvern::FileLink
