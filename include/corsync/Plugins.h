// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Export.h"
#include "corsync/Session.h"

#include "filelink/FileLinkManager.h"

#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::Jobs {

enum class PluginState
{
    NotTried,
    Loads,
    Fails,
};

struct PluginStatus
{
    FileLink::PluginDescription plugin;
    PluginState state = PluginState::NotTried;
    /// Why it does not load.
    QString error;
};

/// A registration file that does not do what its author means, or a folder that could not be
/// searched for them.
struct RegistrationFault
{
    QString file;
    /// File name of the library that it is about; may be empty.
    QString plugin;
    /// One sentence for people, without a full stop.
    QString text;
    /// Nothing came of the file: what it stands for is missing. Otherwise something in it is not
    /// used, or not as it was meant.
    bool isBroken = false;
};

/// In the order in which the files were read. Loads no library.
CORSYNCJOBS_EXPORT QList<RegistrationFault> ListRegistrationFaults(const Session& session);

/// The registered plug-ins, in the order in which they are asked. With `load` each library is
/// loaded and its service created once.
CORSYNCJOBS_EXPORT QList<PluginStatus> ListPlugins(const Session& session, bool load);

} // namespace Halvern::Jobs
