// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileHandle.h"
#include "base/FileResult.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Halvern::Base {

// What tells contents apart (XXH3, 128 bits). It is fast and keeps accidents apart; who makes two
// files of one hash on purpose can. Failures come as results; only a lack of memory throws.

/// DO NOT CHANGE what it is of, nor the order of its bytes: databases keep it.
struct ContentHash
{
    std::array<std::uint8_t, 16> bytes = {};

    /// 32 small hexadecimal digits.
    std::string Hex() const;
    /// Nothing for a text that is not of Hex.
    static std::optional<ContentHash> FromHex(std::string_view text) noexcept;
    bool operator==(const ContentHash&) const = default;
};

/// The hash of bytes that come in parts.
class ContentHasher
{
public:
    ContentHasher();
    ~ContentHasher();
    ContentHasher(const ContentHasher&) = delete;
    ContentHasher& operator=(const ContentHasher&) = delete;

    void Add(std::string_view bytes) noexcept;
    /// As if they were bytes: what a hole of a file reads as.
    void AddZeros(std::uint64_t count) noexcept;
    /// Of all bytes so far.
    ContentHash Result() const noexcept;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// Of a regular file that symbolic links may lead to. `hash` stays as it was when the file cannot
/// be read, or the thread's WorkWatch stops it.
FileResult HashContent(const std::filesystem::path& file, ContentHash& hash);
/// Of an open file from its first byte to its last, wherever somebody has read to.
FileResult HashContent(Handle file, ContentHash& hash);

} // namespace Halvern::Base
