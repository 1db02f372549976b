// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

class CollisionMarking : public ImporterFixture
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
    bool Mark(const FileMappingPointer& mapping) { return importer.MarkCollisions(mapping); }

    FileLinkImporterImp importer{nullptr};
};

TEST_F(CollisionMarking, NoMappingIsAFailure)
{
    EXPECT_FALSE(importer.MarkCollisions(FileMappingPointer()));
}

TEST_F(CollisionMarking, APathThatIsNoLocalFileIsLeftAsItIs)
{
    const auto mapping = std::make_shared<FileMapping>(u"http:/host/x.tlk"_s, QString(), 7);
    mapping->SetFlag(FileMapping::Collision | FileMapping::Unchanged, true);
    EXPECT_TRUE(Mark(mapping));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::Collision | FileMapping::Unchanged);
}

TEST_F(CollisionMarking, AMappingWithoutTargetIsAFailureAndLeftAsItIs)
{
    tree.File(u"src/a.tlk"_s);
    const FileMappingPointer mapping = Make(u"src/a.tlk"_s, {}, FileMapping::Collision);
    EXPECT_FALSE(Mark(mapping));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::Collision);
}

TEST_F(CollisionMarking, AFileThatIsItsOwnTargetIsMarkedSo)
{
    tree.File(u"cloud/a.tlk"_s);
    const FileMappingPointer mapping = Make(u"cloud/a.tlk"_s, u"cloud/a.tlk"_s);
    EXPECT_TRUE(Mark(mapping));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::SameSourceAndTarget);
    // Asked before the disk: also for a file that is gone.
    const FileMappingPointer gone = Make(u"cloud/gone.tlk"_s, u"cloud/gone.tlk"_s);
    EXPECT_TRUE(Mark(gone));
    EXPECT_EQ(gone->GetFlag(), FileMapping::SameSourceAndTarget);
}

TEST_F(CollisionMarking, AMissingSourceNeverCollides)
{
    tree.File(u"cloud/a.tlk"_s);
    for (const auto flags : {FileMapping::NoFlag, FileMapping::Selected}) {
        const FileMappingPointer mapping = Make(u"src/gone.tlk"_s, u"cloud/a.tlk"_s, flags);
        EXPECT_TRUE(Mark(mapping));
        EXPECT_EQ(mapping->GetFlag(), flags | FileMapping::SourceMissing);
    }
}

TEST_F(CollisionMarking, AFreeTargetIsNoCollisionAndEarlierMarksGo)
{
    tree.File(u"src/a.tlk"_s);
    const FileMappingPointer mapping =
        Make(u"src/a.tlk"_s, u"cloud/a.tlk"_s,
             FileMapping::Selected | FileMapping::Collision | FileMapping::Unchanged);
    EXPECT_TRUE(Mark(mapping));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::Selected);
}

TEST_F(CollisionMarking, ASelectedFileOrAnyFolderWhoseTargetExistsCollides)
{
    tree.File(u"src/a.tlk"_s).File(u"cloud/a.tlk"_s).Folder(u"src/F"_s).Folder(u"cloud/F"_s);
    const FileMappingPointer file =
        Make(u"src/a.tlk"_s, u"cloud/a.tlk"_s, FileMapping::Selected | FileMapping::Unchanged);
    EXPECT_TRUE(Mark(file));
    EXPECT_EQ(file->GetFlag(), FileMapping::Selected | FileMapping::Collision);
    const FileMappingPointer folder = Make(u"src/F"_s, u"cloud/F"_s, FileMapping::Folder);
    EXPECT_TRUE(Mark(folder));
    EXPECT_EQ(folder->GetFlag(), FileMapping::Folder | FileMapping::Collision);
}

