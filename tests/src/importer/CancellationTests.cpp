// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <functional>

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

const QString importerCanceled = u"INFO Operation canceled"_s;
const QString extractorCanceled = u"INFO File link operation canceled"_s;

/// Asks to stop at the first poll of a job, at the second, and so on until the job runs through.
/// Each round has files of its own: an assembly with parts at two levels, a folder, and targets
/// that are taken.
class Cancellation : public ImporterFixture
{
protected:
    struct Job
    {
        QString name;
        QStringList sources;
        QString target;
    };

    Job MakeJob(const QString& name)
    {
        const QString src = u"src/"_s + name + u'/';
        const QString cloud = u"cloud/"_s + name + u'/';
        Assembly(src + u"a.tasm"_s, {u"1 lib/b.tasm"_s, u"2 c.tlk"_s});
        Assembly(src + u"lib/b.tasm"_s, {u"1 d.tlk"_s});
        tree.File(src + u"c.tlk"_s).File(src + u"lib/d.tlk"_s).File(src + u"Proj/p.tlk"_s);
        tree.File(cloud + u"a.tasm"_s, "old").File(cloud + u"c.tlk"_s, "old");
        return {name, {Source(name + u"/a.tasm"_s), Source(name + u"/Proj"_s)}, Cloud(name)};
    }

    /// What a copy may hold at any moment: the source's bytes, or those with rewritten links.
    static QMap<QString, QByteArrayList> AllowedContents(const QString& name)
    {
        const QByteArray src = "src/" + name.toUtf8() + '/';
        return {{u"a.tasm"_s, {"old"}},
                {u"c.tlk"_s, {"old"}},
                {u"a (2).tasm"_s,
                 {src + "a.tasm\nlink 1 lib/b.tasm\nlink 2 c.tlk\n",
                  src + "a.tasm\nlink 1 lib/b.tasm\nlink 2 c (2).tlk\n"}},
                {u"c (2).tlk"_s, {src + "c.tlk"}},
                {u"lib/b.tasm"_s, {src + "lib/b.tasm\nlink 1 d.tlk\n"}},
                {u"lib/d.tlk"_s, {src + "lib/d.tlk"}},
                {u"Proj/p.tlk"_s, {src + "Proj/p.tlk"}},
                {u"Proj/"_s, {""}},
                {u"lib/"_s, {""}}};
    }

    void ExpectWholeFiles(const QString& name)
    {
        const QMap<QString, QByteArrayList> allowed = AllowedContents(name);
        const FileTree::Snapshot contents = tree.Contents(u"cloud/"_s + name);
        for (auto file = contents.cbegin(); file != contents.cend(); ++file)
            EXPECT_TRUE(allowed.value(file.key()).contains(file.value()))
                << file.key().toStdString() << ": " << file.value().toStdString();
    }

    void ExpectSoundDatabase()
    {
        const SQLite::Database database(settings.databaseFile.toStdString(), SQLite::OPEN_READONLY);
        SQLite::Statement integrity(database, "PRAGMA integrity_check");
        ASSERT_TRUE(integrity.executeStep());
        EXPECT_STREQ(integrity.getColumn(0).getText(), "ok");
        SQLite::Statement foreignKeys(database, "PRAGMA foreign_key_check");
        EXPECT_FALSE(foreignKeys.executeStep());
        for (const auto& item : Database().GetAllItems(7))
            EXPECT_TRUE(QFileInfo::exists(item->GetLocalPath()))
                << item->GetLocalPath().toStdString();
    }

    /// Every line that opens a stage is closed, in order.
    static void ExpectClosedStages(const QStringList& lines)
    {
        qsizetype begun = 0;
        qsizetype open = 0;
        for (const QString& line : lines) {
            begun += line.startsWith(u"INFO Begin "_s);
            open += line.startsWith(u"INFO Begin "_s);
            open -= line.startsWith(u"INFO Finished "_s) && !line.contains(u"Copied:"_s);
            EXPECT_TRUE(open == 0 || open == 1) << line.toStdString();
        }
        EXPECT_EQ(open, 0);
        EXPECT_LE(begun, 7);
    }

