// SPDX-License-Identifier: Apache-2.0

#include "CopyingFixture.h"
#include "WatchedDatabase.h"

#include <functional>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

/// Runs a stage once for each poll that it makes, with a cancel at that poll, and once to its end.
class Cancellation : public CopyingFixture
{
protected:
    struct Run
    {
        /// The poll at which the cancel comes.
        int at = 0;
        bool completed = false;
        bool result = false;
    };

    /// `set` makes everything anew, `stage` runs it, `check` looks at what it left.
    int CancelAtEveryPoll(const std::function<void()>& set, const std::function<bool()>& stage,
                          const std::function<void(const Run&)>& check)
    {
        for (int at = 1; at < 1000; ++at) {
            SCOPED_TRACE("cancel at poll " + std::to_string(at));
            tree.Remove("cloud").Folder("cloud");
            controller->from = 0;
            set();
            log.Clear();
            controller->polls = 0;
            controller->from = at;
            Run run;
            run.at = at;
            run.result = stage();
            run.completed = controller->polls < at;
            const qsizetype canceled = log.Count("INFO Operation canceled");
            EXPECT_EQ(canceled, run.completed ? 0 : controller->polls - at + 1);
            controller->from = 0;
            check(run);
            if (run.completed)
                return at - 1;
            if (HasFailure())
                break;
        }
        ADD_FAILURE() << "the stage did not end";
        return 0;
    }
};

} // namespace

TEST_F(Cancellation, OfCopyingStopsBeforeTheNextFileAndUndoesNothing)
{
    FileLink::FileMappingList members;
    const auto set = [&] {
        Restart();
        tree.File("src/a.tlk", "").File("src/b.tlk", "").File("src/c.tlk", "");
        members = {Add("src/a.tlk", "a.tlk", FileMapping::Selected, {Link("1", "b.tlk")}),
                   Add("src/b.tlk", "b.tlk"), Add("src/c.tlk", "c.tlk")};
    };
    const auto check = [&](const Run& run) {
        const int copied = qMin(run.at - 1, 3);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(members[i]->ExistsInTarget(), i < copied);
            EXPECT_EQ(members[i]->HasFlag(FileMapping::Copied), i < copied);
        }
        // Once all files are copied a cancel only cuts the computing of the links short.
        EXPECT_EQ(run.result, copied == 3);
        EXPECT_EQ(LinesWith("INFO Finished copying files.").size(), copied == 3 ? 1 : 0);
        EXPECT_EQ(log.Count("INFO Finished copying files"), 1);
        EXPECT_EQ(PathsOf(members[0]->GetTargetFileLinks()),
                  run.at > 5 ? QStringList{"b.tlk"} : QStringList());
    };
    // One for each file; then one for each file and one for the link.
    EXPECT_EQ(CancelAtEveryPoll(
                  set, [&] { return importer->CopyFiles(); }, check),
              7);
}

TEST_F(Cancellation, OfAMoveStopsBeforeTheNextEmptiedFolder)
{
    const auto set = [&] {
        Restart(Global::MoveFiles);
        tree.File("src/P/Q/a.prt");
        const FileMappingFlag folder = FileMapping::Selected | FileMapping::Folder;
        Add("src/P", "P", folder);
        Add("src/P/Q", "P/Q", folder);
        Add("src/P/Q/a.prt", "P/Q/a.prt");
    };
    const auto check = [&](const Run& run) {
        EXPECT_EQ(tree.Exists("cloud/P"), run.at > 1);
        EXPECT_EQ(tree.Exists("cloud/P/Q"), run.at > 2);
        EXPECT_EQ(tree.Exists("cloud/P/Q/a.prt"), run.at > 3);
        EXPECT_EQ(tree.Exists("src/P/Q/a.prt"), run.at <= 3);
        EXPECT_EQ(tree.Exists("src/P/Q"), run.at <= 4);
        EXPECT_EQ(tree.Exists("src/P"), run.at <= 5);
        EXPECT_EQ(run.result, run.at > 5);
        EXPECT_EQ(LinesWith("INFO Finished copying files.").size(), run.at > 5 ? 1 : 0);
    };
    // Three entries, two folders to remove, and the links of three entries.
    EXPECT_EQ(CancelAtEveryPoll(
                  set, [&] { return importer->CopyFiles(); }, check),
              8);
}

