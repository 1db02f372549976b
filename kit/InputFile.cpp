// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/InputFile.h"

#include "kit/InputFileState.h"
#include "pluginkit/FormatError.h"

namespace Halvern::PluginKit {

InputFile::InputFile(const std::filesystem::path& path)
    : m_path(path), m_state(std::make_unique<State>())
{
    m_state->handle = Platform::OpenForReading(path);
    try {
        m_state->stamp = Platform::StampOf(m_state->handle);
    } catch (...) {
        Close();
        throw;
    }
    m_size = m_state->stamp.size;
}

InputFile::~InputFile()
{
    Close();
}

void InputFile::Close() noexcept
{
    if (m_state->handle != Platform::NoHandle)
        Platform::Close(m_state->handle);
    m_state->handle = Platform::NoHandle;
}

void InputFile::ReadAt(std::uint64_t offset, char* buffer, std::size_t size) const
{
    while (size > 0) {
        const std::size_t got = Platform::ReadSome(m_state->handle, offset, buffer, size);
        if (got == 0)
            throw FormatError("the file ends unexpectedly", offset);
        offset += got;
        buffer += got;
        size -= got;
    }
}

std::string InputFile::Read(std::uint64_t offset, std::uint64_t size) const
{
    if (offset > Size() || size > Size() - offset)
        throw FormatError("the file ends unexpectedly", Size());
    std::string bytes(static_cast<std::size_t>(size), '\0');
    ReadAt(offset, bytes.data(), bytes.size());
    return bytes;
}

} // namespace Halvern::PluginKit
