// SPDX-License-Identifier: Apache-2.0

#include "FileTree.h"
#include "support/FileOperations.h"
#include "support/PathUtilities.h"
#include "support/Platform.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

struct PathKind
{
    const char* name;
    QString path;
    bool isUnc;
    bool isAbsolute;
    bool isLocal;
};

void PrintTo(const PathKind& kind, std::ostream* out)
{
    *out << kind.name;
}

/// An absolute path of this system: "/w/x" or "C:/w/x".
QString FromRoot(const QString& path)
{
    return QDir::rootPath() + path;
}

const bool HasPosixRoot = QDir::rootPath() == u"/";

class PathKinds : public ::testing::TestWithParam<PathKind>
{};

TEST_P(PathKinds, AreToldByTheirFirstCharacters)
{
    const PathKind& kind = GetParam();
    EXPECT_EQ(IsUncPath(kind.path), kind.isUnc);
    EXPECT_EQ(IsAbsolutePath(kind.path), kind.isAbsolute);
    EXPECT_EQ(IsLocalPath(kind.path), kind.isLocal);
}

INSTANTIATE_TEST_SUITE_P(
    Table, PathKinds,
    ::testing::Values(PathKind{"Empty", u""_s, false, false, true},
                      PathKind{"Relative", u"sub/x.prt"_s, false, false, true},
                      PathKind{"RelativeDots", u"../x.prt"_s, false, false, true},
                      PathKind{"OneSlash", u"/"_s, false, HasPosixRoot, true},
                      PathKind{"OneBackslash", u"\\x"_s, false, false, true},
                      PathKind{"PosixRoot", u"/w/x"_s, false, HasPosixRoot, true},
                      PathKind{"PosixWithColon", u"/w/12:30.prt"_s, false, true, HasPosixRoot},
                      PathKind{"Drive", u"D:/x"_s, false, true, true},
                      PathKind{"DriveAlone", u"D:"_s, false, true, true},
                      PathKind{"ColonFirst", u":x"_s, false, true, true},
                      PathKind{"ColonThird", u"ab:x"_s, false, true, false},
                      PathKind{"DriveAndColonLater", u"D:/a:b"_s, false, true, true},
                      PathKind{"Url", u"http://host/x"_s, false, true, false},
                      PathKind{"RelativeWithColon", u"sub/12:30.prt"_s, false, true, false},
                      PathKind{"TwoSlashes", u"//srv/x"_s, true, true, true},
                      PathKind{"TwoBackslashes", u"\\\\srv\\x"_s, true, true, true},
                      PathKind{"SlashBackslash", u"/\\srv"_s, true, true, true},
                      PathKind{"BackslashSlash", u"\\/srv"_s, true, true, true},
                      PathKind{"TwoSlashesAlone", u"//"_s, true, true, true},
                      PathKind{"NetworkWithColon", u"//srv/a:b"_s, true, true, false}),
    [](const auto& kind) { return kind.param.name; });

TEST(AbsolutePaths, AreMadeAgainstAFolderOrTheFolderOfAFile)
{
    EXPECT_EQ(MakeAbsolutePath(u"sub/x.prt"_s, u"D:/t"_s, false), u"D:/t/sub/x.prt"_s);
    EXPECT_EQ(MakeAbsolutePath(u"sub/x.prt"_s, u"D:/t/a.asm"_s, true), u"D:/t/sub/x.prt"_s);
    EXPECT_EQ(MakeAbsolutePath(u"../x.prt"_s, FromRoot(u"w/t/a.asm"_s), true),
              FromRoot(u"w/x.prt"_s));
    EXPECT_EQ(MakeAbsolutePath(u"./s//x.prt"_s, FromRoot(u"w/./t/"_s), false),
              FromRoot(u"w/t/s/x.prt"_s));
    EXPECT_EQ(MakeAbsolutePath(u"x.prt"_s, u"D:/a.asm"_s, true), u"D:/x.prt"_s);
    EXPECT_EQ(MakeAbsolutePath(u""_s, FromRoot(u"w/a.asm"_s), true), FromRoot(u"w"_s));
}

TEST(AbsolutePaths, StayAndAreCleaned)
{
    EXPECT_EQ(MakeAbsolutePath(u"E:/y.prt"_s, u"D:/t"_s, false), u"E:/y.prt"_s);
    EXPECT_EQ(MakeAbsolutePath(u"E:/z/../y.prt"_s, u"D:/t/a.asm"_s, true), u"E:/y.prt"_s);
    EXPECT_EQ(MakeAbsolutePath(u"http:x"_s, u"D:/t"_s, false), u"http:x"_s);
    EXPECT_EQ(MakeAbsolutePath(u"\\\\srv\\x.prt"_s, u"D:/t"_s, false),
              QDir::cleanPath(u"\\\\srv\\x.prt"_s));
}

