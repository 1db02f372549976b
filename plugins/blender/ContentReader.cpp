// SPDX-License-Identifier: Apache-2.0

#include "ContentReader.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>

namespace Halvern::Formats::Blender {

ContentReader::ContentReader(const InputFile& file)
    : m_file(file), m_buffer(std::make_unique<char[]>(BufferSize))
{
    if (CompressionOf(file) != Compression::None)
        m_decompressor = std::make_unique<Decompressor>(file, DecompressedLimit(file.Size()));
}

/// False at the end of the content.
bool ContentReader::Fill()
{
    if (!m_rest.empty())
        return true;
    std::size_t size = 0;
    if (m_decompressor) {
        size = m_decompressor->Read(m_buffer.get(), BufferSize);
    } else {
        size = static_cast<std::size_t>(
            std::min<std::uint64_t>(BufferSize, m_file.Size() - m_position));
        m_file.ReadAt(m_position, m_buffer.get(), size);
    }
    m_rest = {m_buffer.get(), size};
    return size > 0;
}

void ContentReader::FailAtEnd() const
{
    throw FormatError("the file ends unexpectedly", m_position);
}

bool ContentReader::AtEnd()
{
    return !Fill();
}

std::string ContentReader::Read(std::uint64_t size)
{
    std::string bytes;
    while (bytes.size() < size) {
        if (!Fill())
            FailAtEnd();
        const std::string_view part = m_rest.substr(0, size - bytes.size());
        bytes.append(part);
        m_rest.remove_prefix(part.size());
        m_position += part.size();
    }
    return bytes;
}

void ContentReader::Skip(std::uint64_t size)
{
    if (!m_decompressor && size > m_rest.size()) {
        if (size > m_file.Size() - m_position) {
            m_position = m_file.Size();
            FailAtEnd();
        }
        m_rest = {};
        m_position += size;
        return;
    }
    while (size > 0) {
        if (!Fill())
            FailAtEnd();
        const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(size, m_rest.size()));
        m_rest.remove_prefix(part);
        m_position += part;
        size -= part;
    }
}

} // namespace Halvern::Formats::Blender
