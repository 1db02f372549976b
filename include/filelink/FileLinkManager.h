// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/Export.h"
#include "filelink/Problem.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

namespace Halvern::FileLink {

/// What a registration file says about a plug-in.
struct PluginDescription
{
    /// Display name; may be empty.
    QString name;
    /// File name of the library, the plug-in's identity.
    QString module;
    /// "File Layout" or "File Link Resolver".
    QString service;
    /// Extensions without dots; "*" is every type.
    QStringList fileTypes;
    /// As registered; it ranks nothing: plug-ins are asked in the order of registration.
    quint32 priority = 0;
    /// Absolute path of the file that registers it.
    QString registrationFile;
};

/// The module's process-wide entry. The host initialises the module through it once, from the
/// thread that starts the program, before it makes an importer. Nothing in it is locked: no two
/// threads may be in it, or in an importer and in it, at once. A failure is a result, never an
/// exception.
class FILELINK_EXPORT FileLinkManager
{
public:
    /// Starts the platform services and makes the plug-in manager. Calls are counted.
    static void Initialize();
    /// Undoes it at the last call: plug-ins are unloaded, the services stop. An excess call is
    /// ignored. No importer may be alive then.
    static void Uninitialize();
    /// Null while not initialised. The module owns the object; it lives until the last
    /// Uninitialize. Requires for every member: the instance is not null.
    static FileLinkManager* GetInstance();

    /// Folders searched for plug-in libraries. Given before the first use of a plug-in they replace
    /// the default folders: that of the program and "SyncPlugins" in it.
    void AddPluginSearchPaths(const QStringList& paths);
    /// Folders searched for "*.syncplugin" files. Given before the first use of a plug-in they
    /// replace the default folders; afterwards they have no effect.
    void AddPluginRegistrationFolders(const QStringList& folders);
    /// The registered plug-ins in registration order. Reads registration files when that has not
    /// happened yet, but loads no library.
    QList<PluginDescription> GetPlugins();
    /// What is wrong with registration files, or with folders of them that cannot be looked into,
    /// in their order: problems of the kind Registration, about the file, naming the plug-in where
    /// there is one. Reads registration files when that has not happened yet.
    [[nodiscard]] QList<Problem> GetRegistrationProblems();
    /// The registration files with a complete declaration, of a plug-in that they register or that
    /// an earlier file registers already. Nothing came of the others: they cannot be read, or the
    /// declaration lacks what it needs. Reads registration files when that has not happened yet.
    [[nodiscard]] QStringList GetCompleteRegistrationFiles();
    /// Loads the library of a registered plug-in and creates its service once. `module` is the
    /// PluginDescription's. False with the reason in `error` (may be null), which stays as it is on
    /// success.
    [[nodiscard]] bool LoadPlugin(const QString& module, QString* error);
    /// Unloads every plug-in library; they are loaded again on their next use. False when one
    /// could not be unloaded: it stays loaded, the others are gone.
    [[nodiscard]] bool UnloadAllPlugins();
    /// Forgets what the current user copied earlier. Importers that are alive keep what they have
    /// read. False when the database could not be changed or there is none.
    [[nodiscard]] bool DeleteFileCopyHistory();

private:
    struct Holder;
    FileLinkManager();
    ~FileLinkManager();
    friend class ManagerAccess;

    std::unique_ptr<Holder> m_holder;
};

} // namespace Halvern::FileLink
