// SPDX-License-Identifier: Apache-2.0

// Whether a file is what was recorded of it.

#include "StampedFiles.h"

#include "base/ContentHash.h"

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

// NTFS counts in steps of 100 nanoseconds.
constexpr qint64 fine = 1'700'000'000 * Second + 123'456'700;
constexpr qint64 coarse = 1'700'000'000 * Second;
/// Long after either.
constexpr qint64 later = fine + 3600 * Second;

} // namespace

TEST_F(StampedFiles, AreStampedWithSizeTimeAndOnDemandContent)
{
    const QByteArray content = PatternBytes(600'000);
    const QString path = File(u"a.prt"_s, content, fine);
    const FileStamp cheap = StampOf(path, false);
    EXPECT_EQ(cheap, (FileStamp{content.size(), fine, QByteArray()}));
    const FileStamp full = StampOf(path, true);
    EXPECT_EQ(full.bytes, content.size());
    EXPECT_EQ(full.modified, fine);
    Base::ContentHasher hasher;
    hasher.Add({content.constData(), size_t(content.size())});
    EXPECT_EQ(full.hash.toHex().toStdString(), hasher.Result().Hex());
    const Base::ContentHash hash = hasher.Result();
    EXPECT_EQ(StampOf(Base::ReadFileStatus(Base::NativePath(Base::Units(path))), &hash), full)
        << "a hash that is known from copying is as good";
}

TEST_F(StampedFiles, AreUnknownWithoutARegularFile)
{
    tree.Folder(u"folder"_s);
    for (const bool withHash : {false, true}) {
        EXPECT_EQ(StampOf(tree.Path(u"missing"_s), withHash), FileStamp());
        EXPECT_EQ(StampOf(tree.Path(u"folder"_s), withHash), FileStamp());
        EXPECT_EQ(StampOf(QString(), withHash), FileStamp());
    }
}

TEST_F(StampedFiles, AreRacyForAsLongAsTheClockOfTheirFileSystemMayStand)
{
    const struct
    {
        const char* name;
        qint64 modified;
        qint64 recordedAfter;
        bool isRacy;
    } rows[] = {
        {"fine, at once", fine, 0, true},
        {"fine, within a step of the system's clock", fine, 20 * MilliSecond, true},
        {"fine, after that", fine, 200 * MilliSecond, false},
        {"whole seconds, at once", coarse, 0, true},
        {"whole seconds, within FAT's two", coarse, 2 * Second, true},
        {"whole seconds, after that", coarse, 2 * Second + 200 * MilliSecond, false},
        {"a time to come", fine, -3600 * Second, true},
        {"a time long past", fine, 3600 * Second, false},
        {"before 1970, at once", -fine, 0, true},
        {"before 1970, long past", -fine, later, false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(IsRacy({1, row.modified, {}}, row.modified + row.recordedAfter), row.isRacy)
            << row.name;
}

TEST_F(StampedFiles, AreComparedByTheCheapestThatTells)
{
    constexpr qint64 other = fine + 100;
    constexpr bool checksum = true;
    const struct
    {
        const char* name;
        QByteArray content;
        qint64 modified;
        bool hasHash;
        qint64 recordedAt;
        bool checksum;
        Sameness expected;
    } rows[] = {
        {"nothing happened", "12345", fine, true, later, false, Sameness::Same},
        {"nothing, no hash", "12345", fine, false, later, false, Sameness::Same},
        {"nothing, racy", "12345", fine, true, fine, false, Sameness::Same},
        {"nothing, racy, no hash", "12345", fine, false, fine, false, Sameness::Changed},
        {"nothing, checksum", "12345", fine, true, later, checksum, Sameness::Same},
        {"nothing, checksum, no hash", "12345", fine, false, later, checksum, Sameness::Unknown},
        {"nothing, checksum, racy, no hash", "12345", fine, false, fine, checksum,
         Sameness::Changed},
        {"touched", "12345", other, true, later, false, Sameness::Same},
        {"touched, no hash", "12345", other, false, later, false, Sameness::Changed},
        {"touched, checksum, no hash", "12345", other, false, later, checksum, Sameness::Changed},
        {"saved with the same size", "1234x", other, true, later, false, Sameness::Changed},
        {"saved with the same size, no hash", "1234x", other, false, later, false,
         Sameness::Changed},
        {"saved in the racy moment", "1234x", fine, true, fine, false, Sameness::Changed},
        {"saved in secret", "1234x", fine, true, later, false, Sameness::Same},
        {"saved in secret, checksum", "1234x", fine, true, later, checksum, Sameness::Changed},
        {"grown", "123456", other, true, later, false, Sameness::Changed},
        {"grown with its old time", "123456", fine, true, later, false, Sameness::Changed},
        {"cut to nothing with its old time", "", fine, true, later, false, Sameness::Changed},
        {"set back in time", "12345", fine - Second, false, later, false, Sameness::Changed},
    };
    FileStamp recorded = StampOf(File(u"a"_s, "12345", fine), true);
    const QByteArray hash = recorded.hash;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const QString path = File(u"a"_s, row.content, row.modified);
        recorded.hash = row.hasHash ? hash : QByteArray();
        FileStamp now;
        EXPECT_EQ(CompareWithRecord(recorded, row.recordedAt, path, row.checksum, &now),
                  row.expected);
        EXPECT_EQ(IsSameAsRecorded(recorded, row.recordedAt, path, row.checksum),
                  row.expected == Sameness::Same);
        EXPECT_EQ(now.bytes, row.content.size());
        EXPECT_EQ(now.modified, row.modified);
        EXPECT_TRUE(now.hash.isEmpty() || now.hash == StampOf(path, true).hash);
    }
}

TEST_F(StampedFiles, AreChangedWhenTheyAreGone)
{
    const QString path = File(u"a"_s, "12345", fine);
    const FileStamp recorded = StampOf(path, true);
    FileStamp now = recorded;
    tree.Remove(u"a"_s);
    EXPECT_EQ(CompareWithRecord(recorded, later, path, false, &now), Sameness::Changed);
    EXPECT_EQ(now, FileStamp());
    tree.Folder(u"a"_s);
    EXPECT_EQ(CompareWithRecord(recorded, later, path, true, &now), Sameness::Changed);
    EXPECT_EQ(CompareWithRecord(FileStamp(), later, path, false), Sameness::Changed)
        << "what was never looked at is not the same as what is not there";
}

TEST_F(StampedFiles, AreTheSameWhenTheyAreEmptyWhateverTheTime)
{
    const QString path = File(u"a"_s, "", fine);
    const FileStamp recorded{0, coarse, QByteArray()};
    EXPECT_EQ(CompareWithRecord(recorded, coarse, path, true), Sameness::Same);
}

TEST_F(StampedFiles, AreReadOnlyWhenTheirContentHasToTell)
{
    const QString path = File(u"a"_s, "12345", fine);
    const FileStamp recorded = StampOf(path, true);
    FileStamp now;
    EXPECT_TRUE(IsSameAsRecorded(recorded, later, path, false, &now));
    EXPECT_TRUE(now.hash.isEmpty());
    EXPECT_TRUE(IsSameAsRecorded(recorded, fine, path, false, &now));
    EXPECT_EQ(now, recorded);
}

TEST_F(StampedFiles, ThatAreSavedRightAfterTheyWereRecordedAreNoticed)
{
    const QString path = File(u"a"_s, "0000", fine);
    QFile file(path);
    ASSERT_TRUE(file.open(QFile::ReadWrite | QFile::Unbuffered));
    const auto save = [&](int number) {
        EXPECT_TRUE(file.seek(0));
        EXPECT_EQ(file.write(QByteArray::number(number)), 4);
    };
    for (int i = 0; i < 300; ++i) {
        save(1000 + i);
        const qint64 recordedAt = ClockNow();
        FileStamp recorded = StampOf(path, false);
        if (IsRacy(recorded, recordedAt))
            recorded = StampOf(path, true);
        EXPECT_TRUE(IsSameAsRecorded(recorded, recordedAt, path, false));
        save(2000 + i);
        EXPECT_FALSE(IsSameAsRecorded(recorded, recordedAt, path, false)) << "save " << i;
    }
}

} // namespace Halvern::Test
