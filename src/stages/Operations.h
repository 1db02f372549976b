// SPDX-License-Identifier: Apache-2.0

#pragma once

/// The names under which log records know the operations of an import, as the compiler spells the
/// functions that a host calls. Filters rely on them: they stay when the code of an operation
/// moves.
namespace Halvern::FileLink::Operation {

#define FILELINK_IMPORTER "Halvern::FileLink::FileLinkImporterImp::"
#define FILELINK_EXTRACTOR "Halvern::FileLink::FileLinkExtractorImp::"

inline constexpr char CheckIfCanceled[] = "bool " FILELINK_IMPORTER "CheckIfCanceled() const";
inline constexpr char ImportCloudFiles[] =
    "bool " FILELINK_IMPORTER
    "ExtractAndImportFileLinksOfCloudFiles(int, const QStringList&, const "
    "QList<Halvern::SyncServices::SyncItem::SyncOption>&)";
inline constexpr char Initialize[] =
    "bool " FILELINK_IMPORTER
    "Initialize(const QStringList&, QString, bool, CopyOption, const QStringList&)";
inline constexpr char AssignTargetPaths[] = "bool " FILELINK_IMPORTER "AssignTargetPaths()";
inline constexpr char AssignDefaultTargetPaths[] =
    "bool " FILELINK_IMPORTER "AssignDefaultTargetPaths(const NodePointer&, QSet<const "
    "Halvern::SyncServices::FileMapping*>&)";
inline constexpr char MarkCollisions[] = "bool " FILELINK_IMPORTER "MarkCollisions()";
inline constexpr char MarkCollision[] =
    "bool " FILELINK_IMPORTER "MarkCollisions(const Halvern::FileLink::FileMappingPointer&)";
inline constexpr char ResolveCollisions[] = "bool " FILELINK_IMPORTER "ResolveCollisions()";
inline constexpr char CopyFiles[] = "bool " FILELINK_IMPORTER "CopyFiles()";
inline constexpr char CopyFile[] =
    "bool " FILELINK_IMPORTER "CopyFile(const Halvern::FileLink::FileMappingPointer&, bool)";
inline constexpr char CreateFolder[] =
    "bool " FILELINK_IMPORTER "CreateFolder(const QString&, bool)";
inline constexpr char LogFileTree[] = "void " FILELINK_IMPORTER "LogFileTree(bool) const";
inline constexpr char LogFileTreeNode[] =
    "void " FILELINK_IMPORTER "LogFileTree(const NodePointer&, bool, int, QSet<QString>&) const";
inline constexpr char RepathFiles[] = "bool " FILELINK_IMPORTER "RepathFiles()";
inline constexpr char RepathMapping[] =
    "bool " FILELINK_IMPORTER "RepathFile(const Halvern::FileLink::FileMappingPointer&)";
inline constexpr char RepathFile[] =
    "bool " FILELINK_IMPORTER
    "RepathFile(const QString&, const QList<Halvern::SyncPlugin::FileLinkInfo>&)";
inline constexpr char RepathFolder[] = "bool " FILELINK_IMPORTER "RepathFiles(int)";
inline constexpr char RepathItems[] =
    "bool " FILELINK_IMPORTER
    "RepathFiles(const QList<std::shared_ptr<Halvern::SyncServices::SyncItem> >&)";
inline constexpr char UpdateSyncDatabase[] = "bool " FILELINK_IMPORTER "UpdateSyncDatabase()";
inline constexpr char UpdateSyncDatabaseNode[] =
    "bool " FILELINK_IMPORTER "UpdateSyncDatabase(const NodePointer&, DatabaseUpdateState&)";

inline constexpr char CheckIfExtractionCanceled[] =
    "bool " FILELINK_EXTRACTOR "CheckIfCanceled() const";
inline constexpr char ExtractFileLinks[] =
    "bool " FILELINK_EXTRACTOR
    "ExtractFileLinks(Halvern::FileLink::FileSet*, bool, const QStringList&)";
inline constexpr char ExtractLinksOfMapping[] =
    "bool " FILELINK_EXTRACTOR
    "ExtractFileLinks(const Halvern::FileLink::FileMappingPointer&, const QStringList&)";
inline constexpr char ExtractLinksOfFile[] =
    "bool " FILELINK_EXTRACTOR "ExtractFileLinks(const QString&, Halvern::FileLink::FileLinkList&)";
inline constexpr char LogFileLinks[] =
    "void " FILELINK_EXTRACTOR
    "LogFileLinks(const QString&, const Halvern::FileLink::FileLinkList&) const";

#undef FILELINK_IMPORTER
#undef FILELINK_EXTRACTOR

} // namespace Halvern::FileLink::Operation
