// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/FileUri.h"

#include "base/PathText.h"
#include "kit/NamedThings.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/PercentCoding.h"
#include "pluginkit/Utf.h"

#include <algorithm>

namespace Halvern::PluginKit {

namespace {

bool IsLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsSchemeCharacter(char c)
{
    return IsLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

/// Lower-cased, without its ":"; empty when the text has none. One letter is a Windows drive.
std::string SchemeOf(std::string_view uri)
{
    const std::size_t end = uri.find(':');
    if (end == std::string_view::npos || end < 2 || !IsLetter(uri.front()))
        return {};
    std::string scheme(uri.substr(0, end));
    if (!std::all_of(scheme.begin(), scheme.end(), IsSchemeCharacter))
        return {};
    std::transform(scheme.begin(), scheme.end(), scheme.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return scheme;
}

bool IsSlash(char c)
{
    return c == '/' || c == '\\';
}

std::string Decoded(std::string_view raw, const std::filesystem::path& folder)
{
    if (raw.find('%') == std::string_view::npos)
        return std::string(raw);
    std::string decoded = PercentDecode(raw);
    if (!IsUtf8(decoded))
        return std::string(raw);
    const bool isRaw = decoded.find('\0') == std::string::npos && !NamesAnything(decoded, folder) &&
                       NamesAnything(raw, folder);
    return isRaw ? std::string(raw) : decoded;
}

/// An encoded backslash is one: nobody writes that for a slash.
std::string DecodedWithSlashes(std::string_view raw, const std::filesystem::path& folder)
{
    std::string path = Decoded(raw, folder);
    if (raw.find('\\') == std::string_view::npos || WithSlashes(path, folder) == path)
        return path;
    std::string slashes(raw);
    std::replace(slashes.begin(), slashes.end(), '\\', '/');
    return Decoded(slashes, folder);
}

/// What follows "file:", as the path that it names, still percent-encoded.
std::string FileUriPath(std::string_view rest)
{
    std::string host;
    if (rest.starts_with("//")) {
        const std::size_t end = std::min(rest.find('/', 2), rest.size());
        host = rest.substr(2, end - 2);
        rest.remove_prefix(end);
    }
    if (Base::HasDrive(host)) // "file://D:/x", one slash short
        return host + std::string(rest);
    if (!host.empty() && host != "localhost")
        return "//" + host + std::string(rest);
    if (rest.starts_with('/') && Base::HasDrive(rest.substr(1)))
        rest.remove_prefix(1);
    return std::string(rest);
}

/// With forward slashes when it is a Windows path that begins with a drive or a server.
std::string DriveWithSlashes(std::string_view path)
{
    std::string result(path);
    const bool drive = Base::HasDrive(path) && path.size() > 2 && IsSlash(path[2]);
    if (drive || path.starts_with("\\\\"))
        std::replace(result.begin(), result.end(), '\\', '/');
    return result;
}

} // namespace

bool IsLinkUri(std::string_view uri)
{
    if (uri.empty() || uri.front() == '#' || uri == ":")
        return false;
    const std::string scheme = SchemeOf(uri);
    return scheme.empty() || scheme == "file";
}

bool IsFileUri(std::string_view uri)
{
    return SchemeOf(uri) == "file";
}

std::string PathOfUri(std::string_view uri, const std::filesystem::path& folder)
{
    if (IsFileUri(uri))
        return DecodedWithSlashes(FileUriPath(uri.substr(5)), folder);
    return DecodedWithSlashes(uri, folder);
}

std::string UriOfPath(std::string_view given)
{
    const std::string path = DriveWithSlashes(given);
    const std::string encoded = PercentEncodePath(path);
    if (path.starts_with("//"))
        return "file:" + encoded;
    if (path.starts_with('/'))
        return "file://" + encoded;
    if (Base::HasDrive(path) && path.size() > 2 && path[2] == '/')
        return "file:///" + encoded;
    // A ":" in the first segment would read as the end of a scheme.
    if (encoded.find(':') < encoded.find('/'))
        return "./" + encoded;
    return encoded;
}

} // namespace Halvern::PluginKit
