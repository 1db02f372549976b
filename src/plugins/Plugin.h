// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/IFileLayout.h"
#include "syncplugin/IFileLinkResolver.h"

#include <QtCore/QLibrary>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

namespace Halvern::FileLink {

enum class PluginType
{
    FileLayout = 0,
    FileLinkResolver = 1,
};

/// "File Layout" or "File Link Resolver".
QString GetPluginTypeName(PluginType type);

/// A registered plug-in: what its registration file says, its library, loaded on first use, and
/// the service object last made by it. Each request makes a new service object.
class Plugin
{
public:
    enum class LoadState
    {
        NotLoaded = 0,
        Loaded = 1,
        /// The library could not be loaded, or its factory yielded nothing.
        Failed = 2,
    };

    struct Registration
    {
        quint32 priority = 0;
        PluginType type = PluginType::FileLayout;
        QString name;
        QStringList fileTypes;
        QString module;
        /// As written; empty when the file states none. Another version is refused at each load.
        QString contractVersion;
        /// The registration file.
        QString file;
    };

    /// `searchPaths` are the folders searched for the library at each load; they must outlive the
    /// plug-in.
    Plugin(Registration registration, const QStringList& searchPaths);
    /// Unloads the library.
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    /// Loads the library unless that has been done. A failed load is tried again at the next call.
    [[nodiscard]] bool LoadModule();
    /// Destroys the service object and unloads the library. True when nothing was loaded.
    bool UnloadModule();

    /// A new service object, owned by the plug-in and valid until the next request or unload; null
    /// when this is no plug-in of that type or it failed. A library that makes no object is
    /// unloaded, unless an object of an earlier request is there, which is returned then.
    SyncPlugin::IFileLinkResolver* GetFileLinkResolver();
    SyncPlugin::IFileLayout* GetFileLayout();

    /// Requests the service that the plug-in is registered for. False, with the reason in
    /// GetLastError(), when no new object was made.
    [[nodiscard]] bool TryService();

    quint32 GetPriority() const { return m_registration.priority; }
    PluginType GetType() const { return m_registration.type; }
    QString GetName() const { return m_registration.name; }
    QStringList GetFileTypes() const { return m_registration.fileTypes; }
    /// File name of the library, which names the plug-in in every message.
    QString GetModule() const { return m_registration.module; }
    const Registration& GetRegistration() const { return m_registration; }
    LoadState GetLoadState() const { return m_loadState; }
    bool IsLoaded() const { return m_library && m_library->isLoaded(); }
    /// What went wrong in the last request and since, as logged, in order; empty when nothing did.
    QStringList GetErrors() const { return m_errors; }
    /// The same in one text.
    QString GetLastError() const { return m_errors.join(QStringLiteral("; ")); }
    /// The stored service objects, without a request.
    SyncPlugin::IFileLinkResolver* GetStoredResolver() const { return m_fileLinkResolver; }
    SyncPlugin::IFileLayout* GetStoredLayout() const { return m_fileLayout; }

private:
    QString FindLibrary() const;
    /// Loads the library and checks its contract. Why it cannot be used, then nothing is loaded, or
    /// empty.
    QString OpenLibrary();
    template <class Factory>
    Factory* MakeFactory(const char* exportName, QString& error);
    template <class Service, class Factory>
    QString CreateService(const char* exportName, const char* creatorName,
                          Service* (Factory::*creator)(), Service*& stored);
    void DestroyServices();

    Registration m_registration;
    const QStringList& m_searchPaths;
    LoadState m_loadState = LoadState::NotLoaded;
    QStringList m_errors;
    std::unique_ptr<QLibrary> m_library;
    /// What the library threw while it was loaded. It is not loaded again: the system would take
    /// it for loaded, although its objects are not made.
    QString m_initializationFault;
    // Plain pointers: a replaced object, and those of a module that keeps its objects, are not
    // destroyed.
    SyncPlugin::IFileLayout* m_fileLayout = nullptr;
    SyncPlugin::IFileLinkResolver* m_fileLinkResolver = nullptr;
};

} // namespace Halvern::FileLink
