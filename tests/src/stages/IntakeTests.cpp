// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

class Intake : public ImporterFixture
{
protected:
    bool Initialize(const QStringList& sources, const QString& target, bool targetIsFile = false)
    {
        return importer.Initialize(sources, target, targetIsFile, {}, {});
    }

    FileLinkImporterImp importer{nullptr};
};

TEST_F(Intake, AFileGoesUnderItsNameIntoTheTargetFolder)
{
    tree.File(u"src/b.prt"_s).Folder(u"cloud/F"_s);
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s)}, Cloud(u"F"_s)));
    EXPECT_EQ(Targets(importer), QStringList{u"src/b.prt -> cloud/F/b.prt"_s});
    const FileMappingPointer mapping = Member(importer, u"src/b.prt"_s);
    EXPECT_EQ(mapping->GetFlag(), FileMapping::Selected);
    EXPECT_EQ(mapping->GetAuthenticationId(), 7);
    EXPECT_EQ(mapping->GetFileSet(), importer.GetFileSet().get());
}

TEST_F(Intake, ATargetThatDoesNotExistIsAFolderUnlessTheCallerSaysFile)
{
    tree.File(u"src/b.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s)}, Cloud(u"F/x.prt"_s), false));
    EXPECT_EQ(Targets(importer), QStringList{u"src/b.prt -> cloud/F/x.prt/b.prt"_s});
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s)}, Cloud(u"F/x.prt"_s), true));
    EXPECT_EQ(Targets(importer), QStringList{u"src/b.prt -> cloud/F/x.prt"_s});
}

TEST_F(Intake, AnExistingTargetDecidesItselfWhetherItIsAFile)
{
    tree.File(u"src/b.prt"_s).File(u"cloud/x.prt"_s).Folder(u"cloud/F"_s);
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s)}, Cloud(u"x.prt"_s), false));
    EXPECT_EQ(Targets(importer), QStringList{u"src/b.prt -> cloud/x.prt"_s});
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s)}, Cloud(u"F"_s), true));
    EXPECT_EQ(Targets(importer), QStringList{u"src/b.prt -> cloud/F/b.prt"_s});
}

