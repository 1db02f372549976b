// SPDX-License-Identifier: Apache-2.0

// The corpus, whole: boards and project as KiCad saved them, imported by the command with the built
// plug-ins.

#include "CommandFixture.h"

#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QLibrary>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class KicadImport : public CommandFixture
{
protected:
    KicadImport()
    {
        const QDir corpus(QStringLiteral(KICAD_CORPUS));
        QDirIterator it(corpus.path(), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            QFile file(it.next());
            EXPECT_TRUE(file.open(QFile::ReadOnly)) << file.fileName().toStdString();
            // The links that are absolute say where the projects were.
            const QByteArray content =
                file.readAll().replace("/projekte/", tree.Path(u"work"_s).toUtf8() + '/');
            tree.File(u"work/"_s + corpus.relativeFilePath(file.fileName()), content);
        }
    }

    CommandResult ImportMain(const QStringList& arguments = {}) const
    {
        return Import(QStringList{u"Platine Größe/Haupt 木.kicad_pro"_s, u"--to"_s, u"Demo"_s} +
                      arguments);
    }

    /// The strings after a word of a file, in order.
    QStringList Strings(const QString& file, const QString& word) const
    {
        QStringList found;
        const QString text = QString::fromUtf8(tree.Read(file));
        for (qsizetype at = text.indexOf(word); at >= 0; at = text.indexOf(word, at + 1))
            found.append(text.mid(at + word.size()).section(u'"', 0, 0));
        found.sort();
        return found;
    }
};

const QString BoardCopy = u"cloud/Demo/Haupt 木.kicad_pcb"_s;

} // namespace

TEST(KicadPluginLibrary, ExportsTheResolverFactoryAndNoLayoutFactory)
{
    QLibrary library(QStringLiteral(KICAD_PLUGIN_FILE));
    ASSERT_TRUE(library.load()) << library.errorString().toStdString();
    EXPECT_TRUE(library.resolve("CreateFileLinkResolverFactory"));
    EXPECT_FALSE(library.resolve("CreateSyncPluginFactory"));
    EXPECT_TRUE(library.unload());
}

TEST_F(KicadImport, AProjectComesWithEverythingThatItNames)
{
    const CommandResult result = ImportMain();
    EXPECT_EQ(result.exitCode, 4) << ::testing::PrintToString(result);
    EXPECT_EQ(
        tree.Contents(u"cloud/Demo"_s).keys(),
        (QStringList{u"3d/Quader (q).step"_s, u"3d/Quader (q).wrl"_s, u"3d/Würfel 木.step"_s,
                     u"Haupt 木.kicad_dru"_s, u"Haupt 木.kicad_pcb"_s, u"Haupt 木.kicad_pro"_s,
                     u"Haupt 木.kicad_sch"_s, u"anderswo/Absolut.kicad_sch"_s,
                     u"anderswo/Absolut.step"_s, u"blätter/Netz teil.kicad_sch"_s,
                     u"blätter/tief/Regler.kicad_sch"_s, u"fp-lib-table"_s,
                     u"gemeinsam/Block.step"_s, u"gemeinsam/Geteilt.kicad_sch"_s,
                     u"lib/Füße.pretty/R.kicad_mod"_s, u"lib/Teile.kicad_sym"_s, u"sym-lib-table"_s,
                     u"zeichnung/Rahmen ü.kicad_wks"_s}));
    EXPECT_EQ(result.Lines().filter(u"missing "_s).size(), 2) << result.out.toStdString();
}

TEST_F(KicadImport, LinksWithinTheProjectStayAndOthersNameTheCopies)
{
    ImportMain();
    EXPECT_EQ(
        Strings(BoardCopy, u"(model \""_s),
        (QStringList{u"${KICAD6_3DMODEL_DIR}/Nirgends.3dshapes/x.step"_s,
                     u"${KIPRJMOD}/3d/Würfel 木.step"_s, u"${KIPRJMOD}/3d/verloren.step"_s,
                     u"${KIPRJMOD}/anderswo/Absolut.step"_s, u"${KIPRJMOD}/gemeinsam/Block.step"_s,
                     u"3d/Quader (q).wrl"_s, u"gemeinsam/Block.step"_s}));
    EXPECT_EQ(Strings(u"cloud/Demo/Haupt 木.kicad_sch"_s, u"\"Sheet file\" \""_s),
              (QStringList{u"anderswo/Absolut.kicad_sch"_s, u"blätter/Netz teil.kicad_sch"_s,
                           u"blätter/verloren.kicad_sch"_s, u"gemeinsam/Geteilt.kicad_sch"_s}));
    for (const QString& same : {u"Haupt 木.kicad_pro"_s, u"blätter/Netz teil.kicad_sch"_s,
                                u"sym-lib-table"_s, u"fp-lib-table"_s})
        EXPECT_EQ(tree.Read(u"cloud/Demo/"_s + same), tree.Read(u"work/Platine Größe/"_s + same))
            << same.toStdString();
}

