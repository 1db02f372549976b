// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ScadReferences.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace Halvern::Formats::OpenScad {

/// The path that a reference names, for a file in `folder`: backslashes are slashes, as on Windows,
/// unless a file is named with them.
std::string PathOf(const Reference& reference, const std::filesystem::path& folder);

/// How a path is written in the place of a reference; FormatError when it cannot be.
std::string Written(const Reference& reference, std::string_view path);

/// Text that is no path, in a form that nobody takes for one: a link of this "path" is reported as
/// missing, with the text that a person has to look at.
std::string Shown(std::string_view expression);

} // namespace Halvern::Formats::OpenScad
