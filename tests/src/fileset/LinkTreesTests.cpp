// SPDX-License-Identifier: Apache-2.0

#include "LogCapture.h"
#include "Mappings.h"
#include "ServicesFixture.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

/// "top(a b(c))": the source paths without "D:/w/".
QString Shape(FileMappingRef& node)
{
    QStringList children;
    for (const FileMappingRef::Pointer& child : node.Children())
        children.append(Shape(*child));
    const QString name = node.SourceFile().mid(5);
    return children.isEmpty() ? name : u"%1(%2)"_s.arg(name, children.join(u' '));
}

QStringList Shapes(const FileSetImp::NodeList& roots)
{
    QStringList shapes;
    for (const FileSetImp::NodePointer& root : roots)
        shapes.append(Shape(*root));
    return shapes;
}

QString CycleLine(const QString& link, const QString& holder)
{
    return u"INFO Circular reference detected. File link %1 in %2 leads to circular reference."_s
        .arg(link, holder);
}

class LinkTrees : public ::testing::Test
{
protected:
    FileMappingPointer Add(const QString& name, const QStringList& links = {},
                           FileMappingFlag flags = FileMapping::NoFlag)
    {
        return AddTo(set, u"D:/w/"_s + name, links, flags);
    }
    FileSetImp::NodeList Trees(bool useSourceLinks = true)
    {
        return Imp(set).GetFileLinkHierarchy(useSourceLinks);
    }

    FileSet set;
    LogCapture log;
};

TEST_F(LinkTrees, HaveNoRootWithoutASelectedFile)
{
    Add(u"a"_s, {u"b"_s});
    Add(u"b"_s);
    Add(u"f"_s, {}, FileMapping::Selected | FileMapping::Folder);
    EXPECT_TRUE(Trees().isEmpty());
    EXPECT_TRUE(Trees(false).isEmpty());
}

TEST_F(LinkTrees, HaveOneRootPerSelectedFileInOrderOfTheSet)
{
    Add(u"b"_s, {}, FileMapping::Selected);
    Add(u"x"_s);
    Add(u"a"_s, {u"b"_s}, FileMapping::Selected);
    const FileSetImp::NodeList roots = Trees();
    EXPECT_EQ(Shapes(roots), (QStringList{u"b"_s, u"a(b)"_s}));
    EXPECT_EQ(roots[0]->LinkPath(), QString());
    EXPECT_EQ(roots[0]->RefId(), QString());
    EXPECT_EQ(roots[0]->Parent(), nullptr);
}

TEST_F(LinkTrees, ShowAPartTwiceWhenItIsLinkedTwice)
{
    const FileMappingPointer a = Add(u"a"_s, {u"p"_s, u"./P"_s}, FileMapping::Selected);
    const FileMappingPointer p = Add(u"p"_s);
    const FileSetImp::NodeList roots = Trees();
    const QList<FileMappingRef::Pointer>& children = roots[0]->Children();
    ASSERT_EQ(children.size(), 2);
    EXPECT_EQ(children[0]->Mapping(), p);
    EXPECT_EQ(children[1]->Mapping(), p);
    EXPECT_EQ(children[0]->RefId(), u"1"_s);
    EXPECT_EQ(children[1]->RefId(), u"2"_s);
    EXPECT_EQ(children[0]->LinkPath(), u"p"_s);
    EXPECT_EQ(children[1]->LinkPath(), u"./P"_s);
    EXPECT_EQ(children[0]->Parent(), roots[0].get());
    EXPECT_EQ(FileSetImp::GetParents(p, roots), FileMappingList{a});
}

