// SPDX-License-Identifier: Apache-2.0

// A second process for the tests of the sync database:
//
//   writer items DATABASE CLOUD PREFIX COUNT   writes items, one after another, and a copy history
//                                              entry each; prints the number of each when written
//   writer lock DATABASE                       holds the write lock until standard input ends
//   writer own DATABASE                        likewise, and lets nobody read either
//   writer run DATABASE CLOUD LIMIT FILE...    keeps the files in the base store, in one run that
//                                              ends with standard input; prints "saved"

#include "syncservices/FolderManager.h"
#include "syncservices/SyncManager.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <iostream>
#include <string>

using namespace Halvern::SyncServices;
using namespace Qt::StringLiterals;
using Halvern::SyncFolderManagerLib::FolderManager;

namespace {

bool WriteOne(SyncDatabase& database, const QString& path)
{
    const FileLink link{-1, u"r1"_s, u"lib/part.prt"_s, QString()};
    const auto item = std::make_shared<SyncItem>(path, path, u"/"_s);
    item->SetAuthenticationId(7);
    item->SetFileLinks({link, link});
    const auto copy = std::make_shared<FileMapping>(path + u".source"_s, path, 7);
    copy->SetSourceFileLinks({link});
    return database.AddOrUpdateFileConfiguration(item) &&
           database.AddAndUpdateFileCopyHistory({copy}, {});
}

int WriteItems(const QString& file, const QString& cloud, const QString& prefix, int count)
{
    ServicesSettings settings;
    settings.databaseFile = file;
    settings.cloudCacheFolder = cloud;
    FolderManager::Configure(settings);
    FolderManager::Initialize();
    const std::shared_ptr<SyncDatabase> database = FolderManager::GetInstance()->GetSyncDatabase();
    if (!database) {
        std::cerr << FolderManager::GetInstance()->GetLastError().toStdString() << '\n';
        return 1;
    }
    for (int i = 1; i <= count; ++i) {
        if (!WriteOne(*database, u"%1/%2%3.prt"_s.arg(cloud, prefix).arg(i))) {
            std::cerr << database->GetLastError().toStdString() << '\n';
            return 1;
        }
        std::cout << i << std::endl;
    }
    return 0;
}

void WaitForEndOfInput()
{
    std::string line;
    while (std::getline(std::cin, line)) {
    }
}

int RunInStore(const QString& database, const QString& cloud, int limit, const QStringList& files)
{
    ServicesSettings settings;
    settings.databaseFile = database;
    settings.cloudCacheFolder = cloud;
    settings.baseStoreLimit = limit;
    FolderManager::Configure(settings);
    FolderManager::Initialize();
    SyncManager::Initialize();
    const BaseStoreRun run;
    for (const QString& file : files) {
        QString error;
        if (!SyncManager::GetInstance()->SaveVersion(file, &error)) {
            std::cerr << error.toStdString() << '\n';
            return 1;
        }
    }
    std::cout << "saved" << std::endl;
    WaitForEndOfInput();
    return 0;
}

int Lock(const std::string& file, const char* kind)
{
    SQLite::Database database(file, SQLite::OPEN_READWRITE, 10000);
    if (std::string(kind) == "own")
        database.execAndGet("PRAGMA locking_mode = EXCLUSIVE");
    SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    std::cout << "locked" << std::endl;
    WaitForEndOfInput();
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string mode = argc > 2 ? argv[1] : "";
    if (mode == "items" && argc == 6)
        return WriteItems(QString::fromUtf8(argv[2]), QString::fromUtf8(argv[3]),
                          QString::fromUtf8(argv[4]), std::stoi(argv[5]));
    if (mode == "run" && argc > 5) {
        QStringList files;
        for (int i = 5; i < argc; ++i)
            files.append(QString::fromUtf8(argv[i]));
        return RunInStore(QString::fromUtf8(argv[2]), QString::fromUtf8(argv[3]),
                          std::stoi(argv[4]), files);
    }
    if (mode == "lock" || mode == "own")
        return Lock(argv[2], argv[1]);
    return 2;
}
