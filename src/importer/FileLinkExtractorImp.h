// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/FileSet.h"
#include "filelink/ICancelController.h"
#include "filelink/Problem.h"
#include "fileset/FileCopyHistory.h"
#include "support/Platform.h"

#include <QtCore/QStringList>

#include <memory>

namespace Halvern::FileLink {

/// Grows a file set by everything that its files link, breadth first. Links come from the plug-ins,
/// or, for a file that has not changed since they were recorded, from the sync database (files in
/// the cloud cache folder) or the copy history (all others).
class FileLinkExtractorImp
{
public:
    FileLinkExtractorImp(std::shared_ptr<ICancelController> controller, FileCopyHistory* history);

    void SetProblemSink(std::shared_ptr<IProblemSink> sink);
    void SetSyncDatabase(std::shared_ptr<SyncDatabase> database);

    /// Adds every linked file to the set; without `recursive`, only those that its present members
    /// link. False when cancelled or empty. The set is extended at the very end: a cancel before
    /// that leaves it as it was.
    bool ExtractFileLinks(FileSet* fileSet, bool recursive, const QStringList& fileTypes);
    /// Gives one mapping its source links. False on cancel and when the file does not exist.
    bool ExtractFileLinks(const FileMappingPointer& mapping, const QStringList& fileTypes);
    /// Asks the plug-ins for the links inside one file. What a plug-in could not read has no links;
    /// the plug-in manager reports why.
    bool ExtractFileLinks(const QString& path, FileLinkList& links);
    void LogFileLinks(const QString& path, const FileLinkList& links) const;
    bool CheckIfCanceled() const;

private:
    struct WorkList;

    bool AddLinkedFiles(const FileMapping& mapping, WorkList& work) const;
    QDateTime RestoreFromDatabase(FileMapping& mapping) const;
    void RestoreFromHistory(FileMapping& mapping, bool supported);
    bool ExtractAfresh(const FileMappingPointer& mapping, bool isInCloudFolder);
    QString StoredPath(const QString& linkPath, const QString& holder) const;

    std::shared_ptr<ICancelController> m_cancelController;
    FileCopyHistory* m_history;
    std::shared_ptr<IProblemSink> m_problems;
    std::shared_ptr<SyncDatabase> m_database;
};

} // namespace Halvern::FileLink