TEST_F(LinkTrees, IgnoreLinksToFilesOutsideTheSet)
{
    Add(u"a"_s, {u"gone"_s, u"b"_s, u"D:/gone"_s}, FileMapping::Selected);
    Add(u"b"_s);
    EXPECT_EQ(Shapes(Trees()), QStringList{u"a(b)"_s});
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(LinkTrees, CutACycleOfOneAtOnce)
{
    Add(u"a"_s, {u"a"_s}, FileMapping::Selected);
    const FileSetImp::NodeList roots = Trees();
    EXPECT_EQ(Shapes(roots), QStringList{u"a(a)"_s});
    EXPECT_TRUE(roots[0]->Children()[0]->ClosesCycle());
    EXPECT_FALSE(roots[0]->ClosesCycle());
    EXPECT_EQ(log.Lines(), QStringList{CycleLine(u"D:/w/a"_s, u"D:/w/a"_s)});
}

TEST_F(LinkTrees, CutACycleOfTwoWhereItCloses)
{
    Add(u"a"_s, {u"b"_s}, FileMapping::Selected);
    Add(u"b"_s, {u"a"_s});
    EXPECT_EQ(Shapes(Trees()), QStringList{u"a(b(a))"_s});
    EXPECT_EQ(log.Lines(), QStringList{CycleLine(u"D:/w/a"_s, u"D:/w/b"_s)});
    EXPECT_EQ(log.Records().first().file, u"FileSetImp.cpp"_s);
}

TEST_F(LinkTrees, CutACycleOfThreeOnceForEveryFileThatStartsATree)
{
    Add(u"a"_s, {u"b"_s}, FileMapping::Selected);
    Add(u"b"_s, {u"c"_s}, FileMapping::Selected);
    Add(u"c"_s, {u"a"_s});
    EXPECT_EQ(Shapes(Trees()), (QStringList{u"a(b(c(a)))"_s, u"b(c(a(b)))"_s}));
    EXPECT_EQ(log.Lines(), (QStringList{CycleLine(u"D:/w/a"_s, u"D:/w/c"_s),
                                        CycleLine(u"D:/w/b"_s, u"D:/w/a"_s)}));
}

TEST_F(LinkTrees, ReportCyclesInTheOrderOfTheLinks)
{
    Add(u"a"_s, {u"b"_s, u"a"_s, u"c"_s}, FileMapping::Selected);
    Add(u"b"_s, {u"a"_s});
    Add(u"c"_s, {u"a"_s, u"b"_s});
    EXPECT_EQ(Shapes(Trees()), QStringList{u"a(b(a) a c(a b(a)))"_s});
    EXPECT_EQ(
        log.Lines(),
        (QStringList{CycleLine(u"D:/w/a"_s, u"D:/w/b"_s), CycleLine(u"D:/w/a"_s, u"D:/w/a"_s),
                     CycleLine(u"D:/w/a"_s, u"D:/w/c"_s), CycleLine(u"D:/w/a"_s, u"D:/w/b"_s)}));
}

TEST_F(LinkTrees, CloseACycleByPathWhicheverMappingHasIt)
{
    Add(u"a"_s, {u"b"_s});
    Add(u"A"_s, {u"b"_s}, FileMapping::Selected);
    Add(u"b"_s, {u"A"_s});
    EXPECT_EQ(Shapes(Trees()), QStringList{u"A(b(a))"_s});
    EXPECT_EQ(log.Lines(), QStringList{CycleLine(u"D:/w/a"_s, u"D:/w/b"_s)});
}

TEST_F(LinkTrees, SayNothingAboutAFileInSiblingBranches)
{
    Add(u"a"_s, {u"b"_s, u"c"_s}, FileMapping::Selected);
    Add(u"b"_s, {u"d"_s});
    Add(u"c"_s, {u"d"_s});
    Add(u"d"_s, {u"e"_s});
    Add(u"e"_s);
    EXPECT_EQ(Shapes(Trees()), QStringList{u"a(b(d(e)) c(d(e)))"_s});
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(LinkTrees, OfTwoSelectedFilesEachShowTheSharedPart)
{
    const FileMappingPointer a = Add(u"a"_s, {u"p"_s}, FileMapping::Selected);
    const FileMappingPointer b = Add(u"b"_s, {u"p"_s}, FileMapping::Selected);
    const FileMappingPointer p = Add(u"p"_s);
    const FileSetImp::NodeList roots = Trees();
    EXPECT_EQ(Shapes(roots), (QStringList{u"a(p)"_s, u"b(p)"_s}));
    EXPECT_NE(roots[0]->Children()[0], roots[1]->Children()[0]);
    EXPECT_EQ(FileSetImp::GetParents(p, roots), (FileMappingList{a, b}));
    EXPECT_TRUE(set.RemoveFile(u"D:/w/a"_s, true, false));
    EXPECT_EQ(set.GetFiles(), (FileMappingList{b, p}));
}

TEST_F(LinkTrees, NameAParentOncePerNodeThatLinks)
{
    const FileMappingPointer a = Add(u"a"_s, {u"s"_s, u"s"_s}, FileMapping::Selected);
    const FileMappingPointer s = Add(u"s"_s, {u"p"_s});
    const FileMappingPointer p = Add(u"p"_s);
    EXPECT_EQ(FileSetImp::GetParents(p, Trees()), (FileMappingList{s, s}));
    EXPECT_EQ(FileSetImp::GetParents(s, Trees()), FileMappingList{a});
    EXPECT_TRUE(FileSetImp::GetParents(a, Trees()).isEmpty());
}

TEST_F(LinkTrees, FollowTargetLinksBetweenTargetsInTargetMode)
{
    const FileMappingPointer a = Add(u"a"_s, {u"b"_s}, FileMapping::Selected);
    const FileMappingPointer b = Add(u"b"_s);
    const FileMappingPointer c = Add(u"c"_s);
    a->SetTargetFile(u"D:/cloud/x/a"_s, true);
    b->SetTargetFile(u"D:/cloud/x/b"_s, true);
    c->SetTargetFile(u"D:/cloud/c"_s, true);
    a->SetTargetFileLinks(Links({u"../C"_s}));
    EXPECT_EQ(Shapes(Trees(false)), QStringList{u"a(c)"_s});
    EXPECT_EQ(Shapes(Trees(true)), QStringList{u"a(b)"_s});
}

TEST_F(LinkTrees, AttachACopyWhoseLinkStillNamesTheSource)
{
    const FileMappingPointer a = Add(u"a"_s, {}, FileMapping::Selected);
    const FileMappingPointer b = Add(u"b"_s);
    a->SetTargetFile(u"D:/cloud/a"_s, true);
    b->SetTargetFile(u"D:/cloud/lib/b"_s, true);
    a->SetTargetFileLinks(Links({u"D:/W/b"_s, u"../w/b"_s}));
    const FileSetImp::NodeList roots = Trees(false);
    ASSERT_EQ(Shapes(roots), QStringList{u"a(b)"_s})
        << "only an absolute link is looked up among the sources";
    EXPECT_EQ(roots[0]->Children()[0]->LinkPath(), u"D:/W/b"_s);
}

TEST_F(LinkTrees, PreferATargetToASourceWithTheSamePath)
{
    const FileMappingPointer a = Add(u"a"_s, {}, FileMapping::Selected);
    Add(u"b"_s);
    const FileMappingPointer c = Add(u"c"_s);
    a->SetTargetFile(u"D:/cloud/a"_s, true);
    c->SetTargetFile(u"D:/w/b"_s, true);
    a->SetTargetFileLinks(Links({u"D:/w/b"_s}));
    EXPECT_EQ(Shapes(Trees(false)), QStringList{u"a(c)"_s});
}

TEST_F(LinkTrees, NeverLookAmongTargetsInSourceMode)
{
    Add(u"a"_s, {u"D:/cloud/b"_s}, FileMapping::Selected);
    Add(u"b"_s)->SetTargetFile(u"D:/cloud/b"_s, true);
    EXPECT_EQ(Shapes(Trees()), QStringList{u"a"_s});
}

TEST_F(LinkTrees, NameTargetsInLinesAboutCyclesOfTargets)
{
    const FileMappingPointer a = Add(u"a"_s, {}, FileMapping::Selected);
    a->SetTargetFile(u"D:/cloud/a"_s, true);
    a->SetTargetFileLinks(Links({u"A"_s}));
    Trees(false);
    EXPECT_EQ(log.Lines(), QStringList{CycleLine(u"D:/cloud/a"_s, u"D:/cloud/a"_s)});
}

TEST_F(LinkTrees, AreMadeAnewAtEachCall)
{
    const FileMappingPointer a = Add(u"a"_s, {u"b"_s}, FileMapping::Selected);
    Add(u"b"_s);
    const FileSetImp::NodeList before = Trees();
    a->ClearSourceFileLinks();
    EXPECT_EQ(Shapes(Trees()), QStringList{u"a"_s});
    EXPECT_EQ(Shapes(before), QStringList{u"a(b)"_s});
}

using LinkTreesInTheCloud = ServicesFixture;

TEST_F(LinkTreesInTheCloud, ResolveTargetsAgainstTheConvertedCloudCacheFolder)
{
    FileSet set;
    AddTo(set, u"D:/w/a"_s, {u"b"_s}, FileMapping::Selected);
    AddTo(set, u"D:/w/b"_s);
    const FileSetImp::NodeList roots = Imp(set).GetFileLinkHierarchy(true);
    EXPECT_EQ(roots[0]->ResolveTargetPath(u"x/y.prt"_s), Cloud(u"x/y.prt"_s));
    EXPECT_EQ(roots[0]->Children()[0]->ResolveTargetPath(u"y.prt"_s), Cloud(u"y.prt"_s));
}

} // namespace
