// SPDX-License-Identifier: Apache-2.0

// Links whose file is missing, and links that need no rewriting, stay in the copy byte for byte.

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

class MissingLinks : public ScenarioFixture
{
protected:
    /// Imports work/proj/top.<type> with these links and one to ../lib/part.bin, which must be
    /// rewritten, before and after them; the links of the copy between.
    QStringList Imported(const QString& type, const QStringList& links)
    {
        const QString name = u"top."_s + type;
        tree.File(u"work/lib/part.bin"_s, "part").File(u"work/lib/last.bin"_s, "last");
        Design(u"work/proj/"_s + name,
               QStringList{u"../lib/part.bin"_s} + links + QStringList{u"../lib/last.bin"_s});
        const ImportReport report = Report({u"proj/"_s + name, u"--to"_s, u"Demo"_s});
        EXPECT_EQ(report.exitCode, 4) << ::testing::PrintToString(report);
        EXPECT_EQ(WithoutLinks(name, tree.Read(u"cloud/Demo/"_s + name)),
                  WithoutLinks(name, tree.Read(u"work/proj/"_s + name)));
        QStringList found = LinksOf(u"cloud/Demo/"_s + name);
        EXPECT_EQ(found.size(), links.size() + 2);
        EXPECT_EQ(found.value(0), u"lib/part.bin"_s);
        EXPECT_EQ(found.value(found.size() - 1), u"lib/last.bin"_s);
        return found.mid(1, found.size() - 2);
    }
};

class MissingLinksOfFormat : public MissingLinks, public ::testing::WithParamInterface<QString>
{};

class LinksThatNeedNoRewriting : public ScenarioFixture
{};

} // namespace

TEST_P(MissingLinksOfFormat, StayAsTheyStandWhileOthersAreRewritten)
{
    const QStringList links{u"gone.bin"_s, u"../lib/gone.bin"_s, u"../../far/gone.bin"_s,
                            u"/nowhere/Fonts/Arial.ttf"_s, u"sub/../gone.bin"_s};
    EXPECT_EQ(Imported(GetParam(), links), links);
}

TEST_P(MissingLinksOfFormat, ToOtherMachinesStayAsTheyStand)
{
    const QStringList links{u"D:/lib/bolt.bin"_s, u"//server/share/bolt.bin"_s};
    EXPECT_EQ(Imported(GetParam(), links), links);
}

TEST_P(MissingLinksOfFormat, AreNotPointedAtANeighbourOfTheSameNameNorAtTheFileItself)
{
    tree.File(u"work/proj/bolt.bin"_s, "neighbour").File(u"cloud/Demo/bolt.bin"_s, "neighbour");
    const QStringList links{u"/nowhere/bolt.bin"_s, u"../gone/bolt.bin"_s,
                            u"/nowhere/top."_s + GetParam(), u"../gone/top."_s + GetParam()};
    EXPECT_EQ(Imported(GetParam(), links), links);
}

