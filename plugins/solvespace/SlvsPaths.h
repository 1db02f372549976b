// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/InputFile.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Halvern::Formats::SolveSpace {

/// A path as a model stores it.
struct SlvsPath
{
    /// What the record is, and its handle: "group 00000003"; with " absolute" after it for the
    /// second name that versions before 3.0 wrote.
    std::string id;
    /// Undecoded.
    std::string raw;
    /// The bytes of `raw`.
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    /// It is a second name, and its record has a first one.
    bool isSpare = false;
};

/// More paths than this are refused, and longer ones.
inline constexpr std::size_t MaxSlvsPaths = 100'000;
inline constexpr std::size_t MaxSlvsPath = 4096;

/// The paths of linked models and pictures, in the order of the file. Goes through a file of any
/// size with one line of it in memory. FormatError, with its place, for what is no model or is cut
/// off within a record.
std::vector<SlvsPath> FindSlvsPaths(const InputFile& file);

} // namespace Halvern::Formats::SolveSpace
