// SPDX-License-Identifier: Apache-2.0

#include "LegacyFiles.h"
#include "Lines.h"
#include "LinkFinder.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkArray.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace Halvern::Formats::Kicad {

namespace {

constexpr std::string_view Beginning = "EESchema Schematic File Version";
constexpr std::string_view Libraries = "LIBS:";

/// What stands between quotation marks.
struct QuotedText
{
    std::string text;
    std::size_t begin;
    std::size_t end;
};

std::optional<QuotedText> NextQuoted(std::string_view line, std::size_t from)
{
    const std::size_t begin = line.find('"', from);
    if (begin == std::string_view::npos)
        return {};
    QuotedText quoted{{}, begin, begin};
    for (std::size_t at = begin + 1; at < line.size(); ++at) {
        if (line[at] == '"') {
            quoted.end = at + 1;
            return quoted;
        }
        const bool isEscape = line[at] == '\\' && at + 1 < line.size() &&
                              (line[at + 1] == '"' || line[at + 1] == '\\');
        at += isEscape ? 1 : 0;
        quoted.text += line[at];
    }
    return {};
}

/// The number after "F", as in "F1 " of a sheet and "F 3 " of a symbol; -1 for other lines.
int FieldNumber(std::string_view line)
{
    if (!line.starts_with('F'))
        return -1;
    const std::size_t digit = line.find_first_not_of(' ', 1);
    int number = -1;
    for (std::size_t at = digit; at < line.size() && line[at] >= '0' && line[at] <= '9'; ++at)
        number = std::min(std::max(number, 0) * 10 + (line[at] - '0'), 9999);
    return number;
}

/// The identifier of a sheet or a symbol: the last word of its "U" line.
std::string IdentifierOf(std::string_view line)
{
    const std::size_t last = line.find_last_not_of(' ');
    if (!line.starts_with("U ") || last == std::string_view::npos)
        return {};
    const std::size_t begin = line.find_last_of(' ', last) + 1;
    return std::string(line.substr(begin, std::min(last + 1 - begin, MaxLinkUnits / 2)));
}

class Finder
{
public:
    void AddLine(const Line& line)
    {
        const std::string_view text = line.text;
        if (std::exchange(m_isText, false))
            AddText(line);
        else if (text.starts_with(Libraries))
            AddLibraries(line);
        else if (text.starts_with("$Sheet"))
            m_part = Part::Sheet;
        else if (text.starts_with("$Comp"))
            m_part = Part::Symbol;
        else if (text.starts_with("$End"))
            EndPart(text);
        else if (text.starts_with("Text "))
            m_isText = true;
        else if (m_part != Part::None && text.starts_with("U "))
            m_identifier = IdentifierOf(text);
        else if (m_part != Part::None)
            AddField(line);
    }

    bool HasEnded() const { return m_hasEnded; }

    std::vector<StoredPath> Take()
    {
        NumberIds(m_links);
        return std::move(m_links);
    }

private:
    enum class Part
    {
        None,
        Sheet,
        Symbol,
    };

    void EndPart(std::string_view text)
    {
        m_hasEnded = text.starts_with("$EndSCHEMATC");
        m_part = Part::None;
        m_identifier.clear();
    }

    void AddField(const Line& line)
    {
        const int number = FieldNumber(line.text);
        const std::optional<QuotedText> value =
            number < 0 ? std::nullopt : NextQuoted(line.text, 0);
        if (line.isCut && m_part == Part::Sheet && number == 1)
            FailTooLong(line.begin);
        if (!value)
            return;
        if (m_part == Part::Sheet && number == 1)
            Add(line, *value, "file", PathBase::File);
        else if (m_part == Part::Symbol && number == 3)
            Add(line, *value, "datasheet", PathBase::Variable);
        else if (m_part == Part::Symbol && number > 3 && IsSimulation(line.text, value->end))
            Add(line, *value, "simulation", PathBase::Project);
    }

    [[noreturn]] static void FailTooLong(std::uint64_t position)
    {
        throw FormatError("a file name of more than " + std::to_string(MaxNameSize) + " bytes",
                          position);
    }

    /// A field of the user has its name at the end.
    static bool IsSimulation(std::string_view line, std::size_t from)
    {
        const std::optional<QuotedText> name = NextQuoted(line, from);
        return name && name->text == "Spice_Lib_File";
    }

    void Add(const Line& line, const QuotedText& value, const std::string& what, PathBase base)
    {
        if (value.text.empty() || (base == PathBase::Project && value.text == "~"))
            return;
        if (value.text.size() > MaxNameSize) {
            if (base == PathBase::Variable)
                return;
            FailTooLong(line.begin + value.begin);
        }
        Push({m_identifier.empty() ? what : m_identifier + ' ' + what, Utf8OrLatin1(value.text),
              base, line.begin + value.begin, line.begin + value.end, Notation::Quoted});
    }

    /// Several lines of a text are one line here, with "\n" between them.
    void AddText(const Line& line)
    {
        if (line.isCut)
            return;
        std::string text = line.text;
        for (std::size_t at = text.find("\\n"); at != std::string::npos; at = text.find("\\n", at))
            text.replace(at, 2, "\n\n");
        for (StoredPath& directive : FindDirectives(text)) {
            directive.id = "include";
            directive.text = Utf8OrLatin1(directive.text);
            directive.base = PathBase::Project;
            directive.begin += line.begin;
            directive.end += line.begin;
            Push(std::move(directive));
        }
    }

    /// Older versions named several libraries in one line.
    void AddLibraries(const Line& line)
    {
        for (std::size_t begin = Libraries.size(); begin < line.text.size();) {
            const std::size_t end = std::min(line.text.find(',', begin), line.text.size());
            const std::string name = Utf8OrLatin1(line.text.substr(begin, end - begin));
            if (!name.empty() && name.size() <= MaxNameSize && !line.isCut)
                Push({"library", name + ".lib", PathBase::File, line.begin + begin,
                      line.begin + end, Notation::Library, true});
            begin = end + 1;
        }
    }

    void Push(StoredPath stored)
    {
        if (m_links.size() == MaxLegacyLinks)
            throw FormatError("more than " + std::to_string(MaxLegacyLinks) + " links",
                              stored.begin);
        m_links.push_back(std::move(stored));
    }

    Part m_part = Part::None;
    bool m_isText = false;
    bool m_hasEnded = false;
    std::string m_identifier;
    std::vector<StoredPath> m_links;
};

} // namespace

bool IsLegacySchematic(const InputFile& file)
{
    return file.Size() >= Beginning.size() && file.Read(0, Beginning.size()) == Beginning;
}

std::vector<StoredPath> FindInLegacySchematic(const InputFile& file)
{
    if (!IsLegacySchematic(file))
        return {};
    LineReader reader(file);
    std::optional<Line> line;
    Finder finder;
    while ((line = reader.Next()) && !finder.HasEnded()) {
        if (line->text.find('\0') != std::string::npos)
            throw FormatError("a NUL byte", line->begin + line->text.find('\0'));
        finder.AddLine(*line);
    }
    if (!finder.HasEnded())
        throw FormatError("the schematic has no end", file.Size());
    return finder.Take();
}

} // namespace Halvern::Formats::Kicad
