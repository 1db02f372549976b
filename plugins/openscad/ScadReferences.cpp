// SPDX-License-Identifier: Apache-2.0

#include "ScadReferences.h"

#include "FileCall.h"
#include "ScadVariables.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <map>
#include <set>
#include <unordered_map>

namespace Halvern::Formats::OpenScad {

namespace {

/// Calls in one another that are looked into; real ones are two or three.
constexpr std::size_t MaxCalls = 16;

class Finder
{
public:
    explicit Finder(const InputFile& file) : m_lexer(file) {}
    std::vector<Reference> Run();

private:
    void Take(const Token& token);
    void Included(const Token& token);
    void Open(const Token& token);
    void Close(const Token& token);
    void Finish(const FileCall& call);
    void AddVariable(const std::string& name, Reference call, std::uint64_t position);
    void AddVariables();
    void Add(Reference reference);
    bool IsCall() const;

    ScadLexer m_lexer;
    std::vector<Reference> m_references;
    std::size_t m_depth = 0;
    /// Innermost last.
    std::vector<FileCall> m_calls;
    /// The last tokens, the latest first.
    Token m_last[2];
    std::unordered_map<std::string, std::size_t> m_counts;
    ScadVariables m_values;
    /// Calls whose file is a variable's value, by its name.
    std::map<std::string, std::vector<Reference>> m_variables;
    std::size_t m_variableCount = 0;
};

std::vector<Reference> Finder::Run()
{
    for (;;) {
        Token token = m_lexer.Next();
        if (token.kind == TokenKind::End)
            break;
        Take(token);
        m_last[1] = std::move(m_last[0]);
        m_last[0] = std::move(token);
    }
    if (!m_calls.empty())
        throw FormatError("a call without an end", m_calls.front().Position());
    AddVariables();
    return std::move(m_references);
}

void Finder::Take(const Token& token)
{
    if (token.kind == TokenKind::Include || token.kind == TokenKind::Use)
        return Included(token);
    const bool isBracket = token.kind == TokenKind::Other && token.text.size() == 1;
    const char c = isBracket ? token.text[0] : ' ';
    if (c == ')' || c == ']' || c == '}')
        Close(token);
    for (FileCall& call : m_calls)
        call.Take(token, m_depth);
    if (c == '(' || c == '[' || c == '{')
        Open(token);
    m_values.Take(token);
}

void Finder::Included(const Token& token)
{
    const bool isUse = token.kind == TokenKind::Use;
    const std::string what = isUse ? "use" : "include";
    const std::string id = what + ' ' + std::to_string(++m_counts[what]);
    Add({isUse ? ReferenceKind::Use : ReferenceKind::Include, id, token.text, token.begin,
         token.end});
}

bool Finder::IsCall() const
{
    const Token& before = m_last[1];
    const bool isDefinition =
        before.kind == TokenKind::Name && (before.text == "module" || before.text == "function");
    return m_last[0].kind == TokenKind::Name && !isDefinition &&
           FileCall::NamesFiles(m_last[0].text);
}

void Finder::Open(const Token& token)
{
    if (++m_depth > MaxNesting)
        throw FormatError("nested deeper than " + std::to_string(MaxNesting) + " levels",
                          token.begin);
    if (token.text != "(" || !IsCall() || m_calls.size() == MaxCalls)
        return;
    const std::string& name = m_last[0].text;
    m_calls.emplace_back(name, ++m_counts[name], m_last[0].begin, m_depth);
}

void Finder::Close(const Token& token)
{
    if (m_depth == 0)
        throw FormatError("a bracket is closed that was not opened", token.begin);
    if (!m_calls.empty() && m_calls.back().Depth() == m_depth) {
        FileCall call = std::move(m_calls.back());
        m_calls.pop_back();
        call.EndArgument();
        Finish(call);
    }
    --m_depth;
}

void Finder::Finish(const FileCall& call)
{
    std::size_t number = 0;
    const std::vector<Value> values = call.Values();
    for (const Value& value : values) {
        std::string id = call.Id();
        if (++number > 1)
            id += " value " + std::to_string(number);
        if (value.kind == Value::Text && !value.token.text.empty())
            Add({ReferenceKind::Import, id, value.token.text, value.token.begin, value.token.end});
        else if (value.kind == Value::Variable)
            AddVariable(value.token.text, {ReferenceKind::Computed, id, call.Text(), 0, 0},
                        call.Position());
        else if (value.kind == Value::Expression)
            Add({ReferenceKind::Computed, id, call.Text(), 0, 0});
    }
}

void Finder::AddVariable(const std::string& name, Reference call, std::uint64_t position)
{
    if (++m_variableCount > MaxReferences)
        throw FormatError("the file names too many files", position);
    m_variables[name].push_back(std::move(call));
}

void Finder::AddVariables()
{
    std::set<std::string> names;
    for (const auto& [name, calls] : m_variables)
        names.insert(name);
    const ScadVariables::Values values = m_values.ValuesOf(names);
    for (const auto& [id, string] : values.texts) {
        if (!string.text.empty())
            Add({ReferenceKind::Import, id, string.text, string.begin, string.end});
    }
    for (auto& [name, calls] : m_variables) {
        if (!values.open.contains(name))
            continue;
        for (Reference& call : calls)
            Add(std::move(call));
    }
}

void Finder::Add(Reference reference)
{
    if (m_references.size() == MaxReferences)
        throw FormatError("the file names too many files", reference.begin);
    m_references.push_back(std::move(reference));
}

} // namespace

std::vector<Reference> FindReferences(const InputFile& file)
{
    return Finder(file).Run();
}

} // namespace Halvern::Formats::OpenScad
