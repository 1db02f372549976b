// SPDX-License-Identifier: Apache-2.0

// Faults that only a POSIX system lets a test arrange for.

#include "FileTree.h"

#include "pluginkit/FormatError.h"
#include "pluginkit/ReplacementFile.h"
#include "pluginkit/Utf.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <csignal>
#include <functional>
#include <optional>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Test {

using namespace PluginKit;
using namespace Qt::StringLiterals;

namespace {

/// Lowers a limit of the process while it lives.
class Limit
{
public:
    Limit(__rlimit_resource what, rlim_t value) : m_what(what)
    {
        ::getrlimit(what, &m_before);
        rlimit lowered = m_before;
        lowered.rlim_cur = value;
        m_signal = std::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(what, &lowered);
    }
    ~Limit()
    {
        ::setrlimit(m_what, &m_before);
        std::signal(SIGXFSZ, m_signal);
    }
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;

private:
    __rlimit_resource m_what;
    rlimit m_before = {};
    void (*m_signal)(int) = SIG_DFL;
};

class PosixReplacement : public ::testing::Test
{
protected:
    PosixReplacement() { tree.File(u"a.gltf"_s, "old"); }

    std::filesystem::path Path(const QString& name) const
    {
        return PathFromUtf8(tree.Path(name).toStdString());
    }
    /// The reason why replacing a.gltf failed; empty when it did not. A limit on file handles ends
    /// before the reason is read: the sanitizers' checks need handles themselves.
    std::string Replace(const QString& name = u"a.gltf"_s,
                        const std::function<void()>& beforeCommit = {},
                        std::optional<rlim_t> handles = {})
    {
        try {
            std::optional<Limit> limit;
            if (handles)
                limit.emplace(RLIMIT_NOFILE, *handles);
            InputFile source(Path(name));
            ReplacementFile replacement(source);
            replacement.Write("new content");
            if (beforeCommit)
                beforeCommit();
            replacement.Commit();
        } catch (const FormatError& error) {
            return error.what();
        }
        return {};
    }
    void ExpectUntouched() const
    {
        EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{u"a.gltf"_s, "old"}}));
    }

    FileTree tree;
};

struct stat StatusOf(const std::filesystem::path& path)
{
    struct stat status = {};
    ::stat(path.c_str(), &status);
    return status;
}

} // namespace

TEST_F(PosixReplacement, ADiskThatFillsUpLeavesTheOriginalIntact)
{
    const Limit limit(RLIMIT_FSIZE, 5);
    EXPECT_EQ(Replace(), "the temporary file cannot be written: File too large");
    ExpectUntouched();
}

TEST_F(PosixReplacement, WithoutAFreeFileHandleNothingIsLeftBehind)
{
    rlim_t limit = 3;
    std::string reason = "none";
    // With each further handle the next step fails, until one more lets it pass.
    for (; limit < 64 && !reason.empty(); ++limit) {
        reason = Replace(u"a.gltf"_s, {}, limit);
        if (!reason.empty()) {
            EXPECT_NE(reason.find("Too many open files"), std::string::npos) << reason;
            ExpectUntouched();
        }
    }
    EXPECT_GT(limit, 4U);
    EXPECT_EQ(tree.Read(u"a.gltf"_s), "new content");
}

TEST_F(PosixReplacement, AFileThatVanishesMeanwhileIsNotMadeAgain)
{
    const QString name = u"a.gltf"_s;
    EXPECT_EQ(Replace(name, [&] { tree.Remove(name); }),
              "the file's permissions cannot be read: No such file or directory");
    EXPECT_EQ(tree.Contents(), FileTree::Snapshot());
}

TEST_F(PosixReplacement, AFileSwappedForAFolderIsNotReplaced)
{
    const QString name = u"a.gltf"_s;
    EXPECT_EQ(Replace(name, [&] { tree.Remove(name).Folder(name); }), "not a regular file");
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{u"a.gltf/"_s, ""}}));
}

TEST_F(PosixReplacement, ASymbolicLinkStaysOneAndItsTargetIsReplaced)
{
    tree.File(u"store/real.gltf"_s, "old").Remove(u"a.gltf"_s);
    ASSERT_TRUE(QFile::link(u"store/real.gltf"_s, tree.Path(u"a.gltf"_s)));
    EXPECT_EQ(Replace(), "");
    EXPECT_TRUE(QFileInfo(tree.Path(u"a.gltf"_s)).isSymLink());
    EXPECT_EQ(tree.Read(u"store/real.gltf"_s), "new content");
}

TEST_F(PosixReplacement, OwnerAndEveryBitOfTheModeAreKept)
{
    const std::filesystem::path file = Path(u"a.gltf"_s);
    if (::geteuid() == 0) { // only root can give files away
        ASSERT_EQ(::chown(file.c_str(), 12345, 23456), 0);
    }
    ASSERT_EQ(::chmod(file.c_str(), 01741), 0);
    const struct stat before = StatusOf(file);
    EXPECT_EQ(Replace(), "");
    const struct stat after = StatusOf(file);
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
    EXPECT_NE(after.st_ino, before.st_ino);
}

TEST_F(PosixReplacement, ANameAsLongAsTheSystemAllowsCanBeReplaced)
{
    const QString name(255, u'x');
    tree.File(name, "old");
    EXPECT_EQ(Replace(name), "");
    EXPECT_EQ(tree.Read(name), "new content");
}

TEST_F(PosixReplacement, ANamedPipeIsRefusedWithoutWaitingForAWriter)
{
    ASSERT_EQ(::mkfifo(Path(u"pipe.gltf"_s).c_str(), 0600), 0);
    EXPECT_EQ(Replace(u"pipe.gltf"_s), "not a regular file");
}

TEST_F(PosixReplacement, ReadingLeavesTheAccessTimeAlone)
{
    const std::filesystem::path file = Path(u"a.gltf"_s);
    const timespec longAgo[2] = {{1000000000, 0}, {1100000000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), longAgo, 0), 0);
    EXPECT_EQ(InputFile(file).Read(0, 3), "old");
    EXPECT_EQ(StatusOf(file).st_atim.tv_sec, 1000000000);
    EXPECT_EQ(StatusOf(file).st_mtim.tv_sec, 1100000000);
}

} // namespace Halvern::Test
