// SPDX-License-Identifier: Apache-2.0

#include "base/ContentHash.h"

#include "base/ContentReader.h"

#define XXH_INLINE_ALL // so that nothing has to be linked
#include <xxhash.h>

#include <cstring>

namespace Halvern::Base {

namespace {

/// Small enough to stay near the processor.
constexpr std::size_t ZerosSize = std::size_t(16) * 1024;
constexpr char Zeros[ZerosSize] = {};
constexpr std::string_view Digits = "0123456789abcdef";

} // namespace

struct ContentHasher::State
{
    XXH3_state_t state;
};

ContentHasher::ContentHasher() : m_state(std::make_unique<State>())
{
    XXH3_128bits_reset(&m_state->state);
}

ContentHasher::~ContentHasher() = default;

void ContentHasher::Add(std::string_view bytes) noexcept
{
    XXH3_128bits_update(&m_state->state, bytes.data(), bytes.size());
}

void ContentHasher::AddZeros(std::uint64_t count) noexcept
{
    for (; count > ZerosSize; count -= ZerosSize)
        Add({Zeros, ZerosSize});
    Add({Zeros, static_cast<std::size_t>(count)});
}

ContentHash ContentHasher::Result() const noexcept
{
    // The same on every processor.
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(&m_state->state));
    ContentHash hash;
    static_assert(sizeof canonical.digest == sizeof hash.bytes);
    std::memcpy(hash.bytes.data(), canonical.digest, sizeof canonical.digest);
    return hash;
}

std::string ContentHash::Hex() const
{
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += Digits[byte >> 4];
        text += Digits[byte & 15];
    }
    return text;
}

std::optional<ContentHash> ContentHash::FromHex(std::string_view text) noexcept
{
    ContentHash hash;
    if (text.size() != 2 * hash.bytes.size())
        return std::nullopt;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t digit = Digits.find(text[i]);
        if (digit == std::string_view::npos)
            return std::nullopt;
        hash.bytes[i / 2] = static_cast<std::uint8_t>((hash.bytes[i / 2] << 4) | digit);
    }
    return hash;
}

FileResult HashContent(const std::filesystem::path& file, ContentHash& hash)
{
    Handle handle = NoHandle;
    if (FileResult opened = OpenForReading(file, handle); !opened)
        return opened;
    FileResult result = HashContent(handle, hash);
    Close(handle);
    return result;
}

FileResult HashContent(Handle file, ContentHash& hash)
{
    ContentHasher hasher;
    ContentReader reader(file);
    for (ContentReader::Piece piece;;) {
        if (FileResult read = reader.Next(piece); !read)
            return read;
        if (piece.size == 0)
            break;
        if (piece.IsHole())
            hasher.AddZeros(piece.size);
        else
            hasher.Add(piece.bytes);
    }
    hash = hasher.Result();
    return {};
}

} // namespace Halvern::Base
