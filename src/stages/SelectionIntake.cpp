// SPDX-License-Identifier: Apache-2.0

#include "stages/SelectionIntake.h"

#include "fileset/FileSetImp.h"
#include "fileset/PathIndex.h"
#include "support/FileOperations.h"
#include "support/PathUtilities.h"

#include "syncservices/SyncLibUtil.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <utility>

namespace Halvern::FileLink::Stages {

using SyncServices::SyncLibUtil;

namespace {

/// Paths selected for import, with their names relative to the target folder.
struct Selection
{
    QStringList paths;
    QStringList names;
    PathIndex selected;
};

/// The path must be clean: only so does a slash at its end not hide a symbolic link, nor "/x/.."
/// the root folder.
bool CanBeImported(const StageContext& context, const QString& path)
{
    const QFileInfo info(path);
    return !(info.isSymLink() && IsFolder(path)) && !context.services->IsInCloudCacheFolder(path) &&
           !info.isRoot() && !IsShareRoot(path);
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

bool FilterSources(const StageContext& context, const QStringList& sources, Selection& selection,
                   QStringList& selected)
{
    for (const QString& source : sources) {
        if (context.IsCanceled())
            return false;
        const QString path = QDir::cleanPath(source);
        if (!CanBeImported(context, path)) {
            context.Report(Stage::Intake, ProblemKind::SourceRefused, path);
            continue;
        }
        selection.selected.Add(path, int(selected.size()));
        selected.append(path);
    }
    return true;
}

bool ExpandSelection(const StageContext& context, const QStringList& selected, Selection& selection)
{
    for (const QString& path : selected) {
        if (context.IsCanceled())
            return false;
        if (!PathExists(path)) {
            context.Report(Stage::Intake, ProblemKind::FileMissing, path);
            continue;
        }
        selection.paths.append(path);
        selection.names.append(QFileInfo(path).fileName());
        if (!IsFolder(path))
            continue;
        for (const QString& entry :
             ListFilesRecursive(path, QString(), QDir::Dirs | QDir::Files | QDir::Hidden, true)) {
            if (context.IsCanceled())
                return false;
            selection.paths.append(entry);
            selection.names.append(MakeRelativePath(entry, path, true));
        }
    }
    return true;
}

FileMappingFlag FlagsOfSelected(const StageContext& context, const QString& path,
                                const Selection& selection)
{
    FileMappingFlag flags = FileMapping::Selected;
    if (context.HasOption(Global::RecordSelectedInDatabase))
        flags |= FileMapping::IncludeInDatabase;
    if (context.HasOption(Global::LinkedFilesOnly))
        flags |= FileMapping::NoCopy;
    if (context.HasOption(Global::ServicesCopyOption))
        flags |= FileMapping::ServicesOption;
    if (IsFolder(path)) {
        flags |= FileMapping::Folder;
        if (selection.selected.Find(path) < 0)
            flags |= FileMapping::NestedFolder;
    }
    if (!context.fileTypes.isEmpty() && !SyncLibUtil::IsInFileTypeList(path, context.fileTypes))
        flags |= FileMapping::FileLinksNotSupported;
    return flags;
}

bool TakeAll(StageContext& context, const QStringList& sources, QString target, bool targetIsFile)
{
    if (!TargetFits(sources.size(), target)) {
        context.Report(Stage::Intake,
                       sources.isEmpty() ? ProblemKind::FileMissing : ProblemKind::NoTarget, target,
                       sources.isEmpty() ? QString()
                                         : QStringLiteral("Several files cannot go into one file"));
        return false;
    }

    const auto fileSet = std::make_shared<FileSet>();
    const QString root = context.services->CloudCacheFolder();
    FileSetImp::Of(fileSet.get())->SetTargetRootFolder(root);
    if (root.isEmpty()) {
        context.Report(Stage::Intake, ProblemKind::NoTarget, QString(),
                       QStringLiteral("The cloud cache folder is not known"));
        return false;
    }
    if (target.isEmpty()) {
        target = root;
        targetIsFile = false;
    }
    if (!IsAbsolutePath(target))
        target = MakeAbsolutePath(target, root, false);
    if (context.services->IsInCloudCacheFolder(target))
        target = context.services->ConvertCloudCacheFolderPath(target);

    Selection selection;
    if (sources.isEmpty()) {
        selection.paths = selection.names = QStringList{target};
    } else {
        QStringList selected;
        if (!FilterSources(context, sources, selection, selected) ||
            !ExpandSelection(context, selected, selection))
            return false;
    }

    const int authenticationId = context.services->AuthenticationId();
    if (PathExists(target))
        targetIsFile = IsFile(target);
    for (qsizetype i = 0; i < selection.paths.size(); ++i) {
        if (context.IsCanceled())
            return false;
        const bool isExactTarget = targetIsFile && selection.paths.size() == 1;
        const QString path = selection.paths[i];
        const QString itsTarget = isExactTarget ? target : TargetOf(selection.names[i], target);
        if (itsTarget.isEmpty())
            continue;
        const auto mapping = std::make_shared<FileMapping>(path, itsTarget, authenticationId);
        mapping->SetFlag(FlagsOfSelected(context, path, selection), true);
        fileSet->AddFile(mapping);
    }
    context.fileSet = fileSet;
    return true;
}

} // namespace

bool TakeSelection(StageContext& context, const QStringList& sources, const QString& target,
                   bool targetIsFile)
{
    return RunStage(context, Stage::Intake, Operation::Initialize,
                    [&] { return TakeAll(context, sources, target, targetIsFile); });
}

} // namespace Halvern::FileLink::Stages
