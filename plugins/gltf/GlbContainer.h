// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/InputFile.h"

#include <cstdint>
#include <string>

namespace Halvern::Formats::Gltf {

/// Largest JSON document that is read into memory.
inline constexpr std::uint64_t MaxDocumentSize = std::uint64_t(1) << 30;

/// Where the parts of a binary glTF file lie. Version 2 has chunks; version 1, that of glTF 1.0,
/// has the JSON after a longer header, and then plain bytes.
struct GlbLayout
{
    std::uint32_t version = 2;
    std::uint64_t jsonBegin = 0;
    std::uint64_t jsonSize = 0;
    /// The chunks after the JSON, headers included, or the plain bytes.
    std::uint64_t restBegin = 0;
    std::uint64_t restSize = 0;
};

/// Decided by the first bytes, or by a name that ends in ".glb".
bool IsGlb(const InputFile& file);

/// Checks every header and length down to the end of the file; throws FormatError.
GlbLayout ReadGlbLayout(const InputFile& file);

/// The bytes of the file in front of what follows the JSON: headers and the JSON, padded to four
/// bytes. Throws FormatError when the file would pass what its length field can say.
std::string GlbHead(const GlbLayout& layout, std::string json);

} // namespace Halvern::Formats::Gltf
