// SPDX-License-Identifier: Apache-2.0

// Chains in which each file links the next, on a stack that has no room for a frame per file.

#include "CopyingFixture.h"
#include "SmallStack.h"
#include "WatchedDatabase.h"

#include "base/System.h"

#include <QtCore/QLibrary>

#include <log4cplus/appender.h>
#include <log4cplus/spi/loggingevent.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

/// A recursion overflows the small stack with a tenth of these. Under Wine and with sanitizers a
/// file costs many times what it costs elsewhere.
#ifdef CORSYNC_SANITIZED
constexpr int ChainLength = 20'000;
#else
constexpr int ChainLength = Base::ThisSystem == Base::System::Windows ? 20'000 : 100'000;
#endif
/// With real files and every stage.
constexpr int JobLength = 2'000;

QString Name(int number)
{
    return u"%1.tlk"_s.arg(number);
}

class LongChain : public CopyingFixture
{
protected:
    /// Members without files. The first is selected and has its target.
    void AddChain(FileMappingFlag flags = FileMapping::NoFlag)
    {
        for (int i = 0; i < ChainLength; ++i)
            Add("src/" + Name(i), i == 0 ? Name(0) : QString(),
                i == 0 ? flags | FileMapping::Selected : flags, {Link("1", Name(i + 1))});
    }
    void UseLayout(const QString& library)
    {
        tree.File("plugins/layout.syncplugin",
                  Registration(QFileInfo(library).fileName(), "FileLayout", "tlk"));
        Manager().AddPluginSearchPaths({QFileInfo(library).absolutePath()});
    }
    /// Assigns targets and expects them to be in one folder.
    void ExpectTargetsIn(const QString& folder)
    {
        OnASmallStack([this] { EXPECT_TRUE(importer->AssignTargetPaths()); });
        const auto files = importer->GetFileSet()->GetFiles();
        ASSERT_EQ(files.size(), ChainLength);
        int expected = 0;
        for (int i = 1; i < ChainLength; ++i)
            expected += files[i]->GetTargetFile() == Cloud(folder + Name(i));
        EXPECT_EQ(expected, ChainLength - 1);
    }
};

} // namespace

TEST_F(LongChain, GetsDefaultTargetsFromItsFirstFileToItsLast)
{
    AddChain();
    ExpectTargetsIn({});
    const QStringList lines = LinesWith("INFO Target path not set by plugin");
    ASSERT_EQ(lines.size(), ChainLength - 1);
    EXPECT_EQ(lines.first(), "INFO Target path not set by plugin for file " +
                                 tree.Path("src/1.tlk") + ". Setting default target path " +
                                 Cloud("1.tlk") + ".");
    EXPECT_TRUE(lines.last().contains(Name(ChainLength - 1)));
}

TEST_F(LongChain, IsPolledForACancelOncePerFileAndEndsWhereItIsAsked)
{
    AddChain();
    controller->from = ChainLength / 2;
    OnASmallStack([this] { EXPECT_FALSE(importer->AssignTargetPaths()); });
    // The first poll is before the plug-ins' layout of the top file.
    EXPECT_EQ(controller->polls, ChainLength / 2);
    const auto files = importer->GetFileSet()->GetFiles();
    EXPECT_TRUE(files[ChainLength / 2 - 2]->HasTargetFile());
    EXPECT_FALSE(files[ChainLength / 2 - 1]->HasTargetFile());
}

TEST_F(LongChain, IsLaidOutByAPluginAndDumpedToItsEnd)
{
    UseLayout(TestPluginFolder() + '/' + TestLayoutModule());
    AddChain();
    ExpectTargetsIn("layout/");
    const QStringList lines = LinesWith("TRACE \"");
    ASSERT_EQ(lines.size(), ChainLength);
    EXPECT_EQ(lines.last(), "TRACE \"" + tree.Path("src/" + Name(ChainLength - 1)) + "\" ==> \"" +
                                Cloud("layout/" + Name(ChainLength - 1)) + '"');
}

TEST_F(LongChain, KeepsTheShapeOfItsSourceTree)
{
    UseLayout(QStringLiteral(LAYOUT_PLUGIN_FILE));
    log.SetLevel("CorsyncFileLink", log4cplus::INFO_LOG_LEVEL);
    AddChain();
    ExpectTargetsIn({});
    EXPECT_TRUE(LinesWith("INFO Target path not set by plugin").isEmpty());
}

