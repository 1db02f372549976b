// SPDX-License-Identifier: Apache-2.0

#include "Layout.h"

#include "Paths.h"

#include "syncservices/SyncLibUtil.h"
#include "syncservices/SyncPrivate.h"

#include <QtCore/QFileInfo>

namespace Halvern::Jobs {

using SyncServices::FileMapping;
using SyncServices::Global;
using SyncServices::SyncLibUtil;
using SyncServices::SyncPrivate;

namespace {

/// Stands before the name of a file that goes by another one; no layout that copies names loses it.
QString Mask(int number)
{
    return QStringLiteral("~%1~").arg(number);
}

QString Masked(const QString& path, int number)
{
    const QFileInfo info(path);
    return info.path() + u'/' + Mask(number) + info.fileName();
}

/// The target without the mask that the source has.
QString Unmasked(const QString& target, const QString& maskedSource, const QString& source)
{
    const QString name = QFileInfo(source).fileName();
    const QString mask = QFileInfo(maskedSource).fileName().chopped(name.size());
    const QFileInfo info(target);
    return !mask.isEmpty() && info.fileName().startsWith(mask)
               ? info.path() + u'/' + info.fileName().mid(mask.size())
               : target;
}

FileMapping::FileMappingFlag FlagsOf(const JobFile& file, const ImportRequest& request)
{
    FileMapping::FileMappingFlag flags = FileMapping::NoFlag;
    if (file.isSelected)
        flags |= FileMapping::Selected;
    if (file.isFolder)
        flags |= FileMapping::Folder;
    if (file.isNestedFolder)
        flags |= FileMapping::NestedFolder;
    if (file.isSelected && request.linksOnly)
        flags |= FileMapping::NoCopy;
    if (!request.fileTypes.isEmpty() &&
        !SyncLibUtil::IsInFileTypeList(file.source, request.fileTypes))
        flags |= FileMapping::FileLinksNotSupported;
    return flags;
}

} // namespace

Layout::Layout(JobState& job, JobControl& control, FileLink::FileLinkImporter& importer)
    : m_job(job), m_control(control), m_importer(importer)
{}

bool Layout::MakeSet()
{
    // A selection that holds nothing gives an empty set: the members are this library's own.
    m_control.Mute(true);
    const bool made = m_importer.Initialize({QString()}, m_job.target, false,
                                            m_job.request.linksOnly ? Global::LinkedFilesOnly
                                                                    : Global::NoCopyOption,
                                            m_job.request.fileTypes);
    m_control.Mute(false);
    if (!made)
        return false;
    for (JobFile& file : m_job.files)
        if (!file.IsOut())
            AddMember(file);
    for (const JobFile& file : m_job.files)
        if (file.mapping)
            AddLinks(file);
    return true;
}

void Layout::AddMember(JobFile& file)
{
    QString name = file.source;
    for (int number = 2; m_namesInUse.contains(name.toLower()); ++number)
        name = Masked(file.source, number);
    m_namesInUse.insert(name.toLower());
    file.placeInCloud = file.isSelected ? QString() : PlaceInCloudFolder(file.source);
    file.mapping = std::make_shared<FileMapping>(
        name, file.placeInCloud.isEmpty() ? file.target : file.placeInCloud,
        SyncPrivate::GetCurrentUserAuthenticationConfigurationId());
    file.mapping->SetFlag(FlagsOf(file, m_job.request), true);
    m_importer.GetFileSet()->AddFile(file.mapping);
}

/// Only those that lead to members: the module must not look for the others.
void Layout::AddLinks(const JobFile& file) const
{
    QList<SyncServices::FileLink> links;
    for (const JobLink& link : file.links) {
        const JobFile* member = link.member < 0 ? nullptr : &m_job.files.At(link.member);
        if (!member || !member->mapping)
            continue;
        SyncServices::FileLink shown = link.stored;
        shown.Path = member->mapping->GetSourceFile();
        links.append(shown);
    }
    file.mapping->SetSourceFileLinks(links);
}

bool Layout::Assign()
{
    if (!MakeSet() || !m_importer.AssignTargetPaths())
        return false;
    TakeTargets();
    return true;
}

bool Layout::AssignOtherwise(const QList<qsizetype>& places)
{
    const auto mark = [&](bool on) {
        for (const qsizetype place : places)
            m_job.files.At(place).mapping->SetFlag(
                FileMapping::Collision | FileMapping::RenameOnCollision, on);
    };
    mark(true);
    const bool assigned = m_importer.AssignTargetPaths();
    mark(false);
    if (assigned)
        TakeTargets();
    return assigned;
}

void Layout::TakeTargets()
{
    for (JobFile& file : m_job.files) {
        if (!file.mapping)
            continue;
        file.isDropped = !file.mapping->GetFileSet();
        file.skipsLinks = file.mapping->HasFlag(FileMapping::SkipFileLinks);
        file.keepsTarget = file.mapping->HasFlag(FileMapping::KeepTargetName);
        file.target =
            Unmasked(file.mapping->GetTargetFile(), file.mapping->GetSourceFile(), file.source);
    }
}

} // namespace Halvern::Jobs
