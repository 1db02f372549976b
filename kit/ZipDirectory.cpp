// SPDX-License-Identifier: Apache-2.0

#include "kit/ZipDirectory.h"

#include "pluginkit/FormatError.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace Halvern::PluginKit {

namespace {

constexpr std::size_t LocalHeaderSize = 30;
constexpr std::size_t RecordSize = 46;
constexpr std::size_t TailSize = 22;
constexpr std::string_view LocalMagic("PK\3\4", 4);
constexpr std::string_view RecordMagic("PK\1\2", 4);
constexpr std::string_view TailMagic("PK\5\6", 4);
/// Stands where the number is in a 64-bit record instead.
constexpr std::uint32_t Elsewhere = 0xFFFFFFFF;
constexpr std::uint64_t MaxRecords = std::uint64_t(64) << 20;

bool StartsWith(std::string_view bytes, std::size_t at, std::string_view magic)
{
    return bytes.size() - at >= magic.size() && bytes.substr(at, magic.size()) == magic;
}

/// A comment may hold what looks like an end record: the right one ends with the file and has the
/// directory right before it.
bool IsTail(std::string_view bytes, std::uint64_t position)
{
    if (bytes.size() < TailSize || !bytes.starts_with(TailMagic))
        return false;
    if (bytes.size() != TailSize + ZipShort(bytes, 20))
        return false;
    return std::uint64_t(ZipLong(bytes, 12)) + ZipLong(bytes, 16) == position;
}

} // namespace

std::uint16_t ZipShort(std::string_view bytes, std::size_t at)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[at + i]); };
    return static_cast<std::uint16_t>(byte(0) | byte(1) << 8);
}

std::uint32_t ZipLong(std::string_view bytes, std::size_t at)
{
    return ZipShort(bytes, at) | std::uint32_t(ZipShort(bytes, at + 2)) << 16;
}

void SetZipShort(std::string& bytes, std::size_t at, std::uint16_t number)
{
    bytes[at] = static_cast<char>(number & 0xFFU);
    bytes[at + 1] = static_cast<char>(number >> 8);
}

void SetZipLong(std::string& bytes, std::size_t at, std::uint32_t number)
{
    SetZipShort(bytes, at, static_cast<std::uint16_t>(number & 0xFFFFU));
    SetZipShort(bytes, at + 2, static_cast<std::uint16_t>(number >> 16));
}

std::string ReadLocalHeader(const InputFile& file, const ZipEntry& entry)
{
    std::string header = file.Read(entry.offset, LocalHeaderSize);
    if (!header.starts_with(LocalMagic))
        throw FormatError("no entry begins where the directory says so", entry.offset);
    const std::size_t nameSize = ZipShort(header, 26);
    header = file.Read(entry.offset, LocalHeaderSize + nameSize + ZipShort(header, 28));
    if (std::string_view(header).substr(LocalHeaderSize, nameSize) != entry.name)
        throw FormatError("the directory has another name for the entry", entry.offset);
    return header;
}

ZipDirectory::ZipDirectory(const InputFile& file)
{
    ReadTail(file);
    ReadRecords(file);
    SortNames();
    FindPlaces(file);
}

void ZipDirectory::ReadTail(const InputFile& file)
{
    const std::uint64_t longest = TailSize + std::numeric_limits<std::uint16_t>::max();
    const std::uint64_t size = std::min(file.Size(), longest);
    const std::string end = file.Read(file.Size() - size, size);
    for (std::size_t at = end.size(); m_tail.empty() && at-- > 0;) {
        const std::uint64_t position = file.Size() - (end.size() - at);
        if (IsTail(std::string_view(end).substr(at), position))
            m_tail = end.substr(at);
    }
    if (m_tail.empty())
        throw FormatError("the file does not end as a ZIP archive does", file.Size());
    const std::uint64_t position = file.Size() - m_tail.size();
    if (ZipShort(m_tail, 4) != 0 || ZipShort(m_tail, 6) != 0)
        throw FormatError("the archive goes on in another file", position);
    m_announced = ZipShort(m_tail, 10);
    if (m_announced != ZipShort(m_tail, 8))
        throw FormatError("two different numbers of entries", position);
    m_recordsOffset = ZipLong(m_tail, 16);
}

void ZipDirectory::ReadRecords(const InputFile& file)
{
    const std::uint64_t size = ZipLong(m_tail, 12);
    if (size > MaxRecords)
        throw FormatError("a directory of more than 64 MiB", m_recordsOffset);
    if (m_announced * RecordSize > size)
        throw FormatError(std::to_string(m_announced) + " entries in a directory of " +
                              std::to_string(size) + " bytes",
                          m_recordsOffset);
    m_records = file.Read(m_recordsOffset, size);
    m_entries.reserve(m_announced);
    std::size_t at = 0;
    while (at < m_records.size())
        at = AddEntry(at);
    if (m_entries.size() != m_announced)
        throw FormatError("a directory of " + std::to_string(m_entries.size()) + " entries, not " +
                              std::to_string(m_announced),
                          m_recordsOffset);
}

