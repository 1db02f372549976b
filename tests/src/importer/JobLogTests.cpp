// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

/// Every record of one job, in order, as "LEVEL [source file] text"; the logger stands in front
/// where it is not the module's.
class JobLog : public ImporterFixture
{
protected:
    QStringList Records(const LogCapture& log) const
    {
        const QStringList lines = log.Lines();
        const QList<LogRecord> records = log.Records();
        QStringList result;
        for (qsizetype i = 0; i < records.size(); ++i) {
            const QString level = lines[i].section(u' ', 0, 0);
            const QString logger =
                records[i].logger == u"CorsyncFileLink"_s ? QString() : records[i].logger + u": "_s;
            result.append(u"%1%2 [%3] %4"_s.arg(logger, level, records[i].file, records[i].text));
        }
        return Short(result);
    }

    /// An assembly whose part links back and cannot be rewritten, with a missing file and a web
    /// address; its name is taken in the target folder.
    bool RunJob()
    {
        Assembly(u"src/a.tasm"_s, {u"1 lib/b.tlk"_s, u"2 gone.tlk"_s, u"3 http://host/x"_s});
        tree.File(u"src/lib/b.tlk"_s, "norepath\nlink 1 ../a.tasm\n");
        tree.File(u"cloud/F/a.tasm"_s, "old");
        return Import({Source(u"a.tasm"_s)}, Cloud(u"F"_s));
    }

    static QStringList Expected()
    {
        const QString module = TestResolverModule();
        const QString web = QDir::cleanPath(u"http://host/x"_s);
        return {
            u"INFO [FileLinkManagerImp.cpp] Begin extracting file links"_s,
            u"TRACE [FileLinkManagerImp.cpp] Extracting file links from src/a.tasm"_s,
            u"INFO [PluginManager.cpp] Searching for plugin registration files in plugins"_s,
            u"INFO [PluginManager.cpp] Found plugin registration file "
            "plugins/test_resolver.syncplugin and loaded"_s,
            u"DEBUG [PluginManager.cpp] Searching for File Link Resolver plugin for file type TASM"_s,
            u"DEBUG [PluginManager.cpp] Found 1 File Link Resolver plugin(s) for file type TASM: "_s +
                module,
            u"INFO [PluginManager.cpp] Plugin "_s + module + u" loaded"_s,
            u"INFO [FileLinkManagerImp.cpp] 3 file links found in src/a.tasm"_s,
            u"DEBUG [FileLinkManagerImp.cpp] File link: Path: lib/b.tlk RefId: 1"_s,
            u"WARN [FileLinkManagerImp.cpp] File link: Path: gone.tlk RefId: 2 (File not found: "
            "src/gone.tlk)"_s,
            u"DEBUG [FileLinkManagerImp.cpp] File link: Path: http://host/x RefId: 3"_s,
            u"TRACE [FileLinkManagerImp.cpp] Extracting file links from src/lib/b.tlk"_s,
            u"DEBUG [PluginManager.cpp] Searching for File Link Resolver plugin for file type TLK"_s,
            u"DEBUG [PluginManager.cpp] Found 1 File Link Resolver plugin(s) for file type TLK: "_s +
                module,
            u"INFO [FileLinkManagerImp.cpp] 1 file links found in src/lib/b.tlk"_s,
            u"DEBUG [FileLinkManagerImp.cpp] File link: Path: ../a.tasm RefId: 1"_s,
            u"ERROR [FileLinkManagerImp.cpp] Failed to extract file links from src/gone.tlk. File "
            "not found."_s,
            u"INFO [InternalServices.cpp] Finished extracting file links"_s,

            u"INFO [FileLinkManagerImp.cpp] Begin assigning target paths for file links"_s,
            Circular(u"src/a.tasm"_s, u"src/lib/b.tlk"_s),
            u"DEBUG [PluginManager.cpp] Searching for File Layout plugin for file type TASM"_s,
            u"INFO [PluginManager.cpp] No File Layout plugin found for file type TASM"_s,
            Circular(u"src/a.tasm"_s, u"src/lib/b.tlk"_s),
            u"INFO [FileLinkManagerImp.cpp] Target path not set by plugin for file src/lib/b.tlk. "
            "Setting default target path cloud/F/lib/b.tlk."_s,
            u"INFO [FileLinkManagerImp.cpp] Target path not set by plugin for file src/gone.tlk. "
            "Setting default target path cloud/F/gone.tlk."_s,
            u"INFO [InternalServices.cpp] Finished assigning target paths"_s,

            u"INFO [FileLinkManagerImp.cpp] Begin marking file conflicts"_s,
            u"INFO [InternalServices.cpp] Finished marking file conflicts"_s,
            u"INFO [FileLinkManagerImp.cpp] Begin resolving file conflicts"_s,
            u"INFO [InternalServices.cpp] Finished resolving file conflicts"_s,

            Circular(u"src/a.tasm"_s, u"src/lib/b.tlk"_s),
            u"DEBUG [FileLinkManagerImp.cpp] ***Source file tree***"_s,
            u"DEBUG [FileLinkManagerImp.cpp] src/a.tasm (Selected, Collision, RenameOnCollision)"_s,
            u"DEBUG [FileLinkManagerImp.cpp] --->src/lib/b.tlk"_s,
            u"DEBUG [FileLinkManagerImp.cpp] ------->src/a.tasm (processed already)"_s,
            u"DEBUG [FileLinkManagerImp.cpp] --->src/gone.tlk (SourceMissing)"_s,
            u"DEBUG [FileLinkManagerImp.cpp] --->"_s + web + u" (NotFilePath)"_s,
            u"INFO [FileLinkManagerImp.cpp] Begin copying files"_s,
            u"DEBUG [FileLinkManagerImp.cpp] File copied successfully from src/a.tasm to cloud/F/a "
            "(2).tasm"_s,
            u"DEBUG [FileLinkManagerImp.cpp] File copied successfully from src/lib/b.tlk to "
            "cloud/F/lib/b.tlk"_s,
            u"ERROR [FileLinkManagerImp.cpp] Failed to copy file src/gone.tlk to cloud/F/gone.tlk. "
            "Source file is not found."_s,
            u"INFO [FileLinkManagerImp.cpp] Finished copying files. Copied: 2, Folders created: 0, "
            "Failed: 1, Skipped: 1, Total: 4"_s,
            Circular(u"cloud/F/a (2).tasm"_s, u"cloud/F/lib/b.tlk"_s),
            u"DEBUG [FileLinkManagerImp.cpp] ***Target file tree***"_s,
            u"DEBUG [FileLinkManagerImp.cpp] cloud/F/a (2).tasm (Selected, Collision, "
            "RenameOnCollision, Copied)"_s,
            u"DEBUG [FileLinkManagerImp.cpp] --->cloud/F/lib/b.tlk (Copied)"_s,
            u"DEBUG [FileLinkManagerImp.cpp] ------->cloud/F/a (2).tasm (processed already)"_s,
            u"DEBUG [FileLinkManagerImp.cpp] --->cloud/F/gone.tlk (SourceMissing)"_s,
            u"INFO [InternalServices.cpp] Finished copying files"_s,

            u"INFO [FileLinkManagerImp.cpp] Begin repathing file links in target"_s,
            u"INFO [FileLinkManagerImp.cpp] Repathing file cloud/F/a (2).tasm"_s,
            u"DEBUG [FileLinkManagerImp.cpp] File link: Path: lib/b.tlk RefId: 1"_s,
            u"DEBUG [FileLinkManagerImp.cpp] File link: Path: gone.tlk RefId: 2"_s,
            u"DEBUG [FileLinkManagerImp.cpp] File link: Path: http://host/x RefId: 3"_s,
            u"INFO [FileLinkManagerImp.cpp] Repathing file cloud/F/lib/b.tlk"_s,
            u"DEBUG [FileLinkManagerImp.cpp] File link: Path: ../a (2).tasm RefId: 1"_s,
            u"ResolverPlugin: ERROR [FileLinkManagerImp.cpp] test resolver: told not to repath"_s,
            u"ERROR [PluginManager.cpp] Failed to repath file links in file cloud/F/lib/b.tlk. "
            "Plugin returned false."_s,
            u"INFO [InternalServices.cpp] Finished repathing file links in target"_s,

            u"INFO [FileLinkManagerImp.cpp] Begin updating sync database"_s,
            Circular(u"cloud/F/a (2).tasm"_s, u"cloud/F/lib/b.tlk"_s),
            u"INFO [InternalServices.cpp] Finished updating sync database"_s,
        };
    }

