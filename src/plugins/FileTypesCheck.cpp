// SPDX-License-Identifier: Apache-2.0

#include "plugins/RegistrationCheck.h"

#include <algorithm>

namespace Halvern::FileLink {

namespace {

/// What keeps a text from being the extension of any file; empty when nothing does.
QString WhyNoExtension(const QString& type)
{
    const auto holdsAny = [&](const QString& characters) {
        return std::any_of(type.cbegin(), type.cend(),
                           [&](QChar character) { return characters.contains(character); });
    };
    if (std::any_of(type.cbegin(), type.cend(), [](QChar c) { return c.isSpace(); }))
        return QStringLiteral("separate types by a comma, without blanks");
    if (holdsAny(QStringLiteral(";|")))
        return QStringLiteral("separate types by a comma");
    if (holdsAny(QStringLiteral("*?")))
        return QStringLiteral("write the extension alone, without a pattern");
    if (holdsAny(QStringLiteral(".")))
        return QStringLiteral("write what follows the last dot of a file name");
    if (holdsAny(QStringLiteral("/\\:\"()")))
        return QStringLiteral("write extensions only");
    return {};
}

/// The types as their author means them: a dot in front belongs to none.
QStringList MeantTypes(const QString& written)
{
    QStringList types = written.split(u',', Qt::SkipEmptyParts);
    for (QString& type : types)
        if (type.startsWith(u'.'))
            type.remove(0, 1);
    types.removeAll(QString());
    return types;
}

QString CheckType(const QString& type, PluginType service)
{
    if (type == QStringLiteral("*"))
        return service == PluginType::FileLinkResolver
                   ? QString()
                   : QStringLiteral("FileTypes: \"*\" means every type in a FileLinkResolver only, "
                                    "a FileLayout has to name its types");
    const QString reason = WhyNoExtension(type);
    if (reason.isEmpty())
        return {};
    return QStringLiteral("FileTypes: no file has the type \"%1\", %2").arg(type, reason);
}

QStringList RepeatedTypes(const QStringList& types)
{
    QStringList once;
    QStringList repeated;
    for (const QString& type : types) {
        QStringList& list = once.contains(type, Qt::CaseInsensitive) ? repeated : once;
        if (!list.contains(type, Qt::CaseInsensitive))
            list.append(type);
    }
    return repeated;
}

} // namespace

QStringList CheckFileTypes(const QString& written, PluginType service)
{
    const QStringList types = MeantTypes(written);
    if (types.isEmpty())
        return {QStringLiteral("FileTypes: \"%1\" names no type").arg(written)};
    QStringList sentences;
    for (const QString& type : types)
        sentences.append(CheckType(type, service));
    for (const QString& type : RepeatedTypes(types))
        sentences.append(QStringLiteral("FileTypes: \"%1\" is named twice").arg(type));
    if (service == PluginType::FileLinkResolver && types.size() > 1 &&
        types.contains(QStringLiteral("*")))
        sentences.append(QStringLiteral("FileTypes: with \"*\" the resolver is the last resort for "
                                        "every type, those named beside it too"));
    sentences.removeAll(QString());
    return sentences;
}

} // namespace Halvern::FileLink
