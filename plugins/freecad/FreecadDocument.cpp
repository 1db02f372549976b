// SPDX-License-Identifier: Apache-2.0

#include "FreecadDocument.h"

#include "KitNames.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/TextEdits.h"
#include "pluginkit/Utf.h"
#include "pluginkit/Xml.h"

namespace Halvern::Formats::Freecad {

namespace {

std::vector<FoundLink> FindLinksOf(const std::string& name, std::string_view xml,
                                   const std::string& idStart)
{
    try {
        return FindLinks(xml, idStart);
    } catch (const FormatError& error) {
        // The position counts in what was packed, not in the file.
        std::string reason = name + ": " + error.what();
        if (error.Position())
            reason += " at its byte " + std::to_string(*error.Position());
        throw FormatError(reason);
    }
}

} // namespace

FreecadDocument::FreecadDocument(const std::filesystem::path& path)
    : m_file(path), m_archive(m_file)
{
    AddPart("Document.xml", "");
    if (m_parts.empty())
        throw FormatError("the archive holds no Document.xml");
    AddPart("GuiDocument.xml", "view:");
}

void FreecadDocument::AddPart(const std::string& name, const std::string& idStart)
{
    std::optional<std::string> xml = m_archive.Read(name, MaxXmlSize);
    if (!xml)
        return;
    std::vector<FoundLink> links = FindLinksOf(name, *xml, idStart);
    m_parts.push_back({name, std::move(*xml), std::move(links)});
}

std::vector<DocumentLink> FreecadDocument::Links() const
{
    std::vector<DocumentLink> links;
    for (const Part& part : m_parts) {
        for (const FoundLink& link : part.links)
            links.push_back({link.id, link.path});
    }
    return links;
}

std::string FreecadDocument::TextOf(const std::string& path, PathKind kind) const
{
    if (kind == PathKind::FromDocument)
        return path;
    return PathToUtf8(NormalPath(PathIn(m_file.Path().parent_path(), path)));
}

std::string FreecadDocument::Edited(const Part& part, const NewPaths& paths) const
{
    std::vector<TextEdit> edits;
    for (const FoundLink& link : part.links) {
        const auto wanted = paths.find(link.id);
        if (wanted == paths.end())
            continue;
        const std::string text = TextOf(wanted->second, link.kind);
        if (text != link.path)
            edits.push_back({link.begin, link.end, EscapeXmlAttribute(text)});
    }
    return ApplyEdits(part.xml, std::move(edits));
}

void FreecadDocument::Rewrite(const NewPaths& paths)
{
    std::map<std::string, std::string> contents;
    for (const Part& part : m_parts) {
        std::string xml = Edited(part, paths);
        if (xml != part.xml)
            contents.emplace(part.name, std::move(xml));
    }
    if (!contents.empty())
        m_archive.Replace(contents);
}

} // namespace Halvern::Formats::Freecad
