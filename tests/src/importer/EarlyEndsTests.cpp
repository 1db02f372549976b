// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

#include "filelink/FileLinkImporter.h"

#include <QtCore/QRegularExpression>

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;
using Option = SyncServices::SyncItem::SyncOption;

/// The records of stages that end early, each written as
///
///     INFO FileLinkManagerImp FileLinkImporterImp::MarkCollisions: Begin marking file conflicts
///
/// that is level, source file, function and text. The logger is always the module's.
class EarlyEnds : public ImporterFixture
{
protected:
    EarlyEnds() : importer(controller) {}

    QStringList Records(const LogCapture& log) const
    {
        static const QRegularExpression name(u"(\\w+::\\w+)\\("_s);
        const QStringList lines = log.Lines();
        const QList<LogRecord> records = log.Records();
        QStringList result;
        for (qsizetype i = 0; i < records.size(); ++i) {
            const LogRecord& record = records[i];
            EXPECT_EQ(record.logger, u"CorsyncFileLink"_s);
            EXPECT_TRUE(record.file.endsWith(u".cpp"_s)) << record.file.toStdString();
            result.append(
                u"%1 %2 %3: %4"_s.arg(lines[i].section(u' ', 0, 0), record.file.chopped(4),
                                      name.match(record.function).captured(1), record.text));
        }
        return Short(result);
    }
    static QString Importer(const QString& function, const QString& text)
    {
        return u"INFO FileLinkManagerImp FileLinkImporterImp::%1: %2"_s.arg(function, text);
    }
    static QString Extractor(const QString& function, const QString& text)
    {
        return u"INFO FileLinkManagerImp FileLinkExtractorImp::%1: %2"_s.arg(function, text);
    }
    static QString Closing(const QString& text)
    {
        return u"INFO InternalServices LogFinally::Log: "_s + text;
    }

    /// A set with the members a.tasm (selected), c.tlk (selected), b.tlk (linked), extracted.
    void Extract()
    {
        Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
        tree.File(u"src/b.tlk"_s).File(u"src/c.tlk"_s);
        ASSERT_TRUE(
            importer.Initialize({Source(u"a.tasm"_s), Source(u"c.tlk"_s)}, Cloud(), false, {}, {}));
        ASSERT_TRUE(importer.ExtractFileLinks());
    }
    void RememberAsCopied(const QString& source, const QString& target)
    {
        const auto earlier = std::make_shared<FileMapping>(tree.Path(source), tree.Path(target), 7);
        earlier->UpdateSourceFileProperties();
        earlier->UpdateTargetFileProperties();
        ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({earlier}, {}));
    }

    std::shared_ptr<PollCounter> controller = std::make_shared<PollCounter>();
    FileLinkImporterImp importer;

    const QString canceled = Importer(u"CheckIfCanceled"_s, u"Operation canceled"_s);
    const QString beginAssigning =
        Importer(u"AssignTargetPaths"_s, u"Begin assigning target paths for file links"_s);
    const QString endAssigning = Closing(u"Finished assigning target paths"_s);
    const QString beginMarking = Importer(u"MarkCollisions"_s, u"Begin marking file conflicts"_s);
    const QString endMarking = Closing(u"Finished marking file conflicts"_s);
    const QString beginResolving =
        Importer(u"ResolveCollisions"_s, u"Begin resolving file conflicts"_s);
    const QString endResolving = Closing(u"Finished resolving file conflicts"_s);
    const QString beginExtracting =
        Extractor(u"ExtractFileLinks"_s, u"Begin extracting file links"_s);
    const QString endExtracting = Closing(u"Finished extracting file links"_s);
    const QString extractorCanceled =
        Extractor(u"CheckIfCanceled"_s, u"File link operation canceled"_s);
    const QString nothingToExtract =
        Importer(u"ExtractFileLinks"_s,
                 u"File link extraction skipped for the entire file set. File set doesn't have any "
                 "file which supports file links."_s);
};

TEST_F(EarlyEnds, AnIntakeWithBadArgumentsWritesNothing)
{
    tree.File(u"src/a.tlk"_s).File(u"src/b.tlk"_s).File(u"cloud/x"_s);
    const LogCapture log;
    EXPECT_FALSE(importer.Initialize({Source(u"a.tlk"_s), Source(u"b.tlk"_s)}, Cloud(u"x"_s), false,
                                     {}, {}));
    EXPECT_FALSE(importer.Initialize({}, {}, false, {}, {}));
    EXPECT_FALSE(importer.Initialize({}, Cloud(), false, {}, {}));
    EXPECT_FALSE(importer.Initialize({}, Cloud(u"gone"_s), true, {}, {}));
    EXPECT_EQ(Records(log), QStringList());
    EXPECT_EQ(controller->Polls(), 0);
}

