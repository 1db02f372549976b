// SPDX-License-Identifier: Apache-2.0

#include "MappingOnDisk.h"
#include "ServicesFixture.h"

#include "syncservices/FileMapping.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <filesystem>

using namespace Halvern::SyncServices;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

namespace {

struct MappingInCloud : ServicesFixture
{};

} // namespace

TEST_F(MappingOnDisk, AFolderIsFlaggedOrADirectory)
{
    tree.Folder(u"d"_s).File(u"f"_s);
    EXPECT_TRUE(FileMapping(tree.Path(u"d"_s), QString(), 7).IsFolder());
    EXPECT_FALSE(FileMapping(tree.Path(u"f"_s), QString(), 7).IsFolder());
    EXPECT_FALSE(FileMapping(QString(), QString(), 7).IsFolder());
    FileMapping missing(tree.Path(u"gone"_s), QString(), 7);
    EXPECT_FALSE(missing.IsFolder());
    missing.SetFlag(FileMapping::Folder, true);
    EXPECT_TRUE(missing.IsFolder());
}

TEST_F(MappingOnDisk, APathLikeAUrlIsNeverLookedUp)
{
    tree.Folder(u"http:/host/d"_s);
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(tree.Path()));
    FileMapping mapping(u"http://host/d"_s, u"http://host/d"_s, 7);
    EXPECT_FALSE(mapping.IsFolder());
    EXPECT_FALSE(mapping.ExistsInTarget());
    mapping.UpdateSourceFileProperties();
    EXPECT_EQ(mapping.GetSourceFileSize(), -1);
    ASSERT_TRUE(QDir::setCurrent(before));
}

TEST_F(MappingOnDisk, ExistsInTargetAsksForTheTarget)
{
    tree.File(u"a"_s);
    const QString a = tree.Path(u"a"_s);
    const QString b = tree.Path(u"b"_s);
    EXPECT_TRUE(FileMapping(b, a, 7).ExistsInTarget());
    EXPECT_FALSE(FileMapping(a, b, 7).ExistsInTarget());
    EXPECT_FALSE(FileMapping(a, QString(), 7).ExistsInTarget());
}

TEST_F(MappingOnDisk, EqualPathsAreOneFileWhetherItExistsOrNot)
{
    EXPECT_TRUE(SameInTree("gone", "gone"));
    EXPECT_TRUE(Same(u"/x/../y/a"_s, u"/y//a"_s));
    EXPECT_FALSE(SameInTree("gone", "lost"));
    EXPECT_FALSE(Same(u"/x/a"_s, QString()));
    EXPECT_FALSE(Same(QString(), QString()));
}

TEST_F(MappingOnDisk, HardLinksAreTwoFiles)
{
    tree.File(u"a"_s);
    std::filesystem::create_hard_link(tree.Path(u"a"_s).toStdU16String(),
                                      tree.Path(u"b"_s).toStdU16String());
    EXPECT_FALSE(SameInTree("a", "b"));
}

TEST_F(MappingOnDisk, LetterCaseCountsWhereTheDiskSaysSo)
{
    tree.File(u"a.prt"_s, "1");
    const bool oneName = tree.Exists(u"A.prt"_s);
    if (!oneName)
        tree.File(u"A.prt"_s, "2");
    EXPECT_EQ(SameInTree("a.prt", "A.prt"), oneName);
}

TEST_F(MappingOnDisk, EqualContentIsNotTheSameFile)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1700000000);
    for (const auto& name : {u"a"_s, u"b"_s})
        tree.File(name, "same").Touch(name, time);
    EXPECT_FALSE(SameInTree("a", "b"));
}

TEST_F(MappingOnDisk, PropertiesAreThoseOfTheFileWhenTheyWereUpdated)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1700000000);
    tree.File(u"a"_s, "12345").Touch(u"a"_s, time);
    FileMapping mapping(tree.Path(u"a"_s), tree.Path(u"b"_s), 7);
    mapping.UpdateSourceFileProperties();
    mapping.UpdateTargetFileProperties();
    EXPECT_EQ(mapping.GetSourceFileLastModified(), time);
    EXPECT_EQ(mapping.GetSourceFileSize(), 5);
    EXPECT_FALSE(mapping.GetTargetFileLastModified().isValid());
    EXPECT_EQ(mapping.GetTargetFileSize(), -1);

    tree.File(u"b"_s, "1").Remove(u"a"_s);
    EXPECT_EQ(mapping.GetSourceFileSize(), 5);
    mapping.UpdateTargetFileProperties();
    mapping.UpdateSourceFileProperties();
    EXPECT_EQ(mapping.GetTargetFileSize(), 1);
    EXPECT_FALSE(mapping.GetSourceFileLastModified().isValid());
    EXPECT_EQ(mapping.GetSourceFileSize(), -1);
}

TEST_F(MappingInCloud, SourceAndTargetAreLookedForInTheCloudCacheFolder)
{
    const FileMapping mapping(tree.Path(u"a"_s), Cloud(u"a"_s), 7);
    EXPECT_FALSE(mapping.IsSourceFileInCloudCacheFolder());
    EXPECT_TRUE(mapping.IsTargetFileInCloudCacheFolder());
}

TEST_F(MappingOnDisk, WithoutServicesNothingIsInTheCloudCacheFolder)
{
    const FileMapping mapping(tree.Path(), tree.Path(), 7);
    EXPECT_FALSE(mapping.IsSourceFileInCloudCacheFolder());
    EXPECT_FALSE(mapping.IsTargetFileInCloudCacheFolder());
}
