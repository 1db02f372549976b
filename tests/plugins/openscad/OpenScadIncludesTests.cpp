// SPDX-License-Identifier: Apache-2.0

// The text of an included file is part of the model: OpenSCAD looks for its imports from the
// model's folder. What a used file imports is looked for from that file's folder first.

#include "OpenScadFixture.h"

#include "openscad/IncludedImports.h"

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using OpenScadIncludes = OpenScadFixture;

} // namespace

TEST_F(OpenScadIncludes, AnImportOfAnIncludedFileComesAlongWithTheModel)
{
    tree.File(u"p/lib/b.scad"_s, "include <deep/c.scad>\nimport(\"logo.stl\");")
        .File(u"p/lib/deep/c.scad"_s, "import(file=\"t/x.stl\"); import(\"none.stl\");")
        .File(u"p/logo.stl"_s)
        .File(u"p/t/x.stl"_s);
    EXPECT_EQ(Model("include <lib/b.scad>"), (Links{LinkTo(u"include 1", u"lib/b.scad"),
                                                    LinkTo(u"companion:logo.stl", u"logo.stl"),
                                                    LinkTo(u"companion:t/x.stl", u"t/x.stl")}));
    // From where it stands the import leads nowhere, which is not the file's fault.
    EXPECT_EQ(Read(u"p/lib/b.scad"_s), (Links{LinkTo(u"include 1", u"deep/c.scad")}));
    EXPECT_EQ(Read(u"p/lib/deep/c.scad"_s), (Links{LinkTo(u"import 2", u"none.stl")}));
}

TEST_F(OpenScadIncludes, AnImportOfAUsedFileIsItsOwnUnlessOnlyTheModelHasIt)
{
    tree.File(u"p/lib/b.scad"_s, "import(\"own.stl\"); import(\"top.stl\");")
        .File(u"p/lib/own.stl"_s)
        .File(u"p/own.stl"_s)
        .File(u"p/top.stl"_s);
    EXPECT_EQ(Model("use <lib/b.scad>"),
              (Links{LinkTo(u"use 1", u"lib/b.scad"), LinkTo(u"companion:top.stl", u"top.stl")}));
    EXPECT_EQ(Read(u"p/lib/b.scad"_s), (Links{LinkTo(u"companion:own.stl", u"own.stl")}));
}

TEST_F(OpenScadIncludes, AnImportThatAFolderAboveHasAsWellKeepsItsName)
{
    tree.File(u"p/x.stl"_s).File(u"p/lib/x.stl"_s).File(u"p/lib/own.stl"_s);
    const QByteArray text = "import(\"x.stl\"); import(\"x.stl\"); import(\"own.stl\");";
    tree.File(u"p/lib/b.scad"_s, text);
    EXPECT_EQ(Read(u"p/lib/b.scad"_s),
              (Links{LinkTo(u"companion:x.stl", u"x.stl"), LinkTo(u"import 3", u"own.stl")}));
    EXPECT_EQ(tree.Read(u"p/lib/b.scad"_s), text);
}

TEST_F(OpenScadIncludes, WhatTheModelNamesItselfIsNoCompanion)
{
    tree.File(u"p/lib/b.scad"_s, "import(\"x.stl\");").File(u"p/x.stl"_s);
    EXPECT_EQ(Model("include <lib/b.scad>\nimport(\"./x.stl\");"),
              (Links{LinkTo(u"include 1", u"lib/b.scad"), LinkTo(u"import 1", u"./x.stl")}));
}

TEST_F(OpenScadIncludes, FilesThatUseEachOtherAreGoneThroughOnce)
{
    tree.File(u"p/b.scad"_s, "use <a.scad>\ninclude <b.scad>\ninclude <../p/b.scad>\n");
    EXPECT_EQ(Model("use <b.scad>\ninclude <a.scad>\ninclude <b.scad>"),
              (Links{LinkTo(u"use 1", u"b.scad"), LinkTo(u"include 1", u"a.scad"),
                     LinkTo(u"include 2", u"b.scad")}));
}

TEST_F(OpenScadIncludes, AnIncludedFileThatCannotBeReadHidesNothingElse)
{
    tree.File(u"p/bad.scad"_s, "\"")
        .File(u"p/b.scad"_s, "import(\"../x.stl\");")
        .File(u"p/font.ttf"_s, "\"");
    tree.File(u"x.stl"_s);
    EXPECT_EQ(Model("include <bad.scad>\nuse <font.ttf>\ninclude <b.scad>").last(),
              LinkTo(u"companion:../x.stl", u"../x.stl"));
}

TEST_F(OpenScadIncludes, TooManyIncludedFilesAreReported)
{
    QByteArray text;
    for (std::size_t i = 0; i <= Formats::OpenScad::MaxIncludedFiles; ++i) {
        const QByteArray name = QByteArray::number(qulonglong(i)) + ".scad";
        tree.File(u"p/"_s + QString::fromUtf8(name), "");
        text += "use <" + name + ">\n";
    }
    EXPECT_EQ(ReadFailure(m_name, text), u"more than 2000 files are included"_s);
}

TEST_F(OpenScadIncludes, TooMuchIncludedTextIsReportedBeforeItIsRead)
{
    const QString large = u"p/large.scad"_s;
    tree.File(large, "");
    ASSERT_TRUE(QFile::resize(tree.Path(large), qint64(Formats::OpenScad::MaxIncludedBytes) + 1));
    EXPECT_EQ(ReadFailure(m_name, "include <large.scad>"),
              u"the included files have more than 268435456 bytes"_s);
}

TEST_F(OpenScadIncludes, ACompanionThatKeepsItsPlaceNeedsNoRewriting)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(m_name, "include <lib/b.scad>").Touch(m_name, time);
    // Beside a copy the included file is not where the text says, and nobody can look into it.
    EXPECT_TRUE(Repath(m_name, {LinkTo(u"companion:t/x.stl", u"t/x.stl")}));
    EXPECT_EQ(tree.Modified(m_name), time);
}

TEST_F(OpenScadIncludes, ACompanionThatLosesItsPlaceIsAFailureAndTheOtherLinksAreRewritten)
{
    tree.File(m_name, "include <lib/b.scad>");
    EXPECT_FALSE(Repath(
        m_name, {LinkTo(u"include 1", u"b.scad"), LinkTo(u"companion:../t/x.stl", u"t/x.stl")}));
    EXPECT_TRUE(context.lines.last().endsWith(
        u"../t/x.stl is named in an included file and has to keep its place, not "
        "become t/x.stl"_s))
        << context.lines.last().toStdString();
    EXPECT_EQ(tree.Read(m_name), "include <b.scad>");
}

} // namespace Halvern::Test
