// SPDX-License-Identifier: Apache-2.0

#include "Conflicts.h"

#include "ServicesFixture.h"

#include "filelink/FileSet.h"

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;
using SyncServices::FileMapping;

namespace {

class TargetConflicts : public ServicesFixture
{
protected:
    std::shared_ptr<FileMapping> Add(const QString& source, const QString& target,
                                     FileMapping::FileMappingFlag flags)
    {
        auto file = std::make_shared<FileMapping>(tree.Path(source), Cloud(target), 7);
        file->SetFlag(flags, true);
        files.AddFile(file);
        return file;
    }

    QList<Conflict> Settle(CollisionPolicy selected, CollisionPolicy linked)
    {
        ImportRequest request;
        request.selectedCollisions = selected;
        request.linkedCollisions = linked;
        return SettleTargets(files, request, {});
    }
    QList<Conflict> Settle(CollisionPolicy policy) { return Settle(policy, policy); }

    FileLink::FileSet files;
};

} // namespace

TEST_F(TargetConflicts, FreeTargetsAreNone)
{
    Add(u"a/x.prt"_s, u"x.prt"_s, FileMapping::Selected);
    Add(u"b/y.prt"_s, u"y.prt"_s, FileMapping::NoFlag);
    EXPECT_TRUE(Settle(CollisionPolicy::Stop).isEmpty());
}

TEST_F(TargetConflicts, ATakenTargetIsOneOnlyWithoutAPolicy)
{
    tree.File(u"cloud/x.prt"_s);
    Add(u"a/x.prt"_s, u"x.prt"_s, FileMapping::Selected | FileMapping::Collision);
    const QList<Conflict> conflicts = Settle(CollisionPolicy::Stop, CollisionPolicy::Replace);
    ASSERT_EQ(conflicts.size(), 1);
    EXPECT_EQ(conflicts[0].kind, ConflictKind::TargetTaken);
    EXPECT_EQ(conflicts[0].source, tree.Path(u"a/x.prt"_s));
    EXPECT_EQ(conflicts[0].target, Cloud(u"x.prt"_s));
    EXPECT_TRUE(conflicts[0].selected);
    EXPECT_TRUE(Settle(CollisionPolicy::Replace, CollisionPolicy::Stop).isEmpty());
}

TEST_F(TargetConflicts, TwoSourcesOfOneTargetNameEachOther)
{
    Add(u"a/x.prt"_s, u"x.prt"_s, FileMapping::Selected);
    Add(u"b/X.prt"_s, u"X.prt"_s, FileMapping::Selected);
    const QList<Conflict> conflicts = Settle(CollisionPolicy::Replace);
    ASSERT_EQ(conflicts.size(), 1);
    EXPECT_EQ(conflicts[0].kind, ConflictKind::SameTarget);
    EXPECT_EQ(conflicts[0].source, tree.Path(u"b/X.prt"_s));
    EXPECT_EQ(conflicts[0].other, tree.Path(u"a/x.prt"_s));
}

TEST_F(TargetConflicts, TwoSourcesOfOneTargetGetFreeNamesWhereThePolicyRenames)
{
    tree.File(u"cloud/x (2).prt"_s);
    const auto first = Add(u"a/x.prt"_s, u"x.prt"_s, FileMapping::NoFlag);
    const auto second = Add(u"b/x.prt"_s, u"x.prt"_s, FileMapping::NoFlag);
    const auto third = Add(u"c/x.prt"_s, u"x.prt"_s, FileMapping::NoFlag);
    EXPECT_TRUE(Settle(CollisionPolicy::Stop, CollisionPolicy::Rename).isEmpty());
    EXPECT_EQ(first->GetTargetFile(), Cloud(u"x.prt"_s));
    EXPECT_EQ(second->GetTargetFile(), Cloud(u"x (3).prt"_s));
    EXPECT_EQ(third->GetTargetFile(), Cloud(u"x (4).prt"_s));
}

