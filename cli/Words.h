// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/ImportJob.h"
#include "corsync/Plugins.h"

#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::Cli {

/// "copied", "not-done" ... DO NOT CHANGE THESE TEXTS: scripts read them in the JSON output. In
/// lines for people a blank stands for the hyphen.
QString NameOf(Jobs::Outcome outcome);
QString WordOf(Jobs::Outcome outcome);
/// "target-taken" ...; the same holds for these, and for "found", "missing" and "url".
QString NameOf(Jobs::ConflictKind kind);
QString NameOf(Jobs::LinkState state);
QString NameOf(Jobs::FindingKind kind);
QString NameOf(Jobs::Remark remark);
QString NameOf(Jobs::SourceStays reason);
/// Followed by a path.
QString SentenceOf(Jobs::FindingKind kind);
/// Why, with what belongs to it; empty when there is nothing to say.
QString TextOf(Jobs::Remark remark, const QString& detail);
/// Why a source stays, and because of which file; empty where a problem says it.
QString TextOf(Jobs::SourceStays reason, const QString& because);
QString WordOf(Jobs::PluginState state);
/// "Copying" ...
QString WordOf(Jobs::Phase phase);

/// One sentence for the user: each text once, and of a plug-in that explained itself only what it
/// said.
QString Sentence(const QList<FileLink::Problem>& problems);
/// Why the result is what it is; empty when there is nothing to explain.
QString ReasonOf(const Jobs::FileResult& result);

} // namespace Halvern::Cli
