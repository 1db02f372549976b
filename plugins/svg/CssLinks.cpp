// SPDX-License-Identifier: Apache-2.0

#include "CssLinks.h"

#include "KitNames.h"
#include "pluginkit/Utf.h"

#include <algorithm>

namespace Halvern::Formats::Svg {

namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f';
}

bool IsLineEnd(char c)
{
    return c == '\r' || c == '\n' || c == '\f';
}

bool IsNamePart(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '\\' || static_cast<unsigned char>(c) >= 0x80;
}

int HexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::string Lowered(std::string_view text)
{
    std::string lowered(text);
    std::transform(lowered.begin(), lowered.end(), lowered.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return lowered;
}

std::string Utf8Of(char32_t code)
{
    WideString wide;
    if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        code = 0xFFFD;
    if (code >= 0x10000) {
        wide.push_back(static_cast<SyncPlugin::WideChar>(0xD800 + ((code - 0x10000) >> 10)));
        code = 0xDC00 + ((code - 0x10000) & 0x3FFU);
    }
    wide.push_back(static_cast<SyncPlugin::WideChar>(code));
    return ToUtf8(wide).value_or(std::string());
}

class Scanner
{
public:
    explicit Scanner(std::string_view css) : m_css(css) {}

    std::vector<CssLink> Run()
    {
        while (m_at < m_css.size())
            Step();
        return std::move(m_links);
    }

private:
    void Step()
    {
        const char c = m_css[m_at];
        if (m_css.substr(m_at).starts_with("/*"))
            SkipComment();
        else if (c == '"' || c == '\'')
            String(m_import ? "@import" : "");
        else if (c == '@')
            Rule();
        else if (IsNamePart(c))
            Name();
        else
            Sign(c);
    }

    void SkipComment()
    {
        const std::size_t end = m_css.find("*/", m_at + 2);
        m_at = end == std::string_view::npos ? m_css.size() : end + 2;
    }

    void Sign(char c)
    {
        ++m_at;
        if (c == ';' || c == '{' || c == '}')
            m_import = m_namespace = false;
    }

    std::string TakeName()
    {
        const std::size_t begin = m_at;
        while (m_at < m_css.size() && IsNamePart(m_css[m_at]))
            m_at += m_css[m_at] == '\\' ? 2 : 1;
        m_at = std::min(m_at, m_css.size());
        return Lowered(m_css.substr(begin, m_at - begin));
    }

    void Rule()
    {
        ++m_at;
        const std::string name = TakeName();
        m_import = name == "import";
        m_namespace = name == "namespace";
    }

    void Name()
    {
        const std::string name = TakeName();
        if (name != "url" || m_at == m_css.size() || m_css[m_at] != '(')
            return;
        ++m_at;
        SkipBlanks();
        const std::string_view kind = m_import ? "@import" : "url";
        if (m_at < m_css.size() && (m_css[m_at] == '"' || m_css[m_at] == '\''))
            String(kind);
        else
            Bare(kind);
    }

    /// From the opening quotation mark on; a link when it has a kind. A line that ends inside a
    /// string makes it none.
    void String(std::string_view kind)
    {
        const char quote = m_css[m_at++];
        const std::size_t begin = m_at;
        std::string value = TakeUntil([quote](char c) { return c == quote || IsLineEnd(c); });
        const std::size_t end = m_at;
        if (end == m_css.size() || m_css[end] == quote)
            Add(kind, std::move(value), begin, end);
        m_at = std::min(end + 1, m_css.size());
    }

    /// Blanks should be escaped there, but Inkscape writes and takes them as they are.
    void Bare(std::string_view kind)
    {
        const std::size_t begin = m_at;
        std::string value = TakeUntil([](char c) { return c == ')' || IsLineEnd(c); });
        std::size_t end = m_at;
        SkipBlanks();
        if (m_at < m_css.size() && m_css[m_at] != ')')
            return;
        for (; end > std::max(begin, m_escapeEnd) && IsBlank(m_css[end - 1]); --end)
            value.pop_back();
        Add(kind, std::move(value), begin, end);
    }

    void SkipBlanks()
    {
        while (m_at < m_css.size() && IsBlank(m_css[m_at]))
            ++m_at;
    }

    template <typename IsEnd>
    std::string TakeUntil(IsEnd isEnd)
    {
        std::string value;
        while (m_at < m_css.size() && !isEnd(m_css[m_at])) {
            if (m_css[m_at] != '\\') {
                value += m_css[m_at++];
                continue;
            }
            value += TakeEscape();
            m_escapeEnd = m_at;
        }
        return value;
    }

    void Add(std::string_view kind, std::string value, std::size_t begin, std::size_t end)
    {
        if (kind.empty() || m_namespace)
            return;
        m_links.push_back({kind, std::move(value), begin, end});
        m_import = false; // what follows are conditions
    }

    std::string TakeEscape()
    {
        if (++m_at == m_css.size())
            return {};
        char32_t code = 0;
        int digits = 0;
        for (; digits < 6 && m_at < m_css.size() && HexDigit(m_css[m_at]) >= 0; ++digits)
            code = code * 16 + static_cast<char32_t>(HexDigit(m_css[m_at++]));
        if (digits == 0) {
            const char c = m_css[m_at];
            PassOne();
            return IsLineEnd(c) ? std::string() : std::string(1, c);
        }
        if (m_at < m_css.size() && IsBlank(m_css[m_at]))
            PassOne();
        return Utf8Of(code);
    }

    /// Over one character, as which a line end of two bytes counts.
    void PassOne() { m_at += m_css.substr(m_at).starts_with("\r\n") ? 2 : 1; }

    std::string_view m_css;
    std::size_t m_at = 0;
    /// After the last escape: a blank in front of it belongs to a name.
    std::size_t m_escapeEnd = 0;
    bool m_import = false;
    bool m_namespace = false;
    std::vector<CssLink> m_links;
};

} // namespace

std::vector<CssLink> FindCssLinks(std::string_view css)
{
    return Scanner(css).Run();
}

std::string CssUri(std::string_view uri)
{
    constexpr std::string_view special = "()'\"&<>\\";
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string safe;
    for (const char c : uri) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > ' ' && special.find(c) == std::string_view::npos) {
            safe += c;
            continue;
        }
        safe += '%';
        safe += digits[byte >> 4];
        safe += digits[byte & 15U];
    }
    return safe;
}

} // namespace Halvern::Formats::Svg
