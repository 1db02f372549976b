// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/Export.h"
#include "syncservices/FileLink.h"

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::FileLink {
class FileSet;
}

namespace Halvern::SyncServices {

/// One source path paired with one target path, with flags and the links found in both files.
/// Mappings are shared through std::shared_ptr and used from one thread at a time. A mapping is a
/// record: nothing that is set here touches the disk or the database. Times are those of the file
/// system, sizes are in bytes.
class SYNCSERVICES_EXPORT FileMapping
{
public:
    /// DO NOT CHANGE THESE VALUES: hosts read them, and plug-ins see a subset renumbered.
    enum FileMappingFlag : quint32
    {
        NoFlag = 0,
        Selected = 0x00001,
        Folder = 0x00002,
        NestedFolder = 0x00004,
        Unchanged = 0x00008,
        SameSourceAndTarget = 0x00010,
        Collision = 0x00020,
        SourceMissing = 0x00040,
        NoCopy = 0x00080,
        SkipFileLinks = 0x00100,
        NotFilePath = 0x00200,
        RenameOnCollision = 0x00400,
        NeedsRepath = 0x00800,
        Repathed = 0x01000,
        Copied = 0x02000,
        ServicesOption = 0x04000,
        IncludeInDatabase = 0x08000,
        KeepTargetName = 0x10000,
        FileLinksNotSupported = 0x20000,
    };

    /// A mapping without flags. `target` may be empty (not assigned yet).
    FileMapping(QString source, QString target, int authenticationId);
    ~FileMapping();
    FileMapping(const FileMapping&) = delete;
    FileMapping& operator=(const FileMapping&) = delete;

    /// Sets or clears every bit of `flags`.
    void SetFlag(FileMappingFlag flags, bool on);
    /// True when every bit of `flags` is set.
    bool HasFlag(FileMappingFlag flags) const;
    /// True when at least one bit of `flags` is set.
    bool HasFlagAny(FileMappingFlag flags) const;
    /// Replaces the whole flag word.
    void SetFlagAll(FileMappingFlag flags);
    FileMappingFlag GetFlag() const;
    /// The names of the set flags in ascending order of value, joined by ", ".
    QString GetFlagName() const;

    /// Absolute path of the file or folder that is imported, or what a link leads to.
    QString GetSourceFile() const;
    void SetSourceFile(const QString& path);
    /// Absolute path that the copy gets; empty while not assigned.
    QString GetTargetFile() const;
    /// With `replace` false a target that is already set stays and the result is false; otherwise
    /// the target becomes `path` (empty clears it) and the result is true.
    bool SetTargetFile(const QString& path, bool replace);
    /// True when a target is assigned, whether or not it exists.
    bool HasTargetFile() const;

    /// True when the source is a folder: flagged `Folder`, or a directory on the disk.
    bool IsFolder() const;
    /// True when source and target name the same file: equal paths, or two paths that lead (through
    /// symbolic links or letter case) to one existing file.
    bool AreSourceAndTargetSame() const;
    /// True when a file or folder has the target path now.
    bool ExistsInTarget() const;
    /// True when the path is the cloud cache folder or lies in it; false while FolderManager is not
    /// initialised.
    bool IsSourceFileInCloudCacheFolder() const;
    bool IsTargetFileInCloudCacheFolder() const;

    /// The links of the source (target) file in the order of the file, as last set.
    QList<FileLink> GetSourceFileLinks() const;
    void SetSourceFileLinks(const QList<FileLink>& links);
    void ClearSourceFileLinks();
    QList<FileLink> GetTargetFileLinks() const;
    void SetTargetFileLinks(const QList<FileLink>& links);
    void ClearTargetFileLinks();
    /// Last-modified time that the file had when its links were taken; invalid when never.
    QDateTime GetSourceFileLinksExtractedAtFileDate() const;
    void SetSourceFileLinksExtractedAtFileDate(const QDateTime& date);
    QDateTime GetTargetFileLinksExtractedAtFileDate() const;
    void SetTargetFileLinksExtractedAtFileDate(const QDateTime& date);
    /// Replaces the path of every source link that names `from`, as written or resolved against
    /// the source file's folder, without regard to letter case. True when there was one.
    bool ChangeSourceFileLink(const QString& from, const QString& to);

    /// Times and sizes recorded by the two operations below; invalid and -1 before, and when the
    /// file did not exist then.
    QDateTime GetSourceFileLastModified() const;
    QDateTime GetTargetFileLastModified() const;
    qint64 GetSourceFileSize() const;
    qint64 GetTargetFileSize() const;
    /// Read the file's time and size from the disk.
    void UpdateSourceFileProperties();
    void UpdateTargetFileProperties();
    /// For the sync database, which restores what an earlier job recorded.
    void SetSourceFileProperties(const QDateTime& lastModified, qint64 size);
    void SetTargetFileProperties(const QDateTime& lastModified, qint64 size);

    /// When the copy was made; invalid when it was not.
    QDateTime GetCopyDate() const;
    void SetCopyDate(const QDateTime& date);

    /// Takes over flags, dates, sizes and, unless told otherwise, target path (`keepTarget`) and
    /// the links of both files with their extraction dates (`skipLinks`) of `other`. Source path,
    /// authentication id and file set stay. Null changes nothing.
    void CopyFrom(const FileMapping* other, bool keepTarget, bool skipLinks);

    /// The set that the mapping is a member of, or null; not owning. See FileSet for its lifetime.
    Halvern::FileLink::FileSet* GetFileSet() const;
    void SetFileSet(Halvern::FileLink::FileSet* fileSet);
    /// The user's authentication configuration that the mapping was made for.
    int GetAuthenticationId() const;

    /// Number of times that any mapping's source (target) path was changed in this process: an
    /// index by path that remembers it knows whether it is still right.
    static quint64 GetSourcePathRevision();
    static quint64 GetTargetPathRevision();

private:
    struct FileProperties
    {
        QDateTime lastModified;
        qint64 size = -1;
    };
    static FileProperties ReadProperties(const QString& path);

    QString m_source;
    QString m_target;
    FileMappingFlag m_flags = NoFlag;
    int m_authenticationId;
    QList<FileLink> m_sourceLinks;
    QDateTime m_sourceLinksExtractedAt;
    QList<FileLink> m_targetLinks;
    QDateTime m_targetLinksExtractedAt;
    FileProperties m_sourceProperties;
    FileProperties m_targetProperties;
    QDateTime m_copyDate;
    Halvern::FileLink::FileSet* m_fileSet = nullptr;
};

SYNCSERVICES_BIT_OPERATORS(FileMapping::FileMappingFlag)

} // namespace Halvern::SyncServices
