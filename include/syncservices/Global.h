// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/Export.h"

namespace Halvern::SyncServices {

/// Enumerations shared by the whole product.
class Global
{
public:
    /// How a job treats its files; a bit set. DO NOT CHANGE THESE VALUES: hosts store them.
    enum CopyOption : quint32
    {
        NoCopyOption = 0,
        /// Delete each selected source after copying it.
        MoveFiles = 0x00001,
        /// Copy only what the selection links to.
        LinkedFilesOnly = 0x00002,
        /// Write every selected file to the sync database, copied or not.
        UpdateSelectedInDatabase = 0x00004,
        /// A linked file whose target is taken: use the existing target.
        KeepExistingLinkedFiles = 0x00400,
        /// A linked file whose target is taken: copy under a new name (unless the bit above is
        /// set).
        RenameLinkedFiles = 0x00800,
        /// The same two for selected files.
        KeepExistingSelectedFiles = 0x01000,
        RenameSelectedFiles = 0x02000,
        /// Do not follow the links of linked files; an existing target folder is used as it is.
        DirectLinksOnly = 0x04000,
        /// Record selected files in the sync database as if they had been copied.
        RecordSelectedInDatabase = 0x08000,
        /// The job is run by the sync services: only selected files get target links and items.
        ServicesCopyOption = 0x10000,
    };

    /// Form of a path in the cloud cache folder.
    enum CloudCacheFolderPathType
    {
        /// Absolute local path below the configured cloud cache folder.
        LocalPath = 0,
    };
};

SYNCSERVICES_BIT_OPERATORS(Global::CopyOption)

} // namespace Halvern::SyncServices
