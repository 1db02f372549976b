// SPDX-License-Identifier: Apache-2.0

#include "PeakMemory.h"

#include <fstream>
#include <string>

namespace Halvern::Test {

namespace {

/// A line such as "VmHWM:   1234 kB"; zero when there is none.
std::size_t BytesInStatus(const std::string& key)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(key + ':'))
            return std::stoull(line.substr(key.size() + 1)) * 1024;
    return 0;
}

} // namespace

PeakMemory::PeakMemory()
{
    std::ofstream("/proc/self/clear_refs") << 5; // makes the present size the peak
    m_before = BytesInStatus("VmHWM");
}

std::size_t PeakMemory::Bytes() const
{
    return BytesInStatus("VmHWM") - m_before;
}

} // namespace Halvern::Test
