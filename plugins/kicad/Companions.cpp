// SPDX-License-Identifier: Apache-2.0

#include "Companions.h"

#include "LegacyFiles.h"
#include "LinkFinder.h"
#include "StoredPath.h"

#include "KitNames.h"
#include "base/Directory.h"
#include "base/FileStatus.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"
#include "syncplugin/ReferenceIds.h"

#include <algorithm>
#include <array>

namespace Halvern::Formats::Kicad {

namespace {

namespace fs = std::filesystem;
using Base::IsFile;

constexpr std::size_t MaxLibraryFiles = 100'000;
constexpr std::array<const char*, 7> Siblings = {"kicad_pro", "kicad_sch", "kicad_pcb", "kicad_dru",
                                                 "pro",       "sch",       "brd"};
/// The symbols that a legacy schematic uses, as they were when it was saved.
constexpr const char* Cache = "cache";
constexpr const char* CacheEnding = "-cache.lib";
/// Ends the id of a library's descriptions; the name of a library holds no colon.
constexpr const char* DescriptionsMark = ":dcm";
constexpr std::array<const char*, 2> Tables = {"sym-lib-table", "fp-lib-table"};

std::string LowerExtension(const fs::path& file)
{
    std::string extension = PathToUtf8(file.extension());
    for (char& c : extension)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c + ('a' - 'A'));
    return extension;
}

/// True when one of the names is the same file in other letters, as where their case means nothing.
bool IsAmong(const std::vector<std::string>& names, const fs::path& file)
{
    const std::string extension = LowerExtension(file);
    return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
        const fs::path other = file.parent_path() / PathFromUtf8(name);
        return LowerExtension(other) == extension && Base::IsSameFile(other, file);
    });
}

/// The descriptions of the symbols in a library of KiCad 5 or earlier, which KiCad finds by name.
fs::path DescriptionsOf(fs::path library)
{
    return library.replace_extension("dcm");
}

bool HasDescriptions(const fs::path& library)
{
    return LowerExtension(library) == ".lib";
}

/// A name beside the schematic.
fs::path CacheOf(const fs::path& schematic)
{
    return PathFromUtf8(PathToUtf8(schematic.stem()) + CacheEnding);
}

std::vector<LibraryEntry> ReadTable(const fs::path& path, const std::string& table)
{
    try {
        return ReadLibraryTable(InputFile(path));
    } catch (const FormatError& error) {
        const auto position = error.Position();
        throw FormatError(table + ": " + error.what() +
                          (position ? " (its byte " + std::to_string(*position) + ")" : ""));
    }
}

/// The place of a library in the project's folder; empty for one elsewhere.
fs::path PlaceInProject(const LibraryEntry& entry, const fs::path& project)
{
    const std::optional<std::string> path = PathInProject(entry.uri, project);
    if (!path)
        return {};
    const fs::path below = PathFromUtf8(*path).lexically_normal();
    return below.is_absolute() || (!below.empty() && *below.begin() == "..") ? fs::path() : below;
}

/// Gathers links that go by name, each file once.
class Collector
{
public:
    explicit Collector(const fs::path& file) : m_file(file) {}

    /// The file with the same base name and this extension.
    bool AddSibling(const std::string& extension)
    {
        fs::path sibling = m_file;
        sibling.replace_extension(PathFromUtf8('.' + extension));
        if (!IsFile(sibling))
            return false;
        Add(extension, PathToUtf8(sibling.filename()));
        return true;
    }

    bool AddSiblings(std::initializer_list<const char*> extensions)
    {
        bool isAnyThere = false;
        for (const char* const extension : extensions)
            isAnyThere = AddSibling(extension) || isAnyThere;
        return isAnyThere;
    }

    void AddCache()
    {
        const fs::path cache = CacheOf(m_file);
        if (IsFile(m_file.parent_path() / cache))
            Add(Cache, PathToUtf8(cache));
    }

    void AddTables()
    {
        for (const char* const table : Tables)
            AddTable(table);
    }

    std::vector<DocumentLink> Take() { return std::move(m_links); }

private:
    void AddTable(const std::string& table)
    {
        const fs::path path = m_file.parent_path() / table;
        if (!IsFile(path))
            return;
        Add(table, table);
        for (const LibraryEntry& entry : ReadTable(path, table))
            AddLibrary(table, entry);
    }

    void AddLibrary(const std::string& table, const LibraryEntry& entry)
    {
        // Others are installed, or other projects'; what is placed of them is in schematic and
        // board.
        const fs::path below = PlaceInProject(entry, m_file.parent_path());
        if (below.empty())
            return;
        const fs::path path = m_file.parent_path() / below;
        if (!IsFile(path))
            return AddFootprints(table + '/' + entry.name, path, below);
        Add(table + '/' + entry.name, PathToUtf8(below));
        if (HasDescriptions(below) && IsFile(DescriptionsOf(path)))
            Add(table + '/' + entry.name + DescriptionsMark, PathToUtf8(DescriptionsOf(below)));
    }

