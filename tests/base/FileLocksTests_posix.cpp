// SPDX-License-Identifier: Apache-2.0

#include "BaseFiles.h"
#include "FileTree.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>
#include <QtCore/QProcess>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

using namespace Halvern::Test;
using namespace Qt::StringLiterals;

/// A second process with a lock of some kind on a file.
class Holder
{
public:
    Holder(const QString& kind, const QString& file)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(LOCK_HOLDER), {kind, file});
        while (m_process.waitForReadyRead(30'000) && !m_process.canReadLine()) {
        }
        EXPECT_EQ(m_process.readLine(), "ready\n") << "the other process did not get its lock";
    }
    ~Holder()
    {
        m_process.closeWriteChannel();
        EXPECT_TRUE(m_process.waitForFinished(30'000));
    }

private:
    QProcess m_process;
};

class LockProbe : public ::testing::Test
{
protected:
    LockProbe() { tree.File(u"a.prt"_s, QByteArray(5000, 'x')); }
    bool IsLocked() { return IsFileLocked(path); }

    FileTree tree;
    const QString path = tree.Path(u"a.prt"_s);
};

TEST_F(LockProbe, SaysNoForAFileThatNobodyHolds)
{
    EXPECT_FALSE(IsLocked());
}

TEST_F(LockProbe, SaysNoForAFileThatDoesNotExist)
{
    EXPECT_FALSE(IsFileLocked(tree.Path(u"gone.prt"_s)));
    EXPECT_FALSE(IsFileLocked(QString()));
    EXPECT_FALSE(tree.Exists(u"gone.prt"_s));
}

struct LockKind
{
    const char* name;
    QString kind;
    bool locks;
};

void PrintTo(const LockKind& kind, std::ostream* out)
{
    *out << kind.name;
}

class LockKinds : public LockProbe, public ::testing::WithParamInterface<LockKind>
{};

TEST_P(LockKinds, OfAnotherProcessAreToldApart)
{
    {
        const Holder holder(GetParam().kind, path);
        EXPECT_EQ(IsLocked(), GetParam().locks);
        EXPECT_EQ(IsLocked(), GetParam().locks) << "the probe itself changed something";
    }
    EXPECT_FALSE(IsLocked()) << "the other process has ended";
}

INSTANTIATE_TEST_SUITE_P(Table, LockKinds,
                         ::testing::Values(LockKind{"ExclusiveFlock", u"flock"_s, true},
                                           LockKind{"SharedFlock", u"flock-shared"_s, false},
                                           LockKind{"WriteLock", u"write"_s, true},
                                           LockKind{"WriteLockOnItsEnd", u"tail"_s, true},
                                           LockKind{"WriteLockOfAnOpenFile", u"open-file"_s, true},
                                           LockKind{"ReadLock", u"read"_s, false},
                                           LockKind{"OpenOnly", u"open"_s, false}),
                         [](const auto& kind) { return kind.param.name; });

TEST_F(LockProbe, SaysNoForAReadOnlyFileEvenWhenItIsHeld)
{
    const Holder holder(u"flock"_s, path);
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0444), 0);
    EXPECT_FALSE(IsLocked());
}

TEST_F(LockProbe, LeavesNoLockBehind)
{
    EXPECT_FALSE(IsLocked());
    const Holder flock(u"flock"_s, path);
    const Holder range(u"write"_s, path);
}

TEST_F(LockProbe, LeavesTimesPermissionsAndContentAsTheyWere)
{
    struct stat before;
    struct stat after;
    ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &before), 0);
    const Holder holder(u"flock-shared"_s, path);
    EXPECT_FALSE(IsLocked());
    ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &after), 0);
    EXPECT_EQ(after.st_mtim.tv_sec, before.st_mtim.tv_sec);
    EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    EXPECT_EQ(after.st_atim.tv_nsec, before.st_atim.tv_nsec);
    EXPECT_EQ(after.st_ctim.tv_nsec, before.st_ctim.tv_nsec);
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(tree.Read(u"a.prt"_s), QByteArray(5000, 'x'));
}

TEST_F(LockProbe, FollowsASymbolicLinkToTheFileThatIsHeld)
{
    ASSERT_TRUE(QFile::link(path, tree.Path(u"link"_s)));
    const Holder holder(u"flock"_s, path);
    EXPECT_TRUE(IsFileLocked(tree.Path(u"link"_s)));
}

TEST_F(LockProbe, SaysYesForAProgramThatRuns)
{
    const QString program = tree.Path(u"program"_s);
    ASSERT_TRUE(QFile::copy(QStringLiteral(LOCK_HOLDER), program));
    EXPECT_FALSE(IsFileLocked(program));
    QProcess process;
    process.start(program, {u"open"_s, path});
    ASSERT_TRUE(process.waitForReadyRead(30'000));
    EXPECT_TRUE(IsFileLocked(program));
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForFinished(30'000));
    EXPECT_FALSE(IsFileLocked(program));
}

TEST_F(LockProbe, DoesNotWaitAtAPipe)
{
    const QString pipe = tree.Path(u"pipe"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(IsFileLocked(pipe)) << "it cannot be opened for append";
    EXPECT_LT(timer.elapsed(), 5000);
}

} // namespace
