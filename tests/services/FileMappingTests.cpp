// SPDX-License-Identifier: Apache-2.0

#include "FileTree.h"

#include "syncservices/FileMapping.h"

#include <gtest/gtest.h>

using namespace Halvern::SyncServices;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

namespace {

using Flag = FileMapping::FileMappingFlag;

FileLink Link(const QString& path)
{
    return {3, u"r"_s, path, u"id"_s};
}

QStringList LinkPaths(const FileMapping& mapping)
{
    QStringList paths;
    for (const FileLink& link : mapping.GetSourceFileLinks())
        paths.append(link.Path);
    return paths;
}

struct Record : testing::Test
{
    FileMapping mapping{u"/s/a.asm"_s, QString(), 7};
};

} // namespace

TEST_F(Record, ANewMappingHasNoFlagsDatesOrLinks)
{
    EXPECT_EQ(mapping.GetFlag(), FileMapping::NoFlag);
    EXPECT_EQ(mapping.GetFlagName(), QString());
    EXPECT_EQ(mapping.GetSourceFile(), u"/s/a.asm"_s);
    EXPECT_FALSE(mapping.HasTargetFile());
    EXPECT_EQ(mapping.GetAuthenticationId(), 7);
    EXPECT_FALSE(mapping.GetSourceFileLastModified().isValid());
    EXPECT_FALSE(mapping.GetCopyDate().isValid());
    EXPECT_EQ(mapping.GetTargetFileSize(), -1);
    EXPECT_TRUE(mapping.GetSourceFileLinks().isEmpty());
    EXPECT_EQ(mapping.GetFileSet(), nullptr);
}

TEST_F(Record, SeveralFlagsAreSetAndClearedTogether)
{
    mapping.SetFlag(FileMapping::Selected | FileMapping::Folder | FileMapping::NoCopy, true);
    EXPECT_EQ(mapping.GetFlag(), static_cast<Flag>(0x83));
    mapping.SetFlag(FileMapping::Selected | FileMapping::Copied, false);
    EXPECT_EQ(mapping.GetFlag(), FileMapping::Folder | FileMapping::NoCopy);
    mapping.SetFlagAll(FileMapping::Repathed);
    EXPECT_EQ(mapping.GetFlag(), FileMapping::Repathed);
}

TEST_F(Record, HasFlagAsksForAllBitsAndHasFlagAnyForOne)
{
    const Flag both = FileMapping::Selected | FileMapping::NoCopy;
    mapping.SetFlag(FileMapping::Selected, true);
    EXPECT_FALSE(mapping.HasFlag(both));
    EXPECT_TRUE(mapping.HasFlagAny(both));
    mapping.SetFlag(FileMapping::NoCopy, true);
    EXPECT_TRUE(mapping.HasFlag(both));
    mapping.SetFlagAll(FileMapping::Copied);
    EXPECT_FALSE(mapping.HasFlagAny(both));
}

TEST_F(Record, FlagNamesStandInOrderOfTheirValues)
{
    mapping.SetFlagAll(FileMapping::FileLinksNotSupported | FileMapping::Copied |
                       FileMapping::Selected);
    EXPECT_EQ(mapping.GetFlagName(), u"Selected, Copied, FileLinksNotSupported"_s);
    mapping.SetFlagAll(static_cast<Flag>(0x3FFFF));
    EXPECT_EQ(mapping.GetFlagName().count(u','), 17);
}

TEST_F(Record, ATargetThatIsSetIsReplacedOnlyWhenAskedTo)
{
    EXPECT_TRUE(mapping.SetTargetFile(u"/t/a"_s, false));
    EXPECT_FALSE(mapping.SetTargetFile(u"/t/b"_s, false));
    EXPECT_EQ(mapping.GetTargetFile(), u"/t/a"_s);
    EXPECT_TRUE(mapping.SetTargetFile(u"/t/b"_s, true));
    EXPECT_EQ(mapping.GetTargetFile(), u"/t/b"_s);
    EXPECT_TRUE(mapping.SetTargetFile(QString(), true));
    EXPECT_FALSE(mapping.HasTargetFile());
}