TEST_F(EarlyEnds, AnIntakeWithoutACloudCacheFolderWritesNothing)
{
    settings.cloudCacheFolder.clear();
    Restart();
    tree.File(u"src/a.tlk"_s);
    const LogCapture log;
    EXPECT_FALSE(importer.Initialize({Source(u"a.tlk"_s)}, tree.Path(u"x"_s), false, {}, {}));
    EXPECT_EQ(Records(log), QStringList());
    EXPECT_EQ(controller->Polls(), 0);
}

TEST_F(EarlyEnds, AnIntakeThatIsCanceledSaysOnlyThat)
{
    // One source to filter, one to expand with one entry, two mappings to make.
    tree.File(u"src/Proj/p.tlk"_s);
    for (int poll = 1; poll <= 5; ++poll) {
        controller->CancelAt(poll);
        const LogCapture log;
        EXPECT_FALSE(importer.Initialize({Source(u"Proj"_s)}, Cloud(), false, {}, {}));
        EXPECT_EQ(Records(log), QStringList{canceled});
    }
    controller->CancelAt(6);
    EXPECT_TRUE(importer.Initialize({Source(u"Proj"_s)}, Cloud(), false, {}, {}));
}

TEST_F(EarlyEnds, AnExtractionWithNothingToReadSaysSoAndOpensNoStage)
{
    const LogCapture log;
    EXPECT_TRUE(importer.ExtractFileLinks());
    tree.File(u"src/a.tlk"_s);
    ASSERT_TRUE(importer.Initialize({Source(u"a.tlk"_s)}, Cloud(), false, {}, {u"prt"_s}));
    EXPECT_TRUE(importer.ExtractFileLinks());
    ASSERT_TRUE(importer.Initialize({Source(u"gone.tlk"_s)}, Cloud(), false, {}, {}));
    EXPECT_TRUE(importer.ExtractFileLinks());
    EXPECT_EQ(Records(log), QStringList(3, nothingToExtract));
}

TEST_F(EarlyEnds, AnAssignmentOverFilesWithoutLinksWritesNothing)
{
    tree.File(u"src/a.tlk"_s);
    const LogCapture log;
    ASSERT_TRUE(importer.Initialize({Source(u"a.tlk"_s)}, Cloud(), false, {}, {u"prt"_s}));
    EXPECT_TRUE(importer.AssignTargetPaths());
    ASSERT_TRUE(importer.Initialize({Source(u"gone.tlk"_s)}, Cloud(), false, {}, {}));
    EXPECT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(Records(log), QStringList());
}

TEST_F(EarlyEnds, StagesBeforeAnyIntakeOpenAndClose)
{
    const LogCapture log;
    EXPECT_FALSE(importer.AssignTargetPaths());
    EXPECT_TRUE(importer.MarkCollisions());
    EXPECT_TRUE(importer.ResolveCollisions());
    EXPECT_EQ(Records(log), (QStringList{beginAssigning, endAssigning, beginMarking, endMarking,
                                         beginResolving, endResolving}));
}

TEST_F(EarlyEnds, AnAssignmentCanceledBeforeTheFirstFileIsClosed)
{
    Extract();
    controller->CancelAt(1);
    const LogCapture log;
    EXPECT_FALSE(importer.AssignTargetPaths());
    EXPECT_EQ(Records(log), (QStringList{beginAssigning, canceled, endAssigning}));
}

TEST_F(EarlyEnds, AnAssignmentCanceledInTheDefaultLayoutIsClosedAfterWhatItPlaced)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s, u"2 lib/c.tlk"_s});
    tree.File(u"src/b.tlk"_s).File(u"src/lib/c.tlk"_s);
    ASSERT_TRUE(importer.Initialize({Source(u"a.tasm"_s)}, Cloud(), false, {}, {}));
    ASSERT_TRUE(importer.ExtractFileLinks());
    // Once for the plug-ins, once for each link.
    controller->CancelAt(3);
    const LogCapture log(log4cplus::INFO_LOG_LEVEL);
    EXPECT_FALSE(importer.AssignTargetPaths());
    EXPECT_EQ(Records(log),
              (QStringList{beginAssigning,
                           u"INFO PluginManager PluginManager::FindPluginForFile: No File Layout "
                           "plugin found for file type TASM"_s,
                           Importer(u"AssignDefaultTargetPaths"_s,
                                    u"Target path not set by plugin for file src/b.tlk. Setting "
                                    "default target path cloud/b.tlk."_s),
                           canceled, endAssigning}));
    EXPECT_EQ(Targets(importer),
              (QStringList{u"src/a.tasm -> cloud/a.tasm"_s, u"src/b.tlk -> cloud/b.tlk"_s,
                           u"src/lib/c.tlk -> "_s}));
}

