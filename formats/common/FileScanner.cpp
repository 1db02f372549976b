#include "FileScanner.h"

#include <algorithm>
#include <cstring>

namespace Halvern::Formats {

namespace {

/// The place of the first of `bytes` in `text`, or its size.
std::size_t FirstOf(std::string_view text, std::string_view bytes)
{
    std::size_t first = text.size();
    for (const char byte : bytes) {
        if (const void* found = std::memchr(text.data(), byte, first))
            first = static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
    }
    return first;
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

} // namespace Halvern::Formats