TEST_F(Record, ARevisionCountsChangesOfItsPathOnly)
{
    const quint64 source = FileMapping::GetSourcePathRevision();
    const quint64 target = FileMapping::GetTargetPathRevision();
    mapping.SetSourceFile(u"/s/a.asm"_s);
    mapping.SetTargetFile(QString(), true);
    EXPECT_EQ(FileMapping::GetSourcePathRevision(), source);
    EXPECT_EQ(FileMapping::GetTargetPathRevision(), target);
    mapping.SetSourceFile(u"/s/A.asm"_s);
    EXPECT_EQ(FileMapping::GetSourcePathRevision(), source + 1);
    EXPECT_EQ(FileMapping::GetTargetPathRevision(), target);
    mapping.SetTargetFile(u"/t/a"_s, false);
    mapping.SetTargetFile(u"/t/b"_s, false);
    EXPECT_EQ(FileMapping::GetTargetPathRevision(), target + 1);
    FileMapping other(u"/s/b"_s, u"/t/c"_s, 7);
    mapping.CopyFrom(&other, false, true);
    EXPECT_EQ(FileMapping::GetTargetPathRevision(), target + 2);
    EXPECT_EQ(FileMapping::GetSourcePathRevision(), source + 1);
}

namespace {

struct CopyFrom : testing::Test
{
    CopyFrom()
    {
        other.SetFlagAll(FileMapping::Copied);
        other.SetSourceFileProperties(date, 10);
        other.SetTargetFileProperties(date.addSecs(1), 11);
        other.SetCopyDate(date.addSecs(2));
        other.SetSourceFileLinks({Link(u"x"_s)});
        other.SetSourceFileLinksExtractedAtFileDate(date.addSecs(3));
        other.SetTargetFileLinks({Link(u"y"_s)});
        other.SetTargetFileLinksExtractedAtFileDate(date.addSecs(4));
        mapping.SetSourceFileLinks({Link(u"own"_s)});
    }

    const QDateTime date = QDateTime::fromSecsSinceEpoch(1700000000, Qt::UTC);
    FileMapping other{u"/o/s"_s, u"/o/t"_s, 9};
    FileMapping mapping{u"/s"_s, u"/t"_s, 7};
};

} // namespace

TEST_F(CopyFrom, TakesTargetDatesFlagsAndLinksButNotTheSource)
{
    mapping.CopyFrom(&other, false, false);
    EXPECT_EQ(mapping.GetSourceFile(), u"/s"_s);
    EXPECT_EQ(mapping.GetAuthenticationId(), 7);
    EXPECT_EQ(mapping.GetTargetFile(), u"/o/t"_s);
    EXPECT_EQ(mapping.GetFlag(), FileMapping::Copied);
    EXPECT_EQ(mapping.GetSourceFileLastModified(), date);
    EXPECT_EQ(mapping.GetSourceFileSize(), 10);
    EXPECT_EQ(mapping.GetTargetFileLastModified(), date.addSecs(1));
    EXPECT_EQ(mapping.GetTargetFileSize(), 11);
    EXPECT_EQ(mapping.GetCopyDate(), date.addSecs(2));
    EXPECT_EQ(mapping.GetSourceFileLinks(), other.GetSourceFileLinks());
    EXPECT_EQ(mapping.GetSourceFileLinksExtractedAtFileDate(), date.addSecs(3));
    EXPECT_EQ(mapping.GetTargetFileLinks(), other.GetTargetFileLinks());
    EXPECT_EQ(mapping.GetTargetFileLinksExtractedAtFileDate(), date.addSecs(4));
}

TEST_F(CopyFrom, KeepsTheTargetWhenToldTo)
{
    mapping.CopyFrom(&other, true, false);
    EXPECT_EQ(mapping.GetTargetFile(), u"/t"_s);
    EXPECT_EQ(mapping.GetSourceFileLinks(), other.GetSourceFileLinks());
}