    static qsizetype CanceledLines(const QStringList& lines)
    {
        return lines.count(importerCanceled) + lines.count(extractorCanceled);
    }

    void ExpectEndOfCanceledImport(const QStringList& lines)
    {
        ASSERT_FALSE(lines.isEmpty());
        if (lines.filter(u"INFO Begin "_s).isEmpty()) {
            EXPECT_EQ(lines, QStringList{importerCanceled});
        } else if (lines.contains(extractorCanceled)) {
            EXPECT_EQ(lines.value(lines.size() - 2), extractorCanceled);
            EXPECT_EQ(lines.last(), u"INFO Finished extracting file links"_s);
        } else {
            EXPECT_EQ(lines.value(lines.size() - 2), importerCanceled);
            EXPECT_EQ(lines.last(), u"INFO Finished updating sync database"_s);
        }
    }

    /// Imports job after job, each stopped one poll later. `check` looks at the round's files.
    int RunToTheEnd(Global::CopyOption options, const std::function<void(const Job&)>& check)
    {
        for (int poll = 1; poll < 1000; ++poll) {
            SCOPED_TRACE(poll);
            const Job job = MakeJob(u"job%1"_s.arg(poll));
            const auto controller = std::make_shared<PollCounter>(poll);
            const LogCapture log(log4cplus::INFO_LOG_LEVEL);
            bool result = false;
            {
                FileLinkImporterImp importer(controller);
                result = importer.CopyToCloudCacheFolder(job.sources, job.target, options, {});
            }
            const QStringList lines = log.Lines();
            EXPECT_EQ(result, !lines.filter(u"Copied:"_s).isEmpty());
            EXPECT_EQ(CanceledLines(lines), controller->Cancels());
            ExpectClosedStages(lines);
            ExpectWholeFiles(job.name);
            ExpectSoundDatabase();
            check(job);
            if (controller->Cancels() == 0)
                return poll - 1;
            ExpectEndOfCanceledImport(lines);
            if (HasFailure())
                return poll;
        }
        ADD_FAILURE() << "the job does not end";
        return -1;
    }

    /// The links of a copy lead to files.
    void ExpectLinksLead(const QString& file)
    {
        for (const QString& line : QString::fromUtf8(tree.Read(file)).split(u'\n'))
            if (line.startsWith(u"link "_s)) {
                const QString path =
                    QFileInfo(tree.Path(file)).absolutePath() + u'/' + line.section(u' ', 2);
                EXPECT_TRUE(QFileInfo::exists(path)) << path.toStdString();
            }
    }
};

TEST_F(Cancellation, AtEveryPollOfACopyLeavesSourcesFilesAndDatabaseWhole)
{
    const auto check = [&](const Job& job) {
        const FileTree::Snapshot sources = tree.Contents(u"src/"_s + job.name);
        EXPECT_EQ(sources.size(), 5);
        EXPECT_EQ(sources.value(u"c.tlk"_s), "src/" + job.name.toUtf8() + "/c.tlk");
        EXPECT_EQ(sources.value(u"a.tasm"_s).count("link"), 2);
        // The next import, which nobody stops, is complete.
        const QString again = u"again/"_s + job.name;
        ASSERT_TRUE(Import({Source(job.name + u"/a.tasm"_s)}, Cloud(again + u"/x.tasm"_s)));
        ExpectLinksLead(u"cloud/%1/x.tasm"_s.arg(again));
    };
    EXPECT_GT(RunToTheEnd(Global::NoCopyOption, check), 80);
}

