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
constexpr std::size_t LargeNumberSize = 8;
constexpr std::uint64_t LargestBlock = 0x7FFFFFFF; // the size is a signed number
constexpr std::uint64_t LargestLargeBlock = 0x7FFFFFFFFFFFFFFF;
/// What Blender 5.0 and later write, up to the order of bytes: the size of the header, the size of
/// pointers, and the version of the layout.
constexpr std::string_view LargeForm = "17-01";
constexpr std::size_t LargeHeaderSize = 17;
/// The last version whose files end with a part of a header.
constexpr int LastWithShortEnd = 233;

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// The version that digits from `at` on give.
int VersionOf(const std::string& header, std::size_t at)
{
    int version = 0;
    for (const char c : std::string_view(header).substr(at)) {
        if (!IsDigit(c))
            throw FormatError("the header gives no version of Blender", at);
        version = version * 10 + (c - '0');
    }
    return version;
}

void ReadUpTo(ContentReader& reader, std::string& header, std::size_t size)
{
    while (header.size() < size && !reader.AtEnd())
        header += reader.Read(1);
    if (header.starts_with(Magic) && header.size() < size)
        throw FormatError("the file ends inside its header", header.size());
}

bool IsBigEndian(const std::string& header, std::size_t at)
{
    if (header[at] != 'v' && header[at] != 'V')
        throw FormatError("the header gives no order of bytes", at);
    return header[at] == 'V';
}

MachineForm ReadLargeHeader(ContentReader& reader, std::string header)
{
    if (std::string_view(header).substr(Magic.size(), LargeForm.size()) != LargeForm)
        throw FormatError("written by a later version of Blender, whose files are not known",
                          Magic.size());
    ReadUpTo(reader, header, LargeHeaderSize);
    const std::size_t order = Magic.size() + LargeForm.size();
    MachineForm form;
    form.bigEndian = IsBigEndian(header, order);
    form.isLarge = true;
    VersionOf(header, order + 1);
    return form;
}

MachineForm ReadFileHeader(ContentReader& reader)
{
    std::string header;
    ReadUpTo(reader, header, HeaderSize);
    if (!header.starts_with(Magic))
        throw FormatError("a Blender file begins with \"BLENDER\"", 0);
    const char pointers = header[7];
    if (IsDigit(pointers))
        return ReadLargeHeader(reader, std::move(header));
    if (pointers != '_' && pointers != '-')
        throw FormatError("the header gives no size of pointers", 7);
    MachineForm form;
    form.pointerSize = pointers == '_' ? 4 : 8;
    form.bigEndian = IsBigEndian(header, 8);
    form.hasShortEnd = VersionOf(header, 9) <= LastWithShortEnd;
    return form;
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

/// Takes the rest of the last block's header, as far as it is there.
bool Blocks::IsEnd(const std::string& code)
{
    if (code != "ENDB")
        return false;
    if (!m_form.hasShortEnd)
        ReadHeader(code);
    return true;
}

/// What follows the code.
BlockHeader Blocks::ReadHeader(std::string code)
{
    const std::size_t size = m_form.isLarge ? LargeNumberSize : NumberSize;
    const auto number = [&](std::size_t bytes) { return m_form.Number(m_reader.Read(bytes)); };
    BlockHeader block;
    block.code = std::move(code);
    if (m_form.isLarge) {
        block.structIndex = number(NumberSize);
        block.address = number(m_form.pointerSize);
    }
    block.sizeField = m_reader.Position();
    block.sizeFieldSize = size;
    block.size = number(size);
    if (!m_form.isLarge) {
        block.address = number(m_form.pointerSize);
        block.structIndex = number(NumberSize);
    }
    block.count = number(size);
    block.dataBegin = m_reader.Position();
    return block;
}

std::optional<BlockHeader> Blocks::Next()
{
    if (m_ended)
        return std::nullopt;
    m_reader.Skip(m_dataLeft);
    std::string code = m_reader.Read(NumberSize);
    // Codes of two letters are numbers, and stored in the order of the machine.
    if (m_form.bigEndian && code.starts_with(std::string_view("\0\0", 2)))
        std::rotate(code.begin(), code.begin() + 2, code.end());
    m_ended = IsEnd(code);
    if (m_ended)
        return std::nullopt;
    BlockHeader block = ReadHeader(std::move(code));
    if (block.size > (m_form.isLarge ? LargestLargeBlock : LargestBlock))
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
