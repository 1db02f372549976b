// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "pluginkit/InputFile.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Halvern::PluginKit {

/// A ZIP archive whose entries are read, and replaced without a trace on the others. Entries are
/// stored or deflated; archives that go on in another file, need the 64-bit records or hold two
/// entries of one name are refused. Failures throw FormatError. One object belongs to one thread at
/// a time.
///
/// Beside what it is asked for it holds the archive's directory in memory, of 64 MiB at most.
///
/// Needs Corsync::PluginKitZip, and with it zlib.
class ZipArchive
{
public:
    /// Reads the directory; throws unless every record agrees with the entry that it describes, and
    /// no two entries overlap. `file` must live as long as the archive.
    explicit ZipArchive(InputFile& file);
    ~ZipArchive();
    ZipArchive(const ZipArchive&) = delete;
    ZipArchive& operator=(const ZipArchive&) = delete;

    /// The entries in the order of the directory, folders included. Bytes as the archive has them,
    /// which need not be UTF-8.
    std::vector<std::string> Names() const;

    /// What the entry holds, or nothing when the archive has no such entry. Throws when it is
    /// larger than `maxSize` bytes, before memory is taken for it, and when its checksum is wrong.
    std::optional<std::string> Read(const std::string& name, std::uint64_t maxSize) const;

    /// Puts an archive with new contents for some entries in the place of the file, and closes the
    /// file; see ReplacementFile. All other bytes stay, and so do the order, times, attributes and
    /// comments of these entries; sizes, checksums and offsets follow. They get no descriptors
    /// after their data, which not every reader of streams can cope with. Called once, last: the
    /// archive that this object knows is gone.
    ///
    /// A name that is not in the archive throws std::invalid_argument; then, and when anything
    /// else fails, the file is as it was.
    void Replace(const std::map<std::string, std::string>& contents);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace Halvern::PluginKit