TEST_F(Intake, SeveralSourcesGoIntoAFolderEvenWhenTheCallerSaysFile)
{
    tree.File(u"src/a.prt"_s).File(u"src/b.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s), Source(u"a.prt"_s)}, Cloud(u"F"_s), true));
    EXPECT_EQ(Targets(importer),
              (QStringList{u"src/b.prt -> cloud/F/b.prt"_s, u"src/a.prt -> cloud/F/a.prt"_s}));
}

TEST_F(Intake, ALoneEmptyFolderGoesExactlyToATargetNamedAsFile)
{
    tree.Folder(u"src/Proj"_s);
    ASSERT_TRUE(Initialize({Source(u"Proj"_s)}, Cloud(u"New"_s), true));
    EXPECT_EQ(Targets(importer), QStringList{u"src/Proj -> cloud/New"_s});
}

TEST_F(Intake, AFolderWithContentGoesBelowATargetNamedAsFile)
{
    tree.File(u"src/Proj/p.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"Proj"_s)}, Cloud(u"New"_s), true));
    EXPECT_EQ(Targets(importer), (QStringList{u"src/Proj -> cloud/New/Proj"_s,
                                              u"src/Proj/p.prt -> cloud/New/Proj/p.prt"_s}));
}

TEST_F(Intake, AFolderBringsEverythingInsideIt)
{
    tree.File(u"src/Proj/sub/p.prt"_s).File(u"src/Proj/top.prt"_s).Folder(u"src/Proj/zempty"_s);
    ASSERT_TRUE(Initialize({Source(u"Proj"_s)}, Cloud(u"F"_s)));
    QStringList targets = Targets(importer);
    // Files stand before subfolders, and each subfolder is followed by its contents.
    EXPECT_EQ(targets.mid(0, 2), (QStringList{u"src/Proj -> cloud/F/Proj"_s,
                                              u"src/Proj/top.prt -> cloud/F/Proj/top.prt"_s}));
    const qsizetype sub = targets.indexOf(u"src/Proj/sub -> cloud/F/Proj/sub"_s);
    ASSERT_GE(sub, 0);
    EXPECT_EQ(targets.value(sub + 1), u"src/Proj/sub/p.prt -> cloud/F/Proj/sub/p.prt"_s);
    EXPECT_TRUE(targets.contains(u"src/Proj/zempty -> cloud/F/Proj/zempty"_s));
    EXPECT_EQ(targets.size(), 5);
}

TEST_F(Intake, HiddenFilesAndFoldersAreIncluded)
{
    tree.File(u"src/Proj/.hidden"_s).File(u"src/Proj/.folder/p.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"Proj"_s)}, Cloud()));
    const QStringList targets = Targets(importer);
    EXPECT_TRUE(targets.contains(u"src/Proj/.hidden -> cloud/Proj/.hidden"_s));
    EXPECT_TRUE(targets.contains(u"src/Proj/.folder/p.prt -> cloud/Proj/.folder/p.prt"_s));
}

TEST_F(Intake, ARelativeTargetLiesBelowTheCloudCacheFolder)
{
    tree.File(u"src/b.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s)}, u"X/../Y"_s));
    EXPECT_EQ(Targets(importer), QStringList{u"src/b.prt -> cloud/Y/b.prt"_s});
}

TEST_F(Intake, AnEmptyTargetIsTheCloudCacheFolderWhateverTheCallerSays)
{
    tree.File(u"src/b.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s)}, QString(), true));
    EXPECT_EQ(Targets(importer), QStringList{u"src/b.prt -> cloud/b.prt"_s});
}

TEST_F(Intake, AnEmptyTargetIsAFolderEvenWhenTheCloudCacheFolderIsGone)
{
    tree.File(u"src/b.prt"_s).Remove(u"cloud"_s);
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s)}, QString(), true));
    EXPECT_EQ(Targets(importer), QStringList{u"src/b.prt -> cloud/b.prt"_s});
}

TEST_F(Intake, ATargetOutsideTheCloudCacheFolderIsTakenAsItIs)
{
    tree.File(u"src/b.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s)}, tree.Path(u"elsewhere"_s)));
    EXPECT_EQ(Targets(importer), QStringList{u"src/b.prt -> elsewhere/b.prt"_s});
}

TEST_F(Intake, SourcesAndTargetsInTheCloudCacheFolderAreStoredCleaned)
{
    tree.File(u"src/b.prt"_s);
    ASSERT_TRUE(Initialize({Source() + u"/./x/../b.prt"_s}, Cloud() + u"/./F/../x.prt"_s, true));
    EXPECT_EQ(Targets(importer), QStringList{u"src/b.prt -> cloud/x.prt"_s});
}

TEST_F(Intake, NoSourcesAndAFileAsTargetMakeThatFileBothInOne)
{
    tree.File(u"cloud/F/x.prt"_s);
    ASSERT_TRUE(Initialize({}, Cloud(u"F/x.prt"_s)));
    EXPECT_EQ(Targets(importer), QStringList{u"cloud/F/x.prt -> cloud/F/x.prt"_s});
    EXPECT_EQ(Member(importer, u"cloud/F/x.prt"_s)->GetFlag(), FileMapping::Selected);
    ASSERT_TRUE(importer.MarkCollisions());
    EXPECT_TRUE(Member(importer, u"cloud/F/x.prt"_s)->HasFlag(FileMapping::SameSourceAndTarget));
}

TEST_F(Intake, NoSourcesNeedAFileAsTarget)
{
    EXPECT_FALSE(Initialize({}, QString()));
    EXPECT_FALSE(Initialize({}, Cloud()));
    EXPECT_FALSE(Initialize({}, Cloud(u"missing.prt"_s), true));
    EXPECT_EQ(importer.GetFileSet(), nullptr);
}

TEST_F(Intake, SeveralSourcesCannotGoToAnExistingFile)
{
    tree.File(u"src/a.prt"_s).File(u"src/b.prt"_s).File(u"cloud/x.prt"_s);
    EXPECT_FALSE(Initialize({Source(u"a.prt"_s), Source(u"b.prt"_s)}, Cloud(u"x.prt"_s)));
    // The sources are counted as given, before any is passed over.
    EXPECT_FALSE(Initialize({Source(u"a.prt"_s), Source(u"missing"_s)}, Cloud(u"x.prt"_s)));
}

TEST_F(Intake, WithoutACloudCacheFolderThereIsNoImport)
{
    settings.cloudCacheFolder.clear();
    Restart();
    tree.File(u"src/b.prt"_s);
    EXPECT_FALSE(Initialize({Source(u"b.prt"_s)}, tree.Path(u"elsewhere"_s)));
    EXPECT_EQ(importer.GetFileSet(), nullptr);
}

TEST_F(Intake, SourcesThatCannotBeImportedArePassedOver)
{
    tree.File(u"src/b.prt"_s).File(u"cloud/c.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"missing.prt"_s), Cloud(u"c.prt"_s), Cloud(), QDir::rootPath(),
                            QString(), Source(u"b.prt"_s)},
                           Cloud(u"F"_s)));
    EXPECT_EQ(Targets(importer), QStringList{u"src/b.prt -> cloud/F/b.prt"_s});
}

