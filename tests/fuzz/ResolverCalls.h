// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "NewPaths.h"

#include "syncplugin/IFileLinkResolver.h"

#include <filesystem>
#include <optional>

namespace Halvern::Fuzz {

/// The links as a host gets them; nothing when the resolver fails. A failure must have said why,
/// and not in the words of a mistake of its own.
std::optional<Links> ReadLinks(SyncPlugin::IFileLinkResolver& resolver,
                               const std::filesystem::path& file);

/// The same where a failure is a violation.
Links RequireReadable(SyncPlugin::IFileLinkResolver& resolver, const std::filesystem::path& file);

/// True when the resolver says that the links have these paths now.
bool RewriteLinks(SyncPlugin::IFileLinkResolver& resolver, const std::filesystem::path& file,
                  const Paths& paths);

} // namespace Halvern::Fuzz
