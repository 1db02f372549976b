// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/FileScanner.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Halvern::Formats::Kicad {

/// A line without its end.
struct Line
{
    std::string text;
    std::uint64_t begin = 0;
    /// Only the beginning is kept of what is longer than MaxLineSize.
    bool isCut = false;
};

inline constexpr std::size_t MaxLineSize = 65536;

/// Reads a text line by line, in fixed memory: lines end as on any system.
class LineReader
{
public:
    explicit LineReader(const InputFile& file) : m_scanner(file) {}

    std::optional<Line> Next();

private:
    FileScanner m_scanner;
};

} // namespace Halvern::Formats::Kicad
