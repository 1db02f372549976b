// SPDX-License-Identifier: Apache-2.0

// What a mapping asks the disk, and the matching of link paths.

#include "syncservices/FileMapping.h"

#include "base/FileStatus.h"
#include "base/SamePath.h"
#include "base/Units.h"
#include "services/Paths.h"
#include "services/Platform.h"
#include "syncservices/FolderManager.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace Halvern::SyncServices {

namespace {

using Base::FileStatus;
using Base::Units;
using SyncFolderManagerLib::FolderManager;

FileStatus Identify(const QString& path)
{
    return path.isEmpty() || IsUrlLike(path) ? FileStatus()
                                             : Base::ReadFileStatus(Platform::NativePath(path));
}

/// Two paths lead to one file. Hard links are two files here: replacing one leaves the other alone.
bool IsOneFile(const QString& first, const QString& second)
{
    // The target is asked first: it usually does not exist, and then nothing else is.
    const FileStatus b = Identify(second);
    if (!b.Exists())
        return false;
    const FileStatus a = Identify(first);
    if (!a.Exists() || a.device != b.device || a.index != b.index)
        return false;
    // Without a second name it is one file, even where the canonical paths differ (a folder mounted
    // twice, a disk that ignores letter case). Size and time guard against file systems that make
    // up their numbers.
    if ((a.names == 1 || a.kind == Base::FileKind::Folder) && a.size == b.size &&
        a.modified == b.modified)
        return true;
    return QFileInfo(first).canonicalFilePath() == QFileInfo(second).canonicalFilePath();
}

bool IsInCloudCacheFolder(const QString& path)
{
    const FolderManager* manager = FolderManager::GetInstance();
    return manager != nullptr && manager->IsCloudCacheFolderPath(path);
}

QString ResolveAgainst(const QString& folder, const QString& path)
{
    const QString cleaned = QDir::cleanPath(path);
    if (QDir::isAbsolutePath(cleaned) || cleaned.contains(u':'))
        return cleaned;
    return QDir::cleanPath(folder + u'/' + cleaned);
}

/// Finds the links of one file that name one path.
class LinkMatcher
{
public:
    LinkMatcher(const QString& holder, const QString& path)
        : m_folder(holder.left(qMax<qsizetype>(0, holder.lastIndexOf(u'/')))), m_path(path),
          m_resolved(ResolveAgainst(m_folder, path)), m_name(NameOf(m_resolved))
    {}

    bool Matches(const QString& link) const
    {
        if (link.compare(m_path, Qt::CaseInsensitive) == 0)
            return true;
        // Every member of a job is asked at a rename: few links get further than this.
        const QStringView name = NameOf(link);
        if (!name.isEmpty() && name != u"." && name != u".." &&
            name.compare(m_name, Qt::CaseInsensitive) != 0)
            return false;
        return ResolveAgainst(m_folder, link).compare(m_resolved, Qt::CaseInsensitive) == 0;
    }

private:
    static QStringView NameOf(const QString& path)
    {
        qsizetype start = path.size();
        while (start > 0 && path.at(start - 1) != u'/' && path.at(start - 1) != u'\\')
            --start;
        return QStringView(path).mid(start);
    }

    QString m_folder;
    QString m_path;
    QString m_resolved;
    QStringView m_name;
};

} // namespace

bool FileMapping::IsFolder() const
{
    return HasFlag(Folder) || Identify(m_source).kind == Base::FileKind::Folder;
}

bool FileMapping::AreSourceAndTargetSame() const
{
    if (m_source.isEmpty() || m_target.isEmpty())
        return false;
    const QString source = QDir::cleanPath(m_source);
    const QString target = QDir::cleanPath(m_target);
    return Base::IsSamePath(Units(source), Units(target)) || IsOneFile(source, target);
}

bool FileMapping::ExistsInTarget() const
{
    return Identify(m_target).Exists();
}

bool FileMapping::IsSourceFileInCloudCacheFolder() const
{
    return IsInCloudCacheFolder(m_source);
}

bool FileMapping::IsTargetFileInCloudCacheFolder() const
{
    return IsInCloudCacheFolder(m_target);
}

bool FileMapping::ChangeSourceFileLink(const QString& from, const QString& to)
{
    if (from.isEmpty())
        return false;
    const LinkMatcher matcher(m_source, from);
    bool found = false;
    for (qsizetype i = 0; i < m_sourceLinks.size(); ++i) {
        if (!matcher.Matches(m_sourceLinks.at(i).Path))
            continue;
        m_sourceLinks[i].Path = to;
        found = true;
    }
    return found;
}

FileMapping::FileProperties FileMapping::ReadProperties(const QString& path)
{
    if (path.isEmpty() || IsUrlLike(path))
        return {};
    const Platform::FileState state = Platform::ReadFileState(path);
    return {state.lastModified, state.size};
}

void FileMapping::UpdateSourceFileProperties()
{
    m_sourceProperties = ReadProperties(m_source);
}

void FileMapping::UpdateTargetFileProperties()
{
    m_targetProperties = ReadProperties(m_target);
}

} // namespace Halvern::SyncServices
