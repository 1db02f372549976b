// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

namespace Halvern::Jobs {

/// Whether names that differ in letter case alone name two files on an ordinary disk.
Qt::CaseSensitivity FileNameCase();
/// The path begins with the root of the one tree that POSIX systems have: local whatever follows.
bool IsPosixAbsolutePath(const QString& path);
/// The machine's folder for data of all users, where plug-ins of other products are registered.
QString CommonDataFolder();

} // namespace Halvern::Jobs
