// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/DocumentResolver.h"

#include "pluginkit/Boundary.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkArray.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/Utf.h"

#include <span>

namespace Halvern::PluginKit {

namespace {

using SyncPlugin::FileLinkInfo;
using SyncPlugin::IFileLinkResolverContext;
using SyncPlugin::WideChar;

constexpr bool HasDrives = std::filesystem::path::preferred_separator == '\\';

/// Hosts take a ":" after the second character of a relative path for the end of a scheme. Where a
/// name can hold one, a file that is there is named by its whole path, if that fits a record.
std::string WithoutScheme(const std::string& path, const std::filesystem::path& folder)
{
    const std::size_t colon = path.find(':');
    if (HasDrives || colon == std::string::npos || colon < 2 || path.starts_with('/') ||
        !NamesExistingFile(path, folder))
        return path;
    std::string whole = PathToUtf8((folder / PathFromUtf8(path)).lexically_normal());
    const std::optional<WideString> units = ToUtf16(whole);
    return units && units->size() <= MaxLinkUnits ? whole : path;
}

std::filesystem::path FileOf(const WideChar* file)
{
    const std::optional<std::string> path = file ? ToUtf8(file) : std::nullopt;
    if (!path)
        throw FormatError("the file's name is no valid text");
    return PathFromUtf8(*path);
}

void AddNewPath(NewPaths& paths, const FileLinkInfo& link)
{
    if (link.size != sizeof(FileLinkInfo))
        throw FormatError("a link record of " + std::to_string(link.size) + " bytes");
    const std::optional<std::string> id = LinkText(link.referenceId);
    if (!id)
        throw FormatError("a link's id is no valid text");
    const std::optional<std::string> path = LinkText(link.path);
    if (!path || path->empty())
        throw FormatError("the new path of link " + *id + " is empty or no valid text");
    const auto [known, isNew] = paths.emplace(*id, *path);
    if (!isNew && known->second != *path)
        throw FormatError("two new paths for link " + *id + ": " + known->second + " and " + *path);
}

NewPaths NewPathsOf(const FileLinkInfo* links, int count)
{
    if (count < 0 || (count > 0 && !links))
        throw FormatError("the list of links is invalid");
    NewPaths paths;
    for (const FileLinkInfo& link : std::span(links, static_cast<std::size_t>(count)))
        AddNewPath(paths, link);
    return paths;
}

/// Those of `paths` that the document does not have yet.
NewPaths ChangesOf(const Document& document, NewPaths paths)
{
    NewPaths changes;
    for (const DocumentLink& link : document.Links()) {
        auto wanted = paths.extract(link.id);
        if (wanted && !IsSamePath(link.path, wanted.mapped()))
            changes.insert(std::move(wanted));
    }
    for (auto& [id, wanted] : paths) {
        const std::optional<std::string> path = document.UnlistedPathOf(id);
        if (!path)
            throw FormatError("the file has no link " + id);
        if (!IsSamePath(*path, wanted))
            changes.emplace(id, std::move(wanted));
    }
    return changes;
}

/// Why some links cannot have their paths, which are taken out of `changes`. Empty when all can.
std::string TakeObstacles(const Document& document, NewPaths& changes)
{
    std::string first;
    std::size_t further = 0;
    std::erase_if(changes, [&](const auto& change) {
        std::optional<std::string> obstacle = document.ObstacleTo(change.first, change.second);
        if (!obstacle)
            return false;
        if (first.empty())
            first = std::move(*obstacle);
        else
            ++further;
        return true;
    });
    return further == 0 ? first : first + " (and " + std::to_string(further) + " more)";
}

} // namespace

void DocumentResolver::ReadLinks(const WideChar* file, FileLinkInfo** links, int* count) const
{
    if (!links || !count)
        throw FormatError("there is no place for the result");
    const std::filesystem::path path = FileOf(file);
    const std::vector<DocumentLink> found = m_open(path)->Links();
    LinkArray array(found.size());
    for (const DocumentLink& link : found)
        array.Add(link.id, WithoutScheme(link.path, path.parent_path()));
    array.HandOver(links, count);
}

void DocumentResolver::RewriteLinks(const WideChar* file, const FileLinkInfo* links,
                                    int count) const
{
    NewPaths paths = NewPathsOf(links, count);
    if (paths.empty())
        return;
    const std::unique_ptr<Document> document = m_open(FileOf(file));
    document->RequireTogether(paths);
    NewPaths changes = ChangesOf(*document, std::move(paths));
    const std::string obstacles = TakeObstacles(*document, changes);
    if (!changes.empty())
        document->Rewrite(changes);
    if (!obstacles.empty())
        throw FormatError(obstacles);
}

bool DocumentResolver::GetFileLinks(const WideChar* file, FileLinkInfo** links, int* count,
                                    IFileLinkResolverContext* context) noexcept
{
    return RunGuarded(context, "read the file links of", file,
                      [&] { ReadLinks(file, links, count); });
}

bool DocumentResolver::RepathFileLinks(const WideChar* file, const FileLinkInfo* links, int count,
                                       IFileLinkResolverContext* context) noexcept
{
    return RunGuarded(context, "rewrite the file links of", file,
                      [&] { RewriteLinks(file, links, count); });
}

} // namespace Halvern::PluginKit
