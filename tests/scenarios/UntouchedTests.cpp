// SPDX-License-Identifier: Apache-2.0

// What an import leaves where it is stays as it is: which file, every byte, and its time.

#include "FileTimes.h"
#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

/// work/proj/top.<type> links ../lib/part.bin, so that its copy gets other links than the source.
constexpr qint64 day = 86'400'000'000'000;

class UntouchedFiles : public ScenarioFixture
{
protected:
    void MakeProject(const QString& type)
    {
        Design(u"work/proj/top."_s + type, {u"../lib/part.bin"_s}, "source");
        tree.File(u"work/lib/part.bin"_s, "part");
    }
    /// The next import with --on-conflict rename gives the part another place.
    void EditPartOnBothSides()
    {
        Save(u"work/lib/part.bin"_s, "second part");
        Save(u"cloud/Demo/lib/part.bin"_s, "mine");
    }
    /// Makes it a file that does not let itself be written to.
    void MakeReadOnly(const QString& file)
    {
        ASSERT_TRUE(QFile::setPermissions(tree.Path(file), QFile::ReadOwner | QFile::ReadUser));
    }
};

class UntouchedFilesOfFormat : public UntouchedFiles, public ::testing::WithParamInterface<QString>
{};

} // namespace

TEST_P(UntouchedFilesOfFormat, AKeptForeignFileWithTheSameLinksStaysAsItIs)
{
    const QString top = u"cloud/Demo/top."_s + GetParam();
    MakeProject(GetParam());
    Design(top, {u"../lib/part.bin"_s}, "foreign");
    const FileStamp before = Stamp(top);

    const ImportReport report =
        Report({u"proj/top."_s + GetParam(), u"--to"_s, u"Demo"_s, u"--collisions"_s, u"keep"_s});

    EXPECT_EQ(report.StatusOf(u"work/proj/top."_s + GetParam()), u"kept"_s)
        << report.Lines().join(u'\n').toStdString();
    EXPECT_EQ(Stamp(top), before);
    EXPECT_EQ(tree.Read(u"cloud/Demo/lib/part.bin"_s), "part");
}

TEST_P(UntouchedFilesOfFormat, AKeptForeignFileStaysAsItIsWhenItLinksNothing)
{
    const QString top = u"cloud/Demo/top."_s + GetParam();
    MakeProject(GetParam());
    Design(top, {}, "foreign");
    const FileStamp before = Stamp(top);
    const QStringList arguments{u"proj/top."_s + GetParam(), u"--to"_s, u"Demo"_s,
                                u"--collisions"_s, u"keep"_s};
    Report(arguments);
    Report(arguments);
    EXPECT_EQ(Stamp(top), before);
}

INSTANTIATE_TEST_SUITE_P(Formats, UntouchedFilesOfFormat,
                         ::testing::Values(u"gltf"_s, u"svg"_s, u"obj"_s, u"scad"_s, u"stp"_s,
                                           u"tlk"_s),
                         [](const auto& type) { return type.param.toStdString(); });

