// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ScadLexer.h"

#include <string>
#include <vector>

namespace Halvern::Formats::OpenScad {

enum class ReferenceKind
{
    /// "include <...>": the text of another file stands here.
    Include,
    /// "use <...>": modules and functions of another file, or a font.
    Use,
    /// A string that names a file to import.
    Import,
    /// An expression that only running the model could tell the value of.
    Computed
};

/// A place that names a file.
struct Reference
{
    ReferenceKind kind;
    /// "include 1", "import 2", "import 2 value 3", "variable part_file 1"
    std::string id;
    /// The name; for Computed, the text of the call.
    std::string name;
    /// The bytes of the name; nothing for Computed.
    std::uint64_t begin;
    std::uint64_t end;
};

/// More references, or more brackets in one another, than these are refused.
inline constexpr std::size_t MaxReferences = 100'000;
inline constexpr std::size_t MaxNesting = 10'000;

/// What a model names, in no particular order. FormatError for text that cannot be a model.
std::vector<Reference> FindReferences(const InputFile& file);

} // namespace Halvern::Formats::OpenScad
