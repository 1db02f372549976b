// What the importer does while another program has a file open, for each way to share it.

#include "HeldFile.h"
#include "ReplacingFixture.h"

#include <gmock/gmock.h>

namespace Halvern::Test {

namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

using Sharing = ReplacingFixture;

struct Share
{
    const char* name;
    const char* letters;
    bool works;
};

void PrintTo(const Share& share, std::ostream* out)
{
    *out << share.name;
}

std::string NameOf(const ::testing::TestParamInfo<Share>& info)
{
    return info.param.name;
}

QString Letters(const Share& share)
{
    return QString::fromLatin1(share.letters);
}

} // namespace

class HeldSource : public Sharing, public ::testing::WithParamInterface<Share>
{};

TEST_P(HeldSource, IsCopiedOnlyWhileItsHolderSharesReading)
{
    tree.File(QStringLiteral("src/a.dat"), "new");
    const HeldFile held(Source(QStringLiteral("a.dat")), QStringLiteral("r"), Letters(GetParam()));

    Import({Source(QStringLiteral("a.dat"))});

    EXPECT_EQ(tree.Exists(QStringLiteral("cloud/a.dat")), GetParam().works);
    EXPECT_EQ(Errors().isEmpty(), GetParam().works);
    if (!GetParam().works) {
        ASSERT_FALSE(Errors().isEmpty());
        EXPECT_THAT(Errors().first().toStdString(),
                    HasSubstr("Failed to copy file src/a.dat to cloud/a.dat. Error: "));
    }
}

INSTANTIATE_TEST_SUITE_P(EachShareMode, HeldSource,
                         ::testing::Values(Share{"None", "-", false}, Share{"Read", "r", true},
                                           Share{"Write", "w", false}, Share{"Delete", "d", false},
                                           Share{"ReadWrite", "rw", true},
                                           Share{"ReadWriteDelete", "rwd", true}),
                         NameOf);

class HeldTarget : public Sharing, public ::testing::WithParamInterface<Share>
{};

TEST_P(HeldTarget, IsReplacedOnlyWhileItsHolderSharesDeletion)
{
    tree.File(QStringLiteral("src/a.dat"), "new").File(QStringLiteral("cloud/a.dat"), "old");
    {
        const HeldFile held(Cloud(QStringLiteral("a.dat")), QStringLiteral("r"),
                            Letters(GetParam()));
        EXPECT_EQ(Replace(), GetParam().works);
    }
    EXPECT_EQ(tree.Read(QStringLiteral("cloud/a.dat")), GetParam().works ? "new" : "old");
    EXPECT_FALSE(tree.Exists(QStringLiteral("cloud/a.dat.tmp")));
    EXPECT_EQ(Errors().isEmpty(), GetParam().works);
    if (GetParam().works)
        return;
    ASSERT_EQ(Errors().size(), 2);
    EXPECT_THAT(
        Errors().first().toStdString(),
        HasSubstr("Failed to rename existing file cloud/a.dat to temp file cloud/a.dat.tmp"));
    EXPECT_THAT(Errors().last().toStdString(),
                HasSubstr("Failed to copy file src/a.dat to cloud/a.dat. Error: "));
}

INSTANTIATE_TEST_SUITE_P(EachShareMode, HeldTarget,
                         ::testing::Values(Share{"None", "-", false}, Share{"Read", "r", false},
                                           Share{"Write", "w", false}, Share{"Delete", "d", true},
                                           Share{"ReadWrite", "rw", false},
                                           Share{"ReadWriteDelete", "rwd", true}),
                         NameOf);

class HeldMovedSource : public Sharing, public ::testing::WithParamInterface<Share>
{};

