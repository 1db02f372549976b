// SPDX-License-Identifier: Apache-2.0

#include "kit/CompressionCodecs.h"

#include <algorithm>

namespace Halvern::PluginKit {

namespace {

class PlainDecoder : public Decompressor::Decoder
{
public:
    std::size_t Decode(std::string_view& input, char* buffer, std::size_t size,
                       std::uint64_t) override
    {
        const std::size_t part = std::min(size, input.size());
        std::copy_n(input.data(), part, buffer);
        input.remove_prefix(part);
        return part;
    }
    bool IsComplete() const override { return true; }
};

class PlainEncoder : public Compressor::Encoder
{
public:
    void Encode(std::string_view bytes, bool, const Compressor::Sink& sink) override
    {
        if (!bytes.empty())
            sink(bytes);
    }
};

} // namespace

std::unique_ptr<Decompressor::Decoder> MakeDecoder(Compression compression)
{
    switch (compression) {
    case Compression::None:
        break;
    case Compression::Gzip:
        return MakeGzipDecoder();
    case Compression::Zstd:
        return MakeZstdDecoder();
    }
    return std::make_unique<PlainDecoder>();
}

std::unique_ptr<Compressor::Encoder> MakeEncoder(Compression compression)
{
    switch (compression) {
    case Compression::None:
        break;
    case Compression::Gzip:
        return MakeGzipEncoder();
    case Compression::Zstd:
        return MakeZstdEncoder();
    }
    return std::make_unique<PlainEncoder>();
}

} // namespace Halvern::PluginKit
