// SPDX-License-Identifier: Apache-2.0

#include "syncservices/FolderManager.h"

#include "services/Paths.h"
#include "services/Platform.h"
#include "services/Spellings.h"
#include "services/SqliteSyncDatabase.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <mutex>
#include <optional>

namespace Halvern::SyncFolderManagerLib {

using namespace SyncServices;

namespace {

FolderManager* instance = nullptr;
std::optional<ServicesSettings> configured;

} // namespace

struct FolderManager::State
{
    void Start();
    /// Nothing is made unless every path says where it leads.
    bool CheckPaths();
    bool MakeCloudCacheFolder();
    void OpenDatabase();
    /// The part of a path below the cloud cache folder, symbolic links followed.
    std::optional<QString> BelowRoot(const QString& cleanedPath) const;
    std::shared_ptr<SyncItem> MakeRootItem(SyncDatabase& database) const;

    // Not changed once Initialize is through.
    ServicesSettings settings;
    QString lastError;
    QString root;
    QString canonicalRoot;

    mutable std::mutex mutex;
    // Guarded by the mutex.
    std::shared_ptr<SyncDatabase> database;
    std::shared_ptr<SyncItem> rootItem;
};

void FolderManager::State::Start()
{
    if (configured)
        settings = *configured;
    else
        settings = ServicesSettings::LoadOrCreate(ServicesSettings::DefaultFile(), &lastError);
    if (!lastError.isEmpty()) {
        // The defaults may be far from what the user chose: nothing must be brought there.
        settings.loggedIn = false;
        settings.cloudCacheFolderSyncEnabled = false;
        settings.baseStoreLimit = 0;
    } else if (CheckPaths() && MakeCloudCacheFolder()) {
        OpenDatabase();
    }
}

bool FolderManager::State::CheckPaths()
{
    const QString fault = PathFault(settings);
    if (!fault.isEmpty())
        lastError = QStringLiteral("Failed to use the settings: %1").arg(fault);
    return fault.isEmpty();
}

bool FolderManager::State::MakeCloudCacheFolder()
{
    if (settings.cloudCacheFolder.isEmpty())
        return true;
    const QString folder = QDir::cleanPath(settings.cloudCacheFolder);
    QString reason = QStringLiteral("It is not an absolute path.");
    if (!QDir::isAbsolutePath(folder) || !Platform::MakeFolder(folder, &reason)) {
        lastError = QStringLiteral("Failed to create cloud cache folder %1: %2")
                        .arg(settings.cloudCacheFolder, reason);
        return false;
    }
    root = folder;
    canonicalRoot = CanonicalPath(folder);
    return true;
}

void FolderManager::State::OpenDatabase()
{
    const QString file = settings.databaseFile;
    QString reason;
    if (file.isEmpty()) {
        lastError = QStringLiteral("Failed to open sync database: No file is configured.");
        return;
    }
    if (file != u":memory:" && !Platform::MakeFolder(QFileInfo(file).absolutePath(), &reason)) {
        lastError =
            QStringLiteral("Failed to create the folder of sync database %1: %2").arg(file, reason);
        return;
    }
    database = SqliteSyncDatabase::Open(file, settings.databaseBusyTimeout, &lastError);
}

std::optional<QString> FolderManager::State::BelowRoot(const QString& cleanedPath) const
{
    if (root.isEmpty() || !QDir::isAbsolutePath(cleanedPath))
        return std::nullopt;
    if (const std::optional<QString> below = PathBelow(root, cleanedPath))
        return AreTwins(cleanedPath.left(root.size()), root) ? std::nullopt : below;
    const QString canonical = CanonicalPath(cleanedPath);
    const std::optional<QString> below = PathBelow(canonicalRoot, canonical);
    return below && AreTwins(canonical.left(canonicalRoot.size()), canonicalRoot) ? std::nullopt
                                                                                  : below;
}

std::shared_ptr<SyncItem> FolderManager::State::MakeRootItem(SyncDatabase& store) const
{
    const std::shared_ptr<SyncItem> item =
        store.AddRootFolder(root, settings.cloudRoot, settings.authenticationConfigurationId);
    if (!item || (item->GetProductConfigurationId() == settings.productConfigurationId &&
                  item->GetSourceConsumerId() == settings.sourceConsumerId))
        return item;
    item->SetProductConfigurationId(settings.productConfigurationId);
    item->SetSourceConsumerId(settings.sourceConsumerId);
    return store.AddOrUpdateFileConfiguration(item) ? item : nullptr;
}

FolderManager::FolderManager() : m_state(std::make_unique<State>()) {}

FolderManager::~FolderManager() = default;

void FolderManager::Configure(const ServicesSettings& settings)
{
    configured = settings;
}

void FolderManager::Initialize()
{
    if (instance != nullptr)
        return;
    instance = new FolderManager;
    instance->m_state->Start();
}

void FolderManager::Uninitialize()
{
    if (instance == nullptr)
        return;
    delete instance;
    instance = nullptr;
    configured.reset();
}

FolderManager* FolderManager::GetInstance()
{
    return instance;
}

bool FolderManager::IsLoggedIn() const
{
    return m_state->settings.loggedIn;
}

QString FolderManager::GetCloudCacheFolderPath(bool create) const
{
    QString reason;
    if (create && !m_state->root.isEmpty())
        Platform::MakeFolder(m_state->root, &reason);
    return m_state->root;
}

bool FolderManager::IsCloudCacheFolderPath(const QString& path) const
{
    return !path.isEmpty() && m_state->BelowRoot(QDir::cleanPath(path)).has_value();
}

QString FolderManager::ConvertCloudCacheFolderPath(const QString& path,
                                                   Global::CloudCacheFolderPathType type) const
{
    const QString cleaned = QDir::cleanPath(path);
    switch (type) {
    case Global::LocalPath:
        if (const std::optional<QString> below = m_state->BelowRoot(cleaned))
            return JoinPath(m_state->root, *below);
        break;
    }
    return cleaned;
}

std::shared_ptr<SyncDatabase> FolderManager::GetSyncDatabase() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->database;
}

void FolderManager::SetSyncDatabase(std::shared_ptr<SyncDatabase> database)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->database = std::move(database);
    m_state->rootItem.reset();
}

std::shared_ptr<SyncItem> FolderManager::GetSyncRootFolder(const QString& path)
{
    if (!IsCloudCacheFolderPath(path))
        return nullptr;
    const std::lock_guard lock(m_state->mutex);
    if (!m_state->rootItem && m_state->database)
        m_state->rootItem = m_state->MakeRootItem(*m_state->database);
    return m_state->rootItem;
}

bool FolderManager::GetCloudPath(const QString& localPath, bool withRoot, QString& cloudPath) const
{
    cloudPath.clear();
    const std::optional<QString> below =
        localPath.isEmpty() ? std::nullopt : m_state->BelowRoot(QDir::cleanPath(localPath));
    if (!below)
        return false;
    const QString slash = QStringLiteral("/");
    const QString cloudRoot = m_state->settings.cloudRoot;
    cloudPath = JoinPath(withRoot && !cloudRoot.isEmpty() ? cloudRoot : slash, *below);
    return true;
}

const ServicesSettings& FolderManager::GetSettings() const
{
    return m_state->settings;
}

QString FolderManager::GetLastError() const
{
    return m_state->lastError;
}

} // namespace Halvern::SyncFolderManagerLib
