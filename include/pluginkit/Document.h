// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Halvern::PluginKit {

/// One reference that a file holds.
struct DocumentLink
{
    /// Finds the same reference again in the same file, whatever paths were rewritten in between.
    std::string id;
    /// Decoded (no escapes of the format), absolute or relative to the folder of the file.
    std::string path;
};

/// New paths by link id.
using NewPaths = std::map<std::string, std::string>;

/// A file of one format, read: what a plug-in's author writes. The constructor reads the file; it
/// and everything here say that something failed by throwing a FormatError, with the byte offset
/// where that is known. Never trust a length, an offset or a depth that the file states, and keep
/// memory and recursion within bounds.
///
/// A document is made for each call of the host and lives in one thread.
class Document
{
public:
    virtual ~Document() = default;

    /// Every link, in the order of the file; ids differ from each other.
    virtual std::vector<DocumentLink> Links() const = 0;

    /// The path of a link that Links() leaves out here but may have named elsewhere: what a text
    /// names can depend on the files around it, and a copy has others around it than its source.
    virtual std::optional<std::string> UnlistedPathOf(const std::string& /*id*/) const
    {
        return std::nullopt;
    }

    /// Throws a FormatError for paths that cannot be had together, because the file stores some of
    /// its links as one. `wanted` holds all paths that were asked for, those that stay included.
    virtual void RequireTogether(const NewPaths& /*wanted*/) const {}

    /// What keeps the link from having this path while it hinders no other one: a file that is
    /// found by its name is not where the name says. Never passed to Rewrite().
    virtual std::optional<std::string> ObstacleTo(const std::string& /*id*/,
                                                  const std::string& /*path*/) const
    {
        return std::nullopt;
    }

    /// Puts a file with the new paths in the place of this one, every other byte being as it was.
    /// All paths or none: when one of them cannot be written the file stays as it is. Called once,
    /// with ids of Links() or UnlistedPathOf() only and paths that differ from those there.
    virtual void Rewrite(const NewPaths& paths) = 0;
};

} // namespace Halvern::PluginKit
