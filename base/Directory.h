// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileResult.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace Halvern::Base {

/// Gives `visit` the names in a folder as UTF-8, in no order, hidden ones too, until it returns
/// false. A folder that cannot be read has none. On Windows a name with a lone surrogate is left
/// out: no text can name that file. Throws what `visit` throws.
void VisitNames(const std::filesystem::path& folder,
                const std::function<bool(const std::string& name)>& visit);

/// The name of an entry as Windows lists it. Nothing for the folder itself, the one above it, and a
/// name with a lone surrogate.
std::optional<std::string> NameOfEntry(std::u16string_view name);

/// Makes a folder and those above it. Success when it is there already, also because another
/// process made it meanwhile; a file of that name is a failure.
FileResult MakeFolders(const std::filesystem::path& folder);

/// Windows: sets the hidden attribute of what exists. POSIX: nothing, the name says it already.
void Hide(const std::filesystem::path& path);

} // namespace Halvern::Base
