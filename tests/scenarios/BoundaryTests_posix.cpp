// SPDX-License-Identifier: Apache-2.0

// A design file does not pull secrets and files of the system into the cloud folder.

#include "ScenarioFixture.h"

#include <QtCore/QFile>

namespace Halvern::Test {

namespace {

/// The home folder is tree/home; work/proj/top.svg links what a test says.
class Boundary : public ScenarioFixture
{
protected:
    Boundary()
    {
        tree.File(u"home/.ssh/id_rsa"_s, "PRIVATE KEY")
            .File(u"home/.config/corsync-test/token"_s, "TOKEN")
            .File(u"home/pictures/wood.png"_s, "wood")
            .File(u"work/lib/part.png"_s, "part");
    }
    ImportReport Bring(const QStringList& links, const QStringList& options = {})
    {
        Design(u"work/proj/top.svg"_s, links);
        return Report(QStringList{u"proj/top.svg"_s, u"--to"_s, u"Demo"_s} + options);
    }
    /// Nothing that is not to be there lies in the cloud folder.
    void ExpectNoSecrets() const
    {
        for (const QByteArray& content : tree.Contents(u"cloud"_s)) {
            EXPECT_FALSE(content.contains("PRIVATE KEY") || content.contains("TOKEN"));
            EXPECT_FALSE(content.contains("root:"));
        }
    }
    void Link(const QString& at, const QString& to)
    {
        tree.Folder(QFileInfo(at).path());
        ASSERT_TRUE(QFile::link(tree.Path(to), tree.Path(at)));
    }
};

} // namespace

TEST_F(Boundary, RefusesPlacesOfTheSystemAndOfSecrets)
{
    const QStringList refused{tree.Path(u"home/.ssh/id_rsa"_s),
                              tree.Path(u"home/.config/corsync-test/token"_s),
                              u"/etc/passwd"_s,
                              u"/etc/group"_s,
                              u"/proc/self/environ"_s,
                              u"/proc/cpuinfo"_s,
                              u"/sys/devices/system/cpu/online"_s,
                              u"/dev/null"_s};
    for (const QString& link : refused) {
        ASSERT_TRUE(QFileInfo::exists(link)) << link.toStdString();
        const ImportReport report = Bring({link, u"../lib/part.png"_s});
        EXPECT_EQ(report.exitCode, 8) << link.toStdString() << ::testing::PrintToString(report);
        EXPECT_EQ(LinksOf(u"cloud/Demo/top.svg"_s), (QStringList{link, u"lib/part.png"_s}));
        EXPECT_EQ(report.Statuses().count(u"refused"_s), 1) << link.toStdString();
        EXPECT_EQ(tree.Contents(u"cloud"_s).size(), 2) << link.toStdString();
        ExpectNoSecrets();
        tree.Remove(u"cloud"_s);
    }
}

TEST_F(Boundary, RefusesThemAgainInEveryRunAndInADryRun)
{
    const QStringList links{tree.Path(u"home/.ssh/id_rsa"_s)};
    EXPECT_EQ(Bring(links, {u"--dry-run"_s}).exitCode, 8);
    EXPECT_EQ(Bring(links).exitCode, 8);
    EXPECT_EQ(Bring(links).exitCode, 8);
    ExpectNoSecrets();
}

TEST_F(Boundary, RefusesThemHoweverTheyAreReached)
{
    Link(u"work/proj/harmless.png"_s, u"home/.ssh/id_rsa"_s);
    Link(u"work/proj/folder"_s, u"home/.ssh"_s);
    for (const QString& link : {u"harmless.png"_s, u"folder/id_rsa"_s, u"../../home/.ssh/id_rsa"_s,
                                u"../../home/pictures/../.ssh/id_rsa"_s}) {
        const ImportReport report = Bring({link});
        EXPECT_EQ(report.exitCode, 8) << link.toStdString() << ::testing::PrintToString(report);
        EXPECT_EQ(LinksOf(u"cloud/Demo/top.svg"_s), QStringList{link});
        ExpectNoSecrets();
    }
}

TEST_F(Boundary, ASelectedSymbolicLinkCountsByWhereItLeads)
{
    tree.File(u"work/proj/good.txt"_s, "good");
    Link(u"work/proj/harmless.txt"_s, u"home/.ssh/id_rsa"_s);
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.exitCode, 8) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(u"cloud/proj/good.txt"_s), "good");
    ExpectNoSecrets();
}

TEST_F(Boundary, RefusesWhatALinkedFileLinksToo)
{
    Design(u"work/lib/inner.svg"_s, {tree.Path(u"home/.ssh/id_rsa"_s)});
    EXPECT_EQ(Bring({u"../lib/inner.svg"_s}).exitCode, 8);
    ExpectNoSecrets();
}

