// SPDX-License-Identifier: Apache-2.0

// The cloud folder by another name: what lies in it is judged by where a path leads.

#include "DesignFiles.h"
#include "ScenarioFixture.h"

#include <QtCore/QFile>

namespace Halvern::Test {

namespace {

/// cloud/std/p.bin is there already, and "alias" leads to "cloud".
class CloudFolderByAnotherName : public ScenarioFixture
{
protected:
    CloudFolderByAnotherName()
    {
        tree.File(u"cloud/std/p.bin"_s, "standard");
        Link(u"alias"_s, u"cloud"_s);
    }
    void Link(const QString& at, const QString& to)
    {
        ASSERT_TRUE(QFile::link(tree.Path(to), tree.Path(at)));
    }
    /// Nothing is copied but the file itself.
    void ExpectInPlace(const ImportReport& report) const
    {
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        QStringList statuses = report.Statuses();
        statuses.sort();
        EXPECT_EQ(statuses, (QStringList{u"copied"_s, u"in-place"_s}))
            << ::testing::PrintToString(report);
        EXPECT_EQ(tree.Read(u"cloud/std/p.bin"_s), "standard");
    }
};

} // namespace

TEST_F(CloudFolderByAnotherName, AWholePathThroughASymbolicLinkStaysAsItIs)
{
    for (const QString& type : DesignTypes()) {
        const QString name = u"top."_s + type;
        Design(u"work/"_s + name, {tree.Path(u"alias/std/p.bin"_s)});
        ExpectInPlace(Report({name, u"--to"_s, u"Demo"_s}));
        EXPECT_EQ(tree.Read(u"cloud/Demo/"_s + name), tree.Read(u"work/"_s + name));
    }
}

TEST_F(CloudFolderByAnotherName, ALinkedFolderOfTheProjectLeadsThere)
{
    tree.Folder(u"work/proj"_s);
    Link(u"work/proj/std"_s, u"cloud/std"_s);
    Design(u"work/proj/top.gltf"_s, {u"std/p.bin"_s});
    ExpectInPlace(Report({u"proj/top.gltf"_s, u"--to"_s, u"Demo"_s}));
    EXPECT_EQ(LinksOf(u"cloud/Demo/top.gltf"_s), QStringList{u"../std/p.bin"_s});
    const ImportReport again = Report({u"proj/top.gltf"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(again.exitCode, 0) << ::testing::PrintToString(again);
    EXPECT_EQ(again.Statuses(), (QStringList{u"unchanged"_s, u"in-place"_s}));
}

TEST_F(CloudFolderByAnotherName, ASymbolicLinkToAFileOfItLeadsThere)
{
    tree.Folder(u"work/proj"_s);
    Link(u"work/proj/p.bin"_s, u"cloud/std/p.bin"_s);
    Design(u"work/proj/top.gltf"_s, {u"p.bin"_s});
    ExpectInPlace(Report({u"proj/top.gltf"_s, u"--to"_s, u"Demo"_s}));
    EXPECT_EQ(LinksOf(u"cloud/Demo/top.gltf"_s), QStringList{u"../std/p.bin"_s});
}

TEST_F(CloudFolderByAnotherName, AFolderInItThatIsASymbolicLinkToAnotherLeadsThere)
{
    Link(u"cloud/short"_s, u"cloud/std"_s);
    Design(u"work/top.gltf"_s, {tree.Path(u"cloud/short/p.bin"_s)});
    ExpectInPlace(Report({u"top.gltf"_s, u"--to"_s, u"Demo"_s}));
    EXPECT_EQ(LinksOf(u"cloud/Demo/top.gltf"_s), QStringList{tree.Path(u"cloud/short/p.bin"_s)});
}

TEST_F(CloudFolderByAnotherName, ItMayBeSetByThatName)
{
    Design(u"work/top.gltf"_s, {tree.Path(u"cloud/std/p.bin"_s)});
    ExpectInPlace(ReportOf(
        Run({u"import"_s, u"top.gltf"_s, u"--json"_s, u"--to"_s, u"Demo"_s, u"--cloud-folder"_s,
             tree.Path(u"alias"_s), u"--database"_s, tree.Path(u"sync.db"_s)})));
    EXPECT_EQ(tree.Read(u"cloud/Demo/top.gltf"_s), tree.Read(u"work/top.gltf"_s));
}

TEST_F(CloudFolderByAnotherName, ATargetMayBeGivenByThatName)
{
    Design(u"work/top.gltf"_s, {tree.Path(u"cloud/std/p.bin"_s)});
    ExpectInPlace(Report({u"top.gltf"_s, u"--to"_s, tree.Path(u"alias/Demo"_s)}));
    const ImportReport again = Report({u"top.gltf"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(again.StatusOf(u"work/top.gltf"_s), u"unchanged"_s);
}

TEST_F(CloudFolderByAnotherName, AFileThatComesFromElsewhereIsCopiedThoughItsPathPassesThroughIt)
{
    tree.File(u"elsewhere/q.bin"_s, "other");
    Design(u"work/top.gltf"_s, {tree.Path(u"alias/../elsewhere/q.bin"_s)});
    const ImportReport report = Report({u"top.gltf"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(u"cloud/Demo/elsewhere/q.bin"_s), "other");
}

} // namespace Halvern::Test
