// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/Compression.h"

#include "kit/CompressionCodecs.h"
#include "pluginkit/FormatError.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Halvern::PluginKit {

Compression CompressionOf(const InputFile& file)
{
    std::array<char, 4> head{};
    file.ReadAt(0, head.data(),
                static_cast<std::size_t>(std::min<std::uint64_t>(head.size(), file.Size())));
    const std::string_view bytes(head.data(), head.size());
    if (bytes.starts_with("\x1F\x8B"))
        return Compression::Gzip;
    const bool skippable =
        bytes.substr(1) == "\x2A\x4D\x18" && (static_cast<unsigned char>(bytes[0]) & 0xF0U) == 0x50;
    if (bytes == "\x28\xB5\x2F\xFD" || skippable)
        return Compression::Zstd;
    return Compression::None;
}

std::uint64_t DecompressedLimit(std::uint64_t fileSize)
{
    constexpr std::uint64_t always = std::uint64_t(256) << 20;
    constexpr std::uint64_t ratio = 1100; // gzip cannot do better
    return std::max(always, fileSize > UINT64_MAX / ratio ? UINT64_MAX : fileSize * ratio);
}

Decompressor::Decompressor(const InputFile& file, std::uint64_t limit)
    : Decompressor(file, CompressionOf(file), 0, file.Size(), limit)
{}

Decompressor::Decompressor(const InputFile& file, Compression compression, std::uint64_t begin,
                           std::uint64_t end, std::uint64_t limit)
    : m_file(file), m_decoder(MakeDecoder(compression)),
      m_buffer(std::make_unique<char[]>(BufferSize)), m_next(begin), m_end(end), m_left(limit),
      m_limit(limit)
{}

Decompressor::~Decompressor() = default;

void Decompressor::Refill()
{
    if (!m_input.empty() || m_next == m_end)
        return;
    const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(m_end - m_next, BufferSize));
    m_file.ReadAt(m_next, m_buffer.get(), size);
    m_input = {m_buffer.get(), size};
    m_next += size;
}

/// What one call of the decoder gives; 0 only at the end of the content.
std::size_t Decompressor::Step(char* buffer, std::size_t size)
{
    for (;;) {
        Refill();
        const std::uint64_t position = m_next - m_input.size();
        const std::size_t before = m_input.size();
        const std::size_t got = m_decoder->Decode(m_input, buffer, size, position);
        if (got > 0)
            return got;
        if (before > 0 && m_input.size() < before)
            continue;
        if (before > 0)
            throw FormatError("the compressed data is damaged", position);
        if (!m_decoder->IsComplete())
            throw FormatError("the compressed data ends unexpectedly", position);
        return 0;
    }
}

std::size_t Decompressor::Read(char* buffer, std::size_t size)
{
    std::size_t done = 0;
    while (done < size) {
        const std::size_t got = Step(buffer + done, size - done);
        if (got == 0)
            break;
        if (got > m_left)
            throw FormatError("the file holds more than " + std::to_string(m_limit) +
                                  " bytes when it is decompressed",
                              m_next - m_input.size());
        m_left -= got;
        done += got;
    }
    return done;
}

std::string ReadDecompressed(const InputFile& file, std::uint64_t limit)
{
    Decompressor decompressor(file, limit);
    std::string content;
    std::array<char, std::size_t(16)* 1024> part = {};
    while (const std::size_t got = decompressor.Read(part.data(), part.size()))
        content.append(part.data(), got);
    return content;
}

Compressor::Compressor(Compression compression, Sink sink)
    : m_encoder(MakeEncoder(compression)), m_sink(std::move(sink))
{}

Compressor::~Compressor() = default;

void Compressor::Write(std::string_view bytes)
{
    m_encoder->Encode(bytes, false, m_sink);
}

void Compressor::Finish()
{
    m_encoder->Encode({}, true, m_sink);
}

std::string Compressed(Compression compression, std::string_view bytes)
{
    std::string result;
    Compressor compressor(compression, [&](std::string_view part) { result.append(part); });
    compressor.Write(bytes);
    compressor.Finish();
    return result;
}

} // namespace Halvern::PluginKit
