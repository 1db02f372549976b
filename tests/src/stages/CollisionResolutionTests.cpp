// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;
using Flag = SyncServices::FileMapping::FileMappingFlag;

class CollisionResolution : public ImporterFixture
{
protected:
    /// A set with a selected file, a selected folder and a linked file, all marked as colliding.
    void Prepare(Global::CopyOption options)
    {
        ASSERT_TRUE(importer.Initialize({Source(u"a.tasm"_s), Source(u"Proj"_s)}, Cloud(), false,
                                        options, {}));
        ASSERT_TRUE(importer.ExtractFileLinks());
        ASSERT_TRUE(importer.AssignTargetPaths());
        for (const FileMappingPointer& file : importer.GetFileSet()->GetFiles())
            file->SetFlag(FileMapping::Collision, true);
    }
    void MakeSources()
    {
        Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
        tree.File(u"src/b.tlk"_s).Folder(u"src/Proj"_s);
    }
    Flag FlagsOf(const QString& source) { return Member(importer, source)->GetFlag(); }
    FileMappingPointer Make(const QString& source, const QString& target, Flag flags)
    {
        const auto mapping = std::make_shared<FileMapping>(tree.Path(source), tree.Path(target), 7);
        mapping->SetFlag(flags, true);
        return mapping;
    }

    FileLinkImporterImp importer{nullptr};
};

/// What each kind of file gets under each pair of its own options; the others do not count.
struct Policy
{
    bool keep;
    bool rename;
    Flag decision;
};

constexpr Policy policies[] = {{false, false, SyncServices::FileMapping::NoFlag},
                               {false, true, SyncServices::FileMapping::RenameOnCollision},
                               {true, false, SyncServices::FileMapping::NoCopy},
                               {true, true, SyncServices::FileMapping::NoCopy}};

TEST_F(CollisionResolution, EachKindOfFileFollowsItsOwnOptionsAndKeepingWinsOverRenaming)
{
    MakeSources();
    for (const Policy& selected : policies)
        for (const Policy& linked : policies)
            for (const bool direct : {false, true}) {
                Global::CopyOption options = Global::NoCopyOption;
                if (selected.keep)
                    options |= Global::KeepExistingSelectedFiles;
                if (selected.rename)
                    options |= Global::RenameSelectedFiles;
                if (linked.keep)
                    options |= Global::KeepExistingLinkedFiles;
                if (linked.rename)
                    options |= Global::RenameLinkedFiles;
                if (direct)
                    options |= Global::DirectLinksOnly;
                SCOPED_TRACE(options);
                Prepare(options);
                EXPECT_TRUE(importer.ResolveCollisions());
                EXPECT_EQ(FlagsOf(u"src/a.tasm"_s),
                          FileMapping::Selected | FileMapping::Collision | selected.decision);
                EXPECT_EQ(FlagsOf(u"src/b.tlk"_s), FileMapping::Collision | linked.decision);
                EXPECT_EQ(FlagsOf(u"src/Proj"_s),
                          FileMapping::Selected | FileMapping::Folder | FileMapping::Collision |
                              (direct ? FileMapping::NoCopy : FileMapping::NoFlag));
            }
}

TEST_F(CollisionResolution, WhatDoesNotCollideIsNotDecided)
{
    MakeSources();
    Prepare(Global::KeepExistingLinkedFiles | Global::KeepExistingSelectedFiles |
            Global::DirectLinksOnly);
    for (const FileMappingPointer& file : importer.GetFileSet()->GetFiles())
        file->SetFlag(FileMapping::Collision, false);
    EXPECT_TRUE(importer.ResolveCollisions());
    EXPECT_EQ(FlagsOf(u"src/a.tasm"_s), FileMapping::Selected);
    EXPECT_EQ(FlagsOf(u"src/b.tlk"_s), FileMapping::NoFlag);
    EXPECT_EQ(FlagsOf(u"src/Proj"_s), FileMapping::Selected | FileMapping::Folder);
}

TEST_F(CollisionResolution, WhatIsDecidedAlreadyStaysSo)
{
    MakeSources();
    for (const Flag decided :
         {FileMapping::NoCopy, FileMapping::NotFilePath, FileMapping::RenameOnCollision}) {
        Prepare(Global::KeepExistingLinkedFiles | Global::RenameSelectedFiles);
        Member(importer, u"src/a.tasm"_s)->SetFlag(decided, true);
        Member(importer, u"src/b.tlk"_s)->SetFlag(decided, true);
        EXPECT_TRUE(importer.ResolveCollisions());
        EXPECT_EQ(FlagsOf(u"src/a.tasm"_s),
                  FileMapping::Selected | FileMapping::Collision | decided);
        EXPECT_EQ(FlagsOf(u"src/b.tlk"_s), FileMapping::Collision | decided);
    }
}