TEST(AbsolutePaths, AgainstARelativeFileStartInTheCurrentFolder)
{
    EXPECT_EQ(MakeAbsolutePath(u"x.prt"_s, u"sub/a.asm"_s, true),
              QDir::currentPath() + u"/sub/x.prt"_s);
    EXPECT_EQ(MakeAbsolutePath(u"x.prt"_s, u"sub"_s, false), u"sub/x.prt"_s);
}

TEST(RelativePaths, AreMadeAgainstAFolderOrTheFolderOfAFile)
{
    EXPECT_EQ(MakeRelativePath(FromRoot(u"w/t/sub/x.prt"_s), FromRoot(u"w/t"_s), false),
              u"sub/x.prt"_s);
    EXPECT_EQ(MakeRelativePath(FromRoot(u"w/t/sub/x.prt"_s), FromRoot(u"w/t/a.asm"_s), true),
              u"sub/x.prt"_s);
    EXPECT_EQ(MakeRelativePath(FromRoot(u"w/x.prt"_s), FromRoot(u"w/t/a.asm"_s), true),
              u"../x.prt"_s);
    EXPECT_EQ(MakeRelativePath(FromRoot(u"w/t"_s), FromRoot(u"w/t"_s), false), u"."_s);
}

TEST(RelativePaths, AreMadeOnOneDrive)
{
    EXPECT_EQ(MakeRelativePath(u"D:/t/sub/x.prt"_s, u"D:/t"_s, false), u"sub/x.prt"_s);
    EXPECT_EQ(MakeRelativePath(u"D:/x.prt"_s, u"D:/t/a.asm"_s, true), u"../x.prt"_s);
    EXPECT_EQ(MakeRelativePath(u"d:/t/x.prt"_s, u"D:/t/a.asm"_s, true), u"x.prt"_s);
}

TEST(RelativePaths, StayAndAreCleaned)
{
    EXPECT_EQ(MakeRelativePath(u"./sub/../x.prt"_s, FromRoot(u"w/t"_s), false), u"x.prt"_s);
}

TEST(RelativePaths, ToAnotherDriveStayAbsolute)
{
    EXPECT_EQ(MakeRelativePath(u"E:/t/./x.prt"_s, u"D:/t"_s, false), u"E:/t/x.prt"_s);
    EXPECT_EQ(MakeRelativePath(u"http:x"_s, u"D:/t"_s, false), u"http:x"_s);
}

TEST(RelativePaths, LeadBack)
{
    for (const QString& path : {FromRoot(u"w/x.prt"_s), FromRoot(u"w/t/x.prt"_s),
                                FromRoot(u"v/x.prt"_s), u"D:/x.prt"_s}) {
        const QString relative = MakeRelativePath(path, FromRoot(u"w/t/a.asm"_s), true);
        EXPECT_EQ(MakeAbsolutePath(relative, FromRoot(u"w/t/a.asm"_s), true), path);
    }
}

TEST(LinkPaths, AreCleanedBeforeTheyAreResolved)
{
    EXPECT_EQ(ResolveLinkPath(u"lib/../x.prt"_s, FromRoot(u"w/a.asm"_s)), FromRoot(u"w/x.prt"_s));
    EXPECT_EQ(ResolveLinkPath(u"E:/a/../x.prt"_s, FromRoot(u"w/a.asm"_s)), u"E:/x.prt"_s);
    EXPECT_EQ(ResolveLinkPath(u"lib/x.prt"_s, u"D:/w/a.asm"_s), u"D:/w/lib/x.prt"_s);
}

struct Normalised
{
    const char* name;
    QString path;
    QString expected;
};

void PrintTo(const Normalised& row, std::ostream* out)
{
    *out << row.name;
}

class NormalisedPaths : public ::testing::TestWithParam<Normalised>
{};

