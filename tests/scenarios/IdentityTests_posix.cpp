// SPDX-License-Identifier: Apache-2.0

// Names that differ in letter case or in the way their letters are stored, on a disk that tells
// them apart.

#include "ScenarioFixture.h"

#include <filesystem>

namespace Halvern::Test {

namespace {

struct Twins
{
    const char* name;
    QString first;
    QString second;
};

void PrintTo(const Twins& twins, std::ostream* out)
{
    *out << twins.name;
}

class NearlyEqualNames : public ScenarioFixture
{};

class TwinNames : public NearlyEqualNames, public ::testing::WithParamInterface<Twins>
{
protected:
    /// The contents of the files that the links of a copy lead to.
    QList<QByteArray> ContentsBehind(const QString& copy) const
    {
        QList<QByteArray> contents;
        for (const QString& link : LinksOf(copy))
            contents.append(
                StampOf(QDir(QFileInfo(tree.Path(copy)).path()).filePath(link)).content);
        return contents;
    }
    const QString& First() const { return GetParam().first; }
    const QString& Second() const { return GetParam().second; }
};

} // namespace

TEST_P(TwinNames, BesideTheFileAreTwoFilesAndEachLinkLeadsToItsOwnCopy)
{
    Design(u"work/proj/top.gltf"_s, {First(), Second()});
    tree.File(u"work/proj/"_s + First(), "first").File(u"work/proj/"_s + Second(), "second");
    for (const QString& source : {u"proj/top.gltf"_s, u"proj"_s}) {
        tree.Folder(u"cloud"_s).Remove(u"cloud"_s);
        const ImportReport report = Report({source, u"--to"_s, u"Demo"_s});
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        EXPECT_EQ(ContentsBehind(report.Of(u"work/proj/top.gltf"_s).target),
                  (QList<QByteArray>{"first", "second"}));
    }
}

TEST_P(TwinNames, InALibraryAreTwoFilesAndEachLinkLeadsToItsOwnCopy)
{
    Design(u"work/proj/top.svg"_s, {u"../lib/"_s + First(), u"../lib/"_s + Second()});
    tree.File(u"work/lib/"_s + First(), "first").File(u"work/lib/"_s + Second(), "second");
    const ImportReport report = Report({u"proj/top.svg"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(ContentsBehind(u"cloud/Demo/top.svg"_s), (QList<QByteArray>{"first", "second"}));
}

TEST_P(TwinNames, OfFoldersAreTwoFolders)
{
    Design(u"work/proj/top.scad"_s,
           {u"../"_s + First() + u"/p.scad"_s, u"../"_s + Second() + u"/p.scad"_s});
    tree.File(u"work/"_s + First() + u"/p.scad"_s, "// first\n")
        .File(u"work/"_s + Second() + u"/p.scad"_s, "// second\n");
    const ImportReport report = Report({u"proj/top.scad"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(ContentsBehind(u"cloud/Demo/top.scad"_s),
              (QList<QByteArray>{"// first\n", "// second\n"}));
}

TEST_P(TwinNames, HaveRecordsOfTheirOwn)
{
    tree.File(u"work/"_s + First(), "first").File(u"work/"_s + Second(), "second");
    ASSERT_EQ(Report({First(), u"--to"_s, u"One"_s}).exitCode, 0);
    ASSERT_EQ(Report({Second(), u"--to"_s, u"Two"_s}).exitCode, 0);
    const auto before = Stamps(u"cloud"_s);
    EXPECT_EQ(Report({First(), u"--to"_s, u"One"_s}).Statuses(), QStringList{u"unchanged"_s});
    EXPECT_EQ(Report({Second(), u"--to"_s, u"Two"_s}).Statuses(), QStringList{u"unchanged"_s});
    EXPECT_EQ(Stamps(u"cloud"_s), before);
    Save(u"work/"_s + Second(), "second again");
    EXPECT_EQ(Report({First(), u"--to"_s, u"One"_s}).Statuses(), QStringList{u"unchanged"_s});
    EXPECT_EQ(Report({Second(), u"--to"_s, u"Two"_s}).Statuses(), QStringList{u"updated"_s});
    EXPECT_EQ(tree.Read(u"cloud/One/"_s + First()), "first");
    EXPECT_EQ(tree.Read(u"cloud/Two/"_s + Second()), "second again");
}

TEST_P(TwinNames, StayTwoFilesInTheNextImport)
{
    Design(u"work/proj/top.tlk"_s, {First(), Second()});
    tree.File(u"work/proj/"_s + First(), "first").File(u"work/proj/"_s + Second(), "second");
    ASSERT_EQ(Report({u"proj"_s}).exitCode, 0);
    const auto before = Stamps(u"cloud"_s);
    const ImportReport again = Report({u"proj"_s});
    EXPECT_EQ(again.exitCode, 0);
    EXPECT_EQ(again.Statuses(), QStringList(3, u"unchanged"_s)) << ::testing::PrintToString(again);
    EXPECT_EQ(Stamps(u"cloud"_s), before);
}

TEST_P(TwinNames, AreBothMoved)
{
    tree.File(u"work/proj/"_s + First(), "first").File(u"work/proj/"_s + Second(), "second");
    const ImportReport report = Report({u"proj"_s, u"--move"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(report.Of(u"work/proj/"_s + First()).target), "first");
    EXPECT_EQ(tree.Read(report.Of(u"work/proj/"_s + Second()).target), "second");
    EXPECT_FALSE(tree.Exists(u"work/proj/"_s + First()));
    EXPECT_FALSE(tree.Exists(u"work/proj/"_s + Second()));
}

TEST_P(TwinNames, ADeadLinkToOneCostsTheOtherNothing)
{
    Design(u"work/proj/top.stp"_s, {u"../lib/"_s + First(), u"../lib/"_s + Second()});
    tree.File(u"work/lib/"_s + First(), "first");
    const ImportReport report = Report({u"proj/top.stp"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(report.exitCode, 4) << ::testing::PrintToString(report);
    EXPECT_EQ(report.StatusOf(u"work/lib/"_s + First()), u"copied"_s);
    EXPECT_EQ(report.StatusOf(u"work/lib/"_s + Second()), u"missing"_s);
    EXPECT_EQ(tree.Read(u"cloud/Demo/lib/"_s + First()), "first");
    EXPECT_EQ(LinksOf(u"cloud/Demo/top.stp"_s),
              (QStringList{u"lib/"_s + First(), u"../lib/"_s + Second()}));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, TwinNames,
    ::testing::Values(Twins{"LetterCase", u"Part.bin"_s, u"part.bin"_s},
                      Twins{"LetterCaseOfTheType", u"part.stl"_s, u"part.STL"_s},
                      Twins{"SharpS", u"stra\u00dfe.bin"_s, u"strasse.bin"_s},
                      Twins{"ComposedAndDecomposed", u"caf\u00e9.bin"_s, u"cafe\u0301.bin"_s},
                      Twins{"TurkishI", u"\u0130i.bin"_s, u"i\u0307i.bin"_s},
                      Twins{"KelvinSign", u"k.bin"_s, u"\u212a.bin"_s}),
    [](const auto& twins) { return std::string(twins.param.name); });

TEST_F(NearlyEqualNames, AFolderBesideTheCloudFolderThatDiffersInLetterCaseIsNotIt)
{
    Design(u"Cloud/proj/top.gltf"_s, {u"../lib/part.bin"_s});
    tree.File(u"Cloud/lib/part.bin"_s, "part");
    const ImportReport report = Report({tree.Path(u"Cloud/proj"_s), u"--to"_s, u"Demo"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(report.Statuses(), QStringList(2, u"copied"_s));
    EXPECT_EQ(Stamps(u"Cloud"_s).size(), 4);
    const QString top = report.Of(u"Cloud/proj/top.gltf"_s).target;
    const QString part = report.Of(u"Cloud/lib/part.bin"_s).target;
    EXPECT_EQ(tree.Read(part), "part");
    EXPECT_EQ(QDir::cleanPath(QFileInfo(top).path() + u'/' + LinksOf(top).value(0)), part);
}

TEST_F(NearlyEqualNames, ATargetFolderThatDiffersInLetterCaseIsAnotherFolder)
{
    tree.File(u"work/a.txt"_s, "a").File(u"cloud/demo/a.txt"_s, "of another project");
    EXPECT_EQ(Report({u"a.txt"_s, u"--to"_s, u"Demo"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/demo/a.txt"_s), "of another project");
    EXPECT_EQ(tree.Read(u"cloud/Demo/a.txt"_s), "a");
}

TEST_F(NearlyEqualNames, AForeignFileWhoseNameDiffersInLetterCaseIsNotInTheWay)
{
    tree.File(u"work/part.txt"_s, "part").File(u"cloud/PART.txt"_s, "foreign");
    EXPECT_EQ(Report({u"part.txt"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/PART.txt"_s), "foreign");
    EXPECT_EQ(tree.Read(u"cloud/part.txt"_s), "part");
}

TEST_F(NearlyEqualNames, TwoNamesOfOneFileAreBothThere)
{
    tree.File(u"work/proj/a.bin"_s, "one file");
    std::filesystem::create_hard_link(tree.Path(u"work/proj/a.bin"_s).toStdString(),
                                      tree.Path(u"work/proj/b.bin"_s).toStdString());
    Design(u"work/proj/top.gltf"_s, {u"a.bin"_s, u"b.bin"_s});
    EXPECT_EQ(Report({u"proj"_s}).exitCode, 0);
    for (const QString& link : LinksOf(u"cloud/proj/top.gltf"_s))
        EXPECT_EQ(tree.Read(u"cloud/proj/"_s + link), "one file");
    EXPECT_EQ(tree.Read(u"cloud/proj/a.bin"_s), "one file");
    EXPECT_EQ(tree.Read(u"cloud/proj/b.bin"_s), "one file");
}

TEST_F(NearlyEqualNames, CountAsTheCloudFolderHasThemWhateverLeadsThere)
{
    // Names of one folder, and of one file in it, that differ in letter case: nothing is ignored.
    tree.Folder(u"cloud"_s).File(u"cloud/note"_s, "note");
    std::filesystem::create_symlink("cloud", tree.Path(u"CLOUD"_s).toStdString());
    std::filesystem::create_hard_link(tree.Path(u"cloud/note"_s).toStdString(),
                                      tree.Path(u"cloud/NOTE"_s).toStdString());
    tree.File(u"work/proj/part.stl"_s, "small").File(u"work/proj/PART.STL"_s, "large");
    EXPECT_EQ(Report({u"proj"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/proj/part.stl"_s), "small");
    EXPECT_EQ(tree.Read(u"cloud/proj/PART.STL"_s), "large");
}

} // namespace Halvern::Test
