// SPDX-License-Identifier: Apache-2.0

// What stands against an import as a whole is found before the first byte, all at once.

#include "ChildRights.h"
#include "Mounts.h"
#include "ScenarioFixture.h"

#include <QtCore/QFile>

#include <sys/mount.h>
#include <sys/stat.h>

namespace Halvern::Test {

namespace {

class Preflight : public ScenarioFixture
{
protected:
    /// The import and its dry run say this much, and nothing in the cloud folder changes.
    QString ExpectFinding(const QStringList& arguments)
    {
        const auto before = Stamps(u"cloud"_s);
        const CommandResult dry = Poorly(arguments + QStringList{u"--dry-run"_s});
        const CommandResult result = Poorly(arguments);
        EXPECT_EQ(Stamps(u"cloud"_s), before);
        EXPECT_EQ(result.exitCode, 1) << ::testing::PrintToString(result);
        EXPECT_EQ(dry.exitCode, 1) << ::testing::PrintToString(dry);
        return result.out + result.err;
    }
    CommandResult Poorly(const QStringList& arguments) const
    {
        QProcess process;
        Prepare(process, ImportArguments(arguments));
        GiveOrdinaryRights(process);
        process.start();
        return Finish(process);
    }
    void SetMode(const QString& path, mode_t mode)
    {
        ASSERT_EQ(::chmod(QFile::encodeName(tree.Path(path)).constData(), mode), 0);
    }
};

} // namespace

TEST_F(Preflight, TooLittleSpaceIsFoundBeforeAnythingIsCopied)
{
    tree.File(u"work/proj/small.txt"_s, "small")
        .File(u"work/proj/big.bin"_s, PatternBytes(3'000'000))
        .Folder(u"cloud"_s);
    const Mount disk = Mount::Small(tree.Path(u"cloud"_s), 1'000'000);
    ASSERT_TRUE(disk.IsMounted());
    const QString output = ExpectFinding({u"proj"_s});
    EXPECT_TRUE(output.contains(u"room"_s) || output.contains(u"space"_s)) << output.toStdString();
    EXPECT_FALSE(tree.Exists(u"cloud/proj"_s));
}

TEST_F(Preflight, TooFewInodesAreFoundBeforeAnythingIsCopied)
{
    for (int file = 0; file < 40; ++file)
        tree.File(u"work/proj/f%1.txt"_s.arg(file));
    tree.Folder(u"cloud"_s);
    const QByteArray cloud = QFile::encodeName(tree.Path(u"cloud"_s));
    ASSERT_EQ(::mount("tmpfs", cloud.constData(), "tmpfs", 0, "nr_inodes=20"), 0)
        << "root is needed";
    const QString output = ExpectFinding({u"proj"_s});
    EXPECT_TRUE(output.contains(u"file"_s)) << output.toStdString();
    EXPECT_FALSE(tree.Exists(u"cloud/proj"_s));
    ::umount2(cloud.constData(), MNT_DETACH);
}

TEST_F(Preflight, AFolderThatCannotBeWrittenToIsFoundBeforeAnythingIsCopied)
{
    tree.File(u"work/proj/a/x.txt"_s).File(u"work/proj/b/y.txt"_s).Folder(u"cloud/proj/b"_s);
    SetMode(u"cloud/proj/b"_s, 0555);
    const QString output = ExpectFinding({u"proj"_s});
    EXPECT_TRUE(output.contains(u"proj/b"_s)) << output.toStdString();
    SetMode(u"cloud/proj/b"_s, 0755);
    EXPECT_EQ(Poorly({u"proj"_s}).exitCode, 0);
}

TEST_F(Preflight, ABaseStoreThatIsTooSmallIsFoundBeforeAnythingIsReplaced)
{
    tree.File(u"work/proj/a.txt"_s, "new").File(u"cloud/proj/a.txt"_s, QByteArray(2000, 'o'));
    tree.File(u"settings.ini"_s, "[General]\ncloudCacheFolder=" + tree.Path(u"cloud"_s).toUtf8() +
                                     "\ndatabaseFile=" + tree.Path(u"sync.db"_s).toUtf8() +
                                     "\nbaseStoreLimit=1000\n");
    const auto before = Stamps(u"cloud"_s);
    const CommandResult result = Run({u"import"_s, u"proj"_s, u"--collisions"_s, u"replace"_s,
                                      u"--settings"_s, tree.Path(u"settings.ini"_s)});
    EXPECT_EQ(result.exitCode, 1) << ::testing::PrintToString(result);
    EXPECT_TRUE((result.out + result.err).contains(u"base store"_s))
        << ::testing::PrintToString(result);
    EXPECT_EQ(Stamps(u"cloud"_s), before);
}

TEST_F(Preflight, TooLittleSpaceForWhatIsReplacedIsFoundOnTheDiskOfTheBaseStore)
{
    tree.File(u"work/proj/a.txt"_s, "new").File(u"cloud/proj/a.txt"_s, PatternBytes(1'500'000));
    tree.File(u"work/proj/b.txt"_s, "new").File(u"cloud/proj/b.txt"_s, PatternBytes(1'500'000));
    tree.Folder(u"sync.db.base"_s);
    const QStringList arguments{u"proj"_s, u"--collisions"_s, u"replace"_s};
    {
        const Mount disk = Mount::Small(tree.Path(u"sync.db.base"_s), 2'000'000);
        ASSERT_TRUE(disk.IsMounted());
        const QString output = ExpectFinding(arguments);
        EXPECT_TRUE(output.contains(u"not enough room on the disk that holds "_s +
                                    tree.Path(u"sync.db.base"_s)))
            << output.toStdString();
        EXPECT_TRUE(output.contains(u"3.0 MB needed"_s)) << output.toStdString();
    }
    EXPECT_EQ(Report(arguments).exitCode, 0);
}

TEST_F(Preflight, OldestVersionsThatGiveWayNeedNoRoomTwice)
{
    tree.File(u"work/proj/a.txt"_s, PatternBytes(600'000)).Folder(u"base"_s);
    const Mount disk = Mount::Small(tree.Path(u"base"_s), 2'000'000);
    ASSERT_TRUE(disk.IsMounted());
    tree.File(u"settings.ini"_s, "[General]\ncloudCacheFolder=" + tree.Path(u"cloud"_s).toUtf8() +
                                     "\ndatabaseFile=" + tree.Path(u"sync.db"_s).toUtf8() +
                                     "\nbaseStoreFolder=" + tree.Path(u"base/old"_s).toUtf8() +
                                     "\nbaseStoreLimit=700000\n");
    for (int run = 0; run < 5; ++run) {
        Save(u"work/proj/a.txt"_s, PatternBytes(600'000 + run));
        const CommandResult result =
            Run({u"import"_s, u"proj"_s, u"--settings"_s, tree.Path(u"settings.ini"_s)});
        EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    }
}

TEST_F(Preflight, OneDiskForBothNeedsRoomForOldAndNew)
{
    tree.Folder(u"disk"_s);
    const Mount disk = Mount::Small(tree.Path(u"disk"_s), 4'000'000);
    ASSERT_TRUE(disk.IsMounted());
    tree.File(u"disk/cloud/proj/a.bin"_s, PatternBytes(1'500'000))
        .File(u"work/proj/a.bin"_s, PatternBytes(1'200'000))
        .File(u"settings.ini"_s,
              "[General]\ncloudCacheFolder=" + tree.Path(u"disk/cloud"_s).toUtf8() +
                  "\ndatabaseFile=" + tree.Path(u"sync.db"_s).toUtf8() +
                  "\nbaseStoreFolder=" + tree.Path(u"disk/base"_s).toUtf8() + '\n');
    const QStringList arguments{u"import"_s,  u"proj"_s,       u"--collisions"_s,
                                u"replace"_s, u"--settings"_s, tree.Path(u"settings.ini"_s)};
    const CommandResult result = Run(arguments);
    EXPECT_EQ(result.exitCode, 1) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.out.contains(u"2.7 MB needed"_s)) << ::testing::PrintToString(result);
    EXPECT_FALSE(tree.Exists(u"disk/base"_s));
    tree.File(u"work/proj/a.bin"_s, PatternBytes(200'000));
    EXPECT_EQ(Run(arguments).exitCode, 0);
}

TEST_F(Preflight, ACloudFolderThatCannotBeWrittenToIsNamedAlsoForAnEmptySource)
{
    tree.Folder(u"work/empty"_s).Folder(u"cloud/Demo"_s).File(u"work/a.txt"_s);
    SetMode(u"cloud"_s, 0555);
    for (const QStringList& arguments :
         {QStringList{u"empty"_s}, QStringList{u"a.txt"_s, u"--to"_s, u"Demo"_s}}) {
        const QString output = ExpectFinding(arguments);
        EXPECT_TRUE(output.contains(u"nothing can be written to "_s + tree.Path(u"cloud"_s)))
            << output.toStdString();
        EXPECT_FALSE(output.contains(u".corsync-"_s)) << output.toStdString();
    }
    SetMode(u"cloud"_s, 0755);
}

TEST_F(Preflight, NothingNeedsToBeWrittenWhereNothingChanged)
{
    tree.File(u"work/proj/a.txt"_s).Folder(u"cloud"_s);
    ASSERT_EQ(Poorly({u"proj"_s}).exitCode, 0);
    SetMode(u"cloud"_s, 0555);
    const CommandResult again = Poorly({u"proj"_s});
    SetMode(u"cloud"_s, 0755);
    EXPECT_EQ(again.exitCode, 0) << ::testing::PrintToString(again);
    EXPECT_FALSE((again.out + again.err).contains(u".corsync-"_s));
}

TEST_F(Preflight, EverythingIsFoundAtOnce)
{
    tree.File(u"work/proj/b/big.bin"_s, PatternBytes(3'000'000)).Folder(u"cloud"_s);
    const Mount disk = Mount::Small(tree.Path(u"cloud"_s), 1'000'000);
    ASSERT_TRUE(disk.IsMounted());
    tree.Folder(u"cloud/proj/b"_s);
    SetMode(u"cloud/proj/b"_s, 0555);
    const QString output = ExpectFinding({u"proj"_s});
    EXPECT_TRUE(output.contains(u"room"_s) || output.contains(u"space"_s)) << output.toStdString();
    EXPECT_TRUE(output.contains(u"proj/b"_s)) << output.toStdString();
}

TEST_F(Preflight, WhatIsUnchangedNeedsNoRoom)
{
    tree.File(u"work/proj/big.bin"_s, PatternBytes(700'000)).Folder(u"cloud"_s);
    const Mount disk = Mount::Small(tree.Path(u"cloud"_s), 1'000'000);
    ASSERT_TRUE(disk.IsMounted());
    EXPECT_EQ(Report({u"proj"_s}).exitCode, 0);
    EXPECT_EQ(Report({u"proj"_s}).exitCode, 0);
}

TEST_F(Preflight, AnImportThatCannotBeDoneSaysSoInJson)
{
    tree.File(u"work/proj/big.bin"_s, PatternBytes(3'000'000)).Folder(u"cloud"_s);
    const Mount disk = Mount::Small(tree.Path(u"cloud"_s), 1'000'000);
    ASSERT_TRUE(disk.IsMounted());
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.exitCode, 1);
    EXPECT_EQ(report.summary[u"exitCode"].toInt(), 1);
    EXPECT_FALSE(report.others.isEmpty()) << ::testing::PrintToString(report);
}

} // namespace Halvern::Test
