// SPDX-License-Identifier: Apache-2.0

#include "StoredPath.h"

#include "KitNames.h"
#include "base/Directory.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <vector>

namespace Halvern::Formats::Kicad {

namespace {

namespace fs = std::filesystem;

constexpr int MaxFoldersAbove = 16;
constexpr int MaxEntries = 10'000;

std::string FindFolderInProject(const fs::path& folder)
{
    std::string below;
    fs::path project = folder;
    for (int level = 0; level < MaxFoldersAbove; ++level) {
        if (HoldsProject(project))
            return below;
        const std::string name = PathToUtf8(project.filename());
        if (!project.has_relative_path() || name.empty())
            break;
        below = below.empty() ? name : name + '/' + below;
        project = project.parent_path();
    }
    return {};
}

/// The text after "${KIPRJMOD}/"; nothing when it begins otherwise.
std::optional<std::string_view> BehindProjectVariable(std::string_view text)
{
    for (const std::string_view variable : {"${KIPRJMOD}", "$(KIPRJMOD)", "$KIPRJMOD"})
        if (text.size() > variable.size() + 1 && text.starts_with(variable) &&
            (text[variable.size()] == '/' || text[variable.size()] == '\\'))
            return text.substr(variable.size() + 1);
    return {};
}

/// What is found by an alias, by a variable, or in the file itself.
bool HasVariable(std::string_view text)
{
    return text.starts_with(':') || text.starts_with("kicad-embed:") ||
           text.find("${") != std::string_view::npos || text.find("$(") != std::string_view::npos;
}

/// With "." and ".." resolved; a relative path may still begin with "..".
std::string Normal(const std::string& path)
{
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string part = path.substr(begin, end - begin);
        begin = end + 1;
        if (part == ".." && !parts.empty() && parts.back() != "..")
            parts.pop_back();
        else if (!part.empty() && part != ".")
            parts.push_back(part);
    }
    std::string normal;
    for (const std::string& part : parts)
        normal += (normal.empty() ? "" : "/") + part;
    return normal;
}

} // namespace

bool IsAbsoluteText(std::string_view path)
{
    return path.starts_with('/') || path.starts_with('\\') || (path.size() > 1 && path[1] == ':');
}

bool HoldsProject(const fs::path& folder)
{
    bool found = false;
    int count = 0;
    Base::VisitNames(folder, [&](const std::string& name) {
        const fs::path extension = PathFromUtf8(name).extension();
        found = extension == ".kicad_pro" || extension == ".pro";
        return !found && ++count < MaxEntries;
    });
    return found;
}

std::optional<std::string> PathInProject(std::string_view text, const fs::path& folder)
{
    const std::optional<std::string_view> path = BehindProjectVariable(text);
    return path ? std::optional(WithSlashes(std::string(*path), folder)) : std::nullopt;
}

PathsOfFile::PathsOfFile(const fs::path& file, ProjectOf project) : m_folder(file.parent_path())
{
    if (project == ProjectOf::Folder)
        m_folderInProject.emplace();
}

const std::string& PathsOfFile::FolderInProject()
{
    if (!m_folderInProject)
        m_folderInProject = FindFolderInProject(m_folder);
    return *m_folderInProject;
}

/// A path relative to the project's folder as one relative to the file's.
std::string PathsOfFile::FromProject(std::string_view path)
{
    std::string up;
    if (!FolderInProject().empty())
        for (auto c = std::count(FolderInProject().begin(), FolderInProject().end(), '/'); c >= 0;
             --c)
            up += "../";
    return up.empty() ? std::string(path) : Normal(up + std::string(path));
}

std::string PathsOfFile::ToProject(std::string_view path)
{
    return FolderInProject().empty() ? std::string(path)
                                     : Normal(FolderInProject() + '/' + std::string(path));
}

std::optional<std::string> PathsOfFile::PathOf(const StoredPath& stored)
{
    if (stored.text.empty())
        return {};
    if (stored.base == PathBase::File)
        return WithSlashes(stored.text, m_folder);
    const std::optional<std::string_view> inProject = BehindProjectVariable(stored.text);
    if (inProject && !HasVariable(*inProject))
        return FromProject(WithSlashes(std::string(*inProject), m_folder));
    if (stored.base == PathBase::Variable || HasVariable(stored.text))
        return {};
    const std::string path = WithSlashes(stored.text, m_folder);
    return IsAbsoluteText(path) ? path : FromProject(path);
}

std::string PathsOfFile::TextFor(const StoredPath& stored, std::string_view path)
{
    if (stored.base == PathBase::File || IsAbsoluteText(path))
        return std::string(path);
    // What was absolute gets the variable: KiCad finds it whatever the current folder is.
    const bool isRelative = !BehindProjectVariable(stored.text) && !IsAbsoluteText(stored.text);
    return isRelative ? ToProject(path) : "${KIPRJMOD}/" + ToProject(path);
}

} // namespace Halvern::Formats::Kicad
