// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/InputFile.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Halvern::Formats::Meshes {

/// Reads small pieces of a file at places that mostly grow, with one block of it in memory.
class FileWindow
{
public:
    /// The file must live as long.
    explicit FileWindow(const InputFile& file) : m_file(file) {}

    std::uint64_t Size() const { return m_file.Size(); }
    /// The bytes are gone with the next call. Throws a FormatError when the file ends before.
    std::string_view Bytes(std::uint64_t offset, std::size_t size);
    std::uint64_t Little(std::uint64_t offset, std::size_t size);
    std::uint64_t Big(std::uint64_t offset, std::size_t size);
    /// The text at `offset`, which a zero ends before `end` and before MaxName bytes; throws a
    /// FormatError for another one.
    std::string Text(std::uint64_t offset, std::uint64_t end);

    static constexpr std::size_t MaxName = 4096;

private:
    static constexpr std::size_t BlockSize = std::size_t(16) * 1024;

    const InputFile& m_file;
    std::string m_block;
    std::uint64_t m_begin = 0;
};

} // namespace Halvern::Formats::Meshes
