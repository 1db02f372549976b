// SPDX-License-Identifier: Apache-2.0

#include "FileTree.h"

#include "base/FileAttributes.h"
#include "base/FileLock.h"
#include "base/FileRenaming.h"
#include "base/FileStatus.h"
#include "base/HeldFile.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::Base;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

class HeldFiles : public ::testing::Test
{
protected:
    std::filesystem::path Path(const QString& name) const
    {
        return tree.Path(name).toStdU16String();
    }

    FileTree tree;
};

} // namespace

TEST_F(HeldFiles, MayBeFoldersWhichStayOpenToEverybody)
{
    tree.Folder(u"cloud"_s);
    HeldFile one;
    HeldFile two;
    ASSERT_TRUE(one.HoldFolder(Path(u"cloud"_s)));
    EXPECT_TRUE(two.HoldFolder(Path(u"cloud"_s)).IsHeld());
    tree.File(u"cloud/a"_s, "a");
    EXPECT_EQ(tree.Read(u"cloud/a"_s), "a");
    one.Release();
    EXPECT_TRUE(two.HoldFolder(Path(u"cloud"_s)));
    two.Release();
    EXPECT_EQ(tree.Contents(u"cloud"_s).keys(), QStringList{u"a"_s});
    EXPECT_FALSE(one.HoldFolder(Path(u"none"_s)));
}

TEST_F(HeldFiles, AreMadeWhenTheyAreMissingAndStay)
{
    HeldFile held;
    EXPECT_FALSE(held.IsHeld());
    ASSERT_TRUE(held.Hold(Path(u"lock"_s)));
    EXPECT_TRUE(held.IsHeld());
    held.Release();
    EXPECT_FALSE(held.IsHeld());
    EXPECT_TRUE(tree.Exists(u"lock"_s));
    held.Release();
}

TEST_F(HeldFiles, BelongToOneAtATime)
{
    tree.File(u"lock"_s, "content");
    HeldFile other;
    {
        HeldFile held;
        ASSERT_TRUE(held.Hold(Path(u"lock"_s)));
        const FileResult refused = other.Hold(Path(u"lock"_s));
        EXPECT_FALSE(refused);
        EXPECT_TRUE(refused.IsHeld());
        EXPECT_FALSE(other.IsHeld());
        EXPECT_TRUE(IsFileLocked(Path(u"lock"_s)));
    }
    EXPECT_FALSE(IsFileLocked(Path(u"lock"_s)));
    EXPECT_TRUE(other.Hold(Path(u"lock"_s)));
    other.Release();
    EXPECT_EQ(tree.Read(u"lock"_s), "content");
}

TEST_F(HeldFiles, AreNoFoldersAndLieInFolders)
{
    tree.Folder(u"folder"_s);
    HeldFile held;
    for (const QString& name : {u"folder"_s, u"no folder/lock"_s}) {
        const FileResult refused = held.Hold(Path(name));
        EXPECT_FALSE(refused);
        EXPECT_FALSE(refused.IsHeld());
        EXPECT_FALSE(refused.Text().empty());
    }
    EXPECT_FALSE(held.IsHeld());
}

TEST_F(HeldFiles, FoldersThatMayBeAddedToAreToldFromTheRest)
{
    tree.Folder(u"folder"_s).File(u"file"_s);
    EXPECT_TRUE(MayAddTo(Path(u"folder"_s)));
    EXPECT_FALSE(MayAddTo(Path(u"file"_s)));
    EXPECT_FALSE(MayAddTo(Path(u"gone"_s)));
    EXPECT_EQ(tree.Contents(u"folder"_s), FileTree::Snapshot());
}
