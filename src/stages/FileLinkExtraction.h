// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageContext.h"

namespace Halvern::FileLink::Stages {

/// Grows a file set by everything that its files link, breadth first. Links come from the plug-ins,
/// or, for a file that has not changed since they were recorded, from the sync database (files in
/// the cloud cache folder) or the copy history (all others).
class FileLinkExtraction
{
public:
    /// The context must outlive it.
    explicit FileLinkExtraction(const StageContext& context);

    /// Adds every linked file to the set; without `recursive`, only those that its present members
    /// link. False when cancelled or empty. The set is extended at the very end: what ends the
    /// stage before that leaves it as it was.
    bool Run(FileSet& fileSet, bool recursive) const;
    /// Gives one mapping its source links. False on cancel and when the file does not exist.
    bool ExtractLinks(const FileMappingPointer& mapping) const;
    /// Asks the plug-ins for the links inside one file. What a plug-in could not read has no links;
    /// the plug-in manager reports why.
    bool ReadLinks(const QString& path, FileLinkList& links) const;
    /// The same, but each link as the plug-in gave it, and false when the plug-in could not read.
    bool ReadStoredLinks(const QString& path, FileLinkList& links) const;
    void LogLinks(const QString& path, const FileLinkList& links) const;
    bool IsCanceled() const;

private:
    struct WorkList;

    bool ExtractAll(FileSet& fileSet, bool recursive) const;
    bool AddLinkedFiles(const FileMapping& mapping, WorkList& work) const;
    QDateTime RestoreFromDatabase(FileMapping& mapping) const;
    void RestoreFromHistory(FileMapping& mapping, bool supported) const;
    bool ExtractAfresh(const FileMappingPointer& mapping, bool isInCloudFolder) const;
    bool RequireFile(const QString& path) const;
    bool AskPlugins(const QString& path, FileLinkList& links) const;
    QString StoredPath(const QString& linkPath, const QString& holder) const;

    const StageContext& m_context;
};

} // namespace Halvern::FileLink::Stages
