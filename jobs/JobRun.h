// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Boundary.h"
#include "CopyIndex.h"
#include "Decisions.h"
#include "FileMaker.h"
#include "JobControl.h"
#include "JobDatabase.h"
#include "JobFile.h"
#include "Layout.h"
#include "Ledger.h"
#include "LinkReader.h"
#include "Records.h"
#include "Selection.h"

#include "base/RootedFolder.h"
#include "filelink/FileLinkImporter.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

namespace Halvern::Jobs {

class Results;

/// Drives one job from the selection to its records:
///
///     Plan      WalkSelection, Closure, Layout, Decisions, LookAhead: nothing is written
///     Execute   folders and files (FileMaker), Records, SourceRemoval
///
/// The module reads and rewrites links, assigns targets and updates the sync database; what it does
/// with a set of files as a whole beyond that, it is not asked to. A cancel ends either step before
/// the next file.
class JobRun
{
public:
    JobRun(const ImportRequest& request, const std::shared_ptr<JobControl>& control);
    ~JobRun();
    JobRun(const JobRun&) = delete;
    JobRun& operator=(const JobRun&) = delete;

    /// Where an earlier job has moved the file, or what is in the folder, by an import to this
    /// target; empty when none has.
    QString MovedTo(const QString& source, const QString& target) const;
    /// Sources and target are checked; `gone` are sources that were moved earlier. Throws JobError:
    /// SelectionRefused, PlanNotMade, DatabaseNotOpened.
    void Plan(const Sources& sources, const QList<LeftOutItem>& gone, const QString& target);
    /// Once more, with answers to conflicts.
    void Decide(const Answers& answers);
    /// False when the job is cancelled.
    bool MayBegin();
    /// Requires a plan without conflicts and findings that was not cancelled.
    void Execute(Results& results);

    JobState& State() { return m_state; }
    const JobState& State() const { return m_state; }
    /// What keeps the plan from being executed.
    const QList<Conflict>& Conflicts() const { return m_conflicts; }
    const QList<Finding>& Findings() const { return m_findings; }
    /// Why the database failed during this job; empty when it did not.
    QString DatabaseError() const;

private:
    bool TakeSelection(const Sources& sources);
    bool FindLinkedFiles(const QStringList& sources);
    void RequireWholePlan() const;
    bool IsStopped();
    void ForgetForeseen();
    void FailToBegin(const Base::FileResult& why);
    void MakeFolders();
    bool MakeFiles(Results& results, Deed deed);
    FileMaker::Made MakeFile(JobFile& file, Results& results, FileMaker::Turn turn);
    void RelinkAroundFailures();
    void NoteUnchanged();
    void Finish(Results& results, const Base::RootedFolder& cloud);
    Base::FileResult SecureCopies(const Base::RootedFolder& cloud);
    void MoveSources(Results& results, const Base::RootedFolder& cloud, bool isRecorded);
    void RemoveSources(Results& results);

    JobState m_state;
    std::shared_ptr<JobControl> m_control;
    std::shared_ptr<JobDatabase> m_database;
    std::unique_ptr<FileLink::FileLinkImporter> m_importer;
    std::unique_ptr<Ledger> m_ledger;
    CopyIndex m_copies;
    LinkReader m_reader;
    Layout m_layout;
    Records m_records;
    /// While the plan is executed.
    FileMaker* m_maker = nullptr;
    QList<Conflict> m_conflicts;
    QList<Finding> m_findings;
};

} // namespace Halvern::Jobs
