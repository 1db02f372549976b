// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"

#include "filelink/FileLinkImporter.h"

#include <QtTest/QSignalSpy>

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;
using FileLink::FileLinkImporter;

class Front : public ImporterFixture
{
protected:
    static QList<QStringList> Arguments(const QSignalSpy& spy)
    {
        QList<QStringList> calls;
        for (const QList<QVariant>& call : spy) {
            QStringList arguments;
            for (const QVariant& argument : call)
                arguments.append(argument.toString());
            calls.append(arguments);
        }
        return calls;
    }
};

TEST_F(Front, ThereIsNoFileSetBeforeTheFirstInitialize)
{
    FileLinkImporter importer;
    EXPECT_EQ(importer.GetFileSet(), nullptr);
    EXPECT_EQ(importer.GetCopyOption(), Global::NoCopyOption);
}

TEST_F(Front, StagesWithoutAFileSetEitherHaveNothingToDoOrFail)
{
    FileLinkImporter importer;
    EXPECT_TRUE(importer.ExtractFileLinks());
    EXPECT_FALSE(importer.AssignTargetPaths());
    EXPECT_TRUE(importer.MarkCollisions());
    EXPECT_TRUE(importer.ResolveCollisions());
    EXPECT_FALSE(importer.CopyFiles());
    EXPECT_FALSE(importer.RepathTargetFiles());
    EXPECT_FALSE(importer.UpdateSyncDatabase());
    EXPECT_EQ(importer.GetFileSet(), nullptr);
}

TEST_F(Front, ValidatingTargetLinksIsTrueWhateverTheState)
{
    FileLinkImporter importer;
    EXPECT_TRUE(importer.ValidateTargetFileLinks());
    tree.File(u"src/a.tlk"_s);
    ASSERT_TRUE(importer.Initialize({Source(u"a.tlk"_s)}, Cloud(), false, {}, {}));
    EXPECT_TRUE(importer.ValidateTargetFileLinks());
    EXPECT_FALSE(tree.Exists(u"cloud/a.tlk"_s));
}

TEST_F(Front, OptionBitsAreAddedAndRemovedAlone)
{
    FileLinkImporter importer;
    importer.SetCopyOption(Global::MoveFiles, true);
    importer.SetCopyOption(Global::KeepExistingLinkedFiles, true);
    EXPECT_EQ(importer.GetCopyOption(), Global::MoveFiles | Global::KeepExistingLinkedFiles);
    importer.SetCopyOption(Global::KeepExistingLinkedFiles, false);
    EXPECT_EQ(importer.GetCopyOption(), Global::MoveFiles);
    importer.SetCopyOption(Global::NoCopyOption, true);
    importer.SetCopyOption(Global::NoCopyOption, false);
    EXPECT_EQ(importer.GetCopyOption(), Global::MoveFiles);
}

TEST_F(Front, InitializeReplacesTheOptionsWithItsArgument)
{
    FileLinkImporter importer;
    importer.SetCopyOption(Global::RenameLinkedFiles, true);
    tree.File(u"src/a.tlk"_s);
    ASSERT_TRUE(
        importer.Initialize({Source(u"a.tlk"_s)}, Cloud(), false, Global::DirectLinksOnly, {}));
    EXPECT_EQ(importer.GetCopyOption(), Global::DirectLinksOnly);
}

TEST_F(Front, OptionsSetAfterInitializeGovernTheStagesThatFollow)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tasm"_s});
    Assembly(u"src/b.tasm"_s, {u"1 c.tlk"_s});
    tree.File(u"src/c.tlk"_s);
    FileLinkImporter importer;
    ASSERT_TRUE(importer.Initialize({Source(u"a.tasm"_s)}, Cloud(), false, {}, {}));
    importer.SetCopyOption(Global::DirectLinksOnly, true);
    ASSERT_TRUE(importer.ExtractFileLinks());
    EXPECT_EQ(importer.GetFileSet()->GetCount(), 2);
}

TEST_F(Front, AReceiverSeesEachCopyEachNewFolderAndEachRewrittenFileOnce)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    FileLinkImporter importer;
    QSignalSpy copied(&importer, &FileLinkImporter::FileCopied);
    QSignalSpy moved(&importer, &FileLinkImporter::FileMoved);
    QSignalSpy created(&importer, &FileLinkImporter::FolderCreated);
    QSignalSpy modified(&importer, &FileLinkImporter::FileModified);
    tree.Folder(u"src/F"_s);
    ASSERT_TRUE(importer.CopyToCloudCacheFolder({Source(u"a.tasm"_s), Source(u"F"_s)},
                                                Cloud(u"P"_s), false, {}, {}));
    EXPECT_EQ(Arguments(copied), (QList<QStringList>{{Source(u"a.tasm"_s), Cloud(u"P/a.tasm"_s)},
                                                     {Source(u"b.tlk"_s), Cloud(u"P/b.tlk"_s)}}));
    EXPECT_EQ(moved.size(), 0);
    EXPECT_EQ(Arguments(created), (QList<QStringList>{{Cloud(u"P"_s)}, {Cloud(u"P/F"_s)}}));
    EXPECT_EQ(Arguments(modified), (QList<QStringList>{{Cloud(u"P/a.tasm"_s)}}));
}

TEST_F(Front, AReceiverSeesAMoveInPlaceOfACopy)
{
    tree.File(u"src/a.tlk"_s);
    FileLinkImporter importer;
    QSignalSpy copied(&importer, &FileLinkImporter::FileCopied);
    QSignalSpy moved(&importer, &FileLinkImporter::FileMoved);
    ASSERT_TRUE(importer.CopyToCloudCacheFolder({Source(u"a.tlk"_s)}, Cloud(), true,
                                                Global::MoveFiles, {}));
    EXPECT_EQ(copied.size(), 0);
    EXPECT_EQ(Arguments(moved), (QList<QStringList>{{Source(u"a.tlk"_s), Cloud(u"a.tlk"_s)}}));
}

TEST_F(Front, TheControllerStaysAliveWhileTheImporterDoes)
{
    auto controller = std::make_shared<PollCounter>(1);
    const std::weak_ptr<PollCounter> watched = controller;
    {
        FileLinkImporter importer(controller);
        controller.reset();
        EXPECT_FALSE(watched.expired());
        tree.File(u"src/a.tlk"_s);
        EXPECT_FALSE(importer.Initialize({Source(u"a.tlk"_s)}, Cloud(), false, {}, {}));
    }
    EXPECT_TRUE(watched.expired());
}

TEST_F(Front, TheFileSetOutlivesTheImporter)
{
    tree.File(u"src/a.tlk"_s);
    std::shared_ptr<FileLink::FileSet> set;
    {
        FileLinkImporter importer;
        ASSERT_TRUE(importer.Initialize({Source(u"a.tlk"_s)}, Cloud(), false, {}, {}));
        set = importer.GetFileSet();
    }
    EXPECT_EQ(set->GetCount(), 1);
}

} // namespace Halvern::Test