TEST_F(Boundary, AllowsAPlaceThatWithinNames)
{
    const QString key = tree.Path(u"home/.ssh/id_rsa"_s);
    const ImportReport report = Bring({key}, {u"--within"_s, tree.Path(u"home/.ssh"_s)});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(report.Of(u"home/.ssh/id_rsa"_s).target), "PRIVATE KEY");
}

TEST_F(Boundary, AllowsAPlaceThatTheSettingsName)
{
    tree.File(u"settings.ini"_s, "[General]\ncloudCacheFolder=" + tree.Path(u"cloud"_s).toUtf8() +
                                     "\ndatabaseFile=" + tree.Path(u"own.db"_s).toUtf8() +
                                     "\nallowedFolders=" + tree.Path(u"home/.ssh"_s).toUtf8() +
                                     '\n');
    Design(u"work/proj/top.svg"_s,
           {tree.Path(u"home/.ssh/id_rsa"_s), tree.Path(u"home/.config/corsync-test/token"_s)});
    const ImportReport report = ReportOf(Run({u"import"_s, u"proj/top.svg"_s, u"--settings"_s,
                                              tree.Path(u"settings.ini"_s), u"--json"_s}));
    EXPECT_EQ(report.exitCode, 8) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"home/.ssh/id_rsa"_s), u"copied"_s);
    EXPECT_EQ(report.StatusOf(u"home/.config/corsync-test/token"_s), u"refused"_s);
}

TEST_F(Boundary, MarksAndCountsWhatComesFromOutsideTheProject)
{
    const ImportReport report = Bring({u"inside.png"_s, tree.Path(u"home/pictures/wood.png"_s)});
    EXPECT_EQ(report.exitCode, 4) << "inside.png is not there";
    tree.File(u"work/proj/inside.png"_s, "inside");
    const ImportReport both = Bring({u"inside.png"_s, tree.Path(u"home/pictures/wood.png"_s)});
    EXPECT_EQ(both.exitCode, 0) << ::testing::PrintToString(both);
    EXPECT_TRUE(both.Of(u"home/pictures/wood.png"_s).outside);
    EXPECT_FALSE(both.Of(u"work/proj/inside.png"_s).outside);
    EXPECT_FALSE(both.Of(u"work/proj/top.svg"_s).outside);
    EXPECT_EQ(both.summary[u"outside"].toInt(), 1) << ::testing::PrintToString(both);
    const CommandResult plain = Import({u"proj/top.svg"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(plain.Lines().filter(u"wood.png"_s).filter(u"outside"_s).size(), 1)
        << ::testing::PrintToString(plain);
    EXPECT_TRUE(plain.Lines().last().contains(u"outside"_s)) << ::testing::PrintToString(plain);
}

TEST_F(Boundary, TakesTheVersionControlledFolderForTheProject)
{
    tree.File(u"work/.git/HEAD"_s, "ref: refs/heads/main\n");
    const ImportReport report = Bring({u"../lib/part.png"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_FALSE(report.Of(u"work/lib/part.png"_s).outside);
    tree.Remove(u"work/.git"_s);
    EXPECT_TRUE(Bring({u"../lib/part.png"_s}).Of(u"work/lib/part.png"_s).outside);
}

TEST_F(Boundary, WithinMakesTheListStrict)
{
    const QStringList links{u"../lib/part.png"_s, tree.Path(u"home/pictures/wood.png"_s)};
    const ImportReport report = Bring(links, {u"--within"_s, tree.Path(u"work/lib"_s)});
    EXPECT_EQ(report.exitCode, 8) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/lib/part.png"_s), u"copied"_s);
    EXPECT_EQ(report.StatusOf(u"home/pictures/wood.png"_s), u"refused"_s);
    EXPECT_EQ(LinksOf(u"cloud/Demo/top.svg"_s), (QStringList{u"lib/part.png"_s, links[1]}));
    const ImportReport both = Bring(links, {u"--within"_s, tree.Path(u"work/lib"_s), u"--within"_s,
                                            tree.Path(u"home/pictures"_s)});
    EXPECT_EQ(both.exitCode, 0) << ::testing::PrintToString(both);
    EXPECT_EQ(both.StatusOf(u"home/pictures/wood.png"_s), u"copied"_s);
}

TEST_F(Boundary, AFolderNextToAnAllowedOneWithALongerNameIsNotAllowed)
{
    tree.File(u"work/library/x.png"_s, "x");
    const ImportReport report =
        Bring({u"../library/x.png"_s}, {u"--within"_s, tree.Path(u"work/lib"_s)});
    EXPECT_EQ(report.exitCode, 8) << ::testing::PrintToString(report);
}

TEST_F(Boundary, ARefusedFileKeepsAMovedSource)
{
    const ImportReport report = Bring({tree.Path(u"home/.ssh/id_rsa"_s)}, {u"--move"_s});
    EXPECT_EQ(report.exitCode, 8) << ::testing::PrintToString(report);
    EXPECT_TRUE(tree.Exists(u"work/proj/top.svg"_s));
}

} // namespace Halvern::Test
