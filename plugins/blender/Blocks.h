// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ContentReader.h"

#include <optional>

namespace Halvern::Formats::Blender {

/// How the machine that wrote a file laid out its memory, of which a .blend file is an image, and
/// how the version of Blender laid out the headers of the blocks.
struct MachineForm
{
    std::size_t pointerSize = 8;
    bool bigEndian = false;
    /// From Blender 5.0 on sizes have eight bytes, and the header another order.
    bool isLarge = false;
    /// Up to Blender 2.33 the file may end within the last block's header.
    bool hasShortEnd = false;

    /// An unsigned number of any size up to eight bytes.
    std::uint64_t Number(std::string_view bytes) const;
    std::string Bytes(std::uint64_t number, std::size_t size) const;
};

/// What stands in front of each block of a file.
struct BlockHeader
{
    /// As machines with little-endian numbers store it: "IM\0\0".
    std::string code;
    std::uint64_t size = 0;
    /// Where the block lay in the memory of the program; pointers of other blocks name it.
    std::uint64_t address = 0;
    /// Index into the file's own description of its structs.
    std::uint64_t structIndex = 0;
    std::uint64_t count = 0;
    /// Of the bytes after the header.
    std::uint64_t dataBegin = 0;
    /// Of the header's number that gives the size, and how many bytes that has.
    std::uint64_t sizeField = 0;
    std::size_t sizeFieldSize = 4;
};

/// Goes through the blocks of a file. The file's header is checked first; one that is not known is
/// refused with a FormatError that says what it is.
class Blocks
{
public:
    explicit Blocks(const InputFile& file);

    const MachineForm& Form() const { return m_form; }
    /// The next block; what was not read of the one before is passed over. Nothing after the block
    /// that ends the file.
    std::optional<BlockHeader> Next();
    /// The next bytes of the block that was given last.
    std::string ReadData(std::uint64_t size);

private:
    BlockHeader ReadHeader(std::string code);
    bool IsEnd(const std::string& code);

    ContentReader m_reader;
    MachineForm m_form;
    std::uint64_t m_dataLeft = 0;
    bool m_ended = false;
};

} // namespace Halvern::Formats::Blender
