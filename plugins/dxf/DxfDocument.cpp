// SPDX-License-Identifier: Apache-2.0

#include "DxfDocument.h"

#include "IdCounter.h"
#include "KitNames.h"
#include "pluginkit/FileEdits.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/FileUri.h"
#include "pluginkit/LinkArray.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/Utf.h"
#include "syncplugin/ReferenceIds.h"

#include <unordered_set>

namespace Halvern::Formats::Dxf {

namespace {

/// Such as drawings that are opened from the web.
bool IsAddress(const std::string& path)
{
    const std::size_t mark = path.find("://");
    return mark != std::string::npos && mark > 1 && path.find('/') == mark + 1;
}

std::string NameIn(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

bool FitsLink(const std::string& path)
{
    const std::optional<WideString> units = ToUtf16(path);
    return units && units->size() <= MaxLinkUnits;
}

} // namespace

DxfDocument::DxfDocument(const std::filesystem::path& path)
    : m_file(path), m_found(FindDxfNames(m_file)), m_text(m_found.version, m_found.codePage)
{
    IdCounter ids;
    for (std::size_t i = 0; i < m_found.names.size(); ++i) {
        DxfName& name = m_found.names[i];
        name.id = ids.Next(m_text.Decode(name.id));
        m_byId.emplace(name.id, i);
    }
}

std::string DxfDocument::StoredPath(const DxfName& name) const
{
    std::string path = m_text.Decode(name.raw);
    return IsFileUri(path) ? PathOfUri(path, Folder()) : WithSlashes(std::move(path), Folder());
}

/// A file that is not where the drawing says is looked for in the drawing's folder. What is found
/// there goes by its whole path: a copy shall name it as it is.
std::string DxfDocument::PathOf(const DxfName& name) const
{
    std::string path = StoredPath(name);
    const std::string file = NameIn(path);
    if (file == path || file.empty() || NamesExistingFile(path, Folder()) ||
        !NamesExistingFile(file, Folder()))
        return path;
    std::string whole = PathToUtf8(NormalPath(PathIn(Folder(), file)));
    return FitsLink(whole) ? whole : file;
}

/// Those of shapes may be named without their ending.
std::optional<std::string> DxfDocument::FontBeside(const std::string& path) const
{
    if (path.find('/') != std::string::npos)
        return std::nullopt;
    for (const char* ending : {"", ".shx"}) {
        if (NamesExistingFile(path + ending, Folder()))
            return path + ending;
    }
    return std::nullopt;
}

std::optional<DocumentLink> DxfDocument::LinkOf(const DxfName& name) const
{
    std::string path = PathOf(name);
    if (IsAddress(path) || Formats::NamesFolder(path, Folder()))
        return std::nullopt;
    switch (name.kind) {
    case NameKind::Reference:
        return DocumentLink{name.id, std::move(path)};
    case NameKind::Map:
        break;
    case NameKind::Font:
        if (const std::optional<std::string> font = FontBeside(path))
            return DocumentLink{SyncPlugin::CompanionId(*font), *font};
        break;
    }
    if (!NamesExistingFile(path, Folder()))
        return std::nullopt;
    return DocumentLink{name.id, std::move(path)};
}

std::vector<DocumentLink> DxfDocument::Links() const
{
    std::vector<DocumentLink> links;
    std::unordered_set<std::string> companions;
    for (const DxfName& name : m_found.names) {
        std::optional<DocumentLink> link = LinkOf(name);
        if (!link || (link->id.starts_with(SyncPlugin::CompanionMark) &&
                      !companions.insert(link->id).second))
            continue;
        links.push_back(std::move(*link));
    }
    return links;
}

std::optional<std::string> DxfDocument::UnlistedPathOf(const std::string& id) const
{
    if (id.starts_with(SyncPlugin::CompanionMark))
        return id.substr(SyncPlugin::CompanionMark.size());
    const auto found = m_byId.find(id);
    if (found == m_byId.end())
        return std::nullopt;
    return StoredPath(m_found.names[found->second]);
}

std::optional<std::string> DxfDocument::ObstacleTo(const std::string& id,
                                                   const std::string& path) const
{
    if (!id.starts_with(SyncPlugin::CompanionMark))
        return std::nullopt;
    return id.substr(SyncPlugin::CompanionMark.size()) +
           " is found by its name beside the drawing and cannot become " + path;
}

void DxfDocument::Rewrite(const NewPaths& paths)
{
    std::vector<FileEdit> edits;
    for (const DxfName& name : m_found.names) {
        const auto wanted = paths.find(name.id);
        if (wanted == paths.end())
            continue;
        // The manner of paths that are relative to the drawing.
        const bool hasDot = name.raw.starts_with(".\\") || name.raw.starts_with("./");
        const bool isBelow = !IsAbsolutePath(PathFromUtf8(wanted->second)) &&
                             !wanted->second.starts_with("../") &&
                             !wanted->second.starts_with("./");
        edits.push_back({name.begin, name.end,
                         m_text.Encode((hasDot && isBelow ? "./" : "") + wanted->second)});
    }
    if (!edits.empty())
        ReplaceSpans(m_file, std::move(edits));
}

} // namespace Halvern::Formats::Dxf
