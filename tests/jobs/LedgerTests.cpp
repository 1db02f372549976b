// SPDX-License-Identifier: Apache-2.0

// What the ledger gives back.

#include "LedgerFixture.h"

#include "base/SamePath.h"

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

using Records = QList<CopyRecord>;

class LedgerOfCopies : public LedgerFixture
{
protected:
    static bool HasRowsFor(const Records& records)
    {
        return std::all_of(records.begin(), records.end(),
                           [](const CopyRecord& record) { return record.id > 0; });
    }
};

} // namespace

TEST_F(LedgerOfCopies, GivesBackARecordAsItWasWritten)
{
    CopyRecord plain;
    plain.target = u"/cloud/plain.prt"_s;
    CopyRecord full = RecordOf(u"/cloud/sub/full.prt"_s);
    full.linksState = LinksState::UnknownFormat;
    full.isRewritePending = true;
    CopyRecord moved = RecordOf(u"/cloud/sub/moved.prt"_s);
    moved.linksState = LinksState::Failed;
    moved.isMoved = true;
    Records written{plain, full, moved};

    const auto ledger = Open();
    ASSERT_TRUE(ledger->Write(written)) << ledger->Error().toStdString();

    EXPECT_TRUE(HasRowsFor(written));
    EXPECT_EQ(ledger->ReadAll(u"/cloud"_s), written);
    EXPECT_EQ(Read(), written);
    EXPECT_EQ(ledger->Error(), QString());
}

TEST_F(LedgerOfCopies, KeepsTheBoundsOfNumbers)
{
    CopyRecord record = RecordOf(u"/cloud/a"_s);
    constexpr qint64 most = std::numeric_limits<qint64>::max();
    constexpr qint64 least = std::numeric_limits<qint64>::min();
    record.sourceStamp = {most, least, QByteArray()};
    record.targetStamp = {0, -1, QByteArray()};
    record.recordedAt = most;
    record.sourceLinks[0].ItemId = std::numeric_limits<int>::max();
    record.sourceLinks[1].ItemId = std::numeric_limits<int>::min();
    Records written{record};
    ASSERT_TRUE(Open()->Write(written));
    EXPECT_EQ(Read(), written);
}

TEST_F(LedgerOfCopies, TellsNullTextsFromEmptyOnes)
{
    CopyRecord null = RecordOf(u"/cloud/a"_s);
    null.project = null.source = null.readers = QString();
    null.sourceStamp.hash = null.targetStamp.hash = QByteArray();
    null.sourceLinks = {{-1, QString(), QString(), QString()}};
    null.linkedTargets = {QString()};
    CopyRecord empty = RecordOf(u"/cloud/b"_s);
    empty.project = empty.source = empty.readers = u""_s;
    empty.sourceStamp.hash = empty.targetStamp.hash = "";
    empty.sourceLinks = {{-1, u""_s, u""_s, u""_s}};
    empty.linkedTargets = {u""_s};
    empty.targetLinks.clear();
    Write({null, empty});

    const Records read = Read();
    ASSERT_EQ(read.size(), 2);
    for (const CopyRecord& record : read) {
        const bool isNull = record.target == null.target;
        EXPECT_EQ(record.project.isNull(), isNull);
        EXPECT_EQ(record.source.isNull(), isNull);
        EXPECT_EQ(record.readers.isNull(), isNull);
        EXPECT_EQ(record.sourceStamp.hash.isNull(), isNull);
        EXPECT_EQ(record.targetStamp.hash.isNull(), isNull);
        ASSERT_EQ(record.sourceLinks.size(), 1);
        EXPECT_EQ(record.sourceLinks[0].RefId.isNull(), isNull);
        EXPECT_EQ(record.sourceLinks[0].Path.isNull(), isNull);
        EXPECT_EQ(record.sourceLinks[0].CloudItemId.isNull(), isNull);
        ASSERT_EQ(record.linkedTargets.size(), 1);
        EXPECT_EQ(record.linkedTargets[0].isNull(), isNull);
        EXPECT_EQ(record.targetLinks.isEmpty(), !isNull);
    }
}

