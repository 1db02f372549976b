// SPDX-License-Identifier: Apache-2.0

#include "SvgLinkFinder.h"

#include "CssLinks.h"

#include "IdCounter.h"
#include "KitNames.h"
#include "pluginkit/FileUri.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkArray.h"
#include "pluginkit/Utf.h"
#include "pluginkit/Xml.h"

#include <algorithm>
#include <memory>
#include <numeric>
#include <utility>

namespace Halvern::Formats::Svg {

namespace {

/// What addresses below an element are seen from: xml:base of it and of those around it.
struct Base
{
    /// Not on the disk: no relative address names a file.
    bool isElsewhere = false;
    /// Null for the document's own folder.
    std::shared_ptr<const std::string> folder;
};

/// No folder has a longer name.
constexpr std::size_t MaxBase = 4096;

Base BaseOf(std::string_view address, const Base& outer, std::size_t position)
{
    const Span part = PathPart(address);
    const std::string_view path = address.substr(part.begin, part.end - part.begin);
    if (path.size() > MaxBase)
        throw FormatError("a base of more than 4 KiB", position);
    if (path.empty())
        return outer;
    if (!IsLinkUri(path))
        return {true, nullptr};
    const std::string decoded = PathOfUri(path, {});
    const bool isWhole = IsFileUri(path) || IsWholePath(decoded);
    if (!isWhole && outer.isElsewhere)
        return outer;
    const std::size_t name = decoded.rfind('/');
    std::string folder = name == std::string::npos ? std::string() : decoded.substr(0, name + 1);
    if (!isWhole && outer.folder)
        folder = *outer.folder + folder;
    if (folder.size() > MaxBase)
        throw FormatError("a base of more than 4 KiB", position);
    return {false, folder.empty() ? nullptr : std::make_shared<const std::string>(folder)};
}

/// No longer address names a file: a link can have 259 characters, each of them encoded with at
/// most nine, and whatever stands after a "#".
constexpr std::size_t MaxAddress = std::size_t(64) << 10;
constexpr std::size_t MaxAbsoluteName = 4 * MaxLinkUnits;

std::string_view LocalName(std::string_view name)
{
    return name.substr(name.find(':') + 1);
}

bool HoldsCss(const XmlAttribute& attribute)
{
    constexpr std::string_view mark = "url(";
    const auto isSame = [](char a, char b) {
        return a == b || (a >= 'A' && a <= 'Z' && a + 32 == b);
    };
    return attribute.name == "style" ||
           std::search(attribute.value.begin(), attribute.value.end(), mark.begin(), mark.end(),
                       isSame) != attribute.value.end();
}

bool IsCssType(std::string_view type)
{
    return type.empty() || type.find("css") != std::string_view::npos;
}

/// What an id says about the place: the element's own id where it has one of sensible length.
std::string PlaceOf(const XmlElement& element)
{
    constexpr std::size_t sensible = 100;
    const std::string_view id = element.Value("id");
    if (id.empty() || id.size() > sensible)
        return std::string(LocalName(element.name).substr(0, sensible));
    return '#' + std::string(id);
}

class Collector
{
public:
    std::vector<UriReference> Take() { return std::move(m_references); }

    /// For what is added from now on.
    void SeeFrom(const Base& base) { m_base = base; }

    /// For an address that needs no look at its bytes, being no link.
    void PassOver(const std::string& id) { NextId(id); }

    /// An address as it was read, and its text with the place of every byte.
    UriReference* AddUri(const std::string& id, std::string_view uri, const XmlText& text)
    {
        const Span part = PathPart(uri);
        const std::string name = NextId(id);
        const std::string_view path = uri.substr(part.begin, part.end - part.begin);
        if (!IsLink(path))
            return nullptr;
        UriReference& reference = Add(name, path, text.places.front());
        if (text.text == uri) {
            reference.span = {text.places[part.begin], text.places[part.end]};
        } else { // parts of it come from the document type: there is no way to change just some
                 // bytes
            reference.span = {text.places.front(), text.places.back()};
            reference.suffix = SuffixOf(uri);
        }
        return &reference;
    }

