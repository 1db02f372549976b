// SPDX-License-Identifier: Apache-2.0

#include "LinkFinder.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkArray.h"

#include <utility>

namespace Halvern::Formats::Kicad {

namespace {

bool IsOwner(const std::string& name)
{
    return name == "sheet" || name == "symbol" || name == "footprint" || name == "module";
}

bool IsIdentifier(const std::string& name)
{
    return name == "uuid" || name == "tstamp";
}

bool HasIdentifier(const std::string& name)
{
    return IsOwner(name) || name == "text" || name == "text_box";
}

bool IsSheetFile(const std::string& property)
{
    return property == "Sheet file" || property == "Sheetfile";
}

/// A file of models for the simulator, as KiCad 7 and those before it name the field.
bool IsSimulation(const std::string& property)
{
    return property == "Sim.Library" || property == "Spice_Lib_File";
}

/// The numbers that KiCad 6 gave to fields.
constexpr const char* SheetFileField = "1";
constexpr const char* DatasheetField = "3";

/// Until this version the numbers and names of a sheet's fields were wrong: there are two, the
/// second one of which is the file.
constexpr std::string_view LastWithWrongFields = "20200310";

bool HasWrongFields(const std::string& version)
{
    return version.size() == LastWithWrongFields.size() && version <= LastWithWrongFields;
}

class LibraryCollector : public ListHandler
{
public:
    void BeginList(const std::string& name, std::uint64_t) override
    {
        m_open.push_back(name);
        if (name == "lib")
            entries.emplace_back();
        if (entries.size() > MaxLinks)
            throw FormatError("more than " + std::to_string(MaxLinks) + " libraries");
    }

    void AddAtom(const Atom& atom) override
    {
        if (m_open.size() < 2 || m_open[m_open.size() - 2] != "lib" || atom.isCut)
            return;
        if (m_open.back() == "name")
            entries.back().name = atom.text;
        else if (m_open.back() == "uri")
            entries.back().uri = atom.text;
    }

    void EndList() override { m_open.pop_back(); }

    std::vector<LibraryEntry> entries;

private:
    std::vector<std::string> m_open;
};

} // namespace

void LinkFinder::BeginList(const std::string& name, std::uint64_t)
{
    Level& level = m_levels.emplace_back();
    level.name = name;
    level.firstLink = m_links.size();
}

void LinkFinder::AddAtom(const Atom& atom)
{
    Level& level = m_levels.back();
    const std::size_t index = level.atoms++;
    Level* const outer = Outer();
    if (index == 0 && level.name == "symbol")
        level.owner = atom.text; // In a library a symbol has a name and no identifier.
    if (index == 0 && outer && IsIdentifier(level.name) && HasIdentifier(outer->name))
        outer->owner = atom.text;
    else if (index == 0 && level.name == "property")
        level.key = atom.text;
    else if (index == 1 && level.name == "property" && outer && IsOwner(outer->name))
        level.value = atom;
    else if (index == 0 && level.name == "id" && outer && outer->name == "property")
        outer->field = atom.text;
    else if (index == 0 && level.name == "model" && outer && IsOwner(outer->name))
        Note(atom, "model", PathBase::Project);
    else if (index == 0 && level.name == "version" && m_levels.size() == 2)
        m_version = atom.text;
    else if (index == 0 && m_levels.size() == 2 && outer->name == "kicad_sch" &&
             (level.name == "text" || level.name == "text_box"))
        NoteDirectives(atom);
}

void LinkFinder::AddProperty(Level& owner, Level& property)
{
    if (owner.name == "sheet")
        AddSheetField(owner, property);
    else if (owner.name != "symbol")
        return;
    else if (property.key == "Datasheet" || property.field == DatasheetField)
        Note(*property.value, "datasheet", PathBase::Variable);
    else if (IsSimulation(property.key))
        Note(*property.value, "simulation", PathBase::Project);
}

void LinkFinder::AddSheetField(Level& sheet, Level& property)
{
    const std::size_t place = sheet.properties++;
    // Numbers were given twice; the first field with one has it.
    if (property.field == SheetFileField && !sheet.byField)
        sheet.byField = property.value;
    if (IsSheetFile(property.key) && !sheet.byName)
        sheet.byName = property.value;
    if (place == 1)
        sheet.byPlace = std::move(property.value);
}

void LinkFinder::NoteSheet(const Level& sheet)
{
    const bool isByPlace = HasWrongFields(m_version) || (!sheet.byField && !sheet.byName);
    const std::optional<Atom>& file = isByPlace       ? sheet.byPlace
                                      : sheet.byField ? sheet.byField
                                                      : sheet.byName;
    if (file)
        Note(*file, "file", PathBase::File);
}

/// What is said to the simulator in a text of a schematic.
void LinkFinder::NoteDirectives(const Atom& text)
{
    if (text.isCut || !text.isQuoted || text.text.find('.') == std::string::npos)
        return;
    for (StoredPath& directive : FindDirectives(text.text)) {
        RequireFewer(text.begin);
        directive.id = "include";
        directive.base = PathBase::Project;
        directive.notation = Notation::ListDirective;
        directive.begin = text.PlaceOf(directive.begin);
        directive.end = text.PlaceOf(directive.end);
        m_links.push_back(std::move(directive));
    }
}

void LinkFinder::RequireFewer(std::uint64_t position) const
{
    if (m_links.size() == MaxLinks)
        throw FormatError("more than " + std::to_string(MaxLinks) + " links", position);
}

void LinkFinder::Note(const Atom& atom, std::string what, PathBase base)
{
    RequireFewer(atom.begin);
    const bool isTooLong = atom.isCut || atom.text.size() > MaxNameSize;
    if (isTooLong && base == PathBase::Variable)
        return;
    if (isTooLong)
        throw FormatError("a file name of more than " + std::to_string(MaxNameSize) + " bytes",
                          atom.begin);
    if (!atom.text.empty())
        m_links.push_back({std::move(what), atom.text, base, atom.begin, atom.end});
}

void LinkFinder::EndList()
{
    Level& level = m_levels.back();
    if (level.name == "property" && level.value)
        AddProperty(*Outer(), level);
    if (level.name == "sheet")
        NoteSheet(level);
    if (HasIdentifier(level.name) && !level.owner.empty() && level.owner.size() <= MaxLinkUnits / 2)
        for (std::size_t i = level.firstLink; i < m_links.size(); ++i)
            if (m_links[i].id.find(' ') == std::string::npos)
                m_links[i].id = level.owner + ' ' + m_links[i].id;
    m_levels.pop_back();
}

std::vector<StoredPath> LinkFinder::Take()
{
    // A footprint may have several models, and a copied sheet may keep its identifier.
    NumberIds(m_links);
    return std::exchange(m_links, {});
}

std::vector<LibraryEntry> ReadLibraryTable(const InputFile& file)
{
    LibraryCollector collector;
    ReadLists(file, {"sym_lib_table", "fp_lib_table"}, collector);
    return std::move(collector.entries);
}

} // namespace Halvern::Formats::Kicad
