// SPDX-License-Identifier: Apache-2.0

#include "Target.h"

namespace Halvern::Fuzz {

std::vector<Target>& Targets()
{
    static std::vector<Target> targets;
    return targets;
}

Choices::Choices(std::string_view input) : m_state(0xcbf29ce484222325)
{
    for (const char c : input)
        m_state = (m_state ^ static_cast<unsigned char>(c)) * 0x100000001b3;
}

std::size_t Choices::Below(std::size_t count)
{
    m_state += 0x9e3779b97f4a7c15;
    std::uint64_t mixed = (m_state ^ (m_state >> 30)) * 0xbf58476d1ce4e5b9;
    mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
    return static_cast<std::size_t>((mixed ^ (mixed >> 31)) % count);
}

} // namespace Halvern::Fuzz
