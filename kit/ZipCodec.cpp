// SPDX-License-Identifier: Apache-2.0

#include "kit/ZipCodec.h"

#include "pluginkit/FormatError.h"

#include <algorithm>
#include <memory>
#include <new>

#include <zlib.h>

namespace Halvern::PluginKit {

namespace {

// ZIP wants its data without the wrapping that zlib puts around it.
constexpr int RawWindow = -15;

constexpr std::size_t BufferSize = std::size_t(64) * 1024;

/// Gives zlib the packed bytes of an entry, block by block.
class Inflater
{
public:
    Inflater(const InputFile& file, const ZipEntry& entry)
        : m_file(file), m_entry(entry), m_buffer(std::make_unique<char[]>(BufferSize)),
          m_next(entry.dataOffset), m_end(entry.dataOffset + entry.compressedSize)
    {
        if (inflateInit2(&m_stream, RawWindow) != Z_OK)
            throw std::bad_alloc();
    }
    ~Inflater() { inflateEnd(&m_stream); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    /// Fills `content` unless the data ends before, and returns how much it filled.
    std::size_t Fill(std::string& content)
    {
        m_stream.next_out = reinterpret_cast<Bytef*>(content.data());
        m_stream.avail_out = static_cast<uInt>(content.size());
        int result = Z_OK;
        while (result == Z_OK && m_stream.avail_out > 0) {
            Refill();
            result = inflate(&m_stream, Z_NO_FLUSH);
        }
        if (result == Z_MEM_ERROR)
            throw std::bad_alloc();
        if (result != Z_OK && result != Z_STREAM_END)
            throw FormatError(m_entry.name + " cannot be read: Zlib error: " + zError(result),
                              m_entry.offset);
        return content.size() - m_stream.avail_out;
    }

private:
    void Refill()
    {
        if (m_stream.avail_in > 0)
            return;
        const auto size =
            static_cast<std::size_t>(std::min<std::uint64_t>(m_end - m_next, BufferSize));
        m_file.ReadAt(m_next, m_buffer.get(), size);
        m_next += size;
        m_stream.next_in = reinterpret_cast<Bytef*>(m_buffer.get());
        m_stream.avail_in = static_cast<uInt>(size);
    }

    const InputFile& m_file;
    const ZipEntry& m_entry;
    std::unique_ptr<char[]> m_buffer;
    std::uint64_t m_next;
    std::uint64_t m_end;
    z_stream m_stream = {};
};

} // namespace

std::string Unpack(const InputFile& file, const ZipEntry& entry)
{
    const std::uint64_t room = std::uint64_t(entry.size) + 1;
    if (entry.method == ZipStored)
        return file.Read(entry.dataOffset, std::min<std::uint64_t>(entry.compressedSize, room));
    if (entry.size == 0 && entry.compressedSize == 0) // some programs leave out even the end mark
        return {};
    std::string content(static_cast<std::size_t>(room), '\0');
    content.resize(Inflater(file, entry).Fill(content));
    return content;
}

std::string Deflate(const std::string& content)
{
    constexpr int memoryLevel = 8;
    z_stream stream = {};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, RawWindow, memoryLevel,
                     Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::bad_alloc();
    std::string bytes(deflateBound(&stream, static_cast<uLong>(content.size())), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    const int result = deflate(&stream, Z_FINISH);
    bytes.resize(bytes.size() - stream.avail_out);
    deflateEnd(&stream);
    if (result != Z_STREAM_END)
        throw FormatError("the content cannot be compressed");
    return bytes;
}

std::uint32_t ZipChecksum(const std::string& content)
{
    const auto* bytes = reinterpret_cast<const Bytef*>(content.data());
    return static_cast<std::uint32_t>(crc32(0, bytes, static_cast<uInt>(content.size())));
}

} // namespace Halvern::PluginKit
