// SPDX-License-Identifier: Apache-2.0

#include "DatabaseCheck.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <sqlite3.h>

#include <QtCore/QElapsedTimer>

namespace Halvern::Jobs {

namespace {

/// About 100 MB in memory.
constexpr qint64 MillisecondsToLook = 300;
/// Of SQLite's machine, between two looks at the clock.
constexpr int StepsBetweenLooks = 100'000;

/// More of them tell nobody more.
constexpr int MostFaults = 20;

int IsTooLate(void* timer)
{
    return static_cast<QElapsedTimer*>(timer)->hasExpired(MillisecondsToLook) ? 1 : 0;
}

int IsStopped(void* goesOn)
{
    return (*static_cast<const std::function<bool()>*>(goesOn))() ? 0 : 1;
}

void TakeRows(SQLite::Database& database, const std::string& query, QStringList& rows)
{
    SQLite::Statement check(database, query);
    while (rows.size() < MostFaults && check.executeStep())
        rows += QString::fromUtf8(check.getColumn(0).getText()).split(u'\n', Qt::SkipEmptyParts);
    rows.removeAll(QStringLiteral("ok"));
}

} // namespace

QString FindDamage(const QString& databaseFile)
{
    if (databaseFile == u":memory:")
        return {};
    QElapsedTimer timer;
    timer.start();
    try {
        const SQLite::Database database(databaseFile.toStdString(), SQLite::OPEN_READONLY);
        sqlite3_progress_handler(database.getHandle(), StepsBetweenLooks, IsTooLate, &timer);
        SQLite::Statement check(database, "PRAGMA integrity_check(1)");
        const bool hasAnswer = check.executeStep();
        const QString answer =
            hasAnswer ? QString::fromUtf8(check.getColumn(0).getText()) : QString();
        return answer == u"ok" ? QString() : answer.section(u'\n', 0, 0);
    } catch (const SQLite::Exception& error) {
        const int code = error.getErrorCode();
        // Whoever uses the database next waits for it, and says so when it never comes.
        if (code == SQLITE_INTERRUPT || code == SQLITE_BUSY)
            return {};
        return QString::fromUtf8(error.getErrorStr());
    }
}

QStringList ListDamage(const QString& databaseFile, const std::function<bool()>& goesOn)
{
    QStringList faults;
    try {
        SQLite::Database database(databaseFile.toStdString(), SQLite::OPEN_READONLY);
        auto asked = goesOn;
        sqlite3_progress_handler(database.getHandle(), StepsBetweenLooks, IsStopped, &asked);
        TakeRows(database, "PRAGMA integrity_check(" + std::to_string(MostFaults) + ")", faults);
        TakeRows(database,
                 "SELECT 'row ' || rowid || ' of ' || \"table\" || ' refers to a row of ' || parent"
                 " || ' that is not there' FROM pragma_foreign_key_check",
                 faults);
    } catch (const SQLite::Exception& error) {
        if (error.getErrorCode() != SQLITE_INTERRUPT)
            faults.append(QString::fromUtf8(error.getErrorStr()));
    }
    return faults;
}

} // namespace Halvern::Jobs
