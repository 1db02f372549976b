// SPDX-License-Identifier: Apache-2.0

// Nothing outside the cloud folder is written or deleted, whatever links lead out of it.

#include "ScenarioFixture.h"

#include <QtCore/QFile>

#include <atomic>
#include <functional>
#include <thread>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Halvern::Test {

namespace {

class CloudFolderOnly : public ScenarioFixture
{
protected:
    CloudFolderOnly()
    {
        Design(u"work/proj/top.gltf"_s, {u"../lib/part.bin"_s}, "source");
        tree.File(u"work/lib/part.bin"_s, "part")
            .File(u"outside/precious.txt"_s, "precious")
            .File(u"outside/lib/part.bin"_s, "precious part")
            .Folder(u"cloud"_s);
    }
    void Link(const QString& at, const QString& to)
    {
        ASSERT_TRUE(QFile::link(tree.Path(to), tree.Path(at)));
    }
    void ExpectOutsideUntouched(const std::function<void()>& action)
    {
        const auto outside = Stamps(u"outside"_s);
        const auto work = Stamps(u"work"_s);
        action();
        EXPECT_EQ(Stamps(u"outside"_s), outside);
        EXPECT_EQ(Stamps(u"work"_s), work);
    }
};

/// Puts a symbolic link in the place of a folder and back again, as fast as it can.
class Swapper
{
public:
    Swapper(const QString& folder, const QString& link)
        : m_folder(QFile::encodeName(folder)), m_link(QFile::encodeName(link)),
          m_thread([this] { Run(); })
    {}
    ~Swapper()
    {
        m_ends = true;
        m_thread.join();
    }

private:
    void Run()
    {
        while (!m_ends)
            ::syscall(SYS_renameat2, AT_FDCWD, m_folder.constData(), AT_FDCWD, m_link.constData(),
                      RENAME_EXCHANGE);
    }

    const QByteArray m_folder;
    const QByteArray m_link;
    std::atomic<bool> m_ends{false};
    std::thread m_thread;
};

} // namespace

TEST_F(CloudFolderOnly, ATargetFolderThatIsASymbolicLinkIsNotFollowed)
{
    Link(u"cloud/Demo"_s, u"outside"_s);
    for (const QString& policy : {u"stop"_s, u"keep"_s, u"rename"_s, u"replace"_s}) {
        ExpectOutsideUntouched([&] {
            const ImportReport report =
                Report({u"proj/top.gltf"_s, u"--to"_s, u"Demo"_s, u"--collisions"_s, policy});
            EXPECT_NE(report.exitCode, 0) << ::testing::PrintToString(report);
        });
    }
}

TEST_F(CloudFolderOnly, AFolderOfALinkedFileThatIsASymbolicLinkFailsThatFileAndNoOther)
{
    tree.Folder(u"cloud/Demo"_s);
    Link(u"cloud/Demo/lib"_s, u"outside"_s);
    ExpectOutsideUntouched([&] {
        const ImportReport report = Report({u"proj/top.gltf"_s, u"--to"_s, u"Demo"_s});
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_EQ(report.StatusOf(u"work/lib/part.bin"_s), u"failed"_s);
        EXPECT_EQ(report.StatusOf(u"work/proj/top.gltf"_s), u"copied"_s);
    });
}

TEST_F(CloudFolderOnly, ASymbolicLinkThatLeadsBackIntoTheCloudFolderIsNotFollowedEither)
{
    tree.Folder(u"cloud/Demo"_s).File(u"cloud/other/part.bin"_s, "of another project");
    Link(u"cloud/Demo/lib"_s, u"cloud/other"_s);
    const ImportReport report =
        Report({u"proj/top.gltf"_s, u"--to"_s, u"Demo"_s, u"--collisions"_s, u"replace"_s});
    EXPECT_NE(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(u"cloud/other/part.bin"_s), "of another project");
}

TEST_F(CloudFolderOnly, ACopyWhoseFolderBecameASymbolicLinkIsNotUpdatedThere)
{
    const QStringList arguments{u"proj"_s, u"--to"_s, u"Demo"_s, u"--collisions"_s, u"replace"_s};
    ASSERT_EQ(Import(arguments).exitCode, 0);
    ASSERT_TRUE(QFile::rename(tree.Path(u"cloud/Demo/proj"_s), tree.Path(u"outside/proj"_s)));
    Link(u"cloud/Demo/proj"_s, u"outside/proj"_s);
    Save(u"work/proj/top.gltf"_s, DesignFile(u"top.gltf"_s, {u"../lib/part.bin"_s}, "second"));
    ExpectOutsideUntouched([&] {
        const ImportReport report = Report(arguments);
        EXPECT_NE(report.exitCode, 0) << ::testing::PrintToString(report);
    });
}

