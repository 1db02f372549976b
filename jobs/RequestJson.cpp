// SPDX-License-Identifier: Apache-2.0

#include "RequestJson.h"

#include "Results.h"

#include <QtCore/QJsonArray>

namespace Halvern::Jobs {

namespace {

QString WordOf(CollisionPolicy policy)
{
    switch (policy) {
    case CollisionPolicy::Stop:
        return QStringLiteral("stop");
    case CollisionPolicy::Keep:
        return QStringLiteral("keep");
    case CollisionPolicy::Rename:
        return QStringLiteral("rename");
    case CollisionPolicy::Replace:
        return QStringLiteral("replace");
    }
    return {};
}

QString WordOf(ConflictAnswer answer)
{
    switch (answer) {
    case ConflictAnswer::Stop:
        return QStringLiteral("stop");
    case ConflictAnswer::Keep:
        return QStringLiteral("keep");
    case ConflictAnswer::Rename:
        return QStringLiteral("rename");
    case ConflictAnswer::Replace:
        return QStringLiteral("replace");
    }
    return {};
}

} // namespace

QJsonObject JsonOf(const ImportRequest& request)
{
    const auto list = [](const QStringList& texts) { return QJsonArray::fromStringList(texts); };
    return {{QStringLiteral("sources"), list(request.sources)},
            {QStringLiteral("target"), request.target},
            {QStringLiteral("selectedCollisions"), WordOf(request.selectedCollisions)},
            {QStringLiteral("linkedCollisions"), WordOf(request.linkedCollisions)},
            {QStringLiteral("onConflict"), WordOf(request.onConflict)},
            {QStringLiteral("move"), request.move},
            {QStringLiteral("linksOnly"), request.linksOnly},
            {QStringLiteral("directLinksOnly"), request.directLinksOnly},
            {QStringLiteral("fileTypes"), list(request.fileTypes)},
            {QStringLiteral("exclude"), list(request.exclude)},
            {QStringLiteral("within"), list(request.within)},
            {QStringLiteral("checksum"), request.checksum},
            {QStringLiteral("force"), request.force},
            {QStringLiteral("reread"), request.reread},
            {QStringLiteral("selfContained"), request.selfContained},
            {QStringLiteral("prune"), request.prune},
            {QStringLiteral("flush"), request.flush},
            {QStringLiteral("commandLine"), list(request.commandLine)}};
}

QJsonObject CountsOf(const JobState& job)
{
    QMap<int, int> counts;
    for (const JobFile& file : job.files)
        if (IsReported(file))
            ++counts[static_cast<int>(OutcomeNow(file, job))];
    QJsonObject object;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        object.insert(QString::number(it.key()), it.value());
    return object;
}

} // namespace Halvern::Jobs
