// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/ZipArchive.h"

#include "pluginkit/FormatError.h"
#include "kit/ZipSource.h"

#include <zip.h>

namespace Halvern::PluginKit {

namespace {

struct EntryCloser
{
    void operator()(zip_file_t* entry) const noexcept { zip_fclose(entry); }
};
using OpenEntry = std::unique_ptr<zip_file_t, EntryCloser>;

[[noreturn]] void Fail(const ZipEntry& entry, zip_error_t* error)
{
    throw FormatError(entry.name + " cannot be read: " + zip_error_strerror(error), entry.offset);
}

void CheckReadable(const ZipEntry& entry, std::uint64_t maxSize)
{
    constexpr std::uint16_t encrypted = 0x0001;
    if ((entry.flags & encrypted) != 0)
        throw FormatError(entry.name + " is encrypted", entry.offset);
    if (entry.method != ZIP_CM_STORE && entry.method != ZIP_CM_DEFLATE)
        throw FormatError(entry.name + " is compressed in an unusual way, number " +
                              std::to_string(entry.method),
                          entry.offset);
    if (entry.size > maxSize)
        throw FormatError(entry.name + " has " + std::to_string(entry.size) + " bytes, more than " +
                              std::to_string(maxSize),
                          entry.offset);
}

} // namespace

void ZipArchive::Closer::operator()(zip* archive) const noexcept
{
    zip_discard(archive);
}

ZipArchive::ZipArchive(InputFile& file) : m_file(file), m_directory(file), m_zip(OpenZip(file))
{
    if (zip_get_num_entries(m_zip.get(), 0) != zip_int64_t(m_directory.Entries().size()))
        throw FormatError("the archive's directory is ambiguous");
}

ZipArchive::~ZipArchive() = default;

std::optional<std::string> ZipArchive::Read(const std::string& name, std::uint64_t maxSize) const
{
    const ZipEntry* entry = m_directory.Find(name);
    if (!entry)
        return std::nullopt;
    CheckReadable(*entry, maxSize);
    const auto index = static_cast<zip_uint64_t>(entry - m_directory.Entries().data());
    const OpenEntry open(zip_fopen_index(m_zip.get(), index, 0));
    if (!open)
        Fail(*entry, zip_get_error(m_zip.get()));
    // One byte more: the end has to be where it is said to be, and only there is the checksum
    // known.
    std::string content(std::size_t(entry->size) + 1, '\0');
    std::size_t got = 0;
    while (got < content.size()) {
        const zip_int64_t part = zip_fread(open.get(), content.data() + got, content.size() - got);
        if (part < 0)
            Fail(*entry, zip_file_get_error(open.get()));
        if (part == 0)
            break;
        got += static_cast<std::size_t>(part);
    }
    if (got != entry->size)
        throw FormatError(name + " does not have the size that the directory says", entry->offset);
    content.resize(got);
    return content;
}

} // namespace Halvern::PluginKit
