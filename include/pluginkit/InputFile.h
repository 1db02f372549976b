// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace Halvern::PluginKit {

/// A regular file open for reading, of any size and with a path of any length. Reading leaves its
/// times alone and lets other programs read it, too. Sizes and offsets are bytes. Failures throw
/// FormatError, with the system's own text; HeldError when another program does not let the file be
/// read. One object belongs to one thread at a time.
class InputFile
{
public:
    /// Opens the file.
    explicit InputFile(const std::filesystem::path& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// Nothing can be read afterwards; path and size stay. Closing twice is fine.
    void Close() noexcept;
    const std::filesystem::path& Path() const { return m_path; }
    /// As it was when the file was opened.
    std::uint64_t Size() const { return m_size; }
    /// Fills the whole buffer, or throws: a file may shrink while it is read.
    void ReadAt(std::uint64_t offset, char* buffer, std::size_t size) const;
    /// Throws when the file ends before, and checks that before memory is taken. How much is too
    /// much for the format is for the caller to say.
    std::string Read(std::uint64_t offset, std::uint64_t size) const;

private:
    friend class ReplacementFile;
    struct State;

    std::filesystem::path m_path;
    std::uint64_t m_size = 0;
    std::unique_ptr<State> m_state;
};

} // namespace Halvern::PluginKit
