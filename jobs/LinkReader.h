// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/FileLinkImporter.h"
#include "filelink/FileLinkManager.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::Jobs {

/// Reads and rewrites the links inside single files, through the module and its plug-ins.
class LinkReader
{
public:
    using Links = QList<SyncServices::FileLink>;

    /// The importer's problem sink is told what goes wrong. It outlives the reader.
    explicit LinkReader(FileLink::FileLinkImporter& importer);

    /// Names the plug-in that would read the file, and its version as the disk has it: another text
    /// means that another answer is to be expected. Empty when none reads such files.
    QString ReadersOf(const QString& file);
    /// The same for a file with these links: another text also when there may be other files in its
    /// folder or in that of a link which its plug-in follows by the names of files. A folder is
    /// looked at once.
    QString ReadersOf(const QString& file, const Links& links);
    /// The links as they stand in the file. False when its plug-in could not read it.
    bool Read(const QString& file, Links& links) { return m_importer.ReadFileLinks(file, links); }
    /// Writes links, each found by its reference id.
    bool Write(const QString& file, const Links& links)
    {
        return m_importer.RepathFile(file, links);
    }

private:
    qint64 TimeOfFolder(const QString& folder);

    FileLink::FileLinkImporter& m_importer;
    QList<FileLink::PluginDescription> m_resolvers;
    QHash<QString, QString> m_byExtension;
    QHash<QString, qint64> m_folderTimes;
};

} // namespace Halvern::Jobs