TEST_P(MissingLinksOfFormat, AreRewrittenByALaterImportOnceTheFileIsThere)
{
    ASSERT_EQ(Imported(GetParam(), {u"../lib/late.bin"_s}), QStringList{u"../lib/late.bin"_s});
    tree.File(u"work/lib/late.bin"_s, "late");
    const QString name = u"top."_s + GetParam();
    const ImportReport report = Report({u"proj/"_s + name, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(LinksOf(u"cloud/Demo/"_s + name),
              (QStringList{u"lib/part.bin"_s, u"lib/late.bin"_s, u"lib/last.bin"_s}));
    EXPECT_EQ(tree.Read(u"cloud/Demo/lib/late.bin"_s), "late");
}

TEST_P(MissingLinksOfFormat, AreTakenUpAgainWhenTheFileVanishesAndComesBack)
{
    const QString name = u"top."_s + GetParam();
    const QStringList arguments{u"proj/"_s + name, u"--to"_s, u"Demo"_s};
    Design(u"work/proj/"_s + name, {u"../lib/part.bin"_s});
    tree.File(u"work/lib/part.bin"_s, "part");
    ASSERT_EQ(Report(arguments).exitCode, 0);
    const QByteArray complete = tree.Read(u"cloud/Demo/"_s + name);
    tree.Remove(u"work/lib/part.bin"_s);
    const ImportReport gone = Report(arguments);
    EXPECT_EQ(gone.exitCode, 4) << ::testing::PrintToString(gone);
    // The copy of what is gone is there, and the link leads to it.
    EXPECT_EQ(tree.Read(u"cloud/Demo/"_s + name), complete);
    tree.File(u"work/lib/part.bin"_s, "part");
    EXPECT_EQ(Report(arguments).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/Demo/"_s + name), complete);
}

INSTANTIATE_TEST_SUITE_P(Formats, MissingLinksOfFormat,
                         ::testing::Values(u"gltf"_s, u"svg"_s, u"mtl"_s, u"scad"_s, u"stp"_s,
                                           u"tlk"_s),
                         [](const auto& type) { return type.param.toStdString(); });

TEST_F(MissingLinks, OfInstalledLibrariesAndOldDrivesStayInOpenScadAsTheirAuthorWroteThem)
{
    const QStringList links{u"BOSL2/std.scad"_s, u"D:\\lib\\bolt.scad"_s,
                            u"\\\\server\\share\\bolt.scad"_s};
    EXPECT_EQ(Imported(u"scad"_s, links), links);
}

TEST_F(MissingLinks, ByADevicePathAreNoAddresses)
{
    for (const char* const path : {"//?/Q:/nowhere/bolt.bin", "//./Q:/nowhere/bolt.bin"}) {
        const QString link = QString::fromLatin1(path);
        tree.File(u"work/top.tlk"_s, "link 1 " + link.toUtf8() + '\n');
        const CommandResult shown =
            Run({u"links"_s, u"--json"_s, u"--plugin-path"_s, tree.Path(u"plugins"_s),
                 u"--plugin-path"_s, TestPluginFolder(), u"top.tlk"_s});
        EXPECT_EQ(shown.exitCode, 4) << ::testing::PrintToString(shown);
        EXPECT_EQ(shown.Json().value(0)[u"status"].toString(), u"missing"_s);
        const ImportReport report = Report({u"top.tlk"_s, u"--to"_s, u"Demo"_s});
        EXPECT_EQ(report.exitCode, 4) << ::testing::PrintToString(report);
        EXPECT_EQ(LinksOf(u"cloud/Demo/top.tlk"_s), QStringList{link});
    }
}

TEST_F(MissingLinks, OfAWholeProjectLeaveEveryByteOfFilesThatHaveNoOthers)
{
    Design(u"work/proj/a.svg"_s, {u"../pics/a.png"_s, u"/Library/Fonts/Arial.ttf"_s});
    Design(u"work/proj/sub/b.gltf"_s, {u"C:\\pics\\b.png"_s, u"gone%20twice.png"_s});
    ASSERT_EQ(Import({u"proj"_s}).exitCode, 4);
    EXPECT_EQ(tree.Contents(u"cloud/proj"_s), tree.Contents(u"work/proj"_s));
}

TEST_F(LinksThatNeedNoRewriting, StayHoweverTheyAreWritten)
{
    tree.File(u"work/proj/parts/p.bin"_s, "part");
    const QStringList ways{u"parts/p.bin"_s, u"./parts/p.bin"_s, u"parts//p.bin"_s,
                           u"parts/../parts/p.bin"_s, u"../proj/parts/p.bin"_s};
    for (const QString& type : DesignTypes())
        Design(u"work/proj/top."_s + type, ways);
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Contents(u"cloud/proj"_s), tree.Contents(u"work/proj"_s));
}

// The system follows "q/../part" only where "q" is.
TEST_F(LinksThatNeedNoRewriting, DoNotGoThroughAFolderThatTheCopyHasNot)
{
    tree.File(u"work/proj/p.bin"_s, "part").Folder(u"work/proj/q"_s);
    for (const QString& type : DesignTypes()) {
        const QString top = u"top."_s + type;
        Design(u"work/proj/"_s + top, {u"q/../p.bin"_s});
        for (int run = 0; run < 2; ++run) {
            const ImportReport report = Report({u"proj/"_s + top});
            EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
            EXPECT_EQ(LinksOf(u"cloud/"_s + top), QStringList{u"p.bin"_s}) << type.toStdString();
        }
    }
}

TEST_F(LinksThatNeedNoRewriting, StayWithBackslashesAndEncodedLetters)
{
    tree.File(u"work/proj/parts/p.bin"_s, "part")
        .File(u"work/proj/a.gltf"_s, "{\"asset\":{\"version\":\"2.0\"},\"images\":"
                                     "[{\"uri\":\"p%61rts/p.bin\"},{\"uri\":\"parts\\\\p.bin\"}]}")
        .File(u"work/proj/a.svg"_s, "<svg xmlns=\"http://www.w3.org/2000/svg\">"
                                    "<image href=\"%70arts/p.bin\"/></svg>")
        .File(u"work/proj/a.scad"_s, "use <parts\\p.bin>\n");
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Contents(u"cloud/proj"_s), tree.Contents(u"work/proj"_s));
}

TEST_F(LinksThatNeedNoRewriting, CostNoCallOfThePlugin)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 ./parts/p.tlk\n")
        .File(u"work/proj/parts/p.tlk"_s, "p");
    const PluginCallLog calls;
    EXPECT_EQ(Import({u"proj"_s}).exitCode, 0);
    EXPECT_EQ(calls.Calls().filter(u"RepathFileLinks"_s), QStringList());
}

TEST_F(LinksThatNeedNoRewriting, LeadIntoTheCloudFolderByAWholePath)
{
    tree.File(u"cloud/std/p.bin"_s, "standard");
    for (const QString& type : DesignTypes())
        Design(u"work/top."_s + type, {tree.Path(u"cloud/std/p.bin"_s)});
    for (const QString& type : DesignTypes()) {
        const QString name = u"top."_s + type;
        const ImportReport report = Report({name, u"--to"_s, u"Demo"_s});
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        EXPECT_EQ(tree.Read(u"cloud/Demo/"_s + name), tree.Read(u"work/"_s + name));
    }
}

} // namespace Halvern::Test
