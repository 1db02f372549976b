// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Settings.h"

#include "filelink/FileLinkManager.h"

#include <QtCore/QLibrary>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

#include <memory>
#include <vector>

namespace Halvern::Jobs {

/// Gives plug-ins a process of their own: a folder that is searched for libraries before all others
/// holds, under the name of each such plug-in's library, a library that stands for it.
class PluginIsolation
{
public:
    /// Throws JobError(SettingsRefused) when there is no such folder to be had.
    explicit PluginIsolation(const PluginOptions& options);
    ~PluginIsolation();
    PluginIsolation(const PluginIsolation&) = delete;
    PluginIsolation& operator=(const PluginIsolation&) = delete;

    QString Folder() const { return m_folder.path(); }
    /// `libraryFolders` are those in which the module would find the libraries. Throws
    /// JobError(SettingsRefused) when what plug-ins need to run apart is not installed.
    void Prepare(const QList<FileLink::PluginDescription>& plugins,
                 const QStringList& libraryFolders);

private:
    void Isolate(const FileLink::PluginDescription& plugin, const QString& library);
    void LetCallsBeEnded(const QString& stub);

    PluginOptions m_options;
    QTemporaryDir m_folder;
    /// Where the program that runs a plug-in lies; empty when it lies nowhere.
    QString m_parts;
    /// They stay loaded as long as the folder is there.
    std::vector<std::unique_ptr<QLibrary>> m_stubs;
};

} // namespace Halvern::Jobs
