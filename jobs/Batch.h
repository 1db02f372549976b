// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DiskFlush.h"
#include "JobControl.h"
#include "JobFile.h"
#include "Staging.h"

#include "base/RootedFolder.h"

#include <QtCore/QElapsedTimer>

#include <filesystem>
#include <functional>
#include <vector>

namespace Halvern::Jobs {

/// A copy that is ready to be given its name.
struct StagedFile
{
    JobFile* file = nullptr;
    /// Below the cloud folder, and absolute.
    std::filesystem::path place;
    std::filesystem::path path;
    QString text;
    /// What it was made from.
    Base::FileStatus source;
    bool isRewritten = false;
    /// Made ready in the folder of its target, not in that for unfinished copies.
    bool isBeside = false;
    /// Made where it waits.
    bool isAside = false;
    /// Made from the copy itself, which was this when this job had made it.
    bool isRelink = false;
    bool wasPending = false;
    FileStamp madeSource;
    FileStamp made;
    qint64 madeAt = 0;
    /// What it replaces, and where in the base store that is kept.
    Base::FileStatus there;
    QString version;
    bool isPlaced = false;
};

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
        std::function<bool(const std::vector<const StagedFile*>&)> announce;
        /// Another import has its turn, and is waited for.
        std::function<void()> waits;
        /// Asked before each file is placed; false leaves it and all after it.
        std::function<bool()> mayGoOn;
        /// The file is placed, or failed.
        std::function<void(const StagedFile&)> done;
    };

    Batch(const JobState& job, JobControl& control, const Base::RootedFolder& cloud,
          Staging& staging, DiskFlush& flush)
        : m_job(job), m_control(control), m_cloud(cloud), m_staging(staging), m_flush(flush)
    {}

    void Add(StagedFile staged);
    bool IsEmpty() const { return m_files.empty(); }
    /// By number, by size, by time, or because a file cannot wait.
    bool IsFull() const;
    /// False when `mayGoOn` said so.
    bool Complete(const Hooks& hooks);

    /// The copy stays what it was, and its links are still to be rewritten.
    static void FailToRewrite(JobFile& file, bool isHeld);

private:
    std::vector<StagedFile*> MakeWay(std::size_t& next, const Hooks& hooks);
    bool PlaceAll(const std::vector<StagedFile*>& files, const Hooks& hooks);
    void FailAll(const std::vector<StagedFile*>& files, const Base::FileResult* why,
                 const Hooks& hooks);

    bool Look(StagedFile& staged);
    bool KeepOld(StagedFile& staged, bool isFirst, bool& isToWait);
    bool SetLinkAside(JobFile& file);
    Base::FileResult Rename(const StagedFile& staged);
    Base::FileResult MoveAcross(const StagedFile& staged);
    bool Place(StagedFile& staged);
    bool Adopt(JobFile& file, const StagedFile& staged);
    void Refuse(StagedFile& staged, const Base::FileResult& why);
    void Fail(StagedFile& staged, const QString& text);
    void Settle(StagedFile& staged, bool isPlaced);
    static void Drop(const StagedFile& staged);
    std::filesystem::path Below(const QString& target) const;

    const JobState& m_job;
    JobControl& m_control;
    const Base::RootedFolder& m_cloud;
    Staging& m_staging;
    DiskFlush& m_flush;
    std::vector<StagedFile> m_files;
    qint64 m_bytes = 0;
    bool m_cannotWait = false;
    QElapsedTimer m_sinceFirst;
};

} // namespace Halvern::Jobs
