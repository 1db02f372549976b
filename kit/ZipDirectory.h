// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "pluginkit/InputFile.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::PluginKit {

/// One file inside a ZIP archive, as the central directory describes it.
struct ZipEntry
{
    std::string name;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t checksum = 0;
    std::uint32_t compressedSize = 0;
    std::uint32_t size = 0;
    /// Of the local header, in the file.
    std::uint64_t offset = 0;
    std::uint64_t dataOffset = 0;
    /// After the data and, when there is one, the descriptor.
    std::uint64_t end = 0;
    /// Of the record, inside the central directory.
    std::size_t recordOffset = 0;

    /// The sizes stand after the data, not in the local header.
    bool HasDescriptor() const { return (flags & 0x0008U) != 0; }
};

/// The records of a ZIP archive with their places in the file, checked before anything is believed:
/// every entry lies inside the file, no two overlap, no two have one name.
///
/// Archives that go on in another file or need the 64-bit records are refused.
class ZipDirectory
{
public:
    explicit ZipDirectory(const InputFile& file);

    /// In the order of the central directory.
    const std::vector<ZipEntry>& Entries() const { return m_entries; }
    /// Null when there is none.
    const ZipEntry* Find(std::string_view name) const;

    /// The bytes of the central directory.
    const std::string& Records() const { return m_records; }
    std::uint64_t RecordsOffset() const { return m_recordsOffset; }
    /// The bytes after it: the end record and the archive's comment.
    const std::string& Tail() const { return m_tail; }

private:
    void ReadTail(const InputFile& file);
    void ReadRecords(const InputFile& file);
    std::size_t AddEntry(std::size_t at);
    void SortNames();
    void CheckAgreement(std::string_view localHeader, const ZipEntry& entry) const;
    std::uint64_t DescriptorSize(const InputFile& file, const ZipEntry& entry) const;
    void FindPlaces(const InputFile& file);

    std::vector<ZipEntry> m_entries;
    /// Places in m_entries.
    std::vector<std::size_t> m_byName;
    std::string m_records;
    std::uint64_t m_recordsOffset = 0;
    std::string m_tail;
    std::size_t m_announced = 0;
};

/// Numbers as ZIP stores them.
std::uint16_t ZipShort(std::string_view bytes, std::size_t at);
std::uint32_t ZipLong(std::string_view bytes, std::size_t at);
void SetZipShort(std::string& bytes, std::size_t at, std::uint16_t number);
void SetZipLong(std::string& bytes, std::size_t at, std::uint32_t number);

/// The local header at `offset`, with name and extra field. Throws when it is not the one of an
/// entry of that name.
std::string ReadLocalHeader(const InputFile& file, const ZipEntry& entry);

} // namespace Halvern::PluginKit
