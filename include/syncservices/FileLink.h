// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/Export.h"

#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::SyncServices {

/// One reference inside a file.
struct FileLink
{
    /// Sync database id of the referenced file's item; -1 while unresolved.
    int ItemId = -1;
    /// The plug-in's identifier of the reference, opaque.
    QString RefId;
    /// The referenced file's path as stored in the file, relative (to the folder of the file that
    /// holds the link) or absolute.
    QString Path;
    /// Cloud id of the referenced file's item; empty while unresolved.
    QString CloudItemId;

    /// True when all members are equal; paths letter by letter.
    bool operator==(const FileLink&) const = default;
};

} // namespace Halvern::SyncServices
