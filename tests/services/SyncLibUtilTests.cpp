// SPDX-License-Identifier: Apache-2.0

#include "ServicesFixture.h"

#include "syncservices/SyncLibUtil.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

using namespace Halvern::SyncServices;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Halvern::SyncFolderManagerLib::FolderManager;

namespace {

struct TypeCase
{
    const char* name;
    const char* path;
    const char* types;
    bool listed;
};

struct FileTypeList : testing::TestWithParam<TypeCase>
{};

struct ServerCase
{
    const char* name;
    const char* path;
    const char* root;
    const char* restWith;
    const char* restWithout;
};

struct ServerPath : testing::TestWithParam<ServerCase>
{};

struct ServiceFolder : ServicesFixture
{};

template <typename Case>
void Print(const Case& row, std::ostream* out)
{
    *out << row.path;
}
void PrintTo(const TypeCase& row, std::ostream* out)
{
    Print(row, out);
}
void PrintTo(const ServerCase& row, std::ostream* out)
{
    Print(row, out);
}

const auto caseName = [](const auto& row) { return row.param.name; };

} // namespace

TEST_P(FileTypeList, Row)
{
    EXPECT_EQ(SyncLibUtil::IsInFileTypeList(
                  QString::fromUtf8(GetParam().path),
                  QString::fromUtf8(GetParam().types).split(u' ', Qt::SkipEmptyParts)),
              GetParam().listed);
}

INSTANTIATE_TEST_SUITE_P(Table, FileTypeList,
                         testing::Values(TypeCase{"Plain", "/a/b.prt", "asm prt", true},
                                         TypeCase{"WithDot", "/a/b.prt", ".prt", true},
                                         TypeCase{"WithStar", "/a/b.prt", "*.prt", true},
                                         TypeCase{"OtherLetterCase", "/a/b.PRT", "pRt", true},
                                         TypeCase{"BeyondAscii", "/a/b.MÄP", "mäp", true},
                                         TypeCase{"LastDotCounts", "/a/b.prt.asm", "prt", false},
                                         TypeCase{"LastOfSeveral", "/a/b.prt.asm", "asm", true},
                                         TypeCase{"StarIsAll", "/a/b", "*", true},
                                         TypeCase{"EmptyListIsNone", "/a/b.prt", "", false},
                                         TypeCase{"NoExtension", "/a/b", "b prt", false},
                                         TypeCase{"DotInFolder", "/a.prt/b", "prt", false},
                                         TypeCase{"DotInWindowsFolder", "C:\\a.prt\\b", "prt",
                                                  false},
                                         TypeCase{"DotAtTheEnd", "/a/b.", "prt .", false},
                                         TypeCase{"PartOfAType", "/a/b.prt", "pr prtx", false},
                                         TypeCase{"HiddenFile", "/a/.prt", "prt", true}),
                         caseName);

TEST_P(ServerPath, Row)
{
    const QString path = QString::fromUtf8(GetParam().path);
    QString root;
    QString rest;
    SyncLibUtil::SplitServerPath(path, root, rest, true);
    EXPECT_EQ(root, QString::fromUtf8(GetParam().root));
    EXPECT_EQ(rest, QString::fromUtf8(GetParam().restWith));
    SyncLibUtil::SplitServerPath(path, root, rest, false);
    EXPECT_EQ(root, QString::fromUtf8(GetParam().root));
    EXPECT_EQ(rest, QString::fromUtf8(GetParam().restWithout));
    for (const bool keep : {true, false})
        EXPECT_EQ(SyncLibUtil::ExtractServerRoot(path, keep), QString::fromUtf8(GetParam().root));
}

INSTANTIATE_TEST_SUITE_P(
    Table, ServerPath,
    testing::Values(
        ServerCase{"Share", "//server/share/a/b", "//server/share", "/a/b", "a/b"},
        ServerCase{"ShareWithBackslashes", "\\\\server\\share\\a", "//server/share", "/a", "a"},
        ServerCase{"ShareAlone", "//server/share", "//server/share", "", ""},
        ServerCase{"ShareWithSlash", "//server/share/", "//server/share", "/", ""},
        ServerCase{"SeveralSlashes", "//server/share//a//b", "//server/share", "/a//b", "a//b"},
        ServerCase{"NonAscii", "//sörver/Größe/ä", "//sörver/Größe", "/ä", "ä"},
        ServerCase{"Url", "https://host:8080/a/b", "https://host:8080", "/a/b", "a/b"},
        ServerCase{"UrlAlone", "https://host", "https://host", "", ""},
        ServerCase{"UrlWithBackslash", "corsync+v2://host\\a", "corsync+v2://host", "/a", "a"},
        ServerCase{"ServerWithoutShare", "//server", "", "//server", "//server"},
        ServerCase{"ServerWithEmptyShare", "//server//a", "", "//server//a", "//server//a"},
        ServerCase{"ThreeSlashes", "///a/b", "", "///a/b", "///a/b"},
        ServerCase{"UrlWithoutHost", "file:///a", "", "file:///a", "file:///a"},
        ServerCase{"Drive", "C:\\a\\b", "", "C:/a/b", "C:/a/b"},
        ServerCase{"DriveWithTwoSlashes", "C://a/b", "", "C://a/b", "C://a/b"},
        ServerCase{"NoScheme", "1x://host/a", "", "1x://host/a", "1x://host/a"},
        ServerCase{"LocalPath", "/home/a", "", "/home/a", "/home/a"},
        ServerCase{"RelativePath", "a/b://c", "", "a/b://c", "a/b://c"},
        ServerCase{"Empty", "", "", "", ""}),
    caseName);

TEST_F(ServiceFolder, IsAsConfiguredOrTheFolderOfTheProgram)
{
    const QString program = SyncLibUtil::GetSyncServiceExecutableFolderPath();
    EXPECT_TRUE(QFileInfo::exists(program)) << program.toStdString();
    EXPECT_EQ(QFileInfo(program).fileName(), u"services_tests"_s);
    FolderManager::Uninitialize();
    EXPECT_EQ(SyncLibUtil::GetSyncServiceExecutableFolderPath(), program);
    settings.serviceFolder = u"/opt/service"_s;
    FolderManager::Configure(settings);
    FolderManager::Initialize();
    EXPECT_EQ(SyncLibUtil::GetSyncServiceExecutableFolderPath(), u"/opt/service"_s);
}
