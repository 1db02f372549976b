// SPDX-License-Identifier: Apache-2.0

#include "GlbContainer.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <array>
#include <limits>

namespace Halvern::Formats::Gltf {

namespace {

constexpr std::uint64_t HeaderSize = 12;
constexpr std::uint64_t ChunkHeaderSize = 8;
constexpr std::uint64_t Alignment = 4;
constexpr std::uint32_t Magic = 0x46546C67;     // "glTF"
constexpr std::uint32_t JsonChunk = 0x4E4F534A; // "JSON"
constexpr std::uint32_t OldVersion = 1;
constexpr std::uint32_t Version = 2;
/// Of version 1: the length of the JSON and a number that says that it is JSON.
constexpr std::uint64_t OldHeaderSize = 20;
constexpr std::uint32_t OldJsonFormat = 0;
/// The format defines two; extensions add a few. A file of nothing but empty chunks would take
/// hours.
constexpr int MaxChunks = 4096;

std::uint32_t ReadNumber(const InputFile& file, std::uint64_t offset)
{
    std::array<char, 4> bytes{};
    file.ReadAt(offset, bytes.data(), bytes.size());
    std::uint32_t number = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        number = (number << 8) | static_cast<unsigned char>(bytes[i]);
    return number;
}

void AppendNumber(std::string& bytes, std::uint64_t number)
{
    for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<char>((number >> shift) & 0xFFU));
}

/// Returns the version.
std::uint32_t CheckHeader(const InputFile& file)
{
    if (file.Size() < HeaderSize)
        throw FormatError("the file ends inside its header", file.Size());
    if (ReadNumber(file, 0) != Magic)
        throw FormatError("a binary glTF file begins with \"glTF\"", 0);
    const std::uint32_t version = ReadNumber(file, 4);
    if (version != Version && version != OldVersion)
        throw FormatError("version " + std::to_string(version) + " of the container, not 1 or 2",
                          4);
    const std::uint32_t length = ReadNumber(file, 8);
    if (length != file.Size())
        throw FormatError("the header gives a length of " + std::to_string(length) +
                              " bytes, the file has " + std::to_string(file.Size()),
                          8);
    return version;
}

/// The size of the chunk whose header is at `offset`.
std::uint64_t CheckedChunkSize(const InputFile& file, std::uint64_t offset)
{
    if (file.Size() - offset < ChunkHeaderSize)
        throw FormatError("the file ends inside a chunk header", file.Size());
    const std::uint64_t size = ReadNumber(file, offset);
    const std::uint64_t left = file.Size() - offset - ChunkHeaderSize;
    if (size > left)
        throw FormatError("a chunk of " + std::to_string(size) + " bytes where " +
                              std::to_string(left) + " are left",
                          offset);
    if (size % Alignment != 0)
        throw FormatError(
            "a chunk of " + std::to_string(size) + " bytes, which is no multiple of 4", offset);
    return size;
}

void CheckFollowingChunks(const InputFile& file, std::uint64_t offset)
{
    for (int chunks = 1; offset < file.Size(); ++chunks) {
        if (chunks == MaxChunks)
            throw FormatError("more than " + std::to_string(MaxChunks) + " chunks", offset);
        const std::uint64_t size = CheckedChunkSize(file, offset);
        if (ReadNumber(file, offset + 4) == JsonChunk)
            throw FormatError("a second JSON chunk", offset + 4);
        offset += ChunkHeaderSize + size;
    }
}

GlbLayout ReadOldLayout(const InputFile& file)
{
    if (file.Size() < OldHeaderSize)
        throw FormatError("the file ends inside its header", file.Size());
    GlbLayout layout;
    layout.version = OldVersion;
    layout.jsonBegin = OldHeaderSize;
    layout.jsonSize = ReadNumber(file, HeaderSize);
    const std::uint32_t format = ReadNumber(file, HeaderSize + 4);
    if (format != OldJsonFormat)
        throw FormatError("the content has the format " + std::to_string(format) + ", not JSON",
                          HeaderSize + 4);
    const std::uint64_t left = file.Size() - OldHeaderSize;
    if (layout.jsonSize > left)
        throw FormatError("a content of " + std::to_string(layout.jsonSize) + " bytes where " +
                              std::to_string(left) + " are left",
                          HeaderSize);
    if (layout.jsonSize > MaxDocumentSize)
        throw FormatError("the content is larger than 1 GiB", HeaderSize);
    layout.restBegin = layout.jsonBegin + layout.jsonSize;
    layout.restSize = file.Size() - layout.restBegin;
    return layout;
}

/// Blanks at the end, up to three, are padding that is set anew.
void Pad(std::string& json)
{
    for (std::uint64_t i = 1; i < Alignment && json.ends_with(' '); ++i)
        json.pop_back();
    while (json.size() % Alignment != 0)
        json.push_back(' ');
}

} // namespace

bool IsGlb(const InputFile& file)
{
    if (file.Size() >= 4 && ReadNumber(file, 0) == Magic)
        return true;
    std::string extension = PathToUtf8(file.Path().extension());
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return extension == ".glb";
}

GlbLayout ReadGlbLayout(const InputFile& file)
{
    if (CheckHeader(file) == OldVersion)
        return ReadOldLayout(file);
    GlbLayout layout;
    layout.jsonSize = CheckedChunkSize(file, HeaderSize);
    if (ReadNumber(file, HeaderSize + 4) != JsonChunk)
        throw FormatError("the first chunk is not JSON", HeaderSize + 4);
    if (layout.jsonSize > MaxDocumentSize)
        throw FormatError("the JSON chunk is larger than 1 GiB", HeaderSize);
    layout.jsonBegin = HeaderSize + ChunkHeaderSize;
    layout.restBegin = layout.jsonBegin + layout.jsonSize;
    layout.restSize = file.Size() - layout.restBegin;
    CheckFollowingChunks(file, layout.restBegin);
    return layout;
}

std::string GlbHead(const GlbLayout& layout, std::string json)
{
    Pad(json);
    const bool isOld = layout.version == OldVersion;
    const std::uint64_t total = layout.jsonBegin + json.size() + layout.restSize;
    if (total > std::numeric_limits<std::uint32_t>::max())
        throw FormatError("the file would grow beyond 4 GiB");
    std::string head;
    head.reserve(layout.jsonBegin + json.size());
    AppendNumber(head, Magic);
    AppendNumber(head, layout.version);
    AppendNumber(head, total);
    AppendNumber(head, json.size());
    AppendNumber(head, isOld ? OldJsonFormat : JsonChunk);
    return head.append(json);
}

} // namespace Halvern::Formats::Gltf
