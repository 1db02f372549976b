// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "SExpressions.h"
#include "StoredPath.h"

#include <optional>
#include <string>
#include <vector>

namespace Halvern::Formats::Kicad {

inline constexpr std::size_t MaxLinks = 1'000'000;

/// Finds the places of a schematic, a board or a footprint that name files:
///
///     (sheet (property "Sheet file" "sub/power.kicad_sch" (id 1)) (uuid ...))
///     (symbol (property "Datasheet" "${KIPRJMOD}/doc/chip.pdf") (uuid ...))
///     (symbol (property "Sim.Library" "models/chip.lib") (uuid ...))
///     (text ".include models/chip.lib" (uuid ...))
///     (footprint ... (model "${KIPRJMOD}/3d/chip.step"))
///
/// KiCad 6 wrote the names of a sheet's fields in the user's language: the id, where there is one,
/// tells the field, else the name, else the place. An id of a link consists of the identifier that
/// KiCad gave to the sheet, symbol or footprint and of what stands there, so that it stays the same
/// whatever is added or moved.
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
        /// Of a property: its name, its value and the number of the field.
        std::string key;
        std::optional<Atom> value;
        std::string field;
        /// Of a sheet: what may be its file, and how many properties it has.
        std::optional<Atom> byField;
        std::optional<Atom> byName;
        std::optional<Atom> byPlace;
        std::size_t properties = 0;
        /// Of a sheet, a symbol or a footprint: its identifier, and where its links begin.
        std::string owner;
        std::size_t firstLink = 0;
    };

    Level* Outer() { return m_levels.size() < 2 ? nullptr : &m_levels[m_levels.size() - 2]; }
    void AddProperty(Level& owner, Level& property);
    void AddSheetField(Level& sheet, Level& property);
    void NoteSheet(const Level& sheet);
    void NoteDirectives(const Atom& text);
    void RequireFewer(std::uint64_t position) const;
    void Note(const Atom& atom, std::string what, PathBase base);

    std::string m_version;
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
