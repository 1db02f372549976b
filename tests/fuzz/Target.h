// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Fuzz {

/// Something happened that no input may cause.
class Violation : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

inline void Require(bool holds, const std::string& otherwise)
{
    if (!holds)
        throw Violation(otherwise);
}

/// What is tried with an input; throws a Violation. The input is the file, text or message itself:
/// what else there is to choose follows from its bytes.
using Trial = void (*)(std::string_view input);

struct Target
{
    /// Of its program, its corpus and its dictionary.
    const char* name;
    Trial trial;
};

/// Those that are linked into this program.
std::vector<Target>& Targets();

struct RegisteredTarget
{
    RegisteredTarget(const char* name, Trial trial) { Targets().push_back({name, trial}); }
};

/// Numbers that an input always gives alike.
class Choices
{
public:
    explicit Choices(std::string_view input);
    /// Below `count`, which is not 0.
    std::size_t Below(std::size_t count);
    bool OneIn(std::size_t count) { return Below(count) == 0; }

private:
    std::uint64_t m_state;
};

} // namespace Halvern::Fuzz
