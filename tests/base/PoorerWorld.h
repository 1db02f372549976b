// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <vector>

#include <sys/syscall.h>

namespace Halvern::Test {

/// A system call that fails, when one of its arguments has all bits of a mask.
struct Refusal
{
    long call;
    int error;
    int argument = 0;
    unsigned int mask = 0;
};

constexpr int Good = 0;
constexpr int Bad = 1;

/// Good or Bad, the result of some work in a process of its own in which the kernel refuses some
/// calls.
int InAPoorerWorld(const std::vector<Refusal>& refusals, const std::function<bool()>& work);

} // namespace Halvern::Test
