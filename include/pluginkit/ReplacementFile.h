// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "pluginkit/InputFile.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace Halvern::PluginKit {

/// Writes the next content of a file beside it and puts it in the file's place in one step:
///
///     ReplacementFile replacement(source);
///     replacement.Write(head);
///     replacement.CopyFromSource(offset, size);
///     replacement.Commit();
///
/// Whoever reads the file meets the old content or the new one, never a mixture, after a power cut
/// too. When anything fails (FormatError) or Commit is never reached, the temporary file goes and
/// the original is as it was. Permissions are kept; a symbolic link stays and its target is
/// replaced.
class ReplacementFile
{
public:
    /// `source` is the file to be replaced, as it was read. It must live until Commit.
    explicit ReplacementFile(InputFile& source);
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    void Write(std::string_view bytes);
    /// Copies through a buffer of CopyBufferSize bytes.
    void CopyFromSource(std::uint64_t offset, std::uint64_t size);
    /// Closes the source, since Windows replaces no open file. Throws when the file is no longer
    /// what was read: someone else's change would be lost. A program that has the file open gets
    /// two seconds to finish.
    void Commit();

    static constexpr std::size_t CopyBufferSize = std::size_t(256) * 1024;

private:
    struct State;

    InputFile& m_source;
    std::unique_ptr<State> m_state;
};

} // namespace Halvern::PluginKit
