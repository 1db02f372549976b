// SPDX-License-Identifier: Apache-2.0

#include "LinkFinder.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkArray.h"

#include <unordered_map>
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

bool IsSheetFile(const std::string& property)
{
    return property == "Sheet file" || property == "Sheetfile";
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
    if (index == 0 && outer && IsIdentifier(level.name) && IsOwner(outer->name))
        outer->owner = atom.text;
    else if (index == 0 && level.name == "property")
        level.key = atom.text;
    else if (index == 1 && level.name == "property" && outer)
        AddPropertyValue(atom, level);
    else if (index == 0 && level.name == "model" && outer && IsOwner(outer->name))
        Note(atom, "model", PathBase::Project);
}

void LinkFinder::AddPropertyValue(const Atom& atom, const Level& property)
{
    const std::string& owner = Outer()->name;
    if (owner == "sheet" && IsSheetFile(property.key))
        Note(atom, "file", PathBase::File);
    else if (owner == "symbol" && property.key == "Datasheet")
        Note(atom, "datasheet", PathBase::Variable);
}

void LinkFinder::Note(const Atom& atom, std::string what, PathBase base)
{
    if (m_links.size() == MaxLinks)
        throw FormatError("more than " + std::to_string(MaxLinks) + " links", atom.begin);
    if (atom.isCut && base == PathBase::Variable)
        return;
    if (atom.isCut)
        throw FormatError("a file name of more than " + std::to_string(MaxAtomSize) + " bytes",
                          atom.begin);
    if (!atom.text.empty())
        m_links.push_back({std::move(what), atom.text, base, atom.begin, atom.end});
}

void LinkFinder::EndList()
{
    const Level& level = m_levels.back();
    if (IsOwner(level.name) && !level.owner.empty() && level.owner.size() <= MaxLinkUnits / 2)
        for (std::size_t i = level.firstLink; i < m_links.size(); ++i)
            if (m_links[i].id.find(' ') == std::string::npos)
                m_links[i].id = level.owner + ' ' + m_links[i].id;
    m_levels.pop_back();
}

std::vector<StoredPath> LinkFinder::Take()
{
    // A footprint may have several models, and a copied sheet may keep its identifier.
    std::unordered_map<std::string, std::size_t> seen;
    for (StoredPath& link : m_links)
        if (const std::size_t count = ++seen[link.id]; count > 1)
            link.id += ' ' + std::to_string(count);
    return std::exchange(m_links, {});
}

std::vector<LibraryEntry> ReadLibraryTable(const InputFile& file)
{
    LibraryCollector collector;
    ReadLists(file, {"sym_lib_table", "fp_lib_table"}, collector);
    return std::move(collector.entries);
}

} // namespace Halvern::Formats::Kicad
