// SPDX-License-Identifier: Apache-2.0

#include "NamedFile.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <charconv>

namespace Halvern::Formats::Wavefront {

namespace {

constexpr std::string_view WordsMark = " words ";

bool IsQuoted(std::string_view raw)
{
    return raw.size() > 2 && raw.front() == '"' && raw.back() == '"';
}

/// Nothing when a character is not in Latin-1.
std::optional<std::string> Latin1Of(std::string_view utf8)
{
    const std::optional<WideString> units = ToUtf16(utf8);
    if (!units || std::any_of(units->begin(), units->end(), [](auto unit) { return unit > 0xFF; }))
        return std::nullopt;
    std::string bytes;
    for (const auto unit : *units)
        bytes.push_back(static_cast<char>(unit));
    return bytes;
}

std::optional<std::size_t> NumberAt(std::string_view& text)
{
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc())
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

} // namespace

void RequireFitsLine(std::string_view path)
{
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
    const bool fits = !path.empty() && path.front() != ' ' && path.back() != ' ' &&
                      path.back() != '\\' && std::none_of(path.begin(), path.end(), isControl);
    if (!fits)
        throw FormatError("a line of this format cannot name " + std::string(path));
}

NamingStatement::NamingStatement(std::string id, Statement statement, NameSpan usual)
    : m_id(std::move(id)), m_statement(std::move(statement)), m_words(m_statement.Words()),
      m_usual(usual)
{}

std::string_view NamingStatement::Raw(NameSpan span) const
{
    const std::size_t begin = m_words[span.first].begin;
    return std::string_view(m_statement.text).substr(begin, m_words[span.end - 1].end - begin);
}

std::string NamingStatement::IdOf(NameSpan span) const
{
    if (span == m_usual)
        return m_id;
    return m_id + std::string(WordsMark) + std::to_string(span.first + 1) + '-' +
           std::to_string(span.end);
}

std::optional<NameSpan> NamingStatement::SpanOf(std::string_view id) const
{
    if (!id.starts_with(m_id))
        return std::nullopt;
    id.remove_prefix(m_id.size());
    if (id.empty() && m_usual.first < m_usual.end)
        return m_usual;
    if (!id.starts_with(WordsMark))
        return std::nullopt;
    id.remove_prefix(WordsMark.size());
    const std::optional<std::size_t> first = NumberAt(id);
    if (!first || !id.starts_with('-'))
        return std::nullopt;
    id.remove_prefix(1);
    const std::optional<std::size_t> end = NumberAt(id);
    if (!end || !id.empty() || *first == 0 || *end < *first || *end > m_words.size())
        return std::nullopt;
    return NameSpan{*first - 1, *end};
}

std::string NamingStatement::PathOf(NameSpan span, const std::filesystem::path& folder) const
{
    std::string_view raw = Raw(span);
    if (IsQuoted(raw))
        raw = raw.substr(1, raw.size() - 2);
    return WithSlashes(Utf8OrLatin1(raw), folder);
}

FileEdit NamingStatement::EditOf(NameSpan span, std::string_view path) const
{
    RequireFitsLine(path);
    const std::size_t quote = IsQuoted(Raw(span)) ? 1 : 0;
    const std::uint64_t begin = m_statement.PlaceOf(m_words[span.first].begin + quote);
    const std::uint64_t end = m_statement.PlaceOf(m_words[span.end - 1].end - quote);
    const std::optional<std::string> latin1 = IsUtf8(Raw(span)) ? std::nullopt : Latin1Of(path);
    // Bytes of Latin-1 may happen to be UTF-8, and would be read as such.
    const bool isLatin1 = latin1 && !IsUtf8(*latin1);
    return {begin, end, isLatin1 ? *latin1 : InForm(path, m_statement.form)};
}

} // namespace Halvern::Formats::Wavefront
