// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Jobs {

/// Removes, when it ends, the empty folders down to `path` that were missing when it began.
class FolderCleanup
{
public:
    explicit FolderCleanup(const QString& path);
    ~FolderCleanup();
    FolderCleanup(const FolderCleanup&) = delete;
    FolderCleanup& operator=(const FolderCleanup&) = delete;

private:
    /// Deepest first.
    QStringList m_missing;
};

} // namespace Halvern::Jobs
