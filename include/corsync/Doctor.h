// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/CancelToken.h"
#include "corsync/Export.h"
#include "corsync/Settings.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Jobs {

/// What is looked at, in this order.
enum class Examined
{
    Settings,
    CloudFolder,
    Database,
    /// What is recorded of copies, and whether they are there.
    Copies,
    BaseStore,
    Plugins,
};

/// Something that is not as it should be.
struct Symptom
{
    Examined where = Examined::Settings;
    /// Something is broken or still to be done. Otherwise it is worth knowing, and no more.
    bool isFault = true;
    /// The file, folder or key that it is about; may be empty. Absolute.
    QString subject;
    /// What is amiss, and what helps: sentences for people, without a full stop.
    QString text;
    QString advice;
};

struct Examination
{
    QList<Symptom> symptoms;
    /// How many copies are recorded.
    qint64 copies = 0;
    /// It was cancelled: what follows the last symptom was not looked at.
    bool cancelled = false;
};

/// Looks at everything that an import relies on: the settings, the cloud cache folder with what
/// interrupted jobs left in it, the whole sync database, the recorded copies, the base store and the
/// plug-ins, each of which is loaded. Changes nothing, and goes on after what is broken. The time
/// is that of reading the database and of one look at each entry of the cloud cache folder.
///
/// Requires: no session in this process. Throws JobError: SessionTaken, PluginFolderMissing.
CORSYNCJOBS_EXPORT Examination Examine(const Places& places, const QStringList& pluginFolders = {},
                                       const CancelToken* cancel = nullptr);

} // namespace Halvern::Jobs
