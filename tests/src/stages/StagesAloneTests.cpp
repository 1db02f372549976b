// SPDX-License-Identifier: Apache-2.0

// Each stage alone, over a context filled by hand, while no platform service runs.

#include "StageFixture.h"
#include "TestPlugins.h"

#include "stages/CollisionMarking.h"
#include "stages/CollisionResolution.h"
#include "stages/Copying.h"
#include "stages/DatabaseUpdate.h"
#include "stages/DeferredRepathing.h"
#include "stages/FileLinkExtraction.h"
#include "stages/FileReplacement.h"
#include "stages/FileTreeLog.h"
#include "stages/Repathing.h"
#include "stages/SelectionIntake.h"
#include "stages/TargetAssignment.h"
#include "stages/TargetLinks.h"

#include "syncservices/FolderManager.h"

namespace Halvern::Test {

using namespace FileLink;

namespace {

class StagesAlone : public StageFixture
{
protected:
    StagesAlone() { EXPECT_EQ(SyncFolderManagerLib::FolderManager::GetInstance(), nullptr); }

    QStringList Sources() const
    {
        QStringList sources;
        for (const FileMappingPointer& file : context.Files())
            sources.append(file->GetSourceFile());
        return sources;
    }
};

} // namespace

TEST_F(StagesAlone, IntakeMakesASetOfASelectedFolder)
{
    tree.File("src/P/a.tlk");
    ASSERT_TRUE(Stages::TakeSelection(context, {Source("P")}, "target", false));
    EXPECT_EQ(Sources(), (QStringList{Source("P"), Source("P/a.tlk")}));
    EXPECT_EQ(context.Files().last()->GetTargetFile(), Cloud("target/P/a.tlk"));
}

TEST_F(StagesAlone, ExtractionAddsWhatIsLinked)
{
    tree.File("src/a.tlk", "link 1 b.tlk\n").File("src/b.tlk", "");
    Add("a.tlk", "a.tlk");
    const Stages::FileLinkExtraction extraction(context);
    ASSERT_TRUE(extraction.Run(*context.fileSet, true));
    EXPECT_EQ(Sources(), (QStringList{Source("a.tlk"), Source("b.tlk")}));
}

TEST_F(StagesAlone, AssignmentPutsALinkedFileBesideTheOneThatLinksIt)
{
    tree.File("src/a.tlk").File("src/b.tlk");
    Link(Add("a.tlk", "P/a.tlk"), "b.tlk");
    const FileMappingPointer linked = Add("b.tlk", {}, FileMapping::NoFlag);
    ASSERT_TRUE(Stages::AssignTargetPaths(context));
    EXPECT_EQ(linked->GetTargetFile(), Cloud("P/b.tlk"));
}

TEST_F(StagesAlone, MarkingFindsWhatStandsAtTheTarget)
{
    tree.File("src/a.tlk").File("src/b.tlk").File("cloud/a.tlk");
    const FileMappingPointer taken = Add("a.tlk", "a.tlk");
    const FileMappingPointer free = Add("b.tlk", "b.tlk");
    ASSERT_TRUE(Stages::MarkCollisions(context));
    EXPECT_TRUE(taken->HasFlag(FileMapping::Collision));
    EXPECT_FALSE(free->HasFlag(FileMapping::Collision));
}

TEST_F(StagesAlone, ResolutionRenamesByTheOptions)
{
    tree.File("src/a.tlk").File("cloud/a.tlk");
    const FileMappingPointer file = Add("a.tlk", "a.tlk");
    file->SetFlag(FileMapping::Collision, true);
    context.options = SyncServices::Global::RenameSelectedFiles;
    ASSERT_TRUE(Stages::ResolveCollisions(context));
    EXPECT_EQ(file->GetTargetFile(), Cloud("a (2).tlk"));
}

TEST_F(StagesAlone, CopyingCopiesAndTellsTheReceivers)
{
    tree.File("src/a.tlk", "new");
    const FileMappingPointer file = Add("a.tlk", "P/a.tlk");
    QStringList heard;
    context.signals.folderCreated = [&](const QString& folder) { heard.append(folder); };
    context.signals.fileCopied = [&](const QString&, const QString& target) {
        heard.append(target);
    };
    ASSERT_TRUE(Stages::CopyFiles(context));
    EXPECT_EQ(tree.Read("cloud/P/a.tlk"), "new");
    EXPECT_TRUE(file->HasFlag(FileMapping::Copied));
    EXPECT_EQ(heard, (QStringList{Cloud("P"), Cloud("P/a.tlk")}));
}

TEST_F(StagesAlone, ReplacementHandsTheOldFileToTheBaseStore)
{
    tree.File("src/a.tlk", "new").File("cloud/a.tlk", "old");
    ASSERT_TRUE(Stages::CopyFile(context, Add("a.tlk", "a.tlk"), true));
    EXPECT_EQ(services->saved, QStringList{Cloud("a.tlk")});
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"a.tlk", "new"}}));
    EXPECT_FALSE(tree.Exists("src/a.tlk"));
}

