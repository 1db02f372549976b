// SPDX-License-Identifier: Apache-2.0

#include "DxfTags.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>
#include <array>

namespace Halvern::Formats::Dxf {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view Beginning = "AutoCAD Binary DXF\r\n\x1A\0"sv;

enum class Type
{
    Text,
    Chunk,
    Byte,
    Int16,
    Int32,
    Int64,
    Double
};

struct Range
{
    int first;
    int last;
    Type type;
};

constexpr auto Ranges = std::to_array<Range>({
    {0, 9, Type::Text},         {10, 59, Type::Double},    {60, 79, Type::Int16},
    {90, 99, Type::Int32},      {100, 109, Type::Text},    {110, 149, Type::Double},
    {160, 169, Type::Int64},    {170, 179, Type::Int16},   {210, 239, Type::Double},
    {270, 289, Type::Int16},    {290, 299, Type::Byte},    {300, 309, Type::Text},
    {310, 319, Type::Chunk},    {320, 369, Type::Text},    {370, 389, Type::Int16},
    {390, 399, Type::Text},     {400, 409, Type::Int16},   {410, 419, Type::Text},
    {420, 429, Type::Int32},    {430, 439, Type::Text},    {440, 459, Type::Int32},
    {460, 469, Type::Double},   {470, 489, Type::Text},    {999, 999, Type::Text},
    {1000, 1003, Type::Text},   {1004, 1004, Type::Chunk}, {1005, 1009, Type::Text},
    {1010, 1059, Type::Double}, {1060, 1070, Type::Int16}, {1071, 1071, Type::Int32},
});

/// The first code is 0, or 999 where a comment stands first.
bool HasShortCodes(const InputFile& file)
{
    const std::uint64_t begin = Beginning.size();
    const std::string start = file.Read(begin, std::min<std::uint64_t>(file.Size() - begin, 3));
    return start.starts_with("\xFF\xE7\x03") ||
           (start.size() > 1 && start[0] == '\0' && start[1] != '\0');
}

} // namespace

bool BinaryTags::Begins(const InputFile& file)
{
    return file.Size() >= Beginning.size() && file.Read(0, Beginning.size()) == Beginning;
}

BinaryTags::BinaryTags(const InputFile& file)
    : m_scanner(file, Beginning.size()), m_size(file.Size()), m_hasShortCodes(HasShortCodes(file))
{}

unsigned BinaryTags::ReadByte()
{
    const std::optional<char> byte = m_scanner.Next();
    if (!byte)
        throw FormatError("the file ends within a group", m_scanner.Position());
    return static_cast<unsigned char>(*byte);
}

int BinaryTags::ReadInt16()
{
    const unsigned low = ReadByte();
    return static_cast<std::int16_t>(low | ReadByte() << 8);
}

int BinaryTags::ReadCode()
{
    if (!m_hasShortCodes)
        return ReadInt16();
    const unsigned code = ReadByte();
    return code == 255 ? ReadInt16() : static_cast<int>(code);
}

void BinaryTags::Skip(std::uint64_t size)
{
    if (size > m_size - m_scanner.Position())
        throw FormatError("the file ends within a group", m_scanner.Position());
    while (size-- > 0)
        m_scanner.Next();
}

void BinaryTags::ReadText(Tag& tag)
{
    while (const unsigned byte = ReadByte()) {
        if (tag.text.size() < MaxTagText) {
            tag.text.push_back(static_cast<char>(byte));
            continue;
        }
        tag.isCut = true;
        m_scanner.SkipTo("\0"sv);
    }
    tag.end = m_scanner.Position() - 1;
}

bool BinaryTags::Next(Tag& tag)
{
    if (m_scanner.AtEnd())
        return false;
    const std::uint64_t position = m_scanner.Position();
    tag = {};
    tag.code = ReadCode();
    tag.begin = m_scanner.Position();
    const auto range = std::find_if(Ranges.begin(), Ranges.end(), [&](const Range& known) {
        return known.first <= tag.code && tag.code <= known.last;
    });
    if (range == Ranges.end())
        throw FormatError("the group code " + std::to_string(tag.code) + " has no known type",
                          position);
    switch (range->type) {
    case Type::Text:
        ReadText(tag);
        return true;
    case Type::Chunk:
        Skip(ReadByte());
        break;
    case Type::Byte:
        Skip(1);
        break;
    case Type::Int16:
        tag.text = std::to_string(ReadInt16());
        break;
    case Type::Int32:
        Skip(4);
        break;
    case Type::Int64:
    case Type::Double:
        Skip(8);
        break;
    }
    tag.end = m_scanner.Position();
    return true;
}

} // namespace Halvern::Formats::Dxf
