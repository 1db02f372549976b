// SPDX-License-Identifier: Apache-2.0

#include "FolderCleanup.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <utility>

namespace Halvern::Jobs {

FolderCleanup::FolderCleanup(const QString& path)
{
    for (QString folder = path; !folder.isEmpty() && !QFileInfo::exists(folder);
         folder = QFileInfo(folder).path())
        m_missing.append(folder);
}

FolderCleanup::~FolderCleanup()
{
    for (const QString& folder : std::as_const(m_missing))
        QDir().rmdir(folder);
}

} // namespace Halvern::Jobs