TEST_F(EarlyEnds, AMarkingCanceledBetweenFilesIsClosed)
{
    Extract();
    for (int poll = 1; poll <= 3; ++poll) {
        controller->CancelAt(poll);
        const LogCapture log;
        EXPECT_FALSE(importer.MarkCollisions());
        EXPECT_EQ(Records(log), (QStringList{beginMarking, canceled, endMarking}));
    }
}

TEST_F(EarlyEnds, AMarkingCanceledAfterALookUpInTheHistoryLeavesTheFileUnmarked)
{
    Extract();
    ASSERT_TRUE(importer.AssignTargetPaths());
    tree.File(u"cloud/b.tlk"_s);
    RememberAsCopied(u"src/b.tlk"_s, u"cloud/b.tlk"_s);
    const FileMappingPointer linked = Member(importer, u"src/b.tlk"_s);
    linked->SetFlag(FileMapping::Unchanged | FileMapping::Collision, true);
    // Three files, the last of which is looked up.
    controller->CancelAt(4);
    const LogCapture log;
    EXPECT_FALSE(importer.MarkCollisions());
    EXPECT_EQ(Records(log), (QStringList{beginMarking, canceled, endMarking}));
    EXPECT_EQ(linked->GetFlag(), FileMapping::NoFlag);
}

TEST_F(EarlyEnds, WhatTheHistorySaysIsWrittenByTheStageItself)
{
    Extract();
    ASSERT_TRUE(importer.AssignTargetPaths());
    tree.File(u"cloud/old/b.tlk"_s).File(u"cloud/b.tlk"_s);
    RememberAsCopied(u"src/b.tlk"_s, u"cloud/old/b.tlk"_s);
    // Read anew by a second importer.
    FileLinkImporterImp other(nullptr);
    const FileMappingPointer linked = Member(importer, u"src/b.tlk"_s);
    {
        const LogCapture log;
        EXPECT_TRUE(other.MarkCollisions(linked));
        EXPECT_EQ(Records(log),
                  QStringList{Importer(u"MarkCollisions"_s,
                                       u"File src/b.tlk was copied last time as cloud/old/b.tlk. "
                                       "Source and target files have not changed since then."_s)});
    }
    tree.Touch(u"src/b.tlk"_s, Time());
    const LogCapture log;
    EXPECT_TRUE(other.MarkCollisions(linked));
    EXPECT_EQ(Records(log),
              QStringList{Importer(u"MarkCollisions"_s,
                                   u"File src/b.tlk was copied last time as cloud/old/b.tlk. "
                                   "Source or target file has changed since then."_s)});
}

TEST_F(EarlyEnds, AMarkingWithAFileWithoutATargetFailsWithoutALine)
{
    Extract();
    const LogCapture log;
    EXPECT_FALSE(importer.MarkCollisions());
    EXPECT_EQ(Records(log), (QStringList{beginMarking, endMarking}));
}

TEST_F(EarlyEnds, AResolutionCanceledInEitherPassIsClosed)
{
    Extract();
    ASSERT_TRUE(importer.AssignTargetPaths());
    tree.File(u"cloud/c.tlk"_s);
    importer.SetCopyOption(Global::RenameSelectedFiles, true);
    ASSERT_TRUE(importer.MarkCollisions());
    const FileMappingPointer colliding = Member(importer, u"src/c.tlk"_s);
    for (int poll = 1; poll <= 6; ++poll) {
        colliding->SetFlag(FileMapping::RenameOnCollision, false);
        controller->CancelAt(poll);
        const LogCapture log;
        EXPECT_FALSE(importer.ResolveCollisions());
        EXPECT_EQ(Records(log), (QStringList{beginResolving, canceled, endResolving}));
        // The second file is decided before the third poll, and renamed before the sixth.
        EXPECT_EQ(colliding->HasFlag(FileMapping::RenameOnCollision), poll > 2);
        EXPECT_EQ(colliding->GetTargetFile(), Cloud(poll > 5 ? u"c (2).tlk"_s : u"c.tlk"_s));
    }
}

