// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Halvern::Formats::Scenes {

/// The bytes [begin, end) of a text.
struct Span
{
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// No longer address names a file: a link can have 259 characters, each of them encoded with at
/// most nine bytes, and whatever stands after a "#".
inline constexpr std::size_t MaxAddress = std::size_t(64) << 10;

/// How much of an address names the file: blanks around it, a fragment and a query do not.
Span PathPart(std::string_view address);

/// The text without blanks around it.
Span WithoutBlanks(std::string_view text);

/// True for a path that no base changes, whichever system it is of.
bool IsWholePath(std::string_view path);

/// The part of an XML name after its prefix.
std::string_view LocalName(std::string_view name);

/// A name as the first part of an id, which has a limit: `otherwise` stands for one that is empty
/// or long.
std::string NameForId(std::string_view name, std::string_view otherwise);

} // namespace Halvern::Formats::Scenes
