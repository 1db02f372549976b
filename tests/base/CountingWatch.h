// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/WorkWatch.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace Halvern::Test {

/// Notes what it is told, and lets work go on so many times.
class CountingWatch : public Base::WorkWatch
{
public:
    explicit CountingWatch(int times = -1) : m_left(times) {}

    bool GoesOn() override
    {
        ++asked;
        if (atEach)
            atEach();
        return m_left < 0 || m_left-- > 0;
    }
    void Copied(std::uint64_t bytes) override { copied.push_back(bytes); }

    int asked = 0;
    std::vector<std::uint64_t> copied;
    std::function<void()> atEach;

private:
    int m_left;
};

} // namespace Halvern::Test