    void AddCss(const std::string& id, const XmlText& css)
    {
        for (const CssLink& link : FindCssLinks(css.text)) {
            const Span part = PathPart(link.uri);
            const std::string name = NextId(id + '/' + std::string(link.kind));
            const std::string path = link.uri.substr(part.begin, part.end - part.begin);
            if (!IsLink(path))
                continue;
            UriReference& reference = Add(name, path, css.places[link.begin]);
            reference.place = UriReference::Place::StyleSheet;
            reference.span = {css.places[link.begin], css.places[link.end]};
            reference.suffix = SuffixOf(link.uri);
        }
    }

private:
    bool IsLink(std::string_view path) const
    {
        return IsLinkUri(path) && (!m_base.isElsewhere || IsFileUri(path));
    }

    std::string NextId(const std::string& id)
    {
        if (m_counter.Size() > MaxReferences)
            throw FormatError("more than " + std::to_string(MaxReferences) + " addresses");
        return m_counter.Next(id);
    }

    UriReference& Add(const std::string& id, std::string_view path, std::size_t position)
    {
        if (m_references.size() == MaxReferences)
            throw FormatError("more than " + std::to_string(MaxReferences) + " links", position);
        LinkUnits("id", id, id);
        UriReference& reference = m_references.emplace_back();
        reference.id = id;
        reference.uri = path;
        reference.base = m_base.folder;
        return reference;
    }

    std::vector<UriReference> m_references;
    IdCounter m_counter;
    Base m_base;
};

class Finder : public XmlVisitor
{
public:
    explicit Finder(std::string_view xml) : m_xml(xml) {}

    std::vector<UriReference> Take() { return m_collector.Take(); }

    void Start(const XmlElement& element) override
    {
        ++m_depth;
        // Asked for once: a tag can have any number of attributes.
        const std::string place = PlaceOf(element);
        EnterBase(element);
        AbsoluteName absolute{element.Find("sodipodi:absref")};
        for (const XmlAttribute& attribute : element.attributes)
            Attribute(place, attribute, absolute);
        const bool isStyle = LocalName(element.name) == "style" && m_styleDepth == 0;
        if (isStyle && IsCssType(element.Value("type"))) {
            m_styleDepth = m_depth;
            m_styleBegin = element.end;
            m_stylePlace = place;
        }
    }

    void End(std::string_view, std::size_t begin) override
    {
        if (m_depth == m_styleDepth) {
            m_styleDepth = 0;
            if (begin > m_styleBegin)
                StyleSheet(m_stylePlace, m_styleBegin, begin);
        }
        --m_depth;
        m_bases.pop_back();
        m_collector.SeeFrom(Around());
    }

    void Instruction(std::string_view target, std::size_t begin, std::size_t end) override
    {
        if (target == "xml-stylesheet")
            LinkedStyleSheet(begin, end);
    }

private:
    /// What the element that is open gives, or the document.
    Base Around() const { return m_bases.empty() ? Base() : m_bases.back(); }

    void EnterBase(const XmlElement& element)
    {
        const XmlAttribute* base = element.Find("xml:base");
        m_bases.push_back(base ? BaseOf(base->value, Around(), base->begin) : Around());
        m_collector.SeeFrom(m_bases.back());
    }

    /// Which a tag with both "href" and "xlink:href" has for both; only one of them rewrites it.
    struct AbsoluteName
    {
        const XmlAttribute* attribute;
        int uses = 0;
    };

    void Attribute(const std::string& place, const XmlAttribute& attribute, AbsoluteName& absolute)
    {
        const std::string id = place + '/' + std::string(attribute.name);
        if (LocalName(attribute.name) == "href")
            Reference(id, attribute, absolute);
        else if (HoldsCss(attribute))
            StyleSheet(id, attribute.begin, attribute.end);
    }

