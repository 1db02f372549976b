// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kit/ZipDirectory.h"

#include <map>
#include <memory>
#include <optional>
#include <string>

struct zip;

namespace Halvern::PluginKit {

/// A ZIP archive whose entries are read, and replaced without a trace on the others.
class ZipArchive
{
public:
    /// `file` must live as long as the archive. Throws FormatError unless every record agrees with
    /// the others.
    explicit ZipArchive(InputFile& file);
    ~ZipArchive();
    ZipArchive(const ZipArchive&) = delete;
    ZipArchive& operator=(const ZipArchive&) = delete;

    const ZipDirectory& Directory() const { return m_directory; }

    /// What the entry holds, or nothing when the archive has no such entry. Throws when it is
    /// larger than `maxSize`, before memory is taken for it, and when its checksum is wrong.
    std::optional<std::string> Read(const std::string& name, std::uint64_t maxSize) const;

    /// Puts an archive with new contents for some entries in the place of the file. All other bytes
    /// stay, and so do the order, times, attributes and comments of these entries; sizes,
    /// checksums and offsets follow. They get no descriptors behind their data, which not every
    /// reader of streams can cope with.
    ///
    /// Requires: every name is in the archive.
    void Replace(const std::map<std::string, std::string>& contents);

private:
    InputFile& m_file;
    ZipDirectory m_directory;
    struct Closer
    {
        void operator()(zip* archive) const noexcept;
    };
    std::unique_ptr<zip, Closer> m_zip;
};

} // namespace Halvern::PluginKit
