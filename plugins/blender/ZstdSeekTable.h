// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/InputFile.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Halvern::Formats::Blender {

/// One frame of a zstd file that is made of many, each of which can be read on its own.
struct ZstdFrame
{
    std::uint64_t size = 0;
    /// Decompressed.
    std::uint64_t contentSize = 0;
};

/// The frames, from the beginning of the file, as the table at its end lists them. Nothing when
/// there is no such table or it does not cover the file exactly; the file can still be read from
/// the beginning. What the frames hold is not checked.
std::optional<std::vector<ZstdFrame>> ReadZstdSeekTable(const InputFile& file);

/// The table's bytes. Throws FormatError when a frame is beyond what it can say.
std::string ZstdSeekTable(const std::vector<ZstdFrame>& frames);

} // namespace Halvern::Formats::Blender