/// Returns where the next record begins.
std::size_t ZipDirectory::AddEntry(std::size_t at)
{
    const std::uint64_t position = m_recordsOffset + at;
    const std::size_t left = m_records.size() - at;
    if (left < RecordSize || !StartsWith(m_records, at, RecordMagic))
        throw FormatError("the directory holds something else than records", position);
    const std::size_t nameSize = ZipShort(m_records, at + 28);
    const std::size_t recordSize =
        RecordSize + nameSize + ZipShort(m_records, at + 30) + ZipShort(m_records, at + 32);
    if (recordSize > left)
        throw FormatError("a record reaches beyond the directory", position);
    ZipEntry& entry = m_entries.emplace_back();
    entry.name = m_records.substr(at + RecordSize, nameSize);
    entry.flags = ZipShort(m_records, at + 8);
    entry.method = ZipShort(m_records, at + 10);
    entry.checksum = ZipLong(m_records, at + 16);
    entry.compressedSize = ZipLong(m_records, at + 20);
    entry.size = ZipLong(m_records, at + 24);
    entry.offset = ZipLong(m_records, at + 42);
    entry.recordOffset = at;
    if (entry.size == Elsewhere || entry.compressedSize == Elsewhere || entry.offset == Elsewhere)
        throw FormatError("an entry with 64-bit sizes, which are not supported", position);
    return at + recordSize;
}

void ZipDirectory::SortNames()
{
    const auto name = [&](std::size_t i) -> const std::string& { return m_entries[i].name; };
    m_byName.resize(m_entries.size());
    std::iota(m_byName.begin(), m_byName.end(), std::size_t(0));
    std::sort(m_byName.begin(), m_byName.end(),
              [&](std::size_t a, std::size_t b) { return name(a) < name(b); });
    const auto twin =
        std::adjacent_find(m_byName.begin(), m_byName.end(),
                           [&](std::size_t a, std::size_t b) { return name(a) == name(b); });
    if (twin != m_byName.end())
        throw FormatError("two entries are named " + name(*twin), m_recordsOffset);
}

/// How many bytes a descriptor takes: its signature may be left out.
std::uint64_t ZipDirectory::DescriptorSize(const InputFile& file, const ZipEntry& entry) const
{
    constexpr std::uint64_t bare = 12;
    constexpr std::string_view magic("PK\7\10", 4);
    if (!entry.HasDescriptor())
        return 0;
    const std::uint64_t at = entry.dataOffset + entry.compressedSize;
    if (at + bare > m_recordsOffset)
        throw FormatError("an entry without the descriptor that it announces", entry.offset);
    return file.Read(at, magic.size()) == magic ? bare + magic.size() : bare;
}

/// Readers of streams believe the local header, others the directory. Versions and times may
/// differ: some programs write them so.
void ZipDirectory::CheckAgreement(std::string_view localHeader, const ZipEntry& entry) const
{
    constexpr std::size_t checksumAndSizes = 12;
    const std::string_view record = std::string_view(m_records).substr(entry.recordOffset);
    const bool sameDescriptor = ((ZipShort(localHeader, 6) ^ entry.flags) & 0x0008U) == 0;
    const bool sameMethod = ZipShort(localHeader, 8) == entry.method;
    const bool sameSizes = entry.HasDescriptor() || localHeader.substr(14, checksumAndSizes) ==
                                                        record.substr(16, checksumAndSizes);
    if (!sameDescriptor || !sameMethod || !sameSizes)
        throw FormatError("the directory has another description of " + entry.name, entry.offset);
}

void ZipDirectory::FindPlaces(const InputFile& file)
{
    std::vector<ZipEntry*> inOrder;
    for (ZipEntry& entry : m_entries)
        inOrder.push_back(&entry);
    std::sort(inOrder.begin(), inOrder.end(),
              [](const ZipEntry* a, const ZipEntry* b) { return a->offset < b->offset; });
    std::uint64_t free = 0;
    for (ZipEntry* entry : inOrder) {
        if (entry->offset < free)
            throw FormatError("two entries overlap", entry->offset);
        if (entry->offset >= m_recordsOffset)
            throw FormatError("an entry lies after the directory", entry->offset);
        const std::string header = ReadLocalHeader(file, *entry);
        CheckAgreement(header, *entry);
        entry->dataOffset = entry->offset + header.size();
        free = entry->dataOffset + entry->compressedSize + DescriptorSize(file, *entry);
        if (free > m_recordsOffset)
            throw FormatError("an entry reaches into the directory", entry->offset);
        entry->end = free;
    }
}

const ZipEntry* ZipDirectory::Find(std::string_view name) const
{
    const auto found = std::lower_bound(
        m_byName.begin(), m_byName.end(), name,
        [&](std::size_t i, std::string_view wanted) { return m_entries[i].name < wanted; });
    if (found == m_byName.end() || m_entries[*found].name != name)
        return nullptr;
    return &m_entries[*found];
}

} // namespace Halvern::PluginKit
