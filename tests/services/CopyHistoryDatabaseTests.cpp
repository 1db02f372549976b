// SPDX-License-Identifier: Apache-2.0

#include "DatabaseFixture.h"

using namespace Halvern::SyncServices;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

namespace {

struct CopyHistoryRows : DatabaseFixture
{
    static MappingPointer Copy(const QString& source, const QString& target, int user = 7)
    {
        return std::make_shared<FileMapping>(source, target, user);
    }

    QList<MappingPointer> Read(int user = 7) const
    {
        return Database().GetFileCopyHistoryByAuthenticationId(user);
    }

    static QStringList Pairs(const QList<MappingPointer>& history)
    {
        QStringList pairs;
        for (const MappingPointer& entry : history)
            pairs.append(entry->GetSourceFile() + u" > "_s + entry->GetTargetFile());
        return pairs;
    }

    const QDateTime date = QDateTime::fromMSecsSinceEpoch(1700000000123, Qt::UTC);
};

} // namespace

TEST_F(CopyHistoryRows, AnEntryComesBackWithDatesAndLinksAndWithoutFlags)
{
    const MappingPointer copy = Copy(u"/s/Schön.asm"_s, Cloud(u"Schön.asm"_s));
    const QList<FileLink> source{{-1, u"1"_s, u"b"_s, QString()}, {4, u"2"_s, u"a"_s, u"id"_s}};
    const QList<FileLink> target{{4, u"1"_s, u"lib/b"_s, u"id"_s}};
    copy->SetFlagAll(FileMapping::Copied | FileMapping::Selected);
    copy->SetSourceFileProperties(date, 100);
    copy->SetTargetFileProperties(date.addSecs(1), qint64(1) << 40);
    copy->SetCopyDate(date.addSecs(2).toLocalTime());
    copy->SetSourceFileLinksExtractedAtFileDate(date.addSecs(3));
    copy->SetTargetFileLinksExtractedAtFileDate(date.addSecs(4));
    copy->SetSourceFileLinks(source);
    copy->SetTargetFileLinks(target);
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({copy}, {}));

    Restart();
    const QList<MappingPointer> history = Read();
    ASSERT_EQ(history.size(), 1);
    const FileMapping& found = *history.first();
    EXPECT_EQ(found.GetSourceFile(), u"/s/Schön.asm"_s);
    EXPECT_EQ(found.GetTargetFile(), Cloud(u"Schön.asm"_s));
    EXPECT_EQ(found.GetAuthenticationId(), 7);
    EXPECT_EQ(found.GetFlag(), FileMapping::NoFlag);
    EXPECT_EQ(found.GetSourceFileLastModified(), date);
    EXPECT_EQ(found.GetSourceFileSize(), 100);
    EXPECT_EQ(found.GetTargetFileLastModified(), date.addSecs(1));
    EXPECT_EQ(found.GetTargetFileSize(), qint64(1) << 40);
    EXPECT_EQ(found.GetCopyDate(), date.addSecs(2));
    EXPECT_EQ(found.GetSourceFileLinksExtractedAtFileDate(), date.addSecs(3));
    EXPECT_EQ(found.GetTargetFileLinksExtractedAtFileDate(), date.addSecs(4));
    EXPECT_EQ(found.GetSourceFileLinks(), source);
    EXPECT_EQ(found.GetTargetFileLinks(), target);
}

TEST_F(CopyHistoryRows, UnknownDatesAndSizesStayUnknown)
{
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({Copy(u"/s/a"_s, QString())}, {}));
    const QList<MappingPointer> history = Read();
    ASSERT_EQ(history.size(), 1);
    EXPECT_FALSE(history.first()->HasTargetFile());
    EXPECT_FALSE(history.first()->GetSourceFileLastModified().isValid());
    EXPECT_FALSE(history.first()->GetCopyDate().isValid());
    EXPECT_FALSE(history.first()->GetTargetFileLinksExtractedAtFileDate().isValid());
    EXPECT_EQ(history.first()->GetSourceFileSize(), -1);
    EXPECT_TRUE(history.first()->GetSourceFileLinks().isEmpty());
}

