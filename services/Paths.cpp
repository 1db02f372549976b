// SPDX-License-Identifier: Apache-2.0

#include "services/Paths.h"

#include "base/CaseFolding.h"
#include "base/PathText.h"
#include "base/SamePath.h"
#include "base/Units.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <utility>

namespace Halvern::SyncServices {

namespace {

using Base::Units;

QString Text(std::u16string_view text)
{
    return QStringView(text).toString();
}

QString NotAbsolute(const char* key, const QString& path)
{
    return QStringLiteral("The path of %1 is not absolute: %2. In a settings file write / or \\\\ "
                          "between folders, since a single \\ is lost.")
        .arg(QString::fromLatin1(key), path);
}

} // namespace

bool IsUrlLike(const QString& path)
{
    return Base::IsUrlLike(Units(path));
}

QString PathKey(const QString& path)
{
    const QString cleaned = QDir::cleanPath(path);
    return Text(Base::FoldCase(Units(cleaned)));
}

QString ExactPathKey(const QString& path)
{
    return Base::IgnoresLetterCase() ? PathKey(path) : QDir::cleanPath(path);
}

std::optional<QString> PathBelow(const QString& folder, const QString& path)
{
    const std::optional<std::u16string_view> below = Base::PathBelow(Units(folder), Units(path));
    return below ? std::optional(Text(*below)) : std::nullopt;
}

QString JoinPath(const QString& folder, const QString& below)
{
    return Text(Base::JoinPath(Units(folder), Units(below)));
}

QString ParentPath(const QString& path)
{
    return Text(Base::ParentPath(Units(path)));
}

QString PathFault(const ServicesSettings& settings)
{
    const std::pair<const char*, const QString&> paths[] = {
        {"cloudCacheFolder", settings.cloudCacheFolder},
        {"databaseFile", settings.databaseFile},
        {"baseStoreFolder", settings.baseStoreFolder},
        {"serviceFolder", settings.serviceFolder}};
    for (const auto& [key, path] : paths)
        if (Base::IsDriveRelative(Units(path)))
            return NotAbsolute(key, path);
    // A relative one would allow another folder wherever the program is started.
    for (const QString& folder : settings.allowedFolders)
        if (!Base::IsAbsolutePath(Units(folder)) || Base::IsDriveRelative(Units(folder)))
            return NotAbsolute("allowedFolders", folder);
    return {};
}

QString CanonicalPath(const QString& cleanedPath)
{
    QString below;
    for (QString existing = cleanedPath; !existing.isEmpty(); existing = ParentPath(existing)) {
        const QString canonical = QFileInfo(existing).canonicalFilePath();
        if (!canonical.isEmpty())
            return JoinPath(canonical, below);
        const QString name = existing.mid(existing.lastIndexOf(u'/') + 1);
        below = below.isEmpty() ? name : name + u'/' + below;
    }
    return cleanedPath;
}

} // namespace Halvern::SyncServices
