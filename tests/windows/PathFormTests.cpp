// SPDX-License-Identifier: Apache-2.0

// Drive letters and network paths, on a system that has them.

#include "ImporterFixture.h"
#include "support/PathUtilities.h"

namespace Halvern::Test {

using namespace FileLink;
using namespace Qt::StringLiterals;

TEST(PathForms, ADriveLetterOrANetworkNameMakesAPathAbsolute)
{
    EXPECT_TRUE(IsAbsolutePath(u"D:/t/a.prt"_s));
    EXPECT_TRUE(IsAbsolutePath(u"\\\\server\\share\\a.prt"_s));
    EXPECT_TRUE(IsAbsolutePath(u"//server/share/a.prt"_s));
    EXPECT_FALSE(IsAbsolutePath(u"/t/a.prt"_s));
    EXPECT_FALSE(IsAbsolutePath(u"t/a.prt"_s));
}

TEST(PathForms, AColonAfterTheDriveMakesAPathNotLocal)
{
    EXPECT_TRUE(IsLocalPath(u"D:/t/a.prt"_s));
    EXPECT_TRUE(IsLocalPath(u"//server/share/a.prt"_s));
    EXPECT_FALSE(IsLocalPath(u"https://example.org/a.prt"_s));
    EXPECT_FALSE(IsLocalPath(u"/t/a:b.prt"_s));
}

TEST(PathForms, APathOnAnotherDriveStaysAbsolute)
{
    EXPECT_EQ(MakeRelativePath(u"E:/y.prt"_s, u"D:/t"_s, false), u"E:/y.prt"_s);
    EXPECT_EQ(MakeRelativePath(u"d:/T/y.prt"_s, u"D:/t"_s, false), u"y.prt"_s);
}

TEST(PathForms, ANetworkPathIsRelativeToItsShare)
{
    EXPECT_EQ(MakeRelativePath(u"//server/share/a/y.prt"_s, u"//server/share/a"_s, false),
              u"y.prt"_s);
    EXPECT_EQ(MakeAbsolutePath(u"sub/y.prt"_s, u"//server/share/a"_s, false),
              u"//server/share/a/sub/y.prt"_s);
}

TEST(PathForms, AnythingOnADriveIsUnderItsRoot)
{
    EXPECT_TRUE(IsPathUnder(u"D:/"_s, u"d:/a"_s));
    EXPECT_FALSE(IsPathUnder(u"D:/a"_s, u"D:/ab"_s));
    EXPECT_TRUE(IsPathUnder(u"\\\\server\\share"_s, u"//server/share/a"_s));
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
    EXPECT_TRUE(tree.Read(u"cloud/"_s + TestResolverModule()) == original.readAll());
}

TEST_F(TwoDrives, ALinkByDriveLetterIsFollowedAndRewritten)
{
    tree.File(u"src/lib/b.tlk"_s, "b");
    const QString link = u"1 "_s + Source(u"lib/b.tlk"_s);
    Assembly(u"src/a.tasm"_s, {link});

    EXPECT_TRUE(Import({Source(u"a.tasm"_s)}));

    EXPECT_TRUE(tree.Read(u"cloud/a.tasm"_s).contains("link 1 b.tlk\n") ||
                tree.Read(u"cloud/a.tasm"_s).contains("link 1 lib/b.tlk\n"))
        << tree.Read(u"cloud/a.tasm"_s).toStdString();
}

} // namespace Halvern::Test
