// SPDX-License-Identifier: Apache-2.0

#include "LogCapture.h"
#include "Mappings.h"
#include "ServicesFixture.h"
#include "fileset/FileMappingRef.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace Halvern;
using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using SyncPlugin::IFileMapping;
using SyncPlugin::IFileMappingIterator;
using SyncPlugin::WideChar;

const WideChar* Wide(const QString& text)
{
    return reinterpret_cast<const WideChar*>(text.utf16());
}

QString SourceOf(IFileMapping* mapping)
{
    std::u16string text(mapping->GetSourceFile(nullptr, 0) + 1, u' ');
    mapping->GetSourceFile(reinterpret_cast<WideChar*>(text.data()), int(text.size()));
    return QString::fromUtf16(text.c_str());
}

/// A tree over a cloud cache folder, seen as a plug-in sees it.
class MappingView : public ServicesFixture
{
protected:
    MappingView()
    {
        AddTo(set, u"D:/w/top.asm"_s, {u"a.prt"_s, u"sub.asm"_s}, FileMapping::Selected);
        part = AddTo(set, u"D:/w/a.prt"_s);
        AddTo(set, u"D:/w/sub.asm"_s, {u"a.prt"_s});
        roots = Imp(set).GetFileLinkHierarchy(true);
        root = roots[0].get();
    }
    std::unique_ptr<IFileMappingIterator> Children(IFileMapping* mapping)
    {
        return std::unique_ptr<IFileMappingIterator>(mapping->GetChildren());
    }
    IFileMapping* Child(IFileMapping* mapping, int number)
    {
        const std::unique_ptr<IFileMappingIterator> children = Children(mapping);
        for (; number > 0; --number)
            children->Next();
        return children->Next();
    }

    FileSet set;
    FileMappingPointer part;
    FileSetImp::NodeList roots;
    IFileMapping* root = nullptr;
};

TEST_F(MappingView, OfARootIsItsOwnRootAndHasNoParent)
{
    EXPECT_EQ(root->GetRoot(), root);
    EXPECT_EQ(root->GetParent(), nullptr);
    EXPECT_EQ(root->GetRefId(nullptr, 0), 0u);
}

TEST_F(MappingView, LeadsFromAnyNodeToItsParentAndItsRoot)
{
    IFileMapping* const sub = Child(root, 1);
    IFileMapping* const deep = Child(sub, 0);
    EXPECT_EQ(SourceOf(deep), u"D:/w/a.prt"_s);
    EXPECT_EQ(deep->GetParent(), sub);
    EXPECT_EQ(sub->GetParent(), root);
    EXPECT_EQ(deep->GetRoot(), root);
}

TEST_F(MappingView, ListsChildrenInLinkOrderFromTheFront)
{
    const std::unique_ptr<IFileMappingIterator> children = Children(root);
    QStringList sources;
    for (int round = 0; round < 2; ++round) {
        while (children->HasNext())
            sources.append(SourceOf(children->Next()));
        EXPECT_FALSE(children->HasNext());
        EXPECT_EQ(children->Next(), nullptr);
        EXPECT_EQ(children->Next(), nullptr);
        EXPECT_FALSE(children->HasNext());
        children->ToFront();
    }
    EXPECT_EQ(sources, (QStringList{u"D:/w/a.prt"_s, u"D:/w/sub.asm"_s, u"D:/w/a.prt"_s,
                                    u"D:/w/sub.asm"_s}));
}

TEST_F(MappingView, GivesEachCallerAnIteratorOfItsOwn)
{
    const std::unique_ptr<IFileMappingIterator> first = Children(root);
    first->Next();
    EXPECT_EQ(SourceOf(Children(root)->Next()), u"D:/w/a.prt"_s);
    EXPECT_EQ(SourceOf(first->Next()), u"D:/w/sub.asm"_s);
}

TEST_F(MappingView, OfAFileWithoutLinksHasNoChildren)
{
    EXPECT_FALSE(Children(Child(root, 0))->HasNext());
    EXPECT_EQ(Children(Child(root, 0))->Next(), nullptr);
}

TEST_F(MappingView, KeepsChildrenAliveWhileAnIteratorListsThem)
{
    const std::unique_ptr<IFileMappingIterator> children = Children(root);
    roots.clear();
    EXPECT_EQ(SourceOf(children->Next()), u"D:/w/a.prt"_s);
    EXPECT_EQ(SourceOf(children->Next()), u"D:/w/sub.asm"_s);
}

TEST_F(MappingView, StoresARelativeTargetUnderTheTargetRootFolder)
{
    EXPECT_TRUE(Child(root, 0)->SetTargetFile(Wide(u"Parts/./a.prt"_s), true));
    EXPECT_EQ(part->GetTargetFile(), Cloud(u"Parts/a.prt"_s));
}

TEST_F(MappingView, StoresAnAbsoluteTargetUnchanged)
{
    for (const QString& path :
         {u"D:/x/./a.prt"_s, u"//server/share/a.prt"_s, u"\\\\server\\share\\a.prt"_s,
          u"http://x/a.prt"_s, QDir::rootPath() + u"x/a.prt"_s}) {
        EXPECT_TRUE(Child(root, 0)->SetTargetFile(Wide(path), true));
        EXPECT_EQ(part->GetTargetFile(), path);
    }
}