TEST_F(CollisionMarking, ASelectedFileCollidesEvenWhenTheHistorySaysItIsUnchanged)
{
    tree.File(u"src/a.tlk"_s).File(u"cloud/a.tlk"_s);
    const FileMappingPointer earlier = Make(u"src/a.tlk"_s, u"cloud/a.tlk"_s);
    earlier->UpdateSourceFileProperties();
    earlier->UpdateTargetFileProperties();
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({earlier}, {}));
    const LogCapture log;
    const FileMappingPointer mapping =
        Make(u"src/a.tlk"_s, u"cloud/a.tlk"_s, FileMapping::Selected);
    EXPECT_TRUE(Mark(mapping));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::Selected | FileMapping::Collision);
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(CollisionMarking, ALinkedFileThatWasNeverCopiedCollides)
{
    tree.File(u"src/a.tlk"_s).File(u"cloud/a.tlk"_s);
    const LogCapture log;
    const FileMappingPointer mapping = Make(u"src/a.tlk"_s, u"cloud/a.tlk"_s);
    EXPECT_TRUE(Mark(mapping));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::Collision);
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(CollisionMarking, ALinkedFileWhoseHistoryHasNoTargetCollides)
{
    tree.File(u"src/a.tlk"_s).File(u"cloud/a.tlk"_s);
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({Make(u"src/a.tlk"_s, {})}, {}));
    const LogCapture log;
    const FileMappingPointer mapping = Make(u"src/a.tlk"_s, u"cloud/a.tlk"_s);
    EXPECT_TRUE(Mark(mapping));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::Collision);
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(CollisionMarking, TheStageMarksEveryMemberAndFailsWhenOneHasNoTarget)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s).File(u"src/c.tlk"_s).File(u"cloud/c.tlk"_s);
    ASSERT_TRUE(
        importer.Initialize({Source(u"a.tasm"_s), Source(u"c.tlk"_s)}, Cloud(), false, {}, {}));
    ASSERT_TRUE(importer.ExtractFileLinks());
    const LogCapture log;
    // b.tlk has no target yet, and stands last.
    EXPECT_FALSE(importer.MarkCollisions());
    EXPECT_TRUE(Member(importer, u"src/c.tlk"_s)->HasFlag(FileMapping::Collision));
    EXPECT_EQ(log.Lines(), (QStringList{u"INFO Begin marking file conflicts"_s,
                                        u"INFO Finished marking file conflicts"_s}));
    ASSERT_TRUE(importer.AssignTargetPaths());
    EXPECT_TRUE(importer.MarkCollisions());
}

TEST_F(CollisionMarking, AFailureDoesNotStopTheStage)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s).File(u"src/c.tlk"_s).File(u"cloud/c.tlk"_s);
    ASSERT_TRUE(
        importer.Initialize({Source(u"a.tasm"_s), Source(u"c.tlk"_s)}, Cloud(), false, {}, {}));
    Member(importer, u"src/a.tasm"_s)->SetTargetFile(QString(), true);
    EXPECT_FALSE(importer.MarkCollisions());
    EXPECT_TRUE(Member(importer, u"src/c.tlk"_s)->HasFlag(FileMapping::Collision));
}

/// A linked file with an entry in the history, in every relation to what the disk holds now.
struct HistoryCase
{
    std::string name;
    bool sourceChanged = false;
    bool targetChanged = false;
    /// The earlier copy stands elsewhere than where the file would go now.
    bool elsewhere = false;
    bool targetMissing = false;
    bool targetTimeMissing = false;
};

void PrintTo(const HistoryCase& row, std::ostream* out)
{
    *out << row.name;
}

class CollisionHistory : public CollisionMarking, public ::testing::WithParamInterface<HistoryCase>
{
protected:
    static constexpr int recordedSource = 0;
    static constexpr int recordedTarget = 100;

    /// The target of the earlier copy.
    QString Earlier() const { return GetParam().elsewhere ? u"cloud/old.tlk"_s : u"cloud/a.tlk"_s; }

    void Prepare()
    {
        const HistoryCase& row = GetParam();
        tree.File(u"src/a.tlk"_s).File(u"cloud/a.tlk"_s).File(Earlier());
        tree.Touch(u"src/a.tlk"_s, Time(recordedSource + (row.sourceChanged ? 1 : 0)));
        tree.Touch(Earlier(), Time(recordedTarget + (row.targetChanged ? 1 : 0)));
        const FileMappingPointer entry = Make(u"src/a.tlk"_s, Earlier());
        entry->SetSourceFileProperties(Time(recordedSource), 1);
        if (!row.targetTimeMissing)
            entry->SetTargetFileProperties(Time(recordedTarget), 1);
        ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({entry}, {}));
        if (row.targetMissing)
            tree.Remove(Earlier());
    }
};

