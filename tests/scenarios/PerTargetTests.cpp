// SPDX-License-Identifier: Apache-2.0

// Each target folder, and each cloud folder, has copies of its own.

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

/// work/one/top.gltf and work/two/top.gltf both link work/lib/part.bin.
class PerTarget : public ScenarioFixture
{
protected:
    PerTarget()
    {
        Design(u"work/one/top.gltf"_s, {u"../lib/part.bin"_s}, "one");
        Design(u"work/two/top.gltf"_s, {u"../lib/part.bin"_s}, "two");
        tree.File(u"work/lib/part.bin"_s, "part");
    }
    ImportReport Bring(const QString& project, const QString& to,
                       const QStringList& options = {}) const
    {
        return Report(QStringList{project + u"/top.gltf"_s, u"--to"_s, to} + options);
    }
    /// The content of the file that the only link of a copy leads to.
    QByteArray Linked(const QString& copy) const { return StampOf(PathBehind(copy)).content; }
    QString PathBehind(const QString& copy) const
    {
        const QDir folder = QFileInfo(tree.Path(copy)).dir();
        return QDir::cleanPath(folder.filePath(LinksOf(copy).value(0)));
    }
};

} // namespace

TEST_F(PerTarget, ToOneToAnotherAndToTheFirstAgainChangesNothingTheThirdTime)
{
    for (const QStringList& options : {QStringList(), QStringList{u"--self-contained"_s}}) {
        const QString first = u"M%1"_s.arg(options.size() * 2 + 1);
        const QString second = u"M%1"_s.arg(options.size() * 2 + 2);
        ASSERT_EQ(Bring(u"one"_s, first, options).exitCode, 0);
        ASSERT_EQ(Bring(u"one"_s, second, options).exitCode, 0);
        const auto before = Stamps(u"cloud"_s);
        for (const QString& to : {first, second, first}) {
            const ImportReport report = Bring(u"one"_s, to, options);
            EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
            EXPECT_EQ(report.Statuses(), QStringList(2, u"unchanged"_s))
                << ::testing::PrintToString(report);
        }
        EXPECT_EQ(Stamps(u"cloud"_s), before);
        EXPECT_EQ(Linked(u"cloud/"_s + first + u"/top.gltf"_s), "part");
        EXPECT_EQ(Linked(u"cloud/"_s + second + u"/top.gltf"_s), "part");
    }
}

TEST_F(PerTarget, WholeFoldersToTwoTargetsInTurnChangeNothing)
{
    const auto bring = [&](const QString& to) { return Report({u"."_s, u"--to"_s, to}); };
    ASSERT_EQ(bring(u"M1"_s).exitCode, 0);
    ASSERT_EQ(bring(u"M2"_s).exitCode, 0);
    const auto before = Stamps(u"cloud"_s);
    EXPECT_EQ(bring(u"M1"_s).Statuses(), QStringList(3, u"unchanged"_s));
    EXPECT_EQ(bring(u"M2"_s).Statuses(), QStringList(3, u"unchanged"_s));
    EXPECT_EQ(Stamps(u"cloud"_s), before);
    Save(u"work/lib/part.bin"_s, "second part");
    ASSERT_EQ(bring(u"M1"_s).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/M1/work/lib/part.bin"_s), "second part");
    EXPECT_EQ(tree.Read(u"cloud/M2/work/lib/part.bin"_s), "part");
    ASSERT_EQ(bring(u"M2"_s).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/M2/work/lib/part.bin"_s), "second part");
}

TEST_F(PerTarget, AnotherCloudFolderWithTheSameDatabaseGetsEverything)
{
    ASSERT_EQ(Bring(u"one"_s, u"Demo"_s).exitCode, 0);
    const auto before = Stamps(u"cloud"_s);
    QStringList arguments = ImportArguments({u"one/top.gltf"_s, u"--to"_s, u"Demo"_s, u"--json"_s});
    arguments.replace(arguments.indexOf(tree.Path(u"cloud"_s)), tree.Path(u"second"_s));
    const ImportReport report = ReportOf(Run(arguments));
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.Statuses(), QStringList(2, u"copied"_s)) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Contents(u"second"_s), tree.Contents(u"cloud"_s));
    EXPECT_EQ(Bring(u"one"_s, u"Demo"_s).Statuses(), QStringList(2, u"unchanged"_s));
    EXPECT_EQ(ReportOf(Run(arguments)).Statuses(), QStringList(2, u"unchanged"_s));
    EXPECT_EQ(Stamps(u"cloud"_s), before);
}

