// SPDX-License-Identifier: Apache-2.0

#include "importer/FileLinkImporterImp.h"
#include "importer/FileTimes.h"
#include "support/FileOperations.h"
#include "support/Logging.h"
#include "support/PathUtilities.h"

namespace Halvern::FileLink {

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

} // namespace

bool FileLinkImporterImp::MarkCollisions()
{
    FILELINK_LOG(LogLevel::Info, QStringLiteral("Begin marking file conflicts"));
    const LogFinally finally(&ModuleLogger(), LogLevel::Info,
                             QStringLiteral("Finished marking file conflicts"));
    bool result = true;
    for (const FileMappingPointer& mapping : Files()) {
        if (CheckIfCanceled())
            return false;
        result = MarkCollisions(mapping) && result;
    }
    return result;
}

bool FileLinkImporterImp::MarkCollisions(const FileMappingPointer& mapping)
{
    if (!mapping)
        return false;
    const QString source = mapping->GetSourceFile();
    if (!IsLocalPath(source))
        return true;
    if (mapping->GetTargetFile().isEmpty()) {
        Report(Stage::MarkCollisions, ProblemKind::NoTarget, source);
        return false;
    }
    if (MarkWhatIsNotCopied(*mapping))
        return true;
    const int authenticationId = GetAuthenticationId();
    mapping->SetFlag(FileMapping::Collision | FileMapping::Unchanged, false);
    if (!mapping->ExistsInTarget())
        return true;
    if (mapping->HasFlag(FileMapping::Selected) || mapping->IsFolder()) {
        mapping->SetFlag(FileMapping::Collision, true);
        return true;
    }
    const FileMappingPointer earlier = m_copyHistory->Find(source, authenticationId);
    if (CheckIfCanceled())
        return false;
    if (!earlier || !earlier->HasTargetFile()) {
        mapping->SetFlag(FileMapping::Collision, true);
        return true;
    }
    const bool unchanged = MarkAgainstHistory(*mapping, *earlier);
    FILELINK_LOG(LogLevel::Info,
                 (unchanged ? QStringLiteral("File %1 was copied last time as %2. Source and "
                                             "target files have not changed since then.")
                            : QStringLiteral("File %1 was copied last time as %2. Source or "
                                             "target file has changed since then."))
                     .arg(source)
                     .arg(earlier->GetTargetFile()));
    return true;
}

} // namespace Halvern::FileLink
