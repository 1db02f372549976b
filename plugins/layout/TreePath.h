// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Formats::Layout {

/// An absolute path of either platform in its pieces:
///
///     /home/me/a.png        root ""                 parts home, me, a.png
///     D:/work/a.png         root "D:"               parts work, a.png
///     //server/share/a.png  root "//server/share"   parts a.png
struct TreePath
{
    std::string root;
    std::vector<std::string> parts;

    /// Nothing for a path that is not absolute. "." and ".." are resolved.
    static std::optional<TreePath> Parse(std::string_view text);

    std::string Text() const;
    std::string Name() const { return parts.empty() ? std::string() : parts.back(); }
    TreePath Folder() const;
    TreePath Child(const std::string& name) const;
    /// `path` lies in this folder, at any depth, or is it.
    bool Contains(const TreePath& path) const;
    /// The deepest folder that holds both; nothing when the roots differ.
    std::optional<TreePath> CommonWith(const TreePath& other) const;
    /// The parts of `path` below this folder. Requires: Contains(path).
    std::vector<std::string> PartsBelow(const TreePath& path) const;
    /// This folder and `below` in it.
    TreePath Join(const std::vector<std::string>& below) const;

    bool operator==(const TreePath& other) const;

private:
    bool HasSamePart(const TreePath& other, std::size_t index) const;
    std::size_t CommonParts(const TreePath& other) const;
};

/// Two texts that differ in letter case only have one key.
std::u16string CaseKey(std::string_view text);

/// A file name without its last suffix, and the suffix with its dot.
std::string_view Stem(std::string_view name);
std::string_view Suffix(std::string_view name);

} // namespace Halvern::Formats::Layout
