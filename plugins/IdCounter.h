// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace Halvern::Formats {

/// Numbers the references that would have equal ids: "image/href", "image/href#2".
class IdCounter
{
public:
    std::string Next(const std::string& id)
    {
        const std::size_t count = ++m_counts[id];
        return count == 1 ? id : id + '#' + std::to_string(count);
    }

    /// How many ids it knows.
    std::size_t Size() const { return m_counts.size(); }

private:
    std::map<std::string, std::size_t> m_counts;
};

} // namespace Halvern::Formats
