// SPDX-License-Identifier: Apache-2.0

#include "CountingDatabase.h"

#include <utility>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

template <typename Files>
QStringList Sources(const Files& files, QChar mark)
{
    QStringList sources;
    for (const auto& file : files)
        sources.append(mark + file->GetSourceFile());
    sources.sort();
    return sources;
}

} // namespace

CountingDatabase::CountingDatabase(std::shared_ptr<SyncDatabase> store) : m_store(std::move(store))
{}

std::shared_ptr<SyncServices::SyncItem> CountingDatabase::GetSyncItem(const QString& localPath,
                                                                      bool exactPath,
                                                                      int authenticationId,
                                                                      FileItem::Depth depth)
{
    return m_store->GetSyncItem(localPath, exactPath, authenticationId, depth);
}

std::shared_ptr<SyncServices::SyncItem> CountingDatabase::GetFolder(int folderId,
                                                                    FileItem::Depth depth)
{
    return m_store->GetFolder(folderId, depth);
}

std::shared_ptr<SyncServices::SyncItem> CountingDatabase::AddRootFolder(const QString& folderPath,
                                                                        const QString& cloudRoot,
                                                                        int authenticationId)
{
    return m_store->AddRootFolder(folderPath, cloudRoot, authenticationId);
}

std::shared_ptr<SyncServices::SyncItem>
CountingDatabase::AddFolderItem(std::shared_ptr<SyncItem> parent, const QString& folderPath)
{
    return m_store->AddFolderItem(std::move(parent), folderPath);
}

bool CountingDatabase::AddOrUpdateFileConfiguration(std::shared_ptr<SyncItem> item)
{
    return m_store->AddOrUpdateFileConfiguration(std::move(item));
}

QList<std::shared_ptr<SyncServices::SyncItem>>
CountingDatabase::GetFilesWithSyncOption(int folderId, SyncItem::SyncOption option)
{
    return m_store->GetFilesWithSyncOption(folderId, option);
}

QList<std::shared_ptr<SyncServices::SyncItem>> CountingDatabase::GetAllItems(int authenticationId)
{
    return m_store->GetAllItems(authenticationId);
}

QList<std::shared_ptr<SyncServices::FileMapping>>
CountingDatabase::GetFileCopyHistoryByAuthenticationId(int authenticationId)
{
    calls.append(u"read %1"_s.arg(authenticationId));
    return m_store->GetFileCopyHistoryByAuthenticationId(authenticationId);
}

bool CountingDatabase::AddAndUpdateFileCopyHistory(List<FileMapping> added,
                                                   List<FileMapping> updated)
{
    const QStringList written = Sources(added, u'+') + Sources(updated, u'~');
    calls.append(u"write "_s + written.join(u' '));
    return m_store->AddAndUpdateFileCopyHistory(std::move(added), std::move(updated));
}

bool CountingDatabase::DeleteAllFileCopyHistory(int authenticationId)
{
    calls.append(u"delete %1"_s.arg(authenticationId));
    return m_store->DeleteAllFileCopyHistory(authenticationId);
}

QString CountingDatabase::GetLastError() const
{
    return m_store->GetLastError();
}

} // namespace Halvern::Test
