// SPDX-License-Identifier: Apache-2.0

// Symbolic links on the way, with and without the one call of the system that looks out for them,
// and file systems that cannot rename with care.

#include "PoorerWorld.h"
#include "RootedFolderFixture.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Test {

namespace {

const Refusal noOpenAtOnce{SYS_openat2, ENOSYS};
const Refusal forbiddenOpenAtOnce{SYS_openat2, EPERM};
const Refusal noCarefulRename{SYS_renameat2, EINVAL};
const Refusal unknownRename{SYS_renameat2, ENOSYS};
const Refusal noHardLinks{SYS_linkat, EPERM};

struct World
{
    const char* name;
    std::vector<Refusal> refusals;
};

void PrintTo(const World& world, std::ostream* out)
{
    *out << world.name;
}

std::string Named(const ::testing::TestParamInfo<World>& info)
{
    return info.param.name;
}

class RootedFoldersOnPosix : public RootedFolders
{
protected:
    void Link(const QString& to, const QString& name)
    {
        ASSERT_EQ(::symlink(Native(to).c_str(), Native(tree.Path(name)).c_str()), 0);
    }
    void HardLink(const QString& file, const QString& name)
    {
        ASSERT_EQ(::link(Native(tree.Path(file)).c_str(), Native(tree.Path(name)).c_str()), 0);
    }
    struct stat StatOf(const QString& name)
    {
        struct stat info = {};
        EXPECT_EQ(::lstat(Native(tree.Path(name)).c_str(), &info), 0) << name.toStdString();
        return info;
    }
};

/// Ways are found one by one where they cannot be at once.
class RootedWays : public RootedFoldersOnPosix, public ::testing::WithParamInterface<World>
{
protected:
    void InThisWorld(const std::function<void()>& test)
    {
        const auto work = [&] {
            test();
            return !HasFailure();
        };
        EXPECT_EQ(InAPoorerWorld(GetParam().refusals, work), Good);
    }
};

using RootedMoves = RootedWays;

} // namespace

TEST_P(RootedWays, ThroughSymbolicLinksAreRefusedWhereverTheyLead)
{
    tree.File(u"cloud/a.prt"_s).File(u"cloud/sub/x.prt"_s).Folder(u"cloud/sub/deep"_s);
    Link(u"../outside"_s, u"cloud/out"_s);
    Link(tree.Path(u"outside"_s), u"cloud/absolute"_s);
    Link(u"sub"_s, u"cloud/inner"_s);
    Link(u"../sub"_s, u"cloud/sub/deep/again"_s);
    Link(u"none"_s, u"cloud/broken"_s);
    Link(u"loop"_s, u"cloud/loop"_s);
    InThisWorld([&] {
        for (const QString& way :
             {u"out/x.prt"_s, u"absolute/x.prt"_s, u"inner/x.prt"_s, u"sub/deep/again/x.prt"_s,
              u"broken/x.prt"_s, u"loop/x.prt"_s, u"out/../a.prt"_s})
            ExpectRefused(way, FileProblem::LeadsOutside);
        EXPECT_EQ(root.Remove("sub/deep/again/x.prt").Text(), "sub/deep/again is a symbolic link");
    });
}

TEST_P(RootedWays, EndAtALinkAndNeverAtWhatItLeadsTo)
{
    Link(u"../outside/x.prt"_s, u"cloud/file"_s);
    Link(u"../outside"_s, u"cloud/folder"_s);
    InThisWorld([&] {
        std::vector<std::filesystem::path> names;
        Base::Handle handle = Base::NoHandle;
        EXPECT_EQ(Kind(u"file"_s), FileKind::Link);
        EXPECT_EQ(Kind(u"folder"_s), FileKind::Link);
        EXPECT_EQ(root.OpenForReading("file", handle).Problem(), FileProblem::LeadsOutside);
        EXPECT_EQ(handle, Base::NoHandle);
        EXPECT_EQ(root.Flush("file").Problem(), FileProblem::LeadsOutside);
        EXPECT_EQ(root.Flush("folder").Problem(), FileProblem::LeadsOutside);
        EXPECT_EQ(root.List("folder", names).Problem(), FileProblem::LeadsOutside);
        EXPECT_EQ(root.MakeFolders("folder").Problem(), FileProblem::LeadsOutside);
        EXPECT_EQ(root.RemoveFolder("folder").Problem(), FileProblem::NotAFolder);
        EXPECT_EQ(root.MakePrivateFolder("folder").Problem(), FileProblem::NameTaken);
        EXPECT_TRUE(Move(u"folder"_s, u"moved"_s, Existing::Keep));
        EXPECT_EQ(Kind(u"moved"_s), FileKind::Link);
        EXPECT_TRUE(root.Remove("file"));
        EXPECT_TRUE(root.Remove("moved"));
    });
    EXPECT_EQ(tree.Contents(),
              (FileTree::Snapshot{{u"cloud/"_s, ""}, {u"outside/x.prt"_s, "outside"}}));
}