TEST_F(CopyFrom, KeepsLinksAndTheirDatesWhenToldTo)
{
    mapping.CopyFrom(&other, false, true);
    EXPECT_EQ(LinkPaths(mapping), QStringList(u"own"_s));
    EXPECT_FALSE(mapping.GetSourceFileLinksExtractedAtFileDate().isValid());
    EXPECT_TRUE(mapping.GetTargetFileLinks().isEmpty());
    EXPECT_EQ(mapping.GetTargetFile(), u"/o/t"_s);
    EXPECT_EQ(mapping.GetCopyDate(), date.addSecs(2));
}

TEST_F(CopyFrom, NothingFromNull)
{
    mapping.CopyFrom(nullptr, false, false);
    EXPECT_EQ(mapping.GetTargetFile(), u"/t"_s);
    EXPECT_EQ(LinkPaths(mapping), QStringList(u"own"_s));
}

namespace {

struct LinkCase
{
    const char* name;
    const char* link;
    const char* from;
    bool matches;
};

void PrintTo(const LinkCase& row, std::ostream* out)
{
    *out << row.name;
}

struct ChangeSourceFileLink : testing::TestWithParam<LinkCase>
{};

} // namespace

TEST_P(ChangeSourceFileLink, FindsLinksThatNameThePath)
{
    FileMapping mapping(u"/s/p/a.asm"_s, QString(), 7);
    mapping.SetSourceFileLinks({Link(u"other.prt"_s), Link(QString::fromUtf8(GetParam().link))});
    const bool found = mapping.ChangeSourceFileLink(QString::fromUtf8(GetParam().from), u"new"_s);
    EXPECT_EQ(found, GetParam().matches);
    EXPECT_EQ(LinkPaths(mapping),
              QStringList({u"other.prt"_s,
                           QString::fromUtf8(GetParam().matches ? "new" : GetParam().link)}));
    EXPECT_EQ(mapping.GetSourceFileLinks().at(1).RefId, u"r"_s);
}

INSTANTIATE_TEST_SUITE_P(
    Table, ChangeSourceFileLink,
    testing::Values(LinkCase{"AsWritten", "lib/c.prt", "lib/c.prt", true},
                    LinkCase{"RelativeLinkByItsAbsolutePath", "lib/c.prt", "/s/p/lib/c.prt", true},
                    LinkCase{"LinkThroughTheFolderAbove", "../c.prt", "/s/c.prt", true},
                    LinkCase{"UncleanLink", "./lib/../c.prt", "/s/p/c.prt", true},
                    LinkCase{"UncleanPath", "c.prt", "/s/x/../p/c.prt", true},
                    LinkCase{"AbsoluteLink", "/z/c.prt", "/z/c.prt", true},
                    LinkCase{"OtherLetterCase", "Lib/C.PRT", "/S/p/lib/c.prt", true},
                    LinkCase{"LetterCaseBeyondAscii", "lib/Gehäuse.prt", "/s/p/lib/GEHÄUSE.prt",
                             true},
                    LinkCase{"LinkToAFolder", "lib/.", "/s/p/lib", true},
                    LinkCase{"UrlAsWritten", "https://h/c.prt", "https://h/c.prt", true},
                    LinkCase{"SameNameElsewhere", "lib/c.prt", "/s/p/c.prt", false},
                    LinkCase{"SameEnd", "lib/xc.prt", "/s/p/lib/c.prt", false},
                    LinkCase{"EmptyPath", "", "", false}),
    [](const auto& row) { return row.param.name; });

TEST(ChangeSourceFileLinkOfAll, EveryLinkThatNamesThePathIsChanged)
{
    FileMapping mapping(u"/s/a.asm"_s, QString(), 7);
    mapping.SetSourceFileLinks({Link(u"c.prt"_s), Link(u"b.prt"_s), Link(u"/s/c.prt"_s)});
    EXPECT_TRUE(mapping.ChangeSourceFileLink(u"/s/c.prt"_s, u"/z/d.prt"_s));
    EXPECT_EQ(LinkPaths(mapping), QStringList({u"/z/d.prt"_s, u"b.prt"_s, u"/z/d.prt"_s}));
}
