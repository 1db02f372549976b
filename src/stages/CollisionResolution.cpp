// SPDX-License-Identifier: Apache-2.0

#include "stages/CollisionResolution.h"

#include "support/PathUtilities.h"

namespace Halvern::FileLink::Stages {

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

constexpr FileMappingFlag Decided =
    FileMapping::NoCopy | FileMapping::NotFilePath | FileMapping::RenameOnCollision;

/// The flag that settles a collision. None leaves it to the copy stage, which replaces the target.
FileMappingFlag DecideCollision(const StageContext& context, const FileMapping& mapping)
{
    if (mapping.HasFlag(FileMapping::Folder))
        return context.HasOption(Global::DirectLinksOnly) ? FileMapping::NoCopy
                                                          : FileMapping::NoFlag;
    const bool selected = mapping.HasFlag(FileMapping::Selected);
    if (context.HasOption(selected ? Global::KeepExistingSelectedFiles
                                   : Global::KeepExistingLinkedFiles))
        return FileMapping::NoCopy;
    if (context.HasOption(selected ? Global::RenameSelectedFiles : Global::RenameLinkedFiles))
        return FileMapping::RenameOnCollision;
    return FileMapping::NoFlag;
}

bool ResolveAll(const StageContext& context)
{
    FILELINK_LOG_FOR(Operation::ResolveCollisions, LogLevel::Info,
                     QStringLiteral("Begin resolving file conflicts"));
    const LogFinally finally(&ModuleLogger(), LogLevel::Info,
                             QStringLiteral("Finished resolving file conflicts"));
    for (const FileMappingPointer& mapping : context.Files()) {
        if (context.IsCanceled())
            return false;
        if (mapping->HasFlag(FileMapping::Collision) && !mapping->HasFlagAny(Decided))
            mapping->SetFlag(DecideCollision(context, *mapping), true);
    }
    bool result = true;
    for (const FileMappingPointer& mapping : context.Files()) {
        if (context.IsCanceled())
            return false;
        result = AssignUniqueTargetName(context, mapping) && result;
    }
    return result;
}

} // namespace

bool ResolveCollisions(const StageContext& context)
{
    return RunStage(context, Stage::ResolveCollisions, Operation::ResolveCollisions,
                    [&] { return ResolveAll(context); });
}

bool AssignUniqueTargetName(const StageContext& context, const FileMappingPointer& mapping)
{
    if (!mapping)
        return false;
    if (mapping->HasFlag(FileMapping::KeepTargetName) || mapping->AreSourceAndTargetSame())
        return true;
    const QString source = mapping->GetSourceFile();
    const QString target = mapping->GetTargetFile();
    if (!IsLocalPath(source) || source.isEmpty() || target.isEmpty() ||
        !mapping->ExistsInTarget() || !mapping->HasFlag(FileMapping::RenameOnCollision))
        return true;
    const QString freeName = MakeUniqueFilePath(target, QStringLiteral(" (%1)"));
    if (freeName.isEmpty()) {
        context.Report(Stage::ResolveCollisions, ProblemKind::NoTarget, source,
                       QStringLiteral("No name is free beside the target"));
        return false;
    }
    mapping->SetTargetFile(freeName, true);
    return true;
}

} // namespace Halvern::FileLink::Stages
