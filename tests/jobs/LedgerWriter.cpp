// SPDX-License-Identifier: Apache-2.0

// A second process for the tests of the ledger:
//
//   ledger_writer write DATABASE FOLDER ROUNDS COUNT   writes COUNT records at once, ROUNDS times;
//                                                      prints the number of each round when written
//   ledger_writer lock DATABASE                        holds the write lock until standard input
//   ends

#include "LedgerRecords.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <iostream>
#include <string>

namespace {

using namespace Halvern;

int Write(const QString& file, const QString& folder, int rounds, int count)
{
    const auto ledger = Jobs::Ledger::Open(file, 7, 60000, false);
    for (int round = 1; round <= rounds; ++round) {
        QList<Jobs::CopyRecord> records = Test::RoundOfRecords(folder, round, count);
        if (!ledger->Write(records)) {
            std::cerr << ledger->Error().toStdString() << '\n';
            return 1;
        }
        std::cout << round << std::endl;
    }
    return 0;
}

int Lock(const std::string& file)
{
    SQLite::Database database(file, SQLite::OPEN_READWRITE, 10000);
    SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    std::cout << "locked" << std::endl;
    std::string line;
    while (std::getline(std::cin, line)) {
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string mode = argc > 2 ? argv[1] : "";
    if (mode == "write" && argc == 6)
        return Write(QString::fromUtf8(argv[2]), QString::fromUtf8(argv[3]), std::stoi(argv[4]),
                     std::stoi(argv[5]));
    if (mode == "lock")
        return Lock(argv[2]);
    return 2;
}
