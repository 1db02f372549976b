// SPDX-License-Identifier: Apache-2.0

// What others throw while a stage runs ends that stage as failed, and nothing else.

#include "CollectedProblems.h"
#include "CopyingFixture.h"
#include "StageFixture.h"
#include "WatchedDatabase.h"

#include "filelink/FileLinkImporter.h"
#include "stages/CollisionMarking.h"
#include "stages/Repathing.h"

#include <new>
#include <stdexcept>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

using FileLink::FileLinkImporter;
using FileLink::Problem;
using FileLink::ProblemKind;
using FileLink::Stage;

namespace {

const QString ended = u"An exception ended the stage: "_s;

/// Throws at one poll.
class ThrowingController : public FileLink::ICancelController
{
public:
    bool IsCancelRequested() override
    {
        if (++polls != at)
            return false;
        if (lacksMemory)
            throw std::bad_alloc();
        throw std::runtime_error("the window is gone");
    }

    int at = 0;
    int polls = 0;
    bool lacksMemory = false;
};

/// A whole import, stage by stage, of an assembly, a part that it links and a folder.
class Exceptions : public CopyingFixture
{
protected:
    Exceptions()
    {
        tree.File("src/P/a.tlk", LinkText({{"1", "b.tlk"}})).File("src/P/b.tlk", "");
        tree.Folder("src/P/empty");
    }

    QList<bool> RunStages(FileLinkImporter& module)
    {
        return {module.Initialize({tree.Path("src/P")}, Cloud(), false, Global::NoCopyOption, {}),
                module.ExtractFileLinks(),
                module.AssignTargetPaths(),
                module.MarkCollisions(),
                module.ResolveCollisions(),
                module.CopyFiles(),
                module.RepathTargetFiles(),
                module.UpdateSyncDatabase()};
    }
    qsizetype Openings() const { return log.Lines().filter("INFO Begin ").size(); }
    /// The closing lines; the summary of the copy stage begins alike.
    qsizetype Closings() const
    {
        QStringList lines = log.Lines().filter("INFO Finished ");
        lines.removeIf([](const QString& line) { return line.contains("Copied:"); });
        return lines.size();
    }

    std::shared_ptr<CollectedProblems> problems = std::make_shared<CollectedProblems>();
};

} // namespace

TEST_F(Exceptions, OfAControllerAtAnyPollEndThatStageAloneAndTheNextImportIsComplete)
{
    const auto thrower = std::make_shared<ThrowingController>();
    int stagesEnded = 0;
    for (int at = 1;; ++at) {
        SCOPED_TRACE(at);
        tree.Remove("cloud").Folder("cloud");
        FileLinkImporter module(thrower);
        module.SetProblemSink(problems);
        problems->list.clear();
        log.Clear();
        thrower->polls = 0;
        thrower->at = at;
        thrower->lacksMemory = at % 2 == 0;
        const QList<bool> results = RunStages(module);
        if (thrower->polls < at)
            break;
        const QString reason = thrower->lacksMemory ? "std::bad_alloc" : "the window is gone";
        ASSERT_EQ(problems->Count(ProblemKind::StageEnded), 1);
        const Problem problem = problems->Of(ProblemKind::StageEnded).first();
        EXPECT_EQ(problem.text, ended + reason);
        EXPECT_EQ(log.Count("ERROR " + ended + reason), 1);
        EXPECT_EQ(Openings(), Closings());
        if (problem.stage != Stage::Intake) {
            EXPECT_TRUE(results.contains(false));
            EXPECT_TRUE(results[0]);
        }
        ++stagesEnded;

        thrower->at = 0;
        tree.Remove("cloud").Folder("cloud");
        EXPECT_EQ(RunStages(module), QList<bool>(8, true));
        EXPECT_EQ(tree.Contents("cloud/P"), tree.Contents("src/P"));
    }
    EXPECT_GT(stagesEnded, 20);
}

TEST_F(Exceptions, OfASlotEndTheStageThatEmittedAndLeaveTheImporterWorking)
{
    FileLinkImporter module;
    module.SetProblemSink(problems);
    bool angry = true;
    int calls = 0;
    const auto slot = [&] {
        ++calls;
        if (angry)
            throw std::runtime_error("the view is gone");
    };
    QObject::connect(&module, &FileLinkImporter::FolderCreated, &module, slot);
    QList<bool> results = RunStages(module);
    EXPECT_EQ(results, (QList<bool>{true, true, true, true, true, false, true, true}));
    EXPECT_EQ(calls, 1);
    ASSERT_EQ(problems->Count(ProblemKind::StageEnded), 1);
    EXPECT_EQ(problems->Of(ProblemKind::StageEnded).first().stage, Stage::CopyFiles);
    EXPECT_EQ(log.Count("ERROR " + ended + "the view is gone"), 1);
    EXPECT_EQ(Openings(), Closings());

    angry = false;
    tree.Remove("cloud").Folder("cloud");
    EXPECT_EQ(RunStages(module), QList<bool>(8, true));
    EXPECT_EQ(tree.Contents("cloud/P"), tree.Contents("src/P"));
    EXPECT_GT(calls, 1);
}

