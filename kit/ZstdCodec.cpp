// SPDX-License-Identifier: Apache-2.0

#include "kit/CompressionCodecs.h"
#include "pluginkit/FormatError.h"

#include <array>
#include <stdexcept>

#include <zstd.h>

namespace Halvern::PluginKit {

namespace {

constexpr int MaxWindowLog = 27; // 128 MiB, what programs accept without being asked

class ZstdDecoder : public Decompressor::Decoder
{
public:
    ZstdDecoder() : m_context(ZSTD_createDCtx(), ZSTD_freeDCtx)
    {
        if (!m_context)
            throw std::bad_alloc();
        ZSTD_DCtx_setParameter(m_context.get(), ZSTD_d_windowLogMax, MaxWindowLog);
    }

    std::size_t Decode(std::string_view& input, char* buffer, std::size_t size,
                       std::uint64_t position) override
    {
        ZSTD_inBuffer in = {input.data(), input.size(), 0};
        ZSTD_outBuffer out = {buffer, size, 0};
        const std::size_t result = ZSTD_decompressStream(m_context.get(), &out, &in);
        if (ZSTD_isError(result))
            throw FormatError(std::string("the zstd data is damaged: ") + ZSTD_getErrorName(result),
                              position);
        input.remove_prefix(in.pos);
        if (in.pos > 0 || out.pos > 0) // without progress it tells of the next frame
            m_frameEnded = result == 0;
        return out.pos;
    }
    bool IsComplete() const override { return m_frameEnded; }

private:
    std::unique_ptr<ZSTD_DCtx, std::size_t (*)(ZSTD_DCtx*)> m_context;
    bool m_frameEnded = false;
};

class ZstdEncoder : public Compressor::Encoder
{
public:
    ZstdEncoder() : m_context(ZSTD_createCCtx(), ZSTD_freeCCtx)
    {
        if (!m_context)
            throw std::bad_alloc();
    }

    void Encode(std::string_view bytes, bool finish, const Compressor::Sink& sink) override
    {
        std::array<char, std::size_t(16)* 1024> buffer = {};
        ZSTD_inBuffer in = {bytes.data(), bytes.size(), 0};
        for (bool done = false; !done;) {
            ZSTD_outBuffer out = {buffer.data(), buffer.size(), 0};
            const std::size_t left = ZSTD_compressStream2(m_context.get(), &out, &in,
                                                          finish ? ZSTD_e_end : ZSTD_e_continue);
            if (ZSTD_isError(left))
                throw std::runtime_error(ZSTD_getErrorName(left));
            if (out.pos > 0)
                sink({buffer.data(), out.pos});
            done = finish ? left == 0 : in.pos == in.size;
        }
    }

private:
    std::unique_ptr<ZSTD_CCtx, std::size_t (*)(ZSTD_CCtx*)> m_context;
};

} // namespace

std::unique_ptr<Decompressor::Decoder> MakeZstdDecoder()
{
    return std::make_unique<ZstdDecoder>();
}

std::unique_ptr<Compressor::Encoder> MakeZstdEncoder()
{
    return std::make_unique<ZstdEncoder>();
}

} // namespace Halvern::PluginKit
