// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "SExpressions.h"
#include "StoredPath.h"

#include <map>
#include <string>
#include <vector>

namespace Halvern::Formats::Kicad {

inline constexpr std::size_t MaxLinks = 1'000'000;

/// Finds the places of a schematic or a board that name files:
///
///     (sheet (property "Sheet file" "sub/power.kicad_sch") (uuid ...))
///     (symbol (property "Datasheet" "${KIPRJMOD}/doc/chip.pdf") (uuid ...))
///     (footprint ... (model "${KIPRJMOD}/3d/chip.step"))
///
/// An id consists of the identifier that KiCad gave to the sheet, symbol or footprint and of what
/// stands there, so that it stays the same whatever is added or moved.
class LinkFinder : public ListHandler
{
public:
    void BeginList(const std::string& name, std::uint64_t position) override;
    void AddAtom(const Atom& atom) override;
    void EndList() override;

    /// In the order of the file, with ids that differ.
    std::vector<StoredPath> Take();

private:
    /// A list that is open.
    struct Level
    {
        std::string name;
        std::size_t atoms = 0;
        /// The name of a property.
        std::string key;
        /// Of a sheet, a symbol or a footprint: its identifier, and where its links begin.
        std::string owner;
        std::size_t firstLink = 0;
    };

    Level* Outer() { return m_levels.size() < 2 ? nullptr : &m_levels[m_levels.size() - 2]; }
    void AddPropertyValue(const Atom& atom, const Level& property);
    void Note(const Atom& atom, std::string what, PathBase base);

    std::vector<Level> m_levels;
    std::vector<StoredPath> m_links;
};

/// A library that a table of libraries names.
struct LibraryEntry
{
    std::string name;
    std::string uri;
};

/// Reads sym-lib-table or fp-lib-table.
std::vector<LibraryEntry> ReadLibraryTable(const InputFile& file);

} // namespace Halvern::Formats::Kicad
