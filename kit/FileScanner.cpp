// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/FileScanner.h"

#include "pluginkit/FormatError.h"

#include <algorithm>
#include <cstring>

namespace Halvern::PluginKit {

namespace {

/// The place of the first of `bytes` in `text`, or its size.
std::size_t FirstOf(std::string_view text, std::string_view bytes)
{
    // Piece by piece: where one of the bytes is everywhere and another one nowhere, looking for
    // that one up to the end each time would take hours.
    constexpr std::size_t piece = 256;
    for (std::size_t at = 0; at < text.size(); at += piece) {
        const std::size_t size = std::min(piece, text.size() - at);
        std::size_t first = size;
        for (const char byte : bytes) {
            if (const void* found = std::memchr(text.data() + at, byte, first))
                first =
                    static_cast<std::size_t>(static_cast<const char*>(found) - text.data()) - at;
        }
        if (first < size)
            return at + first;
    }
    return text.size();
}

} // namespace

FileScanner::FileScanner(const InputFile& file, std::uint64_t begin)
    : m_file(file), m_block(std::make_unique<char[]>(BlockSize)), m_blockBegin(begin)
{}

bool FileScanner::NextBlock()
{
    m_blockBegin += m_size;
    m_at = m_size = 0;
    const std::uint64_t end = m_file.Size();
    if (m_blockBegin >= end)
        return false;
    const auto size =
        static_cast<std::size_t>(std::min<std::uint64_t>(end - m_blockBegin, BlockSize));
    m_file.ReadAt(m_blockBegin, m_block.get(), size);
    m_size = size;
    return true;
}

bool FileScanner::SkipTo(std::string_view bytes)
{
    while (!AtEnd()) {
        m_at += FirstOf(Rest(), bytes);
        if (m_at < m_size)
            return true;
    }
    return false;
}

void FileScanner::SkipBlockComment(std::uint64_t begin)
{
    Next();
    while (SkipTo("*")) {
        Next();
        if (Peek() == '/') {
            Next();
            return;
        }
    }
    throw FormatError("a comment without an end", begin);
}

} // namespace Halvern::PluginKit