TEST_F(Cancellation, AtEveryPollOfAMoveLosesNoFile)
{
    const auto check = [&](const Job& job) {
        const QString src = u"src/"_s + job.name + u'/';
        const QString cloud = u"cloud/"_s + job.name + u'/';
        EXPECT_NE(tree.Exists(src + u"a.tasm"_s), tree.Exists(cloud + u"a (2).tasm"_s));
        EXPECT_NE(tree.Exists(src + u"Proj/p.tlk"_s), tree.Exists(cloud + u"Proj/p.tlk"_s));
        for (const QString& linked : {u"lib/b.tasm"_s, u"lib/d.tlk"_s, u"c.tlk"_s})
            EXPECT_TRUE(tree.Exists(src + linked));
    };
    EXPECT_GT(RunToTheEnd(Global::MoveFiles, check), 80);
}

TEST_F(Cancellation, AtEveryPollOverCloudFilesLeavesFilesAndDatabaseWhole)
{
    const QList<SyncItem::SyncOption> options = {SyncItem::ImportLinkedFiles,
                                                 SyncItem::NoSyncOption};
    bool canceled = true;
    int poll = 1;
    for (; canceled && poll < 200; ++poll) {
        SCOPED_TRACE(poll);
        const QString name = u"job%1/"_s.arg(poll);
        const QByteArray head = "cloud/" + name.toUtf8() + "a.tasm\nlink 1 ";
        Assembly(u"cloud/"_s + name + u"a.tasm"_s, {u"1 ../../src/"_s + name + u"b.tlk"_s});
        Assembly(u"cloud/"_s + name + u"x.tasm"_s, {u"1 a.tasm"_s});
        tree.File(u"src/"_s + name + u"b.tlk"_s);
        const QByteArray before = tree.Read(u"cloud/"_s + name + u"a.tasm"_s);
        const FileTree::Snapshot sources = tree.Contents(u"src"_s);

        const auto controller = std::make_shared<PollCounter>(poll);
        const LogCapture log(log4cplus::INFO_LOG_LEVEL);
        bool result = false;
        {
            FileLinkImporterImp importer(controller);
            result = importer.ExtractAndImportFileLinksOfCloudFiles(
                1, {Cloud(name + u"a.tasm"_s), Cloud(name + u"x.tasm"_s)}, options);
        }
        canceled = controller->Cancels() > 0;
        // The last file's own result does not count.
        EXPECT_EQ(result, !log.Lines().filter(u"INFO Updating file links"_s).isEmpty());
        EXPECT_EQ(CanceledLines(log.Lines()), controller->Cancels());
        EXPECT_EQ(tree.Contents(u"src"_s), sources);
        const QByteArray after = tree.Read(u"cloud/"_s + name + u"a.tasm"_s);
        const QByteArray rewritten = head + "job" + QByteArray::number(poll) + "/b.tlk\n";
        EXPECT_TRUE(after == before || after == rewritten) << after.toStdString();
        if (after == rewritten) {
            ExpectLinksLead(u"cloud/"_s + name + u"a.tasm"_s);
        }
        ExpectSoundDatabase();
    }
    EXPECT_FALSE(canceled);
    EXPECT_GT(poll, 20);
}

/// One stage alone: the stages before it run without a cancel.
struct StageCase
{
    using Importer = FileLink::FileLinkImporterImp;
    std::string name;
    /// How many of Initialize, ExtractFileLinks, AssignTargetPaths, MarkCollisions,
    /// ResolveCollisions run before.
    int position;
    QString canceled;
    QString closing;
    int polls;
};

void PrintTo(const StageCase& row, std::ostream* out)
{
    *out << row.name;
}

class StageCancellation : public Cancellation, public ::testing::WithParamInterface<StageCase>
{
protected:
    static bool RunStage(FileLinkImporterImp& importer, int position, const Job& job)
    {
        switch (position) {
        case 0:
            return importer.Initialize(job.sources, job.target, true, {}, {});
        case 1:
            return importer.ExtractFileLinks();
        case 2:
            return importer.AssignTargetPaths();
        case 3:
            return importer.MarkCollisions();
        default:
            return importer.ResolveCollisions();
        }
    }

