// SPDX-License-Identifier: Apache-2.0

#include "kit/CompressionCodecs.h"
#include "pluginkit/FormatError.h"

#include <algorithm>
#include <array>
#include <limits>

#include <zlib.h>

namespace Halvern::PluginKit {

namespace {

constexpr int GzipWindow = 15 + 16; // "+ 16" asks zlib for gzip's header and check sum

uInt Units(std::size_t size)
{
    return static_cast<uInt>(std::min<std::size_t>(size, std::numeric_limits<uInt>::max()));
}

Bytef* Bytes(const char* data)
{
    // zlib does not write to its input; its type is older than const.
    return reinterpret_cast<Bytef*>(const_cast<char*>(data));
}

class GzipDecoder : public Decompressor::Decoder
{
public:
    GzipDecoder()
    {
        if (inflateInit2(&m_stream, GzipWindow) != Z_OK)
            throw std::bad_alloc();
    }
    ~GzipDecoder() override { inflateEnd(&m_stream); }
    GzipDecoder(const GzipDecoder&) = delete;
    GzipDecoder& operator=(const GzipDecoder&) = delete;

    std::size_t Decode(std::string_view& input, char* buffer, std::size_t size,
                       std::uint64_t position) override
    {
        if (m_memberEnded && input.empty())
            return 0;
        if (m_memberEnded) // another member follows
            inflateReset(&m_stream);
        m_memberEnded = false;
        const uInt available = Units(input.size());
        const uInt room = Units(size);
        m_stream.next_in = Bytes(input.data());
        m_stream.avail_in = available;
        m_stream.next_out = Bytes(buffer);
        m_stream.avail_out = room;
        const int result = inflate(&m_stream, Z_NO_FLUSH);
        input.remove_prefix(available - m_stream.avail_in);
        if (result == Z_MEM_ERROR)
            throw std::bad_alloc();
        if (result == Z_STREAM_END)
            m_memberEnded = true;
        else if (result != Z_OK && result != Z_BUF_ERROR)
            Fail(position);
        return room - m_stream.avail_out;
    }
    bool IsComplete() const override { return m_memberEnded; }

private:
    [[noreturn]] void Fail(std::uint64_t position) const
    {
        const std::string reason = m_stream.msg ? m_stream.msg : "a dictionary is missing";
        throw FormatError("the gzip data is damaged: " + reason, position);
    }

    z_stream m_stream = {};
    bool m_memberEnded = false;
};

class GzipEncoder : public Compressor::Encoder
{
public:
    GzipEncoder()
    {
        constexpr int memory = 8;
        if (deflateInit2(&m_stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, GzipWindow, memory,
                         Z_DEFAULT_STRATEGY) != Z_OK)
            throw std::bad_alloc();
    }
    ~GzipEncoder() override { deflateEnd(&m_stream); }
    GzipEncoder(const GzipEncoder&) = delete;
    GzipEncoder& operator=(const GzipEncoder&) = delete;

    void Encode(std::string_view bytes, bool finish, const Compressor::Sink& sink) override
    {
        std::array<char, std::size_t(16)* 1024> buffer = {};
        do {
            const uInt available = Units(bytes.size());
            m_stream.next_in = Bytes(bytes.data());
            m_stream.avail_in = available;
            m_stream.next_out = Bytes(buffer.data());
            m_stream.avail_out = static_cast<uInt>(buffer.size());
            const bool last = finish && available == bytes.size();
            deflate(&m_stream, last ? Z_FINISH : Z_NO_FLUSH);
            bytes.remove_prefix(available - m_stream.avail_in);
            if (const std::size_t made = buffer.size() - m_stream.avail_out)
                sink({buffer.data(), made});
        } while (!bytes.empty() || m_stream.avail_out == 0);
    }

private:
    z_stream m_stream = {};
};

} // namespace

std::unique_ptr<Decompressor::Decoder> MakeGzipDecoder()
{
    return std::make_unique<GzipDecoder>();
}

std::unique_ptr<Compressor::Encoder> MakeGzipEncoder()
{
    return std::make_unique<GzipEncoder>();
}

} // namespace Halvern::PluginKit
