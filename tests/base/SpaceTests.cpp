// SPDX-License-Identifier: Apache-2.0

#include "BaseFiles.h"
#include "FileTree.h"
#include "base/FileStatus.h"
#include "base/FileSystemFlush.h"
#include "base/Space.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

TEST(FreeSpace, IsThatOfTheDiskOfAFolder)
{
    FileTree tree;
    tree.Folder(u"folder"_s);
    Base::Space space;
    ASSERT_TRUE(Base::ReadSpace(Native(tree.Path(u"folder"_s)), space));
    ASSERT_TRUE(space.freeBytes);
    EXPECT_GT(*space.freeBytes, 0U);
    EXPECT_EQ(space.device, Base::ReadFileStatus(Native(tree.Path())).device);
}

TEST(FreeSpace, OfAMissingFolderIsAFailure)
{
    FileTree tree;
    Base::Space space;
    space.freeBytes = 17;
    EXPECT_EQ(Base::ReadSpace(Native(tree.Path(u"none"_s)), space).Problem(),
              Base::FileProblem::Missing);
    EXPECT_EQ(space.freeBytes, 17U) << "a failure leaves it alone";
}

TEST(FlushedFileSystems, AreThoseOfFoldersThatAreThere)
{
    FileTree tree;
    tree.File(u"folder/a"_s, "a");
    const Base::FileResult flushed = Base::FlushFileSystem(Native(tree.Path(u"folder"_s)));
    EXPECT_TRUE(flushed || flushed.Problem() == Base::FileProblem::NotOffered) << flushed.Text();
    EXPECT_FALSE(Base::FlushFileSystem(Native(tree.Path(u"none"_s))));
    EXPECT_FALSE(Base::FlushFileSystem(Native(tree.Path(u"folder/a"_s))));
}

} // namespace Halvern::Test
