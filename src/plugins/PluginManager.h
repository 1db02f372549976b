// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "plugins/Plugin.h"
#include "plugins/PluginLogger.h"

#include "filelink/Problem.h"
#include "syncplugin/FileLinkInfo.h"

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

namespace Halvern::FileLink {

class FileMappingRef;
class XmlFiler;

/// The process's registry of format plug-ins and the one place that calls them.
///
///     GetFileLinks
///       FindPluginForFile       extension -> plug-ins, remembered per extension and type
///         RegisterPlugins       at the first lookup: registration files -> Plugin records
///       Plugin::GetFileLinkResolver   loads the library, makes a resolver
///       IFileLinkResolver::GetFileLinks
///
/// A file that no plug-in is registered for is no failure. Failures are logged and become false.
/// Used from one thread at a time.
class PluginManager
{
public:
    PluginManager();
    /// Unloads and destroys every plug-in.
    ~PluginManager();
    PluginManager(const PluginManager&) = delete;
    PluginManager& operator=(const PluginManager&) = delete;

    /// Folders searched for libraries, at every load. The first paths given before RegisterPlugins
    /// replace the default folders.
    void AddPluginSearchPaths(const QStringList& paths);
    /// Folders searched for "*.syncplugin" files by RegisterPlugins; they replace the default
    /// folders.
    void AddRegistrationFolders(const QStringList& folders);
    /// Reads the registration files. Returns the number of plug-ins.
    int RegisterPlugins();
    /// The same at the first call, afterwards nothing: files added later are not seen.
    void EnsureRegistered();
    /// Registers what one file declares. True when a declaration was accepted or names a plug-in
    /// that is registered already.
    [[nodiscard]] bool LoadRegistrationFile(const QString& file);

    /// The plug-ins of a type for the file's extension, best first.
    QList<Plugin*> FindPluginForFile(const QString& file, PluginType type);
    /// The plug-in with the file name of `module`, or null.
    Plugin* FindPluginByModule(const QString& module) const;
    const QList<Plugin*>& Plugins() const { return m_plugins; }
    /// What the files that were read say without meaning it, and folders that could not be looked
    /// into; nothing of it is logged.
    const QList<Problem>& RegistrationProblems() const { return m_registrationProblems; }
    /// The files with a complete declaration, be it of a plug-in that was registered already.
    const QStringList& CompleteRegistrationFiles() const { return m_completeFiles; }
    const QStringList& SearchPaths() const { return m_searchPaths; }
    const QStringList& RegistrationFolders() const { return m_registrationFolders; }

    /// Appends the links of `file` to `links`; on failure nothing is appended.
    [[nodiscard]] bool GetFileLinks(const QString& file, QList<SyncPlugin::FileLinkInfo>& links,
                                    SyncPlugin::IFileLinkResolverContext* context);
    /// Rewrites the given links in `file`.
    [[nodiscard]] bool RepathFileLinks(const QString& file,
                                       const QList<SyncPlugin::FileLinkInfo>& links,
                                       SyncPlugin::IFileLinkResolverContext* context);
    /// Asks every layout plug-in of the mapping's source, in order. False when there are some and
    /// none assigned paths.
    [[nodiscard]] bool AssignTargetPaths(std::shared_ptr<FileMappingRef> mapping,
                                         FileLayoutContext* context);
    /// Writes source and target of the mapping and of what it links, level by level, at TRACE.
    void DumpFileMapping(FileMappingRef* mapping);

    /// Unloads every library. False when one could not be unloaded. Plug-ins stay registered and
    /// load again on their next use.
    bool UnloadAllPlugins();

private:
    void AddDefaultFolders();
    bool MayBeSearched(const QString& folder);
    bool RegisterDeclarations(XmlFiler& filer);
    bool RegisterDeclaration(XmlFiler& filer);
    void NoteSecondRegistration(const Plugin::Registration& known, XmlFiler filer);
    void NoteSharedTypes(const Plugin& plugin);
    QList<Plugin*> SearchPlugins(const QString& extension, PluginType type) const;

    bool m_registered = false;
    QStringList m_registrationFolders;
    QStringList m_searchPaths;
    QList<Plugin*> m_plugins;
    QList<Problem> m_registrationProblems;
    QStringList m_completeFiles;
    QMap<QString, QList<Plugin*>> m_lookupCache;
};

/// The manager that every importer of the process uses; null while the module is not initialised.
PluginManager* GetPluginManager();

} // namespace Halvern::FileLink