TEST_P(HeldMovedSource, StaysUnlessItsHolderSharesDeletion)
{
    tree.File(QStringLiteral("src/a.dat"), "new");
    {
        const HeldFile held(Source(QStringLiteral("a.dat")), QStringLiteral("r"),
                            Letters(GetParam()));
        Import({Source(QStringLiteral("a.dat"))}, {}, Global::MoveFiles);
    }
    EXPECT_EQ(tree.Read(QStringLiteral("cloud/a.dat")), "new");
    EXPECT_EQ(tree.Exists(QStringLiteral("src/a.dat")), !GetParam().works);
    EXPECT_EQ(Errors().isEmpty(), GetParam().works);
    if (!GetParam().works) {
        ASSERT_FALSE(Errors().isEmpty());
        EXPECT_THAT(Errors().first().toStdString(),
                    HasSubstr("Failed to delete source file src/a.dat after copying it"));
    }
}

INSTANTIATE_TEST_SUITE_P(ShareModesThatLetItBeRead, HeldMovedSource,
                         ::testing::Values(Share{"Read", "r", false},
                                           Share{"ReadWrite", "rw", false},
                                           Share{"ReadWriteDelete", "rwd", true}),
                         NameOf);

class HeldParkedFile : public Sharing, public ::testing::WithParamInterface<Share>
{};

// The other program opens the parked file in the time in which the new one is copied: a scanner or
// an indexer does just that.
TEST_P(HeldParkedFile, StaysUnlessItsHolderSharesDeletionAndTheCopyCountsAllTheSame)
{
    const QByteArray content = PatternBytes(qint64(96) << 20);
    tree.File(QStringLiteral("src/a.dat"), content).File(QStringLiteral("cloud/a.dat"), "old");
    {
        const HeldFile held(Cloud(QStringLiteral("a.dat.tmp")), QStringLiteral("r"),
                            Letters(GetParam()), QStringLiteral("await"));
        EXPECT_TRUE(Replace());
    }
    EXPECT_TRUE(tree.Read(QStringLiteral("cloud/a.dat")) == content);
    EXPECT_EQ(tree.Exists(QStringLiteral("cloud/a.dat.tmp")), !GetParam().works);
    EXPECT_EQ(Errors().isEmpty(), GetParam().works);
    if (!GetParam().works) {
        ASSERT_FALSE(Errors().isEmpty());
        EXPECT_THAT(Errors().first().toStdString(),
                    HasSubstr("Failed to delete temp file cloud/a.dat.tmp. Error: "));
    }
}

INSTANTIATE_TEST_SUITE_P(EachShareMode, HeldParkedFile,
                         ::testing::Values(Share{"None", "-", false}, Share{"Read", "r", false},
                                           Share{"ReadWrite", "rw", false},
                                           Share{"ReadWriteDelete", "rwd", true}),
                         NameOf);

class HeldRepathTarget : public Sharing, public ::testing::WithParamInterface<Share>
{};

TEST_P(HeldRepathTarget, IsLeftForLaterUnlessItsHolderSharesWriting)
{
    const QString target = Cloud(QStringLiteral("a.tasm"));
    Assembly(QStringLiteral("cloud/a.tasm"), {QStringLiteral("1 old.tlk")});
    FileLinkImporterImp importer(nullptr);
    {
        const HeldFile held(target, QStringLiteral("r"), Letters(GetParam()));
        SyncServices::FileLink link;
        link.RefId = QStringLiteral("1");
        link.Path = QStringLiteral("new.tlk");
        importer.RepathFile(target, {link});
        EXPECT_EQ(
            Short(log.Lines())
                .contains(QStringLiteral("INFO Repathing skipped for file cloud/a.tasm. File is "
                                         "locked. File will be repathed after it is unlocked.")),
            !GetParam().works);
    }
    // A plug-in that puts a new file in the old one's place cannot do so while it is open: then the
    // failure is the plug-in's.
    EXPECT_TRUE(tree.Read(QStringLiteral("cloud/a.tasm")).contains("old.tlk"));
}

INSTANTIATE_TEST_SUITE_P(EachShareMode, HeldRepathTarget,
                         ::testing::Values(Share{"None", "-", false}, Share{"Read", "r", false},
                                           Share{"Delete", "d", false},
                                           Share{"ReadDelete", "rd", false},
                                           Share{"ReadWriteDelete", "rwd", true}),
                         NameOf);

} // namespace Halvern::Test