TEST_F(Exceptions, OfASlotOfACopiedFileComeWhenTheFileCountsAsCopied)
{
    FileLinkImporter module;
    module.SetProblemSink(problems);
    QObject::connect(&module, &FileLinkImporter::FileCopied, &module,
                     [] { throw std::runtime_error("no"); });
    RunStages(module);
    ASSERT_EQ(problems->Count(ProblemKind::StageEnded), 1);
    const FileMappingPointer first = module.GetFileSet()->GetFiles(
        FileMapping::Copied, FileMapping::NoFlag, FileMapping::Folder, FileMapping::NoFlag)[0];
    EXPECT_TRUE(tree.Exists("cloud/P/" + first->GetTargetFile().section('/', -1)));
}

TEST_F(Exceptions, OfASlotWhileLinksAreRewrittenComeAfterTheRewrite)
{
    tree.File("src/lib/c.tlk", "").File("src/P/a.tlk", LinkText({{"1", "../lib/c.tlk"}}));
    FileLinkImporter module;
    module.SetProblemSink(problems);
    QObject::connect(&module, &FileLinkImporter::FileModified, &module, [] { throw 7; });
    EXPECT_FALSE(RunStages(module)[6]);
    EXPECT_EQ(tree.Read("cloud/P/a.tlk"), LinkText({{"1", "lib/c.tlk"}}));
    ASSERT_EQ(problems->Count(ProblemKind::StageEnded), 1);
    EXPECT_EQ(problems->Of(ProblemKind::StageEnded).first().text, ended + "unknown exception");
}

namespace {

class ThrowingDatabase : public WatchedDatabase
{
public:
    using WatchedDatabase::WatchedDatabase;
    Item GetSyncItem(const QString&, bool, int, SyncServices::FileItem::Depth) override
    {
        throw std::bad_alloc();
    }
    QList<Mapping> GetFileCopyHistoryByAuthenticationId(int) override
    {
        throw std::runtime_error("the disk is gone");
    }
    bool AddAndUpdateFileCopyHistory(QList<Mapping>, QList<Mapping>) override
    {
        throw std::runtime_error("the disk is gone");
    }
};

} // namespace

TEST_F(Exceptions, OfADatabaseEndTheStagesThatAskIt)
{
    const auto database = SyncFolderManagerLib::FolderManager::GetInstance()->GetSyncDatabase();
    {
        FileLinkImporter module;
        module.SetProblemSink(problems);
        module.SetSyncDatabase(std::make_shared<ThrowingDatabase>(database));
        EXPECT_EQ(RunStages(module),
                  (QList<bool>{true, false, true, true, true, true, true, false}));
        EXPECT_EQ(tree.Contents("cloud/P"), tree.Contents("src/P"));
        ASSERT_EQ(problems->Count(ProblemKind::StageEnded), 2);
        EXPECT_EQ(problems->Of(ProblemKind::StageEnded)[0].stage, Stage::ExtractFileLinks);
        EXPECT_EQ(problems->Of(ProblemKind::StageEnded)[1].stage, Stage::UpdateSyncDatabase);
    }
    // The history is written when the importer is destroyed.
    ASSERT_EQ(problems->Count(ProblemKind::StageEnded), 3);
    EXPECT_EQ(problems->Of(ProblemKind::StageEnded)[2].text, ended + "the disk is gone");
}

TEST_F(Exceptions, OfASinkEndTheStageEvenWhenItThrowsAtThatProblemToo)
{
    FileLinkImporter module;
    module.SetProblemSink(problems);
    problems->watch = [](const Problem&) { throw std::runtime_error("no listener"); };
    tree.File("src/P/a.tlk", LinkText({{"1", "gone.tlk"}}));
    EXPECT_EQ(RunStages(module)[1], false);
    EXPECT_EQ(log.Count("ERROR " + ended + "no listener"), 1);
    EXPECT_EQ(Openings(), Closings());
}

namespace {
class StageExceptions : public StageFixture
{};
} // namespace

TEST_F(StageExceptions, WhileAFileIsRewrittenLeaveItReadOnlyAsItWas)
{
    tree.File("cloud/a.tlk", "norepath\n");
    problems->watch = [](const Problem&) { throw std::bad_alloc(); };
    const auto readOnly = QFile::ReadOwner | QFile::ReadUser;
    QFile::setPermissions(Cloud("a.tlk"), readOnly);
    const FileLink::FileLinkList links = {{-1, "1", "new", {}}};
    EXPECT_THROW(FileLink::Stages::RepathFile(context, Cloud("a.tlk"), links), std::bad_alloc);
    EXPECT_FALSE(QFile::permissions(Cloud("a.tlk")) & QFile::WriteOwner);
    QFile::setPermissions(Cloud("a.tlk"), QFile::ReadOwner | QFile::WriteOwner);
}

TEST_F(StageExceptions, AreLoggedInTheNameOfTheOperationBesideItsFrame)
{
    tree.File("src/a.tlk");
    Add("a.tlk", "a.tlk");
    const auto thrower = std::make_shared<ThrowingController>();
    thrower->at = 1;
    context.cancelController = thrower;
    EXPECT_FALSE(FileLink::Stages::MarkCollisions(context));
    EXPECT_EQ(log.Lines(), (QStringList{"INFO Begin marking file conflicts",
                                        "INFO Finished marking file conflicts",
                                        "ERROR " + ended + "the window is gone"}));
    EXPECT_TRUE(log.Records().last().function.contains("FileLinkImporterImp::MarkCollisions()"));
    EXPECT_TRUE(FileLink::Stages::MarkCollisions(context));
}

} // namespace Halvern::Test
