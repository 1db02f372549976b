// SPDX-License-Identifier: Apache-2.0

#include "WatchedPolls.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

/// What the first stages decide about a file, followed to the end of the job.
class Decisions : public ImporterFixture
{
protected:
    FileLinkImporterImp importer{nullptr};
};

TEST_F(Decisions, ASelectionOfWhichOnlyLinkedFilesAreCopiedAndAllIsRecordedCarriesBothMarks)
{
    tree.File(u"src/Proj/p.tlk"_s);
    ASSERT_TRUE(importer.Initialize({Source(u"Proj"_s)}, Cloud(), false,
                                    Global::LinkedFilesOnly | Global::RecordSelectedInDatabase,
                                    {}));
    const auto marks = FileMapping::Selected | FileMapping::NoCopy | FileMapping::IncludeInDatabase;
    EXPECT_EQ(Member(importer, u"src/Proj/p.tlk"_s)->GetFlag(), marks);
    EXPECT_EQ(Member(importer, u"src/Proj"_s)->GetFlag(), marks | FileMapping::Folder);
}

TEST_F(Decisions, AKeptTargetNameIsKeptByACollidingFileThatWasToBeRenamed)
{
    tree.File(u"src/a.tlk"_s).File(u"cloud/a.tlk"_s);
    ASSERT_TRUE(
        importer.Initialize({Source(u"a.tlk"_s)}, Cloud(), false, Global::RenameSelectedFiles, {}));
    const FileMappingPointer file = Member(importer, u"src/a.tlk"_s);
    file->SetFlag(FileMapping::KeepTargetName, true);
    ASSERT_TRUE(importer.MarkCollisions());
    ASSERT_TRUE(importer.ResolveCollisions());
    EXPECT_EQ(file->GetTargetFile(), Cloud(u"a.tlk"_s));
    EXPECT_EQ(file->GetFlag(), FileMapping::Selected | FileMapping::Collision |
                                   FileMapping::RenameOnCollision | FileMapping::KeepTargetName);
}

TEST_F(Decisions, OptionBitsThatHaveNoMeaningHereArePassedOnUntouched)
{
    const auto unknown = Global::CopyOption(0x80200008u);
    tree.File(u"src/a.tlk"_s);
    ASSERT_TRUE(importer.CopyToCloudCacheFolder({Source(u"a.tlk"_s)}, Cloud(), unknown, {}));
    EXPECT_EQ(importer.GetCopyOption(), unknown);
    EXPECT_EQ(Member(importer, u"src/a.tlk"_s)->GetFlag(),
              FileMapping::Selected | FileMapping::Copied | FileMapping::Repathed);
    importer.SetCopyOption(Global::MoveFiles, true);
    EXPECT_EQ(importer.GetCopyOption(), unknown | Global::MoveFiles);
    importer.SetCopyOption(unknown, false);
    EXPECT_EQ(importer.GetCopyOption(), Global::MoveFiles);
}

TEST_F(Decisions, AnImportWhoseCopyFailsIsAFailureThoughRepathingAndDatabaseSucceed)
{
    Assembly(u"src/a.tasm"_s, {u"1 lib/b.tlk"_s});
    tree.File(u"src/lib/b.tlk"_s).File(u"src/lib/z.tlk"_s);
    const auto controller = std::make_shared<WatchedPolls>();
    FileLinkImporterImp stopped(controller);
    const LogCapture log(log4cplus::INFO_LOG_LEVEL);
    controller->once = true;
    // The third file that is copied is held up, and nothing after it.
    controller->watch = [&, copies = 0](int poll) mutable {
        if (log.Lines().endsWith(u"INFO Begin copying files"_s) && ++copies == 3)
            controller->cancelAt = poll;
    };
    EXPECT_FALSE(stopped.CopyToCloudCacheFolder({Source(u"a.tasm"_s), Source(u"lib/z.tlk"_s)},
                                                Cloud(), {}, {}));
    EXPECT_EQ(controller->cancels, 1);
    EXPECT_TRUE(tree.Exists(u"cloud/a.tasm"_s));
    EXPECT_TRUE(tree.Exists(u"cloud/z.tlk"_s));
    EXPECT_FALSE(tree.Exists(u"cloud/lib/b.tlk"_s));
    EXPECT_TRUE(Member(stopped, u"src/a.tasm"_s)->HasFlag(FileMapping::Repathed));
    EXPECT_NE(Database().GetSyncItem(Cloud(u"a.tasm"_s), true, 7, SyncServices::FileItem::ItemOnly),
              nullptr);
    EXPECT_EQ(log.Lines().last(), u"INFO Finished updating sync database"_s);
}

