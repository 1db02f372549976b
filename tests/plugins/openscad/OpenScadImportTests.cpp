// SPDX-License-Identifier: Apache-2.0

// Models imported by the command with the built plug-ins.

#include "CommandFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

/// A model whose included file imports from the folder above the model.
class OpenScadImport : public CommandFixture
{
protected:
    OpenScadImport()
    {
        tree.File(u"work/p/models/case.scad"_s, Model);
        tree.File(u"work/p/models/lib/b.scad"_s, "import(\"../x.stl\");\nimport(\"own.stl\");\n");
        tree.File(u"work/p/models/own.stl"_s, "own").File(u"work/p/x.stl"_s, "x");
    }

    CommandResult ImportModel(const QStringList& arguments = {}) const
    {
        return Import(QStringList{u"p/models/case.scad"_s, u"--to"_s, u"Demo"_s} + arguments);
    }

    const QByteArray Model = "include <lib/b.scad>\nuse <lib/gcd.scad>\n";
    const QStringList Files{u"Demo/models/case.scad"_s, u"Demo/models/lib/b.scad"_s,
                            u"Demo/models/own.stl"_s, u"Demo/x.stl"_s};
};

} // namespace

TEST_F(OpenScadImport, AModelFindsWhatItsIncludedFilesImportFromAbove)
{
    const CommandResult result = ImportModel();
    EXPECT_EQ(result.exitCode, 4) << ::testing::PrintToString(result); // gcd.scad
    EXPECT_EQ(Cloud().keys(), Files);
    EXPECT_EQ(tree.Read(u"cloud/Demo/models/case.scad"_s), Model);
    EXPECT_EQ(tree.Read(u"cloud/Demo/models/lib/b.scad"_s),
              tree.Read(u"work/p/models/lib/b.scad"_s));
}

TEST_F(OpenScadImport, AUseThatLeadsNowhereIsReportedAndStays)
{
    const CommandResult result = ImportModel();
    EXPECT_EQ(result.Lines().filter(u"missing "_s).size(), 1) << result.out.toStdString();
    EXPECT_TRUE(result.out.contains("lib/gcd.scad")) << result.out.toStdString();
    EXPECT_TRUE(tree.Read(u"cloud/Demo/models/case.scad"_s).contains("use <lib/gcd.scad>"));
}

TEST_F(OpenScadImport, ASecondImportCopiesNothing)
{
    ImportModel();
    const FileTree::Snapshot before = Cloud();
    const CommandResult result = ImportModel();
    EXPECT_EQ(result.Lines().filter(u"unchanged  "_s).size(), 4) << result.out.toStdString();
    EXPECT_EQ(Cloud(), before);
}

TEST_F(OpenScadImport, AChangedModelIsUpdatedInItsPlace)
{
    ImportModel();
    const QString source = u"work/p/models/case.scad"_s;
    tree.File(source, Model + "// more\n");
    tree.Touch(source, QDateTime::currentDateTime().addSecs(-100));
    ImportModel();
    EXPECT_EQ(Cloud().keys(), Files);
    EXPECT_EQ(tree.Read(u"cloud/Demo/models/case.scad"_s), Model + "// more\n");
}

TEST_F(OpenScadImport, WhatIsInTheWayOfAnImportMovesTheModelWithItsCompanions)
{
    tree.File(u"cloud/Demo/x.stl"_s, "somebody's");
    const CommandResult result = ImportModel({u"--collisions"_s, u"rename"_s});
    EXPECT_EQ(result.exitCode, 4) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Read(u"cloud/Demo/x.stl"_s), "somebody's");
    EXPECT_EQ(tree.Read(u"cloud/Demo/case (2)/x.stl"_s), "x");
    EXPECT_EQ(tree.Read(u"cloud/Demo/case (2)/models/own.stl"_s), "own");
    EXPECT_TRUE(tree.Exists(u"cloud/Demo/case (2)/models/case.scad"_s));
}

} // namespace Halvern::Test
