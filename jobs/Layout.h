// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobControl.h"
#include "JobFile.h"

#include "filelink/FileLinkImporter.h"

#include <QtCore/QSet>

namespace Halvern::Jobs {

/// Gives every file of a job that comes through a link its place, by the module's layout plug-ins
/// and its default layout.
///
/// The module knows files by their paths without regard to letter case: of files that differ in
/// nothing else, all but the first go by another name while it works.
class Layout
{
public:
    Layout(JobState& job, JobControl& control, FileLink::FileLinkImporter& importer);

    /// False when the job was cancelled, or the module refuses the selection.
    bool Assign();
    /// Once more, after the module was told that these files cannot stay where they are.
    bool AssignOtherwise(const QList<qsizetype>& places);
    /// Gives the files the targets that the module has for them.
    void TakeTargets();

private:
    bool MakeSet();
    void AddMember(JobFile& file);
    void AddLinks(const JobFile& file) const;

    JobState& m_job;
    JobControl& m_control;
    FileLink::FileLinkImporter& m_importer;
    QSet<QString> m_namesInUse;
};

} // namespace Halvern::Jobs
