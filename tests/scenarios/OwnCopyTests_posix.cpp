// SPDX-License-Identifier: Apache-2.0

// A move of what lies in the cloud folder already, under another name: nothing is deleted.

#include "Mounts.h"
#include "ScenarioFixture.h"

#include <QtCore/QFile>

#include <filesystem>

namespace Halvern::Test {

namespace {

/// cloud/Demo/a.txt and cloud/Demo/top.tlk, which links it.
class OwnCopy : public ScenarioFixture
{
protected:
    OwnCopy()
    {
        tree.File(u"cloud/Demo/a.txt"_s, "a").File(u"cloud/Demo/top.tlk"_s, "link 1 a.txt\n");
    }
    void ExpectAllThere(const FileTree::Snapshot& before)
    {
        EXPECT_EQ(tree.Contents(u"cloud"_s), before);
    }
};

} // namespace

TEST_F(OwnCopy, ThroughASymbolicLinkIsRefused)
{
    const auto before = tree.Contents(u"cloud"_s);
    ASSERT_TRUE(QFile::link(tree.Path(u"cloud/Demo"_s), tree.Path(u"work/Demo"_s)));
    for (const QString& source : {u"Demo"_s, u"Demo/a.txt"_s})
        EXPECT_EQ(Import({source, u"--to"_s, u"Demo"_s, u"--move"_s}).exitCode, 2);
    ExpectAllThere(before);
}

TEST_F(OwnCopy, UnderAnotherNameOfTheFileStays)
{
    const auto before = tree.Contents(u"cloud"_s);
    std::filesystem::create_hard_link(tree.Path(u"cloud/Demo/a.txt"_s).toStdString(),
                                      tree.Path(u"work/a.txt"_s).toStdString());
    const ImportReport report = Report({u"a.txt"_s, u"--to"_s, u"Demo"_s, u"--move"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(report.Of(u"work/a.txt"_s).reason,
              u"The source is its own copy and was not deleted"_s);
    EXPECT_EQ(report.Of(u"work/a.txt"_s).sourceStays, u"not-deleted"_s);
    EXPECT_EQ(tree.Read(u"work/a.txt"_s), "a");
    ExpectAllThere(before);
}

TEST_F(OwnCopy, ThroughAMountedFolderStays)
{
    const auto before = tree.Contents(u"cloud"_s);
    tree.Folder(u"work/Demo"_s);
    const Mount mount = Mount::Bind(tree.Path(u"work/Demo"_s), tree.Path(u"cloud/Demo"_s));
    ASSERT_TRUE(mount.IsMounted());
    for (int run = 0; run < 2; ++run) {
        const ImportReport report = Report({u"Demo"_s, u"--move"_s});
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_EQ(report.Of(u"work/Demo/a.txt"_s).sourceStays, u"not-deleted"_s);
        EXPECT_EQ(report.Lines().filter(u"moved "_s), QStringList());
        ExpectAllThere(before);
    }
}

} // namespace Halvern::Test
