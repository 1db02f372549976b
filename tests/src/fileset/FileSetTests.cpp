// SPDX-License-Identifier: Apache-2.0

#include "Mappings.h"
#include "ServicesFixture.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using namespace Halvern;
using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

static_assert(!std::is_copy_constructible_v<FileSet> && !std::is_copy_assignable_v<FileSet>);

TEST(FileSetMembers, AnEmptyPointerIsNotAdded)
{
    FileSet set;
    EXPECT_FALSE(set.AddFile(nullptr));
    EXPECT_TRUE(set.IsEmpty());
    EXPECT_EQ(set.GetCount(), 0);
}

TEST(FileSetMembers, TheSameObjectIsAMemberOnceAndAddingItAgainIsFine)
{
    FileSet set;
    const FileMappingPointer file = MakeFile(u"D:/w/a.prt"_s);
    EXPECT_TRUE(set.AddFile(file));
    EXPECT_TRUE(set.AddFile(file));
    EXPECT_EQ(set.GetFiles(), FileMappingList{file});
    EXPECT_EQ(file->GetFileSet(), &set);
}

TEST(FileSetMembers, TwoObjectsWithOneSourcePathBothStay)
{
    FileSet set;
    const FileMappingPointer first = AddTo(set, u"D:/w/a.prt"_s);
    const FileMappingPointer second = AddTo(set, u"D:/w/a.prt"_s);
    EXPECT_EQ(set.GetFiles(), (FileMappingList{first, second}));
    EXPECT_EQ(set.IndexOfSourceFile(u"D:/w/a.prt"_s), 0);
}

TEST(FileSetMembers, AddingAMemberOfAnotherSetMovesItsBackPointerOnly)
{
    FileSet first;
    FileSet second;
    const FileMappingPointer file = AddTo(first, u"D:/w/a.prt"_s);
    second.AddFile(file);
    EXPECT_EQ(file->GetFileSet(), &second);
    EXPECT_EQ(first.GetCount(), 1);
    EXPECT_TRUE(first.RemoveFile(u"D:/w/a.prt"_s, false, false));
    EXPECT_EQ(file->GetFileSet(), &second) << "the first set cleared a pointer to the second";
}

TEST(FileSetMembers, AddingAMemberAgainTakesItsBackPointerBack)
{
    FileSet first;
    FileSet second;
    const FileMappingPointer file = AddTo(first, u"D:/w/a.prt"_s);
    second.AddFile(file);
    first.AddFile(file);
    EXPECT_EQ(file->GetFileSet(), &first);
    EXPECT_EQ(first.GetCount(), 1);
}

TEST(FileSetMembers, ARemovedObjectMayComeBackAtTheEnd)
{
    FileSet set;
    const FileMappingPointer first = AddTo(set, u"D:/w/a.prt"_s);
    const FileMappingPointer second = AddTo(set, u"D:/w/b.prt"_s);
    set.RemoveFile(u"D:/w/a.prt"_s, false, false);
    EXPECT_TRUE(set.AddFile(first));
    EXPECT_EQ(set.GetFiles(), (FileMappingList{second, first}));
}

TEST(FileSetMembers, OutliveTheSetWhereSomebodyHoldsThem)
{
    FileMappingPointer file;
    {
        FileSet set;
        file = AddTo(set, u"D:/w/a.prt"_s);
        EXPECT_EQ(file.use_count(), 2);
    }
    EXPECT_EQ(file.use_count(), 1);
}

TEST(FileSetMembers, AListTakenEarlierDoesNotChangeWithTheSet)
{
    FileSet set;
    AddTo(set, u"D:/w/a.prt"_s);
    const FileMappingList before = set.GetFiles();
    AddTo(set, u"D:/w/b.prt"_s);
    EXPECT_EQ(before.size(), 1);
    EXPECT_EQ(set.GetFiles().size(), 2);
}

TEST(FileSetLookup, IgnoresLetterCaseAndCleansTheArgument)
{
    FileSet set;
    AddTo(set, u"d:/work/B.prt"_s);
    EXPECT_EQ(set.IndexOfSourceFile(u"D:/Work/b.prt"_s), 0);
    EXPECT_EQ(set.IndexOfSourceFile(u"D:/Work/./b.prt"_s), 0);
    EXPECT_EQ(set.IndexOfSourceFile(u"D:/Work/x/../b.prt"_s), 0);
    EXPECT_EQ(set.IndexOfSourceFile(u"D:/Work/c.prt"_s), -1);
    EXPECT_EQ(set.IndexOfSourceFile(QString()), -1);
}

TEST(FileSetLookup, NeverFindsAMemberWhoseStoredPathIsNotClean)
{
    FileSet set;
    AddTo(set, u"D:/Work/./b.prt"_s);
    EXPECT_EQ(set.IndexOfSourceFile(u"D:/Work/b.prt"_s), -1);
    EXPECT_EQ(set.IndexOfSourceFile(u"D:/Work/./b.prt"_s), -1);
}

