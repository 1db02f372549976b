// SPDX-License-Identifier: Apache-2.0

#include "MaterialXFinder.h"

#include "KitNames.h"
#include "pluginkit/FileUri.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Xml.h"

#include <optional>

namespace Halvern::Formats::Scenes {

namespace {

class Finder : public XmlVisitor
{
public:
    explicit Finder(std::string_view xml) : m_xml(xml) {}

    ReferenceList Take() { return std::move(m_list); }

    void Start(const XmlElement& element) override
    {
        const std::string_view name = LocalName(element.name);
        if (m_open.empty() && name != "materialx")
            throw FormatError("the root element is no materialx", element.begin);
        Enter(element, name);
        if (element.Value("type") == "filename")
            Add(element, "value", m_open.back().prefix);
        if (name == "include")
            Add(element, "href", std::nullopt);
        if (name != "implementation")
            return;
        if (Reference* source = Add(element, "file", std::nullopt))
            source->needsFile = true; // others are parts of an installation
    }

    void End(std::string_view, std::size_t) override { m_open.pop_back(); }

private:
    struct Element
    {
        /// Names of elements, from the outermost on, as the program gives paths.
        std::string place;
        /// The nearest one counts, an empty one, too.
        std::optional<std::size_t> prefix;
    };

    void Enter(const XmlElement& element, std::string_view name)
    {
        Element entered;
        if (!m_open.empty()) {
            entered = m_open.back();
            std::string own = NameForId(element.Value("name"), name);
            if (own.starts_with('#'))
                own.erase(0, 1);
            entered.place += entered.place.empty() ? own : '/' + own;
            // Ids have a limit: of a long path its end.
            constexpr std::size_t longest = 120;
            if (entered.place.size() > longest)
                entered.place = own;
        }
        if (const XmlAttribute* prefix = element.Find("fileprefix"))
            entered.prefix =
                m_list.AddPrefix({std::string(prefix->value),
                                  {prefix->begin, prefix->end},
                                  !prefix->value.empty() && !IsLinkUri(prefix->value)});
        m_open.push_back(std::move(entered));
    }

    Reference* Add(const XmlElement& element, std::string_view attribute,
                   std::optional<std::size_t> prefix)
    {
        const XmlAttribute* found = element.Find(attribute);
        if (!found)
            return nullptr;
        const std::string id = m_open.back().place + '/' + std::string(attribute);
        Reference* reference =
            m_list.AddXml(id, m_xml, {found->begin, found->end}, found->value, Notation::XmlPath);
        if (reference)
            reference->prefix = prefix;
        return reference;
    }

    std::string_view m_xml;
    ReferenceList m_list;
    std::vector<Element> m_open;
};

} // namespace

ReferenceList FindMaterialXReferences(std::string_view text)
{
    Finder finder(text);
    ReadConvertedXml(text, finder);
    return finder.Take();
}

} // namespace Halvern::Formats::Scenes
