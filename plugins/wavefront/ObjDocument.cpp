// SPDX-License-Identifier: Apache-2.0

#include "ObjDocument.h"

#include "KitNames.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/Utf.h"
#include "syncplugin/ReferenceIds.h"

#include <algorithm>

namespace Halvern::Formats::Wavefront {

namespace {

std::string Companion()
{
    return SyncPlugin::CompanionId("mtl");
}

bool IsLibraryStatement(std::string_view keyword)
{
    return keyword == "mtllib";
}

bool EndsName(std::string_view word)
{
    constexpr std::string_view extension = ".mtl";
    if (word.ends_with('"'))
        word.remove_suffix(1);
    const auto same = [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == b; };
    // The word is the extension alone where a blank is in front of it.
    return word.size() >= extension.size() &&
           std::equal(extension.begin(), extension.end(), word.end() - extension.size(),
                      [&](char e, char w) { return same(w, e); });
}

bool IsOneQuotedName(std::string_view raw)
{
    return raw.size() > 1 && raw.starts_with('"') && raw.find('"', 1) == raw.size() - 1;
}

/// Names one after the other, each up to a word with the extension.
std::vector<NameSpan> SplitAtExtensions(const NamingStatement& statement)
{
    std::vector<NameSpan> names;
    std::size_t first = 0;
    for (std::size_t i = 0; i < statement.Words().size(); ++i) {
        const bool isQuoted = statement.Raw({first, first + 1}).starts_with('"');
        const std::string_view word = statement.Raw({i, i + 1});
        if (!EndsName(word) || (isQuoted && !word.ends_with('"')))
            continue;
        names.push_back({first, i + 1});
        first = i + 1;
    }
    if (names.empty())
        return {statement.Usual()};
    names.back().end = statement.Words().size();
    return names;
}

std::string FirstLineBreak(const InputFile& file)
{
    TextScanner scanner(file);
    if (!scanner.SkipTo("\n\r") || scanner.Next() == '\n')
        return "\n";
    return scanner.Peek() == '\n' ? "\r\n" : "\r";
}

} // namespace

ObjDocument::ObjDocument(const std::filesystem::path& path) : NamingDocument(path)
{
    StatementReader reader(File(), IsLibraryStatement, Continuation::Backslash);
    std::size_t number = 0;
    while (std::optional<Statement> statement = reader.Next()) {
        const std::size_t words = statement->Words().size();
        if (words > 0)
            Add("mtllib " + std::to_string(++number), std::move(*statement), {0, words});
    }
}

std::vector<NameSpan> ObjDocument::SpansOf(const NamingStatement& statement) const
{
    const NameSpan whole = statement.Usual();
    if (whole.end == 1 || IsOneQuotedName(statement.Raw(whole)) ||
        NamesExistingFile(statement.PathOf(whole, Folder()), Folder()))
        return {whole};
    return SplitAtExtensions(statement);
}

std::string ObjDocument::CompanionPath() const
{
    return PathToUtf8(File().Path().stem()) + ".mtl";
}

bool ObjDocument::IsNamed(const std::string& path, const NewPaths& changes) const
{
    const std::vector<DocumentLink> links = NamingDocument::Links();
    return std::any_of(links.begin(), links.end(), [&](const DocumentLink& link) {
        const auto changed = changes.find(link.id);
        return IsSamePath(changed == changes.end() ? link.path : changed->second, path);
    });
}

std::vector<DocumentLink> ObjDocument::Links() const
{
    std::vector<DocumentLink> links = NamingDocument::Links();
    const std::string companion = CompanionPath();
    if (NamesExistingFile(companion, Folder()) && !IsNamed(companion, {}))
        links.push_back({Companion(), companion});
    return links;
}

std::optional<std::string> ObjDocument::UnlistedPathOf(const std::string& id) const
{
    return id == Companion() ? CompanionPath() : NamingDocument::UnlistedPathOf(id);
}

FileEdit ObjDocument::NewStatement(const std::string& path) const
{
    RequireFitsLine(path);
    const std::string lineBreak = FirstLineBreak(File());
    // After the others, so that these keep their numbers.
    if (!Statements().empty()) {
        const Statement& last = Statements().back().Text();
        const std::uint64_t end = last.PlaceOf(last.text.size());
        return {end, end, InForm(lineBreak + "mtllib " + path, last.form)};
    }
    const std::uint64_t begin = MarkSize(File());
    return {begin, begin, InForm("mtllib " + path + lineBreak, TextFormOf(File()))};
}

std::vector<FileEdit> ObjDocument::FurtherEdits(const NewPaths& paths) const
{
    const auto companion = paths.find(Companion());
    if (companion == paths.end() || IsNamed(companion->second, paths))
        return {};
    return {NewStatement(companion->second)};
}

} // namespace Halvern::Formats::Wavefront