TEST(FileSetLookup, OfTargetsLooksAtTargetsOnly)
{
    FileSet set;
    set.AddFile(MakeFile(u"D:/w/a.prt"_s, FileMapping::NoFlag, u"D:/c/x.prt"_s));
    set.AddFile(MakeFile(u"D:/c/X.prt"_s, FileMapping::NoFlag, u"D:/c/y.prt"_s));
    EXPECT_EQ(set.IndexOfTargetFile(u"D:/c/./X.PRT"_s), 0);
    EXPECT_EQ(set.IndexOfSourceFile(u"D:/c/x.prt"_s), 1);
    EXPECT_EQ(set.IndexOfTargetFile(u"D:/w/a.prt"_s), -1);
}

TEST(FileSetLookup, FindsAMappingWhosePathChangedBehindTheSet)
{
    FileSet set;
    const FileMappingPointer file = AddTo(set, u"D:/w/a.prt"_s);
    EXPECT_EQ(set.IndexOfSourceFile(u"D:/w/a.prt"_s), 0);
    EXPECT_EQ(set.IndexOfTargetFile(u"D:/c/a.prt"_s), -1);
    file->SetSourceFile(u"D:/w/b.prt"_s);
    file->SetTargetFile(u"D:/c/a.prt"_s, true);
    EXPECT_EQ(set.IndexOfSourceFile(u"D:/w/a.prt"_s), -1);
    EXPECT_EQ(set.IndexOfSourceFile(u"D:/w/b.prt"_s), 0);
    EXPECT_EQ(set.IndexOfTargetFile(u"D:/c/a.prt"_s), 0);
}

TEST(FileSetLookup, GivesAnEmptyPointerForAnUnknownPath)
{
    FileSet set;
    const FileMappingPointer file = AddTo(set, u"D:/w/a.prt"_s);
    EXPECT_EQ(Imp(set).GetFileMapping(u"D:/W/A.prt"_s), file);
    EXPECT_EQ(Imp(set).GetFileMapping(u"D:/w/b.prt"_s), nullptr);
}

TEST(FileSetLinks, AreResolvedAgainstTheFolderOfTheSource)
{
    FileSet set;
    const FileMappingPointer top = AddTo(
        set, u"D:/w/top.asm"_s, {u"a.prt"_s, u"lib/../B.prt"_s, u"../c.prt"_s, u"E:/./d.prt"_s});
    const FileMappingList parts{AddTo(set, u"D:/w/a.prt"_s), AddTo(set, u"D:/w/b.prt"_s),
                                AddTo(set, u"D:/c.prt"_s), AddTo(set, u"E:/d.prt"_s)};
    EXPECT_EQ(set.GetSourceFileLinks(top), parts);
}

TEST(FileSetLinks, KeepLinkOrderAndDuplicatesAndLeaveOutNonMembers)
{
    FileSet set;
    const FileMappingPointer top =
        AddTo(set, u"D:/w/top.asm"_s, {u"b.prt"_s, u"gone.prt"_s, u"a.prt"_s, u"./b.prt"_s});
    const FileMappingPointer a = AddTo(set, u"D:/w/a.prt"_s);
    const FileMappingPointer b = AddTo(set, u"D:/w/b.prt"_s);
    EXPECT_EQ(set.GetSourceFileLinks(top), (FileMappingList{b, a, b}));
}

TEST(FileSetLinks, OfTheTargetAreAnsweredFromTheSource)
{
    FileSet set;
    const FileMappingPointer top = AddTo(set, u"D:/w/top.asm"_s, {u"a.prt"_s});
    const FileMappingPointer a = AddTo(set, u"D:/w/a.prt"_s);
    AddTo(set, u"D:/w/b.prt"_s);
    top->SetTargetFileLinks(Links({u"D:/w/b.prt"_s}));
    EXPECT_EQ(set.GetSourceFileLinks(top), FileMappingList{a});
    EXPECT_EQ(set.GetTargetFileLinks(top), set.GetSourceFileLinks(top));
}

TEST(FileSetLinks, AreAnsweredForMappingsOutsideTheSetAndForNone)
{
    FileSet set;
    const FileMappingPointer a = AddTo(set, u"D:/w/a.prt"_s);
    const FileMappingPointer stranger = MakeFile(u"D:/w/top.asm"_s);
    stranger->SetSourceFileLinks(Links({u"a.prt"_s}));
    EXPECT_EQ(set.GetSourceFileLinks(stranger), FileMappingList{a});
    EXPECT_TRUE(set.GetSourceFileLinks(nullptr).isEmpty());
}

class FileSetFilter : public ::testing::Test
{
protected:
    QStringList Get(quint32 withAll, quint32 withAny, quint32 withoutAll, quint32 withoutAny)
    {
        return SourcesOf(set.GetFiles(FileMappingFlag(withAll), FileMappingFlag(withAny),
                                      FileMappingFlag(withoutAll), FileMappingFlag(withoutAny)));
    }

