// SPDX-License-Identifier: Apache-2.0

#include "ScadVariables.h"

#include "FileCall.h"
#include "ScadReferences.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>
#include <array>
#include <deque>

namespace Halvern::Formats::OpenScad {

namespace {

/// When a model has more names than fill this memory, every variable can be anything.
constexpr std::size_t MaxBytes = std::size_t(64) << 20;
/// What an entry of a map takes, apart from its text.
constexpr std::size_t EntryBytes = 256;

constexpr std::array<std::string_view, 4> BindingCalls = {"assign", "for", "intersection_for",
                                                          "let"};

bool IsConstant(const std::string& name)
{
    return (name[0] >= '0' && name[0] <= '9') || name == "undef" || name == "true" ||
           name == "false";
}

/// True when a named argument of such a call is a variable from there on, whatever is called.
bool Binds(const std::string& call, const std::string& name)
{
    return name[0] == '$' ||
           std::find(BindingCalls.begin(), BindingCalls.end(), call) != BindingCalls.end();
}

/// By a variable, those that take its value.
using Takers = std::multimap<std::string, std::string>;

/// These variables, those that take their values, and so on.
std::set<std::string> WithTakers(std::vector<std::string> variables, const Takers& takers)
{
    std::set<std::string> all;
    while (!variables.empty()) {
        const std::string variable = std::move(variables.back());
        variables.pop_back();
        if (!all.insert(variable).second)
            continue;
        const auto [begin, end] = takers.equal_range(variable);
        for (auto taker = begin; taker != end; ++taker)
            variables.push_back(taker->second);
    }
    return all;
}

/// Adds those that are not known yet. All are numbered, in the order of the file.
void AddTexts(const std::string& idStart, std::vector<Token> tokens, std::set<std::uint64_t>& known,
              std::vector<ScadVariables::Text>& texts)
{
    std::sort(tokens.begin(), tokens.end(),
              [](const Token& a, const Token& b) { return a.begin < b.begin; });
    std::size_t number = 0;
    for (Token& token : tokens) {
        ++number;
        if (known.insert(token.begin).second)
            texts.push_back({idStart + std::to_string(number), std::move(token)});
    }
}

} // namespace

void ScadVariables::Sources::TakeVariables(const Source& source)
{
    variables.insert(source.variables.begin(), source.variables.end());
    isOpen = isOpen || source.hasOther;
}

void ScadVariables::Take(const Token& token)
{
    const bool isSign = token.kind == TokenKind::Other && token.text.size() == 1;
    const char c = isSign ? token.text[0] : ' ';
    if (c == ')' || c == ']' || c == '}') {
        EndValue();
        m_levels.pop_back();
    } else if (c == ',' || c == ';') {
        EndValue();
    } else if (c == '=' && m_last[0].kind == TokenKind::Name) {
        m_levels.back().name = m_last[0].text;
        m_levels.back().size = 0;
    } else {
        Level& level = m_levels.back();
        if (level.size++ == 0)
            level.first = token;
        if (c == '(' || c == '[' || c == '{')
            Open(token);
    }
    m_last[1] = std::move(m_last[0]);
    m_last[0] = token;
}

void ScadVariables::Open(const Token& bracket)
{
    Level& level = m_levels.emplace_back();
    if (bracket.text != "(" || m_last[0].kind != TokenKind::Name)
        return;
    const std::string& name = m_last[0].text;
    const bool isDefinition = m_last[1].kind == TokenKind::Name &&
                              (m_last[1].text == "module" || m_last[1].text == "function");
    if (isDefinition || name == "function") {
        level.kind = Level::Parameters;
        level.owner = isDefinition ? name : std::string(); // nobody calls one without a name by it
    } else if (FileCall::NamesFiles(name)) {
        level.kind = Level::FileArguments;
    } else {
        level.kind = Level::Arguments;
        level.owner = name;
        Entry(m_calls, name, name.size());
    }
}

void ScadVariables::EndValue()
{
    Level& level = m_levels.back();
    switch (level.kind) {
    case Level::Other:
        if (!level.name.empty())
            Assign(level);
        break;
    case Level::Parameters:
        EndParameter(level);
        break;
    case Level::Arguments:
        EndArgument(level);
        break;
    case Level::FileArguments:
        break;
    }
    level.name.clear();
    level.size = 0;
}

void ScadVariables::EndParameter(Level& level)
{
    const bool hasDefault = !level.name.empty();
    if (!hasDefault && (level.size == 0 || level.first.kind != TokenKind::Name))
        return;
    const std::string& name = hasDefault ? level.name : level.first.text;
    if (HasRoomFor(name.size() + level.owner.size()))
        m_parameters[name].emplace(level.owner, level.unnamedCount++);
    if (hasDefault)
        Assign(level);
}

void ScadVariables::EndArgument(Level& level)
{
    if (level.name.empty() && level.size == 0)
        return;
    Calls* const calls = Entry(m_calls, level.owner, level.owner.size());
    if (level.name.empty()) {
        // Releases of OpenSCAD differ in whether it passes by the parameters that were named.
        for (std::size_t i = 0; calls && i <= level.namedCount; ++i)
            Note(Entry(calls->unnamed, level.unnamedCount + i, 0), level);
        ++level.unnamedCount;
        return;
    }
    ++level.namedCount;
    const bool isText = level.size == 1 && level.first.kind == TokenKind::String;
    if (isText || Binds(level.owner, level.name))
        Assign(level);
    else if (calls)
        Note(Entry(calls->named, level.name, level.name.size()), level);
}

void ScadVariables::Assign(const Level& level)
{
    const bool isText =
        level.size == 1 && level.first.kind == TokenKind::String && !level.first.isCut;
    if (!isText)
        return Note(Entry(m_assigned, level.name, level.name.size()), level);
    if (++m_textCount > MaxReferences)
        throw FormatError("too many strings are assigned", level.first.begin);
    m_assigned[level.name].texts.push_back(level.first);
}

/// Of the value that ends here. Without an entry there was no room for one.
void ScadVariables::Note(Source* source, const Level& level)
{
    const Token& token = level.first;
    const bool isSingle = level.size == 1 && !token.isCut;
    if (!source)
        return;
    if (isSingle && token.kind == TokenKind::String) {
        if (HasRoomFor(token.text.size()))
            source->texts.push_back(token);
    } else if (!isSingle || token.kind != TokenKind::Name) {
        source->hasOther = true;
    } else if (!IsConstant(token.text) && !source->variables.contains(token.text) &&
               HasRoomFor(token.text.size())) {
        source->variables.insert(token.text);
    }
}

/// The entry of a key, made if need be; null when there is no room for it.
template <typename Map>
typename Map::mapped_type* ScadVariables::Entry(Map& map, const typename Map::key_type& key,
                                                std::size_t bytes)
{
    const auto known = map.find(key);
    if (known != map.end())
        return &known->second;
    return HasRoomFor(bytes) ? &map[key] : nullptr;
}

bool ScadVariables::HasRoomFor(std::size_t bytes)
{
    if (m_bytes <= MaxBytes)
        m_bytes += bytes + EntryBytes;
    return m_bytes <= MaxBytes;
}

ScadVariables::Sources ScadVariables::SourcesOf(const std::string& variable) const
{
    Sources sources;
    const auto assigned = m_assigned.find(variable);
    const auto parameters = m_parameters.find(variable);
    sources.isOpen =
        m_bytes > MaxBytes || (assigned == m_assigned.end() && parameters == m_parameters.end());
    if (assigned != m_assigned.end()) {
        sources.assigned = assigned->second.texts;
        sources.TakeVariables(assigned->second);
    }
    if (parameters != m_parameters.end()) {
        for (const Place& place : parameters->second)
            AddArguments(variable, place, sources);
    }
    return sources;
}

void ScadVariables::AddArguments(const std::string& parameter, const Place& place,
                                 Sources& sources) const
{
    const auto calls = m_calls.find(place.first);
    if (calls == m_calls.end()) { // it is there for other files
        sources.isOpen = true;
        return;
    }
    const auto unnamed = calls->second.unnamed.find(place.second);
    if (unnamed != calls->second.unnamed.end()) {
        const std::vector<Token>& texts = unnamed->second.texts;
        sources.passed.insert(sources.passed.end(), texts.begin(), texts.end());
        sources.TakeVariables(unnamed->second);
    }
    const auto named = calls->second.named.find(parameter);
    if (named != calls->second.named.end())
        sources.TakeVariables(named->second);
}

ScadVariables::Values ScadVariables::ValuesOf(const std::set<std::string>& variables) const
{
    Values values;
    Takers takers;
    std::vector<std::string> open;
    std::set<std::string> seen = variables;
    std::deque<std::string> names(variables.begin(), variables.end());
    std::set<std::uint64_t> known;
    for (; !names.empty(); names.pop_front()) {
        const std::string& name = names.front();
        Sources sources = SourcesOf(name);
        AddTexts("variable " + name + ' ', std::move(sources.assigned), known, values.texts);
        AddTexts("variable " + name + " passed ", std::move(sources.passed), known, values.texts);
        for (const std::string& other : sources.variables) {
            takers.emplace(other, name);
            if (seen.insert(other).second)
                names.push_back(other);
        }
        if (sources.isOpen)
            open.push_back(name);
    }
    values.open = WithTakers(std::move(open), takers);
    return values;
}

} // namespace Halvern::Formats::OpenScad