TEST_F(TargetConflicts, AFileThatMustKeepItsNameIsNotRenamed)
{
    tree.File(u"cloud/y.prt"_s);
    Add(u"a/x.prt"_s, u"x.prt"_s, FileMapping::NoFlag);
    Add(u"b/x.prt"_s, u"x.prt"_s, FileMapping::KeepTargetName);
    Add(u"b/y.prt"_s, u"y.prt"_s,
        FileMapping::KeepTargetName | FileMapping::Collision | FileMapping::RenameOnCollision);
    const QList<Conflict> conflicts = Settle(CollisionPolicy::Rename);
    ASSERT_EQ(conflicts.size(), 2);
    EXPECT_EQ(conflicts[0].kind, ConflictKind::SameTarget);
    EXPECT_EQ(conflicts[1].kind, ConflictKind::CannotRename);
}

TEST_F(TargetConflicts, ACopyInPlaceIsNotReplacedByAnotherSource)
{
    tree.File(u"cloud/x.prt"_s);
    for (const auto flag :
         {FileMapping::Unchanged, FileMapping::SameSourceAndTarget, FileMapping::NoCopy}) {
        const auto inPlace = Add(u"a/x.prt"_s, u"x.prt"_s, flag);
        Add(u"b/x.prt"_s, u"x.prt"_s, FileMapping::Collision);
        const QList<Conflict> conflicts = Settle(CollisionPolicy::Replace);
        ASSERT_EQ(conflicts.size(), 1) << flag;
        EXPECT_EQ(conflicts[0].kind, ConflictKind::SameTarget);
        EXPECT_EQ(conflicts[0].other, inPlace->GetSourceFile());
        files.RemoveFile(tree.Path(u"a/x.prt"_s), false, false);
        files.RemoveFile(tree.Path(u"b/x.prt"_s), false, false);
    }
}

TEST_F(TargetConflicts, FilesThatPutNothingAtTheirTargetAreInNobodysWay)
{
    for (const auto flag :
         {FileMapping::SourceMissing, FileMapping::NotFilePath, FileMapping::NoCopy})
        Add(u"a/x.prt"_s, u"x.prt"_s, flag);
    Add(u"b/x.prt"_s, u"x.prt"_s, FileMapping::NoFlag);
    EXPECT_TRUE(Settle(CollisionPolicy::Stop).isEmpty());
}

TEST_F(TargetConflicts, OneSourceFoundTwiceIsNotTwoFiles)
{
    Add(u"a/x.prt"_s, u"x.prt"_s, FileMapping::Selected);
    Add(u"a/x.prt"_s, u"x.prt"_s, FileMapping::NoFlag);
    EXPECT_TRUE(Settle(CollisionPolicy::Stop).isEmpty());
}

TEST_F(TargetConflicts, FoldersThatExistAreNoneButFilesInTheirPlaceAre)
{
    tree.Folder(u"cloud/Proj"_s).File(u"cloud/Other"_s).Folder(u"cloud/z.prt"_s);
    Add(u"a/Proj"_s, u"Proj"_s,
        FileMapping::Selected | FileMapping::Folder | FileMapping::Collision);
    EXPECT_TRUE(Settle(CollisionPolicy::Stop).isEmpty());
    Add(u"a/Other"_s, u"Other"_s,
        FileMapping::Selected | FileMapping::Folder | FileMapping::Collision);
    Add(u"a/z.prt"_s, u"z.prt"_s, FileMapping::Selected | FileMapping::Collision);
    for (const CollisionPolicy policy : {CollisionPolicy::Stop, CollisionPolicy::Replace}) {
        const QList<Conflict> conflicts = Settle(policy);
        ASSERT_EQ(conflicts.size(), 2);
        EXPECT_EQ(conflicts[0].kind, ConflictKind::FileInTheWay);
        EXPECT_EQ(conflicts[1].kind, ConflictKind::FolderInTheWay);
    }
}

TEST_F(TargetConflicts, TwoFoldersOfOneNameAreMergedButAFileIsNotPutOverAFolder)
{
    Add(u"a/Proj"_s, u"Proj"_s, FileMapping::Selected | FileMapping::Folder);
    Add(u"b/Proj"_s, u"Proj"_s, FileMapping::Selected | FileMapping::Folder);
    EXPECT_TRUE(Settle(CollisionPolicy::Stop).isEmpty());
    Add(u"c/Proj"_s, u"Proj"_s, FileMapping::Selected);
    const QList<Conflict> conflicts = Settle(CollisionPolicy::Stop);
    ASSERT_EQ(conflicts.size(), 1);
    EXPECT_EQ(conflicts[0].other, tree.Path(u"a/Proj"_s));
}

} // namespace Halvern::Test