TEST_F(Cancellation, OfTargetLinksStoresNothingForTheFileAtHand)
{
    FileLink::FileMappingList members;
    const auto set = [&] {
        Restart();
        tree.File("cloud/a.tlk", "").File("cloud/b.tlk", "");
        const FileLinkList links = {Link("1", "b.tlk"), Link("2", "vault://x")};
        members = {Add("src/a.tlk", "a.tlk", FileMapping::Selected, links),
                   Add("src/b.tlk", "b.tlk", FileMapping::Selected, links)};
    };
    const auto check = [&](const Run& run) {
        EXPECT_EQ(run.result, run.completed);
        EXPECT_EQ(members[0]->GetTargetFileLinks().size(), run.at > 3 ? 2 : 0);
        EXPECT_EQ(members[1]->GetTargetFileLinks().size(), run.at > 6 ? 2 : 0);
        EXPECT_EQ(members[1]->GetTargetFileLinksExtractedAtFileDate().isValid(), run.at > 6);
    };
    EXPECT_EQ(CancelAtEveryPoll(
                  set, [&] { return importer->ComputeTargetFileLinks(); }, check),
              6);
}

TEST_F(Cancellation, OfRepathingKeepsTheMarksOfWhatWasNotFinished)
{
    FileLink::FileMappingList members;
    const auto set = [&] {
        Restart();
        members.clear();
        for (const QString& name : {u"a.tlk"_s, u"b.tlk"_s, u"stays.tlk"_s}) {
            tree.File("cloud/" + name, LinkText({{"1", "old"}}));
            const auto mapping = Add("src/" + name, name);
            mapping->SetTargetFileLinks({Link("1", "new")});
            mapping->SetFlag(FileMapping::Copied, name != "stays.tlk");
            members.append(mapping);
        }
        // A file outside the set gives nothing to ask about.
        members[2]->SetSourceFileLinks({Link("1", "missing.tlk"), Link("2", "b.tlk")});
    };
    const auto check = [&](const Run& run) {
        EXPECT_EQ(run.result, run.completed);
        EXPECT_EQ(log.Count("INFO Finished repathing file links in target"), 1);
        // Three files and the one linked member to mark, then two polls for each file.
        EXPECT_EQ(members[2]->HasFlag(FileMapping::NeedsRepath), run.at > 4 && run.at <= 10);
        for (int i = 0; i < 3; ++i) {
            const int started = 4 + 2 * i + 1;
            const QString name = QFileInfo(members[i]->GetTargetFile()).fileName();
            EXPECT_EQ(tree.Read("cloud/" + name),
                      LinkText({{"1", run.at > started ? "new" : "old"}}));
            EXPECT_EQ(members[i]->HasFlag(FileMapping::Repathed), run.at > started + 1);
        }
    };
    EXPECT_EQ(CancelAtEveryPoll(
                  set, [&] { return importer->RepathFiles(); }, check),
              10);
}

