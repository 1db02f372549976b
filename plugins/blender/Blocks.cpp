// SPDX-License-Identifier: Apache-2.0

#include "Blocks.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>

namespace Halvern::Formats::Blender {

namespace {

constexpr std::string_view Magic = "BLENDER";
constexpr std::size_t HeaderSize = 12;
constexpr std::size_t NumberSize = 4;
/// The first version that writes another header; none writes this one with such a number.
constexpr int FirstUnknownVersion = 500;
constexpr std::uint64_t LargestBlock = 0x7FFFFFFF; // the size is a signed number

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

void CheckVersion(std::string_view digits)
{
    if (!std::all_of(digits.begin(), digits.end(), IsDigit))
        throw FormatError("the header gives no version of Blender", 9);
    const int version = (digits[0] - '0') * 100 + (digits[1] - '0') * 10 + (digits[2] - '0');
    if (version >= FirstUnknownVersion)
        throw FormatError("written by version " + std::to_string(version) +
                              " of Blender, whose files are not known",
                          9);
}

MachineForm ReadFileHeader(ContentReader& reader)
{
    std::string header;
    while (header.size() < HeaderSize && !reader.AtEnd())
        header += reader.Read(1);
    if (!header.starts_with(Magic))
        throw FormatError("a Blender file begins with \"BLENDER\"", 0);
    if (header.size() < HeaderSize)
        throw FormatError("the file ends inside its header", header.size());
    const char pointers = header[7];
    if (IsDigit(pointers))
        throw FormatError("written by Blender 5.0 or later, whose files are not known", 7);
    if (pointers != '_' && pointers != '-')
        throw FormatError("the header gives no size of pointers", 7);
    if (header[8] != 'v' && header[8] != 'V')
        throw FormatError("the header gives no order of bytes", 8);
    CheckVersion(std::string_view(header).substr(9));
    return {pointers == '_' ? std::size_t(4) : std::size_t(8), header[8] == 'V'};
}

} // namespace

std::uint64_t MachineForm::Number(std::string_view bytes) const
{
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char byte = bigEndian ? bytes[i] : bytes[bytes.size() - 1 - i];
        number = (number << 8) | static_cast<unsigned char>(byte);
    }
    return number;
}

std::string MachineForm::Bytes(std::uint64_t number, std::size_t size) const
{
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        bytes[bigEndian ? size - 1 - i : i] = static_cast<char>((number >> (8 * i)) & 0xFFU);
    return bytes;
}

Blocks::Blocks(const InputFile& file) : m_reader(file), m_form(ReadFileHeader(m_reader)) {}

std::optional<BlockHeader> Blocks::Next()
{
    if (m_ended)
        return std::nullopt;
    m_reader.Skip(m_dataLeft);
    const std::uint64_t begin = m_reader.Position();
    const std::string bytes = m_reader.Read(4 * NumberSize + m_form.pointerSize);
    const auto number = [&](std::size_t at, std::size_t size) {
        return m_form.Number(std::string_view(bytes).substr(at, size));
    };
    BlockHeader block;
    block.code = bytes.substr(0, NumberSize);
    block.size = number(4, NumberSize);
    block.address = number(8, m_form.pointerSize);
    block.structIndex = number(8 + m_form.pointerSize, NumberSize);
    block.count = number(8 + m_form.pointerSize + NumberSize, NumberSize);
    block.dataBegin = m_reader.Position();
    block.sizeField = begin + NumberSize;
    if (block.code == "ENDB") {
        m_ended = true;
        return std::nullopt;
    }
    if (block.size > LargestBlock)
        throw FormatError("a block of a negative size", block.sizeField);
    m_dataLeft = block.size;
    return block;
}

std::string Blocks::ReadData(std::uint64_t size)
{
    if (size > m_dataLeft)
        throw FormatError("a block is too short for what it holds", m_reader.Position());
    m_dataLeft -= size;
    return m_reader.Read(size);
}

} // namespace Halvern::Formats::Blender