TEST_P(NormalisedPaths, HaveOneForm)
{
    EXPECT_EQ(NormalizeServerPath(GetParam().path), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, NormalisedPaths,
    ::testing::Values(Normalised{"Empty", u""_s, u""_s},
                      Normalised{"UrlStays", u" http://h//x/ "_s, u" http://h//x/ "_s},
                      Normalised{"Spaces", u"  a/b \t"_s, u"a/b"_s},
                      Normalised{"Dots", u"D:/a/./c/../b"_s, u"D:/a/b"_s},
                      Normalised{"SlashesAtBothEnds", u"/a/b//"_s, u"a/b"_s},
                      Normalised{"LeadingSlash", u"/a"_s, u"a"_s},
                      Normalised{"Root", u"/"_s, u"/"_s},
                      Normalised{"BackslashesInside", u"a\\b"_s, u"a/b"_s},
                      Normalised{"ColonBehindSpaces", u"  D:/a/ "_s, u"  D:/a/ "_s},
                      Normalised{"Network", u"\\\\srv\\share"_s, u"//srv/share"_s}),
    [](const auto& row) { return row.param.name; });

struct Containment
{
    const char* name;
    QString folder;
    QString path;
    bool isUnder;
};

void PrintTo(const Containment& row, std::ostream* out)
{
    *out << row.name;
}

class Containments : public ::testing::TestWithParam<Containment>
{};

TEST_P(Containments, AreToldByPath)
{
    EXPECT_EQ(IsPathUnder(GetParam().folder, GetParam().path), GetParam().isUnder);
}

INSTANTIATE_TEST_SUITE_P(
    Table, Containments,
    ::testing::Values(Containment{"DriveRoot", u"D:/"_s, u"D:/a"_s, true},
                      Containment{"DriveWithoutSlash", u"D:"_s, u"D:/a"_s, true},
                      Containment{"DriveItself", u"D:/"_s, u"D:/"_s, false},
                      Containment{"OtherDrive", u"D:/"_s, u"E:/a"_s, false},
                      Containment{"SiblingWithCommonPrefix", u"D:/a"_s, u"D:/ab"_s, false},
                      Containment{"Child", u"D:/a"_s, u"D:/a/b"_s, true},
                      Containment{"Deep", u"D:/a"_s, u"D:/a/b/c/d"_s, true},
                      Containment{"Itself", u"D:/a"_s, u"D:/a"_s, false},
                      Containment{"ItselfWithSlash", u"D:/a"_s, u"D:/a/"_s, false},
                      Containment{"Above", u"D:/a/b"_s, u"D:/a"_s, false},
                      Containment{"LetterCase", u"d:/A"_s, u"D:/a/b"_s, true},
                      Containment{"Uncleaned", u"D:/a/./x/.."_s, u"D:/y/../a/b"_s, true},
                      Containment{"Backslashes", u"D:/a"_s, u"D:/a\\b"_s, true},
                      Containment{"FolderWithSlash", u"/w/a/"_s, u"/w/a/b"_s, true},
                      Containment{"RootItself", u"/"_s, u"/"_s, false},
                      Containment{"Network", u"\\\\srv\\s"_s, u"\\\\srv\\s\\x"_s, true},
                      Containment{"EmptyFolder", u""_s, u"D:/a"_s, false},
                      Containment{"EmptyPath", u"D:/a"_s, u""_s, false},
                      Containment{"Url", u"http://h/x"_s, u"http://h/x/y"_s, true}),
    [](const auto& row) { return row.param.name; });

TEST(PathHashes, AreMd5OfThePathAsGiven)
{
    EXPECT_EQ(GetPathHash(QString()), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(GetPathHash(u"abc"_s), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(GetPathHash(u"\u00e4"_s), "8419b71c87a225a2c70b50486fbee545");
    EXPECT_NE(GetPathHash(u"D:/a"_s), GetPathHash(u"D:/./a"_s));
    EXPECT_NE(GetPathHash(u"D:/a"_s), GetPathHash(u"d:/a"_s));
}

TEST(ApplicationPath, IsThatOfTheRunningProgramWithOrWithoutAnApplicationObject)
{
    ASSERT_EQ(QCoreApplication::instance(), nullptr);
    const QString path = GetApplicationFilePath();
    EXPECT_EQ(QFileInfo(path).completeBaseName(), u"support_tests"_s);
    EXPECT_TRUE(QFileInfo(path).isExecutable());
    EXPECT_EQ(GetApplicationFolder(), QFileInfo(path).absolutePath());
    int count = 1;
    char name[] = "program";
    char* arguments[] = {name, nullptr};
    const QCoreApplication application(count, arguments);
    EXPECT_EQ(GetApplicationFilePath(), path);
    EXPECT_EQ(GetApplicationFolder(), QFileInfo(path).absolutePath());
}

TEST(CommonDataFolder, IsAnExistingCleanAbsoluteFolder)
{
    const QString folder = GetCommonAppDataFolder();
    EXPECT_TRUE(QFileInfo(folder).isDir());
    EXPECT_TRUE(QDir::isAbsolutePath(folder));
    EXPECT_EQ(folder, QDir::cleanPath(folder));
}

TEST(PlatformWithoutServices, AnswersWithNothing)
{
    EXPECT_EQ(CloudCacheFolder(), QString());
    EXPECT_EQ(ConvertCloudCacheFolderPath(u"/c/./x"_s), u"/c/x"_s);
    EXPECT_EQ(GetDatabase(), nullptr);
    EXPECT_EQ(GetAuthenticationId(), -1);
}

} // namespace
