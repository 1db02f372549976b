// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/FileMapping.h"

#include <QtCore/QList>

#include <memory>

namespace Halvern::SyncServices {

class SqliteConnection;

/// The statements on the copy history. Each function runs in a transaction of the caller's, and
/// throws.
namespace SqliteCopyHistory {

QList<std::shared_ptr<FileMapping>> Read(SqliteConnection& connection, int authenticationId);
void Write(SqliteConnection& connection, const FileMapping& mapping);
void DeleteAll(SqliteConnection& connection, int authenticationId);

} // namespace SqliteCopyHistory

} // namespace Halvern::SyncServices
