// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"
#include "RecordLines.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

namespace {

const RecordsOf extractSet(u"FileLinkExtractorImp::ExtractFileLinks"_s);
const RecordsOf extractFile(u"FileLinkExtractorImp::ExtractFileLinks"_s);
const RecordsOf logLinks(u"FileLinkExtractorImp::LogFileLinks"_s);
const RecordsOf assign(u"FileLinkImporterImp::AssignTargetPaths"_s);
const RecordsOf mark(u"FileLinkImporterImp::MarkCollisions"_s);
const RecordsOf resolve(u"FileLinkImporterImp::ResolveCollisions"_s);
const RecordsOf logTree(u"FileLinkImporterImp::LogFileTree"_s);
const RecordsOf logNode(u"FileLinkImporterImp::LogFileTree"_s);
const RecordsOf copyFiles(u"FileLinkImporterImp::CopyFiles"_s);
const RecordsOf copyFile(u"FileLinkImporterImp::CopyFile"_s);
const RecordsOf repathFiles(u"FileLinkImporterImp::RepathFiles"_s);
const RecordsOf repathMapping(u"FileLinkImporterImp::RepathFile"_s);
const RecordsOf repathFile(u"FileLinkImporterImp::RepathFile"_s);
const RecordsOf updateDatabase(u"FileLinkImporterImp::UpdateSyncDatabase"_s);

RecordsOf OfPlugins(const QString& function)
{
    return RecordsOf(function, u"PluginManager.cpp"_s);
}
const RecordsOf registration = OfPlugins(u"PluginManager::RegisterPlugins"_s);
const RecordsOf lookup = OfPlugins(u"PluginManager::FindPluginForFile"_s);
const RecordsOf load = OfPlugins(u"Plugin::LoadModule"_s);
const RecordsOf layout = OfPlugins(u"PluginManager::AssignTargetPaths"_s);
const RecordsOf dump = OfPlugins(u"PluginManager::DumpFileMapping"_s);
const RecordsOf pluginRepath = OfPlugins(u"PluginManager::RepathFileLinks"_s);
const RecordsOf resolverPlugin(u"PluginLogger::LogError"_s, u"FileLinkManagerImp.cpp"_s,
                               u"ResolverPlugin"_s);

} // namespace

/// One whole import with real plug-ins for links and layout, everything that is logged, and from
/// which function. The assembly's name is taken in the target folder. It links a part that can be
/// rewritten, one that cannot, a file that is missing and one that is no file.
class JobRecords : public ImporterFixture
{
protected:
    JobRecords()
    {
        // In a folder of its own: files of one folder are read in the order in which the system
        // lists them.
        RegisterTestLayout(tree, u"layouts"_s);
        FileLink::FileLinkManager::GetInstance()->AddPluginRegistrationFolders(
            {tree.Path(u"layouts"_s)});
        Assembly(u"src/top.tasm"_s, {u"1 parts/b.tlk"_s, u"2 gone.tlk"_s, u"3 vault://x/y"_s});
        tree.File(u"src/parts/b.tlk"_s, "link 1 ../c.tlk\n")
            .File(u"src/c.tlk"_s, "link 1 parts/d.tlk\nnorepath\n")
            .File(u"src/parts/d.tlk"_s, "content\n")
            .File(u"cloud/F/top.tasm"_s, "old");
    }

    bool RunJob() { return Import({Source(u"top.tasm"_s)}, Cloud(u"F"_s)); }