TEST_F(KicadImport, AnyFileOfAProjectBringsTheProject)
{
    ImportMain();
    const QStringList all = Cloud().keys();
    for (const QString& extension : {u"kicad_sch"_s, u"kicad_pcb"_s}) {
        const QString folder = u"To "_s + extension;
        Import({u"Platine Größe/Haupt 木."_s + extension, u"--to"_s, folder});
        const QStringList copies = tree.Contents(u"cloud/"_s + folder).keys();
        for (const QString& name :
             {u"Haupt 木.kicad_pro"_s, u"Haupt 木.kicad_sch"_s, u"Haupt 木.kicad_pcb"_s,
              u"Haupt 木.kicad_dru"_s, u"sym-lib-table"_s, u"fp-lib-table"_s,
              u"lib/Teile.kicad_sym"_s})
            EXPECT_TRUE(copies.contains(name)) << (folder + u'/' + name).toStdString();
    }
}

TEST_F(KicadImport, ARenamedProjectIsWholeInAFolderOfItsOwnUnderItsOldNames)
{
    ImportMain();
    const QString schematic = u"work/Platine Größe/Haupt 木.kicad_sch"_s;
    const QString copied = u"cloud/Demo/Haupt 木.kicad_sch"_s;
    tree.File(schematic, tree.Read(schematic) + '\n');
    tree.File(copied, tree.Read(copied) + "\n\n");
    const FileTree::Snapshot before = Cloud();
    const CommandResult result = ImportMain({u"--on-conflict"_s, u"rename"_s});
    EXPECT_EQ(result.exitCode, 4) << ::testing::PrintToString(result);
    const QString copy = u"cloud/Demo/Haupt 木 (2)/"_s;
    EXPECT_EQ(
        tree.Contents(copy).keys(),
        (QStringList{u"Haupt 木.kicad_dru"_s, u"Haupt 木.kicad_pcb"_s, u"Haupt 木.kicad_pro"_s,
                     u"Haupt 木.kicad_sch"_s, u"fp-lib-table"_s, u"lib/Füße.pretty/R.kicad_mod"_s,
                     u"lib/Teile.kicad_sym"_s, u"sym-lib-table"_s}));
    EXPECT_EQ(Strings(copy + u"Haupt 木.kicad_sch"_s, u"\"Sheet file\" \""_s),
              (QStringList{u"../anderswo/Absolut.kicad_sch"_s, u"../blätter/Netz teil.kicad_sch"_s,
                           u"../gemeinsam/Geteilt.kicad_sch"_s, u"blätter/verloren.kicad_sch"_s}));
    EXPECT_TRUE(tree.Read(copy + u"Haupt 木.kicad_pro"_s)
                    .contains("\"${KIPRJMOD}/../zeichnung/Rahmen ü.kicad_wks\""));
    EXPECT_TRUE(
        tree.Read(copy + u"Haupt 木.kicad_pro"_s).contains("\"../zeichnung/Rahmen ü.kicad_wks\""));
    for (auto file = before.cbegin(); file != before.cend(); ++file)
        EXPECT_EQ(tree.Read(u"cloud/"_s + file.key()), file.value()) << file.key().toStdString();
}

TEST_F(KicadImport, ASecondImportCopiesNothing)
{
    ImportMain();
    const FileTree::Snapshot before = Cloud();
    const CommandResult result = ImportMain();
    EXPECT_EQ(result.exitCode, 4) << ::testing::PrintToString(result);
    EXPECT_EQ(result.Lines().filter(u"unchanged  "_s).size(), 18) << result.out.toStdString();
    EXPECT_EQ(Cloud(), before);
}

TEST_F(KicadImport, ACompanionMadeAfterAnImportComesWithTheNextOne)
{
    const QString rules = u"work/Platine Größe/Haupt 木.kicad_dru"_s;
    const QByteArray text = tree.Read(rules);
    QFile::remove(tree.Path(rules));
    ImportMain();
    const FileTree::Snapshot before = Cloud();
    ASSERT_FALSE(before.contains(u"Demo/Haupt 木.kicad_dru"_s));
    tree.File(rules, text);
    const CommandResult result = ImportMain();
    EXPECT_EQ(result.exitCode, 4) << ::testing::PrintToString(result);
    FileTree::Snapshot after = before;
    after.insert(u"Demo/Haupt 木.kicad_dru"_s, text);
    EXPECT_EQ(Cloud(), after);
}

TEST_F(KicadImport, ProjectsOfOneImportShareWhatBothName)
{
    const CommandResult result = Import({u"Platine Größe"_s, u"Zweite"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(result.exitCode, 4) << ::testing::PrintToString(result);
    const QString shared =
        Strings(u"cloud/Demo/Zweite/Zweite Platine.kicad_sch"_s, u"\"Sheet file\" \""_s).value(0);
    EXPECT_TRUE(tree.Exists(u"cloud/Demo/Zweite/"_s + shared)) << shared.toStdString();
    EXPECT_EQ(result.Lines().filter(u"Geteilt.kicad_sch"_s).size(), 1) << result.out.toStdString();
    EXPECT_EQ(result.Lines().filter(u"Block.step"_s).size(), 1);
    EXPECT_TRUE(tree.Read(u"cloud/Demo/Zweite/Zweite Platine.kicad_pcb"_s)
                    .contains("${KIPRJMOD}/../Platine Größe/3d/Würfel 木.step"));
}

} // namespace Halvern::Test
