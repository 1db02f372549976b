// SPDX-License-Identifier: Apache-2.0

#include "Dna.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <limits>

namespace Halvern::Formats::Blender {

namespace {

// Far above what Blender has. Every member keeps its names, and is looked at for every member that
// is looked for.
constexpr std::size_t LongestName = 255;
constexpr std::uint64_t MostMembers = 1024;

/// Reads the description's four lists, one after the other.
class DnaParser
{
public:
    DnaParser(std::string_view bytes, const MachineForm& form, std::uint64_t position)
        : m_bytes(bytes), m_form(form), m_position(position)
    {}

    std::vector<DnaStruct> Parse()
    {
        Expect("SDNA", 1);
        Expect("NAME", 1);
        const std::vector<std::string> names = Texts();
        Expect("TYPE", 4);
        const std::vector<std::string> types = Texts();
        Expect("TLEN", 4);
        std::vector<std::uint64_t> sizes(types.size());
        for (std::uint64_t& size : sizes)
            size = Number(2);
        Expect("STRC", 4);
        std::vector<DnaStruct> structs(Count(4));
        for (DnaStruct& structure : structs)
            structure = Struct(names, types, sizes);
        return structs;
    }

private:
    [[noreturn]] void Fail(const std::string& reason) const
    {
        throw FormatError("the file's description of its structs " + reason, m_position + m_at);
    }

    std::string_view Take(std::size_t size)
    {
        if (size > m_bytes.size() - m_at)
            Fail("ends unexpectedly");
        m_at += size;
        return m_bytes.substr(m_at - size, size);
    }

    void Expect(std::string_view mark, std::size_t alignment)
    {
        while (m_at % alignment != 0 && m_at < m_bytes.size())
            ++m_at;
        if (Take(mark.size()) != mark)
            Fail("has no part " + std::string(mark));
    }

    std::uint64_t Number(std::size_t size) { return m_form.Number(Take(size)); }

    /// A number of things of at least so many bytes each.
    std::size_t Count(std::size_t smallest)
    {
        const std::uint64_t count = Number(4);
        if (count > (m_bytes.size() - m_at) / smallest)
            Fail("counts " + std::to_string(count) + " things where there are fewer");
        return static_cast<std::size_t>(count);
    }

    std::vector<std::string> Texts()
    {
        std::vector<std::string> texts(Count(1));
        for (std::string& text : texts) {
            const std::size_t end = m_bytes.find('\0', m_at);
            if (end == std::string_view::npos)
                Fail("ends unexpectedly");
            if (end - m_at > LongestName)
                Fail("has a name of " + std::to_string(end - m_at) + " bytes");
            text = m_bytes.substr(m_at, end - m_at);
            m_at = end + 1;
        }
        return texts;
    }

    /// The entry of a list that the next number names.
    template <typename List>
    std::size_t Index(const List& list)
    {
        const std::uint64_t index = Number(2);
        if (index >= list.size())
            Fail("names something that it does not list");
        return static_cast<std::size_t>(index);
    }

    DnaStruct Struct(const std::vector<std::string>& names, const std::vector<std::string>& types,
                     const std::vector<std::uint64_t>& sizes)
    {
        DnaStruct structure;
        const std::size_t type = Index(types);
        structure.name = types[type];
        structure.size = sizes[type];
        const std::uint64_t count = Number(2);
        if (count > MostMembers)
            Fail("gives " + structure.name + ' ' + std::to_string(count) + " members");
        std::uint64_t offset = 0;
        for (std::uint64_t i = 0; i < count; ++i) {
            const std::size_t fieldType = Index(types);
            const std::string& name = names[Index(names)];
            DnaField field = Field(name, types[fieldType], sizes[fieldType]);
            field.offset = offset;
            offset += field.size;
            structure.fields.emplace_back(PlainName(name), std::move(field));
        }
        if (offset != structure.size)
            Fail("gives " + structure.name + " another size than its members have");
        return structure;
    }

    /// "*mat[18]" is an array of 18 pointers; "(*call)()" is a pointer, too.
    DnaField Field(const std::string& name, const std::string& type, std::uint64_t typeSize) const
    {
        DnaField field;
        field.type = type;
        field.isPointer = name.starts_with('*') || name.starts_with('(');
        field.size = field.isPointer ? m_form.pointerSize : typeSize;
        for (std::size_t at = name.find('['); at != std::string::npos; at = name.find('[', at + 1))
            field.size *= Dimension(name, at + 1);
        if (field.size > std::numeric_limits<std::uint16_t>::max())
            Fail("has a member that is larger than a struct can be");
        return field;
    }

    std::uint64_t Dimension(const std::string& name, std::size_t at) const
    {
        std::uint64_t dimension = 0;
        for (; at < name.size() && name[at] >= '0' && name[at] <= '9'; ++at) {
            dimension = dimension * 10 + static_cast<std::uint64_t>(name[at] - '0');
            if (dimension > std::numeric_limits<std::uint16_t>::max())
                Fail("has a member that is larger than a struct can be");
        }
        if (at == name.size() || name[at] != ']')
            Fail("has a member whose name is malformed");
        return dimension;
    }

    static std::string PlainName(std::string_view name)
    {
        const std::size_t begin = name.find_first_not_of("(*");
        if (begin == std::string_view::npos)
            return {};
        return std::string(name.substr(begin, name.find_first_of("[)", begin) - begin));
    }

    std::string_view m_bytes;
    const MachineForm& m_form;
    std::uint64_t m_position;
    std::size_t m_at = 0;
};

} // namespace

Dna::Dna(std::string_view bytes, const MachineForm& form, std::uint64_t position)
    : m_structs(DnaParser(bytes, form, position).Parse())
{
    for (std::size_t i = 0; i < m_structs.size(); ++i)
        m_indexes.emplace(m_structs[i].name, i);
}

const DnaStruct* Dna::StructAt(std::uint64_t index) const
{
    return index < m_structs.size() ? &m_structs[index] : nullptr;
}

const DnaStruct* Dna::Find(const std::string& name) const
{
    const auto found = m_indexes.find(name);
    return found == m_indexes.end() ? nullptr : &m_structs[found->second];
}

std::optional<DnaField> Dna::FindField(const DnaStruct& structure, std::string_view path) const
{
    const std::size_t dot = path.find('.');
    for (const auto& [name, field] : structure.fields) {
        if (name != path.substr(0, dot))
            continue;
        if (dot == std::string_view::npos)
            return field;
        const DnaStruct* inner = field.isPointer ? nullptr : Find(field.type);
        std::optional<DnaField> result;
        // Deeper than the path is long this cannot go.
        if (inner)
            result = FindField(*inner, path.substr(dot + 1));
        if (result)
            result->offset += field.offset;
        return result;
    }
    return std::nullopt;
}

bool Dna::IsDataBlock(const DnaStruct& structure)
{
    return !structure.fields.empty() && structure.fields.front().first == "id" &&
           structure.fields.front().second.type == "ID" &&
           !structure.fields.front().second.isPointer;
}

} // namespace Halvern::Formats::Blender
