// SPDX-License-Identifier: Apache-2.0

// What goes wrong in each stage, as the host is told it.

#include "AtRecord.h"
#include "CollectedProblems.h"
#include "CopyingFixture.h"
#include "LockedFile.h"
#include "WatchedDatabase.h"

#include <QtCore/QDir>

namespace Halvern::Test {

using FileLink::Problem;
using FileLink::ProblemKind;
using FileLink::Stage;

namespace {

class Problems : public CopyingFixture
{
protected:
    Problems() { Listen(); }

    void Listen()
    {
        problems->list.clear();
        importer->SetProblemSink(problems);
    }
    void ExpectOnly(Stage stage, ProblemKind kind, const QString& file) const
    {
        ASSERT_EQ(problems->list.size(), 1) << problems->Texts().join("; ").toStdString();
        Expect(problems->list.first(), stage, kind, file);
    }
    static void Expect(const Problem& problem, Stage stage, ProblemKind kind, const QString& file)
    {
        EXPECT_EQ(problem.stage, stage);
        EXPECT_EQ(problem.kind, kind) << problem.text.toStdString();
        EXPECT_EQ(problem.file, file);
        EXPECT_FALSE(problem.text.isEmpty());
    }
    bool Initialize(const QStringList& sources, const QString& target)
    {
        return importer->Initialize(sources, target, false, Global::NoCopyOption, {});
    }

