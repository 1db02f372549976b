// SPDX-License-Identifier: Apache-2.0

#include "FileTree.h"

#include "syncservices/FileMapping.h"

#include <gtest/gtest.h>

using namespace Halvern::SyncServices;
using namespace Halvern::Test;

namespace {

using Flag = FileMapping::FileMappingFlag;

FileLink Link(const QString& path)
{
    return {3, QStringLiteral("r"), path, QStringLiteral("id")};
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
    FileMapping mapping{QStringLiteral("/s/a.asm"), QString(), 7};
};

} // namespace

TEST_F(Record, ANewMappingHasNoFlagsDatesOrLinks)
{
    EXPECT_EQ(mapping.GetFlag(), FileMapping::NoFlag);
    EXPECT_EQ(mapping.GetFlagName(), QString());
    EXPECT_EQ(mapping.GetSourceFile(), QStringLiteral("/s/a.asm"));
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
    EXPECT_EQ(mapping.GetFlagName(), QStringLiteral("Selected, Copied, FileLinksNotSupported"));
    mapping.SetFlagAll(static_cast<Flag>(0x3FFFF));
    EXPECT_EQ(mapping.GetFlagName().count(u','), 17);
}

TEST_F(Record, ATargetThatIsSetIsReplacedOnlyWhenAskedTo)
{
    EXPECT_TRUE(mapping.SetTargetFile(QStringLiteral("/t/a"), false));
    EXPECT_FALSE(mapping.SetTargetFile(QStringLiteral("/t/b"), false));
    EXPECT_EQ(mapping.GetTargetFile(), QStringLiteral("/t/a"));
    EXPECT_TRUE(mapping.SetTargetFile(QStringLiteral("/t/b"), true));
    EXPECT_EQ(mapping.GetTargetFile(), QStringLiteral("/t/b"));
    EXPECT_TRUE(mapping.SetTargetFile(QString(), true));
    EXPECT_FALSE(mapping.HasTargetFile());
}

TEST_F(Record, ARevisionCountsChangesOfItsPathOnly)
{
    const quint64 source = FileMapping::GetSourcePathRevision();
    const quint64 target = FileMapping::GetTargetPathRevision();
    mapping.SetSourceFile(QStringLiteral("/s/a.asm"));
    mapping.SetTargetFile(QString(), true);
    EXPECT_EQ(FileMapping::GetSourcePathRevision(), source);
    EXPECT_EQ(FileMapping::GetTargetPathRevision(), target);
    mapping.SetSourceFile(QStringLiteral("/s/A.asm"));
    EXPECT_EQ(FileMapping::GetSourcePathRevision(), source + 1);
    EXPECT_EQ(FileMapping::GetTargetPathRevision(), target);
    mapping.SetTargetFile(QStringLiteral("/t/a"), false);
    mapping.SetTargetFile(QStringLiteral("/t/b"), false);
    EXPECT_EQ(FileMapping::GetTargetPathRevision(), target + 1);
    FileMapping other(QStringLiteral("/s/b"), QStringLiteral("/t/c"), 7);
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
        other.SetSourceFileLinks({Link(QStringLiteral("x"))});
        other.SetSourceFileLinksExtractedAtFileDate(date.addSecs(3));
        other.SetTargetFileLinks({Link(QStringLiteral("y"))});
        other.SetTargetFileLinksExtractedAtFileDate(date.addSecs(4));
        mapping.SetSourceFileLinks({Link(QStringLiteral("own"))});
    }

    const QDateTime date = QDateTime::fromSecsSinceEpoch(1700000000, Qt::UTC);
    FileMapping other{QStringLiteral("/o/s"), QStringLiteral("/o/t"), 9};
    FileMapping mapping{QStringLiteral("/s"), QStringLiteral("/t"), 7};
};

} // namespace

TEST_F(CopyFrom, TakesTargetDatesFlagsAndLinksButNotTheSource)
{
    mapping.CopyFrom(&other, false, false);
    EXPECT_EQ(mapping.GetSourceFile(), QStringLiteral("/s"));
    EXPECT_EQ(mapping.GetAuthenticationId(), 7);
    EXPECT_EQ(mapping.GetTargetFile(), QStringLiteral("/o/t"));
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
    EXPECT_EQ(mapping.GetTargetFile(), QStringLiteral("/t"));
    EXPECT_EQ(mapping.GetSourceFileLinks(), other.GetSourceFileLinks());
}

TEST_F(CopyFrom, KeepsLinksAndTheirDatesWhenToldTo)
{
    mapping.CopyFrom(&other, false, true);
    EXPECT_EQ(LinkPaths(mapping), QStringList(QStringLiteral("own")));
    EXPECT_FALSE(mapping.GetSourceFileLinksExtractedAtFileDate().isValid());
    EXPECT_TRUE(mapping.GetTargetFileLinks().isEmpty());
    EXPECT_EQ(mapping.GetTargetFile(), QStringLiteral("/o/t"));
    EXPECT_EQ(mapping.GetCopyDate(), date.addSecs(2));
}

TEST_F(CopyFrom, NothingFromNull)
{
    mapping.CopyFrom(nullptr, false, false);
    EXPECT_EQ(mapping.GetTargetFile(), QStringLiteral("/t"));
    EXPECT_EQ(LinkPaths(mapping), QStringList(QStringLiteral("own")));
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
    FileMapping mapping(QStringLiteral("/s/p/a.asm"), QString(), 7);
    mapping.SetSourceFileLinks(
        {Link(QStringLiteral("other.prt")), Link(QString::fromUtf8(GetParam().link))});
    const bool found =
        mapping.ChangeSourceFileLink(QString::fromUtf8(GetParam().from), QStringLiteral("new"));
    EXPECT_EQ(found, GetParam().matches);
    EXPECT_EQ(LinkPaths(mapping),
              QStringList({QStringLiteral("other.prt"),
                           QString::fromUtf8(GetParam().matches ? "new" : GetParam().link)}));
    EXPECT_EQ(mapping.GetSourceFileLinks().at(1).RefId, QStringLiteral("r"));
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
    FileMapping mapping(QStringLiteral("/s/a.asm"), QString(), 7);
    mapping.SetSourceFileLinks({Link(QStringLiteral("c.prt")), Link(QStringLiteral("b.prt")),
                                Link(QStringLiteral("/s/c.prt"))});
    EXPECT_TRUE(
        mapping.ChangeSourceFileLink(QStringLiteral("/s/c.prt"), QStringLiteral("/z/d.prt")));
    EXPECT_EQ(LinkPaths(mapping), QStringList({QStringLiteral("/z/d.prt"), QStringLiteral("b.prt"),
                                               QStringLiteral("/z/d.prt")}));
}
