// SPDX-License-Identifier: Apache-2.0

// A project of KiCad 5 and a simulation, imported by the command with the built plug-ins.

#include "CommandFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class KicadOldProjectImport : public CommandFixture
{
protected:
    KicadOldProjectImport()
    {
        const auto schematic = [](const QByteArray& libraries, const QByteArray& content) {
            return "EESchema Schematic File Version 2\n" + libraries +
                   "EELAYER 25 0\nEELAYER END\n" + content + "$EndSCHEMATC\n";
        };
        const auto sheet = [](const QByteArray& id, const QByteArray& file) {
            return "$Sheet\nS 1 2 3 4\nU " + id + "\nF0 \"n\" 60\nF1 \"" + file +
                   "\" 60\n$EndSheet\n";
        };
        tree.File(u"work/p/main.pro"_s, "[eeschema]\nLibDir=../lib\n[eeschema/libraries]\n"
                                        "LibName1=power\nLibName2=own\nLibName3=parts/near\n");
        tree.File(u"work/p/main.sch"_s,
                  schematic("LIBS:power\nLIBS:own\nLIBS:main-cache\n",
                            sheet("5A1", "sub/in.sch") + sheet("5A2", "../shared/out.sch") +
                                sheet("5A3", "gone.sch")));
        tree.File(u"work/p/sub/in.sch"_s,
                  schematic({}, "Text Notes 1 2 0 60 ~ 0\n.tran 1u 1m\\n.inc sim/a.lib\n"));
        tree.File(u"work/shared/out.sch"_s, schematic({}, {}));
        tree.File(u"work/p/main-cache.lib"_s, "EESchema-LIBRARY Version 2.3\n");
        tree.File(u"work/p/parts/near.lib"_s, "EESchema-LIBRARY Version 2.3\n");
        tree.File(u"work/lib/own.lib"_s, "EESchema-LIBRARY Version 2.3\n");
        tree.File(u"work/lib/own.dcm"_s, "EESchema-DOCLIB  Version 2.0\n");
        tree.File(u"work/p/sim/a.lib"_s, "* a\n.include b.mod\n");
        tree.File(u"work/p/sim/b.mod"_s, "* b\n");
        tree.File(u"work/p/main.kicad_pcb"_s, "(kicad_pcb (version 20171130))\n");
    }

    CommandResult ImportMain(const QStringList& arguments = {}) const
    {
        return Import(QStringList{u"p/main.pro"_s, u"--to"_s, u"Demo"_s} + arguments);
    }

    QByteArray Copy(const QString& name) const { return tree.Read(u"cloud/Demo/"_s + name); }
};

} // namespace

TEST_F(KicadOldProjectImport, BringsSheetsLibrariesCacheAndModelsOfTheSimulator)
{
    const CommandResult result = ImportMain();
    EXPECT_EQ(result.exitCode, 4) << ::testing::PrintToString(result); // gone.sch
    EXPECT_EQ(tree.Contents(u"cloud/Demo"_s).keys(),
              (QStringList{u"lib/own.dcm"_s, u"lib/own.lib"_s, u"main-cache.lib"_s,
                           u"main.kicad_pcb"_s, u"main.pro"_s, u"main.sch"_s, u"parts/near.lib"_s,
                           u"shared/out.sch"_s, u"sim/a.lib"_s, u"sim/b.mod"_s, u"sub/in.sch"_s}));
    EXPECT_TRUE(Copy(u"main.pro"_s)
                    .contains("LibName1=power\nLibName2=lib/own\n"
                              "LibName3=parts/near\n"))
        << Copy(u"main.pro"_s).toStdString();
    EXPECT_TRUE(Copy(u"main.sch"_s).contains("F1 \"shared/out.sch\" 60"));
    EXPECT_TRUE(Copy(u"main.sch"_s).contains("F1 \"sub/in.sch\" 60"));
    EXPECT_EQ(Copy(u"sub/in.sch"_s), tree.Read(u"work/p/sub/in.sch"_s));
}

TEST_F(KicadOldProjectImport, ASecondImportCopiesNothing)
{
    ImportMain();
    const FileTree::Snapshot before = Cloud();
    const CommandResult result = ImportMain();
    EXPECT_EQ(result.exitCode, 4) << ::testing::PrintToString(result);
    EXPECT_EQ(result.Lines().filter(u"unchanged  "_s).size(), 11) << result.out.toStdString();
    EXPECT_EQ(Cloud(), before);
}

TEST_F(KicadOldProjectImport, TheSchematicOrTheBoardBringsTheProject)
{
    for (const QString& name : {u"main.sch"_s, u"main.kicad_pcb"_s}) {
        const QString folder = u"From "_s + name;
        Import({u"p/"_s + name, u"--to"_s, folder});
        const QStringList copies = tree.Contents(u"cloud/"_s + folder).keys();
        for (const char* const wanted :
             {"main.pro", "main.sch", "main.kicad_pcb", "main-cache.lib", "sub/in.sch"})
            EXPECT_TRUE(copies.contains(QLatin1String(wanted)))
                << wanted << ' ' << copies.join(u' ').toStdString();
    }
}

TEST_F(KicadOldProjectImport, ARenamedProjectIsWholeInAFolderOfItsOwn)
{
    tree.File(u"cloud/Demo/main.sch"_s, "somebody's");
    const CommandResult result = ImportMain({u"--collisions"_s, u"rename"_s});
    EXPECT_EQ(result.exitCode, 4) << ::testing::PrintToString(result);
    EXPECT_EQ(
        tree.Contents(u"cloud/Demo/main (2)"_s).keys(),
        (QStringList{u"main-cache.lib"_s, u"main.kicad_pcb"_s, u"main.pro"_s, u"main.sch"_s}));
    EXPECT_TRUE(Copy(u"main (2)/main.sch"_s).contains("F1 \"../sub/in.sch\" 60"));
    EXPECT_TRUE(Copy(u"main (2)/main.pro"_s).contains("LibName2=../lib/own\n"));
}

} // namespace Halvern::Test
