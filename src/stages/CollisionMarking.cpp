// SPDX-License-Identifier: Apache-2.0

#include "stages/CollisionMarking.h"

#include "stages/FileTimes.h"
#include "support/FileOperations.h"
#include "support/PathUtilities.h"

namespace Halvern::FileLink::Stages {

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

bool HasChangedSince(const QString& path, const QDateTime& recorded)
{
    return !IsSameSecond(LastModified(path), recorded);
}

/// A file that is its own target or is missing is copied nowhere.
bool MarkWhatIsNotCopied(FileMapping& mapping)
{
    const bool isInPlace = mapping.AreSourceAndTargetSame();
    if (!isInPlace && PathExists(mapping.GetSourceFile()))
        return false;
    mapping.SetFlag(isInPlace ? FileMapping::SameSourceAndTarget : FileMapping::SourceMissing,
                    true);
    return true;
}

/// Compares a linked file and its earlier copy with what was recorded then; true when neither has
/// changed. The file goes back to the place of its copy, unless it is the only one that changed.
bool MarkAgainstHistory(FileMapping& mapping, const FileMapping& earlier)
{
    const QString target = earlier.GetTargetFile();
    const bool targetChanged = HasChangedSince(target, earlier.GetTargetFileLastModified());
    const bool sourceChanged =
        HasChangedSince(mapping.GetSourceFile(), earlier.GetSourceFileLastModified());
    if (targetChanged || !sourceChanged)
        mapping.SetTargetFile(target, true);
    const bool changed = targetChanged || sourceChanged;
    mapping.SetFlag(changed ? FileMapping::Collision : FileMapping::Unchanged, true);
    return !changed;
}

bool MarkAll(const StageContext& context)
{
    FILELINK_LOG_FOR(Operation::MarkCollisions, LogLevel::Info,
                     QStringLiteral("Begin marking file conflicts"));
    const LogFinally finally(&ModuleLogger(), LogLevel::Info,
                             QStringLiteral("Finished marking file conflicts"));
    bool result = true;
    for (const FileMappingPointer& mapping : context.Files()) {
        if (context.IsCanceled())
            return false;
        result = MarkCollision(context, mapping) && result;
    }
    return result;
}

} // namespace

bool MarkCollisions(const StageContext& context)
{
    return RunStage(context, Stage::MarkCollisions, Operation::MarkCollisions,
                    [&] { return MarkAll(context); });
}

bool MarkCollision(const StageContext& context, const FileMappingPointer& mapping)
{
    if (!mapping)
        return false;
    const QString source = mapping->GetSourceFile();
    if (!IsLocalPath(source))
        return true;
    if (mapping->GetTargetFile().isEmpty()) {
        context.Report(Stage::MarkCollisions, ProblemKind::NoTarget, source);
        return false;
    }
    if (MarkWhatIsNotCopied(*mapping))
        return true;
    const int authenticationId = context.services->AuthenticationId();
    mapping->SetFlag(FileMapping::Collision | FileMapping::Unchanged, false);
    if (!mapping->ExistsInTarget())
        return true;
    if (mapping->HasFlag(FileMapping::Selected) || mapping->IsFolder()) {
        mapping->SetFlag(FileMapping::Collision, true);
        return true;
    }
    const FileMappingPointer earlier = context.history->Find(source, authenticationId);
    if (context.IsCanceled())
        return false;
    if (!earlier || !earlier->HasTargetFile()) {
        mapping->SetFlag(FileMapping::Collision, true);
        return true;
    }
    const bool unchanged = MarkAgainstHistory(*mapping, *earlier);
    FILELINK_LOG_FOR(Operation::MarkCollision, LogLevel::Info,
                     (unchanged ? QStringLiteral("File %1 was copied last time as %2. Source and "
                                                 "target files have not changed since then.")
                                : QStringLiteral("File %1 was copied last time as %2. Source or "
                                                 "target file has changed since then."))
                         .arg(source)
                         .arg(earlier->GetTargetFile()));
    return true;
}

} // namespace Halvern::FileLink::Stages
