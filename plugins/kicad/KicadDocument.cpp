// SPDX-License-Identifier: Apache-2.0

#include "KicadDocument.h"

#include "Companions.h"
#include "LegacyFiles.h"
#include "LinkFinder.h"
#include "ProjectFile.h"
#include "SpiceFile.h"

#include "KitNames.h"
#include "pluginkit/FileEdits.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/Utf.h"
#include "syncplugin/ReferenceIds.h"

#include <algorithm>

namespace Halvern::Formats::Kicad {

namespace {

bool HasExtension(const std::filesystem::path& path, std::string_view wanted)
{
    std::string extension = PathToUtf8(path.extension());
    std::transform(extension.begin(), extension.end(), extension.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    });
    return extension == wanted;
}

std::vector<StoredPath> FindInLists(const InputFile& file)
{
    LinkFinder finder;
    ReadLists(file, {"kicad_sch", "kicad_pcb", "footprint", "module"}, finder);
    return finder.Take();
}

/// A footprint is made for many projects: most models are those of an installed library.
std::vector<StoredPath> FindInFootprint(const InputFile& file)
{
    std::vector<StoredPath> found = FindInLists(file);
    for (StoredPath& stored : found)
        stored.isOnlyWhereThere =
            !IsAbsoluteText(stored.text) && stored.text.find('$') == std::string::npos;
    return found;
}

using Find = std::vector<StoredPath> (*)(const InputFile& file);

struct Kind
{
    std::string_view extension;
    Find find;
    ProjectOf project;
};

constexpr Kind Kinds[] = {
    {".kicad_pro", FindDrawingSheets, ProjectOf::Folder},
    {".kicad_pcb", FindInLists, ProjectOf::Folder},
    {".kicad_sch", FindInLists, ProjectOf::FoldersAbove},
    {".kicad_mod", FindInFootprint, ProjectOf::FoldersAbove},
    {".pro", FindInLegacyProject, ProjectOf::Folder},
    {".sch", FindInLegacySchematic, ProjectOf::FoldersAbove},
};

/// Whatever else the plug-in is registered for is a file of the simulator.
Kind KindOf(const std::filesystem::path& path)
{
    for (const Kind& kind : Kinds)
        if (HasExtension(path, kind.extension))
            return kind;
    return {{}, FindSpiceIncludes, ProjectOf::Folder};
}

/// The path up to the extension.
std::string_view WithoutExtension(std::string_view path)
{
    const std::size_t dot = path.rfind('.');
    const std::size_t slash = path.rfind('/');
    const bool isExtension =
        dot != std::string_view::npos && (slash == std::string_view::npos || dot > slash);
    return isExtension ? path.substr(0, dot) : path;
}

/// What the ids of all members of a set begin with.
std::string SetOf(const std::string& id)
{
    return id.substr(0, id.rfind('#'));
}

/// The path of a file beside another one.
std::string Beside(const std::string& path, const std::string& name)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? name : path.substr(0, slash + 1) + name;
}

} // namespace

KicadDocument::KicadDocument(const std::filesystem::path& path)
    : m_file(path), m_places(path), m_paths(path, KindOf(path).project)
{
    for (StoredPath& stored : KindOf(path).find(m_file))
        AddStored(std::move(stored));
    for (DocumentLink& companion : CompanionsOf(path))
        m_links.push_back(std::move(companion));
}

void KicadDocument::AddStored(StoredPath stored)
{
    const std::optional<std::string> path = m_paths.PathOf(stored);
    if (!path)
        return;
    const std::filesystem::path file = PathIn(m_paths.Folder(), *path);
    const bool isThere = !stored.isOnlyWhereThere || NamesExistingFile(*path, m_paths.Folder());
    if (stored.notation == Notation::Library)
        AddMain(stored, *path, isThere, DescriptionsBeside(file));
    else if (HasSubstitutes(file))
        AddMain(stored, *path, isThere, SubstitutesOf(file));
    else if (isThere)
        m_links.push_back({stored.id, *path});
    else
        m_unlisted.emplace(stored.id, *path);
    m_stored.push_back(std::move(stored));
}

/// With the files beside it that go by its name.
void KicadDocument::AddMain(StoredPath& stored, const std::string& path, bool isThere,
                            const std::vector<std::string>& others)
{
    const std::string set = stored.id;
    const bool isLibrary = stored.notation == Notation::Library;
    stored.id = SyncPlugin::SetMemberId(set, isLibrary ? "library" : "model");
    m_mains.emplace(SetOf(stored.id), Main{stored.id, path});
    if (!isThere) {
        m_unlisted.emplace(stored.id, path);
        return;
    }
    m_links.push_back({stored.id, path});
    for (const std::string& name : others)
        m_links.push_back(
            {SyncPlugin::SetMemberId(set, name.substr(name.rfind('.') + 1)), Beside(path, name)});
}

std::optional<std::string> KicadDocument::UnlistedPathOf(const std::string& id) const
{
    if (id.starts_with(SyncPlugin::CompanionMark))
        return m_places.PlaceOf(id.substr(SyncPlugin::CompanionMark.size()));
    if (const auto unlisted = m_unlisted.find(id); unlisted != m_unlisted.end())
        return unlisted->second;
    if (!id.starts_with(SyncPlugin::SetMark))
        return {};
    const auto main = m_mains.find(SetOf(id));
    if (main == m_mains.end())
        return {};
    return std::string(WithoutExtension(main->second.path)) + '.' + id.substr(id.rfind('#') + 1);
}

std::optional<std::string> KicadDocument::ObstacleTo(const std::string& id,
                                                     const std::string& path) const
{
    if (!id.starts_with(SyncPlugin::CompanionMark))
        return {};
    return "KiCad finds " + UnlistedPathOf(id).value_or(id) + " by its name; it cannot be " + path;
}

/// The places of models or libraries and of what goes by their names must fit each other: the name
/// is all that joins them.
void KicadDocument::RequireNamesFit(const NewPaths& paths) const
{
    NewPaths all = paths;
    for (const DocumentLink& link : m_links)
        all.emplace(link.id, link.path);
    for (const auto& [set, main] : m_mains)
        all.emplace(main.id, main.path);
    for (const auto& [id, path] : all) {
        if (!id.starts_with(SyncPlugin::SetMark))
            continue;
        const std::string& main = all.at(m_mains.at(SetOf(id)).id);
        if (WithoutExtension(path) != WithoutExtension(main))
            throw FormatError(
                std::string("KiCad finds ").append(path).append(" by the name of ").append(main));
    }
}

/// A name such as "a${x}.step" cannot be had: KiCad would look for another one.
std::string KicadDocument::TextFor(const StoredPath& stored, const std::string& path)
{
    StoredPath next = stored;
    next.text = m_paths.TextFor(stored, path);
    if (!IsAbsoluteText(path) && !m_paths.PathOf(next))
        throw FormatError("KiCad would not take " + next.text + " for the path " + path);
    return next.text;
}

void KicadDocument::Rewrite(const NewPaths& paths)
{
    RequireNamesFit(paths);
    std::vector<FileEdit> edits;
    for (const StoredPath& stored : m_stored) {
        const auto wanted = paths.find(stored.id);
        if (wanted == paths.end())
            continue;
        edits.push_back(
            {stored.begin, stored.end, Written(stored.notation, TextFor(stored, wanted->second))});
    }
    if (!edits.empty())
        ReplaceSpans(m_file, std::move(edits));
}

} // namespace Halvern::Formats::Kicad
