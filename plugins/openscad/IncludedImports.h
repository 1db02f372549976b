// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ScadReferences.h"

#include <filesystem>
#include <string>
#include <vector>

namespace Halvern::Formats::OpenScad {

/// Files that a model needs though its own text does not name them.
///
/// The text of an included file becomes part of the model: its imports are looked for from the
/// model's folder. A used file's imports are looked for from its own folder, then from the model's.
///
///     case.scad: include <parts/lid.scad>    parts/lid.scad: import("lid.stl")
///     OpenSCAD opens lid.stl beside case.scad
///
/// Gives paths relative to the model's folder, of files that exist there. What cannot be read is
/// passed over: whoever reads that file itself is told. FormatError when the files to go through
/// have no end.
std::vector<std::string> ImportsOfIncludedFiles(const std::filesystem::path& model,
                                                const std::vector<Reference>& references);

inline constexpr std::size_t MaxIncludedFiles = 2000;
inline constexpr std::uint64_t MaxIncludedBytes = std::uint64_t(256) * 1024 * 1024;

} // namespace Halvern::Formats::OpenScad
