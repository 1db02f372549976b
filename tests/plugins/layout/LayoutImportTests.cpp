// SPDX-License-Identifier: Apache-2.0

// Whole imports through the command, with the built layout. The test resolver's files stand for a
// format with companions and sets: it takes whatever id stands in the file.

#include "CommandFixture.h"

#include <QtCore/QDirIterator>
#include <QtCore/QFileInfo>
#include <QtCore/QLibrary>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class LayoutImport : public CommandFixture
{
protected:
    LayoutImport()
    {
        const QString library = QFileInfo(QStringLiteral(LAYOUT_PLUGIN_FILE)).fileName();
        tree.File(u"plugins/layout.syncplugin"_s,
                  Registration(library, u"FileLayout"_s, u"tlk,gltf"_s));
    }

    /// A second import finds what another second wrote.
    void Change(const QString& file, const QByteArray& content)
    {
        tree.File(file, content);
        tree.Touch(file, QDateTime::currentDateTime().addSecs(m_seconds -= 10));
    }

    /// What both sides changed is asked about; a new copy must not take the place of the old one.
    void ChangeBoth(const QString& file, const QString& copy, const QByteArray& content)
    {
        Change(file, content);
        tree.File(copy, "somebody's " + content);
    }

    void MakeBoard()
    {
        tree.File(u"work/asm/board.tlk"_s, "link companion:sch board.txt\n"
                                           "link companion:table table\n"
                                           "link 1 ../lib/part.tlk\n");
        tree.File(u"work/asm/board.txt"_s, "schematic\n");
        tree.File(u"work/asm/table"_s, "table\n");
        tree.File(u"work/lib/part.tlk"_s, "link set:a#1 tex/w.1.png\nlink set:a#2 tex/w.2.png\n");
        tree.File(u"work/lib/tex/w.1.png"_s, "one\n");
        tree.File(u"work/lib/tex/w.2.png"_s, "two\n");
    }

    CommandResult ImportBoard(const QStringList& arguments = {})
    {
        return Import(QStringList{u"asm/board.tlk"_s, u"--to"_s, u"Demo"_s} + arguments);
    }

private:
    int m_seconds = -10;
};

const QStringList Rename{u"--collisions"_s, u"rename"_s, u"--on-conflict"_s, u"rename"_s};

} // namespace

TEST(LayoutPluginLibrary, ExportsTheLayoutFactoryAndNoResolverFactory)
{
    QLibrary library(QStringLiteral(LAYOUT_PLUGIN_FILE));
    ASSERT_TRUE(library.load()) << library.errorString().toStdString();
    EXPECT_TRUE(library.resolve("CreateSyncPluginFactory"));
    EXPECT_FALSE(library.resolve("CreateFileLinkResolverFactory"));
    EXPECT_TRUE(library.unload());
}

TEST(LayoutPluginLibrary, ItsRegistrationFileNamesItAndTheFormatsItServes)
{
    QFile file(QFileInfo(QStringLiteral(LAYOUT_PLUGIN_FILE)).absolutePath() +
               u"/../SyncPluginRegFiles/layout.syncplugin"_s);
    ASSERT_TRUE(file.open(QFile::ReadOnly)) << file.fileName().toStdString();
    const QString text = QString::fromUtf8(file.readAll());
    EXPECT_TRUE(text.contains(QFileInfo(QStringLiteral(LAYOUT_PLUGIN_FILE)).fileName()));
    EXPECT_TRUE(text.contains(
        u"<FileLayout FileTypes=\"FCStd,gltf,glb,obj,mtl,stp,step,blend,"
        "scad,slvs,dxf,sla,scd,gz,dae,x3d,x3dv,x3dz,x3dvz,wrl,wrz,mtlx,3ds,lwo,x,ply,"
        "svg,svgz,kicad_pro,kicad_sch,kicad_pcb,kicad_mod,pro,sch,lib,mod,sub,cir,ckt,inc,sp,spice\"/>"_s));
}