TEST_F(CloudFolderOnly, PruneTakesNoCopyThroughAFolderThatBecameASymbolicLink)
{
    tree.File(u"work/proj/gone.txt"_s, "gone");
    const QStringList arguments{u"proj"_s, u"--to"_s, u"Demo"_s, u"--prune"_s};
    ASSERT_EQ(Import(arguments).exitCode, 0);
    ASSERT_TRUE(QFile::rename(tree.Path(u"cloud/Demo/proj"_s), tree.Path(u"outside/proj"_s)));
    Link(u"cloud/Demo/proj"_s, u"outside/proj"_s);
    tree.Remove(u"work/proj/gone.txt"_s);
    ExpectOutsideUntouched([&] { Report(arguments); });
}

TEST_F(CloudFolderOnly, AMoveDeletesNoSourceWhoseCopyWouldLieOutside)
{
    Link(u"cloud/Demo"_s, u"outside"_s);
    ExpectOutsideUntouched([&] {
        EXPECT_NE(Report({u"proj"_s, u"--to"_s, u"Demo"_s, u"--move"_s}).exitCode, 0);
    });
}

TEST_F(CloudFolderOnly, ALayoutCannotPlaceAFileOutside)
{
    RegisterTestLayout(tree, u"plugins"_s);
    tree.File(u"work/proj/top.tlk"_s, "link 1 ../lib/outside.tlk\nlink 2 ../lib/good.tlk\n")
        .File(u"work/lib/outside.tlk"_s, "part")
        .File(u"work/lib/good.tlk"_s, "good");
    ExpectOutsideUntouched([&] {
        const ImportReport report = Report({u"proj/top.tlk"_s, u"--to"_s, u"Demo"_s});
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_EQ(report.StatusOf(u"work/lib/outside.tlk"_s), u"failed"_s);
        EXPECT_EQ(report.StatusOf(u"work/lib/good.tlk"_s), u"copied"_s);
    });
    EXPECT_EQ(tree.Read(u"cloud/Demo/top.tlk"_s),
              "link 1 ../lib/outside.tlk\nlink 2 layout/good.tlk\n");
}

TEST_F(CloudFolderOnly, AFolderThatIsSwappedForALinkWhileTheJobRunsIsNotFollowed)
{
    for (int file = 0; file < 40; ++file)
        tree.File(u"work/many/f%1.bin"_s.arg(file), PatternBytes(20'000, quint32(file)));
    tree.Folder(u"cloud/Demo/many"_s);
    Link(u"cloud/decoy"_s, u"outside"_s);
    ExpectOutsideUntouched([&] {
        const Swapper swapper(tree.Path(u"cloud/Demo/many"_s), tree.Path(u"cloud/decoy"_s));
        for (int round = 0; round < 8; ++round)
            Import({u"many"_s, u"--to"_s, u"Demo"_s, u"--collisions"_s, u"replace"_s,
                    u"--on-conflict"_s, u"replace"_s, u"--force"_s});
    });
}

TEST_F(CloudFolderOnly, AMovedFileInAFolderThatIsSwappedForALinkStaysOrHasItsCopy)
{
    QMap<QString, QByteArray> sources;
    for (int file = 0; file < 20; ++file)
        sources.insert(u"f%1.bin"_s.arg(file), PatternBytes(20'000, quint32(file)));
    for (auto it = sources.begin(); it != sources.end(); ++it)
        tree.File(u"work/many/"_s + it.key(), it.value());
    tree.Folder(u"cloud/Demo/many"_s);
    Link(u"cloud/decoy"_s, u"outside"_s);
    const auto outside = Stamps(u"outside"_s);
    {
        const Swapper swapper(tree.Path(u"cloud/Demo/many"_s), tree.Path(u"cloud/decoy"_s));
        Import({u"many"_s, u"--to"_s, u"Demo"_s, u"--move"_s});
    }
    EXPECT_EQ(Stamps(u"outside"_s), outside);
    const QString real =
        Stamp(u"cloud/decoy"_s).kind == "folder" ? u"cloud/decoy"_s : u"cloud/Demo/many"_s;
    for (auto it = sources.begin(); it != sources.end(); ++it) {
        const QByteArray copy = Stamp(real + u'/' + it.key()).content;
        EXPECT_TRUE(Stamp(u"work/many/"_s + it.key()).content == it.value() || copy == it.value())
            << it.key().toStdString();
    }
}

} // namespace Halvern::Test
