// SPDX-License-Identifier: Apache-2.0

#include "TreePath.h"

#include "base/CaseFolding.h"
#include "base/PathText.h"
#include "base/Utf.h"

#include <algorithm>

namespace Halvern::Formats::Layout {

namespace {

/// A backslash is a separator on Windows and a letter like any other elsewhere.
std::string WithSlashes(std::string_view text)
{
    std::string result(text);
    if (Base::HasDrive(text) || text.starts_with("\\\\"))
        std::replace(result.begin(), result.end(), '\\', '/');
    return result;
}

std::vector<std::string> Split(std::string_view text)
{
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find('/', begin), text.size());
        const std::string_view part = text.substr(begin, end - begin);
        begin = end + 1;
        if (part == "..") {
            if (!parts.empty())
                parts.pop_back();
        } else if (!part.empty() && part != ".") {
            parts.emplace_back(part);
        }
    }
    return parts;
}

} // namespace

std::optional<TreePath> TreePath::Parse(std::string_view text)
{
    const std::string path = WithSlashes(text);
    TreePath result;
    if (Base::HasDrive(path)) {
        result.root = path.substr(0, 2);
        result.parts = Split(std::string_view(path).substr(2));
        return result;
    }
    if (!path.starts_with('/'))
        return {};
    const std::size_t share = path.find('/', 2);
    if (path.starts_with("//") && share != std::string::npos && share > 2) {
        // Nothing leads above a share.
        const std::size_t end = std::min(path.find('/', share + 1), path.size());
        result.root = path.substr(0, end);
        result.parts = Split(std::string_view(path).substr(end));
    } else {
        result.parts = Split(path);
    }
    return result;
}

std::string TreePath::Text() const
{
    std::string text = root;
    for (const std::string& part : parts)
        text.append("/").append(part);
    return parts.empty() ? text + '/' : text;
}

TreePath TreePath::Folder() const
{
    TreePath folder = *this;
    if (!folder.parts.empty())
        folder.parts.pop_back();
    return folder;
}

TreePath TreePath::Child(const std::string& name) const
{
    return Join({name});
}

TreePath TreePath::Join(const std::vector<std::string>& below) const
{
    TreePath path = *this;
    path.parts.insert(path.parts.end(), below.begin(), below.end());
    return path;
}

bool TreePath::HasSamePart(const TreePath& other, std::size_t index) const
{
    // Paths with a drive or a server are of Windows, where letter case does not count.
    return parts[index] == other.parts[index] ||
           (!root.empty() && CaseKey(parts[index]) == CaseKey(other.parts[index]));
}

std::size_t TreePath::CommonParts(const TreePath& other) const
{
    const std::size_t limit = std::min(parts.size(), other.parts.size());
    std::size_t count = 0;
    while (count < limit && HasSamePart(other, count))
        ++count;
    return count;
}

bool TreePath::Contains(const TreePath& path) const
{
    return CaseKey(root) == CaseKey(path.root) && CommonParts(path) == parts.size();
}

std::optional<TreePath> TreePath::CommonWith(const TreePath& other) const
{
    if (CaseKey(root) != CaseKey(other.root))
        return {};
    TreePath common = *this;
    common.parts.resize(CommonParts(other));
    return common;
}

std::vector<std::string> TreePath::PartsBelow(const TreePath& path) const
{
    return {path.parts.begin() + static_cast<std::ptrdiff_t>(parts.size()), path.parts.end()};
}

bool TreePath::operator==(const TreePath& other) const
{
    return parts.size() == other.parts.size() && Contains(other);
}

std::u16string CaseKey(std::string_view text)
{
    return Base::FoldCase(Base::ToUtf16Lossy(text));
}

std::string_view Stem(std::string_view name)
{
    return name.substr(0, name.size() - Suffix(name).size());
}

std::string_view Suffix(std::string_view name)
{
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot);
}

} // namespace Halvern::Formats::Layout
