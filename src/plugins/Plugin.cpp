// SPDX-License-Identifier: Apache-2.0

#include "plugins/Plugin.h"

#include "plugins/PluginContract.h"
#include "plugins/PluginGuard.h"
#include "support/Logging.h"

#include <QtCore/QFile>

#include <utility>

namespace Halvern::FileLink {

using SyncPlugin::IFileLayout;
using SyncPlugin::IFileLinkResolver;
using SyncPlugin::IFileLinkResolverFactory;
using SyncPlugin::ISyncPluginFactory;

namespace {

constexpr char LogSourceFile[] = "PluginManager.cpp";

constexpr char ResolverExport[] = "CreateFileLinkResolverFactory";
constexpr char LayoutExport[] = "CreateSyncPluginFactory";

// This plug-in's objects do not survive their destructors: its library goes, they stay behind.
bool KeepsServiceObjects(const QString& module)
{
    return module.compare(QStringLiteral("FerruleSyncPlugin.dll"), Qt::CaseInsensitive) == 0;
}

} // namespace

QString GetPluginTypeName(PluginType type)
{
    switch (type) {
    case PluginType::FileLayout:
        return QStringLiteral("File Layout");
    case PluginType::FileLinkResolver:
        return QStringLiteral("File Link Resolver");
    }
    return {};
}

Plugin::Plugin(Registration registration, const QStringList& searchPaths)
    : m_registration(std::move(registration)), m_searchPaths(searchPaths)
{}

Plugin::~Plugin()
{
    UnloadModule();
    MarkAbandoned(m_fileLayout);
    MarkAbandoned(m_fileLinkResolver);
}

QString Plugin::FindLibrary() const
{
    for (const QString& folder : m_searchPaths) {
        const QString path = QStringLiteral("%1/%2").arg(folder, GetModule());
        if (QFile::exists(path))
            return path;
    }
    return GetModule();
}

bool Plugin::LoadModule()
{
    m_errors.clear();
    if (IsLoaded())
        return true;
    if (GetModule().isEmpty())
        return false;
    const QString error = OpenLibrary();
    if (error.isEmpty()) {
        m_loadState = LoadState::Loaded;
        FILELINK_LOG(LogLevel::Info, QStringLiteral("Plugin %1 loaded").arg(GetModule()));
        return true;
    }
    m_loadState = LoadState::Failed;
    m_errors.append(error);
    FILELINK_LOG(LogLevel::Error, error);
    return false;
}

QString Plugin::OpenLibrary()
{
    QString error = CheckRegisteredContract(GetModule(), m_registration.contractVersion);
    if (!error.isEmpty())
        return error;
    if (!m_initializationFault.isEmpty())
        return m_initializationFault;
    m_library = std::make_unique<QLibrary>(FindLibrary());
    // A static object of the library may throw while it is made.
    const auto loaded = CallPlugin(
        GetModule(), "its initialization", [&] { return m_library->load(); },
        m_initializationFault);
    if (!loaded) {
        m_library.reset();
        return m_initializationFault;
    }
    if (!*loaded)
        return QStringLiteral("Failed to load plugin %1. Error %2.")
            .arg(GetModule())
            .arg(m_library->errorString());
    error = CheckLibraryContract(GetModule(), *m_library);
    if (!error.isEmpty()) {
        m_library->unload();
        // Whatever became of that: a library that was refused is not a loaded one.
        m_library.reset();
    }
    return error;
}

bool Plugin::UnloadModule()
{
    if (!IsLoaded())
        return true;
    if (!KeepsServiceObjects(GetModule()))
        DestroyServices();
    if (m_library->unload()) {
        FILELINK_LOG(LogLevel::Info, QStringLiteral("Plugin %1 unloaded").arg(GetModule()));
        m_library.reset();
        m_loadState = LoadState::NotLoaded;
        return true;
    }
    m_errors.append(QStringLiteral("Failed to unload plugin %1. Error %2.")
                        .arg(GetModule())
                        .arg(m_library->errorString()));
    FILELINK_LOG(LogLevel::Error, m_errors.last());
    return false;
}

void Plugin::DestroyServices()
{
    delete std::exchange(m_fileLayout, nullptr);
    delete std::exchange(m_fileLinkResolver, nullptr);
}

template <class Factory>
Factory* Plugin::MakeFactory(const char* exportName, QString& error)
{
    using Function = Factory* (*)();
    const auto function = reinterpret_cast<Function>(m_library->resolve(exportName));
    if (!function) {
        error = QStringLiteral("Exported function %1 not found in plugin %2")
                    .arg(QString::fromLatin1(exportName))
                    .arg(GetModule());
        return nullptr;
    }
    const auto factory = CallPlugin(GetModule(), exportName, function, error);
    if (!factory)
        return nullptr;
    // The resolver's export is named for layouts, too: log filters rely on this one text.
    if (!*factory)
        error = QStringLiteral("Plugin %1 returned NULL in %2")
                    .arg(GetModule())
                    .arg(QString::fromLatin1(ResolverExport));
    return *factory;
}

template <class Service, class Factory>
QString Plugin::CreateService(const char* exportName, const char* creatorName,
                              Service* (Factory::*creator)(), Service*& stored)
{
    QString error;
    Factory* factory = MakeFactory<Factory>(exportName, error);
    if (!factory)
        return error;
    const auto create = [&] { return (factory->*creator)(); };
    MarkAbandoned(stored);
    const auto service = CallPlugin(GetModule(), creatorName, create, error);
    delete factory;
    if (service && !*service)
        error = QStringLiteral("Plugin %1 returned NULL in %2")
                    .arg(GetModule())
                    .arg(QString::fromLatin1(creatorName));
    stored = service.value_or(nullptr);
    return error;
}

IFileLinkResolver* Plugin::GetFileLinkResolver()
{
    if (GetType() != PluginType::FileLinkResolver || !LoadModule())
        return nullptr;
    const QString error =
        CreateService(ResolverExport, "CreateFileLinkResolver",
                      &IFileLinkResolverFactory::CreateFileLinkResolver, m_fileLinkResolver);
    if (!error.isEmpty()) {
        m_errors.append(error);
        FILELINK_LOG(LogLevel::Error, error);
    }
    if (!m_fileLinkResolver) {
        UnloadModule();
        m_loadState = LoadState::Failed;
    }
    return m_fileLinkResolver;
}

IFileLayout* Plugin::GetFileLayout()
{
    if (GetType() != PluginType::FileLayout || !LoadModule())
        return nullptr;
    const QString error = CreateService(LayoutExport, "CreateFileLayout",
                                        &ISyncPluginFactory::CreateFileLayout, m_fileLayout);
    if (!error.isEmpty()) {
        m_errors.append(error);
        FILELINK_LOG(LogLevel::Error, error);
    }
    if (!m_fileLayout) {
        m_loadState = LoadState::Failed;
        UnloadModule();
    }
    return m_fileLayout;
}

bool Plugin::TryService()
{
    const bool made = GetType() == PluginType::FileLayout ? GetFileLayout() != nullptr
                                                          : GetFileLinkResolver() != nullptr;
    return made && m_errors.isEmpty();
}

} // namespace Halvern::FileLink
