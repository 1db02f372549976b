// SPDX-License-Identifier: Apache-2.0

#include "FileWindow.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>

namespace Halvern::Formats::Meshes {

std::string_view FileWindow::Bytes(std::uint64_t offset, std::size_t size)
{
    if (offset > Size() || size > Size() - offset)
        throw FormatError("the file ends too early", Size());
    if (offset < m_begin || offset - m_begin + size > m_block.size()) {
        const std::uint64_t wanted = std::max<std::uint64_t>(size, BlockSize);
        m_block = m_file.Read(offset, std::min(wanted, Size() - offset));
        m_begin = offset;
    }
    return std::string_view(m_block).substr(static_cast<std::size_t>(offset - m_begin), size);
}

std::uint64_t FileWindow::Little(std::uint64_t offset, std::size_t size)
{
    const std::string_view bytes = Bytes(offset, size);
    std::uint64_t number = 0;
    for (std::size_t i = size; i-- > 0;)
        number = (number << 8) | static_cast<unsigned char>(bytes[i]);
    return number;
}

std::uint64_t FileWindow::Big(std::uint64_t offset, std::size_t size)
{
    std::uint64_t number = 0;
    for (const char c : Bytes(offset, size))
        number = (number << 8) | static_cast<unsigned char>(c);
    return number;
}

std::string FileWindow::Text(std::uint64_t offset, std::uint64_t end)
{
    const std::uint64_t left = std::min(end, Size()) - std::min(offset, end);
    const auto most = static_cast<std::size_t>(std::min<std::uint64_t>(left, MaxName));
    const std::string_view bytes = Bytes(offset, most);
    const std::size_t zero = bytes.find('\0');
    if (zero == std::string_view::npos)
        throw FormatError("a name without an end", offset);
    return std::string(bytes.substr(0, zero));
}

} // namespace Halvern::Formats::Meshes