TEST_F(PerTarget, AChangedCloudFolderInTheSettingsNeitherRedirectsNorBlocks)
{
    const auto settings = [&](const QString& folder) {
        tree.File(u"settings.ini"_s, "[General]\ncloudCacheFolder=" + tree.Path(folder).toUtf8() +
                                         "\ndatabaseFile=" + tree.Path(u"own.db"_s).toUtf8() +
                                         '\n');
        return ReportOf(Run({u"import"_s, u"one/top.gltf"_s, u"--settings"_s,
                             tree.Path(u"settings.ini"_s), u"--json"_s}));
    };
    ASSERT_EQ(settings(u"first"_s).exitCode, 0);
    const auto before = Stamps(u"first"_s);
    const ImportReport moved = settings(u"second"_s);
    EXPECT_EQ(moved.exitCode, 0) << ::testing::PrintToString(moved);
    EXPECT_EQ(tree.Contents(u"second"_s), tree.Contents(u"first"_s));
    EXPECT_EQ(settings(u"first"_s).Statuses(), QStringList(2, u"unchanged"_s));
    EXPECT_EQ(Stamps(u"first"_s), before);
}

TEST_F(PerTarget, ACloudFolderThatWasEmptiedIsFilledAgain)
{
    ASSERT_EQ(Bring(u"one"_s, u"Demo"_s).exitCode, 0);
    tree.Remove(u"cloud"_s);
    const ImportReport report = Bring(u"one"_s, u"Demo"_s);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(Linked(u"cloud/Demo/top.gltf"_s), "part");
}

TEST_F(PerTarget, ALinkedFileOfAnotherProjectIsUsedWhileItsCopyIsUnchanged)
{
    ASSERT_EQ(Bring(u"one"_s, u"One"_s).exitCode, 0);
    ASSERT_EQ(Bring(u"two"_s, u"Two"_s).exitCode, 0);
    EXPECT_EQ(Linked(u"cloud/Two/top.gltf"_s), "part");
    // Its owner edits the copy in the first project: nobody else may get that.
    Save(u"cloud/One/lib/part.bin"_s, "edited in One");
    Design(u"work/three/top.gltf"_s, {u"../lib/part.bin"_s}, "three");
    const ImportReport report = Bring(u"three"_s, u"Three"_s);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(Linked(u"cloud/Three/top.gltf"_s), "part");
    EXPECT_EQ(tree.Read(u"cloud/One/lib/part.bin"_s), "edited in One");
}

TEST_F(PerTarget, ALinkedFileOfAnotherProjectThatMissesWhatThisOneHasMovedIsBroughtAgain)
{
    Design(u"work/lib/group.gltf"_s, {u"../parts/moved.bin"_s});
    Design(u"work/one/top.gltf"_s, {u"../lib/group.gltf"_s});
    Design(u"work/two/top.gltf"_s, {u"../lib/group.gltf"_s});
    tree.File(u"work/parts/moved.bin"_s, "moved");
    ASSERT_EQ(Report({u"parts"_s, u"--to"_s, u"One"_s, u"--move"_s}).exitCode, 0);
    ASSERT_EQ(Bring(u"two"_s, u"Two"_s).exitCode, 4);
    const ImportReport report = Bring(u"one"_s, u"One"_s);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    const QString group = report.Of(u"work/lib/group.gltf"_s).target;
    EXPECT_EQ(StampOf(PathBehind(group)).content, "moved") << group.toStdString();
}

TEST_F(PerTarget, ALinkedFileOfAnotherProjectThatIsGoneIsBroughtAgain)
{
    ASSERT_EQ(Bring(u"one"_s, u"One"_s).exitCode, 0);
    ASSERT_EQ(Bring(u"two"_s, u"Two"_s).exitCode, 0);
    tree.Remove(u"cloud/One"_s);
    const ImportReport report = Bring(u"two"_s, u"Two"_s);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(Linked(u"cloud/Two/top.gltf"_s), "part");
}

TEST_F(PerTarget, UpdatingOneProjectChangesNothingThatAnotherOneLinks)
{
    ASSERT_EQ(Bring(u"one"_s, u"One"_s).exitCode, 0);
    ASSERT_EQ(Bring(u"two"_s, u"Two"_s).exitCode, 0);
    const QByteArray two = tree.Read(u"cloud/Two/top.gltf"_s);
    Save(u"work/lib/part.bin"_s, "second part");
    const ImportReport report = Bring(u"one"_s, u"One"_s);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(Linked(u"cloud/One/top.gltf"_s), "second part");
    EXPECT_EQ(tree.Read(u"cloud/Two/top.gltf"_s), two);
    EXPECT_EQ(Linked(u"cloud/Two/top.gltf"_s), "part");
    ASSERT_EQ(Bring(u"two"_s, u"Two"_s).exitCode, 0);
    EXPECT_EQ(Linked(u"cloud/Two/top.gltf"_s), "second part");
    const auto before = Stamps(u"cloud"_s);
    EXPECT_EQ(Bring(u"one"_s, u"One"_s).exitCode, 0);
    EXPECT_EQ(Bring(u"two"_s, u"Two"_s).exitCode, 0);
    EXPECT_EQ(Stamps(u"cloud"_s), before);
}

