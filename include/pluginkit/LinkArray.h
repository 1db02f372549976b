// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "pluginkit/Utf.h"

#include <memory>
#include <string>
#include <string_view>

namespace Halvern::PluginKit {

// Between the records of links that cross the contract and text. DocumentResolver uses these; who
// implements the contract without it needs them, too.

/// Longest text of a link, in UTF-16 units.
inline constexpr std::size_t MaxLinkUnits = SyncPlugin::MaxLinkText - 1;

/// `text` as it stands in a link record. Throws FormatError when it cannot, because it is too long,
/// holds a NUL or is no UTF-8; the message names it by `what`, "id" or "path", and the link's id.
WideString LinkUnits(const char* what, std::string_view referenceId, std::string_view text);

/// Text of a record of the host, which need not have ended it; nothing for a lone surrogate.
std::optional<std::string> LinkText(const SyncPlugin::WideChar (&field)[SyncPlugin::MaxLinkText]);

/// Builds the array of links that a resolver hands to the host.
class LinkArray
{
public:
    /// Room for exactly `capacity` links.
    explicit LinkArray(std::size_t capacity);

    /// Throws FormatError, naming the link, rather than cut a text.
    void Add(const std::string& referenceId, std::string_view path);
    /// The host frees the array with `delete[]` from then on; null when there are no links.
    void HandOver(SyncPlugin::FileLinkInfo** links, int* count);

private:
    std::unique_ptr<SyncPlugin::FileLinkInfo[]> m_links;
    std::size_t m_capacity;
    std::size_t m_count = 0;
};

} // namespace Halvern::PluginKit
