// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "pluginkit/InputFile.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace Halvern::PluginKit {

// Compressed files. Needs Corsync::PluginKitCompression, and with it zlib and zstd. Failures are
// FormatErrors; one object belongs to one thread at a time.

enum class Compression
{
    None,
    Gzip,
    Zstd
};

/// Decided by the first bytes, never by the name.
Compression CompressionOf(const InputFile& file);

/// What a file of this size may hold at most: a compressed file of a few bytes can stand for
/// terabytes. No real design file comes near it.
std::uint64_t DecompressedLimit(std::uint64_t fileSize);

/// Reads a file, or a part of it, from the beginning to the end, decompressed on the way. Memory is
/// fixed, except that a zstd file may ask for a window of up to 128 MiB. Damage, an early end and
/// more than `limit` bytes of content are FormatErrors with a position in the compressed file.
class Decompressor
{
public:
    /// The file must live as long as this.
    Decompressor(const InputFile& file, std::uint64_t limit);
    Decompressor(const InputFile& file, Compression compression, std::uint64_t begin,
                 std::uint64_t end, std::uint64_t limit);
    ~Decompressor();
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;

    /// Fills the buffer unless the content ends before; 0 at the end.
    std::size_t Read(char* buffer, std::size_t size);

    class Decoder;

private:
    void Refill();
    std::size_t Step(char* buffer, std::size_t size);

    static constexpr std::size_t BufferSize = std::size_t(64) * 1024;

    const InputFile& m_file;
    std::unique_ptr<Decoder> m_decoder;
    std::unique_ptr<char[]> m_buffer;
    std::string_view m_input;
    std::uint64_t m_next;
    std::uint64_t m_end;
    std::uint64_t m_left;
    std::uint64_t m_limit;
};

/// A whole file, decompressed when it is compressed.
std::string ReadDecompressed(const InputFile& file, std::uint64_t limit);

/// Compresses what is written to it and passes it on, piece by piece.
class Compressor
{
public:
    using Sink = std::function<void(std::string_view)>;

    Compressor(Compression compression, Sink sink);
    ~Compressor();
    Compressor(const Compressor&) = delete;
    Compressor& operator=(const Compressor&) = delete;

    void Write(std::string_view bytes);
    /// Requires: called once, last. Without it what was passed on is incomplete.
    void Finish();

    class Encoder;

private:
    std::unique_ptr<Encoder> m_encoder;
    Sink m_sink;
};

/// One gzip member or one zstd frame.
std::string Compressed(Compression compression, std::string_view bytes);

} // namespace Halvern::PluginKit
