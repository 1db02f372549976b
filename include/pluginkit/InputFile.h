// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kit/PlatformFile.h"

#include <string>

namespace Halvern::PluginKit {

/// A file open for reading; reading leaves its times alone. Failures throw FormatError.
class InputFile
{
public:
    explicit InputFile(const std::filesystem::path& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    void Close() noexcept;
    const std::filesystem::path& Path() const { return m_path; }
    /// The file's state when it was opened.
    const FileStamp& Stamp() const { return m_stamp; }
    std::uint64_t Size() const { return m_stamp.size; }
    /// Fills the whole buffer, or throws: a file may shrink while it is read.
    void ReadAt(std::uint64_t offset, char* buffer, std::size_t size) const;
    /// Checks the size against the file before memory is taken for it.
    std::string Read(std::uint64_t offset, std::uint64_t size) const;

private:
    std::filesystem::path m_path;
    Platform::Handle m_handle;
    FileStamp m_stamp;
};

} // namespace Halvern::PluginKit
