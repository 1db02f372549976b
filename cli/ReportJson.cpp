// SPDX-License-Identifier: Apache-2.0

#include "Report.h"
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
    if (!result.linkedFrom.isEmpty())
        object.insert(QStringLiteral("linkedFrom"), QJsonArray::fromStringList(result.linkedFrom));
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
    if (!conflict.other.isEmpty())
        object.insert(QStringLiteral("other"), conflict.other);
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
    return {{QStringLiteral("event"), QStringLiteral("summary")},
            {QStringLiteral("files"), files},
            {QStringLiteral("counts"), counts},
            {QStringLiteral("conflicts"), summary.conflicts},
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

QJsonObject JsonProblem(const QString& text)
{
    return {{QStringLiteral("event"), QStringLiteral("problem")}, {QStringLiteral("text"), text}};
}

} // namespace Halvern::Cli
