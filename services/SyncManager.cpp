// SPDX-License-Identifier: Apache-2.0

#include "syncservices/SyncManager.h"

#include "base/WorkWatch.h"
#include "services/BaseStore.h"
#include "syncservices/FolderManager.h"

namespace Halvern::SyncServices {

using SyncFolderManagerLib::FolderManager;

namespace {

SyncManager* instance = nullptr;

Base::FileResult NoStore()
{
    return Base::FileResult::Failed("there is no base store: FolderManager is not initialised");
}

bool Succeeded(const Base::FileResult& result, QString* error)
{
    if (error != nullptr)
        *error = QString::fromStdString(result.Text());
    return bool(result);
}

class AskingWatch : public Base::WorkWatch
{
public:
    explicit AskingWatch(const std::function<bool()>& goesOn) : m_goesOn(goesOn) {}

    bool GoesOn() override { return !m_goesOn || m_goesOn(); }
    void Copied(std::uint64_t) override {}

private:
    const std::function<bool()>& m_goesOn;
};

} // namespace

struct SyncManager::State
{
    explicit State(const ServicesSettings& settings)
        : syncEnabled(settings.cloudCacheFolderSyncEnabled),
          baseStore(settings.BaseStoreFolder(), settings.baseStoreLimit)
    {}

    bool syncEnabled;
    BaseStore baseStore;
};

SyncManager::SyncManager() = default;

SyncManager::~SyncManager() = default;

void SyncManager::Initialize()
{
    if (instance != nullptr)
        return;
    instance = new SyncManager;
    if (const FolderManager* manager = FolderManager::GetInstance())
        instance->m_state = std::make_unique<State>(manager->GetSettings());
}

void SyncManager::Uninitialize()
{
    delete instance;
    instance = nullptr;
}

SyncManager* SyncManager::GetInstance()
{
    return instance;
}

bool SyncManager::IsCloudCacheFolderSyncEnabled() const
{
    return m_state && m_state->syncEnabled;
}

bool SyncManager::SaveBaseFile(const wchar_t* path)
{
    return m_state && path != nullptr &&
           m_state->baseStore.Save(QString::fromWCharArray(path), BaseStore::Care::Usual);
}

bool SyncManager::SaveVersion(const QString& path, QString* error,
                              const std::function<bool()>& goesOn)
{
    AskingWatch watch(goesOn);
    const Base::WorkWatch::Scope watching(watch);
    return Succeeded(m_state ? m_state->baseStore.Save(path, BaseStore::Care::Lasting) : NoStore(),
                     error);
}

BaseStoreStatus SyncManager::GetBaseStoreStatus() const
{
    if (m_state)
        return m_state->baseStore.Status();
    BaseStoreStatus status;
    status.problem = QString::fromStdString(NoStore().Text());
    return status;
}

void SyncManager::BeginRun()
{
    if (m_state)
        m_state->baseStore.BeginRun();
}

void SyncManager::EndRun()
{
    if (m_state)
        m_state->baseStore.EndRun();
}

QList<StoredVersion> SyncManager::GetVersions(const QString& path) const
{
    return m_state ? m_state->baseStore.VersionsOf(path) : QList<StoredVersion>();
}

bool SyncManager::WriteVersion(const StoredVersion& version, const QString& target, QString* error)
{
    return Succeeded(m_state ? m_state->baseStore.Write(version, target) : NoStore(), error);
}

} // namespace Halvern::SyncServices
