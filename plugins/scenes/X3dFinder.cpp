// SPDX-License-Identifier: Apache-2.0

#include "X3dFinder.h"

#include "StringList.h"
#include "XmlValue.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Xml.h"

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
        if (!m_isInside && name != "X3D")
            throw FormatError("the root element is no X3D", element.begin);
        m_isInside = true;
        const std::string place = NameForId(element.Value("DEF"), name);
        for (const XmlAttribute& attribute : element.attributes)
            if (IsAddressField(attribute.name))
                AddList(place + '/' + std::string(attribute.name), attribute);
        const bool isField = name == "field" || name == "fieldValue";
        const std::string_view field = element.Value("name");
        const XmlAttribute* value = isField ? element.Find("value") : nullptr;
        if (value && IsAddressField(field))
            AddList(place + '/' + std::string(field), *value);
    }

    void End(std::string_view, std::size_t) override {}

private:
    void AddList(const std::string& id, const XmlAttribute& attribute)
    {
        std::optional<XmlText> text; // made for addresses only: others are whole pictures
        bool isPlain = false;
        for (const ListedString& string : ReadStringList(attribute.value)) {
            const std::string name = m_list.NextId(id);
            std::optional<Reference> reference = AddressIn(string);
            if (!reference)
                continue;
            if (!text) {
                text = TextOf(attribute);
                isPlain = text->text == attribute.value;
            }
            const std::optional<Span> place =
                isPlain ? PlaceOf(m_xml, *text, reference->span) : std::nullopt;
            reference->id = name;
            reference->isFixed = !place;
            reference->span = place.value_or(Span{attribute.begin, attribute.end});
            m_list.Add(std::move(*reference), attribute.begin);
        }
    }

    XmlText TextOf(const XmlAttribute& attribute) const
    {
        if (attribute.end - attribute.begin > MaxList)
            throw FormatError("a list of addresses of more than 16 MiB", attribute.begin);
        return DecodeXmlAttribute(m_xml, {attribute.begin, attribute.end});
    }

    /// It needs several times its size in memory.
    static constexpr std::size_t MaxList = std::size_t(16) << 20;

    std::string_view m_xml;
    ReferenceList m_list;
    bool m_isInside = false;
};

} // namespace

ReferenceList FindX3dReferences(std::string_view text)
{
    Finder finder(text);
    ReadConvertedXml(text, finder);
    return finder.Take();
}

} // namespace Halvern::Formats::Scenes
