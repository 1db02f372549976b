// SPDX-License-Identifier: Apache-2.0

// What a base store holds, for those who want something back.

#include "base/FileAttributes.h"
#include "base/FileRenaming.h"
#include "services/BaseStore.h"
#include "services/Paths.h"
#include "services/Platform.h"
#include "services/StoreFiles.h"
#include "services/StoreNames.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <optional>
#include <string>

namespace Halvern::SyncServices {

namespace {

using Base::FileKind;
using Base::FileResult;

FileKind KindOf(const QString& path)
{
    return Base::ReadLinkStatus(Platform::NativePath(path)).kind;
}

QDateTime Date(qint64 nanoseconds)
{
    return QDateTime::fromMSecsSinceEpoch(nanoseconds / 1'000'000, Qt::UTC);
}

QString NearestFolder(const QString& path)
{
    QString folder = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    while (!folder.isEmpty() && !QFileInfo::exists(folder))
        folder = ParentPath(folder);
    return folder;
}

/// Copies of one path, and those of an older store that may be of it.
class CopiesOfPath
{
public:
    CopiesOfPath(const QString& store, const QString& path)
        : m_hash(StoreNames::PathHash(ExactPathKey(path))),
          m_foldedHash(StoreNames::PathHash(PathKey(path)))
    {
        // From then on the hash is that of another path, which differs in letter case.
        const Base::FileStatus other = Base::ReadLinkStatus(
            Platform::NativePath(JoinPath(StoreNames::Paths(store), m_foldedHash)));
        if (other.Exists())
            m_end = other.modified;
    }

    bool Has(const StoredCopies::Copy& copy) const
    {
        const QString hash = StoreNames::PathHashOf(copy.name);
        return hash == m_hash || (hash == m_foldedHash && (!m_end || copy.saved < *m_end));
    }

private:
    QString m_hash;
    QString m_foldedHash;
    std::optional<qint64> m_end;
};

/// A disk that gets full takes a part first, and says why it takes no more only then.
FileResult WriteAll(QFile& target, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const qint64 written = target.write(bytes.data(), bytes.size());
        if (written <= 0)
            return FileResult::Failed(target.errorString().toStdString());
        bytes = bytes.sliced(written);
    }
    return {};
}

FileResult Transfer(const OpenFile& copy, QFile& target, QByteArray& hash)
{
    constexpr std::size_t bufferSize = 1 << 18;
    std::string buffer(bufferSize, '\0');
    std::size_t got = 0;
    if (FileResult hashed = HashContent(copy, hash); !hashed)
        return hashed;
    for (quint64 offset = 0;; offset += got) {
        if (FileResult read =
                Base::ReadSome(copy.handle, offset, buffer.data(), buffer.size(), got);
            !read || got == 0)
            return read;
        if (FileResult written = WriteAll(target, {buffer.data(), static_cast<qsizetype>(got)});
            !written)
            return written;
    }
}

} // namespace

QList<StoredVersion> BaseStore::VersionsOf(const QString& path) const
{
    if (m_folder.isEmpty() || KindOf(m_folder) != FileKind::Folder)
        return {};
    const CopiesOfPath wanted(m_folder, QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    StoredCopies copies;
    copies.List(m_folder);
    QList<StoredVersion> versions;
    for (const auto& [order, copy] : copies.All())
        if (wanted.Has(copy))
            versions.prepend({Date(copy.saved), copy.size, PathOf(copy.name)});
    return versions;
}

FileResult BaseStore::Write(const StoredVersion& version, const QString& target)
{
    const std::lock_guard guard(m_mutex);
    OpenFile copy;
    const QString name = QFileInfo(version.storeFile).fileName();
    if (!StoreNames::IsCopyName(name))
        return FileResult::Failed("it is no copy of the base store");
    if (FileResult opened = copy.Open(PathOf(name)); !opened)
        return FileResult::Failed("the copy in the base store cannot be read: " + opened.Text());
    m_runs.Saved(name);
    // Made anew, with the rights that new files have.
    QFile file(target);
    if (!file.open(QFile::WriteOnly | QFile::NewOnly | QFile::Unbuffered))
        return FileResult::Failed(file.errorString().toStdString());
    QByteArray hash;
    FileResult written = Transfer(copy, file, hash);
    if (written && hash != StoreNames::ContentHashOf(name))
        written = FileResult::Failed("the copy in the base store is damaged");
    file.close();
    if (!written)
        Base::RemoveFile(Platform::NativePath(target));
    return written;
}

BaseStoreStatus BaseStore::Status() const
{
    const std::lock_guard guard(m_mutex);
    BaseStoreStatus status;
    status.folder = m_folder;
    status.limit = m_limit;
    status.available = m_limit;
    status.problem = QString::fromStdString(CheckUse(0).Text());
    if (status.problem.isEmpty())
        status.problem = FolderFault();
    if (!status.problem.isEmpty() || KindOf(m_folder) != FileKind::Folder)
        return status;
    StoredCopies copies;
    copies.List(m_folder);
    const qint64 oldestStart = m_runs.OldestStart();
    for (const auto& [order, copy] : copies.All())
        if (copy.saved >= oldestStart || m_runs.HasSaved(copy.name))
            status.available -= copy.size;
    status.available = std::max<qint64>(0, status.available);
    status.used = copies.Total();
    return status;
}

QString BaseStore::FolderFault() const
{
    for (const QString& folder :
         {m_folder, StoreNames::Paths(m_folder), StoreNames::Runs(m_folder)}) {
        const FileKind kind = KindOf(folder);
        if (kind != FileKind::Folder && kind != FileKind::Missing)
            return QStringLiteral("the base store %1 is %2")
                .arg(folder, kind == FileKind::Link ? QStringLiteral("a symbolic link")
                                                    : QStringLiteral("no folder"));
        if (!Base::MayAddTo(Platform::NativePath(NearestFolder(folder))))
            return QStringLiteral("the base store %1 cannot be written to").arg(folder);
    }
    return {};
}

} // namespace Halvern::SyncServices
