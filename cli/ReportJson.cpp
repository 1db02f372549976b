// SPDX-License-Identifier: Apache-2.0

#include "Report.h"

#include "ConflictText.h"
#include "Words.h"

#include <QtCore/QJsonArray>

namespace Halvern::Cli {

QJsonObject JsonOf(const Jobs::FileResult& result)
{
    QJsonObject object{{QStringLiteral("event"), QStringLiteral("file")},
                       {QStringLiteral("status"), NameOf(result.outcome)},
                       {QStringLiteral("source"), result.source}};
    if (ShowsTarget(result))
        object.insert(QStringLiteral("target"), result.target);
    if (result.sourceDeleted)
        object.insert(QStringLiteral("moved"), true);
    if (result.sourceStays != Jobs::SourceStays::No)
        object.insert(QStringLiteral("sourceStays"), NameOf(result.sourceStays));
    if (!result.staysFor.isEmpty())
        object.insert(QStringLiteral("staysFor"), result.staysFor);
    if (!result.linkedFrom.isEmpty())
        object.insert(QStringLiteral("linkedFrom"), QJsonArray::fromStringList(result.linkedFrom));
    if (result.outside)
        object.insert(QStringLiteral("outside"), true);
    if (result.isUnknownFormat)
        object.insert(QStringLiteral("unknownFormat"), true);
    if (result.remark != Jobs::Remark::None)
        object.insert(QStringLiteral("remark"), NameOf(result.remark));
    if (!result.detail.isEmpty())
        object.insert(QStringLiteral("detail"), result.detail);
    const QString reason = ReasonOf(result);
    if (!reason.isEmpty())
        object.insert(QStringLiteral("reason"), reason);
    return object;
}

QJsonObject JsonOf(const Jobs::Conflict& conflict)
{
    QJsonObject object{{QStringLiteral("event"), QStringLiteral("conflict")},
                       {QStringLiteral("kind"), NameOf(conflict.kind)},
                       {QStringLiteral("source"), conflict.source},
                       {QStringLiteral("target"), conflict.target},
                       {QStringLiteral("selected"), conflict.selected}};
    QJsonArray answers;
    for (const Jobs::ConflictAnswer answer : conflict.answers)
        answers.append(NameOf(answer));
    object.insert(QStringLiteral("answers"), answers);
    if (!conflict.other.isEmpty())
        object.insert(QStringLiteral("other"), conflict.other);
    if (conflict.sourceSide.modified.isValid())
        object.insert(QStringLiteral("sourceSide"), JsonOf(conflict.sourceSide));
    if (conflict.targetSide.modified.isValid())
        object.insert(QStringLiteral("targetSide"), JsonOf(conflict.targetSide));
    return object;
}

QJsonObject JsonOf(const Jobs::Finding& finding)
{
    QJsonObject object{{QStringLiteral("event"), QStringLiteral("finding")},
                       {QStringLiteral("kind"), NameOf(finding.kind)},
                       {QStringLiteral("path"), finding.path}};
    if (finding.needed > 0) {
        object.insert(QStringLiteral("needed"), finding.needed);
        object.insert(QStringLiteral("available"), finding.available);
    }
    return object;
}

QJsonObject JsonOf(const Jobs::Summary& summary)
{
    QJsonObject counts;
    qint64 files = 0;
    for (auto it = summary.counts.begin(); it != summary.counts.end(); ++it) {
        counts.insert(NameOf(it.key()), it.value());
        files += it.value();
    }
    QJsonObject unknownFormats;
    for (auto it = summary.unknownFormats.begin(); it != summary.unknownFormats.end(); ++it)
        unknownFormats.insert(it.key(), it.value());
    return {{QStringLiteral("event"), QStringLiteral("summary")},
            {QStringLiteral("files"), files},
            {QStringLiteral("counts"), counts},
            {QStringLiteral("conflicts"), summary.conflicts},
            {QStringLiteral("findings"), summary.findings.size()},
            {QStringLiteral("problems"), summary.filesWithProblems},
            {QStringLiteral("outside"), summary.outside},
            {QStringLiteral("unknownFormats"), unknownFormats},
            {QStringLiteral("exitCode"), int(ExitCodeOf(summary))}};
}

QJsonObject JsonOf(const Jobs::RegistrationFault& fault)
{
    QJsonObject object{{QStringLiteral("event"),
                        fault.isBroken ? QStringLiteral("problem") : QStringLiteral("warning")},
                       {QStringLiteral("file"), fault.file},
                       {QStringLiteral("text"), fault.text}};
    if (!fault.plugin.isEmpty())
        object.insert(QStringLiteral("plugin"), fault.plugin);
    return object;
}

QJsonObject JsonOf(const FileLink::Problem& problem)
{
    QJsonObject object = JsonProblem(problem.text);
    if (!problem.file.isEmpty())
        object.insert(QStringLiteral("file"), problem.file);
    if (!problem.plugin.isEmpty())
        object.insert(QStringLiteral("plugin"), problem.plugin);
    return object;
}

QJsonObject JsonProblem(const QString& text)
{
    return {{QStringLiteral("event"), QStringLiteral("problem")}, {QStringLiteral("text"), text}};
}

QJsonObject JsonWarning(const QString& text)
{
    return {{QStringLiteral("event"), QStringLiteral("warning")}, {QStringLiteral("text"), text}};
}

} // namespace Halvern::Cli