TEST_F(LongChain, IsRecordedFromItsLastFileToItsFirst)
{
    AddChain(FileMapping::Copied);
    const QString extracted("2024-03-01T12:00:00Z");
    tree.Folder("cloud");
    for (const FileMappingPointer& file : importer->GetFileSet()->GetFiles()) {
        const QString name = QFileInfo(file->GetSourceFile()).fileName();
        QFile copy(Cloud(name));
        ASSERT_TRUE(copy.open(QIODevice::WriteOnly));
        file->SetTargetFile(Cloud(name), true);
        file->SetTargetFileLinks(file->GetSourceFileLinks());
        file->SetTargetFileLinksExtractedAtFileDate(QDateTime::fromString(extracted, Qt::ISODate));
    }
    const auto database = WatchedDatabase::Install();
    OnASmallStack([this] { EXPECT_TRUE(importer->UpdateSyncDatabase()); });
    ASSERT_EQ(database->written.size(), ChainLength);
    EXPECT_EQ(database->written.first(), Cloud(Name(ChainLength - 1)));
    EXPECT_EQ(database->written.last(), Cloud(Name(0)));
    EXPECT_EQ(Item(Name(0))->GetFileLinks().first().ItemId, Item(Name(1))->GetId());
    EXPECT_GE(Item(Name(1))->GetId(), 0);
}

namespace {

/// Counts what is logged: the lines of a long chain's tree, each indented by its depth, have twenty
/// thousand million characters.
class LineCounter : public log4cplus::Appender
{
public:
    ~LineCounter() override { destructorImpl(); }
    void close() override { closed = true; }
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        const auto& text = event.getMessage();
        const bool isDeeper = text.size() > m_last && text[0] == '-';
        deeper += isDeeper;
        longest = std::max(longest, text.size());
        m_last = isDeeper ? text.size() : 0;
    }

    /// Lines that are longer than the one before.
    int deeper = 0;
    std::size_t longest = 0;

private:
    std::size_t m_last = 0;
};

} // namespace

class LongChainLog : public ServicesFixture
{};

TEST_F(LongChainLog, ShowsEachFileOneLevelDeeper)
{
    FileLinkImporterImp importer(nullptr);
    ASSERT_TRUE(importer.Initialize({tree.Path("none")}, Cloud(), false, {}, {}));
    for (int i = 0; i < ChainLength; ++i) {
        const auto file =
            std::make_shared<FileMapping>(tree.Path("src/" + Name(100'000 + i)), QString(), 7);
        file->SetSourceFileLinks({Link("1", Name(100'001 + i))});
        file->SetFlag(
            i == 0 ? FileMapping::Selected | FileMapping::Unchanged : FileMapping::Unchanged, true);
        importer.GetFileSet()->AddFile(file);
    }
    auto logger = log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("CorsyncFileLink"));
    const log4cplus::helpers::SharedObjectPtr<LineCounter> counter(new LineCounter);
    const log4cplus::SharedAppenderPtr appender(counter.get());
    logger.setAdditivity(false);
    logger.setLogLevel(log4cplus::DEBUG_LOG_LEVEL);
    logger.addAppender(appender);
    OnASmallStack([&] { EXPECT_TRUE(importer.CopyFiles()); });
    logger.removeAppender(appender);
    logger.setLogLevel(log4cplus::NOT_SET_LOG_LEVEL);
    logger.setAdditivity(true);
    EXPECT_EQ(counter->deeper, ChainLength - 1);
    const auto path = std::size_t(tree.Path("src/" + Name(100'000)).toUtf8().size());
    EXPECT_EQ(counter->longest, 4 * std::size_t(ChainLength - 1) + path + qstrlen(" (Unchanged)"));
}

TEST_F(LongChain, OfRealFilesComesThroughAllStages)
{
    for (int i = 0; i < JobLength; ++i)
        tree.File("src/" + Name(i), LinkText({{"1", "../src/./" + Name(i + 1)}}));
    tree.File("src/" + Name(JobLength), "the end\n");
    OnASmallStack([this] {
        ASSERT_TRUE(Prepare({"src/" + Name(0)}, "F"));
        EXPECT_TRUE(importer->CopyFiles());
        EXPECT_TRUE(importer->RepathFiles());
        EXPECT_TRUE(importer->UpdateSyncDatabase());
        importer.reset();
    });
    const FileTree::Snapshot copies = tree.Contents("cloud/F");
    ASSERT_EQ(copies.size(), JobLength + 1);
    int rewritten = 0;
    for (int i = 0; i < JobLength; ++i)
        rewritten += copies[Name(i)] == LinkText({{"1", Name(i + 1)}}) &&
                     Item("F/" + Name(i))->GetFileLinks().first().ItemId ==
                         Item("F/" + Name(i + 1))->GetId();
    EXPECT_EQ(rewritten, JobLength);
}

} // namespace Halvern::Test
