// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>

namespace Halvern::Test {

/// How much more memory than now the process has had at once, from now on. Linux only.
class PeakMemory
{
public:
    PeakMemory();
    /// Zero when the system does not tell.
    std::size_t Bytes() const;

    /// What the tools that watch over a program's memory keep of it.
#ifdef CORSYNC_SANITIZED
    static constexpr std::size_t Overhead = std::size_t(512) << 20;
#else
    static constexpr std::size_t Overhead = 0;
#endif

private:
    std::size_t m_before;
};

} // namespace Halvern::Test