TEST_F(CopyHistoryRows, ThereIsOneRowPerUserAndSourceInAnyLetterCase)
{
    const MappingPointer first = Copy(u"/s/Ä.prt"_s, u"/c/1"_s);
    first->SetSourceFileLinks({{-1, u"1"_s, u"x"_s, QString()}});
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory(
        {first, Copy(u"/s/b"_s, u"/c/b"_s), Copy(u"/s/Ä.prt"_s, u"/c/8"_s, 8)}, {}));
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({Copy(u"/S/ä.PRT"_s, u"/c/2"_s)}, {}));
    EXPECT_EQ(Pairs(Read()), QStringList({u"/S/ä.PRT > /c/2"_s, u"/s/b > /c/b"_s}));
    EXPECT_TRUE(Read().first()->GetSourceFileLinks().isEmpty()) << "the links of the first copy";
    EXPECT_EQ(Pairs(Read(8)), QStringList(u"/s/Ä.prt > /c/8"_s));
    EXPECT_TRUE(Read(9).isEmpty());
}

TEST_F(CopyHistoryRows, AnUpdateOfASourceWithoutRowMakesOne)
{
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory(
        {Copy(u"/s/a"_s, u"/c/1"_s)},
        {Copy(u"/s/a"_s, u"/c/2"_s), nullptr, Copy(u"/s/b"_s, u"/c/b"_s)}));
    EXPECT_EQ(Pairs(Read()), QStringList({u"/s/a > /c/2"_s, u"/s/b > /c/b"_s}));
    EXPECT_TRUE(Database().AddAndUpdateFileCopyHistory({}, {}));
}

TEST_F(CopyHistoryRows, AFailureInTheMiddleWritesNothing)
{
    {
        SQLite::Database raw(settings.databaseFile.toStdString(), SQLite::OPEN_READWRITE, 10000);
        raw.exec("CREATE TRIGGER refuse BEFORE INSERT ON copy_history_links "
                 "WHEN NEW.path = 'refused' BEGIN SELECT raise(ABORT, 'refused'); END");
    }
    const MappingPointer bad = Copy(u"/s/b"_s, u"/c/b"_s);
    bad->SetTargetFileLinks({{-1, u"1"_s, u"refused"_s, QString()}});
    EXPECT_FALSE(Database().AddAndUpdateFileCopyHistory(
        {Copy(u"/s/a"_s, u"/c/a"_s), bad, Copy(u"/s/c"_s, u"/c/c"_s)}, {}));
    EXPECT_EQ(Database().GetLastError(),
              u"AddAndUpdateFileCopyHistory failed on sync database %1: refused"_s.arg(
                  settings.databaseFile));
    EXPECT_TRUE(Read().isEmpty());
    EXPECT_TRUE(Database().AddAndUpdateFileCopyHistory({Copy(u"/s/a"_s, u"/c/a"_s)}, {}));
    EXPECT_EQ(Read().size(), 1);
}

TEST_F(CopyHistoryRows, DeletingForgetsOneUserWithAllLinks)
{
    const MappingPointer mine = Copy(u"/s/a"_s, u"/c/a"_s);
    mine->SetSourceFileLinks({{-1, u"1"_s, u"x"_s, QString()}});
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({mine, Copy(u"/s/a"_s, u"/c/a"_s, 8)}, {}));
    EXPECT_TRUE(Database().DeleteAllFileCopyHistory(7));
    EXPECT_TRUE(Read(7).isEmpty());
    EXPECT_EQ(Read(8).size(), 1);
    EXPECT_EQ(Count("copy_history_links"), 0);
    EXPECT_TRUE(Database().DeleteAllFileCopyHistory(7));
}

TEST_F(CopyHistoryRows, ALongHistoryComesBackInOrderWithTheRightLinks)
{
    QList<MappingPointer> copies;
    for (int i = 0; i < 2000; ++i) {
        copies.append(Copy(u"/s/%1"_s.arg(i), u"/c/%1"_s.arg(i)));
        copies.last()->SetSourceFileLinks({{i, QString::number(i), u"s"_s, QString()}});
        copies.last()->SetTargetFileLinks({{-i, QString::number(i), u"t"_s, QString()},
                                           {-i, QString::number(i), u"t2"_s, QString()}});
    }
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory(copies, {}));
    const QList<MappingPointer> history = Read();
    ASSERT_EQ(Pairs(history), Pairs(copies));
    for (int i = 0; i < history.size(); ++i) {
        ASSERT_EQ(history.at(i)->GetSourceFileLinks(), copies.at(i)->GetSourceFileLinks());
        ASSERT_EQ(history.at(i)->GetTargetFileLinks(), copies.at(i)->GetTargetFileLinks());
    }
}
