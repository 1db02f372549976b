// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileResult.h"
#include "services/StoreRuns.h"
#include "services/StoredCopies.h"
#include "syncservices/BaseStore.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <mutex>

namespace Halvern::SyncServices {

class OpenFile;
class PartFile;

/// A folder with copies of files that were about to be replaced (StoreNames). A copy's name tells
/// the path and the content that it was taken from, so that a file saved twice is kept once. Beyond
/// the size limit the copies that were saved longest ago go, but none that a living run saved
/// (StoreRuns). Several processes may use one folder. Nothing in it is written through a symbolic
/// link.
class BaseStore
{
public:
    /// Nothing is read or made before the first Save. An empty folder or a limit of 0 keeps
    /// nothing.
    BaseStore(const QString& folder, qint64 limit);

    enum class Care
    {
        /// Nothing waits for the disk.
        Usual,
        /// The copy is what the file was at one moment, and will be found. It is on the disk when
        /// the caller has flushed it.
        Checked,
        /// The same, and it is on the disk.
        Lasting
    };

    /// Fails when no copy could be kept; also for a file larger than the limit, which would push
    /// out everything else. The copy appears under its name when it is complete.
    /// `copy` (may be null) gets its absolute path.
    Base::FileResult Save(const QString& path, Care care, QString* copy = nullptr);

    void BeginRun();
    void EndRun();

    /// Newest first.
    QList<StoredVersion> VersionsOf(const QString& path) const;
    /// Writes a version to a new file. A failure leaves none; content that is not what the copy's
    /// name tells is one. In a run the version then stays in the store until the run ends.
    Base::FileResult Write(const StoredVersion& version, const QString& target);
    BaseStoreStatus Status() const;

private:
    /// Nothing stands in the way of keeping so much, as far as the settings tell.
    Base::FileResult CheckUse(qint64 size) const;
    Base::FileResult Prepare(const QString& path, Care care);
    Base::FileResult AnnounceRun();
    Base::FileResult NotePath(const QString& path) const;
    Base::FileResult Copy(const OpenFile& source, PartFile& part, QByteArray& hash,
                          Care care) const;
    Base::FileResult Keep(PartFile& part, const QString& name, Care care);
    Base::FileResult Place(PartFile& part, const QString& name, Care care) const;
    void Scan();
    /// The oldest copies, enough of them to make room for `size` bytes under `name`. Nothing is
    /// removed yet.
    Base::FileResult FindRoom(const QString& name, qint64 size, QStringList& victims);
    /// How much of `excess` stays when `victims` go.
    qint64 ChooseVictims(const QString& name, qint64 excess, QStringList& victims) const;
    bool MayGo(const StoredCopies::Copy& copy, qint64 oldestStart) const;
    void RemoveCopies(const QStringList& names);
    /// Why the folder cannot be used, as far as looking tells.
    QString FolderFault() const;
    QString PathOf(const QString& name) const;

    const QString m_folder;
    const qint64 m_limit;

    mutable std::mutex m_mutex;
    // Kept up to date instead of listing the folder each time.
    StoredCopies m_copies;
    StoreRuns m_runs;
    /// What this process added since it last listed the folder; -1 before the first time.
    qint64 m_addedSinceScan = -1;
};

} // namespace Halvern::SyncServices