TEST_F(MappingView, ReplacesATargetOnlyWhenAsked)
{
    IFileMapping* const child = Child(root, 0);
    EXPECT_FALSE(child->HasTargetFile());
    EXPECT_TRUE(child->SetTargetFile(Wide(u"a.prt"_s), false));
    EXPECT_TRUE(child->HasTargetFile());
    EXPECT_FALSE(child->SetTargetFile(Wide(u"b.prt"_s), false));
    EXPECT_EQ(part->GetTargetFile(), Cloud(u"a.prt"_s));
    EXPECT_TRUE(child->SetTargetFile(Wide(u"b.prt"_s), true));
    EXPECT_EQ(part->GetTargetFile(), Cloud(u"b.prt"_s));
}

TEST_F(MappingView, LeavesAnEmptyTargetEmpty)
{
    EXPECT_EQ(root->ResolveTargetPath(Wide(QString()), nullptr, 0), 0u);
    EXPECT_TRUE(Child(root, 0)->SetTargetFile(nullptr, true));
    EXPECT_FALSE(part->HasTargetFile());
}

TEST_F(MappingView, TellsWhetherTheTargetExists)
{
    tree.File(u"cloud/a.prt"_s);
    IFileMapping* const child = Child(root, 0);
    EXPECT_FALSE(child->ExistsInTarget());
    child->SetTargetFile(Wide(u"a.prt"_s), true);
    EXPECT_TRUE(child->ExistsInTarget());
}

TEST_F(MappingView, NamesTheTargetRootFolderOnEveryNode)
{
    for (IFileMapping* node : {root, Child(root, 0), Child(Child(root, 1), 0)})
        EXPECT_EQ(node->GetTargetRootFolder(nullptr, 0), unsigned(Cloud().size()));
}

TEST_F(MappingView, ChangesASourceAndEveryLinkThatNamesIt)
{
    LogCapture log;
    EXPECT_TRUE(Child(root, 0)->ChangeSourceFile(Wide(u"D:/new/b.prt"_s)));
    EXPECT_EQ(
        log.Lines(),
        QStringList{u"INFO Changing source file from D:/w/a.prt to D:/new/b.prt and updating all "
                    u"links which reference this source file"_s});
    EXPECT_EQ(log.Records().first().file, u"FileSetImp.cpp"_s);
    EXPECT_EQ(part->GetSourceFile(), u"D:/new/b.prt"_s);
    EXPECT_EQ(set.IndexOfSourceFile(u"D:/new/b.prt"_s), 1);
    for (const qsizetype holder : {0, 2})
        EXPECT_EQ(set.GetSourceFileLinks(set.GetFiles()[holder]).first(), part);
}

TEST_F(MappingView, ChangesASourceToItselfWithALineAndNothingElse)
{
    const FileLinkList before = set.GetFiles().first()->GetSourceFileLinks();
    LogCapture log;
    EXPECT_TRUE(Child(root, 0)->ChangeSourceFile(Wide(u"D:/w/a.prt"_s)));
    EXPECT_EQ(log.Lines().size(), 1);
    EXPECT_EQ(set.GetFiles().first()->GetSourceFileLinks(), before);
    EXPECT_EQ(part->GetSourceFile(), u"D:/w/a.prt"_s);
}

TEST_F(MappingView, ChangesTheLetterCaseOfASourceInItsLinksToo)
{
    EXPECT_TRUE(Child(root, 0)->ChangeSourceFile(Wide(u"D:/w/A.PRT"_s)));
    EXPECT_EQ(part->GetSourceFile(), u"D:/w/A.PRT"_s);
    EXPECT_NE(set.GetFiles().first()->GetSourceFileLinks().first().Path, u"a.prt"_s);
}

TEST_F(MappingView, RefusesToChangeASourceToNothing)
{
    LogCapture log;
    EXPECT_FALSE(Child(root, 0)->ChangeSourceFile(nullptr));
    EXPECT_FALSE(Child(root, 0)->ChangeSourceFile(Wide(QString())));
    EXPECT_EQ(part->GetSourceFile(), u"D:/w/a.prt"_s);
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(MappingView, RefusesToChangeTheSourceOfAFileThatLeftTheSet)
{
    IFileMapping* const child = Child(root, 0);
    set.RemoveFile(u"D:/w/a.prt"_s, false, false);
    LogCapture log;
    EXPECT_FALSE(child->ChangeSourceFile(Wide(u"D:/new/b.prt"_s)));
    EXPECT_EQ(part->GetSourceFile(), u"D:/w/a.prt"_s);
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST(MappingViewOfNothing, SaysNo)
{
    FileMappingRef node(QString(), QString(), nullptr);
    EXPECT_FALSE(node.SetTargetFile(Wide(u"D:/c/a.prt"_s), true));
    EXPECT_FALSE(node.HasTargetFile());
    EXPECT_FALSE(node.ExistsInTarget());
    EXPECT_FALSE(node.ChangeSourceFile(Wide(u"D:/c/a.prt"_s)));
    EXPECT_EQ(node.GetParent(), nullptr);
    EXPECT_EQ(node.GetRoot(), &node);
    const std::unique_ptr<IFileMappingIterator> children(node.GetChildren());
    EXPECT_FALSE(children->HasNext());
}

TEST(MappingViewWithoutATargetRoot, LeavesRelativeTargetsAsTheyAre)
{
    const FileMappingPointer file = MakeFile(u"D:/w/a.prt"_s);
    FileMappingRef node(QString(), QString(), file);
    EXPECT_TRUE(node.SetTargetFile(Wide(u"Parts/a.prt"_s), true));
    EXPECT_EQ(file->GetTargetFile(), u"Parts/a.prt"_s);
}

} // namespace