    FileSet set;
    FileMappingPointer plain = AddTo(set, u"plain"_s);
    FileMappingPointer selected = AddTo(set, u"selected"_s, {}, FileMapping::Selected);
    FileMappingPointer folder =
        AddTo(set, u"folder"_s, {}, FileMapping::Selected | FileMapping::Folder);
    FileMappingPointer noCopy = AddTo(set, u"noCopy"_s, {}, FileMapping::NoCopy);
    FileMappingPointer both =
        AddTo(set, u"both"_s, {}, FileMapping::Selected | FileMapping::NoCopy);
};

TEST_F(FileSetFilter, WithoutArgumentsGivesEveryMember)
{
    EXPECT_EQ(Get(0, 0, 0, 0), SourcesOf(set.GetFiles()));
    EXPECT_EQ(set.GetFiles().size(), 5);
}

TEST_F(FileSetFilter, GivesSelectedMembersThatAreNoFolders)
{
    EXPECT_EQ(Get(FileMapping::Selected, 0, FileMapping::Folder, 0),
              (QStringList{u"selected"_s, u"both"_s}));
}

TEST_F(FileSetFilter, WithAnyTakesOneBitOfSeveral)
{
    EXPECT_EQ(Get(0, 0x81, 0, 0),
              (QStringList{u"selected"_s, u"folder"_s, u"noCopy"_s, u"both"_s}));
}

TEST_F(FileSetFilter, WithAllAsksForEveryBit)
{
    EXPECT_EQ(Get(0x81, 0, 0, 0), QStringList{u"both"_s});
}

TEST_F(FileSetFilter, WithoutAllSparesMembersThatLackABit)
{
    EXPECT_EQ(Get(0, 0, 0x81, 0),
              (QStringList{u"plain"_s, u"selected"_s, u"folder"_s, u"noCopy"_s}));
}

TEST_F(FileSetFilter, WithoutAnyDropsMembersWithOneBit)
{
    EXPECT_EQ(Get(0, 0, 0, 0x81), QStringList{u"plain"_s});
}

TEST_F(FileSetFilter, CombinesItsArguments)
{
    EXPECT_EQ(Get(0x1, 0x82, 0x83, 0x2), QStringList{u"both"_s});
    EXPECT_EQ(Get(0x1, 0x2, 0, 0x2), QStringList());
}

TEST(FileSetCounts, OfAnEmptySetAreZero)
{
    const FileSet set;
    EXPECT_TRUE(set.IsEmpty());
    EXPECT_EQ(set.GetCount(), 0);
    EXPECT_EQ(set.GetFileCount(), 0);
    EXPECT_EQ(set.GetFolderCount(), 0);
    EXPECT_FALSE(set.HasFilesWhichSupportFileLinks());
}

TEST(FileSetCounts, OfFoldersOnlyNameNoFiles)
{
    FileSet set;
    AddTo(set, u"D:/none/a"_s, {}, FileMapping::Folder);
    AddTo(set, u"D:/none/b"_s, {}, FileMapping::Folder | FileMapping::NestedFolder);
    EXPECT_FALSE(set.HasFilesWhichSupportFileLinks());
    EXPECT_EQ(set.GetFileCount(), 0);
    EXPECT_EQ(set.GetFolderCount(), set.GetCount());
    EXPECT_EQ(set.GetCount(), 2);
}

TEST(FileSetCounts, ReadTheFolderFlagWhereOtherAnswersLookAtTheDisk)
{
    FileTree tree;
    tree.Folder(u"folder"_s);
    FileSet set;
    AddTo(set, tree.Path(u"folder"_s));
    EXPECT_EQ(set.GetFileCount(), 1);
    EXPECT_EQ(set.GetFolderCount(), 0);
    EXPECT_FALSE(set.HasFilesWhichSupportFileLinks());
}

TEST(FileSetCounts, OneSupportedFileIsEnoughToSupportLinks)
{
    FileSet set;
    AddTo(set, u"D:/none/a.txt"_s, {}, FileMapping::FileLinksNotSupported);
    EXPECT_FALSE(set.HasFilesWhichSupportFileLinks());
    AddTo(set, u"D:/none/a.prt"_s);
    EXPECT_TRUE(set.HasFilesWhichSupportFileLinks());
    EXPECT_EQ(set.GetFileCount(), 2);
}

using FileSetRoot = ServicesFixture;

TEST_F(FileSetRoot, IsTheCloudCacheFolderOfTheMakingOfTheSet)
{
    const FileSet set;
    EXPECT_EQ(set.GetTargetRootFolder(), Cloud());
    SyncServices::ServicesSettings other = settings;
    other.cloudCacheFolder = tree.Path(u"elsewhere"_s);
    SyncFolderManagerLib::FolderManager::Uninitialize();
    SyncFolderManagerLib::FolderManager::Configure(other);
    SyncFolderManagerLib::FolderManager::Initialize();
    EXPECT_EQ(set.GetTargetRootFolder(), Cloud());
    EXPECT_EQ(FileSet().GetTargetRootFolder(), tree.Path(u"elsewhere"_s));
}

TEST(FileSetWithoutServices, HasNoTargetRootFolder)
{
    EXPECT_EQ(FileSet().GetTargetRootFolder(), QString());
    EXPECT_EQ(FileSetImp::Of(nullptr), nullptr);
}

} // namespace
