// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

/// Mappings that come to a stage with marks, targets or links that no stage before gave them.
class MarkedBefore : public ImporterFixture
{
protected:
    FileMappingPointer Make(const QString& source, const QString& target,
                            FileMapping::FileMappingFlag flags = FileMapping::NoFlag)
    {
        const auto mapping = std::make_shared<FileMapping>(
            tree.Path(source), target.isEmpty() ? QString() : tree.Path(target), 7);
        mapping->SetFlag(flags, true);
        return mapping;
    }
    /// A set of these mappings alone.
    void MakeSet(const FileMappingList& files)
    {
        ASSERT_TRUE(importer.Initialize({Source(u"none"_s)}, Cloud(), false, {}, {}));
        for (const FileMappingPointer& file : files)
            importer.GetFileSet()->AddFile(file);
    }
    static void Link(const FileMappingPointer& holder, const QString& path)
    {
        holder->SetSourceFileLinks({{-1, u"1"_s, path, {}}});
    }

    FileLinkImporterImp importer{nullptr};
};

TEST_F(MarkedBefore, AMissingOrUnmovedFileKeepsItsMarksWhenConflictsAreMarked)
{
    const auto marks = FileMapping::Collision | FileMapping::Unchanged;
    tree.File(u"cloud/a.tlk"_s);
    const FileMappingPointer missing = Make(u"src/gone.tlk"_s, u"cloud/a.tlk"_s, marks);
    EXPECT_TRUE(importer.MarkCollisions(missing));
    EXPECT_EQ(missing->GetFlag(), marks | FileMapping::SourceMissing);
    const FileMappingPointer unmoved = Make(u"cloud/a.tlk"_s, u"cloud/a.tlk"_s, marks);
    EXPECT_TRUE(importer.MarkCollisions(unmoved));
    EXPECT_EQ(unmoved->GetFlag(), marks | FileMapping::SameSourceAndTarget);
}

TEST_F(MarkedBefore, AFileThatAppearsAgainKeepsItsMarkOfHavingBeenMissing)
{
    const FileMappingPointer file = Make(u"src/a.tlk"_s, u"cloud/a.tlk"_s);
    EXPECT_TRUE(importer.MarkCollisions(file));
    tree.File(u"src/a.tlk"_s);
    EXPECT_TRUE(importer.MarkCollisions(file));
    EXPECT_EQ(file->GetFlag(), FileMapping::SourceMissing);
}

TEST_F(MarkedBefore, AFolderInTheWayCollidesWithoutALookUpInTheHistory)
{
    tree.Folder(u"src/F"_s).Folder(u"cloud/F"_s);
    const FileMappingPointer earlier = Make(u"src/F"_s, u"cloud/F"_s);
    earlier->UpdateSourceFileProperties();
    earlier->UpdateTargetFileProperties();
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({earlier}, {}));
    const LogCapture log;
    // Flagged, or a folder on the disk.
    for (const auto flag : {FileMapping::Folder, FileMapping::NoFlag}) {
        const FileMappingPointer folder = Make(u"src/F"_s, u"cloud/F"_s, flag);
        EXPECT_TRUE(importer.MarkCollisions(folder));
        EXPECT_EQ(folder->GetFlag(), flag | FileMapping::Collision);
    }
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(MarkedBefore, AFolderOnTheDiskWithoutItsMarkFollowsThePolicyOfFiles)
{
    tree.Folder(u"src/F"_s).Folder(u"cloud/F"_s);
    const FileMappingPointer folder = Make(u"src/F"_s, u"cloud/F"_s, FileMapping::Collision);
    MakeSet({folder});
    importer.SetCopyOption(Global::KeepExistingLinkedFiles, true);
    EXPECT_TRUE(importer.ResolveCollisions());
    EXPECT_EQ(folder->GetFlag(), FileMapping::Collision | FileMapping::NoCopy);
}

TEST_F(MarkedBefore, WhatAFileWithAnUncleanTargetLinksGetsACleanOne)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    ASSERT_TRUE(importer.Initialize({Source(u"a.tasm"_s)},
                                    tree.Path(u"elsewhere"_s) + u"/./y/../x.tasm"_s, true, {}, {}));
    ASSERT_TRUE(importer.ExtractFileLinks());
    ASSERT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(Short(Member(importer, u"src/b.tlk"_s)->GetTargetFile()), u"elsewhere/b.tlk"_s);
}

TEST_F(MarkedBefore, WhatAFileDirectlyBelowTheRootLinksGetsACleanTargetThere)
{
    const FileMappingPointer a = Make(u"src/a.tasm"_s, {}, FileMapping::Selected);
    const FileMappingPointer b = Make(u"src/b.tlk"_s, {});
    a->SetTargetFile(QDir::rootPath() + u"a.tasm"_s, true);
    Link(a, u"b.tlk"_s);
    MakeSet({a, b});
    ASSERT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(b->GetTargetFile(), QDir::rootPath() + u"b.tlk"_s);
}

TEST_F(MarkedBefore, AFileThatOnlyClosedACycleIsStillLaidOutWhereItIsReachedAgain)
{
    // Two members of one path: links lead to the first, but the second one is selected.
    const FileMappingPointer first = Make(u"src/a.tasm"_s, u"cloud/a.tasm"_s);
    const FileMappingPointer second =
        Make(u"src/a.tasm"_s, u"cloud/a.tasm"_s, FileMapping::Selected);
    const FileMappingPointer b = Make(u"src/b.tasm"_s, {});
    const FileMappingPointer x = Make(u"src/x.tasm"_s, u"cloud/x.tasm"_s, FileMapping::Selected);
    const FileMappingPointer c = Make(u"src/c.tlk"_s, {});
    Link(second, u"b.tasm"_s);
    Link(b, u"a.tasm"_s);
    Link(x, u"a.tasm"_s);
    Link(first, u"c.tlk"_s);
    MakeSet({first, second, b, x, c});
    ASSERT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(b->GetTargetFile(), Cloud(u"b.tasm"_s));
    EXPECT_EQ(c->GetTargetFile(), Cloud(u"c.tlk"_s));
}

} // namespace Halvern::Test
