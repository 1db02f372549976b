// SPDX-License-Identifier: Apache-2.0

#include "ExcludePattern.h"

#include "base/CaseFolding.h"
#include "base/SamePath.h"

#include <QtCore/QChar>

#include <algorithm>
#include <array>

namespace Halvern::Jobs {

namespace {

struct NamedSet
{
    std::u32string_view name;
    /// Pairs of first and last characters.
    std::u32string_view ranges;
};

constexpr std::array<NamedSet, 12> NamedSets{{{U"alnum", U"09AZaz"},
                                              {U"alpha", U"AZaz"},
                                              {U"blank", U"\t\t  "},
                                              {U"cntrl", U"\x01\x1f\x7f\x7f"},
                                              {U"digit", U"09"},
                                              {U"graph", U"!~"},
                                              {U"lower", U"az"},
                                              {U"print", U" ~"},
                                              {U"punct", U"!/:@[`{~"},
                                              {U"space", U"\t\r  "},
                                              {U"upper", U"AZ"},
                                              {U"xdigit", U"09AFaf"}}};

/// Matches wildcards against a text of any kind in a time that grows with the product of the two
/// lengths: on a mismatch only the last wildcard takes one more.
template <typename Pattern, typename Text, typename IsWildcard, typename Matches>
bool MatchesWithWildcards(const Pattern& pattern, const Text& text, IsWildcard isWildcard,
                          Matches matches)
{
    std::size_t at = 0;
    std::size_t place = 0;
    std::size_t afterWildcard = 0;
    std::size_t wildcardEnd = 0;
    while (place < text.size()) {
        if (at < pattern.size() && isWildcard(pattern[at])) {
            afterWildcard = ++at;
            wildcardEnd = place;
        } else if (at < pattern.size() && matches(pattern[at], text[place])) {
            ++at;
            ++place;
        } else if (afterWildcard > 0) {
            at = afterWildcard;
            place = ++wildcardEnd;
        } else {
            return false;
        }
    }
    return std::all_of(pattern.begin() + std::ptrdiff_t(at), pattern.end(), isWildcard);
}

/// The text without spaces at its end that no "\" protects.
QStringView WithoutSpacesAtEnd(QStringView line)
{
    qsizetype end = 0;
    for (qsizetype at = 0; at < line.size(); ++at) {
        if (line[at] == u'\\')
            ++at;
        else if (line[at] == u' ')
            continue;
        end = std::min(at + 1, line.size());
    }
    return line.first(end);
}

} // namespace

/// Takes the text of a pattern apart.
class ExcludePattern::Reader
{
public:
    explicit Reader(const std::u32string& text) : m_text(text) {}
    /// None for a text that is no pattern.
    std::vector<Part> Read()
    {
        while (!AtEnd())
            if (!ReadOne())
                return {};
        EndPart();
        // "a/**" is for what lies in "a", not for "a" itself.
        if (m_parts.back().isAnyFolders)
            m_parts.push_back({false, {{Element::Kind::AnyText, 0, {}, false}}});
        return std::move(m_parts);
    }

private:
    bool AtEnd() const { return m_at == m_text.size(); }
    char32_t Take() { return m_text[m_at++]; }
    bool IsNext(char32_t character) const { return !AtEnd() && m_text[m_at] == character; }
    void Append(Element::Kind kind, char32_t character = 0)
    {
        m_part.elements.push_back({kind, character, {}, false});
    }
    bool ReadOne();
    bool ReadCharacter(char32_t& character);
    bool ReadSet();
    std::optional<std::u32string_view> SetNameAhead() const;
    bool AppendNamedSet(std::u32string_view name, Element& set);
    void EndPart();