TEST_P(RootedWays, ReplaceALinkAndNotWhatItLeadsTo)
{
    tree.File(u"cloud/new"_s, "new");
    Link(u"../outside/x.prt"_s, u"cloud/file"_s);
    InThisWorld([&] {
        EXPECT_EQ(Move(u"new"_s, u"file"_s, Existing::Keep).Problem(), FileProblem::NameTaken);
        EXPECT_TRUE(Move(u"new"_s, u"file"_s, Existing::Replace));
    });
    EXPECT_TRUE(S_ISREG(StatOf(u"cloud/file"_s).st_mode));
    EXPECT_EQ(tree.Read(u"cloud/file"_s), "new");
    EXPECT_EQ(tree.Read(u"outside/x.prt"_s), "outside");
}

TEST_P(RootedWays, NoticeAFolderThatBecameALinkBetweenTwoOperations)
{
    tree.File(u"cloud/sub/a"_s, "a").File(u"cloud/b"_s, "b").File(u"outside/a"_s, "mine");
    InThisWorld([&] {
        EXPECT_EQ(Kind(u"sub/a"_s), FileKind::File);
        EXPECT_TRUE(Move(u"b"_s, u"sub/b"_s, Existing::Keep));
        EXPECT_TRUE(Move(u"sub/b"_s, u"b"_s, Existing::Keep));
        EXPECT_TRUE(Move(u"sub"_s, u"was"_s, Existing::Keep));
        Link(u"../outside"_s, u"cloud/sub"_s);
        ExpectRefused(u"sub/a"_s, FileProblem::LeadsOutside);
        EXPECT_EQ(Move(u"b"_s, u"sub/b"_s, Existing::Keep).Problem(), FileProblem::LeadsOutside);
        EXPECT_EQ(Move(u"b"_s, u"sub/a"_s, Existing::Replace).Problem(), FileProblem::LeadsOutside);
    });
    EXPECT_EQ(tree.Contents(u"outside"_s),
              (FileTree::Snapshot{{u"a"_s, "mine"}, {u"x.prt"_s, "outside"}}));
}

TEST_P(RootedWays, NeverLeadOutWhileAFolderBecomesALinkAndAFolderAgain)
{
    constexpr int rounds = 1000;
    tree.Folder(u"cloud/sub"_s).File(u"cloud/a"_s, "a");
    Link(u"../outside"_s, u"cloud/link"_s);
    InThisWorld([&] {
        std::atomic<bool> isOver = false;
        std::thread swapper([&] {
            const std::string sub = Native(tree.Path(u"cloud/sub"_s)).native();
            const std::string link = Native(tree.Path(u"cloud/link"_s)).native();
            // By the bare call of the system: a world may refuse the other one.
            while (!isOver)
                ::renameat2(AT_FDCWD, sub.c_str(), AT_FDCWD, link.c_str(), RENAME_EXCHANGE);
        });
        int refused = 0;
        for (int i = 0; i < rounds; ++i) {
            const Base::FileResult made = root.MakeFolders("sub/made");
            const Base::FileResult moved = root.Move("a", "sub/a", Existing::Keep);
            refused += !moved;
            EXPECT_TRUE(moved || moved.Problem() == FileProblem::LeadsOutside) << moved.Text();
            EXPECT_TRUE(made || made.Problem() == FileProblem::LeadsOutside) << made.Text();
            // It is in the folder, under whichever of the two names that has now.
            while (moved && !root.Move("sub/a", "a", Existing::Keep) &&
                   !root.Move("link/a", "a", Existing::Keep)) {
            }
        }
        isOver = true;
        swapper.join();
        EXPECT_GT(refused, 0);
        EXPECT_LT(refused, rounds);
    });
    EXPECT_EQ(tree.Contents(u"outside"_s), (FileTree::Snapshot{{u"x.prt"_s, "outside"}}));
    EXPECT_EQ(tree.Read(u"cloud/a"_s), "a");
}

