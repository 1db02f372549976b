// SPDX-License-Identifier: Apache-2.0

#include "services/BaseStore.h"

#include "base/FileCopy.h"
#include "base/FileHandle.h"
#include "base/FileRenaming.h"
#include "base/FileStatus.h"
#include "services/Paths.h"
#include "services/Platform.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QCryptographicHash>
#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>

#include <atomic>
#include <string>
#include <string_view>

namespace Halvern::SyncServices {

namespace {

constexpr std::size_t bufferSize = 1 << 18;

/// Several times as fast as SHA-256 in Qt, and as strong.
constexpr auto contentHash = QCryptographicHash::Blake2b_256;

QString PathHash(const QString& path)
{
    const QByteArray key = PathKey(QFileInfo(path).absoluteFilePath()).toUtf8();
    return QString::fromLatin1(QCryptographicHash::hash(key, contentHash).left(16).toHex());
}

/// The names that this class gives. Anything else in the folder is somebody else's, and stays.
bool IsCopyName(const QString& name)
{
    static const QRegularExpression pattern(QStringLiteral("^[0-9a-f]{32}-[0-9a-f]{64}(\\..*)?$"));
    return pattern.match(name).hasMatch();
}

bool IsPartName(const QString& name)
{
    static const QRegularExpression pattern(QStringLiteral("^[0-9]+-[0-9]+-[0-9]+\\.part$"));
    return pattern.match(name).hasMatch();
}

/// The suffix of a file name, unless the copy's name would get too long with it.
QString ShortSuffix(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix();
    return suffix.isEmpty() || suffix.toUtf8().size() > 32 ? QString() : u'.' + suffix;
}

/// An open file, closed at the end of its life.
class OpenFile
{
public:
    OpenFile() = default;
    ~OpenFile() { Close(); }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    qint64 Size() const { return static_cast<qint64>(Base::ReadFileStatus(handle).size); }
    void Close()
    {
        if (handle != Base::NoHandle)
            Base::Close(handle);
        handle = Base::NoHandle;
    }

    Base::Handle handle = Base::NoHandle;
};

/// Hashes `source`; the bytes also go to `target` unless it is null. Empty on failure.
QByteArray HashAll(const OpenFile& source, const OpenFile* target)
{
    QCryptographicHash hash(contentHash);
    std::string buffer(bufferSize, '\0');
    std::size_t got = 0;
    for (quint64 offset = 0;; offset += got) {
        if (!Base::ReadSome(source.handle, offset, buffer.data(), buffer.size(), got))
            return {};
        if (got == 0)
            return hash.result();
        hash.addData(QByteArrayView(buffer.data(), static_cast<qsizetype>(got)));
        if (target != nullptr &&
            !Base::WriteAll(target->handle, std::string_view(buffer).substr(0, got)))
            return {};
    }
}

/// The hash of the content that `target` then holds; empty on failure.
QByteArray CopyContent(const OpenFile& source, const OpenFile& target)
{
    return Base::CloneBytes(source.handle, target.handle) ? HashAll(target, nullptr)
                                                          : HashAll(source, &target);
}

/// A file that is gone at the end of the scope, unless it was renamed before.
class TemporaryFile
{
public:
    explicit TemporaryFile(const QString& folder)
    {
        static std::atomic<quint64> counter{0};
        path = JoinPath(folder, QStringLiteral("%1-%2-%3.part")
                                    .arg(QDateTime::currentMSecsSinceEpoch())
                                    .arg(QCoreApplication::applicationPid())
                                    .arg(counter++));
    }
    ~TemporaryFile()
    {
        if (!m_made)
            return;
        file.Close();
        Base::RemoveFile(Platform::NativePath(path));
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool Make()
    {
        m_made = Base::CreateExclusively(Platform::NativePath(path), file.handle) &&
                 file.handle != Base::NoHandle;
        return m_made;
    }

    QString path;
    OpenFile file;

private:
    bool m_made = false;
};

void SetModifiedNow(const QString& path)
{
    QFile file(path);
    if (file.open(QFile::ReadWrite | QFile::ExistingOnly))
        file.setFileTime(QDateTime::currentDateTimeUtc(), QFile::FileModificationTime);
}

} // namespace

BaseStore::BaseStore(const QString& folder, qint64 limit) : m_folder(folder), m_limit(limit) {}

bool BaseStore::Save(const QString& path)
{
    const std::lock_guard lock(m_mutex);
    OpenFile source;
    if (m_folder.isEmpty() || m_limit <= 0 ||
        !Base::OpenForReading(Platform::NativePath(path), source.handle, Base::Links::Refuse) ||
        source.Size() > m_limit)
        return false;
    QString reason;
    TemporaryFile copy(m_folder);
    if (!Platform::MakeFolder(m_folder, &reason) || !copy.Make())
        return false;
    const QByteArray hash = CopyContent(source, copy.file);
    const qint64 size = copy.file.Size();
    copy.file.Close();
    if (hash.isEmpty() || size > m_limit)
        return false;
    return Keep(copy.path,
                PathHash(path) + u'-' + QString::fromLatin1(hash.toHex()) + ShortSuffix(path),
                size);
}

bool BaseStore::Keep(const QString& temporary, const QString& name, qint64 size)
{
    // Every eighth of the limit the folder is listed again, so that what other processes put there
    // is counted, at a cost that does not grow with the number of copies.
    if (m_addedSinceScan < 0 || m_addedSinceScan > m_limit / 8)
        Scan();
    const QFileInfo existing(PathOf(name));
    // A power cut may have left a copy without its bytes; then the new one replaces it.
    if (existing.isFile() && existing.size() == size)
        SetModifiedNow(existing.filePath());
    else if (!Base::Rename(Platform::NativePath(temporary), Platform::NativePath(PathOf(name))))
        return false;
    Record(name, size);
    RemoveOldest();
    return true;
}

void BaseStore::Scan()
{
    m_copies.clear();
    m_order.clear();
    m_total = 0;
    const QDateTime longAgo = QDateTime::currentDateTimeUtc().addSecs(-24 * 60 * 60);
    const QFileInfoList files =
        QDir(m_folder).entryInfoList(QDir::Files | QDir::Hidden, QDir::Time | QDir::Reversed);
    for (const QFileInfo& file : files) {
        if (IsCopyName(file.fileName()))
            Record(file.fileName(), file.size());
        else if (IsPartName(file.fileName()) && file.lastModified() < longAgo)
            QFile::remove(file.filePath()); // left by a process that was killed
    }
    m_addedSinceScan = 0;
}

void BaseStore::Record(const QString& name, qint64 size)
{
    Forget(name);
    m_copies.emplace(m_next, Copy{name, size});
    m_order.insert(name, m_next++);
    m_total += size;
    m_addedSinceScan += size;
}

void BaseStore::Forget(const QString& name)
{
    const auto order = m_order.constFind(name);
    if (order == m_order.constEnd())
        return;
    const auto copy = m_copies.find(*order);
    m_total -= copy->second.size;
    m_copies.erase(copy);
    m_order.erase(order);
}

void BaseStore::RemoveOldest()
{
    while (m_total > m_limit && m_copies.size() > 1) {
        const QString name = m_copies.begin()->second.name;
        QFile::remove(PathOf(name));
        Forget(name);
    }
}

QString BaseStore::PathOf(const QString& name) const
{
    return JoinPath(m_folder, name);
}

} // namespace Halvern::SyncServices