TEST_F(StagesAlone, TargetLinksLeadToTheCopies)
{
    tree.File("src/a.tlk").File("cloud/a.tlk").File("cloud/lib/b.tlk");
    const FileMappingPointer holder = Add("a.tlk", "a.tlk");
    Link(holder, "b.tlk");
    Add("b.tlk", "lib/b.tlk");
    ASSERT_TRUE(Stages::ComputeTargetFileLinks(context));
    ASSERT_EQ(holder->GetTargetFileLinks().size(), 1);
    EXPECT_EQ(holder->GetTargetFileLinks().first().Path, "lib/b.tlk");
}

TEST_F(StagesAlone, TheTreeLogShowsWhoLinksWhom)
{
    Link(Add("a.tlk", "a.tlk"), "b.tlk");
    Add("b.tlk", "b.tlk", FileMapping::NoFlag);
    Stages::LogFileTree(context, true);
    EXPECT_EQ(log.Lines(), (QStringList{"DEBUG ***Source file tree***",
                                        "DEBUG " + Source("a.tlk") + " (Selected)",
                                        "DEBUG --->" + Source("b.tlk")}));
}

TEST_F(StagesAlone, RepathingRewritesACopyAndRestoresItsReadOnlyState)
{
    tree.File("src/a.tlk").File("cloud/a.tlk", "link 1 old\n");
    const FileMappingPointer file = Add("a.tlk", "a.tlk");
    file->SetFlag(FileMapping::Copied, true);
    file->SetTargetFileLinks({{-1, "1", "new", {}}});
    QFile::setPermissions(Cloud("a.tlk"), QFile::ReadOwner | QFile::ReadUser);
    ASSERT_TRUE(Stages::RepathFiles(context));
    EXPECT_EQ(tree.Read("cloud/a.tlk"), "link 1 new\n");
    EXPECT_FALSE(QFile::permissions(Cloud("a.tlk")) & QFile::WriteOwner);
    QFile::setPermissions(Cloud("a.tlk"), QFile::ReadOwner | QFile::WriteOwner);
}

TEST_F(StagesAlone, TheUpdateWritesItemsWhichDeferredRepathingFinds)
{
    OpenDatabase();
    tree.File("src/a.tlk").File("cloud/P/a.tlk", "link 1 old\n");
    const FileMappingPointer file = Add("a.tlk", "P/a.tlk");
    file->SetFlag(FileMapping::Copied | FileMapping::NeedsRepath, true);
    file->SetTargetFileLinks({{-1, "1", "new", {}}});
    ASSERT_TRUE(Stages::UpdateSyncDatabase(context));
    const auto item = services->database->GetSyncItem(Cloud("P/a.tlk"), true, 7,
                                                      SyncServices::FileItem::ItemOnly);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->GetCloudItemId().isEmpty(), false);

    ASSERT_TRUE(Stages::RepathFolder(context, item->GetParentFolderId()));
    EXPECT_EQ(tree.Read("cloud/P/a.tlk"), "link 1 new\n");
    EXPECT_TRUE(problems->list.isEmpty()) << problems->Texts().join("; ").toStdString();
}

} // namespace Halvern::Test
