// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileResult.h"

#include <filesystem>
#include <vector>

namespace Halvern::Base {

/// The names on a way down from a folder, from the top. Fails with FileProblem::LeadsOutside for a
/// path that is not relative or goes up, and with NameRefused for a name that no file of this
/// system can have. The disk is not asked. Only a lack of memory throws.
///
///     "a/./b//c.prt" gives a, b and c.prt; "" and "." give none; "a/../b" and "/a" fail
FileResult NamesOnWay(const std::filesystem::path& relative,
                      std::vector<std::filesystem::path>& names);

} // namespace Halvern::Base