TEST_F(CollisionResolution, WithoutOptionsOnlyMappingsMarkedForRenamingAreRenamed)
{
    MakeSources();
    Prepare(Global::NoCopyOption);
    tree.File(u"cloud/a.tasm"_s).File(u"cloud/b.tlk"_s);
    Member(importer, u"src/b.tlk"_s)->SetFlag(FileMapping::RenameOnCollision, true);
    EXPECT_TRUE(importer.ResolveCollisions());
    EXPECT_EQ(Targets(importer),
              (QStringList{u"src/a.tasm -> cloud/a.tasm"_s, u"src/Proj -> cloud/Proj"_s,
                           u"src/b.tlk -> cloud/b (2).tlk"_s}));
}

TEST_F(CollisionResolution, AFolderMarkedForRenamingGetsANewNameToo)
{
    MakeSources();
    Prepare(Global::NoCopyOption);
    tree.Folder(u"cloud/Proj"_s);
    Member(importer, u"src/Proj"_s)->SetFlag(FileMapping::RenameOnCollision, true);
    EXPECT_TRUE(importer.ResolveCollisions());
    EXPECT_EQ(Member(importer, u"src/Proj"_s)->GetTargetFile(), Cloud(u"Proj (2)"_s));
}

TEST_F(CollisionResolution, TheStageIsFramedInTheLog)
{
    MakeSources();
    Prepare(Global::RenameLinkedFiles);
    const LogCapture log;
    EXPECT_TRUE(importer.ResolveCollisions());
    EXPECT_EQ(log.Lines(), (QStringList{u"INFO Begin resolving file conflicts"_s,
                                        u"INFO Finished resolving file conflicts"_s}));
}

TEST_F(CollisionResolution, TheFirstFreeNameIsTaken)
{
    tree.File(u"cloud/a.b.prt"_s).File(u"cloud/a.b (2).prt"_s).File(u"cloud/README"_s);
    const FileMappingPointer dotted =
        Make(u"src/a.b.prt"_s, u"cloud/a.b.prt"_s, FileMapping::RenameOnCollision);
    EXPECT_TRUE(importer.AssignUniqueTargetName(dotted));
    EXPECT_EQ(dotted->GetTargetFile(), Cloud(u"a.b (3).prt"_s));
    const FileMappingPointer bare =
        Make(u"src/README"_s, u"cloud/README"_s, FileMapping::RenameOnCollision);
    EXPECT_TRUE(importer.AssignUniqueTargetName(bare));
    EXPECT_EQ(bare->GetTargetFile(), Cloud(u"README (2)"_s));
}

TEST_F(CollisionResolution, TwoMappingsRenamedInOnePassGetTheSameName)
{
    tree.File(u"src/p/a.prt"_s).File(u"src/q/a.prt"_s).File(u"cloud/a.prt"_s);
    ASSERT_TRUE(importer.Initialize({Source(u"p/a.prt"_s), Source(u"q/a.prt"_s)}, Cloud(), false,
                                    Global::RenameSelectedFiles, {}));
    ASSERT_TRUE(importer.MarkCollisions());
    ASSERT_TRUE(importer.ResolveCollisions());
    EXPECT_EQ(Targets(importer), (QStringList{u"src/p/a.prt -> cloud/a (2).prt"_s,
                                              u"src/q/a.prt -> cloud/a (2).prt"_s}));
}

TEST_F(CollisionResolution, AUniqueNameIsOnlyGivenWhereItIsWantedAndNeeded)
{
    tree.File(u"cloud/a.prt"_s);
    const auto wanted = FileMapping::RenameOnCollision;
    EXPECT_FALSE(importer.AssignUniqueTargetName(FileMappingPointer()));
    struct Row
    {
        const char* name;
        FileMappingPointer mapping;
    };
    const Row rows[] = {
        {"keeps its name",
         Make(u"src/a.prt"_s, u"cloud/a.prt"_s, wanted | FileMapping::KeepTargetName)},
        {"its own target", Make(u"cloud/a.prt"_s, u"cloud/a.prt"_s, wanted)},
        {"target is free", Make(u"src/a.prt"_s, u"cloud/free.prt"_s, wanted)},
        {"not marked", Make(u"src/a.prt"_s, u"cloud/a.prt"_s, FileMapping::Collision)},
        {"no target", std::make_shared<FileMapping>(Source(u"a.prt"_s), QString(), 7)},
        {"no source", std::make_shared<FileMapping>(QString(), Cloud(u"a.prt"_s), 7)},
        {"no local file",
         std::make_shared<FileMapping>(u"http:/host/a.prt"_s, Cloud(u"a.prt"_s), 7)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        row.mapping->SetFlag(wanted, row.mapping->GetFlag() != FileMapping::Collision);
        const QString before = row.mapping->GetTargetFile();
        EXPECT_TRUE(importer.AssignUniqueTargetName(row.mapping));
        EXPECT_EQ(row.mapping->GetTargetFile(), before);
    }
}

} // namespace Halvern::Test