TEST_F(Intake, WhenEverySourceIsPassedOverTheSetIsEmptyAndTheStageSucceeds)
{
    ASSERT_TRUE(Initialize({QDir::rootPath()}, Cloud()));
    ASSERT_NE(importer.GetFileSet(), nullptr);
    EXPECT_TRUE(importer.GetFileSet()->IsEmpty());
}

TEST_F(Intake, WhenOthersArePassedOverTheOneThatIsLeftGoesToTheExactTarget)
{
    tree.File(u"src/b.prt"_s);
    ASSERT_TRUE(
        Initialize({Source(u"missing.prt"_s), Source(u"b.prt"_s)}, Cloud(u"x.prt"_s), true));
    EXPECT_EQ(Targets(importer), QStringList{u"src/b.prt -> cloud/x.prt"_s});
}

TEST_F(Intake, AFileSelectedTwiceHasTwoMappings)
{
    tree.File(u"src/b.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s), Source(u"b.prt"_s)}, Cloud()));
    EXPECT_EQ(Members(importer), (QStringList{u"src/b.prt"_s, u"src/b.prt"_s}));
}

TEST_F(Intake, AFileSelectedAndFoundInASelectedFolderHasTwoMappings)
{
    tree.File(u"src/Proj/p.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"Proj/p.prt"_s), Source(u"Proj"_s)}, Cloud()));
    EXPECT_EQ(Targets(importer),
              (QStringList{u"src/Proj/p.prt -> cloud/p.prt"_s, u"src/Proj -> cloud/Proj"_s,
                           u"src/Proj/p.prt -> cloud/Proj/p.prt"_s}));
}

TEST_F(Intake, AFailureKeepsTheEarlierSetButNotTheEarlierOptions)
{
    tree.File(u"src/b.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s)}, Cloud()));
    const auto set = importer.GetFileSet();
    EXPECT_FALSE(importer.Initialize({}, QString(), false, Global::MoveFiles, {}));
    EXPECT_EQ(importer.GetFileSet(), set);
    EXPECT_EQ(importer.GetCopyOption(), Global::MoveFiles);
}

TEST_F(Intake, EachSuccessReplacesTheSet)
{
    tree.File(u"src/b.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s)}, Cloud()));
    const auto set = importer.GetFileSet();
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s)}, Cloud()));
    EXPECT_NE(importer.GetFileSet(), set);
    EXPECT_EQ(set->GetCount(), 1);
}

TEST_F(Intake, NothingIsLogged)
{
    tree.File(u"src/Proj/b.prt"_s);
    const LogCapture log;
    ASSERT_TRUE(Initialize({Source(u"Proj"_s), Source(u"missing"_s)}, Cloud()));
    EXPECT_FALSE(Initialize({}, QString()));
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(Intake, NothingIsWrittenToDisk)
{
    tree.File(u"src/Proj/b.prt"_s);
    const FileTree::Snapshot before = tree.Contents(u"cloud"_s);
    ASSERT_TRUE(Initialize({Source(u"Proj"_s)}, Cloud(u"New"_s)));
    EXPECT_EQ(tree.Contents(u"cloud"_s), before);
}

} // namespace Halvern::Test
