// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Formats::Scribus {

/// A path as an attribute of an object holds it.
struct ScribusPath
{
    /// The object and the attribute: "PAGEOBJECT 1234/PFILE".
    std::string id;
    /// Decoded.
    std::string path;
    /// The bytes between the quotation marks.
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// More paths than this are refused, and longer ones.
inline constexpr std::size_t MaxScribusPaths = 100'000;
inline constexpr std::size_t MaxScribusPath = 4096;

/// The paths of a document, in its order. FormatError, with its place in the text, for what is no
/// document of Scribus or not well-formed.
std::vector<ScribusPath> FindScribusPaths(const std::string& xml);

} // namespace Halvern::Formats::Scribus
