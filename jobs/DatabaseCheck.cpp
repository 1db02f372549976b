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

int IsTooLate(void* timer)
{
    return static_cast<QElapsedTimer*>(timer)->hasExpired(MillisecondsToLook) ? 1 : 0;
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
        const QString answer = hasAnswer ? QString::fromUtf8(check.getColumn(0).getText()) : QString();
        return answer == u"ok" ? QString() : answer.section(u'\n', 0, 0);
    } catch (const SQLite::Exception& error) {
        const int code = error.getErrorCode();
        // Whoever uses the database next waits for it, and says so when it never comes.
        if (code == SQLITE_INTERRUPT || code == SQLITE_BUSY)
            return {};
        return QString::fromUtf8(error.getErrorStr());
    }
}

} // namespace Halvern::Jobs
