// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "CancelAtPoll.h"

#include "LogCapture.h"
#include "ServicesFixture.h"
#include "TestPlugins.h"
#include "importer/FileLinkImporterImp.h"

#include "filelink/FileLinkManager.h"

#include <memory>
#include <utility>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

using FileLink::FileLinkImporterImp;
using FileLink::FileLinkList;
using FileLink::FileMappingFlag;
using FileLink::FileMappingPointer;
using SyncServices::FileItem;
using SyncServices::FileMapping;
using SyncServices::Global;
using SyncServices::SyncItem;

/// An importer over the running services and the test resolver, with an empty file set to which
/// tests add the mappings that they need. The stages before copying are not run unless a test says
/// so.
class CopyingFixture : public ServicesFixture
{
protected:
    CopyingFixture();
    ~CopyingFixture() override;

    /// A new importer with an empty set. What the one before it copied goes into the history.
    void Restart(Global::CopyOption options = Global::NoCopyOption);
    /// A member with a source in the tree and a target in the cloud folder (none when empty).
    FileMappingPointer Add(const QString& source, const QString& target,
                           FileMappingFlag flags = FileMapping::Selected,
                           const FileLinkList& links = {});
    /// The same with absolute paths.
    FileMappingPointer AddPaths(const QString& source, const QString& target,
                                FileMappingFlag flags = FileMapping::Selected,
                                const FileLinkList& links = {});
    bool Copy(const FileMappingPointer& mapping, bool deleteSource = false);
    /// Stages from the selection to resolved collisions: source in the tree, target in the cloud.
    bool Prepare(const QStringList& sources, const QString& target,
                 Global::CopyOption options = Global::NoCopyOption);

    /// The module's lines since the last Clear.
    QStringList Lines() const { return log.Lines(u"CorsyncFileLink"_s); }
    /// The module's lines that begin so.
    QStringList LinesWith(const QString& begin) const;
    std::shared_ptr<SyncItem> Item(const QString& cloudPath) const;

    FileLink::FileLinkManager& Manager() const { return *FileLink::FileLinkManager::GetInstance(); }

    std::shared_ptr<CancelAtPoll> controller = std::make_shared<CancelAtPoll>();
    std::unique_ptr<FileLinkImporterImp> importer;
    LogCapture log;
};

/// A link as a plug-in reports it.
SyncServices::FileLink Link(const QString& refId, const QString& path);
/// The content of a file of the test resolver's format with these links.
QByteArray LinkText(const QList<std::pair<QString, QString>>& links);
/// The paths of links, in order.
QStringList PathsOf(const FileLinkList& links);

} // namespace Halvern::Test
