// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "CopyIndex.h"
#include "JobFile.h"
#include "Targets.h"

#include <QtCore/QHash>
#include <QtCore/QSet>

namespace Halvern::Jobs {

/// Finds the copies of a project that nothing asks for any more:
///
///   - the source lay in the selection and is gone,
///   - only links led to it, and the files that held them link it no more, or are gone themselves,
///   - its source has got another copy beside it, which this project links instead.
///
/// A copy that another one links is none of the latter two, whichever project brought that: what a
/// copy links is known from its record where this job has not read it. The copies of a project form
/// chains and rings: what only orphans link is one, too, but what somebody has edited keeps what it
/// links.
class Orphans
{
public:
    /// Requires: it is settled what happens to each file, and links are planned. All of them
    /// outlive the object.
    Orphans(const JobState& job, const CopyIndex& copies);

    QList<Orphan> Find();
    /// After Find: the targets of copies that files of this job link no more.
    QStringList Lost() const;

private:
    enum class Why
    {
        SourceGone,
        LinkedNoMore,
        Superseded,
    };

    bool IsOfThisProject(const CopyRecord& record) const;
    bool IsSourceGone(const CopyRecord& record) const;
    bool IsSuperseded(const CopyRecord& record) const;
    bool MayHaveLostItsLinks(const CopyRecord& record) const;
    bool StandsUnclaimed(const CopyRecord& record) const;
    bool IsAsRecorded(const CopyRecord& record) const;
    QStringList LinksNow(const JobFile& file) const;
    void TakeCandidates();
    void TakeLost(const QStringList& targets);
    void FollowLost();
    void MarkLinked();
    void Mark(QStringList targets);

    const JobState& m_job;
    const CopyIndex& m_copies;
    const TargetKeys m_keys;
    QSet<QString> m_sources;
    /// What stands or will stand at the targets of the job's own files.
    QSet<QString> m_claimed;
    QHash<const CopyRecord*, Why> m_candidates;
    QList<const CopyRecord*> m_toFollow;
    QSet<QString> m_linked;
};

/// The origin that the record of a file is to have.
CopyOrigin OriginOf(const JobFile& file, const JobState& job);

} // namespace Halvern::Jobs
