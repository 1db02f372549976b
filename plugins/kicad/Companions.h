// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/Document.h"

#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace Halvern::Formats::Kicad {

/// The files that KiCad finds by name beside a file, those that exist: a project's schematic, board
/// and rules, the tables of libraries, the libraries of the tables that lie in the project's
/// folder, with their descriptions, and the cache of a legacy schematic. A schematic or a board
/// names its project, which names the others; without a project it names them itself, a schematic
/// in a folder with another project being a sheet of that, which has no tables of its own.
std::vector<DocumentLink> CompanionsOf(const std::filesystem::path& file);

/// Where KiCad looks for companions, be they there or not.
class CompanionPlaces
{
public:
    explicit CompanionPlaces(const std::filesystem::path& file) : m_file(file) {}

    /// For an id of CompanionsOf() without its mark, a path relative to the file's folder. Nothing
    /// for other ids, and for a library that no table names.
    std::optional<std::string> PlaceOf(const std::string& id);

private:
    void ReadTables();

    std::filesystem::path m_file;
    bool m_areTablesRead = false;
    /// By table and name.
    std::unordered_map<std::string, std::filesystem::path> m_libraries;
};

/// A model in VRML, of which KiCad exports a solid beside it in its place.
bool HasSubstitutes(const std::filesystem::path& model);

/// The descriptions of a legacy library, as a name beside it, if they exist.
std::vector<std::string> DescriptionsBeside(const std::filesystem::path& library);

/// For a model in VRML, which shows but does not measure: the solids with its base name that KiCad
/// exports in its place. Names beside the model, those that exist.
std::vector<std::string> SubstitutesOf(const std::filesystem::path& model);

} // namespace Halvern::Formats::Kicad
