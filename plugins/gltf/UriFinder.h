// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Formats::Gltf {

/// A string of the document that names a file.
struct UriString
{
    /// JSON pointer of the string, for example "/images/0/uri". Where a document repeats a key, so
    /// that several strings share a pointer, the second one's is followed by "#2", and so on.
    std::string id;
    std::string value;
    /// The JSON string's bytes in the text, quotation marks included.
    std::size_t begin;
    std::size_t end;
};

/// More levels of nesting, or more links, than these are refused.
inline constexpr std::size_t MaxNesting = 512;
inline constexpr std::size_t MaxLinks = 1'000'000;

/// Every value of a key "uri", and below a key "extensions" of "schemaUri", that names a file, in
/// the order of the text; what lies below a key "extras" belongs to applications and is passed
/// over. The whole text is checked to be one JSON object in UTF-8; otherwise FormatError, with
/// positions counted from `position`, the place of the text in its file.
std::vector<UriString> FindUris(std::string_view json, std::uint64_t position);

} // namespace Halvern::Formats::Gltf
