// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/Xml.h"

#include "pluginkit/FormatError.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace Halvern::PluginKit {

namespace {

constexpr std::pair<std::string_view, char> Predefined[] = {
    {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};

void AppendCodePoint(std::string& text, std::uint32_t code)
{
    const auto add = [&](std::uint32_t byte) { text.push_back(static_cast<char>(byte)); };
    const auto tail = [&](int shift) { add(0x80U | ((code >> shift) & 0x3FU)); };
    if (code < 0x80) {
        add(code);
    } else if (code < 0x800) {
        add(0xC0U | (code >> 6));
        tail(0);
    } else if (code < 0x10000) {
        add(0xE0U | (code >> 12));
        tail(6);
        tail(0);
    } else {
        add(0xF0U | (code >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

/// After "&#" and in front of ";".
std::optional<std::string> NumberedCharacter(std::string_view number)
{
    const bool hexadecimal = number.starts_with('x');
    number.remove_prefix(hexadecimal ? 1 : 0);
    std::uint32_t code = 0;
    const char* end = number.data() + number.size();
    const auto [stop, error] = std::from_chars(number.data(), end, code, hexadecimal ? 16 : 10);
    if (error != std::errc() || stop != end || code > 0x10FFFF)
        return std::nullopt;
    std::string text;
    AppendCodePoint(text, code);
    return text;
}

/// In front of "&" and after ";".
std::optional<std::string> EntityText(std::string_view name)
{
    if (name.starts_with('#'))
        return NumberedCharacter(name.substr(1));
    for (const auto& [known, character] : Predefined) {
        if (known == name)
            return std::string(1, character);
    }
    return std::nullopt;
}

class Decoder
{
public:
    Decoder(std::string_view document, std::size_t begin, std::size_t end)
        : m_document(document.substr(0, end)), m_at(begin)
    {
        // Text is never longer than what it is written with.
        m_result.text.reserve(end - begin);
        m_result.places.reserve(end - begin + 1);
    }

    XmlText Run()
    {
        while (m_at < m_document.size())
            Step();
        m_result.places.push_back(m_document.size());
        return std::move(m_result);
    }

private:
    void Step()
    {
        if (IsHere("<![CDATA["))
            OpenSection();
        else if (IsHere("<!--"))
            SkipTo("-->");
        else if (IsHere("<"))
            SkipTo(">");
        else if (!IsHere("&") || !Entity())
            Take(m_document.substr(m_at, 1), 1);
    }

    bool IsHere(std::string_view what) const { return m_document.substr(m_at).starts_with(what); }

    /// Where `mark` begins, or the end.
    std::size_t Find(std::string_view mark) const
    {
        const std::size_t found = m_document.find(mark, m_at);
        return found == std::string_view::npos ? m_document.size() : found;
    }

    void SkipTo(std::string_view mark)
    {
        MarkBreak();
        m_at = std::min(Find(mark) + mark.size(), m_document.size());
    }

    void OpenSection()
    {
        MarkBreak();
        m_at += 9;
        const std::size_t end = Find("]]>");
        while (m_at < end)
            Take(m_document.substr(m_at, 1), 1);
        SkipTo("]]>");
    }

    /// What is not text begins here.
    void MarkBreak() { m_result.breaks.try_emplace(m_result.text.size(), m_at); }

    bool Entity()
    {
        const std::size_t end = Find(";");
        const auto text = EntityText(m_document.substr(m_at + 1, end - m_at - 1));
        if (text)
            Take(*text, end + 1 - m_at);
        return text.has_value();
    }

    /// `text` stands for the next `size` bytes of the document.
    void Take(std::string_view text, std::size_t size)
    {
        m_result.text += text;
        m_result.places.insert(m_result.places.end(), text.size(), m_at);
        m_at += size;
    }

    std::string_view m_document;
    std::size_t m_at;
    XmlText m_result;
};

/// Control characters and two that are none have no place in a document, numbered or not.
bool IsXmlText(std::string_view text)
{
    const bool hasControl = std::any_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
    });
    return !hasControl && text.find("\xEF\xBF\xBE") == std::string_view::npos &&
           text.find("\xEF\xBF\xBF") == std::string_view::npos;
}

} // namespace

std::size_t XmlText::EndOf(std::size_t position) const
{
    const auto found = breaks.find(position);
    return found == breaks.end() ? places[position] : found->second;
}

XmlText DecodeXmlText(std::string_view document, std::size_t begin, std::size_t end)
{
    return Decoder(document, begin, end).Run();
}

std::string EscapeXmlAttribute(std::string_view text)
{
    if (!IsXmlText(text))
        throw FormatError("XML has no way to write " + std::string(text));
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        if (c == '&')
            escaped += "&amp;";
        else if (c == '<')
            escaped += "&lt;";
        else if (c == '>')
            escaped += "&gt;";
        else if (c == '"')
            escaped += "&quot;";
        else if (c == '\'')
            escaped += "&apos;";
        else if (c == '\t' || c == '\n' || c == '\r') // a plain one would be read as a blank
            escaped += "&#" + std::to_string(static_cast<int>(c)) + ";";
        else
            escaped += c;
    }
    return escaped;
}

} // namespace Halvern::PluginKit
