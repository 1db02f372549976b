// SPDX-License-Identifier: Apache-2.0

#include "OrdinaryRights.h"
#include "StampedFiles.h"

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

class UnreadableFiles : public StampedFiles
{};

} // namespace

TEST_F(UnreadableFiles, AreToldBySizeAndTimeAndUnknownWhereThoseDoNotTell)
{
    constexpr qint64 modified = 1'700'000'000 * Second + 1;
    constexpr qint64 later = modified + 3600 * Second;
    const QString path = File(u"a"_s, "12345", modified);
    FileStamp recorded = StampOf(path, true);
    const OrdinaryRights rights;
    QFile::setPermissions(path, {});
    EXPECT_EQ(StampOf(path, true), StampOf(path, false));
    FileStamp now;
    EXPECT_EQ(CompareWithRecord(recorded, later, path, false, &now), Sameness::Same);
    EXPECT_EQ(now.modified, modified);
    EXPECT_EQ(CompareWithRecord(recorded, later, path, true, &now), Sameness::Unknown);
    EXPECT_EQ(now.modified, modified);
    EXPECT_EQ(CompareWithRecord(recorded, modified, path, false), Sameness::Unknown);
    EXPECT_FALSE(IsSameAsRecorded(recorded, modified, path, false));
    recorded.modified -= 1;
    EXPECT_EQ(CompareWithRecord(recorded, later, path, false), Sameness::Unknown);
    recorded.bytes = 4;
    EXPECT_EQ(CompareWithRecord(recorded, later, path, false), Sameness::Changed);
}

} // namespace Halvern::Test
