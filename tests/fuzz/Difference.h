// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string_view>

namespace Halvern::Fuzz {

/// Whether one text becomes the other by taking out and putting in at most `limit` bytes in all,
/// wherever they stand.
bool DifferByAtMost(std::string_view a, std::string_view b, std::size_t limit);

} // namespace Halvern::Fuzz
