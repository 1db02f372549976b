// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageServices.h"

namespace Halvern::FileLink {

/// The services of the platform library and the plug-ins of the process, for one importer: the one
/// place of an import that knows what is global.
class PlatformServices final : public IStageServices
{
public:
    /// The database to use from now on in place of the platform's; null: that again.
    void SetDatabase(std::shared_ptr<SyncDatabase> database);

    QString CloudCacheFolder() const override;
    bool IsInCloudCacheFolder(const QString& path) const override;
    QString ConvertCloudCacheFolderPath(const QString& path) const override;
    QString CloudPath(const QString& path) const override;
    int AuthenticationId() const override;
    std::shared_ptr<SyncDatabase> Database() const override;
    std::shared_ptr<SyncItem> RootItem(const QString& folder) const override;
    PluginManager* Plugins() const override;
    void SaveBaseFile(const QString& path) const override;

    // What whole jobs ask before they begin.
    static bool IsLoggedIn();
    static bool IsSyncEnabled();
    static QStringList SupportedFileTypes();

private:
    std::shared_ptr<SyncDatabase> m_database;
};

} // namespace Halvern::FileLink
