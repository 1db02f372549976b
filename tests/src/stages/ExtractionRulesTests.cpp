// SPDX-License-Identifier: Apache-2.0

// Rules of the extraction that show only where several of its sources of links meet.

#include "ImporterFixture.h"

#include "importer/FileLinkExtractorImp.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;
using FileLink::FileCopyHistory;
using FileLink::FileLinkExtractorImp;
using FileLink::FileSet;
using Link = SyncServices::FileLink;

class ExtractionRules : public ImporterFixture
{
protected:
    FileMappingPointer Mapping(const QString& path, const QString& target = {}) const
    {
        return std::make_shared<FileMapping>(tree.Path(path), target, 7);
    }
    void Record(const QString& source, const QString& target, const QStringList& links,
                const QDateTime& extractedAt)
    {
        const FileMappingPointer earlier = Mapping(source, target);
        QList<Link> list;
        for (const QString& path : links)
            list.append({-1, u"old"_s, path, {}});
        earlier->SetSourceFileLinks(list);
        earlier->SetSourceFileLinksExtractedAtFileDate(extractedAt);
        earlier->SetFlag(FileMapping::Copied | FileMapping::Selected, true);
        ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({earlier}, {}));
    }

    FileCopyHistory history;
    FileLinkExtractorImp extractor{nullptr, &history};
    PluginCallLog calls;
};

TEST_F(ExtractionRules, LinksRestoredForAFileThatCannotBeReadAreFollowedAllTheSame)
{
    Record(u"src/gone.tasm"_s, {}, {u"b.tlk"_s}, Time());
    tree.File(u"src/b.tlk"_s);
    FileSet set;
    set.AddFile(Mapping(u"src/gone.tasm"_s));
    EXPECT_TRUE(extractor.ExtractFileLinks(&set, true, {}));
    ASSERT_EQ(set.GetCount(), 2);
    EXPECT_EQ(set.GetFiles()[1]->GetSourceFile(), Source(u"b.tlk"_s));
}

TEST_F(ExtractionRules, LinksThatAMemberHasAlreadyAreFollowedWhenItsFileCannotBeRead)
{
    const FileMappingPointer gone = Mapping(u"src/gone.tasm"_s);
    gone->SetSourceFileLinks({{-1, u"1"_s, u"b.tlk"_s, {}}});
    FileSet set;
    set.AddFile(gone);
    EXPECT_TRUE(extractor.ExtractFileLinks(&set, true, {}));
    EXPECT_EQ(set.GetCount(), 2);
}

TEST_F(ExtractionRules, ALinkedFileThatIsItsOwnTargetKeepsItWhereverItWasCopiedBefore)
{
    tree.File(u"src/b.tlk"_s).File(u"cloud/earlier.tlk"_s);
    Record(u"src/b.tlk"_s, Cloud(u"earlier.tlk"_s), {}, {});
    const FileMappingPointer inPlace = Mapping(u"src/b.tlk"_s, Source(u"b.tlk"_s));
    EXPECT_TRUE(extractor.ExtractFileLinks(inPlace, {}));
    EXPECT_EQ(inPlace->GetTargetFile(), Source(u"b.tlk"_s));
    const FileMappingPointer linked = Mapping(u"src/b.tlk"_s, Cloud(u"new.tlk"_s));
    FileCopyHistory fresh;
    EXPECT_TRUE(FileLinkExtractorImp(nullptr, &fresh).ExtractFileLinks(linked, {}));
    EXPECT_EQ(linked->GetTargetFile(), Cloud(u"earlier.tlk"_s));
}

TEST_F(ExtractionRules, NoFlagOfTheEarlierCopyComesBackAndNoneOfTheFileIsLost)
{
    Assembly(u"src/a.tasm"_s, {}).Touch(u"src/a.tasm"_s, Time());
    Record(u"src/a.tasm"_s, Cloud(u"a.tasm"_s), {}, Time());
    const FileMappingPointer mapping = Mapping(u"src/a.tasm"_s);
    const auto flags = FileMapping::RenameOnCollision | FileMapping::KeepTargetName;
    mapping->SetFlag(flags, true);
    EXPECT_TRUE(extractor.ExtractFileLinks(mapping, {}));
    EXPECT_EQ(mapping->GetFlag(), flags);
    EXPECT_EQ(calls.Calls(), QStringList());
}

