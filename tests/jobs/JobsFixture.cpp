// SPDX-License-Identifier: Apache-2.0

#include "JobsFixture.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

QString OutcomeName(Jobs::Outcome outcome)
{
    static const QStringList names{
        u"copied"_s,  u"moved"_s,     u"replaced"_s, u"updated"_s, u"renamed"_s, u"kept"_s,
        u"left"_s,    u"unchanged"_s, u"in place"_s, u"skipped"_s, u"locked"_s,  u"missing"_s,
        u"refused"_s, u"url"_s,       u"orphaned"_s, u"pruned"_s,  u"failed"_s,  u"not done"_s};
    return names.at(int(outcome));
}

QStringList LinesOf(const QList<Jobs::FileResult>& results, const FileTree& tree)
{
    QStringList lines;
    for (const Jobs::FileResult& result : results) {
        QString line =
            OutcomeName(result.outcome) + u' ' + result.source + u" -> "_s + result.target;
        if (result.sourceDeleted)
            line += u" (source deleted)"_s;
        if (!result.linkedFrom.isEmpty())
            line += u" linked from "_s + result.linkedFrom.join(u", "_s);
        if (result.remark != Jobs::Remark::None)
            line += u" remark "_s + QString::number(int(result.remark));
        for (const FileLink::Problem& problem : result.problems)
            line += u": "_s + problem.text;
        lines.append(line.replace(tree.Path() + u'/', QString()));
    }
    return lines;
}

JobsFixture::JobsFixture()
{
    tree.Folder(u"work"_s);
    RegisterTestResolver(tree, u"plugins"_s);
}

SyncServices::ServicesSettings JobsFixture::Settings() const
{
    SyncServices::ServicesSettings settings;
    settings.cloudCacheFolder = tree.Path(u"cloud"_s);
    settings.databaseFile = tree.Path(u"sync.db"_s);
    // Plug-ins take orders from the test; and its program is not the product's.
    settings.isolatePlugins = u"never"_s;
    return settings;
}

QStringList JobsFixture::PluginFolders() const
{
    return {tree.Path(u"plugins"_s), TestPluginFolder(), QStringLiteral(PLUGIN_REGISTRATIONS),
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
    for (const QString& name : {u"cloud"_s, u"sync.db"_s, u"sync.db-wal"_s, u"sync.db-shm"_s})
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
        tree.File(u"work/shed"_s + file.fileName().mid(from.size()), file.readAll());
    }
    tree.Remove(u"work/shed/textures/Poster (spring).png"_s);
}

Jobs::ImportRequest JobsFixture::Request(const QStringList& sources, const QString& target) const
{
    Jobs::ImportRequest request;
    for (const QString& source : sources)
        request.sources.append(tree.Path(u"work/"_s + source));
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