TEST_P(CollisionHistory, DecidesWhetherTheFileCollidesAndWhere)
{
    Prepare();
    const HistoryCase& row = GetParam();
    const bool targetChanged = row.targetChanged || row.targetMissing || row.targetTimeMissing;
    const bool changed = targetChanged || row.sourceChanged;
    const FileMappingPointer mapping = Make(u"src/a.tlk"_s, u"cloud/a.tlk"_s,
                                            FileMapping::Unchanged | FileMapping::KeepTargetName);
    const LogCapture log;
    EXPECT_TRUE(Mark(mapping));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::KeepTargetName |
                                      (changed ? FileMapping::Collision : FileMapping::Unchanged));
    // A source that changed alone leaves the target where the layout put it.
    const QString expected = targetChanged || !changed ? Earlier() : u"cloud/a.tlk"_s;
    EXPECT_EQ(Short(mapping->GetTargetFile()), expected);
    const QString line =
        changed
            ? u"INFO File %1 was copied last time as %2. Source or target file has changed since then."_s
            : u"INFO File %1 was copied last time as %2. Source and target files have not changed since then."_s;
    EXPECT_EQ(log.Lines(), QStringList{line.arg(Source(u"a.tlk"_s)).arg(tree.Path(Earlier()))});
}

INSTANTIATE_TEST_SUITE_P(
    AllRelations, CollisionHistory,
    ::testing::Values(
        HistoryCase{"NothingChanged"}, HistoryCase{.name = "SourceChanged", .sourceChanged = true},
        HistoryCase{.name = "TargetChanged", .targetChanged = true},
        HistoryCase{.name = "BothChanged", .sourceChanged = true, .targetChanged = true},
        HistoryCase{.name = "NothingChangedElsewhere", .elsewhere = true},
        HistoryCase{.name = "SourceChangedElsewhere", .sourceChanged = true, .elsewhere = true},
        HistoryCase{.name = "TargetChangedElsewhere", .targetChanged = true, .elsewhere = true},
        HistoryCase{.name = "BothChangedElsewhere",
                    .sourceChanged = true,
                    .targetChanged = true,
                    .elsewhere = true},
        HistoryCase{.name = "EarlierCopyGone", .elsewhere = true, .targetMissing = true},
        HistoryCase{.name = "EarlierCopyGoneWithoutTime",
                    .elsewhere = true,
                    .targetMissing = true,
                    .targetTimeMissing = true},
        HistoryCase{.name = "EarlierCopyGoneAndSourceChanged",
                    .sourceChanged = true,
                    .elsewhere = true,
                    .targetMissing = true},
        HistoryCase{.name = "NoTimeRecorded", .targetTimeMissing = true},
        HistoryCase{
            .name = "NoTimeRecordedElsewhere", .elsewhere = true, .targetTimeMissing = true},
        HistoryCase{.name = "NoTimeRecordedAndSourceChanged",
                    .sourceChanged = true,
                    .elsewhere = true,
                    .targetTimeMissing = true}),
    [](const auto& row) { return row.param.name; });

TEST_F(CollisionMarking, PartsOfASecondDoNotCount)
{
    tree.File(u"src/a.tlk"_s).File(u"cloud/a.tlk"_s);
    tree.Touch(u"src/a.tlk"_s, Time().addMSecs(900)).Touch(u"cloud/a.tlk"_s, Time().addMSecs(900));
    const FileMappingPointer entry = Make(u"src/a.tlk"_s, u"cloud/a.tlk"_s);
    entry->SetSourceFileProperties(Time().addMSecs(100), 1);
    entry->SetTargetFileProperties(Time(), 1);
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({entry}, {}));
    const FileMappingPointer mapping = Make(u"src/a.tlk"_s, u"cloud/a.tlk"_s);
    EXPECT_TRUE(Mark(mapping));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::Unchanged);
}

