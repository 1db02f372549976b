// SPDX-License-Identifier: Apache-2.0

#include "isolation/Description.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace Halvern::Isolation {

namespace {

const QString Program = QStringLiteral("program");
const QString Library = QStringLiteral("library");
const QString Service = QStringLiteral("service");
const QString Layout = QStringLiteral("layout");
const QString Resolver = QStringLiteral("resolver");
const QString TimeLimit = QStringLiteral("timeLimit");
const QString MemoryLimit = QStringLiteral("memoryLimit");

} // namespace

QString NameOf(ServiceKind kind)
{
    return kind == ServiceKind::Layout ? Layout : Resolver;
}

std::optional<ServiceKind> ServiceKindOf(const QString& name)
{
    if (name == Layout)
        return ServiceKind::Layout;
    if (name == Resolver)
        return ServiceKind::Resolver;
    return std::nullopt;
}

bool Description::Save(const QString& file) const
{
    const QByteArray text = QJsonDocument(QJsonObject{{Program, program},
                                                      {Library, library},
                                                      {Service, NameOf(service)},
                                                      {TimeLimit, timeLimit},
                                                      {MemoryLimit, memoryLimit}})
                                .toJson();
    QFile target(file);
    return target.open(QFile::WriteOnly) && target.write(text) == text.size() && target.flush();
}

Description Description::Load(const QString& file)
{
    QFile source(file);
    if (!source.open(QFile::ReadOnly))
        return {};
    const QJsonObject object = QJsonDocument::fromJson(source.readAll()).object();
    return {object.value(Program).toString(), object.value(Library).toString(),
            ServiceKindOf(object.value(Service).toString()).value_or(ServiceKind::Resolver),
            object.value(TimeLimit).toInt(), object.value(MemoryLimit).toInteger()};
}

} // namespace Halvern::Isolation
