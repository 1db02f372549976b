// SPDX-License-Identifier: Apache-2.0

#include "MappingOnDisk.h"
#include "ServicesFixture.h"

#include "syncservices/FileMapping.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <filesystem>

using namespace Halvern::SyncServices;
using namespace Halvern::Test;

namespace {

struct MappingInCloud : ServicesFixture
{};

} // namespace

TEST_F(MappingOnDisk, AFolderIsFlaggedOrADirectory)
{
    tree.Folder(QStringLiteral("d")).File(QStringLiteral("f"));
    EXPECT_TRUE(FileMapping(tree.Path(QStringLiteral("d")), QString(), 7).IsFolder());
    EXPECT_FALSE(FileMapping(tree.Path(QStringLiteral("f")), QString(), 7).IsFolder());
    EXPECT_FALSE(FileMapping(QString(), QString(), 7).IsFolder());
    FileMapping missing(tree.Path(QStringLiteral("gone")), QString(), 7);
    EXPECT_FALSE(missing.IsFolder());
    missing.SetFlag(FileMapping::Folder, true);
    EXPECT_TRUE(missing.IsFolder());
}

TEST_F(MappingOnDisk, APathLikeAUrlIsNeverLookedUp)
{
    tree.Folder(QStringLiteral("http:/host/d"));
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(tree.Path()));
    FileMapping mapping(QStringLiteral("http://host/d"), QStringLiteral("http://host/d"), 7);
    EXPECT_FALSE(mapping.IsFolder());
    EXPECT_FALSE(mapping.ExistsInTarget());
    mapping.UpdateSourceFileProperties();
    EXPECT_EQ(mapping.GetSourceFileSize(), -1);
    ASSERT_TRUE(QDir::setCurrent(before));
}

TEST_F(MappingOnDisk, ExistsInTargetAsksForTheTarget)
{
    tree.File(QStringLiteral("a"));
    const QString a = tree.Path(QStringLiteral("a"));
    const QString b = tree.Path(QStringLiteral("b"));
    EXPECT_TRUE(FileMapping(b, a, 7).ExistsInTarget());
    EXPECT_FALSE(FileMapping(a, b, 7).ExistsInTarget());
    EXPECT_FALSE(FileMapping(a, QString(), 7).ExistsInTarget());
}

TEST_F(MappingOnDisk, EqualPathsAreOneFileWhetherItExistsOrNot)
{
    EXPECT_TRUE(SameInTree("gone", "gone"));
    EXPECT_TRUE(Same(QStringLiteral("/x/../y/a"), QStringLiteral("/y//a")));
    EXPECT_FALSE(SameInTree("gone", "lost"));
    EXPECT_FALSE(Same(QStringLiteral("/x/a"), QString()));
    EXPECT_FALSE(Same(QString(), QString()));
}

TEST_F(MappingOnDisk, HardLinksAreTwoFiles)
{
    tree.File(QStringLiteral("a"));
    std::filesystem::create_hard_link(tree.Path(QStringLiteral("a")).toStdU16String(),
                                      tree.Path(QStringLiteral("b")).toStdU16String());
    EXPECT_FALSE(SameInTree("a", "b"));
}

TEST_F(MappingOnDisk, LetterCaseCountsWhereTheDiskSaysSo)
{
    tree.File(QStringLiteral("a.prt"), "1");
    const bool oneName = tree.Exists(QStringLiteral("A.prt"));
    if (!oneName)
        tree.File(QStringLiteral("A.prt"), "2");
    EXPECT_EQ(SameInTree("a.prt", "A.prt"), oneName);
}

TEST_F(MappingOnDisk, EqualContentIsNotTheSameFile)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1700000000);
    for (const auto& name : {QStringLiteral("a"), QStringLiteral("b")})
        tree.File(name, "same").Touch(name, time);
    EXPECT_FALSE(SameInTree("a", "b"));
}

TEST_F(MappingOnDisk, PropertiesAreThoseOfTheFileWhenTheyWereUpdated)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1700000000);
    tree.File(QStringLiteral("a"), "12345").Touch(QStringLiteral("a"), time);
    FileMapping mapping(tree.Path(QStringLiteral("a")), tree.Path(QStringLiteral("b")), 7);
    mapping.UpdateSourceFileProperties();
    mapping.UpdateTargetFileProperties();
    EXPECT_EQ(mapping.GetSourceFileLastModified(), time);
    EXPECT_EQ(mapping.GetSourceFileSize(), 5);
    EXPECT_FALSE(mapping.GetTargetFileLastModified().isValid());
    EXPECT_EQ(mapping.GetTargetFileSize(), -1);

    tree.File(QStringLiteral("b"), "1").Remove(QStringLiteral("a"));
    EXPECT_EQ(mapping.GetSourceFileSize(), 5);
    mapping.UpdateTargetFileProperties();
    mapping.UpdateSourceFileProperties();
    EXPECT_EQ(mapping.GetTargetFileSize(), 1);
    EXPECT_FALSE(mapping.GetSourceFileLastModified().isValid());
    EXPECT_EQ(mapping.GetSourceFileSize(), -1);
}

TEST_F(MappingInCloud, SourceAndTargetAreLookedForInTheCloudCacheFolder)
{
    const FileMapping mapping(tree.Path(QStringLiteral("a")), Cloud(QStringLiteral("a")), 7);
    EXPECT_FALSE(mapping.IsSourceFileInCloudCacheFolder());
    EXPECT_TRUE(mapping.IsTargetFileInCloudCacheFolder());
}

TEST_F(MappingOnDisk, WithoutServicesNothingIsInTheCloudCacheFolder)
{
    const FileMapping mapping(tree.Path(), tree.Path(), 7);
    EXPECT_FALSE(mapping.IsSourceFileInCloudCacheFolder());
    EXPECT_FALSE(mapping.IsTargetFileInCloudCacheFolder());
}
