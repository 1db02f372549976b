// SPDX-License-Identifier: Apache-2.0

#include "kit/ZipArchiveState.h"
#include "kit/ZipCodec.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/ReplacementFile.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <vector>

namespace Halvern::PluginKit {

namespace {

/// An entry's bytes from its local header on, as they are going to be.
struct NewEntry
{
    const ZipEntry* old;
    std::string header;
    std::string data;
    std::uint32_t checksum;
    std::uint32_t size;

    std::int64_t Growth() const
    {
        return static_cast<std::int64_t>(header.size() + data.size()) -
               static_cast<std::int64_t>(old->end - old->offset);
    }
};

std::uint16_t WithoutDescriptor(std::uint16_t flags)
{
    return static_cast<std::uint16_t>(flags & ~0x0008U);
}

NewEntry MakeEntry(const InputFile& file, const ZipEntry& old, const std::string& content)
{
    if (content.size() > std::numeric_limits<std::uint32_t>::max() / 2)
        throw FormatError(old.name + " would grow beyond 2 GiB");
    NewEntry entry{&old, ReadLocalHeader(file, old), {}, ZipChecksum(content), 0};
    entry.data = old.method == ZipDeflated ? Deflate(content) : content;
    entry.size = static_cast<std::uint32_t>(content.size());
    SetZipShort(entry.header, 6, WithoutDescriptor(ZipShort(entry.header, 6)));
    SetZipLong(entry.header, 14, entry.checksum);
    SetZipLong(entry.header, 18, static_cast<std::uint32_t>(entry.data.size()));
    SetZipLong(entry.header, 22, entry.size);
    return entry;
}

/// In the order of the file.
std::vector<NewEntry> MakeEntries(const InputFile& file, const ZipDirectory& directory,
                                  const std::map<std::string, std::string>& contents)
{
    std::vector<NewEntry> entries;
    for (const auto& [name, content] : contents) {
        const ZipEntry* old = directory.Find(name);
        if (!old)
            throw std::invalid_argument("there is no entry " + name + " to be replaced");
        entries.push_back(MakeEntry(file, *old, content));
    }
    std::sort(entries.begin(), entries.end(),
              [](const NewEntry& a, const NewEntry& b) { return a.old->offset < b.old->offset; });
    return entries;
}

/// Where what was at `offset` is going to be.
std::uint32_t Moved(std::uint64_t offset, const std::vector<NewEntry>& entries)
{
    auto moved = static_cast<std::int64_t>(offset);
    for (const NewEntry& entry : entries)
        moved += entry.old->offset < offset ? entry.Growth() : 0;
    // The largest number stands for a 64-bit record.
    if (moved >= std::int64_t(std::numeric_limits<std::uint32_t>::max()))
        throw FormatError("the archive would grow beyond 4 GiB");
    return static_cast<std::uint32_t>(moved);
}

std::string NewRecords(const ZipDirectory& directory, const std::vector<NewEntry>& entries)
{
    std::string records = directory.Records();
    for (const ZipEntry& entry : directory.Entries())
        SetZipLong(records, entry.recordOffset + 42, Moved(entry.offset, entries));
    for (const NewEntry& entry : entries) {
        const std::size_t at = entry.old->recordOffset;
        SetZipShort(records, at + 8, WithoutDescriptor(entry.old->flags));
        SetZipLong(records, at + 16, entry.checksum);
        SetZipLong(records, at + 20, static_cast<std::uint32_t>(entry.data.size()));
        SetZipLong(records, at + 24, entry.size);
    }
    return records;
}

} // namespace

void ZipArchive::Replace(const std::map<std::string, std::string>& contents)
{
    InputFile& file = m_state->file;
    const ZipDirectory& directory = m_state->directory;
    const std::vector<NewEntry> entries = MakeEntries(file, directory, contents);
    const std::string records = NewRecords(directory, entries);
    std::string tail = directory.Tail();
    SetZipLong(tail, 16, Moved(directory.RecordsOffset(), entries));
    ReplacementFile replacement(file);
    std::uint64_t done = 0;
    for (const NewEntry& entry : entries) {
        replacement.CopyFromSource(done, entry.old->offset - done);
        replacement.Write(entry.header);
        replacement.Write(entry.data);
        done = entry.old->end;
    }
    replacement.CopyFromSource(done, directory.RecordsOffset() - done);
    replacement.Write(records);
    replacement.Write(tail);
    replacement.Commit();
}

} // namespace Halvern::PluginKit
