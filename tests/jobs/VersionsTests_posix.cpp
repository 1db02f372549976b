// SPDX-License-Identifier: Apache-2.0

// Symbolic links, permissions, locks and disks as POSIX has them.

#include "VersionsFixture.h"

#include "SmallDisk.h"

#include <QtCore/QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Test {

using namespace Jobs;

namespace {

class OldVersionsOnPosix : public VersionsFixture
{
protected:
    void Link(const QString& to, const QString& from)
    {
        ASSERT_TRUE(QFile::link(tree.Path(to), tree.Path(from)));
    }

    mode_t ModeOf(const QString& name) const
    {
        struct stat status = {};
        EXPECT_EQ(::stat(tree.Path(name).toUtf8().constData(), &status), 0);
        return status.st_mode & 07777;
    }
};

} // namespace

TEST_F(OldVersionsOnPosix, AreNeverWrittenThroughASymbolicLink)
{
    Write(u"a"_s, {"one", "now"});
    Write(u"d/e"_s, {"one", "now"});
    tree.File(u"work/mine"_s, "mine").File(u"work/folder/e"_s, "mine, too");
    tree.Remove(u"cloud/a"_s).Remove(u"cloud/d"_s);
    Link(u"work/mine"_s, u"cloud/a"_s);
    Link(u"work/folder"_s, u"cloud/d"_s);
    const Refusal file = RefusalOf([&] { Restore(Cloud(u"a"_s)); });
    EXPECT_EQ(file.kind, JobErrorKind::RestoreRefused);
    EXPECT_EQ(file.text, u"cloud/a is a symbolic link"_s);
    const Refusal folder = RefusalOf([&] { Restore(Cloud(u"d/e"_s)); });
    EXPECT_EQ(folder.kind, JobErrorKind::RestoreRefused);
    EXPECT_EQ(folder.text, u"cloud/d/e lies beyond a symbolic link"_s);
    EXPECT_EQ(tree.Read(u"work/mine"_s), "mine");
    EXPECT_EQ(tree.Read(u"work/folder/e"_s), "mine, too");
    Link(u"work/nowhere"_s, u"work/dangling"_s);
    EXPECT_EQ(RefusalOf([&] { Restore(Cloud(u"a"_s), 1, tree.Path(u"work/dangling"_s)); }).text,
              u"work/dangling exists already"_s);
    EXPECT_FALSE(tree.Exists(u"work/nowhere"_s));
}

TEST_F(OldVersionsOnPosix, AreFoundWhereTheCloudFolderIsReachedByALink)
{
    Write(u"Demo/a"_s, {"one", "now"});
    Link(u"cloud"_s, u"linked"_s);
    EXPECT_EQ(VersionedFile(*session, tree.Path(u"linked/Demo/a"_s)), Cloud(u"Demo/a"_s));
    Restore(tree.Path(u"linked/Demo/a"_s));
    EXPECT_EQ(tree.Read(u"cloud/Demo/a"_s), "one");
}

TEST_F(OldVersionsOnPosix, ARestoredFileHasThePermissionsOfTheOneItReplaces)
{
    Write(u"a"_s, {"one", "now"});
    Write(u"b"_s, {"one", "now"});
    ASSERT_TRUE(::chmod(Cloud(u"a"_s).toUtf8().constData(), 0640) == 0);
    tree.Remove(u"cloud/b"_s);
    Restore(Cloud(u"a"_s));
    Restore(Cloud(u"b"_s));
    EXPECT_EQ(ModeOf(u"cloud/a"_s), mode_t(0640));
    tree.File(u"work/usual"_s);
    EXPECT_EQ(ModeOf(u"cloud/b"_s), ModeOf(u"work/usual"_s)) << "not those of the copy";
}

TEST_F(OldVersionsOnPosix, AFileThatAnotherProgramHoldsIsNotReplaced)
{
    Write(u"a"_s, {"one", "now"});
    const int held = ::open(Cloud(u"a"_s).toUtf8().constData(), O_RDWR);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    const Refusal refusal = RefusalToRestore(Cloud(u"a"_s));
    EXPECT_EQ(refusal.kind, JobErrorKind::RestoreFailed);
    EXPECT_EQ(refusal.text, u"cloud/a is not restored: another program has it open"_s);
    ::close(held);
    Restore(Cloud(u"a"_s));
    EXPECT_EQ(tree.Read(u"cloud/a"_s), "one");
}

TEST_F(OldVersionsOnPosix, OnAFullDiskTheFileStaysAsItWas)
{
    session.reset();
    const SmallDisk disk(tree.Path(u"cloud"_s), 256 * 1024);
    Begin();
    const QByteArray large = PatternBytes(200 * 1024);
    Write(u"a"_s, {large, "now"});
    tree.File(u"cloud/other"_s, PatternBytes(150 * 1024));
    const Refusal refusal = RefusalToRestore(Cloud(u"a"_s));
    EXPECT_EQ(refusal.kind, JobErrorKind::RestoreFailed);
    EXPECT_EQ(refusal.text, u"cloud/a is not restored: No space left on device"_s);
    tree.Remove(u"cloud/other"_s);
    Restore(Cloud(u"a"_s));
    EXPECT_EQ(tree.Read(u"cloud/a"_s), large);
    session.reset();
}

} // namespace Halvern::Test
