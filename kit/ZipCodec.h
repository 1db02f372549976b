// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kit/ZipDirectory.h"

#include <cstdint>
#include <string>

namespace Halvern::PluginKit {

/// How an entry is packed.
inline constexpr std::uint16_t ZipStored = 0;
inline constexpr std::uint16_t ZipDeflated = 8;

/// What an entry holds. Stops one byte after the size that the directory says, so that a caller
/// sees that there is more; the result is as long as what was found.
///
/// Requires: the entry is stored or deflated.
std::string Unpack(const InputFile& file, const ZipEntry& entry);

/// Content as a deflated entry holds it.
std::string Deflate(const std::string& content);

std::uint32_t ZipChecksum(const std::string& content);

} // namespace Halvern::PluginKit
