// SPDX-License-Identifier: Apache-2.0

#include "DxfNames.h"

#include "DxfTags.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace Halvern::Formats::Dxf {

namespace {

/// Bits of group 70 of a block.
constexpr long IsExternal = 4;
constexpr long IsOverlay = 8;
/// From here on the data of applications follow, which mean something else.
constexpr int FirstOfApplications = 1000;
constexpr int EmbeddedObject = 101;
/// "{NAME" begins what an application has put between the object's own data, "}" ends it.
constexpr int ApplicationGroup = 102;
/// In bytes: an id has its limit.
constexpr std::size_t MaxIdPart = 100;

/// An object that names files, by the word that begins it.
struct Kind
{
    std::string_view word;
    std::string_view id;
    /// What tells it apart: a handle (5) or a name (2).
    int idCode;
    /// The codes of names.
    std::string_view codes;
    NameKind kind;
};

constexpr std::array<Kind, 9> Kinds = {{
    {"BLOCK", "block", 2, "\x01", NameKind::Reference},
    {"IMAGEDEF", "image", 5, "\x01", NameKind::Reference},
    {"PDFDEFINITION", "underlay", 5, "\x01", NameKind::Reference},
    {"DWFDEFINITION", "underlay", 5, "\x01", NameKind::Reference},
    {"DGNDEFINITION", "underlay", 5, "\x01", NameKind::Reference},
    {"POINTCLOUDDEF", "point cloud", 5, "\x01", NameKind::Reference},
    {"POINTCLOUDDEFEX", "point cloud", 5, "\x01", NameKind::Reference},
    {"MATERIAL", "material", 5, "\x03\x04\x06\x07\x08\x09", NameKind::Map},
    {"STYLE", "style", 2, "\x03\x04", NameKind::Font},
}};

std::string_view Beginning(std::string_view text)
{
    std::size_t size = std::min(text.size(), MaxIdPart);
    while (size > 0 && size < text.size() &&
           (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80)
        --size;
    return text.substr(0, size);
}

class Finder
{
public:
    explicit Finder(const InputFile& file) : m_size(file.Size()), m_tags(TagsOf(file)) {}

    DxfNames Run()
    {
        Tag tag;
        bool isFirst = true;
        while (m_tags->Next(tag)) {
            if (tag.code == 999)
                continue;
            if (isFirst && !(tag.code == 0 && tag.Word() == "SECTION"))
                throw FormatError("no drawing: it does not begin with a section", tag.begin);
            isFirst = false;
            if (tag.code == 0 && tag.Word() == "EOF") {
                Finish();
                return std::move(m_found);
            }
            Take(tag);
        }
        if (isFirst)
            throw FormatError("no drawing: it does not begin with a section", 0);
        throw FormatError("the file ends before EOF", m_size);
    }

private:
    void Take(const Tag& tag)
    {
        if (tag.code == 0)
            Begin(tag);
        else if (m_kind)
            TakeOfObject(tag);
        else if (tag.code == 9)
            m_variable = tag.Word();
        else if (tag.code == 1 && m_variable == "$ACADVER")
            m_found.version = tag.Word();
        else if (tag.code == 3 && m_variable == "$DWGCODEPAGE")
            m_found.codePage = tag.Word();
    }

    void Begin(const Tag& tag)
    {
        Finish();
        m_variable.clear();
        const std::string_view word = tag.Word();
        const auto kind = std::find_if(Kinds.begin(), Kinds.end(),
                                       [&](const Kind& known) { return known.word == word; });
        m_kind = kind == Kinds.end() ? nullptr : &*kind;
        m_id.clear();
        m_flags = 0;
        m_isPastOwn = false;
        m_isInGroup = false;
    }

    void TakeOfObject(const Tag& tag)
    {
        m_isPastOwn = m_isPastOwn || tag.code >= FirstOfApplications || tag.code == EmbeddedObject;
        if (tag.code == ApplicationGroup)
            m_isInGroup = tag.Word().starts_with('{');
        if (m_isPastOwn || m_isInGroup)
            return;
        if (tag.code == 70 && m_kind->idCode == 2)
            m_flags = FlagsOf(tag);
        if (tag.code == m_kind->idCode)
            m_id = Beginning(tag.Word());
        if (tag.code > 0 && tag.code < 10 &&
            m_kind->codes.find(static_cast<char>(tag.code)) != std::string_view::npos)
            Keep(tag);
    }

    static long FlagsOf(const Tag& tag)
    {
        const std::optional<long> flags = tag.Number();
        if (!flags)
            throw FormatError("flags that are no number", tag.begin);
        return *flags;
    }

    void Keep(const Tag& tag)
    {
        if (tag.text.empty())
            return;
        if (tag.isCut)
            throw FormatError("a name of a file has more than " + std::to_string(MaxTagText) +
                                  " bytes",
                              tag.begin);
        m_object.push_back({tag.code, {m_kind->kind, {}, tag.text, tag.begin, tag.end}});
    }

    void Finish()
    {
        const bool isOther =
            m_kind && m_kind->word == "BLOCK" && (m_flags & (IsExternal | IsOverlay)) == 0;
        for (auto& [code, name] : m_object) {
            if (isOther)
                continue;
            if (m_found.names.size() == MaxDxfNames)
                throw FormatError("more than " + std::to_string(MaxDxfNames) + " names of files",
                                  name.begin);
            name.id = IdOf(code);
            m_found.names.push_back(std::move(name));
        }
        m_object.clear();
    }

    std::string IdOf(int code) const
    {
        std::string id = std::string(m_kind->id) + ' ' + m_id;
        switch (m_kind->kind) {
        case NameKind::Reference:
            break;
        case NameKind::Map:
            id += " map " + std::to_string(code);
            break;
        case NameKind::Font:
            id += code == 3 ? " font" : " big font";
            break;
        }
        return id;
    }

    std::uint64_t m_size;
    std::unique_ptr<TagReader> m_tags;
    DxfNames m_found;
    std::string m_variable;
    /// Null outside of an object that names files.
    const Kind* m_kind = nullptr;
    std::string m_id;
    long m_flags = 0;
    bool m_isPastOwn = false;
    bool m_isInGroup = false;
    /// With their codes, which materials use more than once.
    std::vector<std::pair<int, DxfName>> m_object;
};

} // namespace

DxfNames FindDxfNames(const InputFile& file)
{
    return Finder(file).Run();
}

} // namespace Halvern::Formats::Dxf
