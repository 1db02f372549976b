// SPDX-License-Identifier: Apache-2.0

#include "UriReference.h"

#include "CssLinks.h"

#include "KitNames.h"
#include "base/FileStatus.h"
#include "base/PathText.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/FileUri.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"
#include "pluginkit/Xml.h"

#include <algorithm>

namespace Halvern::Formats::Svg {

namespace {

constexpr std::string_view Blanks = " \t\r\n\f";

/// A relative path that is seen from the document's folder, as one that is seen from the base.
/// Nobody knows yet what the folders above a copy are called.
std::string SeenFromBase(const std::string& base, std::string_view path)
{
    const std::filesystem::path folder = NormalPath(PathFromUtf8(base));
    if (IsWholePath(base) || *folder.begin() == "..")
        throw FormatError("an address that is seen from " + base + " cannot lead to " +
                          std::string(path));
    const std::filesystem::path target = NormalPath(PathFromUtf8(path));
    return PathToUtf8(folder == "." ? target : target.lexically_relative(folder));
}

} // namespace

Span PathPart(std::string_view uri)
{
    const std::size_t begin = std::min(uri.find_first_not_of(Blanks), uri.size());
    const std::size_t end = std::min(uri.find_first_of("#?", begin), uri.size());
    const std::size_t last = uri.find_last_not_of(Blanks, end == 0 ? 0 : end - 1);
    return {begin, end == begin || last == std::string_view::npos ? begin : last + 1};
}

bool IsWholePath(std::string_view path)
{
    return path.starts_with('/') || Base::HasDrive(path) || IsAbsolutePath(PathFromUtf8(path));
}

std::string_view SuffixOf(std::string_view uri)
{
    const std::string_view suffix = uri.substr(std::min(uri.find_first_of("#?"), uri.size()));
    return suffix.substr(0, suffix.find_last_not_of(Blanks) + 1);
}

std::optional<std::string> PathOf(const UriReference& reference,
                                  const std::filesystem::path& folder)
{
    if (!IsLinkUri(reference.uri))
        return std::nullopt;
    std::string path = PathOfReference(reference, folder);
    if (path.find('\0') != std::string::npos)
        return path; // is refused when it is handed out
    if (!reference.absolutePath.empty() && !Base::Exists(PathIn(folder, path)) &&
        Base::Exists(PathIn(folder, reference.absolutePath)))
        return reference.absolutePath;
    return path;
}

std::string PathOfReference(const UriReference& reference, const std::filesystem::path& folder)
{
    if (!reference.base)
        return PathOfUri(reference.uri, folder);
    const std::string path = PathOfUri(reference.uri, PathIn(folder, *reference.base));
    const bool isWhole =
        path.find('\0') != std::string::npos || IsFileUri(reference.uri) || IsWholePath(path);
    return isWhole ? path : PathToUtf8(NormalPath(PathFromUtf8(*reference.base + path)));
}

std::string TextFor(const UriReference& reference, std::string_view path)
{
    const bool isSeenFromBase = reference.base && !IsWholePath(path);
    const std::string uri =
        UriOfPath(isSeenFromBase ? SeenFromBase(*reference.base, path) : std::string(path));
    if (reference.place == UriReference::Place::StyleSheet)
        return CssUri(uri + reference.suffix);
    return EscapeXmlAttribute(uri + reference.suffix);
}

} // namespace Halvern::Formats::Svg
