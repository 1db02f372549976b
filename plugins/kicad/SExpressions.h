// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/FileScanner.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Halvern::Formats::Kicad {

/// A word or a string of a list.
struct Atom
{
    /// Without quotation marks and escapes. Only the beginning is kept of what is longer than
    /// MaxAtomSize.
    std::string text;
    /// Its bytes in the file, quotation marks included.
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    bool isCut = false;
    bool isQuoted = false;
    /// Where the bytes of `text` are, seen from `begin`; only kept when there are escapes.
    std::vector<std::uint32_t> offsets;

    /// The place in the file of a byte of `text`, or of what follows its last one.
    std::uint64_t PlaceOf(std::size_t index) const;
};

inline constexpr std::size_t MaxAtomSize = 65536;
/// No file has a longer name.
inline constexpr std::size_t MaxNameSize = 4096;
inline constexpr std::size_t MaxNesting = 256;

/// What a file of nested lists consists of, in its order. A list "(name ...)" begins when its name
/// is known.
class ListHandler
{
public:
    virtual ~ListHandler() = default;
    /// `position` is that of the parenthesis.
    virtual void BeginList(const std::string& name, std::uint64_t position) = 0;
    /// An atom of the list that is open, but for its name.
    virtual void AddAtom(const Atom& atom) = 0;
    virtual void EndList() = 0;
};

/// Reads the one list that a file consists of, in fixed memory. What stands after it is nobody's,
/// as KiCad has it. Throws FormatError, also when the list has another name than one of `names`.
void ReadLists(const InputFile& file, const std::vector<std::string>& names, ListHandler& handler);

/// Text as a quoted string.
std::string Quoted(std::string_view text);

} // namespace Halvern::Formats::Kicad
