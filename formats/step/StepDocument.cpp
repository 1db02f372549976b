#include "StepDocument.h"

#include "StepText.h"

#include "common/FileUri.h"
#include "common/Utf.h"

#include <algorithm>
#include <set>
#include <system_error>

namespace Halvern::Formats::Step {

namespace {

bool NamesExistingFile(std::string_view path, const std::filesystem::path& folder)
{
    std::error_code ignored;
    return path.find('\0') == std::string_view::npos &&
           std::filesystem::is_regular_file(folder / PathFromUtf8(path), ignored);
}

} // namespace

StepDocument::StepDocument(const std::filesystem::path& path)
    : m_file(path), m_files(FindExternalFiles(m_file))
{}

std::string StepDocument::PathOf(const StepString& name) const
{
    std::string path = DecodeString(name.raw);
    if (path.starts_with("file:"))
        return PathOfUri(path, Folder());
    if (path.find('\\') != std::string::npos && !NamesExistingFile(path, Folder()))
        std::replace(path.begin(), path.end(), '\\', '/');
    return path;
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
    for (const ExternalFile& file : m_files) {
        for (const Name& name : NamesOf(file)) {
            if (name.id == id)
                return PathOf(*name.string);
        }
    }
    return std::nullopt;
}

void StepDocument::AddEdits(const ExternalFile& file, const NewPaths& paths,
                            std::vector<FileEdit>& edits) const
{
    const std::vector<Name> names = NamesOf(file);
    const auto wanted = std::find_if(names.begin(), names.end(),
                                     [&](const Name& name) { return paths.contains(name.id); });
    if (wanted == names.end())
        return;
    const std::string old = DecodeString(wanted->string->raw);
    for (const Name& name : names) {
        if (DecodeString(name.string->raw) == old)
            edits.push_back({name.string->begin, name.string->end,
                             EncodeString(paths.find(wanted->id)->second)});
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
