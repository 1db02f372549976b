// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace Halvern::Formats::Kicad {

/// What a relative path in a file of KiCad is relative to.
enum class PathBase
{
    /// The folder of the file. Variables are not expanded: sheets.
    File,
    /// The folder of the project: models, drawing sheets.
    Project,
    /// Nothing; only paths with ${KIPRJMOD} are links: data sheets.
    Variable,
};

/// A place in a file that names another one.
struct StoredPath
{
    std::string id;
    std::string text;
    PathBase base = PathBase::File;
    /// The bytes of the string, quotation marks included.
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

/// The paths of one file, with respect to its project's folder. That of a board is its own, with or
/// without a project file in it, as KiCad has it. A schematic may be a sheet of a project further
/// up: its project's folder is the nearest, its own or one above, that holds a project file; its
/// own when there is none.
class PathsOfFile
{
public:
    PathsOfFile(const std::filesystem::path& file, bool isSheet);

    /// The path, absolute or relative to the folder of the file. Nothing for installed libraries
    /// and whatever else begins with a variable or an alias that is not the project's folder.
    ///
    ///     /p/sub/a.kicad_sch in the project /p: "${KIPRJMOD}/doc/b.pdf" is ../doc/b.pdf
    std::optional<std::string> PathOf(const StoredPath& stored);
    /// What to store for a new path, in the manner of the old one.
    std::string TextFor(const StoredPath& stored, std::string_view path);

    const std::filesystem::path& Folder() const { return m_folder; }

private:
    const std::string& FolderInProject();
    std::string FromProject(std::string_view path);
    std::string ToProject(std::string_view path);

    std::filesystem::path m_folder;
    /// The file's folder relative to the project's, "" or "sub/deep"; looked for when asked for.
    std::optional<std::string> m_folderInProject;
};

} // namespace Halvern::Formats::Kicad