TEST_F(Decisions, ALinkedFileWhoseEarlierCopyIsGoneFromItsPlaceIsSimplyCopied)
{
    tree.File(u"src/b.tlk"_s);
    const auto earlier = std::make_shared<FileMapping>(Source(u"b.tlk"_s), Cloud(u"b.tlk"_s), 7);
    earlier->SetSourceFileProperties(Time(), 1);
    earlier->SetTargetFileProperties(Time(), 1);
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({earlier}, {}));
    const auto mapping = std::make_shared<FileMapping>(Source(u"b.tlk"_s), Cloud(u"b.tlk"_s), 7);
    const LogCapture log;
    EXPECT_TRUE(importer.MarkCollisions(mapping));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::NoFlag);
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(Decisions, AnEntryOfTheHistoryWithoutATargetIsNoHelpWhetherTheSourceChangedOrNot)
{
    tree.File(u"src/b.tlk"_s).File(u"cloud/b.tlk"_s).Touch(u"src/b.tlk"_s, Time());
    for (const int change : {0, 1}) {
        const auto earlier = std::make_shared<FileMapping>(Source(u"b.tlk"_s), QString(), 7);
        earlier->SetSourceFileProperties(Time(change), 1);
        ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({earlier}, {}));
        const auto mapping =
            std::make_shared<FileMapping>(Source(u"b.tlk"_s), Cloud(u"b.tlk"_s), 7);
        FileLinkImporterImp fresh(nullptr);
        EXPECT_TRUE(fresh.MarkCollisions(mapping));
        EXPECT_EQ(mapping->GetFlag(), FileMapping::Collision);
        EXPECT_EQ(mapping->GetTargetFile(), Cloud(u"b.tlk"_s));
    }
}

TEST_F(Decisions, TheHistoryOfAnotherUserIsNoHelp)
{
    tree.File(u"src/b.tlk"_s).File(u"cloud/b.tlk"_s);
    const auto earlier = std::make_shared<FileMapping>(Source(u"b.tlk"_s), Cloud(u"b.tlk"_s), 8);
    earlier->UpdateSourceFileProperties();
    earlier->UpdateTargetFileProperties();
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({earlier}, {}));
    // The user of the moment counts, not the one of the mapping.
    const auto mapping = std::make_shared<FileMapping>(Source(u"b.tlk"_s), Cloud(u"b.tlk"_s), 8);
    EXPECT_TRUE(importer.MarkCollisions(mapping));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::Collision);
}

TEST_F(Decisions, APathThatHoldsAPlaceholderIsDecidedOnAndToldOfLikeAnyOther)
{
    const auto mapping = std::make_shared<FileMapping>(Source(u"50%2.tlk"_s), QString(), 7);
    tree.File(u"src/50%2.tlk"_s, "x").File(u"cloud/50%2.tlk"_s, "x");
    mapping->SetTargetFile(Cloud(u"50%2.tlk"_s), true);
    const auto earlier = std::make_shared<FileMapping>(Source(u"50%2.tlk"_s), Cloud(u"old"_s), 7);
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({earlier}, {}));
    const LogCapture log;
    EXPECT_TRUE(importer.MarkCollisions(mapping));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::Collision);
    EXPECT_EQ(mapping->GetSourceFile(), Source(u"50%2.tlk"_s));
    EXPECT_EQ(mapping->GetTargetFile(), Cloud(u"50%2.tlk"_s));
    const QStringList lines = log.Lines();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].startsWith(u"INFO File "_s));
    EXPECT_TRUE(lines[0].endsWith(u" has changed since then."_s));
}