    static QStringList Extraction()
    {
        return {
            extractSet.Info(u"Begin extracting file links"_s),
            extractFile.Trace(u"Extracting file links from src/top.tasm"_s),
            registration.Info(u"Searching for plugin registration files in plugins;layouts"_s),
            registration.Info(
                u"Found plugin registration file plugins/test_resolver.syncplugin and loaded"_s),
            registration.Info(
                u"Found plugin registration file layouts/test_layout.syncplugin and loaded"_s),
            lookup.Debug(u"Searching for File Link Resolver plugin for file type TASM"_s),
            lookup.Debug(u"Found 1 File Link Resolver plugin(s) for file type TASM: "_s +
                         TestResolverModule()),
            load.Info(u"Plugin %1 loaded"_s.arg(TestResolverModule())),
            logLinks.Info(u"3 file links found in src/top.tasm"_s),
            logLinks.Debug(u"File link: Path: parts/b.tlk RefId: 1"_s),
            logLinks.Warn(u"File link: Path: gone.tlk RefId: 2 (File not found: src/gone.tlk)"_s),
            logLinks.Debug(u"File link: Path: vault://x/y RefId: 3"_s),
            extractFile.Trace(u"Extracting file links from src/parts/b.tlk"_s),
            lookup.Debug(u"Searching for File Link Resolver plugin for file type TLK"_s),
            lookup.Debug(u"Found 1 File Link Resolver plugin(s) for file type TLK: "_s +
                         TestResolverModule()),
            logLinks.Info(u"1 file links found in src/parts/b.tlk"_s),
            logLinks.Debug(u"File link: Path: ../c.tlk RefId: 1"_s),
            extractFile.Error(u"Failed to extract file links from src/gone.tlk. File not found."_s),
            extractFile.Trace(u"Extracting file links from src/c.tlk"_s),
            logLinks.Info(u"1 file links found in src/c.tlk"_s),
            logLinks.Debug(u"File link: Path: parts/d.tlk RefId: 1"_s),
            extractFile.Trace(u"Extracting file links from src/parts/d.tlk"_s),
            logLinks.Info(u"No file links found in src/parts/d.tlk"_s),
            ClosingRecord(u"Finished extracting file links"_s),
        };
    }

    static QStringList Layout()
    {
        const QString module = TestLayoutModule();
        return {
            assign.Info(u"Begin assigning target paths for file links"_s),
            lookup.Debug(u"Searching for File Layout plugin for file type TASM"_s),
            lookup.Debug(u"Found 1 File Layout plugin(s) for file type TASM: "_s + module),
            load.Info(u"Plugin %1 loaded"_s.arg(module)),
            layout.Debug(
                u"Plugin %1 assigned target paths successfully for file src/top.tasm"_s.arg(
                    module)),
            dump.Trace(u"Source and target path mappings:"_s),
            dump.Trace(u"\"src/top.tasm\" ==> \"cloud/F/top.tasm\""_s),
            dump.Trace(u"\"src/parts/b.tlk\" ==> \"cloud/F/layout/b.tlk\""_s),
            dump.Trace(u"\"src/gone.tlk\" ==> \"cloud/F/layout/gone.tlk\""_s),
            dump.Trace(u"\"%1\" ==> \"cloud/F/layout/y\""_s.arg(Web())),
            dump.Trace(u"\"src/c.tlk\" ==> \"cloud/F/layout/c.tlk\""_s),
            dump.Trace(u"\"src/parts/d.tlk\" ==> \"cloud/F/layout/d.tlk\""_s),
            ClosingRecord(u"Finished assigning target paths"_s),
            mark.Info(u"Begin marking file conflicts"_s),
            ClosingRecord(u"Finished marking file conflicts"_s),
            resolve.Info(u"Begin resolving file conflicts"_s),
            ClosingRecord(u"Finished resolving file conflicts"_s),
        };
    }

