// SPDX-License-Identifier: Apache-2.0

#include "services/BaseStore.h"

#include "base/Directory.h"
#include "base/FileRenaming.h"
#include "services/Paths.h"
#include "services/Platform.h"
#include "services/StoreFiles.h"
#include "services/StoreNames.h"

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSet>

namespace Halvern::SyncServices {

namespace {

using Base::FileResult;

FileResult Failed(const QString& text)
{
    return FileResult::Failed(text.toStdString());
}

QString AbsolutePath(const QString& path)
{
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

FileResult OpenSource(const QString& path, OpenFile& source)
{
    if (Base::ReadLinkStatus(Platform::NativePath(path)).kind == Base::FileKind::Link)
        return Failed(QStringLiteral("it is a symbolic link"));
    const FileResult opened = source.Open(path);
    return opened ? opened : FileResult::Failed("it cannot be read: " + opened.Text());
}

bool HasContent(const QString& copy, const QByteArray& hash)
{
    OpenFile file;
    QByteArray found;
    return file.Open(copy) && HashContent(file, found) && found == hash;
}

/// Deletes what has stood in a folder for long and is not wanted.
template <typename IsWanted>
void RemoveStale(const QString& folder, IsWanted isWanted)
{
    const qint64 longAgo =
        QDateTime::currentDateTimeUtc().addSecs(-24 * 60 * 60).toMSecsSinceEpoch() * 1'000'000;
    Base::VisitNames(Platform::NativePath(folder), [&](const std::string& utf8) {
        const QString name = QString::fromStdString(utf8);
        const auto path = Platform::NativePath(JoinPath(folder, name));
        if (!isWanted(name) && Base::ReadLinkStatus(path).modified < longAgo)
            Base::RemoveFile(path);
        return true;
    });
}

} // namespace

BaseStore::BaseStore(const QString& folder, qint64 limit)
    : m_folder(folder), m_limit(limit), m_runs(folder)
{}

void BaseStore::BeginRun()
{
    const std::lock_guard guard(m_mutex);
    m_runs.Begin();
}

void BaseStore::EndRun()
{
    const std::lock_guard guard(m_mutex);
    m_runs.End();
}

FileResult BaseStore::Save(const QString& path, Care care, QString* copy)
{
    const std::lock_guard guard(m_mutex);
    OpenFile source;
    if (FileResult usable = CheckUse(0); !usable)
        return usable;
    if (FileResult opened = OpenSource(path, source); !opened)
        return opened;
    if (FileResult usable = CheckUse(source.Size()); !usable)
        return usable;
    if (FileResult prepared = Prepare(path, care); !prepared)
        return FileResult::Failed("the base store " + prepared.Text());
    PartFile part(m_folder);
    QByteArray hash;
    if (FileResult copied = Copy(source, part, hash, care); !copied)
        return copied;
    if (FileResult usable = CheckUse(part.file.Size()); !usable)
        return usable; // it has grown
    const QString pathHash = StoreNames::PathHash(ExactPathKey(AbsolutePath(path)));
    const QString name = StoreNames::CopyName(pathHash, hash, path);
    if (copy != nullptr)
        *copy = PathOf(name);
    return Keep(part, name, care);
}

FileResult BaseStore::CheckUse(qint64 size) const
{
    if (m_folder.isEmpty())
        return Failed(QStringLiteral("no old versions are kept: the database is in memory"));
    if (m_limit <= 0)
        return Failed(QStringLiteral("no old versions are kept: baseStoreLimit is 0"));
    if (size > m_limit)
        return Failed(QStringLiteral("it has %1 bytes, and the base store %2 may hold %3")
                          .arg(size)
                          .arg(m_folder)
                          .arg(m_limit));
    return {};
}

FileResult BaseStore::Prepare(const QString& path, Care care)
{
    if (FileResult made = MakeOwnFolder(m_folder); !made)
        return made;
    // What was saved before this run is known by its time: the run's own comes first.
    FileResult announced = m_runs.IsSecret() ? AnnounceRun() : FileResult();
    FileResult noted = NotePath(AbsolutePath(path));
    if (care == Care::Usual)
        return {};
    return announced ? noted : announced;
}

FileResult BaseStore::AnnounceRun()
{
    Base::HeldFile lock;
    FileResult held = HoldPatiently(lock, StoreNames::Lock(m_folder));
    return held ? m_runs.Announce() : held;
}

/// Before the first copy under the same hash is made: copies that are older came without a path.
FileResult BaseStore::NotePath(const QString& path) const
{
    const QString folder = StoreNames::Paths(m_folder);
    const QString name = JoinPath(folder, StoreNames::PathHash(ExactPathKey(path)));
    if (FileResult made = MakeOwnFolder(folder); !made)
        return made;
    if (Base::ReadLinkStatus(Platform::NativePath(name)).kind == Base::FileKind::File)
        return {};
    PartFile part(m_folder);
    FileResult written = part.Make();
    if (written)
        written = Base::WriteAll(part.file.handle, path.toStdString());
    if (written)
        written = part.MoveTo(name, false);
    return written ? written
                   : FileResult::Failed(m_folder.toStdString() + " cannot be written to",
                                        written.Code());
}

FileResult BaseStore::Copy(const OpenFile& source, PartFile& part, QByteArray& hash,
                           Care care) const
{
    const Base::FileStatus before = source.Status();
    FileResult copied = part.Make();
    if (copied)
        copied = CopyContent(source, part.file, hash);
    if (copied && care == Care::Lasting)
        copied = part.Flush();
    if (!copied)
        return FileResult::Failed("it cannot be copied to the base store " +
                                  m_folder.toStdString() + ": " + copied.Text());
    if (care != Care::Usual && source.Status() != before)
        return Failed(QStringLiteral("it changed while it was read"));
    return {};
}

FileResult BaseStore::Keep(PartFile& part, const QString& name, Care care)
{
    Base::HeldFile lock;
    const FileResult held = HoldPatiently(lock, StoreNames::Lock(m_folder));
    if (!held && care != Care::Usual)
        return FileResult::Failed("the base store " + held.Text());
    // Every eighth of the limit the folder is listed again, so that what other processes put there
    // is counted, at a cost that does not grow with the number of copies.
    if (m_addedSinceScan < 0 || m_addedSinceScan > m_limit / 8)
        Scan();
    const qint64 size = part.file.Size();
    QStringList victims;
    if (FileResult found = FindRoom(name, size, victims); !found)
        return found;
    if (FileResult placed = Place(part, name, care); !placed)
        return placed;
    m_copies.Record(
        {name, size, Base::ReadLinkStatus(Platform::NativePath(PathOf(name))).modified});
    m_runs.Saved(name);
    m_addedSinceScan += size;
    RemoveCopies(victims);
    return {};
}

FileResult BaseStore::Place(PartFile& part, const QString& name, Care care) const
{
    // A copy that is there already gets a new time this way; one that a power cut left without its
    // bytes gets them back.
    // Until it is flushed it must not take the place of one that is.
    const bool isThere = Base::ReadLinkStatus(Platform::NativePath(PathOf(name))).Exists();
    FileResult flushed = care == Care::Checked && isThere ? part.Flush() : FileResult();
    if (!flushed)
        return flushed;
    FileResult moved = part.MoveTo(PathOf(name), care == Care::Lasting);
    // Windows does not replace what somebody reads.
    if (moved || HasContent(PathOf(name), StoreNames::ContentHashOf(name)))
        return {};
    return FileResult::Failed("the base store " + m_folder.toStdString() + " cannot be written to",
                              moved.Code());
}

void BaseStore::Scan()
{
    m_copies.List(m_folder);
    m_runs.RemoveDead();
    // What processes left that were killed.
    RemoveStale(m_folder, [](const QString& name) { return !StoreNames::IsPartName(name); });
    QSet<QString> hashes;
    for (const auto& [order, copy] : m_copies.All())
        hashes.insert(StoreNames::PathHashOf(copy.name));
    RemoveStale(StoreNames::Paths(m_folder),
                [&](const QString& name) { return hashes.contains(name); });
    m_addedSinceScan = 0;
}

FileResult BaseStore::FindRoom(const QString& name, qint64 size, QStringList& victims)
{
    for (const bool isSecondLook : {false, true}) {
        if (isSecondLook)
            Scan();
        const qint64 excess = m_copies.Total() - m_copies.SizeOf(name) + size - m_limit;
        if (excess <= 0 || ChooseVictims(name, excess, victims) <= 0)
            return {};
    }
    return Failed(QStringLiteral("the base store %1 may hold %2 bytes, and there is no room for %3 "
                                 "more: what it holds belongs to imports that are under way")
                      .arg(m_folder)
                      .arg(m_limit)
                      .arg(size));
}

qint64 BaseStore::ChooseVictims(const QString& name, qint64 excess, QStringList& victims) const
{
    const qint64 oldestStart = m_runs.OldestStart();
    victims.clear();
    for (const auto& [order, copy] : m_copies.All()) {
        if (excess <= 0)
            break;
        if (copy.name == name || !MayGo(copy, oldestStart))
            continue;
        victims.append(copy.name);
        excess -= copy.size;
    }
    return excess;
}

bool BaseStore::MayGo(const StoredCopies::Copy& copy, qint64 oldestStart) const
{
    if (copy.saved >= oldestStart || m_runs.HasSaved(copy.name))
        return false;
    // Another process may have saved the same content again meanwhile, or have removed it.
    const Base::FileStatus now = Base::ReadLinkStatus(Platform::NativePath(PathOf(copy.name)));
    return !now.Exists() || now.modified == copy.saved;
}

void BaseStore::RemoveCopies(const QStringList& names)
{
    for (const QString& name : names) {
        const auto path = Platform::NativePath(PathOf(name));
        Base::RemoveFile(path);
        if (!Base::ReadLinkStatus(path).Exists())
            m_copies.Forget(name);
    }
}

QString BaseStore::PathOf(const QString& name) const
{
    return JoinPath(m_folder, name);
}

} // namespace Halvern::SyncServices
