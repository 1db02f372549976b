// SPDX-License-Identifier: Apache-2.0

#include "Plans.h"

#include "layout/Placement.h"

#include <gtest/gtest.h>

#include <set>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

using Formats::Layout::HomeFolder;
using Formats::Layout::PlaceFiles;
using Formats::Layout::TreePath;

namespace {

using Targets = std::map<std::string, std::string>;

struct Row
{
    const char* name;
    const char* top;
    /// Sources and where they must go below Demo.
    std::map<std::string, std::string> files;
};

const Row Rows[] = {
    {"below the top file",
     "/p/shed/a.gltf",
     {{"/p/shed/b.bin", "b.bin"}, {"/p/shed/tex/fine/c.png", "tex/fine/c.png"}}},
    {"beside the folder of the top file",
     "/p/shed/scene/a.gltf",
     {{"/p/shed/lib/c.png", "lib/c.png"},
      {"/p/shed/d.png", "d.png"},
      {"/p/shed/scene/b.bin", "b.bin"}}},
    {"at several levels above",
     "/p/work/shed/scene/a.gltf",
     {{"/p/work/shed/lib/c.png", "shed/lib/c.png"}, {"/p/work/common/d.png", "common/d.png"}}},
    {"a name beside the top file and in the project",
     "/p/shed/scene/a.gltf",
     {{"/p/shed/scene/lib/b.png", "lib/b.png"},
      {"/p/shed/lib/b.png", "shed/lib/b.png"},
      {"/p/shed/tex/c.png", "shed/tex/c.png"}}},
    {"a name that differs in letter case only",
     "/p/shed/scene/a.gltf",
     {{"/p/shed/scene/Lib/b.png", "Lib/b.png"}, {"/p/shed/lib/b.png", "shed/lib/b.png"}}},
    {"a folder of the project with the name of the top file",
     "/p/shed/scene/a.gltf",
     {{"/p/shed/a.gltf/b.png", "shed/a.gltf/b.png"}}},
    {"from a place that is nobody's project",
     "/p/shed/a.gltf",
     {{"/usr/share/wood/oak.png", "wood/oak.png"}}},
    {"one other place stays together",
     "/p/shed/a.gltf",
     {{"/usr/share/wood/oak.png", "wood/oak.png"},
      {"/usr/share/wood/fine/ash.png", "wood/fine/ash.png"}}},
    {"a wider other place",
     "/p/shed/a.gltf",
     {{"/usr/share/wood/oak.png", "share/wood/oak.png"},
      {"/usr/share/stone/x.png", "share/stone/x.png"}}},
    {"other places of one name",
     "/p/shed/a.gltf",
     {{"/mnt/one/tex/a.png", "tex/a.png"},
      {"/srv/two/tex/a.png", "tex (2)/a.png"},
      {"/p/shed/b.png", "b.png"}}},
    {"an other place with the name of a folder beside the top file",
     "/p/shed/a.gltf",
     {{"/p/shed/tex/a.png", "tex/a.png"}, {"/usr/share/tex/a.png", "tex (2)/a.png"}}},
    {"the home folder is no project",
     "/home/me/shed/a.gltf",
     {{"/home/me/Pictures/b.png", "Pictures/b.png"},
      {"/home/me/c.png", "me/c.png"},
      {"/home/you/d.png", "you/d.png"}}},
    {"a folder of the home folder is one",
     "/home/me/work/shed/a.gltf",
     {{"/home/me/work/lib/b.png", "lib/b.png"}}},
    {"a file in the root", "/p/shed/a.gltf", {{"/b.png", "root/b.png"}}},
    {"a drive",
     "D:/work/shed/scene/a.gltf",
     {{"D:/work/shed/lib/b.png", "lib/b.png"},
      {"E:/lib/c.png", "lib (2)/c.png"},
      {"E:/d.png", "E/d.png"}}},
    {"a drive in another letter case",
     "D:/Work/Shed/a.gltf",
     {{"d:/work/shed/Tex/b.png", "Tex/b.png"}}},
    {"a share",
     "//server/share/shed/a.gltf",
     {{"//server/share/shed/b.png", "b.png"}, {"//server/other/lib/c.png", "lib/c.png"}}},
    {"blanks, umlauts and CJK",
     "/p/Größe 1/Szene/a.gltf",
     {{"/p/Größe 1/木目 fein/b.png", "木目 fein/b.png"}}},
    {"a colon in a name", "/p/shed/a.gltf", {{"/p/shed/x:y/b.png", "x:y/b.png"}}},
};

const std::string Demo = "/cloud/Demo/";

} // namespace

