// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/Compression.h"

#include <memory>
#include <string>
#include <string_view>

namespace Halvern::Formats::Blender {

/// The content of a .blend file from its beginning to its end, whether the file is compressed or
/// not. Positions count in the content. Failures are FormatErrors.
class ContentReader
{
public:
    /// The file must live as long as this.
    explicit ContentReader(const InputFile& file);

    std::uint64_t Position() const { return m_position; }
    bool AtEnd();
    std::string Read(std::uint64_t size);
    void Skip(std::uint64_t size);

private:
    bool Fill();
    [[noreturn]] void FailAtEnd() const;

    static constexpr std::size_t BufferSize = std::size_t(64) * 1024;

    const InputFile& m_file;
    /// None for a file that is not compressed, where whole blocks can be passed over.
    std::unique_ptr<Decompressor> m_decompressor;
    std::unique_ptr<char[]> m_buffer;
    std::string_view m_rest;
    std::uint64_t m_position = 0;
};

} // namespace Halvern::Formats::Blender
