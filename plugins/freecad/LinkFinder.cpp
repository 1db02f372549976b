// SPDX-License-Identifier: Apache-2.0

#include "LinkFinder.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkArray.h"
#include "pluginkit/Xml.h"

#include <algorithm>
#include <map>

namespace Halvern::Formats::Freecad {

namespace {

constexpr std::size_t MaxText = std::size_t(64) << 10;

/// Templates, hatchings and the like that come with the program or an add-on: every installation
/// has its own, below a folder named after the program.
bool IsInstalledFile(std::string path)
{
    std::replace(path.begin(), path.end(), '\\', '/');
    std::transform(path.begin(), path.end(), path.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    std::size_t program = path.find("freecad");
    if (program == std::string::npos) // an AppImage: of its name there are six letters
        program = path.find("/.mount_freeca");
    return program != std::string::npos && path.find("/mod/", program) != std::string::npos;
}

/// The texts that ids and paths are made of. What is longer could not be handed out, and copies of
/// it would fill the memory first.
std::string ShortText(const XmlElement& element, std::string_view attribute)
{
    const std::string_view text = element.Value(attribute);
    if (text.size() > MaxText)
        throw FormatError("a text of more than 64 KiB where a name is due", element.begin);
    return std::string(text);
}

bool IsAddress(std::string_view path)
{
    return path.find("://") != std::string_view::npos;
}

/// Objects that read the file which a plain text names.
bool ReadsItsFileName(std::string_view objectType)
{
    return objectType.starts_with("Part::Import") || objectType == "Part::CurveNet";
}

/// Properties for what the program is going to write.
bool IsOutput(std::string_view objectType, std::string_view property)
{
    return objectType.ends_with("::Export") || property == "PostProcessorOutputFile";
}

/// Follows the reader through the document, knowing whose property it is in.
class Finder : public XmlVisitor
{
public:
    explicit Finder(std::string idStart) : m_idStart(std::move(idStart)) {}

    std::vector<FoundLink> Take() { return std::move(m_links); }

    void Start(const XmlElement& element) override
    {
        ++m_depth;
        if (element.name == "Object" || element.name == "ViewProvider")
            EnterObject(element);
        else if (element.name == "Property")
            EnterProperty(element);
        else if (element.name == "XLink")
            AddDocumentLink(element);
        else if (element.name == "String" && m_propertyDepth > 0)
            AddFileName(element);
    }

    void End(std::string_view, std::size_t) override
    {
        if (m_depth == m_propertyDepth)
            m_propertyDepth = 0;
        if (m_depth == m_objectDepth) {
            m_objectDepth = 0;
            m_object.clear();
        }
        --m_depth;
    }

private:
    void EnterObject(const XmlElement& element)
    {
        m_object = ShortText(element, "name");
        m_objectDepth = m_depth;
        if (!element.Find("type"))
            return;
        m_objectTypes[m_object] = ShortText(element, "type");
        if (m_objectTypes.size() > MaxObjects)
            throw FormatError("more than " + std::to_string(MaxObjects) + " objects",
                              element.begin);
    }

    void EnterProperty(const XmlElement& element)
    {
        m_property = ShortText(element, "name");
        m_propertyType = ShortText(element, "type");
        m_propertyDepth = m_depth;
        m_linksOfProperty = 0;
    }

    std::string_view ObjectType() const
    {
        const auto known = m_objectTypes.find(m_object);
        return known == m_objectTypes.end() ? std::string_view() : std::string_view(known->second);
    }

    void AddDocumentLink(const XmlElement& element)
    {
        // Counted even when it leads nowhere else: its number must not hang on its neighbours.
        ++m_linksOfProperty;
        const XmlAttribute* file = element.Find("file");
        if (file && !file->value.empty() && !IsAddress(file->value))
            Add(*file, PathKind::FromDocument);
    }

    bool HoldsFileName() const
    {
        if (IsOutput(ObjectType(), m_property))
            return false;
        if (m_propertyType == "App::PropertyFile")
            return true;
        return m_propertyType == "App::PropertyString" && m_property == "FileName" &&
               ReadsItsFileName(ObjectType());
    }

    void AddFileName(const XmlElement& element)
    {
        const XmlAttribute* value = element.Find("value");
        if (!value || value->value.empty() || !HoldsFileName())
            return;
        ++m_linksOfProperty;
        if (!IsAddress(value->value) && !IsInstalledFile(std::string(value->value)))
            Add(*value, PathKind::FromWorkingFolder);
    }

    void Add(const XmlAttribute& attribute, PathKind kind)
    {
        if (m_links.size() == MaxLinks)
            throw FormatError("more than " + std::to_string(MaxLinks) + " links", attribute.begin);
        if (attribute.value.size() > MaxText)
            throw FormatError("a path of more than 64 KiB", attribute.begin);
        std::string id = m_idStart + m_object + '.' + m_property;
        if (m_linksOfProperty > 1)
            id += '#' + std::to_string(m_linksOfProperty);
        // Here rather than when the links are handed out: long names would fill the memory first.
        LinkUnits("id", id, id);
        m_links.push_back(
            {std::move(id), std::string(attribute.value), kind, attribute.begin, attribute.end});
    }

    const std::string m_idStart;
    std::vector<FoundLink> m_links;
    std::map<std::string, std::string> m_objectTypes;
    std::size_t m_depth = 0;
    std::string m_object;
    std::size_t m_objectDepth = 0;
    std::string m_property;
    std::string m_propertyType;
    std::size_t m_propertyDepth = 0;
    std::size_t m_linksOfProperty = 0;
};

void RequireDifferentIds(const std::vector<FoundLink>& links)
{
    std::vector<std::string_view> ids;
    ids.reserve(links.size());
    for (const FoundLink& link : links)
        ids.push_back(link.id);
    std::sort(ids.begin(), ids.end());
    const auto twin = std::adjacent_find(ids.begin(), ids.end());
    if (twin != ids.end())
        throw FormatError("the property " + std::string(*twin) + " stands there twice");
}

} // namespace

std::vector<FoundLink> FindLinks(std::string_view xml, const std::string& idStart)
{
    Finder finder(idStart);
    ReadXml(xml, finder);
    std::vector<FoundLink> links = finder.Take();
    RequireDifferentIds(links);
    return links;
}

} // namespace Halvern::Formats::Freecad
