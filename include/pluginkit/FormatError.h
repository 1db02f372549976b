// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace Halvern::PluginKit {

/// Why a file could not be read or rewritten. Thrown inside a plug-in only: RunGuarded turns it
/// into a log line and a false result before it could reach the host.
class FormatError : public std::runtime_error
{
public:
    explicit FormatError(const std::string& reason) : std::runtime_error(reason) {}
    /// `position` is a byte offset in the file.
    FormatError(const std::string& reason, std::uint64_t position)
        : std::runtime_error(reason), m_position(position)
    {}

    std::optional<std::uint64_t> Position() const { return m_position; }

private:
    std::optional<std::uint64_t> m_position;
};

/// Another program has the file open: a scanner or an indexer will be done with it soon.
class HeldError : public FormatError
{
public:
    using FormatError::FormatError;
};

} // namespace Halvern::PluginKit
