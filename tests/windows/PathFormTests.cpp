// SPDX-License-Identifier: Apache-2.0

// Drive letters and network paths, on a system that has them.

#include "ImporterFixture.h"
#include "support/PathUtilities.h"

namespace Halvern::Test {

using namespace FileLink;

TEST(PathForms, ADriveLetterOrANetworkNameMakesAPathAbsolute)
{
    EXPECT_TRUE(IsAbsolutePath(QStringLiteral("D:/t/a.prt")));
    EXPECT_TRUE(IsAbsolutePath(QStringLiteral("\\\\server\\share\\a.prt")));
    EXPECT_TRUE(IsAbsolutePath(QStringLiteral("//server/share/a.prt")));
    EXPECT_FALSE(IsAbsolutePath(QStringLiteral("/t/a.prt")));
    EXPECT_FALSE(IsAbsolutePath(QStringLiteral("t/a.prt")));
}

TEST(PathForms, AColonAfterTheDriveMakesAPathNotLocal)
{
    EXPECT_TRUE(IsLocalPath(QStringLiteral("D:/t/a.prt")));
    EXPECT_TRUE(IsLocalPath(QStringLiteral("//server/share/a.prt")));
    EXPECT_FALSE(IsLocalPath(QStringLiteral("https://example.org/a.prt")));
    EXPECT_FALSE(IsLocalPath(QStringLiteral("/t/a:b.prt")));
}

TEST(PathForms, APathOnAnotherDriveStaysAbsolute)
{
    EXPECT_EQ(MakeRelativePath(QStringLiteral("E:/y.prt"), QStringLiteral("D:/t"), false),
              QStringLiteral("E:/y.prt"));
    EXPECT_EQ(MakeRelativePath(QStringLiteral("d:/T/y.prt"), QStringLiteral("D:/t"), false),
              QStringLiteral("y.prt"));
}

TEST(PathForms, ANetworkPathIsRelativeToItsShare)
{
    EXPECT_EQ(MakeRelativePath(QStringLiteral("//server/share/a/y.prt"),
                               QStringLiteral("//server/share/a"), false),
              QStringLiteral("y.prt"));
    EXPECT_EQ(
        MakeAbsolutePath(QStringLiteral("sub/y.prt"), QStringLiteral("//server/share/a"), false),
        QStringLiteral("//server/share/a/sub/y.prt"));
}

TEST(PathForms, AnythingOnADriveIsUnderItsRoot)
{
    EXPECT_TRUE(IsPathUnder(QStringLiteral("D:/"), QStringLiteral("d:/a")));
    EXPECT_FALSE(IsPathUnder(QStringLiteral("D:/a"), QStringLiteral("D:/ab")));
    EXPECT_TRUE(
        IsPathUnder(QStringLiteral("\\\\server\\share"), QStringLiteral("//server/share/a")));
}

TEST(PathForms, TheDataFolderOfAllUsersIsTheOneThatTheSystemNames)
{
    EXPECT_EQ(GetCommonAppDataFolder(),
              QDir::fromNativeSeparators(qEnvironmentVariable("ProgramData")));
}

class TwoDrives : public ImporterFixture
{};

// The temporary folder is on C:, the programs of the test are on the drive they were started from.
TEST_F(TwoDrives, AFileIsImportedFromAnotherDrive)
{
    const QString source =
        QFileInfo(TestPluginFolder() + u'/' + TestResolverModule()).absoluteFilePath();
    ASSERT_NE(source.left(2).toUpper(), tree.Path().left(2).toUpper());

    Import({source});

    QFile original(source);
    ASSERT_TRUE(original.open(QIODevice::ReadOnly));
    EXPECT_TRUE(tree.Read(QStringLiteral("cloud/") + TestResolverModule()) == original.readAll());
}

TEST_F(TwoDrives, ALinkByDriveLetterIsFollowedAndRewritten)
{
    tree.File(QStringLiteral("src/lib/b.tlk"), "b");
    const QString link = QStringLiteral("1 ") + Source(QStringLiteral("lib/b.tlk"));
    Assembly(QStringLiteral("src/a.tasm"), {link});

    EXPECT_TRUE(Import({Source(QStringLiteral("a.tasm"))}));

    EXPECT_TRUE(tree.Read(QStringLiteral("cloud/a.tasm")).contains("link 1 b.tlk\n") ||
                tree.Read(QStringLiteral("cloud/a.tasm")).contains("link 1 lib/b.tlk\n"))
        << tree.Read(QStringLiteral("cloud/a.tasm")).toStdString();
}

} // namespace Halvern::Test