TEST_F(EarlyEnds, AOneCallImportThatMayNotStartWritesNothing)
{
    tree.File(u"src/a.tasm"_s);
    const LogCapture log;
    EXPECT_FALSE(importer.CopyFileLinksToCloudCacheFolder(Source(u"a.tasm"_s), {}, {}, {}));
    EXPECT_FALSE(importer.CopyToCloudCacheFolder({}, Cloud(), {}, {}));
    settings.loggedIn = false;
    Restart();
    EXPECT_FALSE(importer.CopyToCloudCacheFolder({Source(u"a.tasm"_s)}, Cloud(), {}, {}));
    settings.loggedIn = true;
    settings.cloudCacheFolderSyncEnabled = false;
    Restart();
    EXPECT_FALSE(importer.CopyToCloudCacheFolder({Source(u"a.tasm"_s)}, Cloud(), {}, {}));
    EXPECT_EQ(Records(log), QStringList());
    EXPECT_EQ(controller->Polls(), 0);
}

TEST_F(EarlyEnds, AOneCallImportStopsWithItsExtraction)
{
    tree.File(u"src/a.tasm"_s);
    // Once to filter, once to expand, once to make the mapping.
    controller->CancelAt(4);
    const LogCapture log;
    EXPECT_FALSE(importer.CopyToCloudCacheFolder({Source(u"a.tasm"_s)}, Cloud(), {}, {}));
    EXPECT_EQ(Records(log), (QStringList{beginExtracting, extractorCanceled, endExtracting}));
    EXPECT_FALSE(tree.Exists(u"cloud/a.tasm"_s));
}

TEST_F(EarlyEnds, CloudFilesWithBadArgumentsAreNotEvenPolledFor)
{
    controller->CancelAt(1);
    const LogCapture log;
    EXPECT_FALSE(importer.ExtractAndImportFileLinksOfCloudFiles(-1, {Cloud(u"a"_s)},
                                                                {SyncItem::NoSyncOption}));
    EXPECT_TRUE(importer.ExtractAndImportFileLinksOfCloudFiles(1, {}, {}));
    EXPECT_FALSE(importer.ExtractAndImportFileLinksOfCloudFiles(1, {Cloud(u"a"_s)}, {}));
    EXPECT_EQ(Records(log), QStringList());
    EXPECT_EQ(controller->Polls(), 0);
}

TEST_F(EarlyEnds, CloudFilesAreAskedForOnceBeforeAllAndOnceBeforeEach)
{
    const QStringList files = {Cloud(u"gone1"_s), Cloud(u"gone2"_s)};
    const QList<Option> options = {SyncItem::ImportLinkedFiles, SyncItem::NoSyncOption};
    const QString entry = u"ExtractAndImportFileLinksOfCloudFiles"_s;
    const QStringList lines = {
        Importer(entry, u"Processing file links in cloud/gone1"_s),
        Importer(entry, u"Updating file links of file cloud/gone2 in database"_s)};
    for (int poll = 1; poll <= 3; ++poll) {
        controller->CancelAt(poll);
        const LogCapture log;
        EXPECT_FALSE(importer.ExtractAndImportFileLinksOfCloudFiles(1, files, options));
        EXPECT_EQ(Records(log), lines.mid(0, poll == 3 ? 1 : 0) + QStringList{canceled});
    }
    controller->CancelAt(4);
    const LogCapture log;
    EXPECT_TRUE(importer.ExtractAndImportFileLinksOfCloudFiles(1, files, options));
    EXPECT_EQ(Records(log), lines);
}

TEST_F(EarlyEnds, ACloudFileForTheDatabaseEndsWithItsIntakeOrItsExtraction)
{
    tree.File(u"cloud/a.tasm"_s);
    const QString updating = Importer(u"ExtractAndImportFileLinksOfCloudFiles"_s,
                                      u"Updating file links of file cloud/a.tasm in database"_s);
    const auto run = [&] {
        return importer.ExtractAndImportFileLinksOfCloudFiles(1, {Cloud(u"a.tasm"_s)},
                                                              {SyncItem::NoSyncOption});
    };
    controller->CancelAt(3);
    {
        const LogCapture log;
        EXPECT_TRUE(run());
        EXPECT_EQ(Records(log), (QStringList{updating, canceled}));
    }
    controller->CancelAt(4);
    const LogCapture log;
    EXPECT_TRUE(run());
    EXPECT_EQ(Records(log),
              (QStringList{updating, beginExtracting, extractorCanceled, endExtracting}));
}

} // namespace Halvern::Test