TEST(Placement, KeepsTheShapeOfTheSourceTree)
{
    const auto home = TreePath::Parse("/home/me");
    for (const Row& row : Rows) {
        const std::string top = row.top;
        Plan plan(top, Demo + top.substr(top.rfind('/') + 1));
        Targets expected = plan.Targets();
        for (const auto& [source, target] : row.files) {
            plan.Links(source);
            expected[source] = Demo + target;
        }
        PlaceFiles(plan.linked, home);
        EXPECT_EQ(plan.Targets(), expected) << row.name;
    }
}

TEST(Placement, WindowsHomesAreNoProjects)
{
    Plan plan("C:/Users/me/shed/a.gltf", "C:/Users/me/Corsync/Demo/a.gltf");
    plan.Links("C:/Users/me/Pictures/b.png");
    plan.Links("C:/Users/you/c.png");
    PlaceFiles(plan.linked, TreePath::Parse("C:\\Users\\me"));
    EXPECT_EQ(plan.Target("C:/Users/me/Pictures/b.png"), "C:/Users/me/Corsync/Demo/Pictures/b.png");
    EXPECT_EQ(plan.Target("C:/Users/you/c.png"), "C:/Users/me/Corsync/Demo/you/c.png");
}

TEST(Placement, TargetsThatAreSetStay)
{
    Plan plan("/p/shed/a.gltf", Demo + "a.gltf");
    plan.Links("/p/shed/tex/b.png", "/cloud/Old/b.png");
    plan.Links("/p/shed/tex/c.png");
    PlaceFiles(plan.linked, {});
    EXPECT_EQ(plan.Target("/p/shed/tex/b.png"), "/cloud/Old/b.png");
    EXPECT_EQ(plan.Target("/p/shed/tex/c.png"), Demo + "tex/c.png");
}

TEST(Placement, TwoFilesNeverGetOnePlace)
{
    Plan plan("/p/shed/a.gltf", Demo + "a.gltf");
    plan.Links("/q/x/old.png", Demo + "tex/b.png");
    for (const char* const source :
         {"/p/shed/tex/b.png", "/p/shed/Tex/B.png", "/p/shed/TEX/b.PNG", "/p/shed/A.GLTF"})
        plan.Links(source);
    PlaceFiles(plan.linked, {});
    std::set<std::u16string> keys;
    for (const auto& [source, target] : plan.Targets())
        EXPECT_TRUE(keys.insert(Formats::Layout::CaseKey(target)).second) << target;
    EXPECT_EQ(plan.Target("/p/shed/tex/b.png"), Demo + "tex (2)/b.png");
    EXPECT_EQ(plan.Target("/p/shed/A.GLTF"), Demo + "A (2)/A.GLTF");
}

TEST(Placement, ALostFileDoesNotWidenTheProject)
{
    Plan plan("/p/work/shed/scene/a.gltf", Demo + "a.gltf");
    plan.Links("/p/work/shed/lib/b.png");
    plan.Links("/p/gone/c.png").isMissing = true;
    PlaceFiles(plan.linked, {});
    EXPECT_EQ(plan.Target("/p/work/shed/lib/b.png"), Demo + "lib/b.png");
    EXPECT_EQ(plan.Target("/p/gone/c.png"), Demo + "gone/c.png");
}

TEST(Placement, NothingLeavesTheFolderOfTheTopFile)
{
    Plan plan("/p/x/../shed/a.gltf", Demo + "a.gltf");
    const char* const sources[] = {"/p/shed/../../../../etc/x", "//p/../../y", "/p/shed/./../z",
                                   "C:/../w", "/p/shed"};
    for (const char* const source : sources)
        plan.Links(source);
    PlaceFiles(plan.linked, {});
    const TreePath folder = TreePath::Parse(Demo).value();
    for (const auto& file : plan.linked.files) {
        EXPECT_TRUE(folder.Contains(*file.target)) << file.target->Text();
        EXPECT_FALSE(*file.target == folder) << file.source.Text();
    }
}

TEST(Placement, TheEnvironmentNamesTheHomeFolder)
{
    const char* const variable = QDir::separator() == u'\\' ? "USERPROFILE" : "HOME";
    const QByteArray before = qgetenv(variable);
    // In the encoding of the system, in which Qt takes the bytes.
    qputenv(variable, u"/somewhere/größe"_s.toLocal8Bit());
    const auto home = HomeFolder();
    qputenv(variable, before);
    ASSERT_TRUE(home);
    EXPECT_EQ(home->Text(), "/somewhere/größe");
}

} // namespace Halvern::Test
