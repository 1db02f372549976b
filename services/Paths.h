// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/ServicesSettings.h"

#include <QtCore/QString>

#include <optional>

namespace Halvern::SyncServices {

/// Not a local file: a ":" at index 2 or later, as in "https://host/x". A path that begins with "/"
/// is local whatever else it holds.
bool IsUrlLike(const QString& path);

/// A path cleaned, and folded so that letter case does not count.
QString PathKey(const QString& path);

/// What tells one file from another on this system: the cleaned path, on Windows folded.
QString ExactPathKey(const QString& path);

/// The part of `path` below `folder`, empty for the folder itself; nothing for a path elsewhere.
/// Both are cleaned; letter case does not count.
std::optional<QString> PathBelow(const QString& folder, const QString& path);

/// `below` appended to a cleaned folder; the folder itself when it is empty.
QString JoinPath(const QString& folder, const QString& below);

/// The folder above a cleaned path; empty when there is none.
QString ParentPath(const QString& path);

/// What is wrong with a path of the settings that leads to different places, depending on the
/// current drive. Empty when none does.
QString PathFault(const ServicesSettings& settings);

/// The path with every symbolic link resolved. What does not exist yet is kept as it is below the
/// nearest folder that exists.
QString CanonicalPath(const QString& cleanedPath);

} // namespace Halvern::SyncServices