/// A part that was imported with its assembly to F, and is imported with another one to G.
struct SecondImport
{
    std::string name;
    bool sourceChanged = false;
    bool copyEdited = false;
    bool copyGone = false;
    /// Something stands where the part would go without a history.
    bool placeTaken = false;
    QString copiedTo;
};

void PrintTo(const SecondImport& row, std::ostream* out)
{
    *out << row.name;
}

class SecondImports : public Decisions, public ::testing::WithParamInterface<SecondImport>
{};

TEST_P(SecondImports, BringALinkedFileWhereItsHistorySays)
{
    const SecondImport& row = GetParam();
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    Assembly(u"src/x.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s, "first").Touch(u"src/b.tlk"_s, Time());
    ASSERT_TRUE(Import({Source(u"a.tasm"_s)}, Cloud(u"F/a.tasm"_s)));
    if (row.sourceChanged)
        tree.File(u"src/b.tlk"_s, "second").Touch(u"src/b.tlk"_s, Time(60));
    if (row.copyEdited)
        tree.File(u"cloud/F/b.tlk"_s, "edited").Touch(u"cloud/F/b.tlk"_s, Time(90));
    if (row.copyGone)
        tree.Remove(u"cloud/F/b.tlk"_s);
    if (row.placeTaken)
        tree.File(u"cloud/G/b.tlk"_s, "other");

    FileTree::Snapshot expected = tree.Contents(u"cloud"_s);
    const QString copy = row.copiedTo.isEmpty() ? u"F/b.tlk"_s : row.copiedTo;
    expected[copy] = row.copiedTo.isEmpty() ? expected.value(copy) : tree.Read(u"src/b.tlk"_s);
    const QString link = copy.startsWith(u"G/"_s) ? copy.mid(2) : u"../"_s + copy;
    expected[u"G/x.tasm"_s] = "src/x.tasm\nlink 1 " + link.toUtf8() + '\n';
    ASSERT_TRUE(Import({Source(u"x.tasm"_s)}, Cloud(u"G/x.tasm"_s)));
    EXPECT_EQ(tree.Contents(u"cloud"_s), expected);
}

INSTANTIATE_TEST_SUITE_P(
    AllRelations, SecondImports,
    ::testing::Values(
        SecondImport{.name = "NothingChanged", .copiedTo = {}},
        SecondImport{.name = "NothingChangedPlaceTaken", .placeTaken = true, .copiedTo = {}},
        SecondImport{.name = "SourceChanged", .sourceChanged = true, .copiedTo = u"F/b (2).tlk"_s},
        SecondImport{.name = "CopyEdited", .copyEdited = true, .copiedTo = u"F/b (2).tlk"_s},
        SecondImport{.name = "BothChanged",
                     .sourceChanged = true,
                     .copyEdited = true,
                     .copiedTo = u"F/b (2).tlk"_s},
        SecondImport{.name = "BothChangedPlaceTaken",
                     .sourceChanged = true,
                     .copyEdited = true,
                     .placeTaken = true,
                     .copiedTo = u"F/b (2).tlk"_s},
        SecondImport{.name = "CopyGone", .copyGone = true, .copiedTo = u"G/b.tlk"_s},
        SecondImport{.name = "CopyGoneSourceChanged",
                     .sourceChanged = true,
                     .copyGone = true,
                     .copiedTo = u"G/b.tlk"_s},
        SecondImport{.name = "CopyGonePlaceTaken",
                     .copyGone = true,
                     .placeTaken = true,
                     .copiedTo = u"F/b.tlk"_s},
        SecondImport{.name = "CopyGoneSourceChangedPlaceTaken",
                     .sourceChanged = true,
                     .copyGone = true,
                     .placeTaken = true,
                     // A source that was read again is known with the place it gets now.
                     .copiedTo = u"G/b (2).tlk"_s}),
    [](const auto& row) { return row.param.name; });

} // namespace Halvern::Test