TEST_P(RootedWays, LeadThroughNoLinkOfTheSystemsOwn)
{
    InThisWorld([&] {
        Base::RootedFolder process;
        Base::FileStatus status;
        ASSERT_TRUE(process.Open("/proc/self"));
        EXPECT_EQ(process.Status("cwd/x", status).Problem(), FileProblem::LeadsOutside);
        EXPECT_EQ(process.Status("root/etc", status).Problem(), FileProblem::LeadsOutside);
        ASSERT_TRUE(process.Status("cwd", status));
        EXPECT_EQ(status.kind, FileKind::Link);
    });
}

TEST_P(RootedWays, MakeAndFindFolders)
{
    tree.Folder(u"cloud/a"_s);
    InThisWorld([&] {
        std::vector<std::filesystem::path> made;
        EXPECT_TRUE(root.MakeFolders("a/b/c", &made));
        EXPECT_EQ(made, (std::vector<std::filesystem::path>{"a/b", "a/b/c"}));
        EXPECT_EQ(Names(u"a/b"_s), std::set<std::string>{"c"});
        EXPECT_EQ(Kind(u"a/x/y"_s), FileKind::Missing);
        EXPECT_TRUE(root.RemoveFolder("a/b/c"));
    });
}

INSTANTIATE_TEST_SUITE_P(Worlds, RootedWays,
                         ::testing::Values(World{"Rich", {}}, World{"StepByStep", {noOpenAtOnce}},
                                           World{"StepByStepInAContainer", {forbiddenOpenAtOnce}}),
                         Named);

TEST_P(RootedMoves, GiveAFileALinkOrAFolderAFreeName)
{
    tree.File(u"cloud/.own/1"_s, "a").File(u"cloud/f/x"_s, "x").Folder(u"cloud/sub"_s);
    Link(u"../outside"_s, u"cloud/l"_s);
    const struct stat before = StatOf(u"cloud/.own/1"_s);
    InThisWorld([&] {
        const Base::FileResult moved = Move(u".own/1"_s, u"sub/a"_s, Existing::Keep);
        EXPECT_TRUE(moved) << moved.Text();
        const Base::FileResult folder = Move(u"f"_s, u"sub/f"_s, Existing::Keep);
        EXPECT_TRUE(folder) << folder.Text();
        const Base::FileResult link = Move(u"l"_s, u"sub/l"_s, Existing::Keep);
        EXPECT_TRUE(link) << link.Text();
        EXPECT_EQ(Kind(u"sub/l"_s), FileKind::Link);
    });
    const struct stat after = StatOf(u"cloud/sub/a"_s);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_nlink, nlink_t(1));
    EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    ASSERT_EQ(::unlink(Native(tree.Path(u"cloud/sub/l"_s)).c_str()), 0);
    EXPECT_EQ(tree.Contents(u"cloud"_s),
              (FileTree::Snapshot{{u".own/"_s, ""}, {u"sub/a"_s, "a"}, {u"sub/f/x"_s, "x"}}));
}

TEST_P(RootedMoves, NeverOverwriteWhateverHasTheName)
{
    tree.File(u"cloud/a"_s, "a").File(u"cloud/b"_s, "b").Folder(u"cloud/f"_s).Folder(u"cloud/g"_s);
    Link(u"none"_s, u"cloud/l"_s);
    const std::map<std::string, std::string> before = Entries();
    InThisWorld([&] {
        for (const QString& taken : {u"b"_s, u"f"_s, u"l"_s, u"a"_s})
            EXPECT_EQ(Move(u"a"_s, taken, Existing::Keep).Problem(), FileProblem::NameTaken);
        for (const QString& taken : {u"b"_s, u"f"_s, u"l"_s})
            EXPECT_EQ(Move(u"g"_s, taken, Existing::Keep).Problem(), FileProblem::NameTaken);
        EXPECT_EQ(Move(u"none"_s, u"free"_s, Existing::Keep).Problem(), FileProblem::Missing);
        EXPECT_EQ(Move(u"none"_s, u"b"_s, Existing::Keep).Problem(), FileProblem::Missing);
    });
    EXPECT_EQ(Entries(), before);
}

