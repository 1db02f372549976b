// SPDX-License-Identifier: Apache-2.0

#include "KicadDocument.h"

#include "Companions.h"
#include "LinkFinder.h"
#include "ProjectFile.h"

#include "KitNames.h"
#include "pluginkit/FileEdits.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"
#include "syncplugin/ReferenceIds.h"

#include <algorithm>

namespace Halvern::Formats::Kicad {

namespace {

constexpr std::string_view ModelMember = "model";

std::vector<StoredPath> FindStored(const InputFile& file, bool isProject)
{
    if (isProject)
        return FindDrawingSheets(file);
    LinkFinder finder;
    ReadLists(file, {"kicad_sch", "kicad_pcb"}, finder);
    return finder.Take();
}

bool HasExtension(const std::filesystem::path& path, std::string_view wanted)
{
    std::string extension = PathToUtf8(path.extension());
    std::transform(extension.begin(), extension.end(), extension.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    });
    return extension == wanted;
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
    : m_file(path), m_places(path), m_paths(path, HasExtension(path, ".kicad_sch")),
      m_isProject(HasExtension(path, ".kicad_pro"))
{
    for (StoredPath& stored : FindStored(m_file, m_isProject))
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
    const std::string set = stored.id;
    if (HasSubstitutes(file)) {
        stored.id = SyncPlugin::SetMemberId(set, ModelMember);
        m_models.emplace(stored.id, *path);
    }
    m_links.push_back({stored.id, *path});
    for (const std::string& name : SubstitutesOf(file))
        m_links.push_back(
            {SyncPlugin::SetMemberId(set, name.substr(name.rfind('.') + 1)), Beside(*path, name)});
    m_stored.push_back(std::move(stored));
}

std::optional<std::string> KicadDocument::UnlistedPathOf(const std::string& id) const
{
    if (id.starts_with(SyncPlugin::CompanionMark))
        return m_places.PlaceOf(id.substr(SyncPlugin::CompanionMark.size()));
    if (!id.starts_with(SyncPlugin::SetMark))
        return {};
    const auto model = m_models.find(SetOf(id) + '#' + std::string(ModelMember));
    if (model == m_models.end())
        return {};
    return std::string(WithoutExtension(model->second)) + '.' + id.substr(id.rfind('#') + 1);
}

std::optional<std::string> KicadDocument::ObstacleTo(const std::string& id,
                                                     const std::string& path) const
{
    if (!id.starts_with(SyncPlugin::CompanionMark))
        return {};
    return "KiCad finds " + UnlistedPathOf(id).value_or(id) + " by its name; it cannot be " + path;
}

/// The places of models and of their substitutes must fit each other: the name is all that joins
/// them.
void KicadDocument::RequireNamesFit(const NewPaths& paths) const
{
    NewPaths all = paths;
    for (const DocumentLink& link : m_links)
        all.emplace(link.id, link.path);
    for (const auto& [id, path] : all) {
        if (!id.starts_with(SyncPlugin::SetMark))
            continue;
        const std::string& model = all.at(SetOf(id) + '#' + std::string(ModelMember));
        if (WithoutExtension(path) != WithoutExtension(model))
            throw FormatError(
                std::string("KiCad finds ").append(path).append(" by the name of ").append(model));
    }
}

void KicadDocument::Rewrite(const NewPaths& paths)
{
    RequireNamesFit(paths);
    std::vector<FileEdit> edits;
    for (const StoredPath& stored : m_stored) {
        const auto wanted = paths.find(stored.id);
        if (wanted == paths.end())
            continue;
        const std::string text = m_paths.TextFor(stored, wanted->second);
        edits.push_back({stored.begin, stored.end, m_isProject ? JsonString(text) : Quoted(text)});
    }
    if (!edits.empty())
        ReplaceSpans(m_file, std::move(edits));
}

} // namespace Halvern::Formats::Kicad
