// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>

namespace Halvern::SyncPlugin {

/// A UTF-16 code unit. Strings cross the contract as zero-terminated UTF-16 on every platform:
/// `wchar_t` where it has 16 bits (Windows), `char16_t` elsewhere.
#ifdef _WIN32
using WideChar = wchar_t;
#else
using WideChar = char16_t;
#endif

/// Capacity of the text fields of FileLinkInfo, the terminating zero included.
inline constexpr int MaxLinkText = 260;

/// One link inside a file. DO NOT CHANGE THE LAYOUT: arrays of this record cross the boundary
/// between host and plug-in.
struct FileLinkInfo
{
    /// sizeof(FileLinkInfo), set by whoever builds the record.
    std::uint32_t size;
    /// The link's identity as the format stores it, opaque to the host. It comes back unchanged in
    /// RepathFileLinks, so that the plug-in finds the same link again even when two links have
    /// equal paths.
    WideChar referenceId[MaxLinkText];
    /// From GetFileLinks: the path as written in the file, absolute or relative to the folder of
    /// that file. To RepathFileLinks: the path that the link must take.
    WideChar path[MaxLinkText];
};

static_assert(sizeof(WideChar) == 2);
static_assert(sizeof(FileLinkInfo) == 1044);
static_assert(offsetof(FileLinkInfo, size) == 0);
static_assert(offsetof(FileLinkInfo, referenceId) == 4);
static_assert(offsetof(FileLinkInfo, path) == 524);

} // namespace Halvern::SyncPlugin
