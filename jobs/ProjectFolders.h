// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QStringList>

namespace Halvern::Jobs {

/// The folder that holds all of these absolute, cleaned folders; empty when there is none.
QString CommonFolder(const QStringList& folders);

/// The version-controlled folders (Git, Mercurial, Subversion) around these, the nearest of each.
/// Looks into each folder once, however many lie below it.
QStringList VersionedFolders(const QStringList& folders);

} // namespace Halvern::Jobs
