// SPDX-License-Identifier: Apache-2.0

#include "Target.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

using namespace Halvern::Fuzz;

/// Of this thread: others on the machine do not count.
double SecondsUsed()
{
    std::timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

Trial OwnTrial()
{
    for (const Target& target : Targets())
        if (std::string_view(target.name) == CORSYNC_FUZZ_TARGET)
            return target.trial;
    throw Violation("no target " CORSYNC_FUZZ_TARGET);
}

double Run(std::string_view input)
{
    static const Trial trial = OwnTrial();
    const double begin = SecondsUsed();
    trial(input);
    return SecondsUsed() - begin;
}

/// Linear in the size, with room for the sanitizers. What takes too long once may have been
/// interrupted, or was the first to need something.
void RequireTime(std::string_view input, double seconds)
{
    const double limit = 0.05 + static_cast<double>(input.size()) * 30e-6;
    for (int i = 0; i < 3 && seconds > limit; ++i)
        seconds = Run(input);
    if (seconds > limit)
        throw Violation(std::to_string(input.size()) + " bytes take " + std::to_string(seconds) +
                        " s");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    try {
        RequireTime(input, Run(input));
    } catch (const Violation& violation) {
        std::fprintf(stderr, "VIOLATION: %s\n", violation.what());
        std::abort();
    }
    return 0;
}
