// SPDX-License-Identifier: Apache-2.0

#include "layout/TreePath.h"

#include <gtest/gtest.h>

namespace Halvern::Formats::Layout {

namespace {

struct PathRow
{
    const char* name;
    const char* text;
    const char* normal;
};

const PathRow Rows[] = {
    {"a path of this system", "/home/me/a.png", "/home/me/a.png"},
    {"dots and doubled slashes", "/home/./me//x/../a.png", "/home/me/a.png"},
    {"dots above the root", "/../../a.png", "/a.png"},
    {"a drive", "D:/work/a.png", "D:/work/a.png"},
    {"a drive with backslashes", "D:\\work\\lib\\..\\a.png", "D:/work/a.png"},
    {"a server", "//server/share/x/a.png", "//server/share/x/a.png"},
    {"a server with backslashes", "\\\\server\\share\\a.png", "//server/share/a.png"},
    {"dots above a share", "//server/share/../../a.png", "//server/share/a.png"},
    {"a backslash in a name", "/home/me/a\\b.png", "/home/me/a\\b.png"},
    {"a colon in a name", "/home/me/a:b.png", "/home/me/a:b.png"},
    {"the root", "/", "/"},
};

TreePath Parsed(const char* text)
{
    return TreePath::Parse(text).value();
}

} // namespace

TEST(TreePath, ReadsAbsolutePathsOfEitherPlatform)
{
    for (const PathRow& row : Rows)
        EXPECT_EQ(Parsed(row.text).Text(), row.normal) << row.name;
}

TEST(TreePath, ReadsNoOtherText)
{
    for (const char* const text : {"", "a.png", "../a.png", "vault:x", "http://x/y"})
        EXPECT_FALSE(TreePath::Parse(text)) << text;
}

TEST(TreePath, HoldsWhatLiesBelowAndNotASiblingWithACommonBeginning)
{
    const TreePath folder = Parsed("/home/me/lib");
    EXPECT_TRUE(folder.Contains(Parsed("/home/me/lib/x/a.png")));
    EXPECT_TRUE(folder.Contains(folder));
    EXPECT_FALSE(folder.Contains(Parsed("/home/me/lib2/a.png")));
    EXPECT_FALSE(folder.Contains(Parsed("/home/me")));
    EXPECT_FALSE(folder.Contains(Parsed("D:/home/me/lib/a.png")));
}

TEST(TreePath, LetterCaseCountsOnThisSystemAndNotOnDrivesAndShares)
{
    EXPECT_FALSE(Parsed("/home/Me").Contains(Parsed("/home/me/a.png")));
    EXPECT_TRUE(Parsed("D:/WÖRK").Contains(Parsed("d:/wörk/a.png")));
    EXPECT_TRUE(Parsed("//Server/share/X").Contains(Parsed("//server/SHARE/x/a.png")));
}

TEST(TreePath, HasACommonFolderOnlyWithWhatHasTheSameRoot)
{
    const TreePath path = Parsed("/p/scene/a");
    EXPECT_EQ(path.CommonWith(Parsed("/p/lib/b")).value().Text(), "/p");
    EXPECT_EQ(path.CommonWith(Parsed("/q/lib/b")).value().Text(), "/");
    EXPECT_FALSE(path.CommonWith(Parsed("D:/p/scene/a")));
    EXPECT_FALSE(Parsed("//s/one/a").CommonWith(Parsed("//s/two/a")));
}

TEST(TreePath, ACaseKeyIsTheSameForAllLetterCases)
{
    const std::pair<const char*, const char*> pairs[] = {
        {"WOOD.PNG", "wood.png"},
        {"HÖHE", "höhe"},
        {"ŠKODA ŁÓDŹ ŽIŽKA", "škoda łódź žižka"},
        {"ΑΒΓ", "αβγ"},
        {"ДЕРЕВО Ё", "дерево ё"},
        {"木目", "木目"},
    };
    for (const auto& [upper, lower] : pairs)
        EXPECT_EQ(CaseKey(upper), CaseKey(lower)) << upper;
    EXPECT_NE(CaseKey("wood×"), CaseKey("wood÷"));
    EXPECT_NE(CaseKey("wood1"), CaseKey("wood2"));
}

TEST(TreePath, ANameConsistsOfStemAndSuffix)
{
    EXPECT_EQ(Stem("a.b.png"), "a.b");
    EXPECT_EQ(Suffix("a.b.png"), ".png");
    EXPECT_EQ(Stem("sym-lib-table"), "sym-lib-table");
    EXPECT_EQ(Stem(".hidden"), ".hidden");
    EXPECT_EQ(Suffix(".hidden"), "");
}

} // namespace Halvern::Formats::Layout
