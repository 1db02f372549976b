// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

/// How a path is written where it stands.
enum class Notation
{
    /// A word or a string of a list.
    List,
    /// A string of JSON.
    Json,
    /// A string of a legacy schematic.
    Quoted,
    /// The path of a directive of the simulator, in a file or a line of its own.
    Directive,
    /// Such a path within a string of a list.
    ListDirective,
    /// The rest of a line of a legacy project file.
    Setting,
    /// A legacy symbol library, which is named without its ".lib".
    Library,
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
    Notation notation = Notation::List;
    /// Names a file only where there is one: it may as well be found in an installed library, or be
    /// no path at all.
    bool isOnlyWhereThere = false;
};

/// The bytes that name a path: what stands between StoredPath::begin and StoredPath::end. Throws
/// FormatError for a path that cannot be written there.
std::string Written(Notation notation, std::string_view text);

/// Finds directives of the simulator that name a file, one a line of `text`:
///
///     .include "models/npn.lib"
///     .lib corners.lib slow
///
/// Begin and end are offsets in `text`. Ids are left empty, texts may be Latin-1.
std::vector<StoredPath> FindDirectives(std::string_view text);

/// Gives links whose ids are equal different ones, in the order of the file.
void NumberIds(std::vector<StoredPath>& links);

/// Whose project's folder counts for a file.
enum class ProjectOf
{
    /// The file's own folder, with or without a project file in it, as KiCad has it for boards.
    Folder,
    /// The nearest folder, its own or one above, that holds a project file: a schematic may be a
    /// sheet of a project further up, a footprint lies in a library. Its own when there is none.
    FoldersAbove,
};

bool IsAbsoluteText(std::string_view path);

/// True when a folder holds a project file, of KiCad 5 or earlier, too.
bool HoldsProject(const std::filesystem::path& folder);

/// The path behind "${KIPRJMOD}/", with slashes; nothing when `text` begins otherwise.
std::optional<std::string> PathInProject(std::string_view text,
                                         const std::filesystem::path& folder);

/// The paths of one file, with respect to its project's folder.
class PathsOfFile
{
public:
    PathsOfFile(const std::filesystem::path& file, ProjectOf project);

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
