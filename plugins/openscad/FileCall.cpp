// SPDX-License-Identifier: Apache-2.0

#include "FileCall.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Halvern::Formats::OpenScad {

namespace {

/// An argument with more tokens is an expression, whatever they are.
constexpr std::size_t MaxParts = 64;
constexpr std::size_t MaxShown = 100;

constexpr std::array<std::string_view, 11> Calls = {
    "dxf_cross",  "dxf_dim",    "dxf_linear_extrude", "dxf_rotate_extrude", "import", "import_dxf",
    "import_off", "import_stl", "linear_extrude",     "rotate_extrude",     "surface"};

bool Is(const Token& token, std::string_view text)
{
    return token.kind == TokenKind::Other && token.text == text;
}

} // namespace

bool FileCall::NamesFiles(std::string_view name)
{
    return std::find(Calls.begin(), Calls.end(), name) != Calls.end();
}

FileCall::FileCall(std::string name, std::size_t number, std::uint64_t position, std::size_t depth)
    : m_name(std::move(name)), m_number(number), m_position(position), m_depth(depth),
      m_text(m_name + '(')
{}

std::string FileCall::Text() const
{
    return m_text.size() < MaxShown ? m_text + ')' : m_text + "...";
}

void FileCall::Note(const Token& token)
{
    if (m_text.size() >= MaxShown)
        return;
    // A character of several bytes must not be cut.
    std::string text = token.kind == TokenKind::String ? '"' + token.text + '"' : token.text;
    if (m_text.size() + text.size() <= 2 * MaxShown)
        m_text += text;
    else
        m_text.append(MaxShown - m_text.size(), '.');
}

void FileCall::Take(const Token& token, std::size_t depth)
{
    const bool isOutermost = depth == m_depth;
    if (isOutermost && Is(token, ","))
        EndArgument();
    else if (m_argument.size() <= MaxParts)
        m_argument.push_back({token, isOutermost});
    Note(token);
}

void FileCall::EndArgument()
{
    std::vector<Part> argument = std::exchange(m_argument, {});
    if (argument.empty())
        return;
    const bool isNamed = argument.size() > 1 && argument[0].token.kind == TokenKind::Name &&
                         Is(argument[1].token, "=");
    if (isNamed) {
        const std::string& name = argument[0].token.text;
        if (name != "file" && name != "filename")
            return;
        argument.erase(argument.begin(), argument.begin() + 2);
        m_isNamed = true;
        m_file = std::move(argument);
    } else if (!m_hasNamelessArgument) {
        m_hasNamelessArgument = true;
        // The file is the first of them, but these take a number there, too.
        const bool isExtrusion = m_name.ends_with("_extrude");
        const bool isText = argument.size() == 1 && argument[0].token.kind == TokenKind::String;
        if (!m_isNamed && (!isExtrusion || isText))
            m_file = std::move(argument);
    }
}

std::vector<Value> FileCall::Values() const
{
    if (m_file.empty())
        return {};
    if (m_file.size() > MaxParts)
        return {{Value::Expression, {}}};
    std::vector<Value> values;
    std::size_t first = 0;
    for (std::size_t i = 0; i <= m_file.size(); ++i) {
        const bool isEnd = i == m_file.size();
        const bool isCondition = !isEnd && m_file[i].isOutermost && Is(m_file[i].token, "?");
        const bool isOther = !isEnd && m_file[i].isOutermost && Is(m_file[i].token, ":");
        if (!isEnd && !isCondition && !isOther)
            continue;
        if (!isCondition) {
            const Token& token = m_file[std::min(first, m_file.size() - 1)].token;
            const bool isSingle = i == first + 1 && !token.isCut;
            if (isSingle && token.kind == TokenKind::String)
                values.push_back({Value::Text, token});
            else if (isSingle && token.kind == TokenKind::Name && token.text != "undef")
                values.push_back({Value::Variable, token});
            else if (!isSingle || token.kind != TokenKind::Name)
                values.push_back({Value::Expression, {}});
        }
        first = i + 1;
    }
    return values;
}

} // namespace Halvern::Formats::OpenScad
