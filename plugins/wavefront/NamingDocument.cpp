// SPDX-License-Identifier: Apache-2.0

#include "NamingDocument.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkPaths.h"

namespace Halvern::Formats::Wavefront {

void NamingDocument::Add(std::string id, Statement statement, NameSpan usual)
{
    m_textSize += statement.text.size();
    if (m_statements.size() == MaxStatements || m_textSize > MaxText)
        throw FormatError("the file names too many files", statement.begin);
    m_byId.emplace(id, m_statements.size());
    m_statements.emplace_back(std::move(id), std::move(statement), usual);
}

std::vector<DocumentLink> NamingDocument::Links() const
{
    std::vector<DocumentLink> links;
    const std::filesystem::path folder = Folder();
    for (const NamingStatement& statement : m_statements) {
        for (const NameSpan& span : SpansOf(statement)) {
            std::string path = statement.PathOf(span, folder);
            if (!NamesFolder(path, folder))
                links.push_back({statement.IdOf(span), std::move(path)});
        }
    }
    return links;
}

std::optional<NamingDocument::Place> NamingDocument::Find(const std::string& id) const
{
    // The statement's id is all of it or ends before the words that it says.
    auto found = m_byId.find(id);
    if (found == m_byId.end())
        found = m_byId.find(std::string_view(id).substr(0, id.rfind(" words ")));
    if (found == m_byId.end())
        return std::nullopt;
    const NamingStatement& statement = m_statements[found->second];
    const std::optional<NameSpan> span = statement.SpanOf(id);
    if (!span)
        return std::nullopt;
    return Place{&statement, *span};
}

std::optional<std::string> NamingDocument::UnlistedPathOf(const std::string& id) const
{
    const std::optional<Place> place = Find(id);
    if (!place)
        return std::nullopt;
    return place->statement->PathOf(place->span, Folder());
}

std::string NamingDocument::Written(const NamingStatement&, const std::string& path) const
{
    return path;
}

std::vector<FileEdit> NamingDocument::FurtherEdits(const NewPaths&) const
{
    return {};
}

void NamingDocument::Rewrite(const NewPaths& paths)
{
    std::vector<FileEdit> edits = FurtherEdits(paths);
    for (const auto& [id, path] : paths) {
        if (const std::optional<Place> place = Find(id))
            edits.push_back(
                place->statement->EditOf(place->span, Written(*place->statement, path)));
    }
    if (!edits.empty())
        ReplaceSpans(m_file, std::move(edits));
}

} // namespace Halvern::Formats::Wavefront
