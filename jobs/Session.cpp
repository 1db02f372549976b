// SPDX-License-Identifier: Apache-2.0

#include "corsync/Session.h"

#include "DatabaseCheck.h"
#include "FolderCleanup.h"
#include "OwnPlaces.h"
#include "Paths.h"
#include "PluginIsolation.h"
#include "QuietLog.h"
#include "base/Directory.h"
#include "base/KnownFolders.h"
#include "base/NativePath.h"
#include "filelink/FileLinkManager.h"
#include "syncservices/FolderManager.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <optional>

namespace Halvern::Jobs {

using FileLink::FileLinkManager;
using SyncFolderManagerLib::FolderManager;
using SyncServices::ServicesSettings;

namespace {

const QString InMemory = QStringLiteral(":memory:");

QString WhyNoFolder(const QString& folder)
{
    return Base::ReadEntry(Native(folder)).kind == Base::EntryKind::Unknown
               ? QStringLiteral("a plug-in folder that cannot be looked at: ")
               : QStringLiteral("no such plug-in folder: ");
}

QStringList CheckedFolders(const QStringList& folders)
{
    QStringList checked;
    for (const QString& given : folders) {
        const QString folder = AbsolutePath(given);
        if (!QFileInfo(folder).isDir())
            throw JobError(JobErrorKind::PluginFolderMissing, WhyNoFolder(folder) + given);
        checked.append(folder);
    }
    return checked;
}

QString Text(const std::filesystem::path& path)
{
    return QDir::fromNativeSeparators(QStringView(Base::PathText(path)).toString());
}

QString ProgramFolder()
{
    return Text(Base::ProgramFile().parent_path());
}

/// Where libraries are searched for. Folders given to the module replace its default ones, so these
/// are named as well.
QStringList LibraryFolders(const QStringList& given)
{
    return given + QStringList{ProgramFolder(), ProgramFolder() + QStringLiteral("/SyncPlugins")};
}

void AddRegistrationFolders(const QStringList& given)
{
    if (given.isEmpty())
        return;
    FileLinkManager::GetInstance()->AddPluginRegistrationFolders(
        given + QStringList{Text(Base::CommonDataFolder()) +
                                QStringLiteral("/Halvern/Halvern Sync/Plugins"),
                            ProgramFolder(),
                            ProgramFolder() + QStringLiteral("/SyncPluginRegFiles")});
}

/// The module runs for as long as this lives.
class RunningModule
{
public:
    explicit RunningModule(const ServicesSettings& settings)
    {
        if (FileLinkManager::GetInstance())
            throw JobError(JobErrorKind::SessionTaken,
                           QStringLiteral("the process has a session already"));
        FolderManager::Configure(settings);
        FileLinkManager::Initialize();
    }
    ~RunningModule() { FileLinkManager::Uninitialize(); }
    RunningModule(const RunningModule&) = delete;
    RunningModule& operator=(const RunningModule&) = delete;

