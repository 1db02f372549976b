// SPDX-License-Identifier: Apache-2.0

#include "BaseFiles.h"
#include "FileTree.h"
#include "base/Directory.h"
#include "base/FileHandle.h"
#include "base/FileStatus.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>

#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

TEST(FilesOnPosix, ThatAreLinksAreFollowedUnlessThatIsRefused)
{
    FileTree tree;
    tree.File(u"a"_s, "abc");
    ASSERT_TRUE(QFile::link(tree.Path(u"a"_s), tree.Path(u"link"_s)));
    const std::filesystem::path link = Native(tree.Path(u"link"_s));
    Base::Handle handle = Base::NoHandle;
    EXPECT_FALSE(Base::OpenForReading(link, handle, Base::Links::Refuse));
    ASSERT_EQ(handle, Base::NoHandle);
    ASSERT_TRUE(Base::OpenForReading(link, handle));
    Base::Close(handle);
    EXPECT_EQ(Base::ReadFileStatus(link).size, 3U);
    EXPECT_EQ(Base::Resolved(link), Native(tree.Path(u"a"_s)));
}

TEST(FilesOnPosix, ThatLeadNowhereAreNotThere)
{
    FileTree tree;
    ASSERT_TRUE(QFile::link(tree.Path(u"none"_s), tree.Path(u"link"_s)));
    const std::filesystem::path link = Native(tree.Path(u"link"_s));
    EXPECT_FALSE(Base::Exists(link));
    EXPECT_EQ(Base::Resolved(link), link);
}

TEST(FilesOnPosix, ThatArePipesAreOfAnotherKindAndNotWaitedFor)
{
    FileTree tree;
    const std::filesystem::path pipe = Native(tree.Path(u"pipe"_s));
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(Base::ReadFileStatus(pipe).kind, Base::FileKind::Other);
    Base::Handle handle = Base::NoHandle;
    const Base::FileResult opened = Base::OpenForReading(pipe, handle);
    EXPECT_EQ(opened.Text(), "not a regular file");
}

TEST(FilesOnPosix, MayHaveSeveralNames)
{
    FileTree tree;
    tree.File(u"a"_s);
    ASSERT_EQ(::link(Native(tree.Path(u"a"_s)).c_str(), Native(tree.Path(u"b"_s)).c_str()), 0);
    EXPECT_EQ(Base::ReadFileStatus(Native(tree.Path(u"a"_s))).names, 2U);
    EXPECT_TRUE(Base::IsSameFile(Native(tree.Path(u"a"_s)), Native(tree.Path(u"b"_s))));
}

TEST(FilesOnPosix, AreNotListedThroughALink)
{
    FileTree tree;
    tree.File(u"p/a"_s);
    ASSERT_TRUE(QFile::link(tree.Path(u"p"_s), tree.Path(u"link"_s)));
    const std::filesystem::path link = Native(tree.Path(u"link"_s));
    EXPECT_FALSE(Base::VisitEntries(link, [](Base::FolderEntry&&) { return true; }));
    EXPECT_EQ(Base::ReadEntry(link).kind, Base::EntryKind::LinkToFolder);
}

} // namespace Halvern::Test
