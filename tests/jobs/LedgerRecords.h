// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Ledger.h"

namespace Halvern::Test {

/// A record of a copy in the folder, with two links on each side, that differs with the number.
inline Jobs::CopyRecord RecordOf(const QString& target, int number = 1)
{
    Jobs::CopyRecord record;
    record.project = QStringLiteral("/cloud/Projekt ä");
    record.source = QStringLiteral("/work") + target;
    record.target = target;
    record.sourceStamp = {number, 1'700'000'000'123'456'789 + number,
                          QByteArray(16, static_cast<char>(number))};
    record.targetStamp = {number + 1, 1'700'000'000'999'999'999 + number,
                          QByteArray(16, static_cast<char>(-number))};
    record.recordedAt = 1'700'000'001'000'000'001;
    record.sourceLinks = {
        {-1, QStringLiteral("r1"), QStringLiteral("../lib/a.prt"), QString()},
        {number, QStringLiteral("r2"), QStringLiteral("../lib/b.prt"), QStringLiteral("c")}};
    record.targetLinks = {{-1, QStringLiteral("r1"), QStringLiteral("lib/a.prt"), QString()},
                          {-1, QStringLiteral("r2"), QStringLiteral("lib/b.prt"), QString()}};
    record.linkedTargets = {QStringLiteral("/cloud/lib/a.prt"), QStringLiteral("/cloud/lib/b.prt")};
    record.readers = QStringLiteral("One 1.0; Two 2.0");
    record.origin = Jobs::CopyOrigin::Linked;
    return record;
}

/// The records that a round of the writing process makes: "FOLDER/1-1.prt", "FOLDER/1-2.prt" ...
inline QList<Jobs::CopyRecord> RoundOfRecords(const QString& folder, int round, int count)
{
    QList<Jobs::CopyRecord> records;
    for (int i = 1; i <= count; ++i)
        records.append(
            RecordOf(folder + QStringLiteral("/%1-%2.prt").arg(round).arg(i), round * count + i));
    return records;
}

} // namespace Halvern::Test