    const std::u32string m_text;
    std::size_t m_at = 0;
    Part m_part;
    std::vector<Part> m_parts;
};

bool ExcludePattern::Reader::ReadOne()
{
    char32_t character = Take();
    switch (character) {
    case U'*':
        Append(Element::Kind::AnyText);
        return true;
    case U'?':
        Append(Element::Kind::AnyCharacter);
        return true;
    case U'[':
        return ReadSet();
    case U'\\':
        if (AtEnd())
            return false;
        character = Take();
        break;
    default:
        break;
    }
    if (character == U'/')
        EndPart();
    else
        Append(Element::Kind::Character, character);
    return true;
}

void ExcludePattern::Reader::EndPart()
{
    const auto isAnyText = [](const Element& element) {
        return element.kind == Element::Kind::AnyText;
    };
    m_part.isAnyFolders = m_part.elements.size() >= 2 &&
                          std::all_of(m_part.elements.begin(), m_part.elements.end(), isAnyText);
    m_parts.push_back(std::exchange(m_part, {}));
}

bool ExcludePattern::Reader::ReadCharacter(char32_t& character)
{
    if (AtEnd())
        return false;
    character = Take();
    if (character != U'\\')
        return true;
    if (AtEnd())
        return false;
    character = Take();
    return true;
}

/// After the "[". The first character may be a "]".
bool ExcludePattern::Reader::ReadSet()
{
    Element set;
    set.kind = Element::Kind::Set;
    set.isNegated = IsNext(U'!') || IsNext(U'^');
    m_at += set.isNegated ? 1 : 0;
    bool canBeginRange = false;
    for (bool isFirst = true; isFirst || !IsNext(U']'); isFirst = false) {
        if (canBeginRange && IsNext(U'-') && m_at + 1 < m_text.size() && m_text[m_at + 1] != U']') {
            ++m_at;
            if (!ReadCharacter(set.ranges.back().second))
                return false;
            canBeginRange = false;
        } else if (const auto name = SetNameAhead()) {
            if (!AppendNamedSet(*name, set))
                return false;
            canBeginRange = false;
        } else {
            char32_t character = 0;
            if (!ReadCharacter(character))
                return false;
            set.ranges.emplace_back(character, character);
            canBeginRange = true;
        }
    }
    ++m_at;
    const bool isEmpty =
        !set.isNegated && std::all_of(set.ranges.begin(), set.ranges.end(),
                                      [](const auto& range) { return range.first > range.second; });
    m_part.elements.push_back(std::move(set));
    return !isEmpty;
}

/// "digit" before "[:digit:]" in a set.
std::optional<std::u32string_view> ExcludePattern::Reader::SetNameAhead() const
{
    const std::u32string_view rest = std::u32string_view(m_text).substr(m_at);
    const std::size_t end = rest.find(U']');
    if (!rest.starts_with(U"[:") || end == rest.npos || end < 3 || rest[end - 1] != U':')
        return {};
    return rest.substr(2, end - 3);
}

bool ExcludePattern::Reader::AppendNamedSet(std::u32string_view name, Element& set)
{
    const auto* const named = std::find_if(NamedSets.begin(), NamedSets.end(),
                                           [&](const NamedSet& one) { return one.name == name; });
    if (named == NamedSets.end())
        return false;
    for (std::size_t at = 0; at < named->ranges.size(); at += 2)
        set.ranges.emplace_back(named->ranges[at], named->ranges[at + 1]);
    m_at += name.size() + std::u32string_view(U"[::]").size();
    return true;
}

ExcludePattern::ExcludePattern(const QString& text) : m_text(text)
{
    QStringView rest = WithoutSpacesAtEnd(text);
    m_isNegated = rest.startsWith(u'!');
    rest = rest.sliced(m_isNegated ? 1 : 0);
    m_isForFoldersOnly = rest.endsWith(u'/');
    rest.chop(m_isForFoldersOnly ? 1 : 0);
    m_isForNames = !rest.contains(u'/');
    rest = rest.sliced(rest.startsWith(u'/') ? 1 : 0);
    m_parts = Reader(rest.toString().toStdU32String()).Read();
}

std::optional<ExcludePattern> ExcludePattern::FromLine(QStringView line)
{
    if (line.endsWith(u'\r'))
        line.chop(1);
    const QStringView text = WithoutSpacesAtEnd(line);
    if (text.isEmpty() || text.startsWith(u'#'))
        return {};
    return ExcludePattern(text.toString());
}

bool ExcludePattern::IsInSet(const Element& set, char32_t character, Base::System system)
{
    const auto isInRange = [&](char32_t c) {
        return std::any_of(set.ranges.begin(), set.ranges.end(), [&](const auto& range) {
            return range.first <= c && c <= range.second;
        });
    };
    const bool isIn = isInRange(character) ||
                      (Base::IgnoresLetterCase(system) && (isInRange(Base::FoldCase(character)) ||
                                                           isInRange(QChar::toUpper(character))));
    return isIn != set.isNegated;
}

bool ExcludePattern::MatchesOne(const Element& element, char32_t character, Base::System system)
{
    switch (element.kind) {
    case Element::Kind::Character:
        return element.character == character ||
               (Base::IgnoresLetterCase(system) &&
                Base::FoldCase(element.character) == Base::FoldCase(character));
    case Element::Kind::AnyCharacter:
    case Element::Kind::AnyText:
        return true;
    case Element::Kind::Set:
        return IsInSet(element, character, system);
    }
    return false;
}

bool ExcludePattern::MatchesName(const Part& part, std::u32string_view name, Base::System system)
{
    return MatchesWithWildcards(
        part.elements, name,
        [](const Element& element) { return element.kind == Element::Kind::AnyText; },
        [&](const Element& element, char32_t c) { return MatchesOne(element, c, system); });
}

bool ExcludePattern::MatchesPath(PathNames path, Base::System system) const
{
    return MatchesWithWildcards(
        m_parts, path, [](const Part& part) { return part.isAnyFolders; },
        [&](const Part& part, std::u32string_view name) {
            return MatchesName(part, name, system);
        });
}

bool ExcludePattern::CanMatch() const
{
    const auto isDot = [](const Element& element) {
        return element.kind == Element::Kind::Character && element.character == U'.';
    };
    const auto matchesNoName = [&](const Part& part) {
        return !part.isAnyFolders && part.elements.size() <= 2 &&
               std::all_of(part.elements.begin(), part.elements.end(), isDot);
    };
    return !m_parts.empty() && std::none_of(m_parts.begin(), m_parts.end(), matchesNoName);
}

bool ExcludePattern::NamesSomething() const
{
    if (m_parts.empty())
        return false;
    const std::vector<Element>& name = m_parts.back().elements;
    return std::any_of(name.begin(), name.end(), [](const Element& element) {
        return element.kind == Element::Kind::Character || element.kind == Element::Kind::Set;
    });
}

bool ExcludePattern::Matches(PathNames path, bool isFolder, Base::System system) const
{
    if (m_parts.empty() || path.empty() || (m_isForFoldersOnly && !isFolder))
        return false;
    return MatchesPath(m_isForNames ? path.last(1) : path, system);
}

} // namespace Halvern::Jobs
