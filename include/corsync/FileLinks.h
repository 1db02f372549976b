// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/CancelToken.h"
#include "corsync/Export.h"
#include "corsync/Session.h"

#include "filelink/Problem.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>

namespace Halvern::Jobs {

enum class LinkState
{
    /// The file that it leads to exists.
    Found,
    Missing,
    /// It leads to no file of this machine.
    Url,
};

/// A link inside a file.
struct StoredLink
{
    /// As it stands in the file.
    QString text;
    /// The absolute path that it leads to; of a URL the URL, as it stands.
    QString file;
    LinkState state = LinkState::Found;
};

struct LinksOfFile
{
    QString file;
    /// In the order in which they stand in the file.
    QList<StoredLink> links;
    /// What went wrong with reading it; empty also when no plug-in reads such files.
    QList<FileLink::Problem> problems;
    /// False when no plug-in reads files of this type: whether it holds links is not known.
    bool isKnownFormat = true;
};

/// Reads the links inside each file; nothing is changed anywhere. Links come letter by letter as
/// they stand, whether or not they lead anywhere. Each result is handed to `take` before the next
/// file is read. False when a cancel left out files that were not read until then. Throws JobError
/// before it reads the first: SourceMissing, SourceRefused for a folder; and what `take` throws.
CORSYNCJOBS_EXPORT bool ReadLinks(const Session& session, const QStringList& files,
                                  const std::function<void(const LinksOfFile&)>& take,
                                  const CancelToken* cancel = nullptr);
/// The same, with all results at the end.
CORSYNCJOBS_EXPORT QList<LinksOfFile> ReadLinks(const Session& session, const QStringList& files,
                                                const CancelToken* cancel = nullptr);

} // namespace Halvern::Jobs
