// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "LedgerRecords.h"
#include "ServicesFixture.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <memory>
#include <string>

namespace Halvern::Test {

/// A database file that the services have made and closed, and a ledger in it.
///
/// While anything has the file open here, it must not be read as a file: closing it would drop
/// SQLite's locks on POSIX.
class LedgerFixture : public ServicesFixture
{
protected:
    LedgerFixture() { EndServices(); }

    static void EndServices() { SyncFolderManagerLib::FolderManager::Uninitialize(); }
    void StartServices()
    {
        SyncFolderManagerLib::FolderManager::Configure(settings);
        SyncFolderManagerLib::FolderManager::Initialize();
        EXPECT_EQ(SyncFolderManagerLib::FolderManager::GetInstance()->GetLastError(), QString());
    }

    std::unique_ptr<Jobs::Ledger> Open(bool readOnly = false, int user = 7) const
    {
        return Jobs::Ledger::Open(settings.databaseFile, user, 1000, readOnly);
    }
    /// With a ledger of its own.
    void Write(QList<Jobs::CopyRecord> records) const
    {
        const auto ledger = Open();
        EXPECT_TRUE(ledger->Write(records)) << ledger->Error().toStdString();
    }
    /// With a ledger of its own that only reads.
    QList<Jobs::CopyRecord> Read(const QString& folder = QStringLiteral("/cloud")) const
    {
        const auto ledger = Open(true);
        const QList<Jobs::CopyRecord> records = ledger->ReadAll(folder);
        EXPECT_EQ(ledger->Error(), QString());
        return records;
    }
    QStringList Targets(const QString& folder) const
    {
        QStringList targets;
        for (const Jobs::CopyRecord& record : Read(folder))
            targets.append(record.target);
        return targets;
    }
    void Change(const char* sql) const
    {
        SQLite::Database(settings.databaseFile.toStdString(), SQLite::OPEN_READWRITE, 10000)
            .exec(sql);
    }
    std::string Ask(const char* query) const
    {
        SQLite::Database file(settings.databaseFile.toStdString(), SQLite::OPEN_READWRITE, 10000);
        return file.execAndGet(query).getString();
    }
    /// The file, and what stands beside it of SQLite's.
    FileTree::Snapshot FilesOfTheDatabase() const
    {
        FileTree::Snapshot files;
        for (const auto& [name, content] : tree.Contents().asKeyValueRange())
            if (name.startsWith(QStringLiteral("sync.db")))
                files.insert(name, content);
        return files;
    }
};

} // namespace Halvern::Test
