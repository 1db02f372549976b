// SPDX-License-Identifier: Apache-2.0

#include "Mappings.h"
#include "fileset/FileMappingRef.h"
#include "fileset/LinkGraph.h"
#include "fileset/PathIndex.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

TEST(UnusualNodes, WithoutAMappingHaveNothingBelowThemInAnyGraph)
{
    FileSet set;
    AddTo(set, u"D:/w/a.asm"_s, {u"b.prt"_s}, FileMapping::Selected);
    AddTo(set, u"D:/w/b.prt"_s);
    const auto roots = Imp(set).GetFileLinkHierarchy(true);
    FileMappingRef node(u"x"_s, u"1"_s, nullptr);
    node.SetGraph(roots.first()->Graph());
    EXPECT_EQ(node.PathNumber(), -1);
    EXPECT_TRUE(node.Children().isEmpty());
    EXPECT_EQ(roots.first()->Children().size(), 1);
}

TEST(UnusualNodes, OfMappingsOutsideTheGraphHaveNothingBelowThem)
{
    FileSet set;
    AddTo(set, u"D:/w/a.asm"_s, {u"b.prt"_s}, FileMapping::Selected);
    const auto roots = Imp(set).GetFileLinkHierarchy(true);
    FileMappingRef node(u"x"_s, u"1"_s, MakeFile(u"D:/w/a.asm"_s));
    node.SetGraph(roots.first()->Graph());
    EXPECT_EQ(node.PathNumber(), -1);
    EXPECT_TRUE(node.Children().isEmpty());
}

TEST(ChangedSources, FromOrToNothingChangeNoLink)
{
    FileSet set;
    const FileMappingPointer file = AddTo(set, u"D:/w/a.asm"_s, {u"D:/w/b.prt"_s, u""_s});
    const FileLinkList before = file->GetSourceFileLinks();
    Imp(set).ChangeSourceFileLinks(QString(), u"D:/w/c.prt"_s);
    Imp(set).ChangeSourceFileLinks(u"D:/w/b.prt"_s, QString());
    ASSERT_EQ(file->GetSourceFileLinks().size(), 2);
    EXPECT_EQ(file->GetSourceFileLinks()[0].Path, u"D:/w/b.prt"_s);
    EXPECT_EQ(file->GetSourceFileLinks()[1].Path, QString());
    Imp(set).ChangeSourceFileLinks(u"D:/w/b.prt"_s, u"D:/w/c.prt"_s);
    EXPECT_NE(file->GetSourceFileLinks()[0].Path, u"D:/w/b.prt"_s);
}

} // namespace
