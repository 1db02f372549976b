#include "importer/FileLinkImporterImp.h"
#include "importer/FileTimes.h"
#include "support/Logging.h"
#include "support/PathUtilities.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace Halvern::FileLink {

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

bool HasChangedSince(const QString& path, const QDateTime& recorded)
{
    return !IsSameSecond(QFileInfo(path).lastModified(), recorded);
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
    if (mapping->GetTargetFile().isEmpty())
        return false;
    if (mapping->AreSourceAndTargetSame()) {
        mapping->SetFlag(FileMapping::SameSourceAndTarget, true);
        return true;
    }
    if (!QFile::exists(source)) {
        mapping->SetFlag(FileMapping::SourceMissing, true);
        return true;
    }
    mapping->SetFlag(FileMapping::Collision | FileMapping::Unchanged, false);
    if (!mapping->ExistsInTarget())
        return true;
    if (mapping->HasFlag(FileMapping::Selected) || mapping->IsFolder()) {
        mapping->SetFlag(FileMapping::Collision, true);
        return true;
    }
    return MarkLinkedFile(mapping);
}

bool FileLinkImporterImp::MarkLinkedFile(const FileMappingPointer& mapping)
{
    const QString source = mapping->GetSourceFile();
    const FileMappingPointer earlier = m_copyHistory->Find(source, GetAuthenticationId());
    if (CheckIfCanceled())
        return false;
    if (!earlier || !earlier->HasTargetFile()) {
        mapping->SetFlag(FileMapping::Collision, true);
        return true;
    }
    const QString target = earlier->GetTargetFile();
    const bool targetChanged = HasChangedSince(target, earlier->GetTargetFileLastModified());
    const bool sourceChanged = HasChangedSince(source, earlier->GetSourceFileLastModified());
    if (targetChanged)
        mapping->SetTargetFile(target, true);
    if (targetChanged || sourceChanged) {
        mapping->SetFlag(FileMapping::Collision, true);
        FILELINK_LOG(LogLevel::Info,
                     QStringLiteral("File %1 was copied last time as %2. Source or target file has "
                                    "changed since then.")
                         .arg(source)
                         .arg(target));
        return true;
    }
    mapping->SetTargetFile(target, true);
    mapping->SetFlag(FileMapping::Unchanged, true);
    FILELINK_LOG(LogLevel::Info,
                 QStringLiteral("File %1 was copied last time as %2. Source and target files have "
                                "not changed since then.")
                     .arg(source)
                     .arg(target));
    return true;
}

} // namespace Halvern::FileLink
