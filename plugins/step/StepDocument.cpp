// SPDX-License-Identifier: Apache-2.0

#include "StepDocument.h"

#include "StepText.h"

#include "KitNames.h"
#include "pluginkit/FileUri.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <charconv>
#include <set>

namespace Halvern::Formats::Step {

StepDocument::StepDocument(const std::filesystem::path& path)
    : m_file(path), m_files(FindExternalFiles(m_file))
{
    for (std::size_t i = 0; i < m_files.size(); ++i)
        m_byInstance.emplace(m_files[i].instance, i);
}

std::string StepDocument::PathOf(const StepString& name) const
{
    std::string path = DecodeString(name.raw);
    if (IsFileUri(path))
        return PathOfUri(path, Folder());
    return WithSlashes(std::move(path), Folder());
}

std::vector<StepDocument::Name> StepDocument::NamesOf(const ExternalFile& file) const
{
    const std::string id = '#' + std::to_string(file.instance);
    std::vector<Name> names;
    if (!file.assigned.raw.empty())
        names.push_back({id, &file.assigned});
    if (!file.document.raw.empty())
        names.push_back({id + " document", &file.document});
    if (!file.source.raw.empty())
        names.push_back({id + " source", &file.source});
    return names;
}

std::optional<StepDocument::Name> StepDocument::LinkOf(const ExternalFile& file) const
{
    const std::vector<Name> names = NamesOf(file);
    const auto leads = [&](const StepString& name) {
        const std::string path = PathOf(name);
        return IsLinkUri(path) && NamesExistingFile(path, Folder());
    };
    if (!file.assigned.raw.empty()) {
        // A document's string may be its number. It is a link where it leads to a file.
        const bool isDocument =
            !file.document.raw.empty() && !leads(file.assigned) && leads(file.document);
        return names[isDocument ? 1 : 0];
    }
    if (!file.source.raw.empty() && !(leads(file.document) && !leads(file.source)))
        return names.back();
    if (!file.document.raw.empty() && leads(file.document))
        return names.front();
    return std::nullopt;
}

std::vector<DocumentLink> StepDocument::Links() const
{
    std::vector<DocumentLink> links;
    for (const ExternalFile& file : m_files) {
        const std::optional<Name> name = LinkOf(file);
        if (!name)
            continue;
        std::string path = PathOf(*name->string);
        if (IsLinkUri(path) && !NamesFolder(path, Folder()))
            links.push_back({name->id, std::move(path)});
    }
    return links;
}

std::optional<std::string> StepDocument::UnlistedPathOf(const std::string& id) const
{
    std::uint64_t instance = 0;
    if (!id.starts_with('#') ||
        std::from_chars(id.data() + 1, id.data() + id.size(), instance).ec != std::errc())
        return std::nullopt;
    const auto file = m_byInstance.find(instance);
    if (file == m_byInstance.end())
        return std::nullopt;
    for (const Name& name : NamesOf(m_files[file->second])) {
        if (name.id == id)
            return PathOf(*name.string);
    }
    return std::nullopt;
}

void StepDocument::AddEdits(const ExternalFile& file, const NewPaths& paths,
                            std::vector<FileEdit>& edits) const
{
    const std::vector<Name> names = NamesOf(file);
    for (const Name& wanted : names) {
        const auto path = paths.find(wanted.id);
        if (path == paths.end())
            continue;
        const std::string text = EncodeString(path->second);
        edits.push_back({wanted.string->begin, wanted.string->end, text});
        for (const Name& name : names) {
            if (!paths.contains(name.id) &&
                DecodeString(name.string->raw) == DecodeString(wanted.string->raw))
                edits.push_back({name.string->begin, name.string->end, text});
        }
    }
}

void StepDocument::Rewrite(const NewPaths& paths)
{
    std::vector<FileEdit> edits;
    for (const ExternalFile& file : m_files)
        AddEdits(file, paths, edits);
    // Assignments may share a source, which then has more than one edit: the first one counts.
    std::set<std::uint64_t> edited;
    std::erase_if(edits, [&](const FileEdit& edit) { return !edited.insert(edit.begin).second; });
    if (!edits.empty())
        ReplaceSpans(m_file, std::move(edits));
}

} // namespace Halvern::Formats::Step