    /// A library of footprints is a folder with a file for each.
    void AddFootprints(const std::string& id, const fs::path& folder, const fs::path& below)
    {
        std::vector<std::string> names;
        Base::VisitNames(folder, [&](const std::string& name) {
            const fs::path file = PathFromUtf8(name);
            if (file.extension() == ".kicad_mod" && IsFile(folder / file))
                names.push_back(name);
            return true;
        });
        std::sort(names.begin(), names.end());
        for (const std::string& name : names)
            Add(id + '/' + name, PathToUtf8(below / PathFromUtf8(name)));
    }

    void Add(const std::string& id, const std::string& path)
    {
        if (m_links.size() == MaxLibraryFiles)
            throw FormatError("more than " + std::to_string(MaxLibraryFiles) + " library files");
        m_links.push_back({SyncPlugin::CompanionId(id), path});
    }

    fs::path m_file;
    std::vector<DocumentLink> m_links;
};

/// What a schematic or a board finds that has no project file of its name.
void AddWithoutProject(Collector& collector, const fs::path& file, const std::string& extension)
{
    if (extension == ".kicad_pcb") {
        if (!collector.AddSibling("kicad_sch"))
            collector.AddSibling("sch");
    } else {
        collector.AddSibling("kicad_pcb");
    }
    if (extension == ".sch") {
        collector.AddSibling("brd");
        collector.AddCache();
    }
    if (extension == ".kicad_pcb" || !HoldsProject(file.parent_path()))
        collector.AddTables();
}

} // namespace

std::vector<DocumentLink> CompanionsOf(const fs::path& file)
{
    Collector collector(file);
    const std::string extension = LowerExtension(file);
    if (extension == ".kicad_pro") {
        collector.AddSiblings({"kicad_sch", "kicad_pcb", "kicad_dru"});
        collector.AddTables();
    } else if (extension == ".pro") {
        if (collector.AddSiblings({"sch", "kicad_pcb", "brd"}))
            collector.AddTables();
        collector.AddCache();
    } else if (extension == ".kicad_sch" || extension == ".kicad_pcb") {
        if (!collector.AddSibling("kicad_pro") && !collector.AddSibling("pro"))
            AddWithoutProject(collector, file, extension);
    } else if (extension == ".sch" && IsLegacySchematic(InputFile(file))) {
        if (!collector.AddSibling("pro"))
            AddWithoutProject(collector, file, extension);
    }
    return collector.Take();
}

std::vector<std::string> DescriptionsBeside(const fs::path& library)
{
    const fs::path descriptions = DescriptionsOf(library);
    return IsFile(descriptions) ? std::vector{PathToUtf8(descriptions.filename())}
                                : std::vector<std::string>();
}

void CompanionPlaces::ReadTables()
{
    m_areTablesRead = true;
    for (const std::string table : Tables) {
        const fs::path path = m_file.parent_path() / table;
        if (!IsFile(path))
            continue;
        for (const LibraryEntry& entry : ReadTable(path, table)) {
            const fs::path place = PlaceInProject(entry, m_file.parent_path());
            if (place.empty())
                continue;
            m_libraries.emplace(table + '/' + entry.name, place);
            if (HasDescriptions(place))
                m_libraries.emplace(table + '/' + entry.name + DescriptionsMark,
                                    DescriptionsOf(place));
        }
    }
}

std::optional<std::string> CompanionPlaces::PlaceOf(const std::string& id)
{
    if (std::find(Siblings.begin(), Siblings.end(), id) != Siblings.end())
        return PathToUtf8(m_file.stem()) + '.' + id;
    if (std::find(Tables.begin(), Tables.end(), id) != Tables.end())
        return id;
    if (id == Cache)
        return PathToUtf8(CacheOf(m_file));
    if (!m_areTablesRead)
        ReadTables();
    const std::size_t slash = std::min(id.rfind('/'), id.size());
    if (const auto library = m_libraries.find(id); library != m_libraries.end())
        return PathToUtf8(library->second);
    if (const auto folder = m_libraries.find(id.substr(0, slash)); folder != m_libraries.end())
        return PathToUtf8(folder->second / PathFromUtf8(id.substr(slash + 1)));
    return {};
}

bool HasSubstitutes(const fs::path& model)
{
    const std::string extension = LowerExtension(model);
    return extension == ".wrl" || extension == ".wrz";
}

std::vector<std::string> SubstitutesOf(const fs::path& model)
{
    std::vector<std::string> names;
    if (!HasSubstitutes(model))
        return names;
    for (const char* const solid : {"stp", "step", "STP", "STEP", "Stp", "Step", "stpz", "stpZ",
                                    "STPZ", "igs", "iges", "IGS", "IGES"}) {
        fs::path substitute = model;
        substitute.replace_extension(solid);
        if (IsFile(substitute) && !IsAmong(names, substitute))
            names.push_back(PathToUtf8(substitute.filename()));
    }
    return names;
}

} // namespace Halvern::Formats::Kicad
