// SPDX-License-Identifier: Apache-2.0

#include "ColladaFinder.h"

#include "KitNames.h"
#include "pluginkit/FileUri.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Xml.h"

#include <algorithm>
#include <array>
#include <optional>

namespace Halvern::Formats::Scenes {

namespace {

/// Attributes that hold an address wherever they stand; the others of an element of their own.
bool HoldsAddress(std::string_view element, std::string_view attribute)
{
    constexpr std::array<std::string_view, 5> anywhere = {"url", "source", "href", "proxy",
                                                          "convex_hull_of"};
    if (std::find(anywhere.begin(), anywhere.end(), attribute) != anywhere.end())
        return true;
    if (attribute == "target")
        return element == "instance_material" || element == "instance_rigid_body";
    return attribute == "parent" && element == "instance_physics_model";
}

/// The folder that addresses are seen from.
Prefix BaseOf(const XmlAttribute& base)
{
    const Span part = PathPart(base.value);
    const std::string_view address = base.value.substr(part.begin, part.end - part.begin);
    Prefix prefix{{}, {base.begin, base.end}, !address.empty() && !IsLinkUri(address)};
    if (address.empty() || prefix.isElsewhere)
        return prefix;
    const std::string path = PathOfUri(address, {});
    prefix.text = path.substr(0, path.rfind('/') + 1); // nothing without a "/"
    return prefix;
}

class Finder : public XmlVisitor
{
public:
    explicit Finder(std::string_view xml) : m_xml(xml) {}

    ReferenceList Take() { return std::move(m_list); }

    void Start(const XmlElement& element) override
    {
        const std::string_view name = LocalName(element.name);
        if (m_open.empty())
            Root(element, name);
        m_content = HoldsContentAddress(name) ? std::optional(element.end) : std::nullopt;
        const std::string_view id = element.Value("id");
        m_open.push_back(
            {std::string(name), NameForId(id, m_open.empty() ? "" : m_open.back().owner)});
        // What programs note for themselves has words of its own.
        if (name == "extra" && m_extra == 0)
            m_extra = m_open.size();
        if (m_extra != 0)
            return;
        for (const XmlAttribute& attribute : element.attributes)
            if (HoldsAddress(name, attribute.name))
                Add(std::string(name) + '/' + std::string(attribute.name),
                    {attribute.begin, attribute.end}, attribute.value, Notation::XmlUri);
    }

    void End(std::string_view, std::size_t begin) override
    {
        if (m_content && m_extra == 0)
            AddContent({*m_content, begin});
        m_content.reset();
        if (m_extra == m_open.size())
            m_extra = 0;
        m_open.pop_back();
    }

private:
    struct Element
    {
        std::string name;
        /// The nearest id, its own or that of an element around it.
        std::string owner;
    };

    void Root(const XmlElement& element, std::string_view name)
    {
        if (name != "COLLADA")
            throw FormatError("the root element is no COLLADA", element.begin);
        if (const XmlAttribute* base = element.Find("xml:base"))
            m_base = m_list.AddPrefix(BaseOf(*base));
    }

    /// In version 1.4 an image has the address itself, in 1.5 a "ref" inside; an init_from anywhere
    /// else is an id.
    bool HoldsContentAddress(std::string_view name) const
    {
        const std::string_view outer = m_open.empty() ? std::string_view() : m_open.back().name;
        return (name == "init_from" && outer == "image") || name == "skeleton" ||
               (name == "ref" && (outer == "init_from" || outer == "binary"));
    }

    void AddContent(Span span)
    {
        constexpr std::size_t markup = 16;
        if (span.end - span.begin > markup * MaxAddress)
            throw FormatError("an address of more than 64 KiB", span.begin);
        const XmlText text = DecodeXmlText(m_xml, span.begin, span.end);
        const std::string& name = m_open.back().name;
        const bool isRef = name == "ref";
        Add(isRef ? m_open[m_open.size() - 2].name : name, span, text.text,
            name == "skeleton" ? Notation::XmlContentUri : Notation::XmlPictureUri);
    }

    void Add(const std::string& what, Span span, std::string_view value, Notation notation)
    {
        const std::string& owner = m_open.back().owner;
        const std::string id = owner.empty() ? what : owner + '/' + what;
        if (value.starts_with('#')) // most are, and need no number
            return;
        if (Reference* reference = m_list.AddXml(id, m_xml, span, value, notation))
            reference->prefix = m_base;
    }

    std::string_view m_xml;
    ReferenceList m_list;
    std::vector<Element> m_open;
    std::optional<std::size_t> m_base;
    /// Where the content begins that is an address, until another element begins.
    std::optional<std::size_t> m_content;
    /// How deep the "extra" is that is open.
    std::size_t m_extra = 0;
};

} // namespace

ReferenceList FindColladaReferences(std::string_view text)
{
    Finder finder(text);
    ReadConvertedXml(text, finder);
    return finder.Take();
}

} // namespace Halvern::Formats::Scenes
