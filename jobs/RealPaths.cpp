// SPDX-License-Identifier: Apache-2.0

#include "RealPaths.h"

#include "base/NativePath.h"
#include "base/PathText.h"
#include "base/RealPath.h"
#include "base/Units.h"

namespace Halvern::Jobs {

namespace {

QString RealPath(const QString& path)
{
    const std::filesystem::path real = Base::RealPath(Base::NativePath(Base::Units(path)));
    return QStringView(Base::PathText(real)).toString();
}

QString Join(const QString& folder, const QString& name)
{
    return QStringView(Base::JoinPath(Base::Units(folder), Base::Units(name))).toString();
}

} // namespace

QString RealPaths::OfFile(const QString& path)
{
    const QString folder = FolderAbove(path);
    if (folder.isEmpty())
        return OfFolder(path);
    if (Base::MayLeadElsewhere(Base::NativePath(Base::Units(path))))
        if (QString real = RealPath(path); !real.isEmpty())
            return real;
    return Join(OfFolder(folder), NameOf(path));
}

QString RealPaths::OfFolder(const QString& folder)
{
    if (const auto known = m_folders.constFind(folder); known != m_folders.constEnd())
        return *known;
    QString real = RealPath(folder);
    if (real.isEmpty()) {
        const QString above = FolderAbove(folder);
        real = above.isEmpty() ? folder : Join(OfFolder(above), NameOf(folder));
    }
    return *m_folders.insert(folder, real);
}

QString FolderAbove(const QString& path)
{
    return QStringView(Base::ParentPath(Base::Units(path))).toString();
}

QString NameOf(const QString& path)
{
    return path.mid(path.lastIndexOf(u'/') + 1);
}

QString NearestOf(const QSet<QString>& folders, const QString& path)
{
    QString at = path;
    while (!at.isEmpty() && !folders.contains(at))
        at = FolderAbove(at);
    return at;
}

} // namespace Halvern::Jobs
