// SPDX-License-Identifier: Apache-2.0

#include "Packing.h"

#include "Scratch.h"

#include "pluginkit/Compression.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/ZipArchive.h"

#include <cstdint>

namespace Halvern::Fuzz {

namespace {

using namespace PluginKit;

constexpr std::uint64_t MaxEntry = std::uint64_t(256) << 20;

std::string Number(std::uint64_t value, int size)
{
    std::string bytes;
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(i < 8 ? value >> (8 * i) : 0);
    return bytes;
}

/// What a record says of an entry, from "version needed" on.
struct EntryParts
{
    std::string fields;
    std::string data;
};

/// gzip wraps what ZIP needs: ten bytes, the data, the checksum, the size.
EntryParts Packed(const PackedEntry& entry)
{
    const std::string gzip = Compressed(Compression::Gzip, entry.content);
    EntryParts parts;
    parts.data = entry.isDeflated ? gzip.substr(10, gzip.size() - 18) : std::string(entry.content);
    parts.fields = Number(20, 2) + Number(0x800, 2) + Number(entry.isDeflated ? 8 : 0, 2) +
                   Number(0, 4) + gzip.substr(gzip.size() - 8, 4) +
                   Number(static_cast<std::uint32_t>(parts.data.size()), 4) +
                   Number(static_cast<std::uint32_t>(entry.content.size()), 4) +
                   Number(static_cast<std::uint32_t>(entry.name.size()), 2) + Number(0, 2);
    return parts;
}

std::string EntryText(const ZipArchive& archive, const std::string& name)
{
    try {
        return archive.Read(name, MaxEntry).value_or("(none)");
    } catch (const FormatError& error) {
        return error.what();
    }
}

} // namespace

std::string UnpackedContent(const std::filesystem::path& file)
{
    try {
        const InputFile input(file);
        return ReadDecompressed(input, DecompressedLimit(input.Size()));
    } catch (const FormatError&) {
        return ReadFile(file);
    }
}

std::string ZipOf(const std::vector<PackedEntry>& entries)
{
    std::string archive;
    std::string directory;
    for (const PackedEntry& entry : entries) {
        const EntryParts parts = Packed(entry);
        directory += "PK\x01\x02" + Number(20, 2) + parts.fields + Number(0, 10) +
                     Number(static_cast<std::uint32_t>(archive.size()), 4) + entry.name;
        archive += "PK\x03\x04" + parts.fields + entry.name + parts.data;
    }
    const auto count = static_cast<std::uint32_t>(entries.size());
    return archive + directory + "PK\x05\x06" + Number(0, 4) + Number(count, 2) + Number(count, 2) +
           Number(static_cast<std::uint32_t>(directory.size()), 4) +
           Number(static_cast<std::uint32_t>(archive.size()), 4) + Number(0, 2);
}

std::string ZipContent(const std::filesystem::path& file)
{
    try {
        InputFile input(file);
        const ZipArchive archive(input);
        std::string text;
        for (const std::string& name : archive.Names())
            text += name + '\n' + EntryText(archive, name) + '\n';
        return text;
    } catch (const FormatError&) {
        return ReadFile(file);
    }
}

} // namespace Halvern::Fuzz
