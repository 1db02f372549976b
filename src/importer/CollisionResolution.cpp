// SPDX-License-Identifier: Apache-2.0

#include "importer/FileLinkImporterImp.h"
#include "support/Logging.h"
#include "support/PathUtilities.h"

namespace Halvern::FileLink {

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

constexpr FileMappingFlag Decided =
    FileMapping::NoCopy | FileMapping::NotFilePath | FileMapping::RenameOnCollision;

} // namespace

bool FileLinkImporterImp::ResolveCollisions()
{
    FILELINK_LOG(LogLevel::Info, QStringLiteral("Begin resolving file conflicts"));
    const LogFinally finally(&ModuleLogger(), LogLevel::Info,
                             QStringLiteral("Finished resolving file conflicts"));
    for (const FileMappingPointer& mapping : Files()) {
        if (CheckIfCanceled())
            return false;
        if (mapping->HasFlag(FileMapping::Collision) && !mapping->HasFlagAny(Decided))
            mapping->SetFlag(DecideCollision(*mapping), true);
    }
    bool result = true;
    for (const FileMappingPointer& mapping : Files()) {
        if (CheckIfCanceled())
            return false;
        result = AssignUniqueTargetName(mapping) && result;
    }
    return result;
}

/// The flag that settles a collision. None leaves it to the copy stage, which replaces the target.
FileMappingFlag FileLinkImporterImp::DecideCollision(const FileMapping& mapping) const
{
    if (mapping.HasFlag(FileMapping::Folder))
        return HasOption(Global::DirectLinksOnly) ? FileMapping::NoCopy : FileMapping::NoFlag;
    const bool selected = mapping.HasFlag(FileMapping::Selected);
    if (HasOption(selected ? Global::KeepExistingSelectedFiles : Global::KeepExistingLinkedFiles))
        return FileMapping::NoCopy;
    if (HasOption(selected ? Global::RenameSelectedFiles : Global::RenameLinkedFiles))
        return FileMapping::RenameOnCollision;
    return FileMapping::NoFlag;
}

/// Only the disk is asked: two mappings that are renamed in one pass may get one name.
bool FileLinkImporterImp::AssignUniqueTargetName(const FileMappingPointer& mapping)
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
        Report(Stage::ResolveCollisions, ProblemKind::NoTarget, source,
               QStringLiteral("No name is free beside the target"));
        return false;
    }
    mapping->SetTargetFile(freeName, true);
    return true;
}

} // namespace Halvern::FileLink
