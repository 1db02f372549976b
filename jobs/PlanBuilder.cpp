// SPDX-License-Identifier: Apache-2.0

#include "PlanBuilder.h"

#include "Paths.h"

#include "syncplugin/ReferenceIds.h"

#include <QtCore/QFileInfo>

namespace Halvern::Jobs {

using FileLink::FileSet;
using SyncServices::FileMapping;

namespace {

bool IsCompanionLink(const SyncServices::FileLink& link)
{
    static const QString mark = QString::fromUtf8(SyncPlugin::CompanionMark.data(),
                                                  qsizetype(SyncPlugin::CompanionMark.size()));
    return link.RefId.startsWith(mark);
}

bool IsCopied(Outcome outcome)
{
    return outcome == Outcome::Copied || outcome == Outcome::Moved ||
           outcome == Outcome::Replaced || outcome == Outcome::Renamed;
}

/// Goes through the links of all files once, and notes them on both sides.
class LinkWriter
{
public:
    LinkWriter(FileSet& fileSet, const PlaceInPlan& places, QList<PlannedFile>& files)
        : m_fileSet(fileSet), m_members(fileSet.GetFiles()), m_places(places), m_files(files)
    {}

    void Write();

private:
    PlannedLink Describe(const SyncServices::FileLink& link, const FileMapping& holder);
    void Lead(const FileMapping& linked, const SyncServices::FileLink& link,
              const FileMapping& holder);

    FileSet& m_fileSet;
    const FileSet::FileMappingList m_members;
    const PlaceInPlan& m_places;
    QList<PlannedFile>& m_files;
};

void LinkWriter::Write()
{
    for (const auto& member : m_members) {
        const qsizetype place = m_places.value(member.get(), -1);
        if (place < 0)
            continue;
        const QList<SyncServices::FileLink> links = member->GetSourceFileLinks();
        m_files[place].links.reserve(links.size());
        for (const SyncServices::FileLink& link : links)
            m_files[place].links.append(Describe(link, *member));
    }
}

PlannedLink LinkWriter::Describe(const SyncServices::FileLink& link, const FileMapping& holder)
{
    PlannedLink planned;
    planned.text = link.Path;
    planned.file = ResolveLink(link.Path, holder.GetSourceFile());
    const int index = m_fileSet.IndexOfSourceFile(planned.file);
    const FileMapping* linked = index < 0 ? nullptr : m_members.at(index).get();
    if (linked)
        Lead(*linked, link, holder);
    if (!IsLocalPath(link.Path)) {
        planned.state = LinkState::Url;
        planned.newText = link.Path;
        return planned;
    }
    const bool exists =
        linked ? !linked->HasFlag(FileMapping::SourceMissing) : QFileInfo::exists(planned.file);
    planned.state = exists ? LinkState::Found : LinkState::Missing;
    if (linked && linked->HasTargetFile() && holder.HasTargetFile()) {
        planned.newFile = linked->GetTargetFile();
        planned.newText = WayFrom(holder.GetTargetFile(), planned.newFile);
    }
    return planned;
}

void LinkWriter::Lead(const FileMapping& linked, const SyncServices::FileLink& link,
                      const FileMapping& holder)
{
    const qsizetype place = m_places.value(&linked, -1);
    if (place < 0)
        return;
    PlannedFile& file = m_files[place];
    file.linkedFrom.append({holder.GetSourceFile(), link.Path});
    if (file.origin == Origin::Selected)
        return;
    // One link that stores the path is enough to be more than a companion.
    const bool isFirst = file.linkedFrom.size() == 1;
    if (!IsCompanionLink(link))
        file.origin = Origin::Linked;
    else if (isFirst)
        file.origin = Origin::Companion;
}

PlannedFile Describe(const FileMapping& file, const JobState& job, ProblemSorter& problems)
{
    PlannedFile planned;
    planned.source = file.GetSourceFile();
    planned.target = file.GetTargetFile();
    planned.outcome = OutcomeOf(file, job);
    planned.problems = problems.Of(file, planned.outcome);
    if (planned.problems.isEmpty() || planned.outcome != Outcome::Failed)
        planned.remark = RemarkOf(file, planned.outcome, job);
    planned.origin = file.HasFlag(FileMapping::Selected) ? Origin::Selected : Origin::Linked;
    planned.deletesSource = DeletesSource(file, planned.outcome, job);
    if (IsCopied(planned.outcome))
        planned.bytes = QFileInfo(planned.source).size();
    return planned;
}

} // namespace

QList<PlannedFile> DescribeFiles(const JobState& job, ProblemSorter& problems, PlaceInPlan& places)
{
    QList<PlannedFile> files;
    for (const auto& file : job.files->GetFiles()) {
        if (!IsReported(*file, job))
            continue;
        places.insert(file.get(), files.size());
        files.append(Describe(*file, job, problems));
    }
    LinkWriter(*job.files, places, files).Write();
    return files;
}

} // namespace Halvern::Jobs
