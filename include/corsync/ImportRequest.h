// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Plan.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Jobs {

/// What happens to a file whose target is taken.
enum class CollisionPolicy
{
    /// Nothing is copied; the conflicts are listed.
    Stop,
    /// The file that stands there is used as it is.
    Keep,
    /// The file is copied under a new name.
    Rename,
    /// The file takes the place of the one that stands there.
    Replace,
};

/// What a user wants imported.
struct ImportRequest
{
    /// Files and folders, absolute or relative to the current folder. One that lies in a folder
    /// that is given too is not taken twice, and is taken also when a pattern excludes it there.
    QStringList sources;
    /// A folder, absolute in the cloud cache folder or relative to it. Empty: that folder itself.
    QString target;
    /// For the files of the sources, and for those that are found through links.
    CollisionPolicy selectedCollisions = CollisionPolicy::Stop;
    CollisionPolicy linkedCollisions = CollisionPolicy::Stop;
    /// For files whose source and copy both changed since the last import.
    ConflictAnswer onConflict = ConflictAnswer::Stop;
    /// Delete each source file once its copy, and everything that it links, is in order, and no
    /// source links it that stays. What it links to is only copied. Sources that are gone because
    /// an earlier move brought them to this target are left out.
    bool move = false;
    /// Copy only what the sources link to.
    bool linksOnly = false;
    /// Do not follow the links of linked files.
    bool directLinksOnly = false;
    /// Extensions whose links are followed, such as "gltf", ".gltf" or "*.gltf"; empty: all.
    QStringList fileTypes;
    /// What is not to be imported, in the notation of .gitignore files; beside the built-in
    /// patterns and the files .corsyncignore in the sources. One that can match nothing is refused.
    QStringList exclude;
    /// When not empty, linked files come along only from these folders and the selection; what the
    /// boundary refuses otherwise may come from here, too.
    QStringList within;
    /// Compare content, not times.
    bool checksum = false;
    /// Copy also what is unchanged.
    bool force = false;
    /// Read the links of files again, also of those that have not changed.
    bool reread = false;
    /// Bring everything below the target, also what another import has brought to the cloud cache
    /// folder already.
    bool selfContained = false;
    /// Put copies whose source is gone, or that nothing links any more, into the base store.
    bool prune = false;
    /// Wait until copies, what they replace and the records are on the disk: then a power cut after
    /// the job takes nothing back, and one in it leaves each file old or new. A kill does no harm
    /// either way.
    bool flush = true;
    /// The command that a person typed, program and arguments; kept in the journal, and nothing
    /// else depends on it.
    QStringList commandLine;
};

} // namespace Halvern::Jobs