    void ExpectEndOfCanceledStage(const QStringList& lines)
    {
        const StageCase& stage = GetParam();
        const QStringList end = stage.closing.isEmpty()
                                    ? QStringList{stage.canceled}
                                    : QStringList{stage.canceled, u"INFO "_s + stage.closing};
        EXPECT_EQ(lines.mid(lines.size() - end.size()), end);
    }
};

TEST_P(StageCancellation, StopsAtEveryPoll)
{
    const StageCase& stage = GetParam();
    int poll = 1;
    for (bool canceled = true; canceled && poll < 200; ++poll) {
        SCOPED_TRACE(poll);
        const Job job = MakeJob(u"job%1"_s.arg(poll));
        const FileTree::Snapshot sources = tree.Contents(u"src"_s);
        const FileTree::Snapshot targets = tree.Contents(u"cloud"_s);
        const auto controller = std::make_shared<PollCounter>();
        FileLinkImporterImp importer(controller);
        // The first stage runs over an earlier set, which a cancel must leave in place.
        for (int i = 0; i < std::max(stage.position, 1); ++i)
            ASSERT_TRUE(RunStage(importer, i, job));
        const auto set = importer.GetFileSet();
        const QStringList members = Members(importer);

        controller->CancelAt(poll);
        const LogCapture log(log4cplus::INFO_LOG_LEVEL);
        const bool result = RunStage(importer, stage.position, job);
        canceled = controller->Cancels() > 0;
        EXPECT_EQ(result, !canceled);
        EXPECT_EQ(CanceledLines(log.Lines()), controller->Cancels());
        ExpectClosedStages(log.Lines());
        EXPECT_EQ(tree.Contents(u"src"_s), sources);
        EXPECT_EQ(tree.Contents(u"cloud"_s), targets);
        if (canceled) {
            ExpectEndOfCanceledStage(log.Lines());
            EXPECT_EQ(importer.GetFileSet(), set);
            // Linked files join at the very end, three of them after the members that are there.
            const int joined = stage.position == 1 ? std::max(poll - (stage.polls - 2), 0) : 0;
            EXPECT_EQ(Members(importer).size(), members.size() + joined);
            EXPECT_EQ(Members(importer).mid(0, members.size()), members);
        } else {
            EXPECT_EQ(controller->Polls(), stage.polls);
        }
    }
    EXPECT_EQ(poll - 2, stage.polls);
    ExpectSoundDatabase();
}

// The numbers of polls: once before each source, folder entry, file, link and tree node, and once
// after what may take long.
INSTANTIATE_TEST_SUITE_P(EachStage, StageCancellation,
                         ::testing::Values(
                             // 2 sources to filter, 2 to expand with 1 entry, 3 mappings to make.
                             StageCase{"Initialize", 0, importerCanceled, QString(), 8},
                             // 6 files to look at, 5 of them read (once before, once after) with 3
                             // links to take over and 3 to follow, 6 to add.
                             StageCase{"ExtractFileLinks", 1, extractorCanceled,
                                       u"Finished extracting file links"_s, 28},
                             // 2 selected files for the plug-ins, 3 links to lay out.
                             StageCase{"AssignTargetPaths", 2, importerCanceled,
                                       u"Finished assigning target paths"_s, 5},
                             // 6 files, of which 1 is looked up in the history.
                             StageCase{"MarkCollisions", 3, importerCanceled,
                                       u"Finished marking file conflicts"_s, 7},
                             // 6 files, twice.
                             StageCase{"ResolveCollisions", 4, importerCanceled,
                                       u"Finished resolving file conflicts"_s, 12}),
                         [](const auto& row) { return row.param.name; });

} // namespace Halvern::Test
