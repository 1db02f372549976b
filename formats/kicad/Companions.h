#pragma once

#include "common/Document.h"

#include <filesystem>
#include <string>
#include <vector>

namespace Halvern::Formats::Kicad {

/// The files that KiCad finds by name beside a file, those that exist: a project's schematic, board
/// and rules, the tables of libraries, and the libraries of the tables that lie in the project's
/// folder. A schematic or a board names its project, which names the others; without a project it
/// names the other one.
std::vector<DocumentLink> CompanionsOf(const std::filesystem::path& file);

/// A model in VRML, of which KiCad exports a solid beside it in its place.
bool HasSubstitutes(const std::filesystem::path& model);

/// For a model in VRML, which shows but does not measure: the solids with its base name that KiCad
/// exports in its place. Names beside the model, those that exist.
std::vector<std::string> SubstitutesOf(const std::filesystem::path& model);

} // namespace Halvern::Formats::Kicad
