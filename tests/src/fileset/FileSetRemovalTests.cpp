// SPDX-License-Identifier: Apache-2.0

#include "LogCapture.h"
#include "Mappings.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

TEST(FileSetRemoval, OfAnUnknownPathChangesNothing)
{
    FileSet set;
    AddTo(set, u"D:/w/a.prt"_s);
    LogCapture log;
    EXPECT_FALSE(set.RemoveFile(u"D:/w/b.prt"_s, true, false));
    EXPECT_EQ(set.GetCount(), 1);
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST(FileSetRemoval, ClearsTheBackPointerAndLogsThePathAtDebug)
{
    FileSet set;
    const FileMappingPointer file = AddTo(set, u"D:/w/A.prt"_s);
    LogCapture log;
    EXPECT_TRUE(set.RemoveFile(u"D:/w/a.prt"_s, false, false));
    EXPECT_EQ(file->GetFileSet(), nullptr);
    ASSERT_EQ(log.Lines(), QStringList{u"DEBUG Removing file from selection set: D:/w/A.prt"_s});
    EXPECT_EQ(log.Records().first().logger, u"CorsyncFileLink"_s);
    EXPECT_EQ(log.Records().first().file, u"FileSetImp.cpp"_s);
}

TEST(FileSetRemoval, TakesTheFirstOfTwoMembersWithOnePath)
{
    FileSet set;
    AddTo(set, u"D:/w/a.prt"_s);
    const FileMappingPointer second = AddTo(set, u"D:/w/a.prt"_s);
    EXPECT_TRUE(set.RemoveFile(u"D:/w/a.prt"_s, false, false));
    EXPECT_EQ(set.GetFiles(), FileMappingList{second});
}

TEST(FileSetRemoval, OfAnAssemblyTakesThePartsThatOnlyItLinks)
{
    FileSet set;
    AddTo(set, u"D:/w/a.asm"_s, {u"own.prt"_s, u"shared.prt"_s}, FileMapping::Selected);
    AddTo(set, u"D:/w/b.asm"_s, {u"shared.prt"_s}, FileMapping::Selected);
    AddTo(set, u"D:/w/own.prt"_s, {u"deep.prt"_s});
    AddTo(set, u"D:/w/shared.prt"_s);
    AddTo(set, u"D:/w/deep.prt"_s);
    LogCapture log;
    EXPECT_TRUE(set.RemoveFile(u"D:/w/a.asm"_s, true, false));
    EXPECT_EQ(SourcesOf(set.GetFiles()), (QStringList{u"D:/w/b.asm"_s, u"D:/w/shared.prt"_s}));
    EXPECT_EQ(log.Lines(),
              (QStringList{u"DEBUG Removing file from selection set: D:/w/a.asm"_s,
                           u"DEBUG Removing file from selection set: D:/w/own.prt"_s,
                           u"DEBUG Removing file from selection set: D:/w/deep.prt"_s}));
}

TEST(FileSetRemoval, WithoutLinkedFilesTakesTheFileAlone)
{
    FileSet set;
    AddTo(set, u"D:/w/a.asm"_s, {u"own.prt"_s}, FileMapping::Selected);
    AddTo(set, u"D:/w/own.prt"_s);
    EXPECT_TRUE(set.RemoveFile(u"D:/w/a.asm"_s, false, false));
    EXPECT_EQ(SourcesOf(set.GetFiles()), QStringList{u"D:/w/own.prt"_s});
}

TEST(FileSetRemoval, KeepsALinkedFileThatIsItselfSelected)
{
    FileSet set;
    const FileMappingPointer top = AddTo(set, u"D:/w/a.asm"_s, {u"own.prt"_s, u"chosen.prt"_s});
    AddTo(set, u"D:/w/start.asm"_s, {u"a.asm"_s}, FileMapping::Selected);
    AddTo(set, u"D:/w/own.prt"_s);
    const FileMappingPointer chosen = AddTo(set, u"D:/w/chosen.prt"_s, {}, FileMapping::Selected);
    EXPECT_TRUE(set.RemoveFile(u"D:/w/a.asm"_s, true, true));
    EXPECT_EQ(SourcesOf(set.GetFiles()), (QStringList{u"D:/w/start.asm"_s, u"D:/w/chosen.prt"_s}));
    EXPECT_EQ(chosen->GetFileSet(), &set);
    EXPECT_EQ(top->GetFileSet(), nullptr);
}

TEST(FileSetRemoval, OfASelectedFileKeepsItWhenSelectedFilesAreKeptAndSaysTrue)
{
    FileSet set;
    AddTo(set, u"D:/w/a.asm"_s, {u"own.prt"_s}, FileMapping::Selected);
    AddTo(set, u"D:/w/own.prt"_s);
    LogCapture log;
    EXPECT_TRUE(set.RemoveFile(u"D:/w/a.asm"_s, true, true));
    EXPECT_EQ(SourcesOf(set.GetFiles()), QStringList{u"D:/w/a.asm"_s});
    EXPECT_EQ(log.Lines(), QStringList{u"DEBUG Removing file from selection set: D:/w/own.prt"_s});
}

TEST(FileSetRemoval, OfAFileThatNoSelectedFileReachesTakesNothingElse)
{
    FileSet set;
    AddTo(set, u"D:/w/a.asm"_s, {u"own.prt"_s});
    AddTo(set, u"D:/w/own.prt"_s);
    EXPECT_TRUE(set.RemoveFile(u"D:/w/a.asm"_s, true, false));
    EXPECT_EQ(SourcesOf(set.GetFiles()), QStringList{u"D:/w/own.prt"_s});
}

TEST(FileSetRemoval, OfOneFileOfACycleTakesTheCycle)
{
    FileSet set;
    AddTo(set, u"D:/w/a.asm"_s, {u"b.asm"_s}, FileMapping::Selected);
    AddTo(set, u"D:/w/b.asm"_s, {u"a.asm"_s});
    EXPECT_TRUE(set.RemoveFile(u"D:/w/a.asm"_s, true, false));
    EXPECT_TRUE(set.IsEmpty());
}

TEST(FileSetRemoval, OfACycleBelowKeepsItsFilesWhichHoldEachOther)
{
    FileSet set;
    AddTo(set, u"D:/w/top.asm"_s, {u"b.asm"_s}, FileMapping::Selected);
    AddTo(set, u"D:/w/b.asm"_s, {u"c.asm"_s});
    AddTo(set, u"D:/w/c.asm"_s, {u"b.asm"_s});
    EXPECT_TRUE(set.RemoveFile(u"D:/w/top.asm"_s, true, false));
    EXPECT_EQ(SourcesOf(set.GetFiles()), (QStringList{u"D:/w/b.asm"_s, u"D:/w/c.asm"_s}));
}

class FolderRemoval : public ::testing::Test
{
protected:
    FolderRemoval()
    {
        AddTo(set, u"D:/w/Folder"_s, {}, FileMapping::Selected | FileMapping::Folder);
        AddTo(set, u"D:/w/folder/a.asm"_s, {u"../lib/own.prt"_s, u"../lib/shared.prt"_s},
              FileMapping::Selected);
        AddTo(set, u"D:/w/folder/sub"_s, {}, FileMapping::Folder | FileMapping::NestedFolder);
        AddTo(set, u"D:/w/FOLDER/sub/deep.prt"_s, {}, FileMapping::Selected);
        AddTo(set, u"D:/w/folder2/b.asm"_s, {u"../lib/shared.prt"_s}, FileMapping::Selected);
        AddTo(set, u"D:/w/lib/own.prt"_s);
        AddTo(set, u"D:/w/lib/shared.prt"_s);
    }

    FileSet set;
};

TEST_F(FolderRemoval, TakesTheFilesInsideAndWhatOnlyTheyLink)
{
    LogCapture log;
    EXPECT_TRUE(set.RemoveFile(u"D:/w/folder"_s, true, false));
    EXPECT_EQ(SourcesOf(set.GetFiles()),
              (QStringList{u"D:/w/folder2/b.asm"_s, u"D:/w/lib/shared.prt"_s}));
    EXPECT_EQ(log.Lines(),
              (QStringList{u"DEBUG Removing file from selection set: D:/w/Folder"_s,
                           u"DEBUG Removing file from selection set: D:/w/folder/a.asm"_s,
                           u"DEBUG Removing file from selection set: D:/w/folder/sub"_s,
                           u"DEBUG Removing file from selection set: D:/w/FOLDER/sub/deep.prt"_s,
                           u"DEBUG Removing file from selection set: D:/w/lib/own.prt"_s}));
}

TEST_F(FolderRemoval, WithoutLinkedFilesTakesTheFolderItselfOnly)
{
    EXPECT_TRUE(set.RemoveFile(u"D:/w/folder"_s, false, false));
    EXPECT_EQ(set.GetCount(), 6);
    EXPECT_EQ(set.IndexOfSourceFile(u"D:/w/folder"_s), -1);
    EXPECT_EQ(set.IndexOfSourceFile(u"D:/w/folder/a.asm"_s), 0);
}

TEST_F(FolderRemoval, NamesTheFilesInAFolderAtAnyDepth)
{
    const FileMappingList inside = Imp(set).GetFilesInFolder(set.GetFiles().first());
    EXPECT_EQ(SourcesOf(inside), (QStringList{u"D:/w/folder/a.asm"_s, u"D:/w/folder/sub"_s,
                                              u"D:/w/FOLDER/sub/deep.prt"_s}));
}

TEST(FileSetSkipping, LeavesTheSelectedAssemblyAloneFlaggedAndWithoutLinks)
{
    FileSet set;
    const FileMappingPointer top =
        AddTo(set, u"D:/w/a.asm"_s, {u"sub.asm"_s, u"p.prt"_s}, FileMapping::Selected);
    AddTo(set, u"D:/w/sub.asm"_s, {u"p.prt"_s, u"q.prt"_s});
    AddTo(set, u"D:/w/p.prt"_s);
    AddTo(set, u"D:/w/q.prt"_s);
    top->SetTargetFileLinks(Links({u"x"_s}));
    EXPECT_TRUE(set.SkipFileLinksInAllFiles());
    EXPECT_EQ(set.GetFiles(), FileMappingList{top});
    EXPECT_TRUE(top->HasFlag(FileMapping::SkipFileLinks));
    EXPECT_TRUE(top->GetSourceFileLinks().isEmpty());
    EXPECT_TRUE(top->GetTargetFileLinks().isEmpty());
}

TEST(FileSetSkipping, ForgetsTheLinksOfTheFilesThatLeaveToo)
{
    FileSet set;
    AddTo(set, u"D:/w/a.asm"_s, {u"sub.asm"_s}, FileMapping::Selected);
    const FileMappingPointer sub = AddTo(set, u"D:/w/sub.asm"_s, {u"p.prt"_s});
    AddTo(set, u"D:/w/p.prt"_s);
    sub->SetTargetFileLinks(Links({u"x"_s}));
    EXPECT_TRUE(set.SkipFileLinksInAllFiles());
    EXPECT_EQ(sub->GetFileSet(), nullptr);
    EXPECT_TRUE(sub->GetSourceFileLinks().isEmpty());
    EXPECT_TRUE(sub->GetTargetFileLinks().isEmpty());
    EXPECT_FALSE(sub->HasFlag(FileMapping::SkipFileLinks));
}

TEST(FileSetSkipping, KeepsASelectedPartThatASelectedAssemblyLinks)
{
    FileSet set;
    AddTo(set, u"D:/w/a.asm"_s, {u"p.prt"_s}, FileMapping::Selected);
    const FileMappingPointer part = AddTo(set, u"D:/w/p.prt"_s, {}, FileMapping::Selected);
    EXPECT_TRUE(set.SkipFileLinksInAllFiles());
    EXPECT_EQ(set.GetCount(), 2);
    EXPECT_TRUE(part->HasFlag(FileMapping::SkipFileLinks));
}

TEST(FileSetSkipping, FlagsFoldersAndFilesWithoutLinks)
{
    FileSet set;
    const FileMappingPointer folder = AddTo(set, u"D:/w/f"_s, {}, FileMapping::Folder);
    const FileMappingPointer file = AddTo(set, u"D:/w/p.prt"_s);
    EXPECT_TRUE(set.SkipFileLinksInAllFiles());
    EXPECT_TRUE(folder->HasFlag(FileMapping::SkipFileLinks));
    EXPECT_TRUE(file->HasFlag(FileMapping::SkipFileLinks));
    EXPECT_TRUE(FileSet().SkipFileLinksInAllFiles());
}

class DroppingLinks : public ::testing::Test
{
protected:
    FileSet set;
    FileMappingPointer a = AddTo(
        set, u"D:/w/a.asm"_s, {u"own.prt"_s, u"shared.prt"_s, u"sub.asm"_s}, FileMapping::Selected);
    FileMappingPointer b = AddTo(set, u"D:/w/b.asm"_s, {u"shared.prt"_s}, FileMapping::Selected);
    FileMappingPointer own = AddTo(set, u"D:/w/own.prt"_s);
    FileMappingPointer shared = AddTo(set, u"D:/w/shared.prt"_s);
    FileMappingPointer sub = AddTo(set, u"D:/w/sub.asm"_s, {u"deep.prt"_s});
    FileMappingPointer deep = AddTo(set, u"D:/w/deep.prt"_s);
};

TEST_F(DroppingLinks, RemovesWhatOnlyTheGivenFilesLinkAndForgetsTheirLinks)
{
    a->SetTargetFileLinks(Links({u"x"_s}));
    LogCapture log;
    EXPECT_TRUE(Imp(set).DropFileLinks({a}, true));
    EXPECT_EQ(set.GetFiles(), (FileMappingList{a, b, shared}));
    EXPECT_EQ(own->GetFileSet(), nullptr);
    EXPECT_TRUE(a->GetSourceFileLinks().isEmpty());
    EXPECT_TRUE(a->GetTargetFileLinks().isEmpty());
    EXPECT_EQ(b->GetSourceFileLinks().size(), 1);
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(DroppingLinks, OfAllParentsRemovesASharedPart)
{
    EXPECT_TRUE(Imp(set).DropFileLinks({a, b}, true));
    EXPECT_EQ(set.GetFiles(), (FileMappingList{a, b}));
}

TEST_F(DroppingLinks, SparesASelectedPartOnlyWhenAsked)
{
    own->SetFlag(FileMapping::Selected, true);
    shared->SetFlag(FileMapping::Selected, true);
    EXPECT_TRUE(Imp(set).DropFileLinks({a}, true));
    EXPECT_EQ(set.GetFiles(), (FileMappingList{a, b, own, shared}));
    a->SetSourceFileLinks(Links({u"own.prt"_s}));
    EXPECT_TRUE(Imp(set).DropFileLinks({a}, false));
    EXPECT_EQ(set.GetFiles(), (FileMappingList{a, b, shared}));
}

TEST_F(DroppingLinks, OfFoldersOnlyDoesNothing)
{
    const FileMappingPointer folder = AddTo(set, u"D:/w"_s, {u"a.asm"_s}, FileMapping::Folder);
    folder->SetTargetFileLinks(Links({u"x"_s}));
    EXPECT_TRUE(Imp(set).DropFileLinks({folder}, true));
    EXPECT_EQ(set.GetCount(), 7);
    EXPECT_EQ(folder->GetTargetFileLinks().size(), 1);
    EXPECT_TRUE(Imp(set).DropFileLinks({}, true));
}

TEST_F(DroppingLinks, ClearsOnlyTheTargetLinksOfAFolderAmongTheFiles)
{
    const FileMappingPointer folder = AddTo(set, u"D:/w"_s, {u"a.asm"_s}, FileMapping::Folder);
    folder->SetTargetFileLinks(Links({u"x"_s}));
    EXPECT_TRUE(Imp(set).DropFileLinks({folder, a}, true));
    EXPECT_EQ(folder->GetSourceFileLinks().size(), 1);
    EXPECT_TRUE(folder->GetTargetFileLinks().isEmpty());
}

TEST_F(DroppingLinks, ThatLeadToNoMemberLeavesThemAsTheyAre)
{
    own->SetSourceFileLinks(Links({u"gone.prt"_s}));
    own->SetTargetFileLinks(Links({u"x"_s}));
    EXPECT_TRUE(Imp(set).DropFileLinks({own}, true));
    EXPECT_EQ(own->GetSourceFileLinks().size(), 1);
    EXPECT_EQ(own->GetTargetFileLinks().size(), 1);
}

} // namespace
