// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExcludeRules.h"

#include "corsync/Plan.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>

namespace Halvern::Jobs {

/// A file or a folder to be imported.
struct SelectedEntry
{
    QString source;
    /// The path below the target of the import: begins with the name of the source that was given.
    QString name;
    bool isFolder = false;
    /// Lies in a folder that was given, and was not given itself.
    bool isNested = false;
    bool isHidden = false;
};

struct SelectionListing
{
    /// A folder, then its files, then each folder in it followed by what it holds in turn; names
    /// without regard to letter case.
    QList<SelectedEntry> entries;
    QList<LeftOutItem> leftOut;
    /// False when it was cancelled: more may be there.
    bool isComplete = true;
};

/// Lists files and folders that were given (absolute, cleaned, none of them in another), and what
/// the folders hold. Symbolic links to files count as files, links to folders are not followed.
///
/// `rules` hold for what lies in folders; what was given itself is taken in any case, also what is
/// `inside` such a folder, where it lies. When a file
/// .corsyncignore cannot be read, or holds what is no pattern, nothing of its folder is taken:
/// nobody knows what was to stay out.
///
/// `isCancelled` is asked before each entry. Needs memory for the entries, and little stack however
/// deep the folders are.
SelectionListing WalkSelection(const QStringList& sources, const ExcludeRules& rules,
                               const std::function<bool()>& isCancelled,
                               const QStringList& inside = {});

} // namespace Halvern::Jobs