    static QString Circular(const QString& file, const QString& holder)
    {
        return u"INFO [FileSetImp.cpp] Circular reference detected. File link %1 in %2 leads to "
               "circular reference."_s.arg(file, holder);
    }
};

TEST_F(JobLog, HoldsEveryRecordOfAJobInOrder)
{
    const LogCapture log;
    ASSERT_TRUE(RunJob());
    const QStringList records = Records(log);
    const QStringList expected = Expected();
    for (qsizetype i = 0; i < std::max(records.size(), expected.size()); ++i)
        ASSERT_EQ(records.value(i), expected.value(i)) << "record " << i;
}

TEST_F(JobLog, RecordsCarryTheSignatureOfTheirFunction)
{
    const LogCapture log;
    ASSERT_TRUE(RunJob());
    const auto functionOf = [&](const QString& text) {
        for (const LogRecord& record : log.Records())
            if (record.text == text)
                return record.function;
        return QString();
    };
    EXPECT_TRUE(functionOf(u"Begin extracting file links"_s)
                    .contains(u"FileLinkExtractorImp::ExtractFileLinks("_s));
    EXPECT_TRUE(functionOf(u"Begin marking file conflicts"_s)
                    .contains(u"FileLinkImporterImp::MarkCollisions("_s));
    EXPECT_TRUE(functionOf(u"Finished marking file conflicts"_s).contains(u"LogFinally::Log("_s));
}

TEST_F(JobLog, WithDebugOffNoFileTreeIsBuilt)
{
    const LogCapture log(log4cplus::INFO_LOG_LEVEL);
    ASSERT_TRUE(RunJob());
    EXPECT_EQ(log.Lines().filter(u"DEBUG"_s), QStringList());
    // Twice for the layout and once for the database: none for the two dumps.
    EXPECT_EQ(log.Lines().filter(u"Circular reference detected"_s).size(), 3);
}

} // namespace Halvern::Test
