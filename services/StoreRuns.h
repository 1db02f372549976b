// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileResult.h"
#include "base/HeldFile.h"

#include <QtCore/QSet>
#include <QtCore/QString>

namespace Halvern::SyncServices {

/// The runs that save into a base store. What was saved since the oldest living run began is not
/// removed by anybody: a run whose job is half done may still need all that it kept.
///
/// A run is a file in the store's folder "runs" that its process holds for as long as it lives;
/// one that nobody holds was left by a process that was killed. Its time says when the run began,
/// by the clock that dates the copies, too.
class StoreRuns
{
public:
    explicit StoreRuns(const QString& storeFolder);
    ~StoreRuns();
    StoreRuns(const StoreRuns&) = delete;
    StoreRuns& operator=(const StoreRuns&) = delete;

    /// Of this process; several may be open at once, and end together. Nothing is written yet.
    void Begin() { ++m_open; }
    void End();

    /// An open run that other processes do not know of.
    bool IsSecret() const { return m_open > 0 && !m_file.IsHeld(); }
    /// Makes it known, before it saves something. Requires: the store is locked.
    Base::FileResult Announce();
    void Saved(const QString& copy);
    bool HasSaved(const QString& copy) const { return m_saved.contains(copy); }

    /// When the oldest living run began (nanoseconds since 1970); the end of time without one.
    qint64 OldestStart() const;
    /// Requires: the store is locked.
    void RemoveDead() const;

private:
    void Withdraw();

    const QString m_folder;
    int m_open = 0;
    QString m_name;
    Base::HeldFile m_file;
    QSet<QString> m_saved;
};

} // namespace Halvern::SyncServices
