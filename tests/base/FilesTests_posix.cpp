// SPDX-License-Identifier: Apache-2.0

#include "BaseFiles.h"
#include "FileTree.h"
#include "base/Directory.h"
#include "base/FileHandle.h"
#include "base/FileStatus.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>

#include <cerrno>
#include <map>

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

TEST(FilesOnPosix, ThatAreLinksAreOfAKindOfTheirOwnWhereTheyAreNotFollowed)
{
    FileTree tree;
    tree.File(u"a"_s, "abc").Folder(u"f"_s);
    for (const QString& target : {u"a"_s, u"f"_s, u"none"_s}) {
        const std::filesystem::path link = Native(tree.Path(u"link to "_s + target));
        ASSERT_TRUE(QFile::link(tree.Path(target), tree.Path(u"link to "_s + target)));
        EXPECT_EQ(Base::ReadLinkStatus(link).kind, Base::FileKind::Link);
    }
    for (const QString& name : {u"a"_s, u"f"_s, u"none"_s}) {
        const std::filesystem::path path = Native(tree.Path(name));
        EXPECT_EQ(Base::ReadLinkStatus(path), Base::ReadFileStatus(path));
    }
}

TEST(FilesOnPosix, FailWithTheKindThatTheNumberTells)
{
    const std::map<int, Base::FileProblem> kinds = {
        {ENOENT, Base::FileProblem::Missing},     {EEXIST, Base::FileProblem::NameTaken},
        {ENOTDIR, Base::FileProblem::NotAFolder}, {EISDIR, Base::FileProblem::IsAFolder},
        {ENOTEMPTY, Base::FileProblem::NotEmpty}, {ENOSPC, Base::FileProblem::NoSpace},
        {EDQUOT, Base::FileProblem::NoSpace},     {ENAMETOOLONG, Base::FileProblem::NameRefused},
        {EIO, Base::FileProblem::Other}};
    for (const auto& [number, kind] : kinds)
        EXPECT_EQ(Base::FileResult::Failed({}, static_cast<std::uint32_t>(number)).Problem(), kind)
            << number;
}

TEST(FilesOnPosix, SayWhenTheyChangedWhateverTimeTheyHave)
{
    FileTree tree;
    tree.File(u"a"_s, "abc").Touch(u"a"_s, QDateTime::fromSecsSinceEpoch(1'500'000'000));
    const Base::FileStatus status = Base::ReadFileStatus(Native(tree.Path(u"a"_s)));
    struct stat info = {};
    ASSERT_EQ(::stat(Native(tree.Path(u"a"_s)).c_str(), &info), 0);
    EXPECT_EQ(status.changed, qint64(info.st_ctim.tv_sec) * 1'000'000'000 + info.st_ctim.tv_nsec);
    EXPECT_GT(status.changed, status.modified);
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