TEST_F(LedgerOfCopies, KeepsEveryCharacterOfNames)
{
    const QChar high(0xD83D);
    const QChar low(0xDE00);
    const QMap<QString, QString> names{
        {u"spaces and quotation marks"_s, u" a 'b' \"c\" ;--"_s},
        {u"patterns"_s, u"100%_[a-z]*?"_s},
        {u"control characters"_s, u"a\nb\tc\x1B[31m\x7F"_s},
        {u"precomposed"_s, u"\u00E4"_s},
        {u"decomposed"_s, u"a\u0308"_s},
        {u"right to left"_s, u"\u202E\u05D0"_s},
        {u"beyond the basic plane"_s, u"\U0001F600\U00020BB7"_s},
        {u"last of the basic plane"_s, u"\uD7FF\uE000\uFFFD\uFFFF"_s},
        {u"last of all"_s, u"\U0010FFFF"_s},
        {u"first half alone"_s, u"a"_s + high + u"b"_s},
        {u"second half alone"_s, u"a"_s + low},
        {u"halves the wrong way round"_s, QString(low) + high},
        {u"half before a pair"_s, QString(high) + high + low},
        {u"half before a Korean letter"_s, high + u"\uD7A3"_s},
        {u"half at the end"_s, u"\U0001F600"_s + high},
        {u"byte order mark"_s, u"\uFEFFa"_s},
        {u"byte order marks"_s, u"\uFEFF\uFEFF"_s},
        {u"byte order mark after a half"_s, high + u"\uFEFF"_s},
    };
    Records written;
    for (const QString& name : names) {
        CopyRecord record = RecordOf(u"/cloud/"_s + name);
        record.project = u"/cloud/"_s + name;
        record.readers = name;
        record.sourceLinks[0].Path = record.sourceLinks[0].RefId = name;
        record.linkedTargets[0] = name;
        written.append(record);
    }
    const auto ledger = Open();
    ASSERT_TRUE(ledger->Write(written));

    QMap<QString, CopyRecord> read;
    for (const CopyRecord& record : Read())
        read.insert(record.target, record);
    EXPECT_EQ(read.size(), names.size()) << "two names are one";
    for (const CopyRecord& record : written)
        EXPECT_EQ(read.value(record.target), record) << names.key(record.readers).toStdString();
    for (const QString& name : names)
        EXPECT_TRUE(ledger->Remove({u"/cloud/"_s + name}));
    EXPECT_TRUE(Read().isEmpty());
}

TEST_F(LedgerOfCopies, HasOneRecordForATarget)
{
    Records first{RecordOf(u"/cloud/a"_s, 1), RecordOf(u"/cloud/b"_s, 2)};
    const auto ledger = Open();
    ASSERT_TRUE(ledger->Write(first));
    Records second{RecordOf(u"/cloud/c"_s, 3), RecordOf(u"/cloud/a"_s, 4)};
    CopyRecord& again = second[1];
    again.id = 4711;
    again.project = u"/cloud/other"_s;
    again.source = u"/elsewhere/a"_s;
    again.recordedAt += 1;
    again.sourceLinks.removeLast();
    again.targetLinks.removeFirst();
    again.linkedTargets.clear();
    again.linksState = LinksState::Failed;
    again.readers = u"Three 3.0"_s;
    again.isRewritePending = again.isMoved = true;
    ASSERT_TRUE(ledger->Write(second));

    EXPECT_EQ(second[1].id, first[0].id);
    EXPECT_EQ(ledger->ReadAll(u"/cloud"_s), (Records{second[1], first[1], second[0]}));
    EXPECT_EQ(Ask("SELECT source_key FROM ledger_copies WHERE target = '/cloud/a'"),
              "/elsewhere/a");
}

TEST_F(LedgerOfCopies, TakesTheLastOfTwoRecordsForATarget)
{
    Records records{RecordOf(u"/cloud/a"_s, 1), RecordOf(u"/cloud/a"_s, 2)};
    const auto ledger = Open();
    ASSERT_TRUE(ledger->Write(records));
    EXPECT_EQ(records[0].id, records[1].id);
    EXPECT_EQ(Read(), Records{records[1]});
}

TEST_F(LedgerOfCopies, HasSeveralRecordsForASource)
{
    Records records{RecordOf(u"/cloud/M1/a"_s), RecordOf(u"/cloud/M2/a"_s)};
    records[0].source = records[1].source = u"/work/a"_s;
    records[0].project = u"/cloud/M1"_s;
    records[1].project = u"/cloud/M2"_s;
    ASSERT_TRUE(Open()->Write(records));
    EXPECT_EQ(Read(), records);
}

TEST_F(LedgerOfCopies, CountsLetterCaseInTargetsAsTheSystemDoes)
{
    Write({RecordOf(u"/Cloud/A.prt"_s), RecordOf(u"/cloud/a.prt"_s)});
    if (Base::IgnoresLetterCase()) {
        EXPECT_EQ(Targets(u"/CLOUD"_s), QStringList{u"/cloud/a.prt"_s});
        EXPECT_TRUE(Open()->Remove({u"/CLOUD/A.PRT"_s}));
        EXPECT_EQ(Targets(u"/cloud"_s), QStringList());
    } else {
        EXPECT_EQ(Targets(u"/CLOUD"_s), QStringList());
        EXPECT_TRUE(Open()->Remove({u"/CLOUD/A.PRT"_s, u"/Cloud/A.prt"_s}));
        EXPECT_EQ(Targets(u"/cloud"_s), QStringList{u"/cloud/a.prt"_s});
    }
}

