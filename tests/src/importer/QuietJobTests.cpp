// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

#include "filelink/FileLinkImporter.h"

#include <QtCore/QThread>
#include <QtCore/QTime>

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;
using FileLink::FileLinkImporter;

/// Whole jobs with every logger off leave what they leave with every line written.
class QuietJob : public ImporterFixture
{
protected:
    /// What stands on the disk and in the database after the jobs, without the job's own folder.
    struct Outcome
    {
        FileTree::Snapshot files;
        QStringList results;
        QStringList targets;
        QStringList items;
        QStringList history;

        bool operator==(const Outcome&) const = default;
    };

    QuietJob() { UseTestLayout(); }

    void StartIn(const QString& name)
    {
        folder = name;
        tree.Folder(folder + u"/cloud"_s);
        settings.cloudCacheFolder = Path(u"cloud"_s);
        settings.databaseFile = Path(u"sync.db"_s);
        Restart();
        WriteSources();
    }
    QString Path(const QString& relative) const { return tree.Path(folder + u'/' + relative); }
    QString Inner(QString text) const { return text.replace(tree.Path(folder) + u'/', QString()); }

    void Write(const QString& name, const QByteArray& content)
    {
        tree.File(folder + u'/' + name, content).Touch(folder + u'/' + name, Time());
    }
    void WriteSources()
    {
        Write(u"src/top.tasm"_s, Links({u"1 parts/b.tlk"_s, u"2 sub.tasm"_s, u"3 gone.tlk"_s,
                                        u"4 bad.tlk"_s, u"5 http://h/x"_s}));
        Write(u"src/sub.tasm"_s, Links({u"1 top.tasm"_s, u"2 replaced.tlk"_s}));
        Write(u"src/layoutfails.tasm"_s, Links({u"1 parts/b.tlk"_s, u"2 throwing.tlk"_s}));
        Write(u"src/layoutthrows.tasm"_s, Links({u"1 far/leave.tlk"_s}));
        Write(u"src/parts/b.tlk"_s, Links({u"1 ../replacement/replaced.tlk"_s}));
        Write(u"src/replaced.tlk"_s, "first");
        Write(u"src/replacement/replaced.tlk"_s, "second");
        Write(u"src/bad.tlk"_s, "fail\n");
        Write(u"src/throwing.tlk"_s, "throw\n");
        Write(u"src/far/leave.tlk"_s, Links({u"1 ../parts/b.tlk"_s}) + "norepath\n");
        Write(u"src/readme.txt"_s, "text");
        Write(u"cloud/T/layout/b.tlk"_s, "in the way");
    }
    /// Times are compared in whole seconds: what one step writes and another one writes again in
    /// the same second is unchanged, a second later it is not.
    static void WaitForTheNextSecond()
    {
        QThread::msleep(1000 - static_cast<unsigned long>(QTime::currentTime().msec()));
    }
    static QString Text(bool value) { return value ? u"true"_s : u"false"_s; }

    /// A first import, one of what changed since, links of a cloud file, pending files, a cancel.
    Outcome Run()
    {
        Outcome outcome;
        const QStringList sources{Path(u"src/top.tasm"_s), Path(u"src/layoutfails.tasm"_s),
                                  Path(u"src/layoutthrows.tasm"_s), Path(u"src/readme.txt"_s)};
        for (int pass = 0; pass < 2; ++pass) {
            FileLinkImporterImp importer(nullptr);
            outcome.results.append(Text(importer.CopyToCloudCacheFolder(
                sources, Path(u"cloud/T"_s), {}, {u"tasm"_s, u"tlk"_s})));
            for (const QString& line : Targets(importer))
                outcome.targets.append(line.split(folder + u'/').join(QString()));
            Write(u"src/parts/b.tlk"_s, "changed\n");
            WaitForTheNextSecond();
        }
        FileLinkImporter front;
        outcome.results.append(Text(front.ExtractAndImportFileLinksOfCloudFiles(
            1, {Path(u"cloud/T/top.tasm"_s), Path(u"cloud/T/layoutfails.tasm"_s)},
            {SyncItem::ImportLinkedFiles, SyncItem::NoSyncOption})));
        MarkPending(u"cloud/T/top.tasm"_s);
        WaitForTheNextSecond();
        outcome.results.append(Text(front.RepathFiles(Root()->GetId())));
        FileLinkImporter canceled(std::make_shared<PollCounter>(30));
        outcome.results.append(
            Text(canceled.CopyToCloudCacheFolder(sources, Path(u"cloud/U"_s), false, {}, {})));
        Look(outcome);
        return outcome;
    }
    std::shared_ptr<SyncItem> Root() const
    {
        return SyncFolderManagerLib::FolderManager::GetInstance()->GetSyncRootFolder(
            Path(u"cloud"_s));
    }
    void MarkPending(const QString& name)
    {
        const auto item =
            Database().GetSyncItem(Path(name), true, 7, SyncServices::FileItem::ItemOnly);
        ASSERT_NE(item, nullptr);
        item->SetSyncOption(item->GetSyncOption() | SyncItem::RepathPending);
        ASSERT_TRUE(Database().AddOrUpdateFileConfiguration(item));
    }
    void Look(Outcome& outcome) const
    {
        outcome.files = tree.Contents(folder);
        outcome.files.removeIf(
            [](const auto& file) { return file.key().startsWith(u"sync.db"_s); });
        for (const auto& item : Database().GetAllItems(7)) {
            QString line =
                u"%1 %2"_s.arg(Inner(item->GetLocalPath())).arg(quint32(item->GetSyncOption()));
            for (const auto& link : item->GetFileLinks())
                line += u" [%1 %2 %3]"_s.arg(link.RefId, Inner(link.Path)).arg(link.ItemId);
            outcome.items.append(line);
        }
        for (const auto& row : Database().GetFileCopyHistoryByAuthenticationId(7))
            outcome.history.append(
                u"%1 -> %2"_s.arg(Inner(row->GetSourceFile()), Inner(row->GetTargetFile())));
        outcome.items.sort();
        outcome.history.sort();
    }

    QString folder;
};

TEST_F(QuietJob, LeavesTheSameOnTheDiskAndInTheDatabaseAndWritesNoLine)
{
    Outcome loud;
    {
        StartIn(u"written"_s);
        const LogCapture log;
        loud = Run();
        EXPECT_GT(log.Lines().size(), 100);
        EXPECT_FALSE(log.Lines(u"ResolverPlugin"_s).isEmpty()) << "a plug-in says why it failed";
    }
    EXPECT_EQ(loud.results.mid(0, 4), (QStringList{u"true"_s, u"true"_s, u"true"_s, u"true"_s}));
    EXPECT_FALSE(loud.items.isEmpty());
    EXPECT_FALSE(loud.history.isEmpty());
    StartIn(u"silent"_s);
    const LogCapture log(log4cplus::OFF_LOG_LEVEL);
    const Outcome quiet = Run();
    EXPECT_EQ(log.Lines(), QStringList());
    EXPECT_EQ(quiet.results, loud.results);
    EXPECT_EQ(quiet.targets, loud.targets);
    EXPECT_EQ(quiet.files, loud.files);
    EXPECT_EQ(quiet.items, loud.items);
    EXPECT_EQ(quiet.history, loud.history);
}

} // namespace Halvern::Test