TEST_F(LayoutImport, LinksIntoTheProjectKeepItsShapeAndTheTopFileIsWhereItWasPromised)
{
    MakeBoard();
    const CommandResult result = ImportBoard();
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"Demo/board.tlk"_s, "link companion:sch board.txt\n"
                                                                 "link companion:table table\n"
                                                                 "link 1 lib/part.tlk\n"},
                                           {u"Demo/board.txt"_s, "schematic\n"},
                                           {u"Demo/table"_s, "table\n"},
                                           {u"Demo/lib/part.tlk"_s,
                                            "link set:a#1 tex/w.1.png\nlink set:a#2 tex/w.2.png\n"},
                                           {u"Demo/lib/tex/w.1.png"_s, "one\n"},
                                           {u"Demo/lib/tex/w.2.png"_s, "two\n"}}));
}

TEST_F(LayoutImport, ASecondImportFindsEverythingUnchanged)
{
    MakeBoard();
    ImportBoard();
    const FileTree::Snapshot before = Cloud();
    const CommandResult result = ImportBoard(Rename);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.Lines().filter(u"unchanged  "_s).size(), 6) << result.out.toStdString();
    EXPECT_EQ(Cloud(), before);
}

TEST_F(LayoutImport, WhenTheTopFileIsRenamedItsCompanionsComeWithItAndOthersAreUsedAsTheyAre)
{
    MakeBoard();
    ImportBoard();
    ChangeBoth(u"work/asm/board.tlk"_s, u"cloud/Demo/board.tlk"_s,
               tree.Read(u"work/asm/board.tlk"_s) + "more\n");
    const FileTree::Snapshot before = Cloud();
    const CommandResult result = ImportBoard(Rename);
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    FileTree::Snapshot expected = before;
    expected.insert(u"Demo/board (2)/board.tlk"_s, "link companion:sch board.txt\n"
                                                   "link companion:table table\n"
                                                   "link 1 ../lib/part.tlk\nmore\n");
    expected.insert(u"Demo/board (2)/board.txt"_s, "schematic\n");
    expected.insert(u"Demo/board (2)/table"_s, "table\n");
    EXPECT_EQ(Cloud(), expected);
    EXPECT_TRUE(result.Has(u"renamed    asm/board.tlk -> Demo/board (2)/board.tlk"_s))
        << result.out.toStdString();
    EXPECT_EQ(result.Lines().filter(u"unchanged  "_s).size(), 3) << result.out.toStdString();
}

TEST_F(LayoutImport, WhenACompanionChangedTheWholeGroupIsCopiedAnew)
{
    MakeBoard();
    ImportBoard();
    ChangeBoth(u"work/asm/table"_s, u"cloud/Demo/table"_s, "new table\n");
    const CommandResult result = ImportBoard(Rename);
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Contents(u"cloud/Demo/board (2)"_s).keys(),
              (QStringList{u"board.tlk"_s, u"board.txt"_s, u"table"_s}));
    EXPECT_EQ(tree.Read(u"cloud/Demo/table"_s), "somebody's new table\n");
    EXPECT_EQ(tree.Read(u"cloud/Demo/board (2)/table"_s), "new table\n");
}

TEST_F(LayoutImport, WhenATileChangedTheWholeSetMovesAndTheLinksFollow)
{
    MakeBoard();
    ImportBoard();
    ChangeBoth(u"work/lib/tex/w.2.png"_s, u"cloud/Demo/lib/tex/w.2.png"_s, "new two\n");
    const CommandResult result = ImportBoard(Rename);
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Contents(u"cloud/Demo/lib/tex"_s),
              (FileTree::Snapshot{{u"w.1.png"_s, "one\n"},
                                  {u"w.2.png"_s, "somebody's new two\n"},
                                  {u"w.1 (2)/w.1.png"_s, "one\n"},
                                  {u"w.1 (2)/w.2.png"_s, "new two\n"}}));
    EXPECT_EQ(tree.Read(u"cloud/Demo/lib/part.tlk"_s),
              "link set:a#1 tex/w.1 (2)/w.1.png\nlink set:a#2 tex/w.1 (2)/w.2.png\n");
}

TEST_F(LayoutImport, ADryRunSaysWhatTheRealRunDoes)
{
    MakeBoard();
    ImportBoard();
    Change(u"work/asm/board.tlk"_s, tree.Read(u"work/asm/board.tlk"_s) + "more\n");
    const FileTree::Snapshot before = Cloud();
    const CommandResult dry = ImportBoard(Rename + QStringList{u"--dry-run"_s});
    EXPECT_EQ(Cloud(), before);
    EXPECT_EQ(ImportBoard(Rename).Lines().mid(0, 6), dry.Lines().mid(0, 6));
}

