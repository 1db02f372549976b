// SPDX-License-Identifier: Apache-2.0

#include "ThreeWays.h"

#include "FileStamps.h"
#include "Paths.h"

#include "base/ContentHash.h"
#include "base/FileCopy.h"

#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

namespace Halvern::Jobs {

namespace {

bool HoldTheSame(const QString& a, const QString& b)
{
    if (QFileInfo(a).size() != QFileInfo(b).size())
        return false;
    Base::ContentHash first, second;
    return Base::HashContent(Native(a), first) && Base::HashContent(Native(b), second) &&
           first == second;
}

} // namespace

Standing ThreeWays::Of(JobFile& file) const
{
    file.record.reset();
    const CopyRecord* record = m_copies.OfTarget(file.target);
    if (record && PathKey(record->source) == PathKey(file.source))
        file.record = *record;
    if (!ExistsOnDisk(file.target))
        return Standing::Free;
    file.targetStatus = Base::ReadLinkStatus(Native(file.target));
    if (IsFolder(file.target))
        return Standing::Folder;
    const bool isLink = QFileInfo(file.target).isSymbolicLink();
    if (!file.record || isLink)
        return !isLink && HasSameContent(file) ? Standing::SameContent : Standing::Foreign;
    const bool checksum = m_job.request.checksum;
    const bool sourceSame = IsSameAsRecorded(file.record->sourceStamp, file.record->recordedAt,
                                             file.source, checksum, nullptr);
    const bool copySame = IsSameAsRecorded(file.record->targetStamp, file.record->recordedAt,
                                           file.target, checksum, nullptr);
    if (sourceSame && copySame)
        return Standing::Ours;
    if (copySame)
        return Standing::SourceChanged;
    if (sourceSame)
        return Standing::CopyChanged;
    return HasSameContent(file) ? Standing::SameContent : Standing::BothChanged;
}

/// A copy whose links are rewritten is made to be compared.
bool ThreeWays::HasSameContent(const JobFile& file) const
{
    if (file.rewrites.isEmpty())
        return HoldTheSame(file.source, file.target);
    const QTemporaryDir folder;
    const QString copy = folder.filePath(QFileInfo(file.target).fileName());
    if (!folder.isValid() || !Base::CopyFileBytes(Native(file.source), Native(copy)))
        return false;
    m_control.Mute(true);
    const bool written = m_reader.Write(copy, file.rewrites);
    m_control.Mute(false);
    // Some plug-ins say that they wrote, and did not.
    return written && !HoldTheSame(copy, file.source) && HoldTheSame(copy, file.target);
}

} // namespace Halvern::Jobs
