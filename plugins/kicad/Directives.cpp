// SPDX-License-Identifier: Apache-2.0

#include "SpiceFile.h"

#include "Lines.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <unordered_map>

namespace Halvern::Formats::Kicad {

namespace {

constexpr std::string_view Blanks = " \t";

bool BeginsWithWord(std::string_view line, std::string_view word)
{
    return line.size() >= word.size() &&
           std::equal(word.begin(), word.end(), line.begin(), [](char a, char b) {
               return a == (b >= 'A' && b <= 'Z' ? static_cast<char>(b + ('a' - 'A')) : b);
           });
}

/// The end of the path that begins at `begin`, after its quotation mark if it has one; nothing when
/// that is missing.
std::optional<std::size_t> EndOfPath(std::string_view line, std::size_t begin, bool isWord)
{
    const char quote = line[begin];
    if (quote == '"' || quote == '\'') {
        const std::size_t end = line.find(quote, begin + 1);
        return end == std::string_view::npos ? std::nullopt : std::optional(end + 1);
    }
    const std::size_t end = std::min(line.find_first_of(isWord ? " \t;" : ";", begin), line.size());
    const std::size_t last = line.substr(0, end).find_last_not_of(Blanks);
    return last == std::string_view::npos ? begin : last + 1;
}

/// A name that the simulator takes from somewhere else.
bool IsElsewhere(std::string_view path)
{
    return path.starts_with('~') || (path.find('$') != std::string_view::npos &&
                                     path.find("KIPRJMOD") == std::string_view::npos);
}

/// The directive of one line. `begin` and `end` of the result are offsets in the line.
std::optional<StoredPath> DirectiveOf(std::string_view line)
{
    const std::size_t dot = std::min(line.find_first_not_of(Blanks), line.size());
    const bool isLibrary = BeginsWithWord(line.substr(dot), ".lib");
    if (!isLibrary && !BeginsWithWord(line.substr(dot), ".inc"))
        return {};
    const std::size_t wordEnd = std::min(line.find_first_of(Blanks, dot), line.size());
    const std::size_t begin = line.find_first_not_of(Blanks, wordEnd);
    if (begin == std::string_view::npos || (isLibrary && wordEnd - dot != 4))
        return {};
    const std::optional<std::size_t> end = EndOfPath(line, begin, isLibrary);
    if (!end)
        return {};
    std::string_view path = line.substr(begin, *end - begin);
    if (path.starts_with('"') || path.starts_with('\''))
        path = path.substr(1, path.size() - 2);
    if (path.empty() || path.size() > MaxDirectivePath || IsElsewhere(path))
        return {};
    StoredPath stored{{}, std::string(path), PathBase::File, begin, *end, Notation::Directive};
    // A library that begins here is named alone, too: ".lib slow".
    const std::size_t section = line.find_first_not_of(Blanks, *end);
    stored.isOnlyWhereThere =
        isLibrary && (section == std::string_view::npos || line[section] == ';');
    return stored;
}

} // namespace

std::vector<StoredPath> FindDirectives(std::string_view text)
{
    std::vector<StoredPath> found;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find_first_of("\r\n", begin), text.size());
        if (std::optional<StoredPath> directive = DirectiveOf(text.substr(begin, end - begin))) {
            directive->begin += begin;
            directive->end += begin;
            found.push_back(std::move(*directive));
        }
        begin = end + 1;
    }
    return found;
}

std::vector<StoredPath> FindSpiceIncludes(const InputFile& file)
{
    std::vector<StoredPath> found;
    LineReader reader(file);
    while (const std::optional<Line> line = reader.Next()) {
        if (line->text.find('\0') != std::string::npos || line->text.starts_with("EESchema-LIB"))
            return {};
        std::optional<StoredPath> directive = line->isCut ? std::nullopt : DirectiveOf(line->text);
        if (!directive || directive->text.find('$') != std::string::npos)
            continue;
        if (found.size() == MaxSpiceIncludes)
            throw FormatError("more than " + std::to_string(MaxSpiceIncludes) + " includes",
                              line->begin);
        directive->id = "include";
        directive->text = Utf8OrLatin1(directive->text);
        directive->begin += line->begin;
        directive->end += line->begin;
        found.push_back(std::move(*directive));
    }
    NumberIds(found);
    return found;
}

void NumberIds(std::vector<StoredPath>& links)
{
    std::unordered_map<std::string, std::size_t> seen;
    for (StoredPath& link : links)
        if (const std::size_t count = ++seen[link.id]; count > 1)
            link.id += ' ' + std::to_string(count);
}

} // namespace Halvern::Formats::Kicad