TEST_F(ExtractionRules, ACloudFileWithoutAnItemIsReadAndNotRecordedInTheHistory)
{
    Assembly(u"cloud/a.tasm"_s, {u"1 b.tlk"_s});
    const FileMappingPointer mapping = Mapping(u"cloud/a.tasm"_s);
    // A date that the mapping has for itself does not count for a file in the cloud folder.
    mapping->SetSourceFileLinksExtractedAtFileDate(tree.Modified(u"cloud/a.tasm"_s));
    EXPECT_TRUE(extractor.ExtractFileLinks(mapping, {}));
    EXPECT_EQ(mapping->GetSourceFileLinks().size(), 1);
    EXPECT_EQ(calls.Calls().size(), 1);
    EXPECT_EQ(history.Find(Cloud(u"a.tasm"_s), 7), nullptr);
}

TEST_F(ExtractionRules, AFileOutsideTheCloudThatKnowsItsLinksAlreadyIsNotOpened)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    const FileMappingPointer mapping = Mapping(u"src/a.tasm"_s);
    mapping->SetSourceFileLinks({{-1, u"own"_s, u"c.tlk"_s, {}}});
    mapping->SetSourceFileLinksExtractedAtFileDate(tree.Modified(u"src/a.tasm"_s));
    EXPECT_TRUE(extractor.ExtractFileLinks(mapping, {}));
    ASSERT_EQ(mapping->GetSourceFileLinks().size(), 1);
    EXPECT_EQ(mapping->GetSourceFileLinks()[0].RefId, u"own"_s);
    EXPECT_EQ(calls.Calls(), QStringList());
}

TEST_F(ExtractionRules, WithoutRecursionOnlyMembersPresentAtTheStartAreOpenedHoweverTheyAreLinked)
{
    Assembly(u"src/a.tasm"_s, {u"1 sub.tasm"_s, u"2 member.tasm"_s});
    Assembly(u"src/sub.tasm"_s, {u"1 deep.tlk"_s});
    Assembly(u"src/member.tasm"_s, {u"1 part.tlk"_s});
    FileSet set;
    set.AddFile(Mapping(u"src/a.tasm"_s));
    set.AddFile(Mapping(u"src/member.tasm"_s));
    EXPECT_TRUE(extractor.ExtractFileLinks(&set, false, {}));
    QStringList names;
    for (const FileMappingPointer& file : set.GetFiles())
        names.append(Short(file->GetSourceFile()));
    EXPECT_EQ(names, (QStringList{u"src/a.tasm"_s, u"src/member.tasm"_s, u"src/sub.tasm"_s,
                                  u"src/part.tlk"_s}));
    EXPECT_EQ(calls.Calls().size(), 2);
}

TEST_F(ExtractionRules, AMemberWhosePathDiffersInCaseIsNotLookedAtEvenWhenItsFileIsAnotherOne)
{
    // Of another time, so that what the history knows of the first says nothing about the second.
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s}).Touch(u"src/a.tasm"_s, Time());
    Assembly(u"src/A.TASM"_s, {u"1 c.tlk"_s}).Touch(u"src/A.TASM"_s, Time(60));
    FileSet set;
    set.AddFile(Mapping(u"src/a.tasm"_s));
    const FileMappingPointer second = Mapping(u"src/A.TASM"_s);
    set.AddFile(second);
    EXPECT_TRUE(extractor.ExtractFileLinks(&set, false, {}));
    EXPECT_EQ(calls.Calls(), QStringList{u"GetFileLinks "_s + Source(u"a.tasm"_s)});
    EXPECT_TRUE(second->GetSourceFileLinks().isEmpty());
}

TEST_F(ExtractionRules, AWebAddressWhoseFileNameStandsBesideTheHolderBecomesThatFile)
{
    Assembly(u"src/a.tasm"_s, {u"1 http://host/b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    const FileMappingPointer mapping = Mapping(u"src/a.tasm"_s);
    EXPECT_TRUE(extractor.ExtractFileLinks(mapping, {}));
    ASSERT_EQ(mapping->GetSourceFileLinks().size(), 1);
    EXPECT_EQ(mapping->GetSourceFileLinks()[0].Path, u"b.tlk"_s);
}

} // namespace Halvern::Test
