// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Export.h"
#include "corsync/JobError.h"
#include "corsync/Settings.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

namespace Halvern::Jobs {

/// The services and the module, running for as long as the object lives. A process has one session
/// at a time; it belongs to the thread that made it, and every job of it runs there. Jobs must have
/// ended before it does.
class CORSYNCJOBS_EXPORT Session
{
public:
    /// `pluginFolders` hold registration files and libraries of plug-ins; they are searched before
    /// the default folders. Throws JobError: SettingsRefused without a cloud cache folder or with
    /// database or base store in it, SessionTaken, PluginFolderMissing, NoCloudFolder,
    /// DatabaseNotOpened, DatabaseDamaged.
    explicit Session(const SyncServices::ServicesSettings& settings,
                     const QStringList& pluginFolders = {}, SessionUse use = SessionUse::Import);
    /// A session that leaves no trace, for reading links and listing plug-ins: its cloud cache
    /// folder is a temporary one, its database is in memory. Throws as the other.
    static std::unique_ptr<Session> Temporary(const QStringList& pluginFolders = {},
                                              const PluginOptions& plugins = {});
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    SessionUse Use() const;
    /// What was amiss when it was opened and did not keep it from being opened: sentences for
    /// people, without a full stop.
    const QStringList& Warnings() const;
    /// Absolute, with forward slashes.
    QString CloudFolder() const;

private:
    struct State;
    explicit Session(std::unique_ptr<State> state);

    std::unique_ptr<State> m_state;
};

} // namespace Halvern::Jobs
