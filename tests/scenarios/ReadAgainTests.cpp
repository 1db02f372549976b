// SPDX-License-Identifier: Apache-2.0

// A rewritten copy is read again before it gets its name, in a folder where nothing else stands.
// OpenSCAD files are read by rules that look for other files around them.

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

class ReadAgain : public ScenarioFixture
{
protected:
    void ExpectSettled(const QStringList& arguments)
    {
        const ImportReport report = Report(arguments);
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        const auto before = Stamps(u"cloud"_s);
        const ImportReport again = Report(arguments);
        EXPECT_EQ(again.exitCode, 0) << ::testing::PrintToString(again);
        EXPECT_EQ(Stamps(u"cloud"_s), before);
    }
};

} // namespace

TEST_F(ReadAgain, AnImportWhoseFileStandsInAFolderAboveIsNotTakenForThatOfAnotherModel)
{
    tree.File(u"work/proj/main.scad"_s, "include <.lib/x.scad>\nimport(\"lib/z.stl\");\n")
        .File(u"work/proj/.lib/x.scad"_s, "cube(1);\n")
        .File(u"work/proj/lib/z.stl"_s, "solid");
    // Another project has brought what the copy in the cloud folder itself is to link.
    ExpectSettled({u"proj"_s});
    ExpectSettled({u"proj/main.scad"_s, u"--to"_s, u"."_s});
    EXPECT_EQ(tree.Read(u"cloud/main.scad"_s),
              "include <proj/.lib/x.scad>\nimport(\"proj/lib/z.stl\");\n");
}

TEST_F(ReadAgain, AFileOfTheProjectIsNotTakenForThatOfAnInstalledLibrary)
{
    tree.File(u"work/proj/main.scad"_s, "use <../MCAD/gear.scad>\n")
        .File(u"work/MCAD/gear.scad"_s, "cube(1);\n");
    ExpectSettled({u"proj/main.scad"_s, u"--to"_s, u"Demo"_s});
    EXPECT_EQ(tree.Read(u"cloud/Demo/main.scad"_s), "use <MCAD/gear.scad>\n");
}

TEST_F(ReadAgain, ACopyInPlaceGetsLinksThatItsPluginDoesNotShowThere)
{
    tree.File(u"work/proj/main.scad"_s, "use <part.scad>\nimport(\"../lib/z.stl\");\n")
        .File(u"work/proj/part.scad"_s, "cube(1);\n")
        .File(u"work/lib/z.stl"_s, "solid");
    const QStringList arguments{u"proj/main.scad"_s, u"--to"_s, u"Demo/sub"_s};
    ExpectSettled({u"lib/z.stl"_s, u"--to"_s, u"Demo/Other"_s});
    ExpectSettled(arguments);
    ASSERT_EQ(tree.Read(u"cloud/Demo/sub/main.scad"_s),
              "use <part.scad>\nimport(\"../Other/z.stl\");\n");
    // That copy is gone, and seen from a folder above a file stands where the link leads.
    tree.Remove(u"cloud/Demo/Other/z.stl"_s);
    tree.File(u"cloud/Other/z.stl"_s, "another solid");
    ExpectSettled(arguments);
    EXPECT_EQ(tree.Read(u"cloud/Demo/sub/main.scad"_s),
              "use <part.scad>\nimport(\"lib/z.stl\");\n");
}

} // namespace Halvern::Test
