// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Settings.h"

#include "filelink/FileLinkManager.h"

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

#include <optional>

namespace Halvern::Jobs {

/// Gives plug-ins a process of their own: a folder that is searched for libraries before all others
/// holds, under the name of each such plug-in's library, a library that stands for it.
class PluginIsolation
{
public:
    /// Throws JobError(SettingsRefused) when there is no such folder to be had.
    explicit PluginIsolation(const PluginOptions& options);

    QString Folder() const { return m_folder.path(); }
    /// `libraryFolders` are those in which the module would find the libraries. Throws
    /// JobError(SettingsRefused) when what plug-ins need to run apart is not installed.
    void Prepare(const QList<FileLink::PluginDescription>& plugins,
                 const QStringList& libraryFolders);

private:
    void Isolate(const FileLink::PluginDescription& plugin, const QString& library);

    PluginOptions m_options;
    QTemporaryDir m_folder;
    /// Where the program that runs a plug-in lies; empty when it lies nowhere.
    QString m_parts;
};

} // namespace Halvern::Jobs