TEST_F(UntouchedFiles, AReadOnlyForeignFileIsNotReplaced)
{
    MakeProject(u"gltf"_s);
    Design(u"cloud/Demo/top.gltf"_s, {u"../lib/part.bin"_s}, "foreign");
    MakeReadOnly(u"cloud/Demo/top.gltf"_s);
    const FileStamp before = Stamp(u"cloud/Demo/top.gltf"_s);
    const ImportReport report =
        Report({u"proj/top.gltf"_s, u"--to"_s, u"Demo"_s, u"--collisions"_s, u"replace"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/proj/top.gltf"_s), u"failed"_s);
    EXPECT_EQ(Stamp(u"cloud/Demo/top.gltf"_s), before);
}

TEST_F(UntouchedFiles, AReadOnlyCopyIsNotRelinkedAndTheLineSaysThatItsLinksAreOld)
{
    MakeProject(u"svg"_s);
    const QStringList arguments{u"proj/top.svg"_s, u"--to"_s, u"Demo"_s, u"--on-conflict"_s,
                                u"rename"_s};
    ASSERT_EQ(Import(arguments).exitCode, 0);
    MakeReadOnly(u"cloud/Demo/top.svg"_s);
    const FileStamp before = Stamp(u"cloud/Demo/top.svg"_s);
    EditPartOnBothSides();
    const ImportReport report = Report(arguments);
    EXPECT_NE(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(Stamp(u"cloud/Demo/top.svg"_s), before);
    EXPECT_EQ(tree.Read(u"cloud/Demo/lib/part.bin"_s), "mine");
    EXPECT_NE(Report(arguments).exitCode, 0) << "still so";
}

TEST_F(UntouchedFiles, AReadOnlyCopyIsRelinkedByRetryOnceItMayBeWritten)
{
    MakeProject(u"svg"_s);
    tree.Remove(u"work/lib/part.bin"_s);
    const QString source = tree.Path(u"work/proj/top.svg"_s);
    SetModifiedNanoseconds(source, ModifiedNanoseconds(source) - day);
    const QStringList arguments{u"proj/top.svg"_s, u"--to"_s, u"Demo"_s};
    ASSERT_EQ(Import(arguments).exitCode, 4);
    tree.File(u"work/lib/part.bin"_s, "part");
    MakeReadOnly(u"cloud/Demo/top.svg"_s);
    ASSERT_EQ(Report(arguments).exitCode, 1);
    ASSERT_TRUE(QFile::setPermissions(tree.Path(u"cloud/Demo/top.svg"_s),
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser |
                                          QFile::WriteUser));
    EXPECT_EQ(Corsync(u"retry"_s).exitCode, 0);
    EXPECT_EQ(LinksOf(u"cloud/Demo/top.svg"_s), QStringList{u"lib/part.bin"_s});
}

TEST_F(UntouchedFiles, WithLinksOnlyTheFileThatStandsAtTheTargetOfTheGivenOneStaysAsItIs)
{
    MakeProject(u"gltf"_s);
    Design(u"cloud/Demo/top.gltf"_s, {u"../lib/part.bin"_s}, "foreign");
    const FileStamp before = Stamp(u"cloud/Demo/top.gltf"_s);
    const ImportReport report =
        Report({u"proj/top.gltf"_s, u"--to"_s, u"Demo"_s, u"--links-only"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(Stamp(u"cloud/Demo/top.gltf"_s), before);
    EXPECT_EQ(tree.Read(u"cloud/Demo/lib/part.bin"_s), "part");
}

TEST_F(UntouchedFiles, WithLinksOnlyAnEarlierCopyOfTheGivenFileStaysAsItIs)
{
    MakeProject(u"gltf"_s);
    ASSERT_EQ(Import({u"proj/top.gltf"_s, u"--to"_s, u"Demo"_s}).exitCode, 0);
    const FileStamp before = Stamp(u"cloud/Demo/top.gltf"_s);
    EditPartOnBothSides();
    Report({u"proj/top.gltf"_s, u"--to"_s, u"Demo"_s, u"--links-only"_s, u"--on-conflict"_s,
            u"rename"_s});
    EXPECT_EQ(Stamp(u"cloud/Demo/top.gltf"_s), before);
}

TEST_F(UntouchedFiles, ACopyThatItsOwnerEditedIsNotRelinkedWhenAPartGetsAnotherPlace)
{
    MakeProject(u"scad"_s);
    const QStringList arguments{u"proj/top.scad"_s, u"--to"_s, u"Demo"_s, u"--on-conflict"_s,
                                u"rename"_s};
    ASSERT_EQ(Import(arguments).exitCode, 0);
    Save(u"cloud/Demo/top.scad"_s, tree.Read(u"cloud/Demo/top.scad"_s) + "// mine\n");
    const FileStamp before = Stamp(u"cloud/Demo/top.scad"_s);
    EditPartOnBothSides();
    const ImportReport report = Report(arguments);
    EXPECT_EQ(report.StatusOf(u"work/proj/top.scad"_s), u"left"_s)
        << ::testing::PrintToString(report);
    EXPECT_EQ(Stamp(u"cloud/Demo/top.scad"_s), before);
}

TEST_F(UntouchedFiles, ACopyThatIsRelinkedInPlaceIsInTheBaseStoreAsItWas)
{
    MakeProject(u"gltf"_s);
    const QStringList arguments{u"proj/top.gltf"_s, u"--to"_s, u"Demo"_s, u"--on-conflict"_s,
                                u"rename"_s};
    ASSERT_EQ(Import(arguments).exitCode, 0);
    const QByteArray before = tree.Read(u"cloud/Demo/top.gltf"_s);
    EditPartOnBothSides();
    const ImportReport report = Report(arguments);
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    const QString part = report.Of(u"work/lib/part.bin"_s).target;
    EXPECT_EQ(tree.Read(part), "second part");
    EXPECT_EQ(LinksOf(u"cloud/Demo/top.gltf"_s),
              QStringList{part.mid(QString(u"cloud/Demo/"_s).size())});
    EXPECT_TRUE(BaseStoreHolds(before));
    EXPECT_EQ(tree.Read(u"cloud/Demo/lib/part.bin"_s), "mine");
}

TEST_F(UntouchedFiles, AFolderOfSomebodyThatIsNamedLikeThoseForUnfinishedCopiesStaysAsItIs)
{
    tree.File(u"cloud/.corsync-notes/mine.txt"_s, "mine")
        .File(u"cloud/.corsync-0123456789abc/mine.txt"_s, "mine")
        .File(u"cloud/.corsync-0123456789abd/.lock"_s, "mine")
        .File(u"work/.corsync-old/a.txt"_s, "a")
        .File(u"work/b.txt"_s, "b");
    const auto before = Stamps(u"cloud"_s);
    ASSERT_EQ(Report({u".corsync-old"_s, u"--move"_s}).exitCode, 0);
    ASSERT_EQ(Report({u"b.txt"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/.corsync-old/a.txt"_s), "a");
    const auto after = Stamps(u"cloud"_s);
    for (auto it = before.begin(); it != before.end(); ++it)
        EXPECT_EQ(after.value(it.key()), it.value()) << it.key().toStdString();
}

} // namespace Halvern::Test
