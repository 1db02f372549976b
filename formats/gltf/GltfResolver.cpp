#include "GltfResolver.h"

#include "GltfDocument.h"
#include "GltfUri.h"

#include "common/Boundary.h"
#include "common/FormatError.h"
#include "common/LinkArray.h"
#include "common/TextEdits.h"

#include <map>
#include <span>

namespace Halvern::Formats::Gltf {

namespace {

using SyncPlugin::FileLinkInfo;
using SyncPlugin::IFileLinkResolverContext;
using SyncPlugin::WideChar;

/// New paths by reference id.
using NewPaths = std::map<std::string, std::string>;

std::filesystem::path FileOf(const WideChar* file)
{
    const std::optional<std::string> path = file ? ToUtf8(file) : std::nullopt;
    if (!path)
        throw FormatError("the file's name is no valid text");
    return PathFromUtf8(*path);
}

void ReadLinks(const WideChar* file, FileLinkInfo** links, int* count)
{
    if (!links || !count)
        throw FormatError("there is no place for the result");
    const GltfDocument document(FileOf(file));
    LinkArray array(document.Uris().size());
    for (const UriString& uri : document.Uris())
        array.Add(uri.id, document.PathOf(uri));
    array.HandOver(links, count);
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

/// The edits that the document needs. Takes the paths it has found out of `paths`.
std::vector<TextEdit> EditsFor(const GltfDocument& document, NewPaths& paths)
{
    std::vector<TextEdit> edits;
    for (const UriString& uri : document.Uris()) {
        const auto wanted = paths.extract(uri.id);
        if (wanted && !IsSamePath(document.PathOf(uri), wanted.mapped()))
            edits.push_back({uri.begin, uri.end, '"' + UriOfPath(wanted.mapped()) + '"'});
    }
    return edits;
}

void RewriteLinks(const WideChar* file, const FileLinkInfo* links, int count)
{
    NewPaths paths = NewPathsOf(links, count);
    if (paths.empty())
        return;
    GltfDocument document(FileOf(file));
    const std::vector<TextEdit> edits = EditsFor(document, paths);
    if (!paths.empty())
        throw FormatError("the file has no link " + paths.begin()->first);
    if (!edits.empty())
        document.Replace(ApplyEdits(document.Json(), edits));
}

} // namespace

bool GltfResolver::GetFileLinks(const WideChar* file, FileLinkInfo** links, int* count,
                                IFileLinkResolverContext* context)
{
    return RunGuarded(context, "read the file links of", file,
                      [&] { ReadLinks(file, links, count); });
}

bool GltfResolver::RepathFileLinks(const WideChar* file, const FileLinkInfo* links, int count,
                                   IFileLinkResolverContext* context)
{
    return RunGuarded(context, "rewrite the file links of", file,
                      [&] { RewriteLinks(file, links, count); });
}

} // namespace Halvern::Formats::Gltf
