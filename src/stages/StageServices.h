// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/Platform.h"

#include <QtCore/QString>

#include <memory>

namespace Halvern::FileLink {

class PluginManager;

/// What stages ask of the world around an import. Asked anew each time: services may end, and a
/// host may exchange the database, between two stages.
class IStageServices
{
public:
    virtual ~IStageServices() = default;

    /// Empty when it is not known.
    virtual QString CloudCacheFolder() const = 0;
    virtual bool IsInCloudCacheFolder(const QString& path) const = 0;
    /// The form of a cloud cache folder path that stages store.
    virtual QString ConvertCloudCacheFolderPath(const QString& path) const = 0;
    /// The path of a local file in the cloud; empty outside the cloud cache folder.
    virtual QString CloudPath(const QString& path) const = 0;
    virtual int AuthenticationId() const = 0;
    /// May be null.
    virtual std::shared_ptr<SyncDatabase> Database() const = 0;
    /// The item of the cloud cache folder `folder` in that database; may be null.
    virtual std::shared_ptr<SyncItem> RootItem(const QString& folder) const = 0;
    /// Null while the module is not initialised.
    virtual PluginManager* Plugins() const = 0;
    /// Keeps a copy of a file that is about to be replaced.
    virtual void SaveBaseFile(const QString& path) const = 0;
};

} // namespace Halvern::FileLink