TEST_F(LedgerOfCopies, ReadsWhatLiesBelowTheFolderAndNothingElse)
{
    Write({RecordOf(u"/cloud/a"_s), RecordOf(u"/cloud/sub/b"_s), RecordOf(u"/cloud"_s),
           RecordOf(u"/cloud2/c"_s), RecordOf(u"/cloud-old/d"_s), RecordOf(u"/clou/e"_s),
           RecordOf(u"/cloud.x"_s), RecordOf(u"/other/cloud/f"_s)});
    const QStringList inCloud{u"/cloud/a"_s, u"/cloud/sub/b"_s};
    EXPECT_EQ(Targets(u"/cloud"_s), inCloud);
    EXPECT_EQ(Targets(u"/cloud/"_s), inCloud);
    EXPECT_EQ(Targets(u"/cloud/sub"_s), QStringList{u"/cloud/sub/b"_s});
    EXPECT_EQ(Targets(u"/nowhere"_s), QStringList());
    EXPECT_EQ(Targets(u"/"_s).size(), 8);
    EXPECT_EQ(Targets(QString()), QStringList());
}

TEST_F(LedgerOfCopies, KeepsUsersApart)
{
    Records theirs{RecordOf(u"/cloud/a"_s, 8)};
    Records mine{RecordOf(u"/cloud/a"_s, 7)};
    ASSERT_TRUE(Open(false, 8)->Write(theirs));
    ASSERT_TRUE(Open(false, 7)->Write(mine));
    EXPECT_NE(theirs[0].id, mine[0].id);
    EXPECT_EQ(Open(true, 8)->ReadAll(u"/cloud"_s), theirs);
    EXPECT_TRUE(Open(false, 8)->Remove({u"/cloud/a"_s}));
    EXPECT_EQ(Open(true, 7)->ReadAll(u"/cloud"_s), mine);
    EXPECT_TRUE(Open(true, 8)->ReadAll(u"/cloud"_s).isEmpty());
}

TEST_F(LedgerOfCopies, ForgetsTargets)
{
    Write({RecordOf(u"/cloud/a"_s), RecordOf(u"/cloud/b"_s), RecordOf(u"/cloud/c"_s)});
    const auto ledger = Open();
    EXPECT_TRUE(ledger->Remove({u"/cloud/c"_s, u"/cloud/never"_s, u"/cloud/a"_s, QString()}));
    EXPECT_EQ(Targets(u"/cloud"_s), QStringList{u"/cloud/b"_s});
    EXPECT_TRUE(ledger->Remove({}));
    EXPECT_EQ(ledger->Error(), QString());
}

TEST_F(LedgerOfCopies, NotesThatACopyIsLinkedNoMoreUnlessItWasAskedForByItself)
{
    CopyRecord selected = RecordOf(u"/cloud/a"_s);
    selected.origin = CopyOrigin::Selected;
    Write({selected, RecordOf(u"/cloud/b"_s), RecordOf(u"/cloud/c"_s)});
    EXPECT_TRUE(Open()->NoteLinkedNoMore({u"/cloud/a"_s, u"/cloud/b"_s, u"/cloud/none"_s}));
    const Records records = Read();
    ASSERT_EQ(records.size(), 3);
    EXPECT_EQ(records[0].origin, CopyOrigin::Selected);
    EXPECT_EQ(records[1].origin, CopyOrigin::LinkedNoMore);
    EXPECT_EQ(records[2].origin, CopyOrigin::Linked);
    Change("UPDATE ledger_copies SET origin = 9");
    EXPECT_EQ(Read()[1].origin, CopyOrigin::Selected) << "what is not known is left alone";
}

TEST_F(LedgerOfCopies, WritesAllRecordsOrNone)
{
    const Records before{RecordOf(u"/cloud/a"_s, 1)};
    Write(before);
    const auto ledger = Open();
    Records records{RecordOf(u"/cloud/a"_s, 2), RecordOf(u"/cloud/b"_s), RecordOf(QString())};
    EXPECT_FALSE(ledger->Write(records));
    EXPECT_EQ(
        ledger->Error(),
        u"Writing the records of copies failed on sync database %1: A record has no target."_s.arg(
            settings.databaseFile));
    for (const CopyRecord& record : records)
        EXPECT_EQ(record.id, -1);
    EXPECT_EQ(Targets(u"/"_s), QStringList{u"/cloud/a"_s});
    EXPECT_EQ(Read().value(0).sourceStamp, before[0].sourceStamp);
    records.removeLast();
    EXPECT_TRUE(ledger->Write(records)) << "a failure stands in nobody's way";
    EXPECT_EQ(Read(), records);
}

TEST_F(LedgerOfCopies, TakesLinksInAStateThatItDoesNotKnowForUnread)
{
    Write({RecordOf(u"/cloud/a"_s)});
    Change("UPDATE ledger_copies SET links_state = 3");
    EXPECT_EQ(Read().value(0).linksState, LinksState::Failed);
}

TEST_F(LedgerOfCopies, StoresLinksCompactly)
{
    Write({RecordOf(u"/cloud/a"_s)});
    EXPECT_LT(std::stoi(Ask("SELECT length(source_links) FROM ledger_copies")), 48);
}

} // namespace Halvern::Test