    void RequireServices() const
    {
        const FolderManager* folders = FolderManager::GetInstance();
        if (folders->GetSyncDatabase())
            return;
        // Without a cloud cache folder the database was not even tried.
        const bool noFolder = folders->GetCloudCacheFolderPath(false).isEmpty();
        throw JobError(noFolder ? JobErrorKind::NoCloudFolder : JobErrorKind::DatabaseNotOpened,
                       folders->GetLastError());
    }
};

/// Later, a damaged page is perhaps never looked at, and what it held is not missed.
void RequireWholeDatabase(const QString& file)
{
    const QString damage = FindDamage(file);
    if (!damage.isEmpty())
        throw JobError(
            JobErrorKind::DatabaseDamaged,
            QStringLiteral("the sync database %1 is damaged: %2; put it aside, and the next "
                           "import makes a new one from what lies in the cloud folder")
                .arg(file, damage));
}

/// It is what a full disk or a crash leaves. What is not written into it yet stands beside it.
bool IsEmptyDatabase(const QString& file)
{
    const QFileInfo info(file);
    return info.isFile() && info.size() == 0 &&
           QFileInfo(file + QStringLiteral("-wal")).size() <= 0;
}

ServicesSettings WithoutNewDatabase(ServicesSettings settings)
{
    if (QFileInfo::exists(settings.databaseFile) && !IsEmptyDatabase(settings.databaseFile))
        return settings;
    // Old versions may be there without the database.
    settings.baseStoreFolder = settings.BaseStoreFolder();
    settings.databaseFile = InMemory;
    return settings;
}

ServicesSettings ThrowawaySettings(const QString& folder)
{
    ServicesSettings settings = ServicesSettings::Defaults();
    settings.cloudCacheFolder = folder;
    settings.databaseFile = InMemory;
    settings.baseStoreFolder.clear();
    settings.baseStoreLimit = 0;
    return settings;
}

} // namespace

struct Session::State
{
    SessionUse use;
    QStringList warnings = {};
    QuietLog log = {};
    /// What is removed after the module has ended.
    std::unique_ptr<QTemporaryDir> temporary = {};
    std::optional<FolderCleanup> cleanup = {};
    std::optional<PluginIsolation> isolation = {};
    std::optional<RunningModule> module = {};

    void Start(const ServicesSettings& settings, const QStringList& pluginFolders,
               const PluginOptions& plugins)
    {
        if (settings.cloudCacheFolder.isEmpty())
            throw JobError(JobErrorKind::SettingsRefused,
                           QStringLiteral("no cloud cache folder is configured"));
        RequireOwnPlaces(settings);
        const QStringList folders = CheckedFolders(pluginFolders);
        if (use == SessionUse::PlanOnly)
            cleanup.emplace(settings.cloudCacheFolder);
        if (IsEmptyDatabase(settings.databaseFile))
            warnings.append(QStringLiteral("the sync database %1 is empty: it is begun anew, and "
                                           "copies are known by their content")
                                .arg(QDir::toNativeSeparators(settings.databaseFile)));
        module.emplace(use == SessionUse::PlanOnly ? WithoutNewDatabase(settings) : settings);
        module->RequireServices();
        if (QFileInfo::exists(settings.databaseFile))
            RequireWholeDatabase(settings.databaseFile);
        AddPlugins(folders, plugins);
    }

    void AddPlugins(const QStringList& folders, const PluginOptions& plugins)
    {
        FileLinkManager* const manager = FileLinkManager::GetInstance();
        const QStringList libraries = LibraryFolders(folders);
        AddRegistrationFolders(folders);
        if (plugins.isolation == PluginIsolationMode::Never) {
            manager->AddPluginSearchPaths(libraries);
            return;
        }
        isolation.emplace(plugins);
        manager->AddPluginSearchPaths(QStringList{isolation->Folder()} + libraries);
        isolation->Prepare(manager->GetPlugins(), libraries);
    }
};

Session::Session(const ServicesSettings& settings, const QStringList& pluginFolders, SessionUse use)
    : m_state(new State{use})
{
    m_state->Start(settings, pluginFolders, PluginOptionsOf(settings));
}

Session::Session(std::unique_ptr<State> state) : m_state(std::move(state)) {}

std::unique_ptr<Session> Session::Temporary(const QStringList& pluginFolders,
                                            const PluginOptions& plugins)
{
    std::unique_ptr<State> state(
        new State{SessionUse::PlanOnly, {}, {}, std::make_unique<QTemporaryDir>()});
    if (!state->temporary->isValid())
        throw JobError(JobErrorKind::NoCloudFolder, state->temporary->errorString());
    state->Start(ThrowawaySettings(state->temporary->path()), pluginFolders, plugins);
    return std::unique_ptr<Session>(new Session(std::move(state)));
}

Session::~Session() = default;

SessionUse Session::Use() const
{
    return m_state->use;
}

const QStringList& Session::Warnings() const
{
    return m_state->warnings;
}

QString Session::CloudFolder() const
{
    return FolderManager::GetInstance()->GetCloudCacheFolderPath(false);
}

} // namespace Halvern::Jobs