TEST_F(PerTarget, AReadOnlyCopyThatAnotherProjectLinksStaysAndTheNewOneStandsBesideIt)
{
    ASSERT_EQ(Bring(u"one"_s, u"One"_s).exitCode, 0);
    ASSERT_EQ(Bring(u"two"_s, u"Two"_s).exitCode, 0);
    const QString shared = PathBehind(u"cloud/Two/top.gltf"_s);
    ASSERT_TRUE(QFile::setPermissions(shared, QFile::ReadOwner | QFile::ReadUser));
    Save(u"work/lib/part.bin"_s, "second part");
    const ImportReport report = Bring(u"one"_s, u"One"_s);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(Linked(u"cloud/One/top.gltf"_s), "second part");
    EXPECT_EQ(PathBehind(u"cloud/Two/top.gltf"_s), shared);
    EXPECT_EQ(Linked(u"cloud/Two/top.gltf"_s), "part");
    ASSERT_TRUE(QFile::setPermissions(shared, QFile::ReadOwner | QFile::WriteOwner |
                                                  QFile::ReadUser | QFile::WriteUser));
}

TEST_F(PerTarget, ASharedCopyStaysTheOnlyOneWhileTheLinksOfItsSourceCannotBeRead)
{
    Design(u"work/lib/group.gltf"_s, {u"part.bin"_s});
    for (const QString& name : {u"one"_s, u"two"_s})
        Design(u"work/%1/top.gltf"_s.arg(name), {u"../lib/group.gltf"_s});
    ASSERT_EQ(Bring(u"one"_s, u"One"_s).exitCode, 0);
    ASSERT_EQ(Bring(u"two"_s, u"Two"_s).exitCode, 0);
    const auto before = Stamps(u"cloud"_s);
    Save(u"work/lib/group.gltf"_s, tree.Read(u"work/lib/group.gltf"_s).chopped(5));
    const ImportReport report = Bring(u"one"_s, u"One"_s);
    EXPECT_NE(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/lib/group.gltf"_s), u"failed"_s);
    EXPECT_EQ(Stamps(u"cloud"_s), before);
}

TEST_F(PerTarget, SelfContainedBringsEverythingBelowTheTarget)
{
    ASSERT_EQ(Bring(u"one"_s, u"One"_s).exitCode, 0);
    const auto before = Stamps(u"cloud/One"_s);
    const ImportReport report = Bring(u"two"_s, u"Two"_s, {u"--self-contained"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_TRUE(PathBehind(u"cloud/Two/top.gltf"_s).startsWith(tree.Path(u"cloud/Two/"_s)));
    EXPECT_EQ(Linked(u"cloud/Two/top.gltf"_s), "part");
    EXPECT_EQ(Stamps(u"cloud/One"_s), before);
}

TEST_F(PerTarget, SelfContainedLaterBringsWhatWasUsedFromAnotherProject)
{
    ASSERT_EQ(Bring(u"one"_s, u"One"_s).exitCode, 0);
    ASSERT_EQ(Bring(u"two"_s, u"Two"_s).exitCode, 0);
    const QStringList options{u"--self-contained"_s};
    const ImportReport planned = Bring(u"two"_s, u"Two"_s, options + QStringList{u"--dry-run"_s});
    const ImportReport report = Bring(u"two"_s, u"Two"_s, options);
    ASSERT_EQ(report.exitCode, 0);
    // Nothing but its link changed in the one that links the part, and its line says so.
    EXPECT_EQ(report.StatusOf(u"work/two/top.gltf"_s), u"updated"_s)
        << ::testing::PrintToString(report);
    EXPECT_TRUE(report.Of(u"work/two/top.gltf"_s).reason.contains(u"links were rewritten"_s));
    EXPECT_EQ(planned.Lines(), report.Lines());
    EXPECT_TRUE(PathBehind(u"cloud/Two/top.gltf"_s).startsWith(tree.Path(u"cloud/Two/"_s)));
    tree.Remove(u"cloud/One"_s);
    EXPECT_EQ(Linked(u"cloud/Two/top.gltf"_s), "part");
}

TEST_F(PerTarget, ACopyTooFarAwayForALinkIsNotShared)
{
    const QString deep = u"a-rather-long-name-of-a-folder-for-the-first-project/"_s.repeated(5);
    ASSERT_EQ(Bring(u"one"_s, deep + u"One"_s).exitCode, 0);
    const ImportReport report = Bring(u"two"_s, u"Two"_s);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(PathBehind(u"cloud/Two/top.gltf"_s), tree.Path(u"cloud/Two/lib/part.bin"_s));
    EXPECT_EQ(Linked(u"cloud/Two/top.gltf"_s), "part");
    EXPECT_EQ(Bring(u"two"_s, u"Two"_s).Statuses(), QStringList(2, u"unchanged"_s));
}

} // namespace Halvern::Test
