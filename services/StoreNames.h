// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// The names of files in a base store. DO NOT CHANGE what these answer: stores of users have them.
///
///     <hash of the path>-<hash of the content>.prt   a copy; its time says when it was saved
///     paths/<hash of the path>                       the path, as text
///     runs/*.run                                     see StoreRuns
///     lock                                           held while copies come and go
///     *.part                                         a file in the making
///
/// Anything else in the folder is somebody else's. Stores that are older than "paths" have copies
/// under the hash of the folded path.
namespace Halvern::SyncServices::StoreNames {

/// Of the path's key: ExactPathKey, in older stores PathKey.
QString PathHash(const QString& key);
QString CopyName(const QString& pathHash, const QByteArray& contentHash, const QString& path);

bool IsCopyName(const QString& name);
bool IsPartName(const QString& name);

/// Requires: the name of a copy.
QString PathHashOf(const QString& copyName);
QByteArray ContentHashOf(const QString& copyName);

QString Paths(const QString& storeFolder);
QString Runs(const QString& storeFolder);
QString Lock(const QString& storeFolder);

} // namespace Halvern::SyncServices::StoreNames
