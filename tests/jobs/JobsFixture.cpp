// SPDX-License-Identifier: Apache-2.0

#include "JobsFixture.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>

namespace Halvern::Test {

QString OutcomeName(Jobs::Outcome outcome)
{
    static const QStringList names{u"copied"_qs,  u"moved"_qs,     u"replaced"_qs, u"renamed"_qs,
                                   u"kept"_qs,    u"unchanged"_qs, u"in place"_qs, u"skipped"_qs,
                                   u"locked"_qs,  u"missing"_qs,   u"url"_qs,      u"failed"_qs,
                                   u"not done"_qs};
    return names.at(int(outcome));
}

QStringList LinesOf(const QList<Jobs::FileResult>& results, const FileTree& tree)
{
    QStringList lines;
    for (const Jobs::FileResult& result : results) {
        QString line = OutcomeName(result.outcome) + u' ' + result.source + u" -> "_qs + result.target;
        if (result.sourceDeleted)
            line += u" (source deleted)"_qs;
        if (!result.linkedFrom.isEmpty())
            line += u" linked from "_qs + result.linkedFrom.join(u", "_qs);
        if (result.remark != Jobs::Remark::None)
            line += u" remark "_qs + QString::number(int(result.remark));
        for (const FileLink::Problem& problem : result.problems)
            line += u": "_qs + problem.text;
        lines.append(line.replace(tree.Path() + u'/', QString()));
    }
    return lines;
}

JobsFixture::JobsFixture()
{
    tree.Folder(u"work"_qs);
    RegisterTestResolver(tree, u"plugins"_qs);
}

SyncServices::ServicesSettings JobsFixture::Settings() const
{
    SyncServices::ServicesSettings settings;
    settings.cloudCacheFolder = tree.Path(u"cloud"_qs);
    settings.databaseFile = tree.Path(u"sync.db"_qs);
    return settings;
}

QStringList JobsFixture::PluginFolders() const
{
    return {tree.Path(u"plugins"_qs), TestPluginFolder(), QStringLiteral(PLUGIN_REGISTRATIONS),
            QStringLiteral(PLUGIN_LIBRARIES)};
}

Jobs::Session& JobsFixture::Begin(Jobs::SessionUse use)
{
    session.reset();
    return session.emplace(Settings(), PluginFolders(), use);
}

void JobsFixture::StartOver()
{
    session.reset();
    for (const QString& name : {u"cloud"_qs, u"sync.db"_qs, u"sync.db-wal"_qs, u"sync.db-shm"_qs})
        if (tree.Exists(name))
            tree.Remove(name);
}

void JobsFixture::TakeGardenShed()
{
    const QString from = QStringLiteral(GARDEN_SHED);
    QDirIterator files(from, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        ASSERT_TRUE(file.open(QFile::ReadOnly)) << file.fileName().toStdString();
        tree.File(u"work/shed"_qs + file.fileName().mid(from.size()), file.readAll());
    }
}

Jobs::ImportRequest JobsFixture::Request(const QStringList& sources, const QString& target) const
{
    Jobs::ImportRequest request;
    for (const QString& source : sources)
        request.sources.append(tree.Path(u"work/"_qs + source));
    request.target = target;
    return request;
}

Jobs::JobResult JobsFixture::Import(const Jobs::ImportRequest& request)
{
    Jobs::ImportJob job(*session, request);
    job.MakePlan();
    return job.Execute();
}

void NotingObserver::PhaseBegun(Jobs::Phase phase, qint64 total)
{
    phases.append(phase);
    totals.insert(phase, total);
    doneBefore.insert(phase, done.size());
}

void NotingObserver::FileDone(const Jobs::FileResult& result)
{
    done.append(result);
}

void NotingObserver::ProblemFound(const FileLink::Problem& problem)
{
    problems.append(problem.text);
}

void NotingObserver::Progressed(const Jobs::Progress& now)
{
    progress.append(now);
}

} // namespace Halvern::Test
