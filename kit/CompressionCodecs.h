// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "pluginkit/Compression.h"

namespace Halvern::PluginKit {

/// One method of compression, as a Decompressor drives it.
class Decompressor::Decoder
{
public:
    virtual ~Decoder() = default;
    /// Takes from the front of `input`, writes at most `size` bytes and returns their number.
    /// `position` is where the input lies in the file.
    virtual std::size_t Decode(std::string_view& input, char* buffer, std::size_t size,
                               std::uint64_t position) = 0;
    /// True when the data may end here.
    virtual bool IsComplete() const = 0;
};

class Compressor::Encoder
{
public:
    virtual ~Encoder() = default;
    virtual void Encode(std::string_view bytes, bool finish, const Sink& sink) = 0;
};

std::unique_ptr<Decompressor::Decoder> MakeDecoder(Compression compression);
std::unique_ptr<Compressor::Encoder> MakeEncoder(Compression compression);

std::unique_ptr<Decompressor::Decoder> MakeGzipDecoder();
std::unique_ptr<Compressor::Encoder> MakeGzipEncoder();
std::unique_ptr<Decompressor::Decoder> MakeZstdDecoder();
std::unique_ptr<Compressor::Encoder> MakeZstdEncoder();

} // namespace Halvern::PluginKit
