// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ImporterFixture.h"
#include "LogCapture.h"

#include <functional>
#include <limits>

namespace Halvern::Test {

/// Shows every poll of a job to a watcher before it is answered.
class WatchedPolls : public FileLink::ICancelController
{
public:
    bool IsCancelRequested() override
    {
        ++polls;
        if (watch)
            watch(polls);
        const bool cancel = once ? polls == cancelAt : polls >= cancelAt;
        cancels += cancel;
        return cancel;
    }
    void Reset()
    {
        polls = cancels = 0;
        cancelAt = std::numeric_limits<int>::max();
        watch = nullptr;
    }

    std::function<void(int)> watch;
    int cancelAt = std::numeric_limits<int>::max();
    /// Asks to stop at that one poll, and never again.
    bool once = false;
    int polls = 0;
    int cancels = 0;
};

/// Jobs that are alike but for their names, and everything that a job can change as text. The job:
///
///     a.tasm -> lib/b.tasm -> lib/d.tlk       a.tasm and c.tlk are taken in the target folder,
///        \----> c.tlk                         and c.tlk was never copied before
///     Proj/p.tlk                              selected with its folder
class WatchedJobs : public ImporterFixture
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
        using namespace Qt::Literals::StringLiterals;
        const QString src = u"src/%1/"_s.arg(name);
        const QString cloud = u"cloud/%1/"_s.arg(name);
        tree.File(src + u"a.tasm"_s, "a\nlink 1 lib/b.tasm\nlink 2 c.tlk\n");
        tree.File(src + u"lib/b.tasm"_s, "b\nlink 1 d.tlk\n");
        tree.File(src + u"c.tlk"_s, "c")
            .File(src + u"lib/d.tlk"_s, "d")
            .File(src + u"Proj/p.tlk"_s, "p");
        tree.File(cloud + u"a.tasm"_s, "old a").File(cloud + u"c.tlk"_s, "old c");
        calls.Clear();
        return {name, {Source(name + u"/a.tasm"_s), Source(name + u"/Proj"_s)}, Cloud(name)};
    }

    /// Texts with the paths relative to the tree and without the job's name.
    QStringList Neutral(const QStringList& lines, const Job& job) const
    {
        QStringList result = Short(lines);
        for (QString& line : result)
            line.replace(u"src/%1"_s.arg(job.name), u"src"_s)
                .replace(u"cloud/%1"_s.arg(job.name), u"cloud"_s);
        return result;
    }

    /// What the job has changed so far: members, files, items, and the calls that plug-ins got.
    QStringList State(FileLinkImporterImp& importer, const Job& job)
    {
        QStringList lines;
        if (const auto set = importer.GetFileSet())
            for (const FileMappingPointer& file : set->GetFiles())
                lines.append(Describe(*file));
        for (const char* top : {"src/", "cloud/"}) {
            const QString folder = QString::fromLatin1(top) + job.name;
            const FileTree::Snapshot contents = tree.Contents(folder);
            for (auto file = contents.cbegin(); file != contents.cend(); ++file)
                lines.append(folder + u'/' + file.key() + u'=' + QString::fromUtf8(file.value()));
        }
        for (const auto& item : Database().GetAllItems(7))
            if (item->GetLocalPath().startsWith(job.target + u'/'))
                lines.append(u"item %1 %2 %3"_s.arg(item->GetLocalPath(),
                                                    QString::number(item->GetSyncOption(), 16),
                                                    Describe(item->GetFileLinks())));
        return Neutral(lines + calls.Calls(), job);
    }

    PluginCallLog calls;

private:
    static QString Describe(const QList<SyncServices::FileLink>& links)
    {
        QStringList texts;
        for (const SyncServices::FileLink& link : links)
            texts.append(link.RefId + u'=' + link.Path + QString(link.ItemId < 0 ? 0 : 1, u'*'));
        return texts.join(u',');
    }
    static QString Describe(const FileMapping& file)
    {
        QString dates;
        for (const QDateTime& date :
             {file.GetSourceFileLinksExtractedAtFileDate(),
              file.GetTargetFileLinksExtractedAtFileDate(), file.GetSourceFileLastModified(),
              file.GetTargetFileLastModified(), file.GetCopyDate()})
            dates += date.isValid() ? u'x' : u'-';
        return u"%1 -> %2 (%3) [%4] [%5] %6"_s.arg(
            file.GetSourceFile(), file.GetTargetFile(), file.GetFlagName(),
            Describe(file.GetSourceFileLinks()), Describe(file.GetTargetFileLinks()), dates);
    }
};

} // namespace Halvern::Test
