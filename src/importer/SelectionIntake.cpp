// SPDX-License-Identifier: Apache-2.0

#include "importer/FileLinkImporterImp.h"
#include "support/FileOperations.h"
#include "support/PathUtilities.h"
#include "support/Problems.h"

#include "syncservices/SyncLibUtil.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <utility>

namespace Halvern::FileLink {

using SyncServices::SyncLibUtil;

namespace {

/// The path must be clean: only so does a slash at its end not hide a symbolic link, nor "/x/.."
/// the root folder.
bool CanBeImported(const QString& path)
{
    const QFileInfo info(path);
    return !(info.isSymLink() && IsFolder(path)) && !IsInCloudCacheFolder(path) && !info.isRoot() &&
           !IsShareRoot(path);
}

bool TargetFits(qsizetype sourceCount, const QString& target)
{
    if (sourceCount == 0)
        return IsFile(target);
    if (sourceCount == 1)
        return true;
    return !PathExists(target) || IsFolder(target);
}

/// The target of an entry named relative to the target folder; empty for a name that is absolute.
QString TargetOf(const QString& name, const QString& targetFolder)
{
    return IsAbsolutePath(name) ? QString() : MakeAbsolutePath(name, targetFolder, false);
}

} // namespace

bool FileLinkImporterImp::Initialize(const QStringList& sources, QString target, bool targetIsFile,
                                     CopyOption options, const QStringList& fileTypes)
{
    m_copyOptions = options;
    m_fileTypes = fileTypes;
    if (!TargetFits(sources.size(), target)) {
        Report(Stage::Intake, sources.isEmpty() ? ProblemKind::FileMissing : ProblemKind::NoTarget,
               target,
               sources.isEmpty() ? QString()
                                 : QStringLiteral("Several files cannot go into one file"));
        return false;
    }

    const auto fileSet = std::make_shared<FileSet>();
    const QString root = fileSet->GetTargetRootFolder();
    if (root.isEmpty()) {
        Report(Stage::Intake, ProblemKind::NoTarget, QString(),
               QStringLiteral("The cloud cache folder is not known"));
        return false;
    }
    if (target.isEmpty()) {
        target = root;
        targetIsFile = false;
    }
    if (!IsAbsolutePath(target))
        target = MakeAbsolutePath(target, root, false);
    if (IsInCloudCacheFolder(target))
        target = ConvertCloudCacheFolderPath(target);

    Selection selection;
    if (sources.isEmpty()) {
        selection.paths = selection.names = QStringList{target};
    } else {
        QStringList selected;
        if (!FilterSources(sources, selection, selected) || !ExpandSelection(selected, selection))
            return false;
    }

    const int authenticationId = GetAuthenticationId();
    if (PathExists(target))
        targetIsFile = IsFile(target);
    for (qsizetype i = 0; i < selection.paths.size(); ++i) {
        if (CheckIfCanceled())
            return false;
        const bool isExactTarget = targetIsFile && selection.paths.size() == 1;
        const QString path = selection.paths[i];
        const QString itsTarget = isExactTarget ? target : TargetOf(selection.names[i], target);
        if (itsTarget.isEmpty())
            continue;
        const auto mapping = std::make_shared<FileMapping>(path, itsTarget, authenticationId);
        mapping->SetFlag(FlagsOfSelected(path, selection), true);
        fileSet->AddFile(mapping);
    }
    m_fileSet = fileSet;
    return true;
}

bool FileLinkImporterImp::FilterSources(const QStringList& sources, Selection& selection,
                                        QStringList& selected) const
{
    for (const QString& source : sources) {
        if (CheckIfCanceled())
            return false;
        const QString path = QDir::cleanPath(source);
        if (!CanBeImported(path)) {
            Report(Stage::Intake, ProblemKind::SourceRefused, path);
            continue;
        }
        selection.selected.Add(path, int(selected.size()));
        selected.append(path);
    }
    return true;
}

bool FileLinkImporterImp::ExpandSelection(const QStringList& selected, Selection& selection) const
{
    for (const QString& path : selected) {
        if (CheckIfCanceled())
            return false;
        if (!PathExists(path)) {
            Report(Stage::Intake, ProblemKind::FileMissing, path);
            continue;
        }
        selection.paths.append(path);
        selection.names.append(QFileInfo(path).fileName());
        if (!IsFolder(path))
            continue;
        for (const QString& entry :
             ListFilesRecursive(path, QString(), QDir::Dirs | QDir::Files | QDir::Hidden, true)) {
            if (CheckIfCanceled())
                return false;
            selection.paths.append(entry);
            selection.names.append(MakeRelativePath(entry, path, true));
        }
    }
    return true;
}

FileMappingFlag FileLinkImporterImp::FlagsOfSelected(const QString& path,
                                                     const Selection& selection) const
{
    FileMappingFlag flags = FileMapping::Selected;
    if (HasOption(Global::RecordSelectedInDatabase))
        flags |= FileMapping::IncludeInDatabase;
    if (HasOption(Global::LinkedFilesOnly))
        flags |= FileMapping::NoCopy;
    if (HasOption(Global::ServicesCopyOption))
        flags |= FileMapping::ServicesOption;
    if (IsFolder(path)) {
        flags |= FileMapping::Folder;
        if (selection.selected.Find(path) < 0)
            flags |= FileMapping::NestedFolder;
    }
    if (!m_fileTypes.isEmpty() && !SyncLibUtil::IsInFileTypeList(path, m_fileTypes))
        flags |= FileMapping::FileLinksNotSupported;
    return flags;
}

} // namespace Halvern::FileLink