TEST_F(CollisionMarking, AFileAtTheStartOfTimeIsNotUnchangedWhenNoTimeIsRecorded)
{
    const QDateTime start = QDateTime::fromSecsSinceEpoch(0);
    tree.File(u"src/a.tlk"_s).File(u"cloud/a.tlk"_s);
    tree.Touch(u"src/a.tlk"_s, start).Touch(u"cloud/a.tlk"_s, start);
    ASSERT_TRUE(
        Database().AddAndUpdateFileCopyHistory({Make(u"src/a.tlk"_s, u"cloud/a.tlk"_s)}, {}));
    const FileMappingPointer mapping = Make(u"src/a.tlk"_s, u"cloud/a.tlk"_s);
    EXPECT_TRUE(Mark(mapping));
    EXPECT_EQ(mapping->GetFlag(), FileMapping::Collision);
}

TEST_F(CollisionMarking, ANewLinkedFileAtTheStartOfTimeIsCopiedOverNothing)
{
    // Unpacked archives often carry no times at all.
    const QDateTime start = QDateTime::fromSecsSinceEpoch(0);
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s, "new").Touch(u"src/b.tlk"_s, start);
    tree.File(u"cloud/b.tlk"_s, "somebody else's").Touch(u"cloud/b.tlk"_s, start);
    ASSERT_TRUE(Import({Source(u"a.tasm"_s)}));
    EXPECT_EQ(tree.Read(u"cloud/b.tlk"_s), "somebody else's");
    EXPECT_EQ(tree.Read(u"cloud/b (2).tlk"_s), "new");
    EXPECT_EQ(tree.Read(u"cloud/a.tasm"_s), "src/a.tasm\nlink 1 b (2).tlk\n");
}

TEST_F(CollisionMarking, AnUnchangedLinkedFileIsNotCopiedAgainAndIsLinkedWhereItStands)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s, "new");
    ASSERT_TRUE(Import({Source(u"a.tasm"_s)}, Cloud(u"F/a.tasm"_s)));
    const LogCapture log;
    ASSERT_TRUE(Import({Source(u"a.tasm"_s)}, Cloud(u"G/a.tasm"_s)));
    EXPECT_TRUE(log.Has(u"INFO File %1 was copied last time as %2. Source and target files have "
                        "not changed since then."_s.arg(Source(u"b.tlk"_s))
                            .arg(Cloud(u"F/b.tlk"_s))));
    EXPECT_EQ(tree.Contents(u"cloud"_s),
              (FileTree::Snapshot{{u"F/a.tasm"_s, "src/a.tasm\nlink 1 b.tlk\n"},
                                  {u"F/b.tlk"_s, "new"},
                                  {u"G/a.tasm"_s, "src/a.tasm\nlink 1 ../F/b.tlk\n"}}));
}

TEST_F(CollisionMarking, ALinkedFileWhoseCopyWasEditedIsCopiedBesideIt)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s, "new");
    ASSERT_TRUE(Import({Source(u"a.tasm"_s)}, Cloud(u"F/a.tasm"_s)));
    tree.File(u"cloud/F/b.tlk"_s, "edited").Touch(u"cloud/F/b.tlk"_s, Time());
    const LogCapture log;
    ASSERT_TRUE(Import({Source(u"a.tasm"_s)}, Cloud(u"G/a.tasm"_s)));
    EXPECT_TRUE(log.Has(u"INFO File %1 was copied last time as %2. Source or target file has "
                        "changed since then."_s.arg(Source(u"b.tlk"_s))
                            .arg(Cloud(u"F/b.tlk"_s))));
    EXPECT_EQ(tree.Contents(u"cloud"_s),
              (FileTree::Snapshot{{u"F/a.tasm"_s, "src/a.tasm\nlink 1 b.tlk\n"},
                                  {u"F/b.tlk"_s, "edited"},
                                  {u"F/b (2).tlk"_s, "new"},
                                  {u"G/a.tasm"_s, "src/a.tasm\nlink 1 ../F/b (2).tlk\n"}}));
}

} // namespace Halvern::Test