    void Reference(const std::string& id, const XmlAttribute& attribute, AbsoluteName& absolute)
    {
        if (IsNoLink(attribute.value, attribute.begin, attribute.end))
            return m_collector.PassOver(id);
        const XmlText text = DecodeXmlText(m_xml, attribute.begin, attribute.end);
        UriReference* reference = m_collector.AddUri(id, attribute.value, text);
        if (!reference || !absolute.attribute || absolute.attribute->value.empty() ||
            absolute.attribute->value.size() > MaxAbsoluteName || absolute.uses == 2)
            return;
        reference->absolutePath = absolute.attribute->value;
        if (absolute.uses++ == 0)
            reference->absoluteSpan = {absolute.attribute->begin, absolute.attribute->end};
    }

    /// Tells by the mere look of an address, which often holds a picture of megabytes; FormatError
    /// for one that is too long.
    static bool IsNoLink(std::string_view uri, std::size_t begin, std::size_t end)
    {
        if (uri.starts_with("data:"))
            return true;
        if (end - begin <= MaxAddress)
            return false;
        const Span path = PathPart(uri);
        if (IsLinkUri(uri.substr(path.begin, path.end - path.begin)))
            throw FormatError("an address of more than 64 KiB", begin);
        return true;
    }

    void StyleSheet(const std::string& id, std::size_t begin, std::size_t end)
    {
        if (end - begin > MaxStyleSheet)
            throw FormatError("a style sheet of more than 16 MiB", begin);
        m_collector.AddCss(id, DecodeXmlText(m_xml, begin, end));
    }

    /// The address is written like an attribute, but is none for a reader of XML.
    void LinkedStyleSheet(std::size_t begin, std::size_t end)
    {
        const std::string_view data = m_xml.substr(0, end);
        constexpr std::string_view blanks = " \t\r\n";
        std::size_t at = begin;
        while (at < end) {
            const std::size_t equals = data.find('=', at);
            const std::size_t open = data.find_first_of("\"'", equals);
            if (equals == std::string_view::npos || open == std::string_view::npos)
                return;
            const std::size_t close = data.find(data[open], open + 1);
            if (close == std::string_view::npos)
                return;
            std::string_view name = data.substr(at, equals - at);
            name = name.substr(0, name.find_last_not_of(blanks) + 1);
            const std::string_view address = data.substr(open + 1, close - open - 1);
            if (name == "href" && IsNoLink(address, open + 1, close)) {
                m_collector.PassOver("xml-stylesheet/href");
            } else if (name == "href") {
                const XmlText text = DecodeXmlText(m_xml, open + 1, close);
                m_collector.AddUri("xml-stylesheet/href", text.text, text);
            }
            at = std::min(data.find_first_not_of(blanks, close + 1), end);
        }
    }

    std::string_view m_xml;
    Collector m_collector;
    std::vector<Base> m_bases;
    std::size_t m_depth = 0;
    std::size_t m_styleDepth = 0;
    std::size_t m_styleBegin = 0;
    std::string m_stylePlace;
};

} // namespace

std::vector<UriReference> FindSvgReferences(std::string_view xml)
{
    Finder finder(xml);
    ReadConvertedXml(xml, finder);
    return finder.Take();
}

std::vector<UriReference> FindCssReferences(std::string_view css)
{
    if (!IsUtf8(css))
        throw FormatError("the style sheet is not encoded as UTF-8");
    if (css.size() > MaxStyleSheet)
        throw FormatError("a style sheet of more than 16 MiB");
    XmlText text{std::string(css), std::vector<std::size_t>(css.size() + 1)};
    std::iota(text.places.begin(), text.places.end(), std::size_t(0));
    Collector collector;
    collector.AddCss("css", text);
    return collector.Take();
}

} // namespace Halvern::Formats::Svg
