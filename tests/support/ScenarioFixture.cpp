// SPDX-License-Identifier: Apache-2.0

#include "ScenarioFixture.h"

#include <QtCore/QDirIterator>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>

#include <algorithm>

namespace Halvern::Test {

ReportedFile ImportReport::Of(const QString& source) const
{
    const auto found = std::find_if(files.begin(), files.end(), [&](const ReportedFile& file) {
        return file.source == source;
    });
    if (found != files.end())
        return *found;
    ReportedFile none;
    none.status = u"none"_s;
    return none;
}

QStringList ImportReport::Statuses() const
{
    QStringList statuses;
    for (const ReportedFile& file : files)
        statuses.append(file.status);
    return statuses;
}

QStringList ImportReport::Lines() const
{
    QStringList lines;
    for (const ReportedFile& file : files)
        lines.append(file.status + u' ' + file.source +
                     (file.target.isEmpty() ? QString() : u" -> "_s + file.target) +
                     (file.reason.isEmpty() ? QString() : u": "_s + file.reason));
    return lines;
}

void PrintTo(const ImportReport& report, std::ostream* out)
{
    PrintTo(report.result, out);
}

ImportReport ScenarioFixture::Report(const QStringList& arguments) const
{
    return ReportOf(Import(arguments + QStringList{u"--json"_s}));
}

ImportReport ScenarioFixture::ReportOf(const CommandResult& result) const
{
    ImportReport report;
    report.result = result;
    report.exitCode = result.exitCode;
    const QString root = tree.Path() + u'/';
    const auto relative = [&](const QJsonValue& path) {
        const QString text = path.toString();
        return text.startsWith(root) ? text.mid(root.size()) : text;
    };
    for (const QJsonObject& line : result.Json()) {
        const QString event = line[u"event"].toString();
        if (event == u"file")
            report.files.append({line[u"status"].toString(), relative(line[u"source"]),
                                 relative(line[u"target"]), line[u"reason"].toString(),
                                 line[u"outside"].toBool(), line[u"moved"].toBool(),
                                 line[u"remark"].toString(), line[u"sourceStays"].toString(),
                                 relative(line[u"staysFor"])});
        else if (event == u"conflict")
            report.conflicts.append(line);
        else if (event == u"summary")
            report.summary = line;
        else
            report.others.append(line);
    }
    return report;
}

CommandResult ScenarioFixture::Corsync(const QString& command, const QStringList& arguments) const
{
    QStringList all = ImportArguments(arguments);
    all.first() = command;
    return Run(all);
}

void ScenarioFixture::Design(const QString& file, const QStringList& links,
                             const QByteArray& content)
{
    tree.File(file, DesignFile(file, links, content));
}

QStringList ScenarioFixture::LinksOf(const QString& file) const
{
    return LinksIn(file, tree.Read(file));
}

QMap<QString, FileStamp> ScenarioFixture::Stamps(const QString& folder) const
{
    return StampsBelow(tree.Path(folder));
}

void ScenarioFixture::Save(const QString& file, const QByteArray& content)
{
    const qint64 before = ModifiedNanoseconds(tree.Path(file));
    tree.File(file, content);
    const qint64 after = ModifiedNanoseconds(tree.Path(file));
    SetModifiedNanoseconds(tree.Path(file), std::max(after, before + 2'000'000'000));
}

void ScenarioFixture::SaveUnnoticed(const QString& file, const QByteArray& content)
{
    const qint64 before = ModifiedNanoseconds(tree.Path(file));
    tree.File(file, content);
    SetModifiedNanoseconds(tree.Path(file), before);
}

bool ScenarioFixture::BaseStoreHolds(const QByteArray& content) const
{
    QDirIterator files(tree.Path(u"sync.db.base"_s), QDir::Files | QDir::Hidden,
                       QDirIterator::Subdirectories);
    while (files.hasNext())
        if (StampOf(files.next()).content == content)
            return true;
    return false;
}

QStringList ScenarioFixture::Leftovers() const
{
    static const QRegularExpression pattern(
        u"(^|/)(\\.corsync-|\\.copy-)[^/]*$|\\.(tmp|rewritten)$"_s);
    QStringList found;
    for (const QString& folder : {u"cloud"_s, u"work"_s, u"outside"_s})
        found += Stamps(folder).keys().filter(pattern);
    return found;
}

} // namespace Halvern::Test
