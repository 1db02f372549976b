// SPDX-License-Identifier: Apache-2.0

#include "ScadDocument.h"

#include "IncludedImports.h"
#include "LibraryFolders.h"
#include "ScadText.h"

#include "KitNames.h"
#include "pluginkit/FileEdits.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/LinkArray.h"
#include "pluginkit/LinkPaths.h"
#include "syncplugin/ReferenceIds.h"

#include <set>
#include <unordered_set>

namespace Halvern::Formats::OpenScad {

namespace {

/// How far up a folder may be from which an included file is used.
constexpr int MaxLevels = 8;

/// True when a name leads to a file from a folder above this one, too: then the text that it stands
/// in may be included from there.
bool LeadsSomewhereFromAbove(const std::string& name, std::filesystem::path folder)
{
    if (IsAbsolutePath(PathFromUtf8(name)))
        return false;
    for (int i = 0; i < MaxLevels && folder.has_relative_path(); ++i) {
        folder = folder.parent_path();
        if (NamesExistingFile(name, folder))
            return true;
    }
    return false;
}

/// Whoever includes the file brings the import along.
bool IsMeantForIncluder(const std::string& name, const std::filesystem::path& folder)
{
    return !NamesExistingFile(name, folder) && LeadsSomewhereFromAbove(name, folder);
}

/// The model itself opens one file there, and a model above that includes it another one: the name
/// is right for both as long as nobody changes it.
bool HasToStay(const Reference& reference, const std::string& name,
               const std::filesystem::path& folder)
{
    return reference.kind == ReferenceKind::Import && LeadsSomewhereFromAbove(name, folder);
}

} // namespace

ScadDocument::ScadDocument(const std::filesystem::path& path)
    : m_file(path), m_references(FindReferences(m_file))
{
    for (std::size_t i = 0; i < m_references.size(); ++i)
        m_byId.emplace(m_references[i].id, i);
}

bool ScadDocument::IsLink(const Reference& reference, const std::string& path) const
{
    switch (reference.kind) {
    case ReferenceKind::Include:
    case ReferenceKind::Use:
        return !NamesFolder(path, Folder()) &&
               (NamesExistingFile(path, Folder()) || !IsInstalledLibrary(path, LibraryFolders()));
    case ReferenceKind::Import:
        return !NamesFolder(path, Folder()) && !IsMeantForIncluder(path, Folder());
    case ReferenceKind::Computed:
        return true;
    }
    return false;
}

std::vector<DocumentLink> ScadDocument::Links() const
{
    std::vector<DocumentLink> links;
    std::set<std::string> companions;
    for (const Reference& reference : m_references) {
        std::string path = PathOf(reference, Folder());
        if (!IsLink(reference, path))
            continue;
        std::string id = SyncPlugin::CompanionId(path);
        if (!HasToStay(reference, path, Folder()) || id.size() > MaxLinkUnits)
            links.push_back({reference.id, std::move(path)});
        else if (companions.insert(path).second)
            links.push_back({std::move(id), std::move(path)});
    }
    AddIncludedImports(links);
    return links;
}

void ScadDocument::AddIncludedImports(std::vector<DocumentLink>& links) const
{
    std::unordered_set<std::string> own;
    for (const DocumentLink& link : links)
        own.emplace(WithoutDot(link.path));
    for (std::string& path : ImportsOfIncludedFiles(m_file.Path(), m_references)) {
        const bool isKnown = own.contains(std::string(WithoutDot(path)));
        std::string id = SyncPlugin::CompanionId(path);
        // The id says the path. Nobody has to know of one that is too long for it: that import is
        // reported by the file that it stands in.
        if (!isKnown && id.size() <= MaxLinkUnits)
            links.push_back({std::move(id), std::move(path)});
    }
}

std::optional<std::string> ScadDocument::UnlistedPathOf(const std::string& id) const
{
    if (id.starts_with(SyncPlugin::CompanionMark))
        return id.substr(SyncPlugin::CompanionMark.size());
    const auto reference = m_byId.find(id);
    if (reference == m_byId.end())
        return std::nullopt;
    return PathOf(m_references[reference->second], Folder());
}

std::optional<std::string> ScadDocument::ObstacleTo(const std::string& id,
                                                    const std::string& path) const
{
    if (!id.starts_with(SyncPlugin::CompanionMark))
        return std::nullopt;
    return id.substr(SyncPlugin::CompanionMark.size()) +
           " is named in an included file and has to keep its place, not become " + path;
}

void ScadDocument::Rewrite(const NewPaths& paths)
{
    std::vector<FileEdit> edits;
    for (const Reference& reference : m_references) {
        const auto wanted = paths.find(reference.id);
        // What an expression yields is the model's affair; its link is there to be seen.
        if (wanted != paths.end() && reference.kind != ReferenceKind::Computed)
            edits.push_back({reference.begin, reference.end, Written(reference, wanted->second)});
    }
    if (!edits.empty())
        ReplaceSpans(m_file, std::move(edits));
}

} // namespace Halvern::Formats::OpenScad
