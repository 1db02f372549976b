// SPDX-License-Identifier: Apache-2.0

#include "syncservices/FileMapping.h"

#include <QtCore/QStringList>

#include <atomic>
#include <utility>

namespace Halvern::SyncServices {

namespace {

std::atomic<quint64> sourcePathRevision{0};
std::atomic<quint64> targetPathRevision{0};

struct FlagName
{
    FileMapping::FileMappingFlag flag;
    const char* name;
};

constexpr FlagName flagNames[] = {
    {FileMapping::Selected, "Selected"},
    {FileMapping::Folder, "Folder"},
    {FileMapping::NestedFolder, "NestedFolder"},
    {FileMapping::Unchanged, "Unchanged"},
    {FileMapping::SameSourceAndTarget, "SameSourceAndTarget"},
    {FileMapping::Collision, "Collision"},
    {FileMapping::SourceMissing, "SourceMissing"},
    {FileMapping::NoCopy, "NoCopy"},
    {FileMapping::SkipFileLinks, "SkipFileLinks"},
    {FileMapping::NotFilePath, "NotFilePath"},
    {FileMapping::RenameOnCollision, "RenameOnCollision"},
    {FileMapping::NeedsRepath, "NeedsRepath"},
    {FileMapping::Repathed, "Repathed"},
    {FileMapping::Copied, "Copied"},
    {FileMapping::ServicesOption, "ServicesOption"},
    {FileMapping::IncludeInDatabase, "IncludeInDatabase"},
    {FileMapping::KeepTargetName, "KeepTargetName"},
    {FileMapping::FileLinksNotSupported, "FileLinksNotSupported"},
};

/// Counts a change in `revision` unless nothing changes.
void ChangePath(QString& path, const QString& value, std::atomic<quint64>& revision)
{
    if (path == value)
        return;
    path = value;
    revision.fetch_add(1, std::memory_order_relaxed);
}

} // namespace

FileMapping::FileMapping(QString source, QString target, int authenticationId)
    : m_source(std::move(source)), m_target(std::move(target)), m_authenticationId(authenticationId)
{}

FileMapping::~FileMapping() = default;

void FileMapping::SetFlag(FileMappingFlag flags, bool on)
{
    m_flags = on ? m_flags | flags : m_flags & ~flags;
}

bool FileMapping::HasFlag(FileMappingFlag flags) const
{
    return (m_flags & flags) == flags;
}

bool FileMapping::HasFlagAny(FileMappingFlag flags) const
{
    return (m_flags & flags) != NoFlag;
}

void FileMapping::SetFlagAll(FileMappingFlag flags)
{
    m_flags = flags;
}

FileMapping::FileMappingFlag FileMapping::GetFlag() const
{
    return m_flags;
}

QString FileMapping::GetFlagName() const
{
    QStringList names;
    for (const FlagName& entry : flagNames)
        if (HasFlag(entry.flag))
            names.append(QString::fromLatin1(entry.name));
    return names.join(QStringLiteral(", "));
}

QString FileMapping::GetSourceFile() const
{
    return m_source;
}

void FileMapping::SetSourceFile(const QString& path)
{
    ChangePath(m_source, path, sourcePathRevision);
}

QString FileMapping::GetTargetFile() const
{
    return m_target;
}

bool FileMapping::SetTargetFile(const QString& path, bool replace)
{
    if (!replace && HasTargetFile())
        return false;
    ChangePath(m_target, path, targetPathRevision);
    return true;
}

bool FileMapping::HasTargetFile() const
{
    return !m_target.isEmpty();
}

QList<FileLink> FileMapping::GetSourceFileLinks() const
{
    return m_sourceLinks;
}

void FileMapping::SetSourceFileLinks(const QList<FileLink>& links)
{
    m_sourceLinks = links;
}

void FileMapping::ClearSourceFileLinks()
{
    m_sourceLinks.clear();
}

QList<FileLink> FileMapping::GetTargetFileLinks() const
{
    return m_targetLinks;
}

void FileMapping::SetTargetFileLinks(const QList<FileLink>& links)
{
    m_targetLinks = links;
}

void FileMapping::ClearTargetFileLinks()
{
    m_targetLinks.clear();
}

QDateTime FileMapping::GetSourceFileLinksExtractedAtFileDate() const
{
    return m_sourceLinksExtractedAt;
}

void FileMapping::SetSourceFileLinksExtractedAtFileDate(const QDateTime& date)
{
    m_sourceLinksExtractedAt = date;
}

QDateTime FileMapping::GetTargetFileLinksExtractedAtFileDate() const
{
    return m_targetLinksExtractedAt;
}

void FileMapping::SetTargetFileLinksExtractedAtFileDate(const QDateTime& date)
{
    m_targetLinksExtractedAt = date;
}

QDateTime FileMapping::GetSourceFileLastModified() const
{
    return m_sourceProperties.lastModified;
}

QDateTime FileMapping::GetTargetFileLastModified() const
{
    return m_targetProperties.lastModified;
}

qint64 FileMapping::GetSourceFileSize() const
{
    return m_sourceProperties.size;
}

qint64 FileMapping::GetTargetFileSize() const
{
    return m_targetProperties.size;
}

void FileMapping::SetSourceFileProperties(const QDateTime& lastModified, qint64 size)
{
    m_sourceProperties = {lastModified, size};
}

void FileMapping::SetTargetFileProperties(const QDateTime& lastModified, qint64 size)
{
    m_targetProperties = {lastModified, size};
}

QDateTime FileMapping::GetCopyDate() const
{
    return m_copyDate;
}

void FileMapping::SetCopyDate(const QDateTime& date)
{
    m_copyDate = date;
}

void FileMapping::CopyFrom(const FileMapping* other, bool keepTarget, bool skipLinks)
{
    if (other == nullptr || other == this)
        return;
    m_flags = other->m_flags;
    m_sourceProperties = other->m_sourceProperties;
    m_targetProperties = other->m_targetProperties;
    m_copyDate = other->m_copyDate;
    if (!keepTarget)
        SetTargetFile(other->m_target, true);
    if (skipLinks)
        return;
    m_sourceLinks = other->m_sourceLinks;
    m_sourceLinksExtractedAt = other->m_sourceLinksExtractedAt;
    m_targetLinks = other->m_targetLinks;
    m_targetLinksExtractedAt = other->m_targetLinksExtractedAt;
}

Halvern::FileLink::FileSet* FileMapping::GetFileSet() const
{
    return m_fileSet;
}

void FileMapping::SetFileSet(Halvern::FileLink::FileSet* fileSet)
{
    m_fileSet = fileSet;
}

int FileMapping::GetAuthenticationId() const
{
    return m_authenticationId;
}

quint64 FileMapping::GetSourcePathRevision()
{
    return sourcePathRevision.load(std::memory_order_relaxed);
}

quint64 FileMapping::GetTargetPathRevision()
{
    return targetPathRevision.load(std::memory_order_relaxed);
}

} // namespace Halvern::SyncServices