    std::shared_ptr<CollectedProblems> problems = std::make_shared<CollectedProblems>();
};

} // namespace

TEST_F(Problems, AreNoneInAnImportThatIsComplete)
{
    tree.File("src/a.tlk", LinkText({{"1", "b.tlk"}})).File("src/b.tlk", "");
    ASSERT_TRUE(Prepare({"src/a.tlk"}, "P"));
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_TRUE(importer->UpdateSyncDatabase());
    EXPECT_TRUE(problems->list.isEmpty()) << problems->Texts().join("; ").toStdString();
}

TEST_F(Problems, OfIntakeNameASelectedFileThatIsMissing)
{
    ASSERT_TRUE(Initialize({tree.Path("src/gone.prt")}, Cloud()));
    ExpectOnly(Stage::Intake, ProblemKind::FileMissing, tree.Path("src/gone.prt"));
}

TEST_F(Problems, OfIntakeNameWhatCannotBeImported)
{
    tree.File("cloud/a.prt");
    ASSERT_TRUE(Initialize({QDir::rootPath(), Cloud("a.prt")}, Cloud()));
    ASSERT_EQ(problems->list.size(), 2);
    Expect(problems->list[0], Stage::Intake, ProblemKind::SourceRefused, QDir::rootPath());
    Expect(problems->list[1], Stage::Intake, ProblemKind::SourceRefused, Cloud("a.prt"));
}

TEST_F(Problems, OfIntakeNameATargetThatCannotTakeTheSelection)
{
    tree.File("src/a.prt").File("src/b.prt").File("cloud/file");
    EXPECT_FALSE(Initialize({tree.Path("src/a.prt"), tree.Path("src/b.prt")}, Cloud("file")));
    ExpectOnly(Stage::Intake, ProblemKind::NoTarget, Cloud("file"));
    problems->list.clear();
    EXPECT_FALSE(Initialize({}, Cloud("gone")));
    ExpectOnly(Stage::Intake, ProblemKind::FileMissing, Cloud("gone"));
}

TEST_F(Problems, OfExtractionNameALinkedFileThatIsMissing)
{
    tree.File("src/a.tlk", LinkText({{"1", "gone.tlk"}}));
    ASSERT_TRUE(Initialize({tree.Path("src/a.tlk")}, Cloud()));
    EXPECT_TRUE(importer->ExtractFileLinks());
    ExpectOnly(Stage::ExtractFileLinks, ProblemKind::FileMissing, tree.Path("src/gone.tlk"));
}

TEST_F(Problems, OfExtractionBeginWithThePluginsOwnWords)
{
    tree.File("src/a.tlk", "fail\n");
    ASSERT_TRUE(Initialize({tree.Path("src/a.tlk")}, Cloud()));
    EXPECT_TRUE(importer->ExtractFileLinks());
    ASSERT_EQ(problems->list.size(), 2);
    const QString file = tree.Path("src/a.tlk");
    Expect(problems->list[0], Stage::ExtractFileLinks, ProblemKind::PluginMessage, file);
    EXPECT_EQ(problems->list[0].text, "test resolver: told to fail");
    Expect(problems->list[1], Stage::ExtractFileLinks, ProblemKind::LinksNotRead, file);
    for (const Problem& problem : problems->list)
        EXPECT_EQ(problem.plugin, TestResolverModule());
}

TEST_F(Problems, OfExtractionTellAPluginThatThrows)
{
    tree.File("src/a.tlk", "throw\n");
    ASSERT_TRUE(Initialize({tree.Path("src/a.tlk")}, Cloud()));
    EXPECT_TRUE(importer->ExtractFileLinks());
    ASSERT_EQ(problems->list.size(), 2);
    const QString file = tree.Path("src/a.tlk");
    Expect(problems->list[0], Stage::ExtractFileLinks, ProblemKind::PluginFault, file);
    EXPECT_TRUE(problems->list[0].text.endsWith("test resolver: told to throw"));
    EXPECT_EQ(problems->list[0].plugin, TestResolverModule());
    Expect(problems->list[1], Stage::ExtractFileLinks, ProblemKind::LinksNotRead, file);
}

TEST_F(Problems, OfAssignmentTellALayoutThatAnswersFalseOrThrows)
{
    RegisterTestLayout(tree, "layouts");
    Manager().AddPluginRegistrationFolders({tree.Path("layouts")});
    tree.File("src/layoutfails.tasm").File("src/layoutthrows.tasm");
    ASSERT_TRUE(Initialize({tree.Path("src/layoutfails.tasm"), tree.Path("src/layoutthrows.tasm")},
                           Cloud()));
    EXPECT_TRUE(importer->AssignTargetPaths());
    const QList<Problem> refused = problems->Of(ProblemKind::TargetsNotAssigned);
    ASSERT_EQ(refused.size(), 2);
    Expect(refused[0], Stage::AssignTargetPaths, ProblemKind::TargetsNotAssigned,
           tree.Path("src/layoutfails.tasm"));
    Expect(refused[1], Stage::AssignTargetPaths, ProblemKind::TargetsNotAssigned,
           tree.Path("src/layoutthrows.tasm"));
    ASSERT_EQ(problems->Count(ProblemKind::PluginFault), 1);
    const Problem fault = problems->Of(ProblemKind::PluginFault).first();
    EXPECT_EQ(fault.file, tree.Path("src/layoutthrows.tasm"));
    EXPECT_EQ(fault.plugin, TestLayoutModule());
}

TEST_F(Problems, OfMarkingAndCopyingNameAFileWithoutATarget)
{
    tree.File("src/a.prt");
    Add("src/a.prt", {});
    EXPECT_FALSE(importer->MarkCollisions());
    ExpectOnly(Stage::MarkCollisions, ProblemKind::NoTarget, tree.Path("src/a.prt"));
    problems->list.clear();
    EXPECT_TRUE(importer->CopyFiles());
    ExpectOnly(Stage::CopyFiles, ProblemKind::NoTarget, tree.Path("src/a.prt"));
}

TEST_F(Problems, OfCopyingNameASourceThatIsMissing)
{
    Add("src/gone.prt", "gone.prt");
    importer->CopyFiles();
    ExpectOnly(Stage::CopyFiles, ProblemKind::FileMissing, tree.Path("src/gone.prt"));
}

TEST_F(Problems, OfCopyingTellWhatStandsInTheWay)
{
    tree.File("src/a.prt").Folder("src/F").File("cloud/file").Folder("cloud/a.prt");
    Add("src/a.prt", "a.prt");
    Add("src/a.prt", "file/a.prt");
    Add("src/F", "file/F", FileMapping::Selected | FileMapping::Folder);
    importer->CopyFiles();
    ASSERT_EQ(problems->list.size(), 3);
    Expect(problems->list[0], Stage::CopyFiles, ProblemKind::FolderInTheWay,
           tree.Path("src/a.prt"));
    Expect(problems->list[1], Stage::CopyFiles, ProblemKind::FolderNotMade, tree.Path("src/a.prt"));
    EXPECT_TRUE(problems->list[1].text.contains(Cloud("file")));
    Expect(problems->list[2], Stage::CopyFiles, ProblemKind::FolderNotMade, tree.Path("src/F"));
}

TEST_F(Problems, OfCopyingTellAReadOnlyTarget)
{
    tree.File("src/a.prt").File("cloud/a.prt", "old");
    QFile::setPermissions(Cloud("a.prt"), QFile::ReadOwner | QFile::ReadUser);
    Add("src/a.prt", "a.prt");
    importer->CopyFiles();
    ExpectOnly(Stage::CopyFiles, ProblemKind::TargetReadOnly, tree.Path("src/a.prt"));
    QFile::setPermissions(Cloud("a.prt"), QFile::ReadOwner | QFile::WriteOwner);
}

TEST_F(Problems, OfCopyingTellWhereTheReplacedFileStillLies)
{
    tree.File("src/a.prt").File("cloud/a.prt", "old");
    const AtRecord done("File copied successfully",
                        [&] { tree.Remove("cloud/a.prt.tmp").File("cloud/a.prt.tmp/stranger"); });
    Add("src/a.prt", "a.prt");
    importer->CopyFiles();
    ExpectOnly(Stage::CopyFiles, ProblemKind::ParkedFileNotDeleted, tree.Path("src/a.prt"));
    EXPECT_TRUE(problems->list.first().text.contains(Cloud("a.prt.tmp")));
}

TEST_F(Problems, OfRepathingNameTheCopyThatIsHeld)
{
    tree.File("src/a.tlk").File("cloud/a.tlk", LinkText({{"1", "old"}}));
    Add("src/a.tlk", "a.tlk", FileMapping::Selected | FileMapping::Copied)
        ->SetTargetFileLinks({Link("1", "new")});
    const LockedFile locked(Cloud("a.tlk"));
    EXPECT_FALSE(importer->RepathFiles());
    ExpectOnly(Stage::RepathFiles, ProblemKind::Locked, Cloud("a.tlk"));
    problems->list.clear();
    EXPECT_FALSE(importer->RepathFile(Cloud("a.tlk"), FileLinkList{Link("1", "new")}));
    ExpectOnly(Stage::RepathFiles, ProblemKind::Locked, Cloud("a.tlk"));
    problems->list.clear();
    const auto item = std::make_shared<SyncItem>(Cloud("a.tlk"), "/a.tlk", "/");
    EXPECT_TRUE(importer->RepathFiles(QList{item}));
    ExpectOnly(Stage::RepathFiles, ProblemKind::Locked, Cloud("a.tlk"));
}

TEST_F(Problems, OfRepathingNameTheCopyThatIsGone)
{
    tree.File("src/a.tlk");
    Add("src/a.tlk", "a.tlk", FileMapping::Selected | FileMapping::Copied);
    EXPECT_FALSE(importer->RepathFiles());
    ExpectOnly(Stage::RepathFiles, ProblemKind::FileMissing, Cloud("a.tlk"));
    EXPECT_EQ(problems->list[0].text, "There is no copy whose links could be rewritten");
    problems->list.clear();
    EXPECT_FALSE(importer->RepathFile(Cloud("b.tlk"), FileLinkList{Link("1", "new")}));
    ExpectOnly(Stage::RepathFiles, ProblemKind::FileMissing, Cloud("b.tlk"));
}

TEST_F(Problems, OfRepathingTellWhyThePluginDidNot)
{
    tree.File("cloud/a.tlk", "norepath\n").File("cloud/b.tlk", "throwrepath\n");
    EXPECT_FALSE(importer->RepathFile(Cloud("a.tlk"), FileLinkList{Link("1", "new")}));
    EXPECT_FALSE(importer->RepathFile(Cloud("b.tlk"), FileLinkList{Link("1", "new")}));
    ASSERT_EQ(problems->list.size(), 4);
    Expect(problems->list[0], Stage::RepathFiles, ProblemKind::PluginMessage, Cloud("a.tlk"));
    Expect(problems->list[1], Stage::RepathFiles, ProblemKind::LinksNotRewritten, Cloud("a.tlk"));
    Expect(problems->list[2], Stage::RepathFiles, ProblemKind::PluginFault, Cloud("b.tlk"));
    Expect(problems->list[3], Stage::RepathFiles, ProblemKind::LinksNotRewritten, Cloud("b.tlk"));
}

TEST_F(Problems, OfTheUpdateNameWhatCouldNotBeRecordedOnceEach)
{
    const auto database = WatchedDatabase::Install();
    tree.File("src/a.tlk").File("cloud/a.tlk");
    tree.File("src/b.tlk").File("src/c.tlk").File("elsewhere/c.tlk");
    const FileMappingFlag copied = FileMapping::Selected | FileMapping::Copied;
    Add("src/a.tlk", "a.tlk", copied);
    Add("src/b.tlk", "b.tlk", copied);
    AddPaths(tree.Path("src/c.tlk"), tree.Path("elsewhere/c.tlk"), copied);
    database->refuseFolders = true;
    importer->UpdateSyncDatabase();
    ASSERT_EQ(problems->list.size(), 3) << problems->Texts().join("; ").toStdString();
    Expect(problems->list[0], Stage::UpdateSyncDatabase, ProblemKind::NotRecorded, Cloud("a.tlk"));
    Expect(problems->list[1], Stage::UpdateSyncDatabase, ProblemKind::NotRecorded, Cloud("b.tlk"));
    Expect(problems->list[2], Stage::UpdateSyncDatabase, ProblemKind::NotRecorded,
           tree.Path("elsewhere/c.tlk"));
}

TEST_F(Problems, OfTheUpdateNameFilesThatLinkEachOtherOnceEach)
{
    const auto database = WatchedDatabase::Install();
    const FileMappingFlag copied = FileMapping::Selected | FileMapping::Copied;
    for (const auto& [name, linked] : {std::pair("a.tlk", "b.tlk"), std::pair("b.tlk", "a.tlk")}) {
        tree.File(u"src/%1"_s.arg(name)).File(u"cloud/%1"_s.arg(name));
        Add(u"src/%1"_s.arg(name), name, copied)->SetTargetFileLinks({{-1, "1", linked, {}}});
    }
    for (bool* const refused : {&database->refuseFolders, &database->refuseWrites}) {
        problems->list.clear();
        *refused = true;
        importer->UpdateSyncDatabase();
        *refused = false;
        ASSERT_EQ(problems->list.size(), 2) << problems->Texts().join("; ").toStdString();
        Expect(problems->list[0], Stage::UpdateSyncDatabase, ProblemKind::NotRecorded,
               Cloud("a.tlk"));
        Expect(problems->list[1], Stage::UpdateSyncDatabase, ProblemKind::NotRecorded,
               Cloud("b.tlk"));
    }
}

TEST_F(Problems, OfTheUpdateTellADatabaseThatIsMissing)
{
    tree.File("src/a.tlk").File("cloud/a.tlk");
    Add("src/a.tlk", "a.tlk", FileMapping::Selected | FileMapping::Copied);
    SyncFolderManagerLib::FolderManager::GetInstance()->SetSyncDatabase(nullptr);
    EXPECT_FALSE(importer->UpdateSyncDatabase());
    ExpectOnly(Stage::UpdateSyncDatabase, ProblemKind::NotRecorded, QString());
}

TEST_F(Problems, TellWhenWhatWasCopiedCannotBeRemembered)
{
    const auto database = WatchedDatabase::Install();
    tree.File("src/a.prt");
    Add("src/a.prt", "a.prt");
    importer->CopyFiles();
    EXPECT_TRUE(problems->list.isEmpty());
    database->refuseWrites = true;
    importer.reset();
    ExpectOnly(Stage::UpdateSyncDatabase, ProblemKind::NotRecorded, QString());
}

TEST_F(Problems, HoldPathsWithPlaceholdersUnharmed)
{
    tree.File("src/%1 %2.tlk", "throw\n").Folder("cloud/%2 %1.tlk");
    const QString source = tree.Path("src/%1 %2.tlk");
    ASSERT_TRUE(Initialize({source}, Cloud()));
    importer->ExtractFileLinks();
    importer->GetFileSet()->GetFiles().first()->SetTargetFile(Cloud("%2 %1.tlk/file/x"), true);
    tree.File("cloud/%2 %1.tlk/file");
    importer->CopyFiles();
    ASSERT_EQ(problems->list.size(), 3);
    for (const Problem& problem : problems->list)
        EXPECT_EQ(problem.file, source);
    EXPECT_TRUE(problems->list[2].text.contains(Cloud("%2 %1.tlk/file")));
}

} // namespace Halvern::Test
