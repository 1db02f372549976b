// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DiskFlush.h"
#include "FilePlacer.h"
#include "JobControl.h"
#include "StagedCopy.h"
#include "Staging.h"
#include "Turn.h"

#include "base/RootedFolder.h"

#include <QtCore/QElapsedTimer>

#include <functional>
#include <vector>

namespace Halvern::Jobs {

/// Copies that are ready, and get their names together:
///
///     Add             one after the other, until it is full
///     Complete        for all of them: what stands at the targets is looked at and kept; one
///                     flush; what is about to be done is written down; each gets its name
///
/// Until a file gets its name what stood there stands there, and a failure leaves it so. What a
/// power cut leaves under a name is therefore always a complete file, old or new.
class Batch
{
public:
    /// The hooks of whoever carries out a job.
    struct Hooks
    {
        /// All that was placed before is on the disk now; these are about to be placed. False: they
        /// must not be.
        std::function<bool(const std::vector<const StagedCopy*>&)> announce;
        /// Another import has its turn, and is waited for.
        std::function<void()> waits;
        /// Asked before each file is placed; false leaves it and all after it as if they had never
        /// been made ready.
        std::function<bool()> mayGoOn;
        /// The file is placed, or failed.
        std::function<void(const StagedCopy&)> done;
    };

    Batch(const JobState& job, JobControl& control, const Base::RootedFolder& cloud,
          Staging& staging, DiskFlush& flush)
        : m_control(control), m_cloud(cloud), m_staging(staging), m_flush(flush),
          m_placer(job, control, cloud, staging, flush)
    {}

    void Add(StagedCopy staged);
    bool IsEmpty() const { return m_files.empty(); }
    /// By number, by size, by time, or because a file cannot wait.
    bool IsFull() const;
    /// False when the job is to stop.
    bool Complete(const Hooks& hooks);

private:
    using Ready = std::vector<StagedCopy*>;

    Ready MakeWay(std::size_t& next, const Hooks& hooks);
    bool PlaceReady(const Ready& files, const Hooks& hooks);
    bool PlaceAll(const Ready& files, const Hooks& hooks);
    void FailAll(const Ready& files, const QString& why, const Hooks& hooks);
    void Clear();

    JobControl& m_control;
    const Base::RootedFolder& m_cloud;
    Staging& m_staging;
    DiskFlush& m_flush;
    Turn::Patience m_patience;
    FilePlacer m_placer;
    std::vector<StagedCopy> m_files;
    qint64 m_bytes = 0;
    qint64 m_mostBytes = 0;
    bool m_cannotWait = false;
    QElapsedTimer m_sinceFirst;
};

} // namespace Halvern::Jobs