TEST_F(Cancellation, OfDeferredRepathingKeepsWhatIsLeftPending)
{
    int folder = -1;
    const auto root = [&] {
        return SyncFolderManagerLib::FolderManager::GetInstance()->GetSyncRootFolder(Cloud());
    };
    const QStringList names = {"P/a.tlk", "P/b.tlk"};
    const auto set = [&] {
        Restart();
        folder = Database().AddFolderItem(root(), Cloud("P"))->GetId();
        for (const QString& name : names) {
            tree.File("cloud/" + name, LinkText({{"1", "old"}}));
            auto item = Item(name);
            if (!item) {
                item = std::make_shared<SyncItem>(Cloud(name), "/" + name, "/");
                item->SetAuthenticationId(7);
                item->SetRootFolderId(root()->GetId());
                item->SetParentFolderId(folder);
            }
            item->SetFileLinks({Link("1", "new")});
            item->SetSyncOption(SyncItem::RepathPending);
            ASSERT_TRUE(Database().AddOrUpdateFileConfiguration(item));
        }
    };
    const auto check = [&](const Run& run) {
        // The entry does not look at what became of the items.
        EXPECT_TRUE(run.result);
        for (int i = 0; i < 2; ++i) {
            const bool done = run.at > 2 + i;
            EXPECT_EQ(tree.Read("cloud/" + names[i]), LinkText({{"1", done ? "new" : "old"}}));
            EXPECT_EQ(Item(names[i])->GetSyncOption(),
                      done ? SyncItem::NoSyncOption : SyncItem::RepathPending);
        }
    };
    EXPECT_EQ(CancelAtEveryPoll(
                  set, [&] { return importer->RepathFiles(folder); }, check),
              3);
}

TEST_F(Cancellation, OfPendingItemsFails)
{
    tree.File("cloud/a.tlk", "");
    const auto item = std::make_shared<SyncItem>(Cloud("a.tlk"), "/a.tlk", "/");
    controller->from = 1;
    EXPECT_FALSE(importer->RepathFiles({item}));
    controller->from = 2;
    controller->polls = 0;
    EXPECT_FALSE(importer->RepathFiles({item}));
}

TEST_F(Cancellation, OfTheDatabaseUpdateFailsAndWritesNothingMore)
{
    const auto database = WatchedDatabase::Install();
    const QStringList order = {"c.tlk", "b.tlk", "a.tlk", "d.tlk"};
    int writesBefore = -1;
    // Items of one run are there in the next, unless their files lie in another folder.
    int folder = 0;
    bool newFolder = true;
    const auto addCopy = [&](const QString& name, const QStringList& links, bool selected) {
        const QString target = QString::number(folder) + "/" + name;
        tree.File("cloud/" + target, "");
        const auto mapping = Add("src/" + name, target, FileMapping::Copied);
        mapping->SetFlag(FileMapping::Selected, selected);
        FileLinkList list;
        for (const QString& path : links)
            list.append(Link("1", path));
        mapping->SetTargetFileLinks(list);
    };
    const auto set = [&] {
        Restart();
        folder += newFolder;
        addCopy("a.tlk", {"b.tlk"}, true);
        addCopy("b.tlk", {"c.tlk"}, false);
        addCopy("c.tlk", {}, false);
        addCopy("d.tlk", {}, true);
        SyncFolderManagerLib::FolderManager::GetInstance()->GetSyncRootFolder(Cloud());
        database->Clear();
    };
    const auto check = [&](const Run& run) {
        EXPECT_EQ(run.result, run.completed);
        EXPECT_EQ(log.Count("INFO Finished updating sync database"), 1);
        QStringList written;
        for (const QString& path : database->written)
            written.append(QFileInfo(path).fileName());
        EXPECT_EQ(written, order.first(written.size()));
        EXPECT_GE(written.size(), writesBefore);
        EXPECT_EQ(run.completed, written.size() == order.size());
        writesBefore = int(written.size());
    };
    // New items: one poll for each root and each linked file.
    EXPECT_EQ(CancelAtEveryPoll(
                  set, [&] { return importer->UpdateSyncDatabase(); }, check),
              4);
    // Existing items: more, while their links are merged.
    newFolder = false;
    writesBefore = -1;
    EXPECT_EQ(CancelAtEveryPoll(
                  set, [&] { return importer->UpdateSyncDatabase(); }, check),
              8);
}

} // namespace Halvern::Test
