// SPDX-License-Identifier: Apache-2.0

#include "BaseFiles.h"
#include "FileTree.h"

#include "base/LetterCase.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace Halvern::Test {

using namespace Qt::StringLiterals;
using Base::FolderIgnoresLetterCase;

TEST(LetterCase, CountsWhereTwoNamesOfOneFileDifferInNothingElse)
{
    FileTree tree;
    tree.File(u"folder/note"_s, "note");
    const std::filesystem::path folder = Native(tree.Path(u"folder"_s));
    EXPECT_EQ(FolderIgnoresLetterCase(folder), false);
    std::filesystem::create_hard_link(folder / "note", folder / "NOTE");
    EXPECT_EQ(FolderIgnoresLetterCase(folder), false);
}

TEST(LetterCase, IsNotToldByLinksThatLeadToTheFolder)
{
    FileTree tree;
    tree.Folder(u"folder"_s);
    const std::filesystem::path folder = Native(tree.Path(u"folder"_s));
    std::filesystem::create_symlink("folder", folder.parent_path() / "FOLDER");
    EXPECT_FALSE(FolderIgnoresLetterCase(folder).value_or(false));
}

TEST(LetterCase, IsNotKnownOfWhatIsNotThere)
{
    FileTree tree;
    EXPECT_EQ(FolderIgnoresLetterCase(Native(tree.Path(u"nowhere"_s))), std::nullopt);
}

} // namespace Halvern::Test