TEST_F(LayoutImport, OtherPoliciesTreatAGroupFileByFile)
{
    MakeBoard();
    ImportBoard();
    ChangeBoth(u"work/asm/table"_s, u"cloud/Demo/table"_s, "new table\n");
    EXPECT_EQ(ImportBoard().exitCode, 6);
    EXPECT_EQ(ImportBoard({u"--on-conflict"_s, u"keep"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/Demo/table"_s), "somebody's new table\n");
    EXPECT_EQ(ImportBoard({u"--on-conflict"_s, u"replace"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/Demo/table"_s), "new table\n");
    EXPECT_EQ(tree.Contents(u"cloud/Demo"_s).size(), 6);
}

TEST_F(LayoutImport, CompanionsFollowToAnotherTargetFolder)
{
    MakeBoard();
    ImportBoard();
    const CommandResult result = Import({u"asm/board.tlk"_s, u"--to"_s, u"Other"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Contents(u"cloud/Other"_s),
              (FileTree::Snapshot{
                  {u"board.tlk"_s, "link companion:sch board.txt\n"
                                   "link companion:table table\n"
                                   "link 1 lib/part.tlk\n"},
                  {u"board.txt"_s, "schematic\n"},
                  {u"table"_s, "table\n"},
                  {u"lib/part.tlk"_s, "link set:a#1 tex/w.1.png\nlink set:a#2 tex/w.2.png\n"},
                  {u"lib/tex/w.1.png"_s, "one\n"},
                  {u"lib/tex/w.2.png"_s, "two\n"}}));
}

TEST_F(LayoutImport, FilesOfTwoTopFilesThatWouldGetOnePlaceAreKeptApart)
{
    for (const QString& name : {u"one"_s, u"two"_s}) {
        const QByteArray text = name.toUtf8();
        tree.File(u"work/%1/%1.tlk"_s.arg(name), "link 1 tex/wood.png\nlink 2 tex/oak.tlk\n");
        tree.File(u"work/%1/tex/wood.png"_s.arg(name), text);
        tree.File(u"work/%1/tex/oak.tlk"_s.arg(name), "link 1 wood.png\n" + text);
    }
    const CommandResult result = Import({u"one/one.tlk"_s, u"two/two.tlk"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{
                           {u"Demo/one.tlk"_s, "link 1 tex/wood.png\nlink 2 tex/oak.tlk\n"},
                           {u"Demo/two.tlk"_s, "link 1 two/tex/wood.png\nlink 2 two/tex/oak.tlk\n"},
                           {u"Demo/tex/wood.png"_s, "one"},
                           {u"Demo/tex/oak.tlk"_s, "link 1 wood.png\none"},
                           {u"Demo/two/tex/wood.png"_s, "two"},
                           {u"Demo/two/tex/oak.tlk"_s, "link 1 wood.png\ntwo"}}));
    EXPECT_FALSE(result.out.contains(u"renamed"_s)) << result.out.toStdString();
    const CommandResult again = Import({u"one/one.tlk"_s, u"two/two.tlk"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(again.Lines().filter(u"unchanged  "_s).size(), 6) << again.out.toStdString();
}

TEST_F(LayoutImport, CompanionsStayBesideAFileThatReturnsToAnEarlierFolder)
{
    // The last copies of the companions are in the other folder, unchanged.
    MakeBoard();
    ASSERT_EQ(ImportBoard().exitCode, 0);
    ASSERT_EQ(Import({u"asm/board.tlk"_s, u"--to"_s, u"Other"_s}).exitCode, 0);
    tree.File(u"cloud/Demo/table"_s, "mine\n");
    const FileTree::Snapshot other = tree.Contents(u"cloud/Other"_s);

    const CommandResult left = ImportBoard({u"--collisions"_s, u"replace"_s});
    EXPECT_EQ(left.exitCode, 0) << ::testing::PrintToString(left);
    EXPECT_EQ(tree.Read(u"cloud/Demo/table"_s), "mine\n");
    Change(u"work/asm/table"_s, "theirs\n");
    EXPECT_EQ(ImportBoard().exitCode, 6);
    const CommandResult replaced = ImportBoard({u"--on-conflict"_s, u"replace"_s});
    EXPECT_EQ(replaced.exitCode, 0) << ::testing::PrintToString(replaced);
    EXPECT_EQ(tree.Read(u"cloud/Demo/table"_s), "theirs\n");
    EXPECT_TRUE(tree.Read(u"cloud/Demo/board.tlk"_s)
                    .startsWith("link companion:sch board.txt\nlink companion:table table\n"));
    EXPECT_EQ(tree.Contents(u"cloud/Other"_s), other);
}

TEST_F(LayoutImport, SharedAndCyclicLinksAreFollowedOnce)
{
    // 2^40 paths lead to the last file, and each step links back to the first.
    constexpr int Steps = 40;
    for (int step = 0; step < Steps; ++step) {
        const QByteArray next = QByteArray::number(step + 1);
        const QByteArray links =
            "link 1 ../" + next + "/a.tlk\nlink 2 ../" + next + "/b.tlk\nlink 3 ../0/a.tlk\n";
        for (const char name : {'a', 'b'})
            tree.File(u"work/%1/%2.tlk"_s.arg(step).arg(QLatin1Char(name)), links);
    }
    tree.File(u"work/%1/a.tlk"_s.arg(Steps)).File(u"work/%1/b.tlk"_s.arg(Steps));
    const CommandResult result = Import({u"0/a.tlk"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(result.exitCode, 0) << result.err.left(2000).toStdString();
    EXPECT_EQ(Cloud().size(), 2 * Steps + 1);
    EXPECT_EQ(tree.Read(u"cloud/Demo/7/b.tlk"_s),
              "link 1 ../8/a.tlk\nlink 2 ../8/b.tlk\nlink 3 ../a.tlk\n");
}

TEST_F(LayoutImport, FilesFromElsewhereGetAFolderPerOrigin)
{
    FileTree other;
    other.File(u"wood/oak.png"_s, "oak").File(u"wood/fine/ash.png"_s, "ash");
    tree.File(u"work/a.tlk"_s, "link 1 " + other.Path(u"wood/oak.png"_s).toUtf8() + "\nlink 2 " +
                                   other.Path(u"wood/fine/ash.png"_s).toUtf8() + '\n');
    const CommandResult result = Import({u"a.tlk"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{
                           {u"Demo/a.tlk"_s, "link 1 wood/oak.png\nlink 2 wood/fine/ash.png\n"},
                           {u"Demo/wood/oak.png"_s, "oak"},
                           {u"Demo/wood/fine/ash.png"_s, "ash"}}));
}

TEST_F(LayoutImport, ASceneOfTheGardenShedKeepsTheShapeOfTheShed)
{
    const CommandResult result =
        Import({QFileInfo(QStringLiteral(CORSYNC_EXAMPLES)).absoluteFilePath() +
                    u"/garden-shed/scene/Shed.gltf"_s,
                u"--to"_s, u"Demo"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(
        Cloud().keys(),
        (QStringList{u"Demo/Shed.gltf"_s, u"Demo/geometry/Shelf.bin"_s,
                     u"Demo/geometry/Small parts.bin"_s, u"Demo/geometry/Walls.bin"_s,
                     u"Demo/lights/Lantern.ies"_s, u"Demo/shared/geometry/Ground.bin"_s,
                     u"Demo/shared/geometry/Roof.bin"_s, u"Demo/textures/Höhe über Grund.png"_s,
                     u"Demo/textures/Planks.png"_s, u"Demo/textures/Poster (spring).png"_s,
                     u"Demo/textures/Roof tiles.png"_s}));
}

TEST_F(LayoutImport, TheReadmesTwoSamplesEndAsItSays)
{
    const QString examples = QFileInfo(QStringLiteral(CORSYNC_EXAMPLES)).absoluteFilePath();
    const CommandResult whole = Import({examples + u"/garden-shed"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(whole.exitCode, 0) << ::testing::PrintToString(whole);
    const CommandResult lacking = Import({examples + u"/lost-poster"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(lacking.exitCode, 4) << ::testing::PrintToString(lacking);
    EXPECT_EQ(lacking.Lines().filter(u"missing "_s).size(), 1) << lacking.out.toStdString();
}

} // namespace Halvern::Test
