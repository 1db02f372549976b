// SPDX-License-Identifier: Apache-2.0

#include "PlanBuilder.h"

#include "LinkPlanning.h"
#include "Paths.h"
#include "Results.h"

#include "syncplugin/ReferenceIds.h"

namespace Halvern::Jobs {

namespace {

bool IsCompanionLink(const SyncServices::FileLink& link)
{
    static const QString mark = QString::fromUtf8(SyncPlugin::CompanionMark.data(),
                                                  qsizetype(SyncPlugin::CompanionMark.size()));
    return link.RefId.startsWith(mark);
}

/// What a move deletes when everything turns out well.
bool DeletesSource(const JobFile& file, const ImportRequest& request)
{
    if (!request.move || !file.isSelected || file.sourceStays != SourceStays::No)
        return false;
    return file.outcome == Outcome::Unchanged ||
           (file.deed == Deed::Copy && file.outcome != Outcome::Failed);
}

PlannedFile Describe(const JobFile& file, const JobState& job, ProblemSorter& problems)
{
    PlannedFile planned;
    planned.source = file.source;
    planned.target = file.target;
    planned.outcome = OutcomeNow(file, job);
    planned.problems = problems.Of(file);
    planned.remark = file.remark;
    planned.detail = file.detail;
    planned.origin = file.isSelected ? Origin::Selected : Origin::Linked;
    planned.deletesSource = DeletesSource(file, job.request);
    planned.sourceStays = file.sourceStays;
    planned.staysFor = file.staysFor;
    planned.outside = file.outside;
    planned.isUnknownFormat = file.isUnknownFormat;
    planned.rewritesLinks =
        file.deed == Deed::Relink || (file.deed == Deed::Copy && !file.rewrites.isEmpty());
    if (file.deed == Deed::Copy)
        planned.bytes = qint64(file.status.size);
    return planned;
}

PlannedLink Describe(const JobLink& link, const JobFile& holder, const JobState& job)
{
    PlannedLink planned;
    planned.text = link.stored.Path;
    planned.file = link.file;
    planned.state = link.state;
    planned.newFile = PlaceOf(link, holder, job.files);
    if (link.state == LinkState::Url)
        planned.newText = link.stored.Path;
    return planned;
}

/// Notes links on both sides.
class LinkWriter
{
public:
    LinkWriter(const JobState& job, const QList<qsizetype>& places, QList<PlannedFile>& files)
        : m_job(job), m_places(places), m_files(files)
    {}

    void Write(qsizetype holder);

private:
    void Lead(const JobLink& link, const JobFile& holder);

    const JobState& m_job;
    const QList<qsizetype>& m_places;
    QList<PlannedFile>& m_files;
};

void LinkWriter::Write(qsizetype place)
{
    const JobFile& holder = m_job.files.At(place);
    if (m_places.at(place) < 0)
        return;
    for (qsizetype i = 0; i < holder.links.size(); ++i) {
        const JobLink& link = holder.links.at(i);
        if (link.member >= 0)
            Lead(link, holder);
        PlannedLink planned = Describe(link, holder, m_job);
        if (!planned.newFile.isEmpty() && i < holder.wantedLinks.size())
            planned.newText = holder.wantedLinks.at(i).Path;
        m_files[m_places.at(place)].links.append(planned);
    }
}

void LinkWriter::Lead(const JobLink& link, const JobFile& holder)
{
    const qsizetype place = m_places.at(link.member);
    if (place < 0)
        return;
    PlannedFile& file = m_files[place];
    file.linkedFrom.append({holder.source, link.stored.Path});
    if (file.origin == Origin::Selected)
        return;
    // One link that stores the path is enough to be more than a companion.
    const bool isFirst = file.linkedFrom.size() == 1;
    if (!IsCompanionLink(link.stored))
        file.origin = Origin::Linked;
    else if (isFirst)
        file.origin = Origin::Companion;
}

} // namespace

QList<PlannedFile> DescribeFiles(const JobState& job, ProblemSorter& problems)
{
    QList<PlannedFile> files;
    QList<qsizetype> places;
    for (const JobFile& file : job.files) {
        places.append(IsReported(file) ? files.size() : -1);
        if (IsReported(file))
            files.append(Describe(file, job, problems));
    }
    LinkWriter writer(job, places, files);
    for (qsizetype place = 0; place < job.files.Size(); ++place)
        writer.Write(place);
    return files;
}

} // namespace Halvern::Jobs
