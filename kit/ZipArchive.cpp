// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/ZipArchive.h"

#include "kit/ZipArchiveState.h"
#include "kit/ZipCodec.h"
#include "pluginkit/FormatError.h"

namespace Halvern::PluginKit {

namespace {

void CheckReadable(const ZipEntry& entry, std::uint64_t maxSize)
{
    constexpr std::uint16_t encrypted = 0x0001;
    if ((entry.flags & encrypted) != 0)
        throw FormatError(entry.name + " is encrypted", entry.offset);
    if (entry.method != ZipStored && entry.method != ZipDeflated)
        throw FormatError(entry.name + " is compressed in an unusual way, number " +
                              std::to_string(entry.method),
                          entry.offset);
    if (entry.size > maxSize)
        throw FormatError(entry.name + " has " + std::to_string(entry.size) + " bytes, more than " +
                              std::to_string(maxSize),
                          entry.offset);
}

} // namespace

ZipArchive::ZipArchive(InputFile& file) : m_state(new State{file, ZipDirectory(file)}) {}

ZipArchive::~ZipArchive() = default;

std::vector<std::string> ZipArchive::Names() const
{
    std::vector<std::string> names;
    for (const ZipEntry& entry : m_state->directory.Entries())
        names.push_back(entry.name);
    return names;
}

std::optional<std::string> ZipArchive::Read(const std::string& name, std::uint64_t maxSize) const
{
    const ZipEntry* entry = m_state->directory.Find(name);
    if (!entry)
        return std::nullopt;
    CheckReadable(*entry, maxSize);
    std::string content = Unpack(m_state->file, *entry);
    if (content.size() != entry->size)
        throw FormatError(name + " does not have the size that the directory says", entry->offset);
    if (ZipChecksum(content) != entry->checksum)
        throw FormatError(name + " cannot be read: CRC error", entry->offset);
    return content;
}

} // namespace Halvern::PluginKit
