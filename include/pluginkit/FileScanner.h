// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "pluginkit/InputFile.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace Halvern::PluginKit {

/// Goes through a file once, from its first byte to its last, with one block of it in memory:
///
///     FileScanner scanner(file);
///     while (const std::optional<char> c = scanner.Next())
///         ...
///
/// Where the file cannot be read any further, every function here throws FormatError.
class FileScanner
{
public:
    /// The file must live as long, and is taken to be as large as when it was opened.
    explicit FileScanner(const InputFile& file, std::uint64_t begin = 0);

    /// The place of the byte that comes next.
    std::uint64_t Position() const { return m_blockBegin + m_at; }
    bool AtEnd() { return m_at == m_size && !NextBlock(); }
    /// The byte that comes next, which stays there; nothing at the end.
    std::optional<char> Peek()
    {
        if (AtEnd())
            return std::nullopt;
        return m_block[m_at];
    }
    /// The byte that comes next; nothing at the end.
    std::optional<char> Next()
    {
        if (AtEnd())
            return std::nullopt;
        return m_block[m_at++];
    }
    /// Goes on to the next byte that is one of `bytes`, which stays there, and says whether there
    /// is one.
    bool SkipTo(std::string_view bytes);
    /// At the "*" after a "/": goes on to what comes after the next "*/". Throws a FormatError
    /// with `begin`, the comment's own place, when there is none.
    void SkipBlockComment(std::uint64_t begin);

    static constexpr std::size_t BlockSize = std::size_t(256) * 1024;

private:
    bool NextBlock();
    std::string_view Rest() const { return {m_block.get() + m_at, m_size - m_at}; }

    const InputFile& m_file;
    std::unique_ptr<char[]> m_block;
    std::uint64_t m_blockBegin;
    std::size_t m_size = 0;
    std::size_t m_at = 0;
};

} // namespace Halvern::PluginKit