TEST_P(RootedMoves, PutNoFolderIntoItself)
{
    tree.File(u"cloud/f/x"_s, "x");
    const std::map<std::string, std::string> before = Entries();
    InThisWorld([&] { EXPECT_FALSE(Move(u"f"_s, u"f/g"_s, Existing::Keep)); });
    EXPECT_EQ(Entries(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Worlds, RootedMoves,
    ::testing::Values(World{"Rich", {}}, World{"WithoutCarefulRename", {noCarefulRename}},
                      World{"WhereItIsUnknown", {unknownRename}},
                      World{"WithoutHardLinksEither", {noCarefulRename, noHardLinks}},
                      World{"WithNothing", {noOpenAtOnce, unknownRename, noHardLinks}}),
    Named);

TEST_F(RootedFoldersOnPosix, LeaveNothingWhereAReservedNameCannotBeUsed)
{
    tree.File(u"cloud/a"_s, "a").File(u"cloud/f/x"_s, "x");
    const auto work = [&] {
        for (const QString& name : {u"a"_s, u"f"_s}) {
            const Base::FileResult moved = Move(name, u"new"_s, Existing::Keep);
            EXPECT_EQ(moved.Text(), "new: Input/output error");
        }
        return !HasFailure();
    };
    EXPECT_EQ(InAPoorerWorld({noCarefulRename, noHardLinks, {SYS_renameat, EIO}}, work), Good);
    EXPECT_EQ(tree.Contents(u"cloud"_s), (FileTree::Snapshot{{u"a"_s, "a"}, {u"f/x"_s, "x"}}));
}

TEST_F(RootedFoldersOnPosix, SayWhatTheDiskSays)
{
    tree.File(u"cloud/a"_s, "a").File(u"cloud/b"_s, "b");
    const auto work = [&] {
        EXPECT_EQ(Move(u"a"_s, u"c"_s, Existing::Keep).Text(), "c: Input/output error");
        EXPECT_EQ(Move(u"a"_s, u"b"_s, Existing::Replace).Text(), "b: Input/output error");
        EXPECT_EQ(root.Remove("a").Text(), "a: Input/output error");
        EXPECT_EQ(root.RemoveFolder("f").Text(), "f: Input/output error");
        EXPECT_EQ(root.MakeFolders("f/g").Text(), "f: Input/output error");
        EXPECT_EQ(root.MakePrivateFolder("f").Text(), "f: Input/output error");
        EXPECT_EQ(root.Flush("a").Text(), "Cannot flush a: Input/output error");
        return !HasFailure();
    };
    EXPECT_EQ(InAPoorerWorld({{SYS_renameat2, EIO},
                              {SYS_renameat, EIO},
                              {SYS_unlinkat, EIO},
                              {SYS_mkdirat, EIO},
                              {SYS_fdatasync, EIO}},
                             work),
              Good);
    const auto lists = [&] {
        std::vector<std::filesystem::path> names;
        return root.List("", names).Code() == EIO &&
               Move(u"a"_s, u"c"_s, Existing::Keep).Code() == EIO;
    };
    EXPECT_EQ(InAPoorerWorld({{SYS_getdents64, EIO}, noCarefulRename, {SYS_linkat, EIO}}, lists),
              Good);
    const auto isFullWhereSomethingExists = [&] {
        return root.RemoveFolder("f").Problem() == FileProblem::NotEmpty;
    };
    EXPECT_EQ(InAPoorerWorld({{SYS_unlinkat, EEXIST}}, isFullWhereSomethingExists), Good);
}

TEST_F(RootedFoldersOnPosix, FlushTheFolderToo)
{
    tree.File(u"cloud/a"_s, "a");
    const auto fails = [&] { return root.Flush("a").Code() == EIO; };
    const auto works = [&] { return bool(root.Flush("a")); };
    EXPECT_EQ(InAPoorerWorld({{SYS_fsync, EIO}}, fails), Good);
    EXPECT_EQ(InAPoorerWorld({{SYS_fsync, EINVAL}, {SYS_fdatasync, ENOTSUP}}, works), Good);
}

TEST_F(RootedFoldersOnPosix, MoveOneNameOfAFileOntoAnotherOneOfIt)
{
    tree.File(u"cloud/a"_s, "a").Folder(u"cloud/sub"_s).Folder(u"elsewhere"_s);
    HardLink(u"cloud/a"_s, u"cloud/b"_s);
    HardLink(u"cloud/a"_s, u"cloud/sub/a"_s);
    HardLink(u"cloud/a"_s, u"elsewhere/a"_s);
    EXPECT_TRUE(Move(u"a"_s, u"a"_s, Existing::Replace));
    EXPECT_EQ(Names(u""_s), (std::set<std::string>{"a", "b", "sub"}));
    EXPECT_EQ(Move(u"a"_s, u"b"_s, Existing::Keep).Problem(), FileProblem::NameTaken);
    EXPECT_TRUE(Move(u"a"_s, u"b"_s, Existing::Replace));
    EXPECT_EQ(Names(u""_s), (std::set<std::string>{"b", "sub"}));
    EXPECT_TRUE(Move(u"b"_s, u"sub/a"_s, Existing::Replace));
    EXPECT_EQ(Names(u""_s), std::set<std::string>{"sub"});
    EXPECT_EQ(Read(u"sub/a"_s), "a");
    EXPECT_EQ(tree.Read(u"elsewhere/a"_s), "a");
}

TEST_F(RootedFoldersOnPosix, ReplaceOneNameOfAFileAndLeaveItsOtherNamesAlone)
{
    tree.File(u"cloud/a"_s, "old").File(u"cloud/new"_s, "new");
    HardLink(u"cloud/a"_s, u"outside/a"_s);
    EXPECT_TRUE(Move(u"new"_s, u"a"_s, Existing::Replace));
    EXPECT_EQ(tree.Read(u"cloud/a"_s), "new");
    EXPECT_EQ(tree.Read(u"outside/a"_s), "old");
    HardLink(u"cloud/a"_s, u"outside/b"_s);
    EXPECT_TRUE(root.Remove("a"));
    EXPECT_EQ(tree.Read(u"outside/b"_s), "new");
}

TEST_F(RootedFoldersOnPosix, MayBeReachedThroughALink)
{
    tree.File(u"cloud/a"_s, "a");
    Link(u"cloud"_s, u"link"_s);
    ASSERT_TRUE(root.Open(Native(tree.Path(u"link"_s))));
    EXPECT_EQ(Read(u"a"_s), "a");
    EXPECT_TRUE(root.IsAtItsPath());
    ASSERT_EQ(::unlink(Native(tree.Path(u"link"_s)).c_str()), 0);
    Link(u"outside"_s, u"link"_s);
    EXPECT_FALSE(root.IsAtItsPath());
    EXPECT_EQ(Read(u"a"_s), "a") << "what was opened is what is worked in";
}

TEST_F(RootedFoldersOnPosix, AreWorkedInWhereverTheyAreRenamedTo)
{
    tree.File(u"cloud/a"_s, "a").Folder(u"other"_s);
    ASSERT_EQ(std::rename(Native(tree.Path(u"cloud"_s)).c_str(),
                          Native(tree.Path(u"other/was"_s)).c_str()),
              0);
    EXPECT_FALSE(root.IsAtItsPath());
    tree.File(u"cloud/a"_s, "foreign");
    EXPECT_FALSE(root.IsAtItsPath());
    EXPECT_TRUE(Move(u"a"_s, u"b"_s, Existing::Keep));
    EXPECT_EQ(tree.Read(u"other/was/b"_s), "a");
    EXPECT_EQ(tree.Read(u"cloud/a"_s), "foreign");
}

TEST_F(RootedFoldersOnPosix, GiveAPrivateFolderToItsOwnerAlone)
{
    const mode_t umask = ::umask(0);
    EXPECT_TRUE(root.MakePrivateFolder(".own"));
    EXPECT_TRUE(root.MakeFolders("sub"));
    ::umask(umask);
    EXPECT_EQ(StatOf(u"cloud/.own"_s).st_mode & 07777, mode_t(0700));
    EXPECT_EQ(StatOf(u"cloud/sub"_s).st_mode & 07777, mode_t(0777));
}

TEST_F(RootedFoldersOnPosix, WaitForNoPipe)
{
    ASSERT_EQ(::mkfifo(Native(tree.Path(u"cloud/pipe"_s)).c_str(), 0600), 0);
    Base::Handle handle = Base::NoHandle;
    EXPECT_EQ(root.OpenForReading("pipe", handle).Text(), "pipe: not a regular file");
    EXPECT_EQ(Kind(u"pipe"_s), FileKind::Other);
    EXPECT_TRUE(root.Remove("pipe"));
}

TEST_F(RootedFoldersOnPosix, TakeBackslashesAndDotsInNamesAsTheyAre)
{
    tree.File(u"cloud/..\\x"_s, "a").File(u"cloud/..."_s, "b");
    EXPECT_EQ(Read(u"..\\x"_s), "a");
    EXPECT_TRUE(Move(u"..."_s, u"C:\\x"_s, Existing::Keep));
    EXPECT_EQ(Names(u""_s), (std::set<std::string>{"..\\x", "C:\\x"}));
}

} // namespace Halvern::Test
