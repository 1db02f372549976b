// SPDX-License-Identifier: Apache-2.0

#include "services/BaseStore.h"

#include "services/Paths.h"
#include "services/Platform.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QCryptographicHash>
#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>

#include <atomic>

namespace Halvern::SyncServices {

namespace {

constexpr qint64 bufferSize = 1 << 18;

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

/// Hashes the rest of `source`; the bytes also go to `target` unless it is null. Empty on failure.
QByteArray HashRest(QFile& source, QFile* target)
{
    QCryptographicHash hash(contentHash);
    QByteArray buffer(bufferSize, Qt::Uninitialized);
    for (;;) {
        const qint64 size = source.read(buffer.data(), buffer.size());
        if (size < 0)
            return {};
        if (size == 0)
            return hash.result();
        const QByteArrayView bytes(buffer.constData(), size);
        hash.addData(bytes);
        if (target != nullptr && target->write(bytes.data(), size) != size)
            return {};
    }
}

/// The hash of the content that `target` then holds; empty on failure.
QByteArray CopyContent(QFile& source, QFile& target)
{
    if (Platform::CloneFile(source, target))
        return target.seek(0) ? HashRest(target, nullptr) : QByteArray();
    return HashRest(source, &target);
}

/// A file that is gone at the end of the scope, unless it was renamed before.
class TemporaryFile
{
public:
    explicit TemporaryFile(const QString& folder)
    {
        static std::atomic<quint64> counter{0};
        file.setFileName(JoinPath(folder, QStringLiteral("%1-%2-%3.part")
                                              .arg(QDateTime::currentMSecsSinceEpoch())
                                              .arg(QCoreApplication::applicationPid())
                                              .arg(counter++)));
    }
    ~TemporaryFile() { file.remove(); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool Open()
    {
        return file.open(QFile::ReadWrite | QFile::NewOnly | QFile::Unbuffered,
                         QFile::ReadOwner | QFile::WriteOwner);
    }

    QFile file;
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
    QFile source;
    if (m_folder.isEmpty() || m_limit <= 0 || !Platform::OpenRegularFile(path, source) ||
        source.size() > m_limit)
        return false;
    QString reason;
    TemporaryFile copy(m_folder);
    if (!Platform::MakeFolder(m_folder, &reason) || !copy.Open())
        return false;
    const QByteArray hash = CopyContent(source, copy.file);
    const qint64 size = copy.file.size();
    copy.file.close();
    if (hash.isEmpty() || copy.file.error() != QFile::NoError || size > m_limit)
        return false;
    return Keep(copy.file.fileName(),
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
    else if (!Platform::Rename(temporary, PathOf(name)))
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
