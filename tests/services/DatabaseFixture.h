// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ServicesFixture.h"

#include "syncservices/SyncItem.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <gmock/gmock.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

/// The services over a database file, with shorthands for items and raw looks at the file.
class DatabaseFixture : public ServicesFixture
{
protected:
    using ItemPointer = std::shared_ptr<SyncServices::SyncItem>;
    using MappingPointer = std::shared_ptr<SyncServices::FileMapping>;

    /// Ends the services and starts them again, with `settings`.
    void Restart()
    {
        SyncFolderManagerLib::FolderManager::Uninitialize();
        SyncFolderManagerLib::FolderManager::Configure(settings);
        SyncFolderManagerLib::FolderManager::Initialize();
    }

    /// An unsaved file item of user 7.
    static ItemPointer
    File(const QString& path,
         SyncServices::SyncItem::SyncOption option = SyncServices::SyncItem::NoSyncOption)
    {
        const auto item = std::make_shared<SyncServices::SyncItem>(path, u"/cloud"_s, u"/"_s);
        item->SetAuthenticationId(7);
        item->SetSyncOption(option);
        return item;
    }

    ItemPointer Find(const QString& path, int authenticationId = 7) const
    {
        return Database().GetSyncItem(path, true, authenticationId,
                                      SyncServices::FileItem::ItemOnly);
    }

    static QStringList Paths(const QList<ItemPointer>& items)
    {
        QStringList paths;
        for (const ItemPointer& item : items)
            paths.append(item->GetLocalPath());
        return paths;
    }

    std::string Ask(const char* query) const
    {
        SQLite::Database file(settings.databaseFile.toStdString(), SQLite::OPEN_READONLY, 10000);
        return file.execAndGet(query).getString();
    }

    int Count(const char* table) const
    {
        return std::stoi(Ask(("SELECT count(*) FROM " + std::string(table)).c_str()));
    }
};

} // namespace Halvern::Test
