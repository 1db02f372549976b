// SPDX-License-Identifier: Apache-2.0

#include "Targets.h"

#include "Paths.h"
#include "RealPaths.h"

#include "base/FileStatus.h"
#include "base/LetterCase.h"
#include "base/SamePath.h"
#include "base/System.h"
#include "base/Units.h"
#include "base/WindowsNames.h"

#include <QtCore/QFileInfo>

namespace Halvern::Jobs {

namespace {

// Windows: MAX_PATH without its zero, and what folders need besides. POSIX: bytes of one name, and
// of a path without its zero.
constexpr qsizetype LongestWindowsPath = 32000;
constexpr qsizetype LongestName = 255;
constexpr qsizetype LongestPosixPath = 4095;

Remark ObjectionToLength(const QString& target)
{
    if (Base::ThisSystem == Base::System::Windows)
        return target.size() > LongestWindowsPath ? Remark::PathTooLong : Remark::None;
    for (const QString& name : target.split(u'/'))
        if (name.toUtf8().size() > LongestName)
            return Remark::NameRefused;
    return target.toUtf8().size() > LongestPosixPath ? Remark::PathTooLong : Remark::None;
}

} // namespace

TargetKeys::TargetKeys(const QString& cloudFolder) : m_cloudFolder(cloudFolder) {}

QString TargetKeys::Of(const QString& target) const
{
    if (Base::IgnoresLetterCase())
        return FoldedKey(target);
    if (!target.startsWith(m_cloudFolder + u'/'))
        return target;
    const qsizetype slash = target.lastIndexOf(u'/');
    const Folder folder = FolderAt(target.first(slash));
    const QString name = target.mid(slash + 1);
    return folder.key + u'/' + (folder.ignoresCase ? FoldedKey(name) : name);
}

/// A folder that does not exist yet will be as that around it.
TargetKeys::Folder TargetKeys::FolderAt(const QString& path) const
{
    const auto known = m_folders.constFind(path);
    if (known != m_folders.constEnd())
        return *known;
    Folder folder{path, false};
    if (path.size() > m_cloudFolder.size()) {
        folder.key = Of(path);
        folder.ignoresCase = FolderAt(FolderAbove(path)).ignoresCase;
    }
    folder.ignoresCase = Base::FolderIgnoresLetterCase(Native(path)).value_or(folder.ignoresCase);
    m_folders.insert(path, folder);
    return folder;
}

void TargetOwners::Add(const JobFile& file)
{
    const QString key = m_keys.Of(file.target);
    if (!m_owners.contains(key))
        m_owners.insert(key, &file);
}

const JobFile* TargetOwners::OtherOwner(const JobFile& file) const
{
    const JobFile* owner = m_owners.value(m_keys.Of(file.target));
    return owner && owner != &file ? owner : nullptr;
}

bool TargetOwners::IsOwned(const QString& target) const
{
    return m_owners.contains(m_keys.Of(target));
}

Remark ObjectionToTarget(const QString& target, const QString& cloudFolder)
{
    if (target.isEmpty())
        return Remark::NoTarget;
    if (!PathKey(target).startsWith(PathKey(cloudFolder + u'/')))
        return Remark::OutsideCloudFolder;
    if (!Base::ForbiddenName(Base::Units(target)).empty())
        return Remark::NameRefused;
    return ObjectionToLength(target);
}

Remark ObstacleOnTheWay(const QString& target, const QString& cloudFolder, QString& detail)
{
    QString folder = cloudFolder;
    const QStringList names = target.mid(cloudFolder.size()).split(u'/', Qt::SkipEmptyParts);
    for (qsizetype i = 0; i + 1 < names.size(); ++i) {
        folder += u'/' + names.at(i);
        const QFileInfo info(folder);
        detail = folder;
        if (info.isSymbolicLink() || info.isJunction())
            return Remark::OutsideCloudFolder;
        if (!info.exists())
            break;
        if (!info.isDir())
            return Remark::FileInTheWay;
    }
    detail.clear();
    return Remark::None;
}

bool IsCutOff(const QString& target, const QString& cloudFolder)
{
    QString detail;
    return ObstacleOnTheWay(target, cloudFolder, detail) != Remark::None;
}

bool IsFileAt(const QString& target, const QString& cloudFolder)
{
    return Base::ReadLinkStatus(Native(target)).kind == Base::FileKind::File &&
           !IsCutOff(target, cloudFolder);
}

} // namespace Halvern::Jobs
