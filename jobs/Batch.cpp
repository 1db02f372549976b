// SPDX-License-Identifier: Apache-2.0

#include "Batch.h"

#include "base/NativePath.h"
#include "base/Space.h"

#include <algorithm>
#include <utility>

namespace Halvern::Jobs {

namespace {

/// So much work a kill takes back at most.
constexpr std::size_t MostFiles = 2000;
constexpr qint64 MostBytes = qint64(256) << 20;
constexpr qint64 LongestWait = 2000;

/// What waits must leave room for what is kept of the files that it replaces.
qint64 BytesThatMayWait(const std::filesystem::path& folder)
{
    Base::Space space;
    if (!Base::ReadSpace(folder, space) || !space.freeBytes)
        return MostBytes;
    return qint64(std::min(std::uint64_t(MostBytes), std::uint64_t(*space.freeBytes) / 4));
}

} // namespace

void Batch::Add(StagedCopy staged)
{
    if (m_files.empty()) {
        m_sinceFirst.start();
        m_mostBytes = BytesThatMayWait(m_cloud.Path());
    }
    // The next one is made ready alone, too: plug-ins look at what lies beside a file.
    const std::filesystem::path aside =
        staged.isAside ? staged.place : m_staging.SetAside(staged.place);
    m_cannotWait = m_cannotWait || aside.empty();
    if (!aside.empty()) {
        staged.place = aside;
        staged.path = m_staging.Absolute(aside);
        staged.text = QStringView(Base::PathText(staged.path)).toString();
    }
    m_bytes += staged.file->targetStamp.bytes;
    m_files.push_back(std::move(staged));
}

bool Batch::IsFull() const
{
    return !m_files.empty() && (m_cannotWait || m_files.size() >= MostFiles ||
                                m_bytes >= m_mostBytes || m_sinceFirst.hasExpired(LongestWait));
}

bool Batch::Complete(const Hooks& hooks)
{
    bool goesOn = m_files.empty() || hooks.mayGoOn();
    for (std::size_t next = 0; goesOn && next < m_files.size();) {
        const Ready ready = MakeWay(next, hooks);
        goesOn = !m_control.StoppedJob() && PlaceReady(ready, hooks);
    }
    Clear();
    return goesOn;
}

/// Those that nothing stands against, from `next` on: fewer than all when no more can be kept
/// before some of them have got their places, which makes room.
Batch::Ready Batch::MakeWay(std::size_t& next, const Hooks& hooks)
{
    Ready ready;
    for (; next < m_files.size(); ++next) {
        StagedCopy& staged = m_files[next];
        const FilePlacer::Way way = m_placer.MakeWay(staged, !ready.empty());
        if (way == FilePlacer::Way::NoRoom || m_control.StoppedJob())
            break;
        if (way == FilePlacer::Way::Closed) {
            hooks.done(staged);
            continue;
        }
        m_flush.AddFile(staged.place);
        ready.push_back(&staged);
    }
    return ready;
}

bool Batch::PlaceReady(const Ready& files, const Hooks& hooks)
{
    const Base::FileResult flushed = m_flush.Run();
    const std::vector<const StagedCopy*> announced(files.begin(), files.end());
    if (!flushed) {
        FailAll(files, QString::fromStdString(flushed.Text()), hooks);
    } else if (!hooks.announce(announced)) {
        // The database says itself why.
        FailAll(files, QStringLiteral("what was to be done could not be recorded"), hooks);
    } else if (!files.empty()) {
        const Turn turn(m_cloud.Path(), m_patience, hooks.waits, hooks.mayGoOn);
        return PlaceAll(files, hooks);
    }
    return true;
}

bool Batch::PlaceAll(const Ready& files, const Hooks& hooks)
{
    for (StagedCopy* staged : files) {
        if (!hooks.mayGoOn())
            return false;
        m_placer.Place(*staged);
        if (staged->file->deed == Deed::Nothing)
            hooks.done(*staged);
    }
    return true;
}

void Batch::FailAll(const Ready& files, const QString& why, const Hooks& hooks)
{
    for (StagedCopy* staged : files) {
        m_placer.Fail(*staged, why);
        hooks.done(*staged);
    }
}

void Batch::Clear()
{
    for (StagedCopy& staged : m_files) {
        if (staged.file->deed != Deed::Nothing)
            staged.Drop();
        if (!staged.isPlaced)
            static_cast<void>(m_cloud.Remove(staged.place));
    }
    m_files.clear();
    m_bytes = 0;
    m_cannotWait = false;
}

} // namespace Halvern::Jobs
