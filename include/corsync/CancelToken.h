// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <atomic>

namespace Halvern::Jobs {

/// How a host stops a job. It belongs to the host, which keeps it for as long as the job runs; one
/// token may serve several jobs, and once cancelled stays so.
class CancelToken
{
public:
    CancelToken() = default;
    CancelToken(const CancelToken&) = delete;
    CancelToken& operator=(const CancelToken&) = delete;

    /// From any thread, also from a signal handler. The job ends before its next file, or
    /// in the middle of one that is being copied or compared, which then is as if it had not begun.
    void Cancel() noexcept { m_cancelled.store(true, std::memory_order_relaxed); }
    /// True once Cancel was called.
    bool IsCancelled() const noexcept { return m_cancelled.load(std::memory_order_relaxed); }

private:
    std::atomic<bool> m_cancelled{false};
    static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may touch it");
};

} // namespace Halvern::Jobs
