// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ReferenceList.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Formats::Scenes {

/// One string of a list, without quotation marks and escapes.
struct ListedString
{
    std::string value;
    /// Its bytes between the quotation marks.
    Span span;
};

/// The text of a string between its quotation marks, without escapes. A backslash before anything
/// but a quotation mark and a backslash stands for itself.
std::string Unescaped(std::string_view text);

/// Where a string ends that begins at `begin`, after its quotation mark: at the other one, or at
/// the end of the text.
std::size_t EndOfString(std::string_view text, std::size_t begin);

/// The strings of a list as XML attributes hold it, `"a.png" "b.png"`. A text that does not begin
/// with a quotation mark is one string, as some writers have it.
std::vector<ListedString> ReadStringList(std::string_view text);

/// True for the name of a field that holds addresses, "url" or one such as "frontUrl".
bool IsAddressField(std::string_view name);

/// The address that a string is, without an id, its span in what the string's own counts in;
/// nothing when it names no file: a program or a shader inside of the scene is none.
std::optional<Reference> AddressIn(const ListedString& string);

} // namespace Halvern::Formats::Scenes
