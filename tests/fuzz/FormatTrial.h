// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "NewPaths.h"

#include "pluginkit/Document.h"
#include "syncplugin/IFileLinkResolver.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace Halvern::Fuzz {

/// What has to be known of a format to try its plug-in with any file.
struct Format
{
    /// Of the file, in the scratch folder.
    const char* fileName;
    SyncPlugin::IFileLinkResolver& resolver;
    std::unique_ptr<PluginKit::Document> (*open)(const std::filesystem::path& file);
    /// What of a file a rewrite may change nothing of but links: its bytes, unless it is packed.
    std::string (*content)(const std::filesystem::path& file);
    /// How many bytes a rewrite may change beside those of links: lengths, padding.
    std::size_t furtherBytes = 0;
    /// Characters of which a link's text may hold any number that its path does not show, such as
    /// the "#" of a fragment that a rewrite leaves out. A file with one is not measured.
    const char* unseen = "";
    /// How often a link's path may stand in the file.
    std::size_t placesOfLink = 1;
    /// A new path can change the ids of other links, or how many there are: then links are told
    /// apart by where they lead, as an import does.
    bool areIdsVague = false;
    /// Whether a layout may ask this of the link; null for any path.
    bool (*mayAsk)(const Link& link, const std::string& path) = nullptr;
    /// Whether the link is one: others only show something, which a rewrite may change. Null where
    /// all are.
    bool (*isPath)(const Link& link) = nullptr;
};

/// Reads the links of a file and gives some of them other paths, as an import does: afterwards
/// these are its links, all others are what they were, and so is everything else in the file. A
/// rewrite that fails changes nothing; one that changes nothing leaves the file alone; in two steps
/// it gives what it gives in one.
void TryFormat(const Format& format, std::string_view bytes);

template <typename FormatDocument>
std::unique_ptr<PluginKit::Document> OpenDocument(const std::filesystem::path& file)
{
    return std::make_unique<FormatDocument>(file);
}

} // namespace Halvern::Fuzz
