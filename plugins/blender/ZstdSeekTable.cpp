// SPDX-License-Identifier: Apache-2.0

#include "ZstdSeekTable.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <limits>
#include <string_view>

namespace Halvern::Formats::Blender {

namespace {

constexpr std::uint32_t SkippableMagic = 0x184D2A5E;
constexpr std::uint32_t TableMagic = 0x8F92EAB1;
constexpr std::uint64_t HeaderSize = 8;
constexpr std::uint64_t EntrySize = 8;
constexpr std::uint64_t FooterSize = 9;

std::uint32_t Number(std::string_view bytes, std::size_t at)
{
    std::uint32_t number = 0;
    for (std::size_t i = 4; i-- > 0;)
        number = (number << 8) | static_cast<unsigned char>(bytes[at + i]);
    return number;
}

void AppendNumber(std::string& bytes, std::uint64_t number)
{
    if (number > std::numeric_limits<std::uint32_t>::max())
        throw FormatError("a frame of more than 4 GiB");
    for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<char>((number >> shift) & 0xFFU));
}

/// Bytes of the table after its header; nothing when the file's end is no footer.
std::optional<std::uint64_t> TableSize(const InputFile& file)
{
    if (file.Size() < HeaderSize + FooterSize)
        return std::nullopt;
    const std::string footer = file.Read(file.Size() - FooterSize, FooterSize);
    // The flags in between announce check sums, which nothing here keeps up to date.
    if (Number(footer, 5) != TableMagic || footer[4] != 0)
        return std::nullopt;
    const std::uint64_t size = Number(footer, 0) * EntrySize + FooterSize;
    if (size + HeaderSize > file.Size())
        return std::nullopt;
    return size;
}

} // namespace

std::optional<std::vector<ZstdFrame>> ReadZstdSeekTable(const InputFile& file)
{
    const std::optional<std::uint64_t> size = TableSize(file);
    if (!size)
        return std::nullopt;
    const std::uint64_t begin = file.Size() - *size - HeaderSize;
    const std::string bytes = file.Read(begin, *size + HeaderSize);
    if (Number(bytes, 0) != SkippableMagic || Number(bytes, 4) != *size)
        return std::nullopt;
    std::vector<ZstdFrame> frames((*size - FooterSize) / EntrySize);
    std::uint64_t covered = 0;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const std::size_t at = HeaderSize + i * EntrySize;
        frames[i] = {Number(bytes, at), Number(bytes, at + 4)};
        covered += frames[i].size;
    }
    if (covered != begin)
        return std::nullopt;
    return frames;
}

std::string ZstdSeekTable(const std::vector<ZstdFrame>& frames)
{
    std::string bytes;
    AppendNumber(bytes, SkippableMagic);
    AppendNumber(bytes, frames.size() * EntrySize + FooterSize);
    for (const ZstdFrame& frame : frames) {
        AppendNumber(bytes, frame.size);
        AppendNumber(bytes, frame.contentSize);
    }
    AppendNumber(bytes, frames.size());
    bytes.push_back(0);
    AppendNumber(bytes, TableMagic);
    return bytes;
}

} // namespace Halvern::Formats::Blender
