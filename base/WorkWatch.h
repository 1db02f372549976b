// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

namespace Halvern::Base {

/// Watches long work on single files: copying and hashing ask it after each piece, whose size is
/// chosen so that it takes a small part of a tenth of a second also on a slow disk. Work that is
/// not to go on fails with FileProblem::Stopped and leaves nothing.
class WorkWatch
{
public:
    virtual ~WorkWatch();

    /// False: the work is to end now. Called often.
    virtual bool GoesOn() = 0;
    /// So many bytes of the file that CopyUnchangedBytes copies are copied; holes count. Where a
    /// copy has to be begun again, so does the number.
    virtual void Copied(std::uint64_t bytes) = 0;

    /// That of the calling thread; null without one.
    static WorkWatch* OfThisThread() noexcept;

    /// Watches the work of the thread that made it, as long as it lives.
    class Scope
    {
    public:
        explicit Scope(WorkWatch& watch) noexcept;
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        WorkWatch* m_former;
    };
};

} // namespace Halvern::Base
