// SPDX-License-Identifier: Apache-2.0

#include "ScribusPaths.h"

#include "IdCounter.h"
#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Xml.h"

#include <algorithm>
#include <array>
#include <optional>

namespace Halvern::Formats::Scribus {

namespace {

constexpr std::size_t MaxIdPart = 100;

/// Kinds of frames (PTYPE) whose picture Scribus makes itself.
constexpr std::string_view LatexFrame = "9";

/// What a click does (ANACTYP) that leads to a file.
bool LeadsToFile(std::string_view action)
{
    return action == "5" || action == "7" || action == "9";
}

bool IsPath(const XmlElement& element, std::string_view attribute)
{
    constexpr std::array<std::string_view, 4> pictures = {"PFILE", "PFILE2", "PFILE3", "modelFile"};
    if (attribute == "ANEXTERN")
        return LeadsToFile(element.Value("ANACTYP"));
    if (std::find(pictures.begin(), pictures.end(), attribute) == pictures.end())
        return false;
    return attribute != "PFILE" ||
           (element.Value("PTYPE") != LatexFrame && element.Value("isInlineImage") != "1");
}

std::string_view Beginning(std::string_view text)
{
    std::size_t size = std::min(text.size(), MaxIdPart);
    while (size > 0 && size < text.size() &&
           (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80)
        --size;
    return text.substr(0, size);
}

/// The object's number or, in old documents, its name.
std::string PlaceOf(const XmlElement& element)
{
    const std::string_view number = element.Value("ItemID");
    const std::string_view name = number.empty() ? element.Value("ANNAME") : number;
    std::string place(Beginning(element.name));
    if (!name.empty())
        place += ' ' + std::string(Beginning(name));
    return place;
}

class Finder : public XmlVisitor
{
public:
    std::vector<ScribusPath> Take() { return std::move(m_paths); }

    void Start(const XmlElement& element) override
    {
        if (m_isFirst && !element.name.starts_with("SCRIBUS"))
            throw FormatError("no document of Scribus", element.begin);
        m_isFirst = false;
        for (const XmlAttribute& attribute : element.attributes) {
            if (!attribute.value.empty() && IsPath(element, attribute.name))
                Add(element, attribute);
        }
    }

    void End(std::string_view, std::size_t) override {}

private:
    void Add(const XmlElement& element, const XmlAttribute& attribute)
    {
        if (m_paths.size() == MaxScribusPaths)
            throw FormatError("more than " + std::to_string(MaxScribusPaths) + " links",
                              attribute.begin);
        if (attribute.value.size() > MaxScribusPath)
            throw FormatError("a path of more than " + std::to_string(MaxScribusPath) + " bytes",
                              attribute.begin);
        const std::string id = PlaceOf(element) + '/' + std::string(attribute.name);
        m_paths.push_back(
            {m_ids.Next(id), std::string(attribute.value), attribute.begin, attribute.end});
    }

    bool m_isFirst = true;
    IdCounter m_ids;
    std::vector<ScribusPath> m_paths;
};

bool IsForbidden(unsigned code)
{
    return code < 0x20 && code != '\t' && code != '\n' && code != '\r';
}

/// The number between "&#" and ";"; `digits` is where its digits begin.
std::optional<unsigned> NumberAt(std::string_view xml, std::size_t at, std::size_t& digits)
{
    const bool isHex = xml.substr(at).starts_with("&#x");
    digits = at + (isHex ? 3 : 2);
    unsigned number = 0;
    for (std::size_t i = digits; i < xml.size() && i < digits + 6; ++i) {
        const char c = xml[i];
        if (c == ';')
            return i > digits ? std::optional(number) : std::nullopt;
        if (c >= '0' && c <= '9')
            number = number * (isHex ? 16 : 10) + static_cast<unsigned>(c - '0');
        else if (isHex && (c | 0x20) >= 'a' && (c | 0x20) <= 'f')
            number = number * 16 + static_cast<unsigned>((c | 0x20) - 'a' + 10);
        else
            return std::nullopt;
    }
    return std::nullopt;
}

/// Up to 1.3.3 Scribus wrote marks of its text as characters that XML has not. Blanks take their
/// place, byte for byte.
std::string WithoutForbidden(const std::string& xml)
{
    std::string allowed = xml;
    for (char& c : allowed) {
        if (IsForbidden(static_cast<unsigned char>(c)) && c != '\0')
            c = ' ';
    }
    for (std::size_t at = allowed.find("&#"); at != std::string::npos;
         at = allowed.find("&#", at + 2)) {
        std::size_t digits = 0;
        const std::optional<unsigned> number = NumberAt(allowed, at, digits);
        if (!number || !IsForbidden(*number) || *number == 0)
            continue;
        const std::size_t end = allowed.find(';', digits);
        std::fill(allowed.begin() + static_cast<std::ptrdiff_t>(digits),
                  allowed.begin() + static_cast<std::ptrdiff_t>(end), '0');
        allowed[end - 1] = '9';
    }
    return allowed;
}

std::vector<ScribusPath> Find(const std::string& xml)
{
    Finder finder;
    ReadConvertedXml(xml, finder);
    return finder.Take();
}

} // namespace

std::vector<ScribusPath> FindScribusPaths(const std::string& xml)
{
    try {
        return Find(xml);
    } catch (const FormatError&) {
        const std::string allowed = WithoutForbidden(xml);
        if (allowed == xml)
            throw;
        return Find(allowed);
    }
}

} // namespace Halvern::Formats::Scribus
