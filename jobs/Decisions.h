// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "CopyIndex.h"
#include "Groups.h"
#include "JobControl.h"
#include "JobFile.h"
#include "Layout.h"
#include "LinkReader.h"
#include "Targets.h"
#include "ThreeWays.h"

#include <QtCore/QHash>

namespace Halvern::Jobs {

/// What is to be done with a file whose target is taken, by the source of the file; beside the
/// policies of the request.
using Answers = QHash<QString, ConflictAnswer>;

/// Decides what happens to each file of a job whose targets are assigned:
///
///     PlaceByRecords     where an earlier import of the project has put a file it stays, and what
///                        another project has brought unchanged is used
///     Look               how source, copy and record relate
///     Settle             conflicts, other names
///
/// Nothing is written.
class Decisions
{
public:
    Decisions(JobState& job, JobControl& control, LinkReader& reader, Layout& layout,
              const CopyIndex& copies);

    /// False when the job was cancelled.
    bool Make(const Answers& answers);
    const QList<Conflict>& Conflicts() const { return m_conflicts; }

private:
    bool IsCutOff(const QString& target) const;
    void PlaceByRecords();
    bool MayShare(const JobFile& file, const QHash<qsizetype, const CopyRecord*>& shared) const;
    const CopyRecord* CopyElsewhere(const JobFile& file) const;
    void ShareCopies();
    bool PlaceOtherwise();
    QList<qsizetype> FindStuck();
    bool StaysAside(const Groups& groups, qsizetype stuck);
    bool IsStuck(const JobFile& file, Standing standing) const;
    void TakeInPlace(JobFile& file) const;
    bool Look();
    bool IsOfThisProject(const CopyRecord& record) const;
    void Decide(JobFile& file, Standing standing);
    void DecideTaken(JobFile& file, Standing standing);
    void Settle();
    void SettleCopy(JobFile& file);
    void SettleInPlace(JobFile& file);
    bool GiveFreeName(JobFile& file);
    QString FreeName(const QString& path) const;
    QList<ConflictAnswer> AnswersTo(const JobFile& file, ConflictKind kind) const;
    void Clash(const JobFile& file, ConflictKind kind, const JobFile* other = nullptr);
    ConflictAnswer AnswerFor(const JobFile& file, Standing standing) const;
    ConflictAnswer CollisionAnswerFor(const JobFile& file) const;
    void NoteLinks();

    JobState& m_job;
    JobControl& m_control;
    LinkReader& m_reader;
    Layout& m_layout;
    const CopyIndex& m_copies;
    const TargetKeys m_keys;
    const ThreeWays m_threeWays;
    TargetOwners m_owners;
    Answers m_answers;
    /// Of files that must stay beside each other, and that an earlier import has put elsewhere.
    QHash<qsizetype, QString> m_asideTargets;
    QHash<const JobFile*, Standing> m_standings;
    QList<Conflict> m_conflicts;
};

} // namespace Halvern::Jobs