    static QStringList Copying()
    {
        const QString copied = u"File copied successfully from %1 to %2"_s;
        const QString top = u"cloud/F/top (2).tasm"_s;
        return {
            logTree.Debug(u"***Source file tree***"_s),
            logNode.Debug(u"src/top.tasm (Selected, Collision, RenameOnCollision)"_s),
            logNode.Debug(u"--->src/parts/b.tlk"_s),
            logNode.Debug(u"------->src/c.tlk"_s),
            logNode.Debug(u"----------->src/parts/d.tlk"_s),
            logNode.Debug(u"--->src/gone.tlk (SourceMissing)"_s),
            logNode.Debug(u"--->%1 (NotFilePath)"_s.arg(Web())),
            copyFiles.Info(u"Begin copying files"_s),
            copyFile.Debug(copied.arg(u"src/top.tasm"_s, top)),
            copyFile.Debug(copied.arg(u"src/parts/b.tlk"_s, u"cloud/F/layout/b.tlk"_s)),
            copyFile.Error(u"Failed to copy file src/gone.tlk to cloud/F/layout/gone.tlk. Source "
                           "file is not found."_s),
            copyFile.Debug(copied.arg(u"src/c.tlk"_s, u"cloud/F/layout/c.tlk"_s)),
            copyFile.Debug(copied.arg(u"src/parts/d.tlk"_s, u"cloud/F/layout/d.tlk"_s)),
            copyFiles.Info(u"Finished copying files. Copied: 4, Folders created: 0, Failed: 1, "
                           "Skipped: 1, Total: 6"_s),
            logTree.Debug(u"***Target file tree***"_s),
            logNode.Debug(top + u" (Selected, Collision, RenameOnCollision, Copied)"_s),
            logNode.Debug(u"--->cloud/F/layout/b.tlk (Copied)"_s),
            logNode.Debug(u"------->cloud/F/layout/c.tlk (Copied)"_s),
            logNode.Debug(u"----------->cloud/F/layout/d.tlk (Copied)"_s),
            logNode.Debug(u"--->cloud/F/layout/gone.tlk (SourceMissing)"_s),
            logNode.Debug(u"--->cloud/F/layout/y (NotFilePath)"_s),
            ClosingRecord(u"Finished copying files"_s),
        };
    }

    static QStringList Repathing()
    {
        return {
            repathFiles.Info(u"Begin repathing file links in target"_s),
            repathFile.Info(u"Repathing file cloud/F/top (2).tasm"_s),
            repathFile.Debug(u"File link: Path: layout/b.tlk RefId: 1"_s),
            repathFile.Debug(u"File link: Path: layout/gone.tlk RefId: 2"_s),
            repathFile.Debug(u"File link: Path: vault://x/y RefId: 3"_s),
            repathFile.Info(u"Repathing file cloud/F/layout/b.tlk"_s),
            repathFile.Debug(u"File link: Path: c.tlk RefId: 1"_s),
            repathFile.Info(u"Repathing file cloud/F/layout/c.tlk"_s),
            repathFile.Debug(u"File link: Path: d.tlk RefId: 1"_s),
            resolverPlugin.Error(u"test resolver: told not to repath"_s),
            pluginRepath.Error(u"Failed to repath file links in file cloud/F/layout/c.tlk. Plugin "
                               "returned false."_s),
            repathMapping.Debug(
                u"Repathing skipped for file cloud/F/layout/d.tlk. No links found."_s),
            ClosingRecord(u"Finished repathing file links in target"_s),
            updateDatabase.Info(u"Begin updating sync database"_s),
            ClosingRecord(u"Finished updating sync database"_s),
        };
    }

    static QString Web() { return QDir::cleanPath(u"vault://x/y"_s); }
};

TEST_F(JobRecords, AreThoseOfEveryStageInOrderEachFromItsOwnFunction)
{
    const LogCapture log;
    ASSERT_TRUE(RunJob());
    const QStringList records = RecordLines(log, tree.Path());
    const QStringList expected = Extraction() + Layout() + Copying() + Repathing();
    for (qsizetype i = 0; i < std::max(records.size(), expected.size()); ++i)
        ASSERT_EQ(records.value(i), expected.value(i)) << "record " << i;
    EXPECT_EQ(tree.Read(u"cloud/F/top (2).tasm"_s),
              "src/top.tasm\nlink 1 layout/b.tlk\nlink 2 layout/gone.tlk\nlink 3 vault://x/y\n");
    EXPECT_EQ(tree.Read(u"cloud/F/top.tasm"_s), "old");
}

TEST_F(JobRecords, AboveTraceAreTheSameWithoutTheLinesOfThatLevel)
{
    const LogCapture log(log4cplus::DEBUG_LOG_LEVEL);
    ASSERT_TRUE(RunJob());
    QStringList expected = Extraction() + Layout() + Copying() + Repathing();
    expected.removeIf([](const QString& line) { return line.startsWith(u"TRACE "_s); });
    EXPECT_EQ(RecordLines(log, tree.Path()), expected);
}

} // namespace Halvern::Test
